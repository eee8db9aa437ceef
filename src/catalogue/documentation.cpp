#include <kaputil/catalogue/documentation.hpp>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <mutex>

#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/catalogue/catalogue.hpp>

#include "automation/locale_of_texts.hpp"
#include "catalogue/reference_reader.hpp"
#include "catalogue/reference_texts.hpp"

namespace kap {
namespace {

const ReferenceText* referenceTextOf(std::string_view className) {
    const auto texts = referenceTexts();
    const auto found =
        std::ranges::lower_bound(texts, className, std::less<>(), &ReferenceText::className);
    return found == texts.end() || found->className != className ? nullptr : &*found;
}

// The documentation that has been asked for.
class DocumentationCache {
public:
    const ClassDocumentation* find(const ClassDescription& description,
                                   DocumentationLanguage language) {
        const std::scoped_lock lock(guard_);
        auto& kept = read_[{&description, language}];
        if (!kept) {
            const ReferenceText* reference = referenceTextOf(description.name.utf8());
            if (reference == nullptr) {
                return nullptr;
            }
            kept = std::make_unique<ClassDocumentation>(readReference(reference->text, language));
        }
        return kept.get();
    }

private:
    using Key = std::pair<const ClassDescription*, DocumentationLanguage>;
    std::mutex guard_;
    std::map<Key, std::unique_ptr<ClassDocumentation>> read_;
};

void addDocumented(std::vector<const ClassDescription*>& classes,
                   const ClassDescription* description) {
    if (description != nullptr && std::ranges::find(classes, description) == classes.end()) {
        classes.push_back(description);
    }
}

void addDocumented(std::vector<const ClassDescription*>& classes, ClassReference reference) {
    addDocumented(classes, reference == nullptr ? nullptr : &reference());
}

std::vector<const ClassDescription*> findDocumented() {
    std::vector<const ClassDescription*> classes;
    for (const PublishedClass& published : publishedClasses()) {
        addDocumented(classes, published.description);
    }
    for (const PlatformClass& platform : platformClasses()) {
        addDocumented(classes, platform.description);
    }
    for (const ClassReference reference : platform::hostObjectClasses()) {
        addDocumented(classes, reference);
    }
    for (std::size_t i = 0; i < classes.size(); ++i) {
        addDocumented(classes, classes[i]->events);
        for (const MemberDescription& member : classes[i]->members) {
            addDocumented(classes, member.resultClass);
            for (const ParameterDescription& parameter : member.parameters) {
                addDocumented(classes, parameter.objectClass);
            }
        }
    }
    return classes;
}

}  // namespace

DocumentationLanguage userDocumentationLanguage() {
    return localeOfTexts().name.starts_with("it") ? DocumentationLanguage::Italian
                                                  : DocumentationLanguage::English;
}

std::string_view Documentation::summary() const {
    if (paragraphs.empty()) {
        return {};
    }
    const std::string_view first = paragraphs.front();
    const std::size_t end = first.find(". ");
    return end == std::string_view::npos ? first : first.substr(0, end + 1);
}

const Documentation* ClassDocumentation::find(std::string_view memberName) const {
    const auto found = std::ranges::find_if(
        members, [&](const auto& member) { return member.first == memberName; });
    return found == members.end() ? nullptr : &found->second;
}

const ClassDocumentation* documentationOf(const ClassDescription& description,
                                          DocumentationLanguage language) {
    static DocumentationCache cache;
    return cache.find(description, language);
}

const Documentation* documentationOf(const ClassDescription& description,
                                     const MemberDescription& member,
                                     DocumentationLanguage language) {
    const ClassDocumentation* documentation = documentationOf(description, language);
    return documentation == nullptr ? nullptr : documentation->find(member.name.utf8());
}

std::string summaryOf(const ClassDescription& description, DocumentationLanguage language) {
    const ClassDocumentation* documentation = documentationOf(description, language);
    return documentation == nullptr ? std::string() : std::string(documentation->itself.summary());
}

std::string summaryOf(const ClassDescription& description, const MemberDescription& member,
                      DocumentationLanguage language) {
    const Documentation* documentation = documentationOf(description, member, language);
    return documentation == nullptr ? std::string() : std::string(documentation->summary());
}

std::span<const ClassDescription* const> documentedClasses() {
    static const std::vector<const ClassDescription*> classes = findDocumented();
    return classes;
}

// Data-access errors are known by the last digits of what is raised.
std::string errorNumberText(std::int32_t number) {
    constexpr std::int32_t kFirst = 3000;
    constexpr std::int32_t kLast = 3799;
    constexpr std::int32_t kFacility = -2146828288;
    const std::string text = plain::text(number);
    return number < kFirst || number > kLast ? text
                                             : text + " (" + plain::text(kFacility + number) + ")";
}

}  // namespace kap
