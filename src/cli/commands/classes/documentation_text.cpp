#include "cli/commands/classes/documentation_text.hpp"

#include <algorithm>
#include <ostream>

#include "cli/commands/classes/page_words.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/wrapped_text.hpp"

namespace kap::cli {
namespace {

constexpr std::size_t kDeeper = 4;
constexpr std::size_t kApart = 2;

void printTitle(std::ostream& out, std::string_view title, std::size_t indent,
                const Terminal& terminal) {
    out << std::string(indent, ' ') << terminal.styled(Style::Dim, title) << '\n';
}

// Terms with what they mean, in two columns.
class Glossary {
public:
    void add(std::string term, const std::string& meaning) {
        widest_ = std::max(widest_, columnsOf(term));
        entries_.emplace_back(std::move(term), &meaning);
    }

    void print(std::ostream& out, std::size_t indent, const Terminal& terminal) const {
        for (const auto& [term, meaning] : entries_) {
            out << std::string(indent, ' ') << padded(term, widest_) << std::string(kApart, ' ')
                << wrappedBehind(*meaning, indent + widest_ + kApart, terminal.width());
        }
    }

private:
    std::vector<std::pair<std::string, const std::string*>> entries_;
    std::size_t widest_ = 0;
};

void printValues(std::ostream& out, const std::vector<DocumentedValue>& values, std::size_t indent,
                 const Terminal& terminal) {
    Glossary glossary;
    for (const DocumentedValue& value : values) {
        glossary.add(value.value, value.text);
    }
    glossary.print(out, indent, terminal);
}

void printErrors(std::ostream& out, const std::vector<DocumentedError>& errors, std::size_t indent,
                 const Terminal& terminal) {
    Glossary glossary;
    for (const DocumentedError& error : errors) {
        glossary.add(error.number ? errorNumberText(*error.number) : "-", error.text);
    }
    glossary.print(out, indent, terminal);
}

}  // namespace

void printParagraph(std::ostream& out, const std::string& text, std::size_t indent,
                    const Terminal& terminal) {
    out << wrapped(text, indent, terminal.width());
}

void printScript(std::ostream& out, std::string_view title, const std::string& script,
                 std::size_t indent, const Terminal& terminal) {
    if (script.empty()) {
        return;
    }
    printTitle(out, title, indent, terminal);
    std::string_view rest = script;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        const std::string_view line = rest.substr(0, end);
        out << (line.empty() ? "" : std::string(indent + kDeeper, ' ')) << line << '\n';
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
}

void printDocumentation(std::ostream& out, const Documentation& documentation, std::size_t indent,
                        Language language, const Terminal& terminal) {
    const PageWords& words = pageWords(language);
    for (const std::string& paragraph : documentation.paragraphs) {
        printParagraph(out, paragraph, indent, terminal);
    }
    for (const DocumentedParameter& parameter : documentation.parameters) {
        out << std::string(indent, ' ') << terminal.styled(Style::Bold, parameter.name) << '\n';
        printParagraph(out, parameter.text, indent + kDeeper, terminal);
        printValues(out, parameter.values, indent + kDeeper, terminal);
    }
    if (!documentation.result.empty()) {
        printTitle(out, words.result, indent, terminal);
        printParagraph(out, documentation.result, indent + kDeeper, terminal);
    } else if (!documentation.values.empty()) {
        printTitle(out, words.values, indent, terminal);
    }
    printValues(out, documentation.values, indent + kDeeper, terminal);
    if (!documentation.errors.empty()) {
        printTitle(out, words.errors, indent, terminal);
        printErrors(out, documentation.errors, indent + kDeeper, terminal);
    }
    printScript(out, words.example, documentation.example, indent, terminal);
}

}  // namespace kap::cli
