#include "cli/commands/config/configuration.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/collection.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/util/values.hpp>

namespace kap::cli {
namespace {

constexpr const char16_t* kRunTimeMark = u"ADD_RUNTIME";

String sqlText(const std::string& text) {
    return u"'" + util::kapApice(String(text)) + u"'";
}

std::optional<std::string> textIn(const ado::Recordset& rows, const char16_t* column) {
    const Variant value = rows.Fields()->Item(column)->Value();
    return value.isNull() ? std::nullopt : std::optional(convert::toString(value).utf8());
}

bool hasRunTimeMark(const std::optional<SettingRow>& row) {
    if (!row || !row->value) {
        return false;
    }
    const auto properties = make<CProprieta>();
    properties->Scrivi(u"", String(*row->value));
    try {
        return !properties->Leggi(kRunTimeMark).isNull();
    } catch (const AutomationError& error) {
        if (error.number() != errors::kInvalidArgument) {
            throw;
        }
        return false;  // a mark that is never closed
    }
}

// Finds settings by path, ignoring case as the tree does.
class SettingIndex {
public:
    explicit SettingIndex(std::vector<Setting>& settings) : settings_(settings) {}

    // The setting of a path, which is added with room for so many groups where it is missing.
    Setting& at(const SettingPath& path, std::size_t groups) {
        const String key(path.application + '\n' + path.procedure + '\n' + path.module + '\n' +
                         path.field);
        if (!places_->contains(key)) {
            places_->Add(static_cast<std::int32_t>(settings_.size()), key);
            Setting& added = settings_.emplace_back();
            added.path = path;
            added.groups.resize(groups);
        }
        const auto place = places_->Item(key).as<std::int32_t>();
        return settings_[static_cast<std::size_t>(place)];
    }

private:
    std::vector<Setting>& settings_;
    Ref<Collection> places_ = make<Collection>();
};

// Brings together what belongs to one application, procedure and module, each where its first
// setting stands and in its letters.
void groupByModule(std::vector<Setting>& settings) {
    const auto ranks = make<Collection>();
    const auto rank = [&](const std::string& name) {
        const String key(name);
        if (!ranks->contains(key)) {
            ranks->Add(ranks->Count(), key);
        }
        return ranks->Item(key).as<std::int32_t>();
    };
    const auto place = [&](const Setting& setting) {
        const std::string application = setting.path.application + '\n';
        const std::string procedure = application + setting.path.procedure + '\n';
        return std::tuple(rank(application), rank(procedure),
                          rank(procedure + setting.path.module + '\n'));
    };
    for (const Setting& setting : settings) {
        static_cast<void>(place(setting));
    }
    std::ranges::stable_sort(settings, {}, place);
    for (std::size_t i = 1; i < settings.size(); ++i) {
        const auto before = place(settings[i - 1]);
        const auto here = place(settings[i]);
        const SettingPath& above = settings[i - 1].path;
        SettingPath& path = settings[i].path;
        if (std::get<0>(before) == std::get<0>(here)) {
            path.application = above.application;
        }
        if (std::get<1>(before) == std::get<1>(here)) {
            path.procedure = above.procedure;
        }
        if (before == here) {
            path.module = above.module;
        }
    }
}

Ref<ado::Recordset> openRows(ado::Connection& connection, const ConfigurationSource& source,
                             const std::vector<std::string>& groups) {
    String condition = u"Gruppo IN (" + sqlText(kEverybody);
    for (const std::string& group : groups) {
        condition += u", " + sqlText(group);
    }
    return connection.Execute(
        u"SELECT Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag FROM " +
        String(source.table) + u" WHERE " + condition +
        u") ORDER BY Applicazione, Procedura, Modulo, Campo, Gruppo");
}

bool isSameGroup(const std::string& one, const std::string& other) {
    const auto names = make<Collection>();
    names->Add(Variant(), String(one));
    return names->contains(String(other));
}

void readRows(const ado::Recordset& rows, Configuration& configuration, SettingIndex& index) {
    const auto name = [&](const char16_t* column) { return textIn(rows, column).value_or(""); };
    const SettingPath path = {name(u"Applicazione"), name(u"Procedura"), name(u"Modulo"),
                              name(u"Campo")};
    const SettingRow row = {textIn(rows, u"Valore"), textIn(rows, u"Flag")};
    const std::string group = name(u"Gruppo");
    Setting& setting = index.at(path, configuration.groups.size());
    if (isSameGroup(group, kEverybody)) {
        setting.everybody = row;
    }
    for (std::size_t i = 0; i < configuration.groups.size(); ++i) {
        if (isSameGroup(group, configuration.groups[i])) {
            setting.groups[i] = row;
        }
    }
}

// Whether a setting stands at or below a path of names, ignoring case.
bool isBelow(const SettingPath& path, const std::string& top) {
    const String all(path.text() + "\\");
    const String wanted(top.ends_with('\\') ? top : top + "\\");
    return top.empty() ||
           (all.size() >= wanted.size() &&
            isSameGroup(String(all.view().substr(0, wanted.size())).utf8(), wanted.utf8()));
}

void findProblems(const Configuration& configuration, CFG_Applicazioni& declared,
                  Setting& setting) {
    std::vector<std::pair<std::string, const SettingRow*>> rows;
    if (setting.everybody) {
        rows.emplace_back(kEverybody, &*setting.everybody);
    }
    for (std::size_t i = 0; i < setting.groups.size(); ++i) {
        if (setting.groups[i] && !isSameGroup(configuration.groups[i], kEverybody)) {
            rows.emplace_back(configuration.groups[i], &*setting.groups[i]);
        }
    }
    for (const auto& [group, row] : rows) {
        if (!row->value || !row->flag) {
            setting.problems.push_back("Null in the row of " + group);
        }
    }
    if (!configuration.hasDeclaration) {
        return;
    }
    const Ref<CFG_Campo> field = findField(declared, setting.path);
    if (setting.declared) {
        const std::string refusal = refusalOf(*field, setting.declared->value.value_or(""),
                                              setting.declared->flag.value_or("0"));
        if (!refusal.empty()) {
            setting.problems.push_back("program: " + refusal);
        }
    }
    if (!field) {
        if (!setting.addedAtRunTime() || !findModule(declared, setting.path)) {
            setting.problems.emplace_back("not declared");
        }
        return;
    }
    for (const auto& [group, row] : rows) {
        const std::string refusal = refusalOf(*field, row->value, row->flag);
        if (!refusal.empty()) {
            setting.problems.push_back(group + ": " + refusal);
        }
    }
}

}  // namespace

bool Setting::addedAtRunTime() const {
    if (hasRunTimeMark(everybody)) {
        return true;
    }
    for (const auto& row : groups) {
        if (hasRunTimeMark(row)) {
            return true;
        }
    }
    return false;
}

std::optional<SettingInForce> Setting::inForce(std::size_t group, const std::string& name) const {
    if (groups[group]) {
        return SettingInForce{groups[group]->value.value_or(""), groups[group]->flag.value_or(""),
                              name};
    }
    return inForceForEverybody();
}

std::optional<SettingInForce> Setting::inForceForEverybody() const {
    if (everybody) {
        return SettingInForce{everybody->value.value_or(""), everybody->flag.value_or(""),
                              kEverybody};
    }
    return inForceOfProgram();
}

std::optional<SettingInForce> Setting::inForceOfProgram() const {
    if (declared && declared->value) {
        return SettingInForce{*declared->value, declared->flag.value_or("0"), ""};
    }
    return std::nullopt;
}

bool isSameInForce(const std::optional<SettingInForce>& one,
                   const std::optional<SettingInForce>& other) {
    if (!one || !other) {
        return one.has_value() == other.has_value();
    }
    return one->isLike(*other);
}

std::vector<std::string> groupsIn(ado::Connection& connection, const std::string& table) {
    const auto rows =
        connection.Execute(u"SELECT DISTINCT Gruppo FROM " + String(table) + u" ORDER BY Gruppo");
    const auto known = make<Collection>();
    std::vector<std::string> groups;
    for (; !rows->Eof(); rows->MoveNext()) {
        const std::string group = textIn(*rows, u"Gruppo").value_or("");
        if (!known->contains(String(group))) {
            known->Add(Variant(), String(group));
            groups.push_back(group);
        }
    }
    return groups;
}

Configuration readConfiguration(ado::Connection& connection, const ConfigurationSource& source,
                                const std::vector<std::string>& groups) {
    Configuration configuration;
    configuration.groups = groups;
    configuration.hasDeclaration = source.declaration.has_value();
    SettingIndex index(configuration.settings);
    const auto declared = make<CFG_Applicazioni>();
    for (const FileSetting& setting : readDeclaration(source)) {
        declare(*declared, setting);
        index.at(setting.path, groups.size()).declared = setting;
    }
    const auto rows = openRows(connection, source, groups);
    for (; !rows->Eof(); rows->MoveNext()) {
        readRows(*rows, configuration, index);
    }
    std::erase_if(configuration.settings,
                  [&](const Setting& setting) { return !isBelow(setting.path, source.path); });
    groupByModule(configuration.settings);
    for (Setting& setting : configuration.settings) {
        findProblems(configuration, *declared, setting);
    }
    return configuration;
}

Properties propertiesIn(const std::string& value) {
    const auto read = make<CProprieta>();
    read->Scrivi(u"", String(value));
    const auto again = make<CProprieta>();
    Properties properties;
    try {
        for (std::int16_t i = 1; i <= read->Count(); ++i) {
            const String name = read->NomeProprieta(i);
            const Variant text = read->Leggi(name);
            again->Scrivi(name, text);
            properties.emplace_back(name.utf8(), text.isNull() ? "" : text.as<String>().utf8());
        }
    } catch (const AutomationError& error) {
        if (error.number() != errors::kInvalidArgument && error.number() != errors::kOverflow) {
            throw;
        }
        return {};  // a text with odd tags
    }
    // Only what is nothing but properties reads better as such.
    if (again->Leggi().as<String>() != String(value)) {
        return {};
    }
    return properties;
}

}  // namespace kap::cli
