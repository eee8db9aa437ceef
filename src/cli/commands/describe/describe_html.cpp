#include <ostream>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/describe/describe_output.hpp"
#include "cli/commands/describe/relation_drawing.hpp"
#include "cli/output/html_page.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::cli {
namespace {

class DescriptionPage {
public:
    DescriptionPage(const DatabaseFacts& facts, Language language)
        : facts_(facts), language_(language) {}

    std::string body(const std::string& source, const std::string& time) {
        add(element("h1", title()) + "<p class=\"soft\">" + html(source + " · " + time + size()) +
            "</p>\n");
        summary();
        if (const std::string drawing = relationDrawing(facts_, language_); !drawing.empty()) {
            add(element("h3", word("Chi si riferisce a chi", "Who refers to whom")) +
                "<div class=\"wide\">" + drawing + "</div>\n");
        }
        for (const TableFact& table : facts_.tables) {
            section(table);
        }
        modules();
        add("<footer>" +
            html(word("Generato da", "Made by") + " kaputil describe · " + source + " · " + time) +
            "</footer>\n");
        return std::move(text_);
    }

    [[nodiscard]] std::string title() const {
        return word("Descrizione della base dati", "Description of the database");
    }

private:
    [[nodiscard]] std::string word(const char* italian, const char* english) const {
        return language_ == Language::Italian ? italian : english;
    }
    void add(const std::string& text) { text_ += text; }

    // " · 1.234 kB"
    [[nodiscard]] std::string size() const {
        constexpr std::int64_t kKilobyte = 1000;
        return facts_.bytes
                   ? " · " + grouped((*facts_.bytes + kKilobyte - 1) / kKilobyte, language_) + " kB"
                   : std::string();
    }

    void head(std::initializer_list<std::string> titles) {
        add("<div class=\"wide\"><table><thead><tr>");
        for (const std::string& one : titles) {
            add(element("th", one));
        }
        add("</tr></thead>\n<tbody>\n");
    }
    void row(std::initializer_list<std::string> texts) {
        add("<tr>");
        for (const std::string& one : texts) {
            add(element("td", one));
        }
        add("</tr>\n");
    }
    void endTable() { add("</tbody></table></div>\n"); }

    void summary() {
        head({word("Tabella", "Table"), word("Righe", "Rows"), word("Colonne", "Columns"),
              word("Chiave", "Key"), word("Si riferisce a", "Refers to")});
        for (const TableFact& table : facts_.tables) {
            std::string key;
            for (const IndexFact& index : table.indexes) {
                key = index.primary ? migrate::joined(index.columns) : key;
            }
            std::vector<std::string> targets;
            for (const ForeignKeyFact& one : table.foreignKeys) {
                targets.push_back(one.target);
            }
            add("<tr><td><a href=\"#t-" + html(table.name) + "\">" + html(table.name) +
                "</a></td>" + element("td", grouped(table.rows, language_), "n") +
                element("td", plain::text(table.columns.size()), "n") + element("td", key) +
                element("td", migrate::joined(targets)) + "</tr>\n");
        }
        endTable();
    }

    void section(const TableFact& table) {
        add("<h2 id=\"t-" + html(table.name) + "\">" + html(table.name) + "</h2>\n");
        add(element("p", word("Righe: ", "Rows: ") + grouped(table.rows, language_), "soft") +
            "\n");
        head({word("Colonna", "Column"), word("Tipo", "Type"), "Null",
              word("Predefinito", "Default"), word("Altro", "Else")});
        for (const ColumnFact& column : table.columns) {
            std::string more = column.identity ? word("identità", "identity") : "";
            more += column.computed ? word("calcolata", "computed") : "";
            row({column.name, column.type, column.nullable ? word("sì", "yes") : "",
                 column.defaultValue, more});
        }
        endTable();
        keys(table);
        definitions(word("Controlli", "Checks"), table.checks);
        definitions("Trigger", table.triggers);
    }

    void keys(const TableFact& table) {
        if (table.indexes.empty() && table.foreignKeys.empty()) {
            return;
        }
        add(element("h3", word("Chiavi e indici", "Keys and indexes")));
        head({word("Nome", "Name"), word("Che cos'è", "What it is"), word("Colonne", "Columns"),
              word("Si riferisce a", "Refers to")});
        for (const IndexFact& index : table.indexes) {
            row({index.name,
                 index.primary  ? word("chiave primaria", "primary key")
                 : index.unique ? word("univoco", "unique")
                                : word("indice", "index"),
                 migrate::joined(index.columns), ""});
        }
        for (const ForeignKeyFact& key : table.foreignKeys) {
            row({key.name, word("chiave esterna", "foreign key"), migrate::joined(key.columns),
                 key.target + " (" + migrate::joined(key.targetColumns) + ")"});
        }
        endTable();
    }

    void definitions(const std::string& heading, const std::vector<ModuleFact>& all) {
        if (all.empty()) {
            return;
        }
        add(element("h3", heading));
        for (const ModuleFact& one : all) {
            add(element("p", one.name) + element("pre", one.definition) + "\n");
        }
    }

    void modules() {
        if (facts_.modules.empty()) {
            return;
        }
        add(element("h2", word("Viste, procedure e funzioni", "Views, procedures and functions")));
        for (const ModuleFact& one : facts_.modules) {
            add(element("p", one.name) + element("pre", one.definition) + "\n");
        }
    }

    const DatabaseFacts& facts_;
    Language language_;
    std::string text_;
};

}  // namespace

void printFactsHtml(std::ostream& out, const DatabaseFacts& facts, Language language,
                    const std::string& source, Date time) {
    DescriptionPage page(facts, language);
    const std::string title = page.title();
    out << htmlPage(language, title, drawingStyles(), page.body(source, minuteFor(time, language)));
}

}  // namespace kap::cli
