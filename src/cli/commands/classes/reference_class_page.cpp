#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

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
section { margin: 1.6rem 0; padding-top: .8rem; border-top: 1px solid var(--line); scroll-margin-top: 3rem; }
section h2 { border: 0; margin: 0; padding: 0; }
.signature { white-space: pre-wrap; overflow-wrap: anywhere; }
dt { font-family: ui-monospace, "DejaVu Sans Mono", Consolas, monospace; font-weight: 600; margin-top: .4rem; }
dd { margin: 0 0 .2rem 1.5rem; }
.languages { position: sticky; top: 0; margin: 1rem 0; padding: .4rem 0; border: 0; border-bottom: 1px solid var(--line);
             background: var(--paper); font-size: .9rem; }
.languages legend { float: left; margin-right: 1rem; padding: 0; color: var(--soft); }
.languages label { margin-right: 1rem; white-space: nowrap; cursor: pointer; }
.form h4 { margin: .4rem 0 0; font-size: .8rem; font-weight: 600; color: var(--soft); }
body:has(#vbscript:checked) .form:not(.vbscript), body:has(#cpp:checked) .form:not(.cpp),
body:has(#python:checked) .form:not(.python) { display: none; }
@media (max-width: 40rem) { tbody th { white-space: normal; } dd { margin-left: .8rem; } pre { padding: .5rem; }
                            .languages legend { float: none; } }
@media print { nav, .languages { display: none; } section { break-inside: avoid-page; } h2, section h2 { break-before: auto; } }
)css";

// Shows the language that was chosen last, where the browser remembers it.
constexpr std::string_view kLanguageScript = R"js(<script>
for (const choice of document.querySelectorAll(".languages input")) {
  try {
    if (localStorage.getItem("kaputil-examples") === choice.id) choice.checked = true;
    choice.addEventListener("change", () => localStorage.setItem("kaputil-examples", choice.id));
  } catch (nowhereToKeepIt) {}
}
</script>
)js";

std::string valueRow(std::string_view first, std::string_view second) {
    return "<tr><th scope=\"row\"><code>" + html(first) + "</code></th><td>" + html(second) +
           "</td></tr>\n";
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

// A script in every language; where the page is not told which to show, one stands below the other.
std::string scriptForms(const std::string& cpp, const std::string& script) {
    const auto form = [](const std::string& className, std::string_view name,
                         const std::string& text) {
        return "<div class=\"form " + className + "\">" + element("h4", name) +
               element("pre", text) + "</div>\n";
    };
    return form("vbscript", "VBScript", vbscriptForm(script)) + form("cpp", "C++", cpp) +
           form("python", "Python", pythonForm(script));
}

std::string exampleBlock(const ClassDocumentation& documentation, const std::string& example,
                         const PageWords& words) {
    if (example.empty()) {
        return {};
    }
    return element("h3", words.example) + "\n" +
           scriptForms(cppForm(example, documentation.setup), example);
}

// The headers that the examples of a class need in C++; empty when it has none.
std::string headersOf(const ClassDocumentation& documentation) {
    const std::string_view setup = documentation.setup;
    std::string code = cppForm(setup) + cppForm(documentation.itself.example, setup);
    for (const auto& [name, member] : documentation.members) {
        code += cppForm(member.example, setup);
    }
    return code.empty() ? code : cppHeaders(code) + "\n";
}

// What all examples of a class begin with, and the example of the class itself.
std::string classExample(const ClassDocumentation& documentation, const std::string& headers,
                         const PageWords& words) {
    const std::string& setup = documentation.setup;
    const std::string& example = documentation.itself.example;
    std::string blocks;
    if (!setup.empty()) {
        blocks += "<h2 id=\"setup\">" + html(words.setup) + "</h2>\n" +
                  scriptForms(headers + cppForm(setup), setup);
    }
    if (!example.empty()) {
        blocks += element("h2", words.example) + "\n" +
                  scriptForms((setup.empty() ? headers : "") + cppForm(example, setup), example);
    }
    return blocks;
}

std::string languageChoice(const PageWords& words) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kForms = {
        {{"vbscript", "VBScript"}, {"cpp", "C++"}, {"python", "Python"}}};
    std::string made = "<fieldset class=\"languages\">" + element("legend", words.examplesIn);
    for (const auto& [id, name] : kForms) {
        made += "<label><input type=\"radio\" name=\"language\" id=\"" + std::string(id) + "\"" +
                (id == kForms.front().first ? " checked" : "") + "> " + html(name) + "</label>";
    }
    return made + "</fieldset>\n" + std::string(kLanguageScript);
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

std::string memberSection(const ClassDocumentation& ofClass, const MemberDescription& member,
                          const PageWords& words) {
    const std::string name = member.name.utf8();
    std::string section = "<section id=\"" + html(name) + "\">\n" + element("h2", name) + "\n" +
                          signatureBlock(member);
    if (const Documentation* documentation = ofClass.find(name)) {
        section += paragraphBlock(*documentation) + parameterList(*documentation, words);
        if (!documentation->result.empty()) {
            section += element("h3", words.result) + "\n" + element("p", documentation->result);
        } else if (!documentation->values.empty()) {
            section += element("h3", words.values) + "\n";
        }
        section += valuesTable(documentation->values) + errorTable(*documentation, words) +
                   exampleBlock(ofClass, documentation->example, words);
    }
    return section + "</section>\n";
}

std::string memberTable(const ShownClass& shown, Language language) {
    const PageWords& words = pageWords(language);
    if (shown.members->members.empty()) {
        return element("p", words.noMembers) + "\n";
    }
    std::string table = element("h2", words.membersTitle) + "\n<table>\n";
    for (const MemberDescription& member : shown.members->members) {
        const std::string name = html(member.name.utf8());
        table += "<tr><th scope=\"row\"><a href=\"#" + name + "\"><code>" + name +
                 "</code></a></th><td>" + html(summaryOf(*shown.members, member, language)) +
                 "</td></tr>\n";
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
    const ClassDocumentation* documentation = documentationOf(*shown.members, language);
    if (documentation == nullptr) {
        throw std::logic_error(shown.name + " is not documented");
    }
    std::string sections;
    for (const MemberDescription& member : shown.members->members) {
        sections += memberSection(*documentation, member, words);
    }
    const std::string headers = headersOf(*documentation);
    const std::string body =
        classNavigation(shown, language) + "<main>\n" + element("h1", shown.programmaticName) +
        "\n" + paragraphBlock(documentation->itself) + classFacts(shown, words) +
        valuesTable(documentation->itself.values) +
        (headers.empty() ? ""
                         : languageChoice(words) + classExample(*documentation, headers, words)) +
        memberTable(shown, language) + sections + "</main>\n";
    return htmlPage(language, shown.programmaticName,
                    std::string(kReferenceStyles) + std::string(kClassStyles), body);
}

}  // namespace kap::cli
