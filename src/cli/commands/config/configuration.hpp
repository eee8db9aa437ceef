#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "cli/commands/config/declared_tree.hpp"
#include "cli/commands/config/settings_file.hpp"

// A configuration as the command line sees it: for each field what the program declares and what
// the table holds for everybody and for the groups asked for.
namespace kap::cli {

// The group of the rows for everybody.
inline constexpr const char* kEverybody = "DEFAULT";

// A row of the table. nullopt is Null.
struct SettingRow {
    std::optional<std::string> value;
    std::optional<std::string> flag;
};

// What a field is for a group, and who says so: the group, DEFAULT, or "" for the program.
struct SettingInForce {
    std::string value;
    std::string flag;
    std::string from;

    // Whether a field is the same for both, whoever says so.
    [[nodiscard]] bool isLike(const SettingInForce& other) const {
        return value == other.value && flag == other.flag;
    }
};

[[nodiscard]] bool isSameInForce(const std::optional<SettingInForce>& one,
                                 const std::optional<SettingInForce>& other);

struct Setting {
    SettingPath path;
    std::optional<FileSetting> declared;
    std::optional<SettingRow> everybody;
    std::vector<std::optional<SettingRow>> groups;  // as they were asked for
    std::vector<std::string> problems;              // what would end the program's load

    // Whether the field's value marks it as added at run time.
    [[nodiscard]] bool addedAtRunTime() const;
    // nullopt when neither the program nor a row gives a value.
    [[nodiscard]] std::optional<SettingInForce> inForce(std::size_t group,
                                                        const std::string& name) const;
    // The same for those who have no row of their own.
    [[nodiscard]] std::optional<SettingInForce> inForceForEverybody() const;
    // The same without any row.
    [[nodiscard]] std::optional<SettingInForce> inForceOfProgram() const;
};

struct Configuration {
    std::vector<std::string> groups;
    bool hasDeclaration = false;
    std::vector<Setting> settings;  // as declared, then as the table sorts them
};

// The groups that have rows in the table, in its order, each in the letters of its first row.
[[nodiscard]] std::vector<std::string> groupsIn(ado::Connection& connection,
                                                const std::string& table);

// Reads what a declaration file (throws UsageError for one that cannot be used) and the table say.
// Raises the database's errors.
[[nodiscard]] Configuration readConfiguration(ado::Connection& connection,
                                              const ConfigurationSource& source,
                                              const std::vector<std::string>& groups);

// Properties of a value that is a property string: names and texts in their order. Empty for any
// other value.
using Properties = std::vector<std::pair<std::string, std::string>>;
[[nodiscard]] Properties propertiesIn(const std::string& value);

}  // namespace kap::cli
