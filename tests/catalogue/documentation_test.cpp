// Every class and member is documented in both languages, and nothing is that does not exist.
#include <kaputil/catalogue/documentation.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

#include <kaputil/automation/locale.hpp>
#include <kaputil/catalogue/catalogue.hpp>

#include "catalogue/reference_texts.hpp"

namespace kap {
namespace {

using Language = DocumentationLanguage;

constexpr std::array kLanguages = {Language::English, Language::Italian};

std::vector<std::string> namesOf(const std::vector<DocumentedParameter>& parameters) {
    std::vector<std::string> names;
    names.reserve(parameters.size());
    for (const DocumentedParameter& parameter : parameters) {
        names.push_back(parameter.name);
    }
    return names;
}

std::vector<std::string> namesOf(const std::vector<ParameterDescription>& parameters) {
    std::vector<std::string> names;
    names.reserve(parameters.size());
    for (const ParameterDescription& parameter : parameters) {
        names.push_back(parameter.name.utf8());
    }
    return names;
}

TEST(Documentation, IsThereForEveryClassInBothLanguages) {
    for (const ClassDescription* description : documentedClasses()) {
        const std::string name = description->name.utf8();
        for (const Language language : kLanguages) {
            EXPECT_NE(documentationOf(*description, language), nullptr) << name;
        }
    }
}

TEST(Documentation, TellsOfEveryMemberInInterfaceOrderAndOfNoOther) {
    for (const ClassDescription* description : documentedClasses()) {
        std::vector<std::string> members;
        for (const MemberDescription& member : description->members) {
            members.push_back(member.name.utf8());
        }
        std::vector<std::string> documented;
        for (const auto& [name, documentation] :
             documentationOf(*description, Language::Italian)->members) {
            documented.push_back(name);
        }
        EXPECT_EQ(documented, members) << description->name.utf8();
    }
}

TEST(Documentation, TellsOfEveryParameterInItsPlaceAndOfNoOther) {
    for (const ClassDescription* description : documentedClasses()) {
        for (const MemberDescription& member : description->members) {
            for (const Language language : kLanguages) {
                const Documentation* documentation =
                    documentationOf(*description, member, language);
                ASSERT_NE(documentation, nullptr) << member.name.utf8();
                EXPECT_EQ(namesOf(documentation->parameters), namesOf(member.parameters))
                    << description->name.utf8() << "." << member.name.utf8();
            }
        }
    }
}

TEST(Documentation, BeginsWithASentenceThatStandsByItself) {
    constexpr std::size_t kLongest = 120;
    for (const ClassDescription* description : documentedClasses()) {
        for (const Language language : kLanguages) {
            const ClassDocumentation& documentation = *documentationOf(*description, language);
            std::vector<std::string> summaries = {summaryOf(*description, language)};
            for (const auto& [name, member] : documentation.members) {
                summaries.emplace_back(member.summary());
            }
            for (const std::string& summary : summaries) {
                EXPECT_TRUE(summary.ends_with('.')) << description->name.utf8() << ": " << summary;
                EXPECT_LE(summary.size(), kLongest) << description->name.utf8() << ": " << summary;
            }
        }
    }
}

TEST(Documentation, IsNotTheSameTextTwice) {
    for (const ClassDescription* description : documentedClasses()) {
        const auto& english = *documentationOf(*description, Language::English);
        const auto& italian = *documentationOf(*description, Language::Italian);
        EXPECT_NE(english.itself.paragraphs, italian.itself.paragraphs);
        for (const auto& [name, member] : english.members) {
            EXPECT_NE(member.paragraphs, italian.find(name)->paragraphs)
                << description->name.utf8() << "." << name;
        }
    }
}

TEST(Documentation, HasAnExampleOfEveryClassThatCanBeMade) {
    for (const ClassDescription* description : documentedClasses()) {
        const auto& documentation = *documentationOf(*description, Language::English);
        if (description->instancing != Instancing::NotCreatable) {
            EXPECT_FALSE(documentation.itself.example.empty()) << description->name.utf8();
        }
    }
}

// Whether a script names a member as one: behind a point.
bool names(const std::string& script, const std::string& member) {
    const std::size_t at = script.find("." + member);
    return at != std::string::npos;
}

TEST(Documentation, ShowsEveryMemberOfTheLibrarysClassesInAnExample) {
    for (const PublishedClass& published : publishedClasses()) {
        const auto& documentation = *documentationOf(*published.description, Language::English);
        for (const auto& [name, member] : documentation.members) {
            EXPECT_TRUE(names(member.example, name) ||
                        names(documentation.itself.example + documentation.setup, name))
                << published.name.utf8() << "." << name;
        }
    }
}

TEST(Documentation, CanShowEveryExampleAsPythonAndCppWriteIt) {
    for (const ClassDescription* description : documentedClasses()) {
        const auto& documentation = *documentationOf(*description, Language::English);
        EXPECT_NO_THROW(
            static_cast<void>(pythonForm(documentation.setup + documentation.itself.example)))
            << description->name.utf8();
        EXPECT_NO_THROW(
            static_cast<void>(cppForm(documentation.itself.example, documentation.setup)))
            << description->name.utf8();
        for (const auto& [name, member] : documentation.members) {
            EXPECT_NO_THROW(static_cast<void>(pythonForm(member.example)))
                << description->name.utf8() << "." << name;
            EXPECT_NO_THROW(static_cast<void>(cppForm(member.example, documentation.setup)))
                << description->name.utf8() << "." << name;
        }
    }
}

TEST(Documentation, IsOfClassesThatExist) {
    std::set<std::string> classes;
    for (const ClassDescription* description : documentedClasses()) {
        classes.insert(description->name.utf8());
    }
    for (const ReferenceText& reference : referenceTexts()) {
        EXPECT_TRUE(classes.contains(std::string(reference.className))) << reference.className;
        EXPECT_TRUE(reference.text.starts_with("# " + std::string(reference.className) + "\n"))
            << reference.className;
    }
}

TEST(Documentation, IsSortedForTheSearch) {
    EXPECT_TRUE(std::ranges::is_sorted(referenceTexts(), {}, &ReferenceText::className));
}

TEST(Documentation, IsInTheLanguageOfTheUsersLocale) {
    {
        const LocaleScope italian("it-IT");
        EXPECT_EQ(userDocumentationLanguage(), Language::Italian);
    }
    const LocaleScope english("en-GB");
    EXPECT_EQ(userDocumentationLanguage(), Language::English);
}

TEST(Documentation, TellsWhatTheConstantsOfTheLibraryMean) {
    const PublishedClass* carrier = nullptr;
    for (const PublishedClass& published : publishedClasses()) {
        carrier = published.name == u"CConstant" ? &published : carrier;
    }
    ASSERT_NE(carrier, nullptr);
    std::vector<std::string> documented;
    for (const auto& value :
         documentationOf(*carrier->description, Language::Italian)->itself.values) {
        documented.push_back(value.value);
    }
    std::vector<std::string> published;
    for (const auto& value : publishedEnumerations().front().values) {
        published.push_back(value.name.utf8() + " (" + std::to_string(value.value) + ")");
    }
    EXPECT_EQ(documented, published);
}

TEST(Documentation, ShowsTheWholeNumbersOfDataAccessErrors) {
    EXPECT_EQ(errorNumberText(3021), "3021 (-2146825267)");
    EXPECT_EQ(errorNumberText(13), "13");
    EXPECT_EQ(errorNumberText(-2147221503), "-2147221503");
}

}  // namespace
}  // namespace kap
