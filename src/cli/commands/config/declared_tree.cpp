#include "cli/commands/config/declared_tree.hpp"

#include <kaputil/automation/collection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_procedura.hpp>

#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"

namespace kap::cli {
namespace {

constexpr const char* kNoDefault = "<nessuno>";

}  // namespace

std::vector<FileSetting> readDeclaration(const ConfigurationSource& source) {
    if (!source.declaration) {
        return {};
    }
    return readSettings(textOfFile(*source.declaration), *source.declaration);
}

Ref<CFG_Modulo> findModule(const CFG_Applicazioni& root, const SettingPath& path) {
    if (!root.Collezione()->contains(String(path.application))) {
        return {};
    }
    const auto procedures = root.Item(path.application)->Procedure();
    if (!procedures->Collezione()->contains(String(path.procedure))) {
        return {};
    }
    const auto modules = procedures->Item(path.procedure)->Moduli();
    return modules->Collezione()->contains(String(path.module)) ? modules->Item(path.module)
                                                                : Ref<CFG_Modulo>();
}

Ref<CFG_Campo> findField(const CFG_Applicazioni& root, const SettingPath& path) {
    const Ref<CFG_Modulo> module = findModule(root, path);
    if (!module || !module->Campi()->Collezione()->contains(String(path.field))) {
        return {};
    }
    return module->Campi()->Item(path.field);
}

Ref<CFG_Campo> fieldIn(CFG_Applicazioni& root, const SettingPath& path) {
    const auto itemIn = [](auto& collection, const std::string& name) {
        return collection.Collezione()->contains(String(name)) ? collection.Item(name)
                                                               : collection.Add(String(name));
    };
    const auto application = itemIn(root, path.application);
    const auto procedure = itemIn(*application->Procedure(), path.procedure);
    const auto module = itemIn(*procedure->Moduli(), path.module);
    return itemIn(*module->Campi(), path.field);
}

void declare(CFG_Applicazioni& root, const FileSetting& setting) {
    if (findField(root, setting.path)) {
        throw UsageError("line " + plain::text(setting.line) + ": " + setting.path.text() +
                         " is there a second time");
    }
    const auto field = fieldIn(root, setting.path);
    field->setValoreDefault(setting.value.value_or(kNoDefault));
    if (setting.flag) {
        field->setFlagDefault(*setting.flag);
    }
    if (setting.allowedValues) {
        field->setValoriConsentiti(*setting.allowedValues);
    }
    if (setting.allowedFlags) {
        field->setFlagConsentiti(*setting.allowedFlags);
    }
    field->setNote(setting.note);
    field->setObbligatorio(setting.mandatory);
}

std::string refusalOf(CFG_Campo& field, const std::optional<std::string>& value,
                      const std::optional<std::string>& flag) {
    try {
        if (value) {
            field.setValore(*value);
        }
        if (flag) {
            field.setFlag(*flag);
        }
    } catch (const AutomationError& error) {
        if (error.number() != errors::kObjectError) {
            throw;
        }
        return error.description().utf8();
    }
    return {};
}

}  // namespace kap::cli
