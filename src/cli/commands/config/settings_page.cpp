#include "cli/commands/config/settings_page.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "cli/output/html_page.hpp"
#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kStylesOfSettings = R"css(
body { max-width: none; }
thead th { position: sticky; top: 0; }
td.own { background: #fff3cd; font-weight: 600; }
tr.differs th { box-shadow: inset 3px 0 #b45309; }
tbody th { font-weight: 400; }
)css";

class SettingsPage {
public:
    SettingsPage(const Configuration& configuration, Language language)
        : configuration_(configuration), language_(language) {}

    std::string body(const std::string& table) {
        text_ =
            element("h1", title()) +
            element("p",
                    table + " · " + plain::text(configuration_.groups.size()) +
                        word(" gruppi · differenze: ", " groups · differences: ") +
                        plain::text(countDifferences()),
                    "soft") +
            element("p",
                    word("Segnato: i campi in cui i gruppi differiscono, e ciò che un gruppo ha "
                         "di suo.",
                         "Marked: the fields in which groups differ, and what a group has of "
                         "its own."),
                    "soft");
        SettingPath last;
        for (const Setting& setting : configuration_.settings) {
            const std::string module = moduleOf(setting.path);
            if (text_.empty() || module != moduleOf(last)) {
                text_ += last.field.empty() ? "" : kEnd;
                begin(module);
            }
            row(setting);
            last = setting.path;
        }
        return text_ + (last.field.empty() ? "" : kEnd);
    }
    [[nodiscard]] std::string title() const {
        return word("Impostazioni dei gruppi", "Settings of groups");
    }

private:
    static constexpr const char* kEnd = "</tbody></table></div>\n";

    [[nodiscard]] std::string word(const char* italian, const char* english) const {
        return language_ == Language::Italian ? italian : english;
    }
    static std::string moduleOf(const SettingPath& path) {
        return path.application + " \\ " + path.procedure + " \\ " + path.module;
    }
    [[nodiscard]] bool differs(const Setting& setting) const {
        const auto first = setting.inForce(0, configuration_.groups[0]);
        for (std::size_t i = 1; i < configuration_.groups.size(); ++i) {
            if (!isSameInForce(first, setting.inForce(i, configuration_.groups[i]))) {
                return true;
            }
        }
        return false;
    }
    [[nodiscard]] std::size_t countDifferences() const {
        return static_cast<std::size_t>(std::ranges::count_if(
            configuration_.settings, [this](const Setting& setting) { return differs(setting); }));
    }

    void begin(const std::string& module) {
        text_ += element("h3", module) + "\n<div class=\"wide\"><table>\n<thead><tr>" +
                 element("th", word("Campo", "Field"));
        for (const std::string& group : configuration_.groups) {
            text_ += element("th", shownText(group));
        }
        text_ += "</tr></thead>\n<tbody>\n";
    }

    void row(const Setting& setting) {
        text_ += differs(setting) ? "<tr class=\"differs\">" : "<tr>";
        text_ += element("th", shownText(setting.path.field));
        for (std::size_t i = 0; i < configuration_.groups.size(); ++i) {
            text_ +=
                cell(setting.inForce(i, configuration_.groups[i]), setting.inForceForEverybody());
        }
        text_ += "</tr>\n";
    }

    [[nodiscard]] std::string cell(const std::optional<SettingInForce>& side,
                                   const std::optional<SettingInForce>& everybody) const {
        const bool own = !isSameInForce(side, everybody);
        std::string text = own ? "<td class=\"own\">" : "<td>";
        if (!side) {
            return text + element("span", word("nessun valore", "no value"), "soft") + "</td>";
        }
        const Properties properties = propertiesIn(side->value);
        for (const auto& [name, value] : properties) {
            text += html(shownText(name) + " " + shownText(value)) + "<br>";
        }
        if (properties.empty()) {
            text += html(shownText(side->value)) + " ";
        }
        return text + element("span", "flag " + shownText(side->flag), "soft") + "</td>";
    }

    const Configuration& configuration_;
    Language language_;
    std::string text_;
};

}  // namespace

std::string settingsPage(const Configuration& configuration, const std::string& table,
                         Language language) {
    SettingsPage page(configuration, language);
    const std::string body = page.body(table);
    return htmlPage(language, page.title(), kStylesOfSettings, body);
}

}  // namespace kap::cli
