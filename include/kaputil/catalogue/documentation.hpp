#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>

// What classes and their members are for, in English and in Italian: the texts behind `kaputil
// classes`, Python's help(), the manual, the pages of the reference and the type libraries.
//
// They are not part of the class descriptions, which every late-bound call reads: they lie in the
// library as they were written (src/catalogue/reference) and a class's are read when somebody asks
// for them. All texts are UTF-8.
namespace kap {

enum class DocumentationLanguage : std::uint8_t { English, Italian };

// The language that the user reads: the locale set with `setLocale` says it, else the first of the
// variables KAPUTIL_LOCALE, LC_ALL, LC_MESSAGES and LANG that names a known one, else it is
// Italian. Locales that are not Italian mean English.
[[nodiscard]] KAPUTIL_EXPORT DocumentationLanguage userDocumentationLanguage();

// One of the values that are told apart, as it is written in a program: "\"P\"", "3".
struct DocumentedValue {
    std::string value;
    std::string text;
};

struct DocumentedParameter {
    std::string name;
    std::string text;
    std::vector<DocumentedValue> values;
};

struct DocumentedError {
    std::optional<std::int32_t> number;  // absent: errors of something else, which pass through
    std::string text;
};

// The documentation of a class, or of one of its members.
struct KAPUTIL_EXPORT Documentation {
    std::vector<std::string> paragraphs;
    std::vector<DocumentedParameter> parameters;  // in the member's order
    std::string result;                           // empty: told by the paragraphs, or there is none
    std::vector<DocumentedValue> values;          // of the result, or of what a property holds
    std::vector<DocumentedError> errors;
    std::string example;  // a script, as Basic writes it; empty: that of the class shows the member

    // The first sentence.
    [[nodiscard]] std::string_view summary() const;
};

struct KAPUTIL_EXPORT ClassDocumentation {
    Documentation itself;
    std::string setup;  // what the examples begin with, each of them
    std::vector<std::pair<std::string, Documentation>> members;

    // The documentation of a member of this name, or null.
    [[nodiscard]] const Documentation* find(std::string_view memberName) const;
};

// The documentation of a class, in interface order; null for a class that is not the library's.
// It is read once, by whoever asks first, and stays.
[[nodiscard]] KAPUTIL_EXPORT const ClassDocumentation* documentationOf(
    const ClassDescription& description, DocumentationLanguage language);
// That of a member; null as above.
[[nodiscard]] KAPUTIL_EXPORT const Documentation* documentationOf(
    const ClassDescription& description, const MemberDescription& member,
    DocumentationLanguage language);

// The first sentence on a class or a member; empty for a class that is not the library's.
[[nodiscard]] KAPUTIL_EXPORT std::string summaryOf(const ClassDescription& description,
                                                   DocumentationLanguage language);
[[nodiscard]] KAPUTIL_EXPORT std::string summaryOf(const ClassDescription& description,
                                                   const MemberDescription& member,
                                                   DocumentationLanguage language);

// Every class with documentation: those of the catalogue, those that can be created by name beside
// them, those of the objects that their members take and give, and the interfaces of events.
[[nodiscard]] KAPUTIL_EXPORT std::span<const ClassDescription* const> documentedClasses();

// How an error's number is shown: "13", and of data access "3021 (-2146825267)".
[[nodiscard]] KAPUTIL_EXPORT std::string errorNumberText(std::int32_t number);

// A script as other languages write it. What the examples are made of is known; anything else
// raises std::invalid_argument.
[[nodiscard]] KAPUTIL_EXPORT std::string pythonForm(std::string_view script);
// In C++ variables have types, also those of a setup that stands in front.
[[nodiscard]] KAPUTIL_EXPORT std::string cppForm(std::string_view script,
                                                 std::string_view setup = {});
// As scripts on Windows have it, where data access of this library has a name of its own.
[[nodiscard]] KAPUTIL_EXPORT std::string vbscriptForm(std::string_view script);

// The lines that include what such C++ statements need.
[[nodiscard]] KAPUTIL_EXPORT std::string cppHeaders(std::string_view code);

}  // namespace kap
