#include "cli/commands/classes/class_pages.hpp"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/classes/documentation_text.hpp"
#include "cli/commands/classes/member_text.hpp"
#include "cli/commands/classes/page_words.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/wrapped_text.hpp"

namespace kap::cli {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kTextIndent = 6;
constexpr std::size_t kParameterIndent = 10;

// A table without rules: a bold line of titles, then the cells in columns; the last one of a row is
// a text that goes on below itself where the screen ends.
class Listing {
public:
    explicit Listing(std::vector<std::string> titles) { rows_.push_back(std::move(titles)); }

    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    // Column `right` holds numbers, which stand at its right.
    void print(std::ostream& out, const Terminal& terminal, std::size_t right) const {
        const std::vector<std::size_t> widths = measure();
        printTitles(out, terminal, widths, right);
        for (std::size_t i = 1; i < rows_.size(); ++i) {
            const auto& [line, used] = laidOut(rows_[i], widths, right);
            out << line << wrappedBehind(rows_[i].back(), used, terminal.width());
        }
    }

private:
    void printTitles(std::ostream& out, const Terminal& terminal,
                     const std::vector<std::size_t>& widths, std::size_t right) const {
        const std::string line = laidOut(rows_.front(), widths, right).first;
        out << terminal.styled(Style::Bold, line + rows_.front().back()) << '\n';
    }

    // The cells up to the last one, and how many columns they take.
    static std::pair<std::string, std::size_t> laidOut(const std::vector<std::string>& row,
                                                       const std::vector<std::size_t>& widths,
                                                       std::size_t right) {
        std::string line;
        std::size_t used = 0;
        for (std::size_t i = 0; i + 1 < row.size(); ++i) {
            line += i == right ? rightAligned(row[i], widths[i]) : padded(row[i], widths[i]);
            line += std::string(kIndent, ' ');
            used += widths[i] + kIndent;
        }
        return {std::move(line), used};
    }

    [[nodiscard]] std::vector<std::size_t> measure() const {
        std::vector<std::size_t> widths(rows_.front().size());
        for (const std::vector<std::string>& row : rows_) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                widths[i] = std::max(widths[i], columnsOf(row[i]));
            }
        }
        return widths;
    }

    std::vector<std::vector<std::string>> rows_;
};

std::string memberCount(const ShownClass& shown) {
    return plain::text(shown.members->members.size());
}

void printLibrary(std::ostream& out, const PageWords& words, const Terminal& terminal) {
    const LibraryDescription& about = library();
    out << terminal.styled(Style::Bold, about.name.utf8()) << "  " << about.description.utf8()
        << ", " << words.version << ' ' << about.fileVersionText.utf8() << '\n'
        << words.typeLibrary << ' ' << about.typeLibraryId.utf8() << ", " << words.version << ' '
        << about.typeLibraryVersion.utf8() << "; " << words.module << ' ' << about.moduleName.utf8()
        << "\n\n";
}

std::string summaryOf(const ShownClass& shown, Language language) {
    return kap::summaryOf(*shown.members, language);
}

// In a word or two.
std::string instancingCell(const ShownClass& shown, const PageWords& words) {
    const std::string_view text = instancingWords(shown.instancing, words);
    return std::string(text.substr(0, text.find(',')));
}

void printClasses(std::ostream& out, const std::vector<ShownClass>& classes, Language language,
                  const Terminal& terminal) {
    constexpr std::size_t kMembersColumn = 3;
    const PageWords& words = pageWords(language);
    Listing listing({std::string(words.classTitle), std::string(words.instancing),
                     std::string(words.defaultMember), std::string(words.membersTitle),
                     std::string(words.whatItIs)});
    for (const ShownClass& shown : classes) {
        listing.add({shown.name, instancingCell(shown, words),
                     shown.defaultMember.empty() ? "-" : shown.defaultMember, memberCount(shown),
                     summaryOf(shown, language)});
    }
    listing.print(out, terminal, kMembersColumn);
}

void printOthers(std::ostream& out, std::string_view title, const std::vector<ShownClass>& classes,
                 Language language, const Terminal& terminal) {
    constexpr std::size_t kMembersColumn = 1;
    const PageWords& words = pageWords(language);
    Listing listing(
        {std::string(title), std::string(words.membersTitle), std::string(words.whatItIs)});
    for (const ShownClass& shown : classes) {
        listing.add({shown.programmaticName, memberCount(shown), summaryOf(shown, language)});
    }
    listing.print(out, terminal, kMembersColumn);
}

void printFact(std::ostream& out, const Terminal& terminal, std::string_view name,
               const std::string& fact) {
    constexpr std::size_t kNameColumns = 16;
    out << std::string(kIndent, ' ') << terminal.styled(Style::Dim, padded(name, kNameColumns))
        << fact << '\n';
}

void printFacts(std::ostream& out, const ShownClass& shown, Language language,
                const Terminal& terminal) {
    const PageWords& words = pageWords(language);
    if (!shown.classId.empty()) {  // of the platform's classes only their names are known
        printFact(out, terminal, words.identity, shown.classId);
        printFact(out, terminal, words.interface, shown.interfaceName + "  " + shown.interfaceId);
    }
    printFact(out, terminal, words.instancing,
              std::string(instancingWords(shown.instancing, words)));
    printFact(out, terminal, words.defaultMember,
              shown.defaultMember.empty() ? std::string(words.none) : shown.defaultMember);
    if (shown.members->events != nullptr) {
        printFact(out, terminal, words.events, shown.members->events().name.utf8());
    }
}

// On one line where it fits, otherwise with a line for each parameter.
void printSignature(std::ostream& out, const MemberDescription& member, const Terminal& terminal) {
    const std::string kind = kindText(member) + " ";
    const std::string name = member.name.utf8();
    std::string oneLine;
    std::string manyLines;
    for (const ParameterDescription& parameter : member.parameters) {
        const std::string text = shownText(parameterText(parameter));
        oneLine += (oneLine.empty() ? "" : ", ") + text;
        manyLines += (manyLines.empty() ? "\n" : ",\n") + std::string(kParameterIndent, ' ') + text;
    }
    const std::string result = resultText(member);
    const std::size_t columns = kIndent + columnsOf(kind + name + "(" + oneLine + ")" + result);
    const bool fits = terminal.width() == 0 || columns <= terminal.width();
    std::string parameters = "(" + (fits ? oneLine : manyLines) + ")";
    if (member.parameters.empty() && member.kind != MemberKind::Method) {
        parameters.clear();  // read and assigned without parentheses
    }
    out << std::string(kIndent, ' ') << terminal.styled(Style::Dim, kind)
        << terminal.styled(Style::Bold, name) << parameters << result << '\n';
}

void printMemberBody(std::ostream& out, const ShownClass& shown, const MemberDescription& member,
                     Language language, const Terminal& terminal) {
    const PageWords& words = pageWords(language);
    printSignature(out, member, terminal);
    const Documentation* documentation = documentationOf(*shown.members, member, language);
    if (documentation != nullptr) {
        printDocumentation(out, *documentation, kTextIndent, language, terminal);
    }
    std::string identifier = std::string(words.identifier) + " " + hexText(member.dispatchId);
    if (member.dispatchId == kDefaultMember) {
        identifier += ", " + std::string(words.isDefault);
    }
    out << std::string(kTextIndent, ' ') << terminal.styled(Style::Dim, identifier) << '\n';
}

// The values of the library's own enumeration are documented with the class that carries it; those
// of data access with the members that take them.
std::string meaningOf(const EnumerationDescription::Value& value, Language language) {
    const ClassDocumentation* carrier = documentationOf(*findClass("CConstant")->members, language);
    const std::string documented = value.name.utf8() + " (" + plain::text(value.value) + ")";
    const auto found =
        std::ranges::find(carrier->itself.values, documented, &DocumentedValue::value);
    return found == carrier->itself.values.end() ? std::string() : found->text;
}

void printDataAccessEnumerations(std::ostream& out, const PageWords& words,
                                 const Terminal& terminal) {
    std::string names;
    for (const EnumerationDescription& enumeration : dataAccessEnumerations()) {
        names += (names.empty() ? "" : ", ") + enumeration.name.utf8();
    }
    out << terminal.styled(Style::Bold, words.enumerations) << '\n'
        << wrapped(names, 0, terminal.width());
}

}  // namespace

void printCatalogue(std::ostream& out, Language language, const Terminal& terminal) {
    const PageWords& words = pageWords(language);
    printLibrary(out, words, terminal);
    printClasses(out, libraryClasses(), language, terminal);
    for (const EnumerationDescription& enumeration : publishedEnumerations()) {
        out << '\n';
        printEnumeration(out, enumeration, language, terminal);
    }
    out << '\n';
    printOthers(out, words.alsoMade, platformClassList(), language, terminal);
    out << '\n';
    printOthers(out, words.objects, objectClasses(), language, terminal);
    out << '\n';
    printDataAccessEnumerations(out, words, terminal);
    out << '\n' << wrapped(words.hint, 0, terminal.width());
}

void printClass(std::ostream& out, const ShownClass& shown, Language language,
                const Terminal& terminal) {
    const PageWords& words = pageWords(language);
    const ClassDocumentation* documentation = documentationOf(*shown.members, language);
    out << terminal.styled(Style::Bold, shown.programmaticName) << '\n';
    if (documentation != nullptr) {
        printDocumentation(out, documentation->itself, 0, language, terminal);
        printScript(out, words.setup, documentation->setup, 0, terminal);
    }
    out << '\n';
    printFacts(out, shown, language, terminal);
    out << '\n';
    if (shown.members->members.empty()) {
        out << words.noMembers << '\n';
        return;
    }
    out << terminal.styled(Style::Bold, words.membersTitle) << '\n';
    for (const MemberDescription& member : shown.members->members) {
        out << '\n';
        printMemberBody(out, shown, member, language, terminal);
    }
}

void printMember(std::ostream& out, const ShownClass& shown, const MemberDescription& member,
                 Language language, const Terminal& terminal) {
    out << terminal.styled(Style::Bold, shown.programmaticName + "." + member.name.utf8()) << '\n';
    printMemberBody(out, shown, member, language, terminal);
}

void printEnumeration(std::ostream& out, const EnumerationDescription& enumeration,
                      Language language, const Terminal& terminal) {
    const PageWords& words = pageWords(language);
    const bool told = std::ranges::any_of(
        enumeration.values, [&](const auto& value) { return !meaningOf(value, language).empty(); });
    std::vector<std::string> titles = {enumeration.name.utf8(), std::string(words.value)};
    if (told) {
        titles.emplace_back(words.meaning);
    }
    Listing listing(std::move(titles));
    for (const auto& value : enumeration.values) {
        std::vector<std::string> cells = {value.name.utf8(), plain::text(value.value)};
        if (told) {
            cells.push_back(meaningOf(value, language));
        }
        listing.add(std::move(cells));
    }
    constexpr std::size_t kValueColumn = 1;
    listing.print(out, terminal, kValueColumn);
}

}  // namespace kap::cli
