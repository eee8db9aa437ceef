// `kaputil config diff`.

#include <algorithm>
#include <iostream>

#include <nlohmann/json.hpp>

#include "cli/commands/config/config_command.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

struct Difference {
    SettingPath path;
    std::optional<SettingInForce> first;
    std::optional<SettingInForce> second;
};

bool isSame(const std::optional<SettingInForce>& one, const std::optional<SettingInForce>& other) {
    if (!one || !other) {
        return one.has_value() == other.has_value();
    }
    return one->value == other->value && one->flag == other->flag;
}

std::vector<Difference> differencesIn(const Configuration& configuration) {
    std::vector<Difference> differences;
    for (const Setting& setting : configuration.settings) {
        Difference one = {setting.path, setting.inForce(0, configuration.groups[0]),
                          setting.inForce(1, configuration.groups[1])};
        if (!isSame(one.first, one.second)) {
            differences.push_back(std::move(one));
        }
    }
    return differences;
}

Json jsonOf(const std::optional<SettingInForce>& side) {
    if (!side) {
        return nullptr;
    }
    return {{"value", side->value},
            {"flag", side->flag},
            {"from", side->from.empty() ? "program" : side->from}};
}

void printDifferencesAsJson(const ConfigDiff& options, const std::vector<Difference>& differences) {
    Json all = Json::array();
    for (const Difference& one : differences) {
        all.push_back({{"application", one.path.application},
                       {"procedure", one.path.procedure},
                       {"module", one.path.module},
                       {"field", one.path.field},
                       {"first", jsonOf(one.first)},
                       {"second", jsonOf(one.second)}});
    }
    std::cout << Json{{"first", options.first},
                      {"second", options.second},
                      {"table", options.source.table},
                      {"differences", std::move(all)}}
                     .dump(2)
              << '\n';
}

std::string plainText(const std::string& value) {
    return value.empty() ? "(empty)" : shownText(value);
}

// The text of a property; empty when there is none of this name.
std::string valueOf(const Properties& properties, const std::string& name) {
    const auto found = std::ranges::find(properties, name, &Properties::value_type::first);
    return found == properties.end() ? std::string() : found->second;
}

// A value, of which only the properties matter that the other one does not have the same.
std::string valueText(const SettingInForce& side, const std::optional<SettingInForce>& other) {
    const Properties properties = propertiesIn(side.value);
    const Properties others = other ? propertiesIn(other->value) : Properties();
    if (properties.empty() || others.empty()) {
        return plainText(side.value);
    }
    std::string text;
    for (const auto& [name, value] : properties) {
        if (valueOf(others, name) != value) {
            text += (text.empty() ? "" : ", ") + shownText(name) + " " + plainText(value);
        }
    }
    return text.empty() ? plainText(side.value) : text;
}

void printSide(const std::string& group, std::size_t columns,
               const std::optional<SettingInForce>& side,
               const std::optional<SettingInForce>& other, const Terminal& terminal) {
    std::cout << "  " << padded(shownText(group), columns) << "  ";
    if (!side) {
        std::cout << terminal.styled(Style::Dim, "(no value)") << '\n';
        return;
    }
    const std::string from = side->from.empty() ? "the program" : shownText(side->from);
    std::cout << valueText(*side, other) << "  "
              << terminal.styled(Style::Dim, "flag " + shownText(side->flag) +
                                                 (side->from == group ? "" : ", from " + from))
              << '\n';
}

void print(const ConfigDiff& options, const std::vector<Difference>& differences) {
    const Terminal terminal = Terminal::ofStandardOutput();
    const std::size_t columns =
        std::max(columnsOf(shownText(options.first)), columnsOf(shownText(options.second)));
    for (const Difference& one : differences) {
        std::cout << terminal.styled(Style::Bold, shownText(one.path.text())) << '\n';
        printSide(options.first, columns, one.first, one.second, terminal);
        printSide(options.second, columns, one.second, one.first, terminal);
    }
    if (differences.empty()) {
        std::cout << "No differences.\n";
    }
}

}  // namespace

int ConfigDiff::run() const {
    return withDatabase(source.connection, Access::Reading, json,
                        [this](ado::Connection& database) {
                            const auto differences =
                                differencesIn(readConfiguration(database, source, {first, second}));
                            if (json) {
                                printDifferencesAsJson(*this, differences);
                            } else {
                                print(*this, differences);
                            }
                            return kSuccess;
                        });
}

}  // namespace kap::cli
