// The page about recordsets lists every member of the data-access objects: docs/recordsets.md.
//
// The table is made of the classes' descriptions; what stands in its last column, where a member
// differs from driver to driver, is the page's own. With KAPUTIL_UPDATE_DOCS in the environment the
// page is written anew.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/error.hpp>
#include <kaputil/ado/events.hpp>
#include <kaputil/ado/field.hpp>
#include <kaputil/ado/parameter.hpp>
#include <kaputil/ado/property.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/catalogue/documentation.hpp>

#include "support/build_folders.hpp"

namespace kap {
namespace {

constexpr std::string_view kBegin = "<!-- members: begin -->\n";
constexpr std::string_view kEnd = "<!-- members: end -->\n";

std::vector<const ClassDescription*> pageClasses() {
    return {&ado::Connection::classDescription(),      &ado::ConnectionEvents::classDescription(),
            &ado::Command::classDescription(),         &ado::Parameter::classDescription(),
            &ado::Parameters::classDescription(),      &ado::Recordset::classDescription(),
            &ado::RecordsetEvents::classDescription(), &ado::Field::classDescription(),
            &ado::Fields::classDescription(),          &ado::Error::classDescription(),
            &ado::Errors::classDescription(),          &ado::Property::classDescription(),
            &ado::Properties::classDescription(),      &ado::Stream::classDescription()};
}

std::string kindOf(const MemberDescription& member) {
    if (member.kind == MemberKind::Method) {
        return "method";
    }
    return member.let == nullptr && member.set == nullptr ? "read" : "read, write";
}

// The last column of the rows that a page has, by "Class.Member".
std::map<std::string, std::string> notesOf(const std::string& page) {
    std::map<std::string, std::string> notes;
    for (std::size_t at = page.find("| `"); at != std::string::npos;
         at = page.find("| `", at + 1)) {
        const std::string line = page.substr(at, page.find('\n', at) - at);
        const std::string name = line.substr(3, line.find('`', 3) - 3);
        const std::size_t end = line.rfind(" |");
        const std::size_t last = line.rfind("| ", end - 1);
        if (end != std::string::npos && last != std::string::npos && last + 2 <= end) {
            notes[name] = line.substr(last + 2, end - last - 2);
        }
    }
    return notes;
}

std::string membersTable(const std::map<std::string, std::string>& notes) {
    std::string text;
    for (const ClassDescription* description : pageClasses()) {
        const std::string name = description->name.utf8();
        text += "\n### " + name + "\n\n" + summaryOf(*description, DocumentationLanguage::English) +
                "\n\n| member | kind | what it is | differs |\n|---|---|---|---|\n";
        for (const MemberDescription& member : description->members) {
            const std::string full = name + "." + member.name.utf8();
            const auto note = notes.find(full);
            text += "| `" + full + "` | " + kindOf(member) + " | " +
                    summaryOf(*description, member, DocumentationLanguage::English) + " | " +
                    (note == notes.end() ? "" : note->second) + " |\n";
        }
    }
    return text + "\n";
}

TEST(RecordsetsPage, ListsEveryMemberAsTheCatalogueDescribesIt) {
    const std::string path = std::string(test::kSourceFolder) + "/docs/recordsets.md";
    std::ifstream in(path);
    const std::string page(std::istreambuf_iterator<char>(in), {});
    const std::size_t begin = page.find(kBegin);
    const std::size_t end = page.find(kEnd);
    ASSERT_NE(begin, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    const std::size_t from = begin + kBegin.size();
    const std::string table = membersTable(notesOf(page.substr(from, end - from)));
    if (std::getenv("KAPUTIL_UPDATE_DOCS") != nullptr) {
        std::ofstream(path) << page.substr(0, from) << table << page.substr(end);
        return;
    }
    EXPECT_EQ(page.substr(from, end - from), table);
}

}  // namespace
}  // namespace kap
