// `kaputil config show`.

#include <iostream>
#include <utility>

#include <nlohmann/json.hpp>

#include "base/ascii.hpp"
#include "cli/commands/config/config_command.hpp"
#include "cli/commands/config/setting_headings.hpp"
#include "cli/names.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kProgram = "the program";

Json jsonOf(const std::optional<SettingRow>& row) {
    if (!row) {
        return nullptr;
    }
    return {{"value", row->value ? Json(*row->value) : Json(nullptr)},
            {"flag", row->flag ? Json(*row->flag) : Json(nullptr)}};
}

Json jsonOf(const std::optional<FileSetting>& declared) {
    if (!declared) {
        return nullptr;
    }
    const auto text = [](const std::optional<std::string>& value) {
        return value ? Json(*value) : Json(nullptr);
    };
    return {{"value", text(declared->value)},
            {"flag", declared->flag.value_or("0")},
            {"allowed", text(declared->allowedValues)},
            {"flags", declared->allowedFlags.value_or("0|1")},
            {"note", declared->note},
            {"mandatory", declared->mandatory}};
}

Json jsonOf(const Setting& setting, const std::string& group) {
    const auto inForce = setting.inForce(0, group);
    return {
        {"application", setting.path.application},
        {"procedure", setting.path.procedure},
        {"module", setting.path.module},
        {"field", setting.path.field},
        {"value", inForce ? Json(inForce->value) : Json(nullptr)},
        {"flag", inForce ? Json(inForce->flag) : Json(nullptr)},
        {"from", inForce ? Json(inForce->from.empty() ? "program" : inForce->from) : Json(nullptr)},
        {"program", jsonOf(setting.declared)},
        {"everybody", jsonOf(setting.everybody)},
        {"group", jsonOf(setting.groups[0])},
        {"addedAtRunTime", setting.addedAtRunTime()},
        {"problems", setting.problems}};
}

// Prints settings as an indented tree, every name of the way down once.
class TreePrinter {
public:
    TreePrinter(std::ostream& out, const Terminal& terminal, std::string group)
        : out_(out), terminal_(terminal), headings_(out, terminal), group_(std::move(group)) {}

    void print(const std::vector<Setting>& settings) {
        for (std::size_t i = 0; i < settings.size();) {
            std::size_t end = i;
            nameColumns_ = 0;
            while (end < settings.size() && inSameModule(settings[i].path, settings[end].path)) {
                nameColumns_ =
                    std::max(nameColumns_, columnsOf(shownText(settings[end].path.field)));
                ++end;
            }
            headings_.show(settings[i].path);
            for (; i < end; ++i) {
                printSetting(settings[i]);
            }
        }
    }

private:
    static bool inSameModule(const SettingPath& one, const SettingPath& other) {
        return one.application == other.application && one.procedure == other.procedure &&
               one.module == other.module;
    }

    // What the value in force overrules: ", over 15 of DEFAULT and 10 of the program".
    [[nodiscard]] std::string overruled(const Setting& setting) const {
        std::vector<std::string> texts;
        if (setting.groups[0] && setting.everybody && !equalsIgnoringCase(group_, kEverybody)) {
            texts.push_back(valueText(setting.everybody->value) + " of " + kEverybody);
        }
        if (setting.declared && setting.declared->value &&
            (setting.groups[0] || setting.everybody)) {
            texts.push_back(valueText(setting.declared->value) + " of " + kProgram);
        }
        std::string all;
        for (const std::string& text : texts) {
            all += (all.empty() ? ", over " : " and ") + text;
        }
        return all;
    }

    static std::string valueText(const std::optional<std::string>& value) {
        if (!value) {
            return "Null";
        }
        if (!propertiesIn(*value).empty()) {
            return "that";
        }
        return value->empty() ? "(empty)" : shownText(*value);
    }

    void printSetting(const Setting& setting) {
        const auto inForce = setting.inForce(0, group_);
        const Properties properties = inForce ? propertiesIn(inForce->value) : Properties();
        out_ << "      " << padded(shownText(setting.path.field), nameColumns_) << "  ";
        if (!inForce) {
            out_ << terminal_.styled(Style::Dim, "(no value)");
        } else {
            if (properties.empty()) {
                out_ << valueText(inForce->value) << "  ";
            }
            out_ << terminal_.styled(
                Style::Dim, "flag " + shownText(inForce->flag) + ", from " +
                                (inForce->from.empty() ? kProgram : shownText(inForce->from)) +
                                overruled(setting) +
                                (setting.addedAtRunTime() ? ", added at run time" : ""));
        }
        out_ << '\n';
        printBelow(setting, properties);
    }

    void printBelow(const Setting& setting, const Properties& properties) {
        std::size_t columns = 0;
        for (const auto& [name, text] : properties) {
            columns = std::max(columns, columnsOf(shownText(name)));
        }
        for (const auto& [name, text] : properties) {
            std::string line =
                "        " + padded(shownText(name), columns) + "  " + shownText(text);
            line.erase(line.find_last_not_of(' ') + 1);
            out_ << line << '\n';
        }
        if (setting.declared && !setting.declared->note.empty()) {
            out_ << "        " << terminal_.styled(Style::Dim, shownText(setting.declared->note))
                 << '\n';
        }
        for (const std::string& problem : setting.problems) {
            out_ << "        " << terminal_.styled(Style::Red, "! " + shownText(problem)) << '\n';
        }
    }

    std::ostream& out_;
    Terminal terminal_;
    SettingHeadings headings_;
    std::string group_;
    std::size_t nameColumns_ = 0;
};

void printTreeAsJson(const ConfigShow& options, const Configuration& configuration) {
    Json settings = Json::array();
    for (const Setting& setting : configuration.settings) {
        settings.push_back(jsonOf(setting, options.group));
    }
    std::cout << Json{{"group", options.group},
                      {"table", options.source.table},
                      {"settings", std::move(settings)}}
                     .dump(2)
              << '\n';
}

}  // namespace

int ConfigShow::run() const {
    return withDatabase(
        source.connection, Access::Reading, json, [this](ado::Connection& database) {
            const Configuration configuration = readConfiguration(database, source, {group});
            if (json) {
                printTreeAsJson(*this, configuration);
                return kSuccess;
            }
            if (configuration.settings.empty()) {
                std::cout << "No settings.\n";
            }
            TreePrinter(std::cout, Terminal::ofStandardOutput(), group)
                .print(configuration.settings);
            return kSuccess;
        });
}

}  // namespace kap::cli
