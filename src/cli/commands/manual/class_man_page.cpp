#include "cli/commands/manual/class_man_page.hpp"

#include <kaputil/catalogue/catalogue.hpp>

#include "base/ascii.hpp"
#include "cli/commands/classes/member_text.hpp"
#include "cli/commands/classes/page_words.hpp"
#include "cli/commands/manual/man_page.hpp"
#include "cli/output/help_words.hpp"
#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

std::string manParagraph(std::string_view text) {
    return text.empty() ? std::string() : ".PP\n" + roff(text) + "\n";
}

std::string manTerm(std::string_view name, std::string_view text) {
    return ".TP\n\\fB" + roff(name) + "\\fR\n" + roff(text) + "\n";
}

std::string manSubheading(std::string_view title) {
    return ".PP\n\\fI" + roff(title) + "\\fR\n";
}

std::string manTerms(const std::vector<DocumentedValue>& values) {
    std::string text;
    for (const DocumentedValue& value : values) {
        text += manTerm(value.value, value.text);
    }
    return text;
}

// Behind the text of what they are values of, indented.
std::string manInner(const std::string& text) {
    return text.empty() ? text : ".RS\n" + text + ".RE\n";
}

std::string manScript(std::string_view title, const std::string& text) {
    return text.empty() ? std::string()
                        : manSubheading(title) + ".RS\n.nf\n" + roff(text) + ".fi\n.RE\n";
}

std::string manBody(const Documentation& documentation, const PageWords& words) {
    std::string text;
    for (const std::string& one : documentation.paragraphs) {
        text += manParagraph(one);
    }
    for (const DocumentedParameter& parameter : documentation.parameters) {
        text += manTerm(parameter.name, parameter.text) + manInner(manTerms(parameter.values));
    }
    if (!documentation.result.empty() || !documentation.values.empty()) {
        text += manSubheading(documentation.result.empty() ? words.values : words.result);
        text += manParagraph(documentation.result) + manInner(manTerms(documentation.values));
    }
    if (!documentation.errors.empty()) {
        text += manSubheading(words.errors);
        for (const DocumentedError& error : documentation.errors) {
            text += manTerm(error.number ? errorNumberText(*error.number) : "-", error.text);
        }
    }
    return text + manScript(words.example, documentation.example);
}

std::string manSignature(const MemberDescription& member) {
    std::string text = kindText(member) + " " + member.name.utf8();
    const char* separator = "(";
    for (const ParameterDescription& parameter : member.parameters) {
        text += separator + shownText(parameterText(parameter));
        separator = ", ";
    }
    if (!member.parameters.empty()) {
        text += ")";
    } else if (member.kind == MemberKind::Method) {
        text += "()";
    }
    return ".PP\n" + roff(text + resultText(member)) + "\n";
}

}  // namespace

std::string manName(const ShownClass& shown) {
    return "kaputil-" + shown.name;
}

std::string manPage(const ShownClass& shown, Language language) {
    const PageWords& words = pageWords(language);
    const HelpWords& headings = helpWords(language);
    const ClassDocumentation* documentation = documentationOf(*shown.members, language);
    std::string page = ".TH \"" + asciiUpper(manName(shown)) + "\" 3 \"\" \"" +
                       roff((library().description + u" (" + library().fileVersion + u")").utf8()) +
                       "\"\n.SH " + std::string(headings.manName) + "\n" + roff(manName(shown)) +
                       " \\- " + roff(trimmed(summaryOf(*shown.members, language), ".")) +
                       "\n.SH " + std::string(headings.manSynopsis) + "\n" +
                       roff(shown.programmaticName) + "\n.SH " +
                       std::string(headings.manDescription) + "\n";
    if (documentation != nullptr) {
        page +=
            manBody(documentation->itself, words) + manScript(words.setup, documentation->setup);
    }
    for (const MemberDescription& member : shown.members->members) {
        page += ".SH " + roff(member.name.utf8()) + "\n" + manSignature(member);
        if (const Documentation* told = documentationOf(*shown.members, member, language)) {
            page += manBody(*told, words);
        }
    }
    return page + ".SH " + std::string(headings.manSeeAlso) + "\n.BR kaputil\\-classes (1)\n";
}

}  // namespace kap::cli
