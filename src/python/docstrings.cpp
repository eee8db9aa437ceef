#include "python/docstrings.hpp"

#include <string_view>

namespace kap::python {
namespace {

constexpr std::size_t kColumns = 100;
constexpr std::size_t kIndent = 4;

struct DocstringWords {
    std::string_view byReference;
    std::string_view isDefault;
    std::string_view result;
    std::string_view value;
    std::string_view errors;
    std::string_view example;
};

const DocstringWords& docstringWords(DocumentationLanguage language) {
    static constexpr DocstringWords kEnglish = {
        ", by reference", "The default member.", "Result", "Value", "Errors", "Example"};
    static constexpr DocstringWords kItalian = {
        ", per riferimento", "Il membro predefinito.", "Risultato", "Valore", "Errori", "Esempio"};
    return language == DocumentationLanguage::Italian ? kItalian : kEnglish;
}

std::size_t columnsIn(std::string_view utf8) {
    std::size_t columns = 0;
    for (const char unit : utf8) {
        columns += (static_cast<unsigned char>(unit) & 0xC0U) == 0x80U ? 0 : 1;
    }
    return columns;
}

// Adds a text, cut between words into lines of so many levels.
void addWrapped(std::string& out, std::string_view text, std::size_t level) {
    std::size_t used = 0;
    while (!text.empty()) {
        const std::size_t end = text.find(' ');
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        const std::size_t columns = columnsIn(word);
        if (used != 0 && used + 1 + columns > kColumns) {
            out += '\n';
            used = 0;
        }
        if (used == 0) {
            out.append(level * kIndent, ' ');
            used = level * kIndent;
        } else {
            out += ' ';
            ++used;
        }
        out += word;
        used += columns;
    }
    out += '\n';
}

// The first sentence on a line of its own, which tools show by itself.
void addParagraphs(std::string& out, const Documentation& documentation) {
    const std::string_view summary = documentation.summary();
    out += summary;
    out += '\n';
    bool first = true;
    for (std::string_view paragraph : documentation.paragraphs) {
        if (first) {
            paragraph.remove_prefix(summary.size());
            paragraph.remove_prefix(paragraph.empty() ? 0 : 1);
            first = false;
        }
        if (!paragraph.empty()) {
            out += '\n';
            addWrapped(out, paragraph, 0);
        }
    }
}

void addValues(std::string& out, const std::vector<DocumentedValue>& values) {
    for (const DocumentedValue& value : values) {
        addWrapped(out, value.value + ": " + value.text, 2);
    }
}

void addErrors(std::string& out, const std::vector<DocumentedError>& errors,
               const DocstringWords& words) {
    if (errors.empty()) {
        return;
    }
    out += '\n';
    out += words.errors;
    out += '\n';
    for (const DocumentedError& error : errors) {
        const std::string number = error.number ? errorNumberText(*error.number) + ": " : "";
        addWrapped(out, number + error.text, 1);
    }
}

void addExample(std::string& out, const std::string& script, const DocstringWords& words) {
    if (script.empty()) {
        return;
    }
    out += '\n';
    out += words.example;
    out += '\n';
    std::string_view rest = script;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        if (end != 0) {
            out.append(kIndent, ' ');
        }
        out += rest.substr(0, end);
        out += '\n';
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
}

std::string typeText(VarType type, ClassReference objectClass) {
    return objectClass == nullptr ? std::string(typeName(type)) : objectClass().name.utf8();
}

void addParameters(std::string& out, const MemberDescription& member,
                   const Documentation& documentation, const DocstringWords& words) {
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
        const ParameterDescription& parameter = member.parameters[i];
        out += parameter.name.utf8() + ": " + typeText(parameter.type, parameter.objectClass);
        out += parameter.byReference ? words.byReference : "";
        out += '\n';
        if (i < documentation.parameters.size()) {
            addWrapped(out, documentation.parameters[i].text, 1);
            addValues(out, documentation.parameters[i].values);
        }
    }
}

std::string finished(std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

std::string pythonExample(const std::string& script) {
    return script.empty() ? std::string() : pythonForm(script);
}

}  // namespace

std::string docstringOf(const ClassDescription& description) {
    const auto language = userDocumentationLanguage();
    const ClassDocumentation* documentation = documentationOf(description, language);
    std::string text;
    if (documentation != nullptr) {
        addParagraphs(text, documentation->itself);
        addExample(text, exampleOf(description), docstringWords(language));
    }
    return finished(std::move(text));
}

std::string docstringOf(const ClassDescription& owner, const MemberDescription& member,
                        bool attribute) {
    const auto language = userDocumentationLanguage();
    const DocstringWords& words = docstringWords(language);
    const Documentation* told = documentationOf(owner, member, language);
    const Documentation none;
    const Documentation& documentation = told == nullptr ? none : *told;
    std::string text;
    addParagraphs(text, documentation);
    if (member.dispatchId == kDefaultMember) {
        text += '\n';
        text += words.isDefault;
        text += '\n';
    }
    text += '\n';
    addParameters(text, member, documentation, words);
    if (member.result != VarType::Empty) {
        text += attribute ? words.value : words.result;
        text += ": " + typeText(member.result, member.resultClass) + "\n";
        if (!documentation.result.empty()) {
            addWrapped(text, documentation.result, 1);
        }
        addValues(text, documentation.values);
    }
    addErrors(text, documentation.errors, words);
    addExample(text, pythonExample(documentation.example), words);
    return finished(std::move(text));
}

std::string exampleOf(const ClassDescription& description) {
    const ClassDocumentation* documentation =
        documentationOf(description, DocumentationLanguage::English);
    return documentation == nullptr || documentation->itself.example.empty()
               ? std::string()
               : pythonForm(documentation->setup + documentation->itself.example);
}

std::string exampleOf(const ClassDescription& owner, const MemberDescription& member) {
    const ClassDocumentation* documentation =
        documentationOf(owner, DocumentationLanguage::English);
    const Documentation* told = documentationOf(owner, member, DocumentationLanguage::English);
    return told == nullptr || told->example.empty()
               ? std::string()
               : pythonForm(documentation->setup + told->example);
}

}  // namespace kap::python
