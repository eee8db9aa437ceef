#pragma once

#include <optional>
#include <string>
#include <vector>

#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>

#include "cli/commands/config/settings_file.hpp"

// The library's own tree, made of what a file declares: its fields say what is allowed.
namespace kap::cli {

// Where a configuration is.
struct ConfigurationSource {
    std::string connection;                  // the connection string
    std::string table = "KAP_CFG";           // the table's name
    std::optional<std::string> declaration;  // the file in which the program declares its fields
    std::string path;                        // only what is below it; empty: everything
};

// The settings of a declaration file; none without one.
[[nodiscard]] std::vector<FileSetting> readDeclaration(const ConfigurationSource& source);

// The field with a path in a tree, made with all above it where it is missing.
[[nodiscard]] Ref<CFG_Campo> fieldIn(CFG_Applicazioni& root, const SettingPath& path);
// The module or the field with a path, unset where it is missing.
[[nodiscard]] Ref<CFG_Modulo> findModule(const CFG_Applicazioni& root, const SettingPath& path);
[[nodiscard]] Ref<CFG_Campo> findField(const CFG_Applicazioni& root, const SettingPath& path);

// Declares a field in a tree. Throws UsageError when it is there already.
void declare(CFG_Applicazioni& root, const FileSetting& setting);

// The refusal of a value and a flag by a field, which takes them otherwise; empty when it does.
[[nodiscard]] std::string refusalOf(CFG_Campo& field, const std::optional<std::string>& value,
                                    const std::optional<std::string>& flag);

}  // namespace kap::cli
