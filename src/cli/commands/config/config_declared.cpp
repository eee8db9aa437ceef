// `kaputil config declared`.

#include <algorithm>
#include <iostream>

#include <nlohmann/json.hpp>

#include "cli/commands/config/config_command.hpp"
#include "cli/commands/config/setting_headings.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kHasProblems = 4;

struct HeldRow {
    std::string group;
    SettingRow row;
};

// The rows of a field: everybody's, and those of the groups.
std::vector<HeldRow> rowsHeld(const Configuration& configuration, const Setting& setting) {
    std::vector<HeldRow> rows;
    for (std::size_t i = 0; i < configuration.groups.size(); ++i) {
        if (setting.groups[i]) {
            rows.push_back({configuration.groups[i], *setting.groups[i]});
        }
    }
    return rows;
}

Json jsonOf(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json(nullptr);
}

Json jsonOf(const Configuration& configuration, const Setting& setting) {
    Json held = Json::array();
    for (const HeldRow& row : rowsHeld(configuration, setting)) {
        held.push_back({{"group", row.group},
                        {"value", jsonOf(row.row.value)},
                        {"flag", jsonOf(row.row.flag)}});
    }
    Json program = nullptr;
    if (setting.declared) {
        program = {{"value", jsonOf(setting.declared->value)},
                   {"flag", setting.declared->flag.value_or("0")}};
    }
    return {{"application", setting.path.application},
            {"procedure", setting.path.procedure},
            {"module", setting.path.module},
            {"field", setting.path.field},
            {"program", std::move(program)},
            {"rows", std::move(held)},
            {"addedAtRunTime", setting.addedAtRunTime()},
            {"problems", setting.problems}};
}

std::string shownValue(const std::optional<std::string>& value) {
    if (!value) {
        return "Null";
    }
    return value->empty() ? "(empty)" : shownText(*value);
}

// The tree: each field with what the program declares, below it the rows that say otherwise.
class DeclaredTreePrinter {
public:
    DeclaredTreePrinter(const Configuration& configuration, const Terminal& terminal)
        : configuration_(configuration), terminal_(terminal) {}

    void print() {
        SettingHeadings headings(std::cout, terminal_);
        for (const Setting& setting : configuration_.settings) {
            headings.show(setting.path);
            printField(setting);
        }
        std::cout << configuration_.settings.size()
                  << (configuration_.settings.size() == 1 ? " field, " : " fields, ") << overruled_
                  << " with rows that say otherwise, " << undeclared_ << " not declared, "
                  << problems_ << " refused\n";
    }

private:
    void printField(const Setting& setting) {
        std::cout << "      " << shownText(setting.path.field) << "  ";
        if (setting.declared) {
            std::cout << (setting.declared->value ? shownValue(setting.declared->value)
                                                  : "(no default)")
                      << "  "
                      << terminal_.styled(
                             Style::Dim, "flag " + shownText(setting.declared->flag.value_or("0")));
        } else {
            ++undeclared_;
            std::cout << terminal_.styled(
                Style::Yellow, setting.addedAtRunTime() ? "added at run time" : "not declared");
        }
        std::cout << '\n';
        bool any = false;
        for (const HeldRow& held : rowsHeld(configuration_, setting)) {
            any = printRow(setting, held) || any;
        }
        overruled_ += any && setting.declared ? 1U : 0U;
        for (const std::string& problem : setting.problems) {
            ++problems_;
            std::cout << "        " << terminal_.styled(Style::Red, "! " + shownText(problem))
                      << '\n';
        }
    }

    // Whether it says otherwise.
    bool printRow(const Setting& setting, const HeldRow& held) const {
        const bool same = setting.declared && setting.declared->value &&
                          setting.declared->value == held.row.value &&
                          setting.declared->flag.value_or("0") == held.row.flag.value_or("");
        const std::string text = "        " + shownText(held.group) + "  " +
                                 (same ? "the same" : shownValue(held.row.value)) +
                                 (same ? "" : "  flag " + shownValue(held.row.flag));
        std::cout << (same ? terminal_.styled(Style::Dim, text) : text) << '\n';
        return !same;
    }

    const Configuration& configuration_;
    Terminal terminal_;
    std::size_t overruled_ = 0;
    std::size_t undeclared_ = 0;
    std::size_t problems_ = 0;
};

bool hasProblems(const Configuration& configuration) {
    return std::ranges::any_of(configuration.settings,
                               [](const Setting& setting) { return !setting.problems.empty(); });
}

}  // namespace

int ConfigDeclared::run() const {
    return withDatabase(
        source.connection, Access::Reading, json, [this](ado::Connection& database) {
            const Configuration configuration =
                readConfiguration(database, source, groupsIn(database, source.table));
            if (json) {
                Json settings = Json::array();
                for (const Setting& setting : configuration.settings) {
                    settings.push_back(jsonOf(configuration, setting));
                }
                std::cout << Json{{"table", source.table}, {"settings", std::move(settings)}}.dump(
                                 2)
                          << '\n';
            } else {
                DeclaredTreePrinter(configuration, Terminal::ofStandardOutput()).print();
            }
            return hasProblems(configuration) ? kHasProblems : kSuccess;
        });
}

}  // namespace kap::cli
