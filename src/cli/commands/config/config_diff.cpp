// `kaputil config diff`.

#include <algorithm>
#include <iostream>

#include <nlohmann/json.hpp>

#include "cli/commands/config/config_command.hpp"
#include "cli/commands/config/settings_page.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

struct Difference {
    SettingPath path;
    std::vector<std::optional<SettingInForce>> sides;  // one a group
};

std::vector<Difference> differencesIn(const Configuration& configuration) {
    std::vector<Difference> differences;
    for (const Setting& setting : configuration.settings) {
        Difference one = {setting.path, {}};
        for (std::size_t i = 0; i < configuration.groups.size(); ++i) {
            one.sides.push_back(setting.inForce(i, configuration.groups[i]));
        }
        const auto differs = [&](const std::optional<SettingInForce>& side) {
            return !isSameInForce(one.sides.front(), side);
        };
        if (std::ranges::any_of(one.sides, differs)) {
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
        Json sides = Json::array();
        for (const auto& side : one.sides) {
            sides.push_back(jsonOf(side));
        }
        all.push_back({{"application", one.path.application},
                       {"procedure", one.path.procedure},
                       {"module", one.path.module},
                       {"field", one.path.field},
                       {"groups", std::move(sides)}});
    }
    std::cout << Json{{"groups", options.groups},
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

// Of two groups only what differs is shown of a value with properties; of more the whole.
void print(const ConfigDiff& options, const std::vector<Difference>& differences) {
    const Terminal terminal = Terminal::ofStandardOutput();
    std::size_t columns = 0;
    for (const std::string& group : options.groups) {
        columns = std::max(columns, columnsOf(shownText(group)));
    }
    for (const Difference& one : differences) {
        std::cout << terminal.styled(Style::Bold, shownText(one.path.text())) << '\n';
        for (std::size_t i = 0; i < one.sides.size(); ++i) {
            const auto other = one.sides.size() == 2 ? one.sides[1 - i] : std::nullopt;
            printSide(options.groups[i], columns, one.sides[i], other, terminal);
        }
    }
    if (differences.empty()) {
        std::cout << "No differences.\n";
    }
}

}  // namespace

int ConfigDiff::run() const {
    if (groups.size() < 2) {
        throw UsageError("two groups or more are compared (see \"kaputil config diff --help\")");
    }
    return withDatabase(
        source.connection, Access::Reading, json, [this](ado::Connection& database) {
            const Configuration configuration = readConfiguration(database, source, groups);
            if (html) {
                std::cout << settingsPage(configuration, source.table, language);
            } else if (json) {
                printDifferencesAsJson(*this, differencesIn(configuration));
            } else {
                print(*this, differencesIn(configuration));
            }
            return kSuccess;
        });
}

}  // namespace kap::cli
