#include "cli/commands/classes/reference_pages.hpp"

#include <filesystem>
#include <ostream>
#include <system_error>

#include <nlohmann/json.hpp>

#include <kaputil/catalogue/catalogue.hpp>

#include "cli/commands/classes/page_words.hpp"
#include "cli/output/html_page.hpp"
#include "cli/output/output_file.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kIndexStyles = R"css(
nav { margin-bottom: 1rem; font-size: .9rem; }
input { width: 100%; font: inherit; padding: .5rem .6rem; margin: .6rem 0; border: 1px solid var(--soft);
        background: var(--paper); color: var(--ink); }
td, tbody th { overflow-wrap: anywhere; }
@media (max-width: 40rem) { tr { border-bottom: 1px solid var(--line); } tbody th, td { display: block; width: auto; border: 0; } td { padding-top: 0; } }
@media print { nav, input { display: none; } h2 { break-before: auto; } }
)css";

// Shows what has all of the words in its name or its sentence, names that begin so first.
constexpr std::string_view kSearchScript = R"js(
const box = document.getElementById("search"), found = document.getElementById("found"),
      classes = document.getElementById("classes"), none = document.getElementById("none");
const plain = text => text.toLowerCase().normalize("NFD").replace(/[\u0300-\u036f]/g, "");
const entries = ENTRIES.map(one => ({ name: one[0], href: one[1], text: one[2], key: plain(one[0] + " " + one[2]) }));
function search() {
  const words = plain(box.value).split(/\s+/).filter(word => word);
  classes.hidden = words.length > 0;
  found.replaceChildren();
  const hits = words.length ? entries.filter(one => words.every(word => one.key.includes(word))) : [];
  const rank = one => { const name = plain(one.name), last = name.split(".").pop();
    return last === words[0] || name === words[0] ? 0 : last.startsWith(words[0]) ? 1 : name.includes(words[0]) ? 2 : 3; };
  hits.sort((a, b) => rank(a) - rank(b) || a.name.localeCompare(b.name));
  for (const hit of hits) {
    const row = found.insertRow(), head = document.createElement("th"), link = document.createElement("a");
    link.href = hit.href; link.textContent = hit.name; head.scope = "row";
    head.append(link); row.append(head); row.insertCell().textContent = hit.text;
  }
  none.hidden = !words.length || hits.length > 0;
}
box.addEventListener("input", search);
search();
)js";

std::string summaryText(const ShownClass& shown, Language language) {
    return summaryOf(*shown.members, language);
}

std::string listOf(std::string_view title, const std::vector<ShownClass>& classes,
                   Language language) {
    std::string table = element("h2", title) + "\n<table>\n";
    for (const ShownClass& shown : classes) {
        table += "<tr><th scope=\"row\"><a href=\"" + html(shown.name) + ".html\">" +
                 html(shown.programmaticName) + "</a></th><td>" +
                 html(summaryText(shown, language)) + "</td></tr>\n";
    }
    return table + "</table>\n";
}

// What the script searches in; within a script element no "</" may stand.
std::string entriesOf(Language language) {
    auto entries = nlohmann::ordered_json::array();
    for (const ShownClass* shown : pagedClasses()) {
        const std::string page = shown->name + ".html";
        entries.push_back({shown->name, page, summaryText(*shown, language)});
        for (const MemberDescription& member : shown->members->members) {
            const std::string name = member.name.utf8();
            entries.push_back({shown->name + "." + name, page + "#" + name,
                               summaryOf(*shown->members, member, language)});
        }
    }
    std::string text = entries.dump();
    for (std::size_t at = text.find("</"); at != std::string::npos; at = text.find("</", at + 3)) {
        text.insert(at + 1, "\\");
    }
    return text;
}

void writeLanguage(const std::filesystem::path& folder, Language language) {
    std::error_code ignored;  // what cannot be made cannot be written into, which is told
    std::filesystem::create_directories(folder, ignored);
    writeWholeFile((folder / "index.html").string(),
                   [&](std::ostream& out) { out << indexPage(language); });
    for (const ShownClass* shown : pagedClasses()) {
        writeWholeFile((folder / (shown->name + ".html")).string(),
                       [&](std::ostream& out) { out << classPage(*shown, language); });
    }
}

// The page that leads to the languages.
std::string entrancePage() {
    return htmlPage(Language::Italian, library().description.utf8(), kReferenceStyles,
                    element("h1", library().description.utf8()) +
                        "\n<p><a href=\"it/index.html\" hreflang=\"it\">Riferimento in "
                        "italiano</a></p>\n<p><a href=\"en/index.html\" hreflang=\"en\">Reference "
                        "in English</a></p>\n");
}

}  // namespace

std::vector<const ShownClass*> pagedClasses() {
    std::vector<const ShownClass*> classes;
    for (const auto* list : {&libraryClasses(), &platformClassList(), &objectClasses()}) {
        for (const ShownClass& shown : *list) {
            classes.push_back(&shown);
        }
    }
    return classes;
}

std::string indexPage(Language language) {
    const PageWords& words = pageWords(language);
    const char* other = language == Language::Italian ? "en" : "it";
    const std::string title = library().description.utf8() + ": " + std::string(words.reference);
    std::string body = std::string("<nav><a href=\"../") + other + "/index.html\" hreflang=\"" +
                       other + "\">" + html(words.otherLanguage) + "</a></nav>\n<main>\n" +
                       element("h1", title) + "\n<input id=\"search\" type=\"search\" autofocus " +
                       "placeholder=\"" + html(words.search) + "\" aria-label=\"" +
                       html(words.search) + "\">\n<p id=\"none\" role=\"status\" hidden>" +
                       html(words.nothingFound) + "</p>\n<table id=\"found\"></table>\n" +
                       "<div id=\"classes\">\n";
    body += listOf(library().name.utf8(), libraryClasses(), language);
    body += listOf(words.alsoMade, platformClassList(), language);
    body += listOf(words.objects, objectClasses(), language);
    body += "</div>\n<script>\nconst ENTRIES = " + entriesOf(language) + ";";
    body += kSearchScript;
    return htmlPage(language, title, std::string(kReferenceStyles) + std::string(kIndexStyles),
                    body + "</script>\n</main>\n");
}

void writeReference(const std::string& folder) {
    const std::filesystem::path root(folder);
    writeLanguage(root / "it", Language::Italian);
    writeLanguage(root / "en", Language::English);
    writeWholeFile((root / "index.html").string(),
                   [](std::ostream& out) { out << entrancePage(); });
}

}  // namespace kap::cli
