// `kaputil config groups`.

#include <algorithm>
#include <iostream>

#include <nlohmann/json.hpp>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/config/config_command.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

// How much of a configuration is a group's own.
struct GroupFacts {
    std::string name;
    std::int64_t rows = 0;
    std::int64_t own = 0;  // rows that say something else than what holds for everybody
    std::int64_t problems = 0;
};

GroupFacts factsOfGroup(const Configuration& configuration, std::size_t group) {
    GroupFacts facts{configuration.groups[group]};
    for (const Setting& setting : configuration.settings) {
        if (!setting.groups[group]) {
            continue;
        }
        ++facts.rows;
        facts.own += isSameInForce(setting.inForce(group, facts.name),
                                   facts.name == kEverybody ? setting.inForceOfProgram()
                                                            : setting.inForceForEverybody())
                         ? 0
                         : 1;
        const auto isOfGroup = [&](const std::string& problem) {
            return problem.starts_with(facts.name + ": ") ||
                   problem.ends_with(" row of " + facts.name);
        };
        facts.problems += std::ranges::count_if(setting.problems, isOfGroup);
    }
    return facts;
}

void printAsJson(const std::vector<GroupFacts>& groups, const std::string& table) {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const GroupFacts& group : groups) {
        all.push_back({{"group", group.name},
                       {"rows", group.rows},
                       {"own", group.own},
                       {"problems", group.problems}});
    }
    std::cout << nlohmann::ordered_json{{"table", table}, {"groups", std::move(all)}}.dump(2)
              << '\n';
}

void printGroups(const std::vector<GroupFacts>& groups) {
    if (groups.empty()) {
        std::cout << "No groups.\n";
        return;
    }
    const Terminal terminal = Terminal::ofStandardOutput();
    std::size_t columns = 0;
    for (const GroupFacts& group : groups) {
        columns = std::max(columns, columnsOf(shownText(group.name)));
    }
    for (const GroupFacts& group : groups) {
        std::cout << padded(shownText(group.name), columns) << "  " << group.rows
                  << (group.rows == 1 ? " row" : " rows") << ", " << group.own << " of its own";
        if (group.problems > 0) {
            std::cout << ", "
                      << terminal.styled(Style::Red, plain::text(group.problems) + " refused");
        }
        std::cout << '\n';
    }
}

}  // namespace

int ConfigGroups::run() const {
    return withDatabase(
        source.connection, Access::Reading, json, [this](ado::Connection& database) {
            const Configuration configuration =
                readConfiguration(database, source, groupsIn(database, source.table));
            std::vector<GroupFacts> groups;
            for (std::size_t i = 0; i < configuration.groups.size(); ++i) {
                groups.push_back(factsOfGroup(configuration, i));
            }
            if (json) {
                printAsJson(groups, source.table);
            } else {
                printGroups(groups);
            }
            return kSuccess;
        });
}

}  // namespace kap::cli
