#include <string>
#include <string_view>

#include "cli/commands/classes/member_text.hpp"
#include "cli/commands/classes/page_words.hpp"
#include "cli/commands/classes/reference_pages.hpp"
#include "cli/output/html_page.hpp"
#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kClassStyles = R"css(
nav { display: flex; gap: 1rem; flex-wrap: wrap; margin-bottom: 1rem; font-size: .9rem; }
code, pre { font-family: ui-monospace, "DejaVu Sans Mono", Consolas, monospace; font-size: .92em; }
pre { background: var(--band); padding: .6rem .8rem; margin: .3rem 0 .6rem; overflow-x: auto; }
section { margin: 1.6rem 0; padding-top: .8rem; border-top: 1px solid var(--line); }
section h2 { border: 0; margin: 0; padding: 0; }
.signature { white-space: pre-wrap; overflow-wrap: anywhere; }
dt { font-family: ui-monospace, "DejaVu Sans Mono", Consolas, monospace; font-weight: 600; margin-top: .4rem; }
dd { margin: 0 0 .2rem 1.5rem; }
td:first-child { white-space: nowrap; width: 1%; }
summary { cursor: pointer; color: var(--soft); }
@media (max-width: 40rem) { td:first-child { white-space: normal; } dd { margin-left: .8rem; } }
@media print { nav, details { display: none; } section { break-inside: avoid-page; } section h2 { break-before: auto; } }
)css";

std::string valueRow(std::string_view first, std::string_view second) {
    return "<tr><td><code>" + html(first) + "</code></td><td>" + html(second) + "</td></tr>\n";
}

std::string valuesTable(const std::vector<DocumentedValue>& values) {
    if (values.empty()) {
        return {};
    }
    std::string table = "<table>\n";
    for (const DocumentedValue& value : values) {
        table += valueRow(value.value, value.text);
    }
    return table + "</table>\n";
}

std::string scriptBlock(std::string_view title, const std::string& text) {
    return text.empty() ? "" : element("h3", title) + "\n" + element("pre", text) + "\n";
}

// The example, and folded away how Python writes it.
std::string exampleBlock(const std::string& text, const PageWords& words) {
    if (text.empty()) {
        return {};
    }
    return scriptBlock(words.example, text) + "<details>" + element("summary", words.inPython) +
           element("pre", pythonForm(text)) + "</details>\n";
}

std::string paragraphBlock(const Documentation& documentation) {
    std::string text;
    for (const std::string& paragraph : documentation.paragraphs) {
        text += element("p", paragraph) + "\n";
    }
    return text;
}

std::string parameterList(const Documentation& documentation, const PageWords& words) {
    if (documentation.parameters.empty()) {
        return {};
    }
    std::string list = element("h3", words.parameters) + "\n<dl>\n";
    for (const DocumentedParameter& parameter : documentation.parameters) {
        list += element("dt", parameter.name) + "<dd>" + html(parameter.text) +
                valuesTable(parameter.values) + "</dd>\n";
    }
    return list + "</dl>\n";
}

std::string errorTable(const Documentation& documentation, const PageWords& words) {
    if (documentation.errors.empty()) {
        return {};
    }
    std::string table = element("h3", words.errors) + "\n<table>\n";
    for (const DocumentedError& error : documentation.errors) {
        table += valueRow(error.number ? errorNumberText(*error.number) : "–", error.text);
    }
    return table + "</table>\n";
}

std::string signatureBlock(const MemberDescription& member) {
    std::string text = kindText(member) + " " + member.name.utf8();
    if (member.kind == MemberKind::Method || !member.parameters.empty()) {
        text += "(";
        const char* separator = "";
        for (const ParameterDescription& parameter : member.parameters) {
            text += separator + shownText(parameterText(parameter));
            separator = ", ";
        }
        text += ")";
    }
    std::string shown = "<pre class=\"signature\">" + html(text);
    if (member.resultClass != nullptr) {
        const std::string name = member.resultClass().name.utf8();
        return shown + " As <a href=\"" + name + ".html\">" + name + "</a></pre>\n";
    }
    return shown + html(resultText(member)) + "</pre>\n";
}

std::string memberSection(const ShownClass& shown, const MemberDescription& member,
                          Language language) {
    const PageWords& words = pageWords(language);
    const std::string name = member.name.utf8();
    std::string section = "<section id=\"" + html(name) + "\">\n" + element("h2", name) + "\n" +
                          signatureBlock(member);
    if (const Documentation* documentation = documentationOf(*shown.members, member, language)) {
        section += paragraphBlock(*documentation) + parameterList(*documentation, words);
        if (!documentation->result.empty()) {
            section += element("h3", words.result) + "\n" + element("p", documentation->result);
        } else if (!documentation->values.empty()) {
            section += element("h3", words.values) + "\n";
        }
        section += valuesTable(documentation->values) + errorTable(*documentation, words) +
                   exampleBlock(documentation->example, words);
    }
    return section + "</section>\n";
}

std::string memberTable(const ShownClass& shown, Language language) {
    const PageWords& words = pageWords(language);
    if (shown.members->members.empty()) {
        return element("p", words.noMembers) + "\n";
    }
    std::string table = element("h3", words.membersTitle) + "\n<table>\n";
    for (const MemberDescription& member : shown.members->members) {
        const std::string name = html(member.name.utf8());
        table += "<tr><td><a href=\"#" + name + "\"><code>" + name + "</code></a></td><td>" +
                 html(summaryOf(*shown.members, member, language)) + "</td></tr>\n";
    }
    return table + "</table>\n";
}

std::string classFacts(const ShownClass& shown, const PageWords& words) {
    std::string text =
        std::string(words.defaultMember) + ": " +
        (shown.defaultMember.empty() ? std::string(words.none) : shown.defaultMember) + " · " +
        std::string(instancingWords(shown.instancing, words));
    std::string made = "<p class=\"soft\">" + html(text);
    if (shown.members->events != nullptr) {
        const std::string name = shown.members->events().name.utf8();
        made += " · " + html(words.events) + ": <a href=\"" + name + ".html\">" + name + "</a>";
    }
    return made + "</p>\n";
}

std::string classNavigation(const ShownClass& shown, Language language) {
    const PageWords& words = pageWords(language);
    const char* other = language == Language::Italian ? "en" : "it";
    return "<nav><a href=\"index.html\">" + html(words.allClasses) + "</a><a href=\"../" + other +
           "/" + html(shown.name) + ".html\" hreflang=\"" + other + "\">" +
           html(words.otherLanguage) + "</a></nav>\n";
}

}  // namespace

std::string classPage(const ShownClass& shown, Language language) {
    const PageWords& words = pageWords(language);
    std::string body =
        classNavigation(shown, language) + element("h1", shown.programmaticName) + "\n";
    const ClassDocumentation* documentation = documentationOf(*shown.members, language);
    if (documentation != nullptr) {
        body += paragraphBlock(documentation->itself) + classFacts(shown, words) +
                valuesTable(documentation->itself.values) +
                scriptBlock(words.setup, documentation->setup) +
                exampleBlock(documentation->itself.example, words);
    }
    body += memberTable(shown, language);
    for (const MemberDescription& member : shown.members->members) {
        body += memberSection(shown, member, language);
    }
    return htmlPage(language, shown.programmaticName, kClassStyles, body);
}

}  // namespace kap::cli
