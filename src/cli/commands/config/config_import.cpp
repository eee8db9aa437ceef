// `kaputil config import`.

#include <iostream>

#include <nlohmann/json.hpp>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/util/values.hpp>

#include "cli/commands/config/config_command.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

std::vector<FileSetting> readFile(const std::optional<std::string>& file) {
    const std::string name = file.value_or("");
    return readSettings(textOfFile(name), shownNameOf(name));
}

bool isAddedAtRunTime(const FileSetting& setting) {
    for (const auto& [name, text] : propertiesIn(setting.value.value_or(""))) {
        if (name == "ADD_RUNTIME") {
            return true;
        }
    }
    return false;
}

// Takes the settings of a file into a tree, whose fields check them and can write their rows.
class Import {
public:
    Import(const ConfigImport& options, const Ref<CFG_Applicazioni>& root)
        : options_(options), root_(root) {
        for (const FileSetting& setting : readDeclaration(options.source)) {
            declare(*root_, setting);
        }
    }

    void take(const FileSetting& setting) {
        if (const std::string refusal = refusalOfPath(setting); !refusal.empty()) {
            refuse(setting, refusal);
            return;
        }
        const Ref<CFG_Campo> field = place(setting);
        if (!field) {
            refuse(setting, setting.path.text() + " is not declared");
            return;
        }
        const std::string refusal =
            refusalOf(*field, setting.value, setting.flag ? setting.flag : field->Flag().utf8());
        if (!refusal.empty()) {
            refuse(setting, refusal);
            return;
        }
        fields_.push_back(field);
    }

    [[nodiscard]] const std::vector<std::string>& refusals() const { return refusals_; }
    [[nodiscard]] const std::vector<Ref<CFG_Campo>>& fields() const { return fields_; }

private:
    void refuse(const FileSetting& setting, const std::string& why) {
        refusals_.push_back("line " + plain::text(setting.line) + ": " + why);
    }

    // What the table could not keep, or not find again.
    [[nodiscard]] std::string refusalOfPath(const FileSetting& setting) {
        const SettingPath& path = setting.path;
        for (const std::string* name :
             {&path.application, &path.procedure, &path.module, &path.field}) {
            if (name->find_first_of("'\\") != std::string::npos) {
                return "a name with ' or \\ cannot be stored: " + *name;
            }
        }
        if (!setting.value) {
            return path.text() + " has no value";
        }
        const String key(path.text());
        if (seen_->contains(key)) {
            return path.text() + " is there a second time";
        }
        seen_->Add(Variant(), key);
        return {};
    }

    // The field of a setting. Without a declaration any will do, and with one those that are made
    // at run time, in a module that is declared.
    [[nodiscard]] Ref<CFG_Campo> place(const FileSetting& setting) {
        if (Ref<CFG_Campo> declared = findField(*root_, setting.path)) {
            return declared;
        }
        if (options_.source.declaration) {
            const Ref<CFG_Modulo> module = findModule(*root_, setting.path);
            return module && isAddedAtRunTime(setting) ? module->Campi()->Add(setting.path.field)
                                                       : Ref<CFG_Campo>();
        }
        Ref<CFG_Campo> made = fieldIn(*root_, setting.path);
        made->setFlagConsentiti(u"");
        return made;
    }

    const ConfigImport& options_;
    Ref<CFG_Applicazioni> root_;
    Ref<Collection> seen_ = make<Collection>();
    std::vector<Ref<CFG_Campo>> fields_;
    std::vector<std::string> refusals_;
};

// Undoes what was written unless `commit` was called.
class Transaction {
public:
    explicit Transaction(ado::Connection& connection) : connection_(connection) {
        connection_.BeginTrans();
    }
    ~Transaction() {
        if (open_) {
            connection_.RollbackTrans();
        }
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit() {
        connection_.CommitTrans();
        open_ = false;
    }

private:
    ado::Connection& connection_;
    bool open_ = true;
};

// How many rows of the group were there.
std::int32_t removeGroup(ado::Connection& connection, const ConfigImport& options) {
    Variant removed;
    connection.Execute(u"DELETE FROM " + String(options.source.table) + u" WHERE Gruppo = '" +
                           util::kapApice(String(options.group)) + u"'",
                       removed);
    return std::max(convert::toLong(removed), 0);
}

int refuse(const ConfigImport& options, const std::vector<std::string>& refusals) {
    std::cout.flush();
    if (options.json) {
        std::cerr << Json{{"refused", refusals}}.dump() << '\n';
    } else {
        for (const std::string& refusal : refusals) {
            std::cerr << "kaputil: " << shownText(refusal) << '\n';
        }
        std::cerr << "kaputil: nothing was imported\n";
    }
    return kFailed;
}

int write(ado::Connection& connection, const ConfigImport& options,
          const std::vector<Ref<CFG_Campo>>& fields) {
    Transaction transaction(connection);
    const std::int32_t removed = options.replace ? removeGroup(connection, options) : 0;
    for (const auto& field : fields) {
        field->Update();
    }
    transaction.commit();
    if (options.json) {
        std::cout << Json{{"group", options.group},
                          {"table", options.source.table},
                          {"written", fields.size()},
                          {"removed", removed}}
                         .dump()
                  << '\n';
    } else {
        std::cout << fields.size() << (fields.size() == 1 ? " setting" : " settings")
                  << " of the group " << shownText(options.group) << " written";
        if (options.replace) {
            std::cout << " in place of " << removed;
        }
        std::cout << ".\n";
    }
    return kSuccess;
}

}  // namespace

int ConfigImport::run() const {
    if (group.empty() || group.find_first_of("'\\") != std::string::npos) {
        throw UsageError("a group without a name, or with ' or \\ in it, cannot be stored");
    }
    const std::vector<FileSetting> settings = readFile(file);
    return withDatabase(source.connection, Access::Changing, json, [&](ado::Connection& database) {
        const auto root = make<CFG_Applicazioni>();
        root->setGruppo(group);
        root->setNomeTabella(source.table);
        root->setActiveConnection(Ref<ado::Connection>(&database));
        Import import(*this, root);
        for (const FileSetting& setting : settings) {
            import.take(setting);
        }
        if (!import.refusals().empty()) {
            return refuse(*this, import.refusals());
        }
        return write(database, *this, import.fields());
    });
}

}  // namespace kap::cli
