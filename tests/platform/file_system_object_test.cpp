#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <ctime>
#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/platform/creatable_objects.hpp>

#include "automation/late_bound.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;
using late::call;
using late::get;
using test::contentOf;
using test::raisedBy;
using test::shown;

constexpr std::int16_t kWriting = 2;
constexpr std::int16_t kAppending = 8;

class FileSystem : public testing::Test {
protected:
    [[nodiscard]] Variant path(const std::string& name) const { return String(folder_.file(name)); }
    [[nodiscard]] Variant reading(const std::string& bytes) const {
        test::putFile(folder_.file("t.txt"), bytes);
        return call(files_, u"OpenTextFile", {path("t.txt")});
    }

    LocaleScope locale_{"it-IT"};
    test::TemporaryFolder folder_;
    Variant files_ = createObject(u"scripting.filesystemobject");
};

TEST_F(FileSystem, TellsFilesFromFolders) {
    test::putFile(folder_.file("a.txt"), "x");
    EXPECT_EQ(shown(call(files_, u"fileexists", {path("A.TXT")})), "Boolean Vero");
    EXPECT_EQ(shown(call(files_, u"FileExists", {path("b.txt")})), "Boolean Falso");
    EXPECT_EQ(shown(call(files_, u"FileExists", {path("")})), "Boolean Falso");
    EXPECT_EQ(shown(call(files_, u"FolderExists", {path("")})), "Boolean Vero");
    EXPECT_EQ(shown(call(files_, u"FolderExists", {path("a.txt")})), "Boolean Falso");
}

TEST_F(FileSystem, MakesAnEmptyFileAlsoOfOneThatIsThere) {
    test::putFile(folder_.file("a.txt"), "vecchio");
    call(files_, u"CreateTextFile", {path("a.txt")});
    EXPECT_EQ(contentOf(folder_.file("a.txt")), "");
    EXPECT_EQ(raisedBy([&] {
                  return call(files_, u"CreateTextFile", {path("a.txt"), false});
              }),
              errors::kFileAlreadyExists);
    EXPECT_EQ(raisedBy([&] { return call(files_, u"CreateTextFile", {path("manca/a.txt")}); }),
              errors::kPathNotFound);
}

TEST_F(FileSystem, EndsLinesWithCrLf) {
    const Variant stream = call(files_, u"CreateTextFile", {path("a.txt")});
    call(stream, u"WriteLine", {u"però"});
    call(stream, u"Write", {std::int16_t{12}});
    call(stream, u"WriteBlankLines", {std::int16_t{2}});
    call(stream, u"WriteLine");
    EXPECT_EQ(shown(get(stream, u"Line")), "Long 5");
    call(stream, u"Close");
    EXPECT_EQ(contentOf(folder_.file("a.txt")), "per\xC3\xB2\r\n12\r\n\r\n\r\n");
}

TEST_F(FileSystem, AppendsToAFileThatIsThere) {
    test::putFile(folder_.file("a.txt"), "uno\r\n");
    call(call(files_, u"OpenTextFile", {path("a.txt"), kAppending, false}), u"WriteLine", {u"due"});
    EXPECT_EQ(contentOf(folder_.file("a.txt")), "uno\r\ndue\r\n");
    EXPECT_EQ(raisedBy([&] {
                  return call(files_, u"OpenTextFile", {path("b.txt"), kAppending, false});
              }),
              errors::kFileNotFound);
    call(call(files_, u"OpenTextFile", {path("b.txt"), kAppending, true}), u"Write", {u"x"});
    EXPECT_EQ(contentOf(folder_.file("b.txt")), "x");
}

TEST_F(FileSystem, OverwritesWhatIsOpenedForWriting) {
    test::putFile(folder_.file("a.txt"), "vecchio");
    call(call(files_, u"OpenTextFile", {path("a.txt"), kWriting}), u"Write", {u"x"});
    EXPECT_EQ(contentOf(folder_.file("a.txt")), "x");
}

TEST_F(FileSystem, WritesUnicodeWithItsMark) {
    const Variant stream = call(files_, u"CreateTextFile", {path("a.txt"), true, true});
    call(stream, u"Write", {u"a"});
    call(stream, u"Write", {u"Ω"});
    EXPECT_EQ(contentOf(folder_.file("a.txt")), std::string("\xFF\xFE\x61\0\xA9\x03", 6));
}

TEST_F(FileSystem, MakesFilesThatOthersCannotWrite) {
    const mode_t before = umask(0);
    call(files_, u"CreateTextFile", {path("a.txt")});
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat(folder_.file("a.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0664U);
}

TEST_F(FileSystem, ReadsLinesWhateverTheyEndIn) {
    const Variant stream = reading("uno\r\ndue\n\ntre");
    EXPECT_EQ(shown(call(stream, u"ReadLine")), "String uno");
    EXPECT_EQ(shown(call(stream, u"ReadLine")), "String due");
    call(stream, u"SkipLine");
    EXPECT_EQ(shown(get(stream, u"Line")), "Long 4");
    EXPECT_EQ(shown(get(stream, u"AtEndOfStream")), "Boolean Falso");
    EXPECT_EQ(shown(call(stream, u"ReadLine")), "String tre");
    EXPECT_EQ(shown(get(stream, u"AtEndOfStream")), "Boolean Vero");
    EXPECT_EQ(raisedBy([&] { return call(stream, u"ReadLine"); }), errors::kInputPastEnd);
}

TEST_F(FileSystem, ReadsCharactersAndTheRest) {
    const Variant stream = reading("abcdef\ngh");
    call(stream, u"Skip", {std::int16_t{1}});
    EXPECT_EQ(shown(call(stream, u"Read", {std::int16_t{2}})), "String bc");
    EXPECT_EQ(shown(get(stream, u"Column")), "Long 4");
    EXPECT_EQ(shown(get(stream, u"AtEndOfLine")), "Boolean Falso");
    EXPECT_EQ(shown(call(stream, u"ReadAll")), "String def\ngh");
    EXPECT_EQ(raisedBy([&] { return call(stream, u"ReadAll"); }), errors::kInputPastEnd);
}

TEST_F(FileSystem, ReadsAFileInItsOwnEncoding) {
    EXPECT_EQ(shown(call(reading("citt\xE0"), u"ReadAll")), "String città");
    EXPECT_EQ(shown(call(reading("citt\xC3\xA0"), u"ReadAll")), "String città");
    EXPECT_EQ(shown(call(reading("\xEF\xBB\xBFx"), u"ReadAll")), "String x");
    EXPECT_EQ(shown(call(reading(std::string("\xFF\xFEx\0", 4)), u"ReadAll")), "String x");
}

TEST_F(FileSystem, RefusesTheWrongUseOfAStream) {
    const Variant read = reading("x");
    EXPECT_EQ(raisedBy([&] { return call(read, u"WriteLine", {u"y"}); }), errors::kBadFileMode);
    EXPECT_EQ(raisedBy([&] { return call(read, u"Read", {std::int16_t{-1}}); }),
              errors::kInvalidArgument);
    const Variant written = call(files_, u"CreateTextFile", {path("w.txt")});
    EXPECT_EQ(raisedBy([&] { return call(written, u"ReadLine"); }), errors::kBadFileMode);
    call(written, u"Close");
    EXPECT_EQ(raisedBy([&] { return call(written, u"WriteLine", {u"y"}); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] {
                  return call(files_, u"OpenTextFile", {path("t.txt"), std::int16_t{3}});
              }),
              errors::kInvalidArgument);
}

TEST_F(FileSystem, DescribesAFile) {
    test::putFile(folder_.file("Rossi.txt"), "12345");
    const Variant file = call(files_, u"GetFile", {path("rossi.txt")});
    EXPECT_EQ(shown(get(file, u"Name")), "String Rossi.txt");
    EXPECT_EQ(shown(get(file, u"Path")), "String " + folder_.file("Rossi.txt"));
    EXPECT_EQ(shown(convert::plainValue(file)), "String " + folder_.file("Rossi.txt"));
    EXPECT_EQ(shown(get(file, u"Size")), "Long 5");
    EXPECT_EQ(shown(get(get(file, u"ParentFolder"), u"Path")),
              "String " + fs::path(folder_.file("x")).parent_path().string());
    EXPECT_EQ(raisedBy([&] { return call(files_, u"GetFile", {path("b.txt")}); }),
              errors::kFileNotFound);
}

TEST_F(FileSystem, TellsWhenAFileWasLastChangedInLocalTime) {
    const test::ScopedVariable zone("TZ", "UTC-2");  // two hours ahead
    tzset();
    test::putFile(folder_.file("a.txt"), "x");
    const std::array<timespec, 2> times = {timespec{0, 0}, timespec{1072346700, 900000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, folder_.file("a.txt").c_str(), times.data(), 0), 0);
    EXPECT_EQ(shown(get(call(files_, u"GetFile", {path("a.txt")}), u"DateLastModified")),
              "Date 25/12/2003 12:05:00");
}

TEST_F(FileSystem, CopiesMovesAndRemovesFiles) {
    test::putFile(folder_.file("a.txt"), "x");
    fs::create_directory(folder_.file("Sotto"));
    call(files_, u"CopyFile", {path("a.txt"), path("b.txt")});
    call(files_, u"CopyFile", {path("a.txt"), path("sotto\\")});
    EXPECT_EQ(contentOf(folder_.file("b.txt")), "x");
    EXPECT_EQ(contentOf(folder_.file("Sotto/a.txt")), "x");
    EXPECT_EQ(raisedBy([&] {
                  return call(files_, u"CopyFile", {path("a.txt"), path("b.txt"), false});
              }),
              errors::kFileAlreadyExists);
    EXPECT_EQ(raisedBy([&] {
                  return call(files_, u"MoveFile", {path("a.txt"), path("b.txt")});
              }),
              errors::kFileAlreadyExists);
    call(files_, u"MoveFile", {path("a.txt"), path("c.txt")});
    EXPECT_FALSE(fs::exists(folder_.file("a.txt")));
    call(files_, u"DeleteFile", {path("c.txt")});
    EXPECT_FALSE(fs::exists(folder_.file("c.txt")));
    for (const char16_t* member : {u"DeleteFile", u"GetFile"}) {
        EXPECT_EQ(raisedBy([&] { return call(files_, member, {path("c.txt")}); }),
                  errors::kFileNotFound);
    }
    EXPECT_EQ(raisedBy([&] {
                  return call(files_, u"CopyFile", {path("c.txt"), path("d.txt")});
              }),
              errors::kFileNotFound);
}

TEST_F(FileSystem, ListsAFolderInTheOrderOfNames) {
    test::putFile(folder_.file("b.txt"), "");
    test::putFile(folder_.file("a.txt"), "");
    fs::create_directory(folder_.file("cartella"));
    const Variant folder = call(files_, u"GetFolder", {path("")});
    const Variant listed = get(folder, u"Files");
    std::string names;
    for (const Variant& file : late::objectOf(listed).elements()) {
        names += convert::toString(get(file, u"Name")).utf8() + " ";
    }
    EXPECT_EQ(names, "a.txt b.txt ");
    EXPECT_EQ(shown(get(listed, u"Count")), "Long 2");
    EXPECT_EQ(shown(get(call(listed, u"Item", {u"B.TXT"}), u"Name")), "String b.txt");
    EXPECT_EQ(raisedBy([&] { return call(listed, u"Item", {u"z"}); }), errors::kFileNotFound);
    EXPECT_EQ(shown(get(get(folder, u"SubFolders"), u"Count")), "Long 1");
    EXPECT_EQ(raisedBy([&] { return call(files_, u"GetFolder", {path("manca")}); }),
              errors::kPathNotFound);
}

TEST_F(FileSystem, MakesAndRemovesFolders) {
    const Variant made = call(files_, u"CreateFolder", {path("nuova")});
    EXPECT_EQ(shown(get(made, u"Name")), "String nuova");
    EXPECT_EQ(shown(get(made, u"IsRootFolder")), "Boolean Falso");
    EXPECT_EQ(raisedBy([&] { return call(files_, u"CreateFolder", {path("nuova")}); }),
              errors::kFileAlreadyExists);
    EXPECT_EQ(raisedBy([&] { return call(files_, u"CreateFolder", {path("manca/x")}); }),
              errors::kPathNotFound);
    test::putFile(folder_.file("nuova/x"), "");
    call(files_, u"DeleteFolder", {path("nuova")});
    EXPECT_FALSE(fs::exists(folder_.file("nuova")));
    EXPECT_EQ(raisedBy([&] { return get(made, u"Files"); }), errors::kPathNotFound);
    EXPECT_FALSE(get(call(files_, u"GetFolder", {u"/"}), u"ParentFolder").as<Ref<Object>>());
}

TEST_F(FileSystem, TakesPathsApart) {
    const Variant one = u"C:\\Dati\\Rossi.tar.gz";
    EXPECT_EQ(shown(call(files_, u"GetFileName", {one})), "String Rossi.tar.gz");
    EXPECT_EQ(shown(call(files_, u"GetBaseName", {one})), "String Rossi.tar");
    EXPECT_EQ(shown(call(files_, u"GetExtensionName", {one})), "String gz");
    EXPECT_EQ(shown(call(files_, u"GetParentFolderName", {one})), "String C:\\Dati");
    EXPECT_EQ(shown(call(files_, u"GetParentFolderName", {u"/srv/dati/"})), "String /srv");
    EXPECT_EQ(shown(call(files_, u"GetParentFolderName", {u"/srv"})), "String /");
    EXPECT_EQ(shown(call(files_, u"GetParentFolderName", {u"srv"})), "String ");
    EXPECT_EQ(shown(call(files_, u"GetExtensionName", {u"/srv.d/dati"})), "String ");
    EXPECT_EQ(shown(call(files_, u"BuildPath", {u"/srv", u"x"})), "String /srv\\x");
    EXPECT_EQ(shown(call(files_, u"BuildPath", {u"/srv/", u"x"})), "String /srv/x");
    EXPECT_EQ(shown(call(files_, u"GetAbsolutePathName", {u"/srv\\dati\\..\\x\\"})),
              "String /srv/x");
}

TEST(HostClasses, RaiseForANameThatIsNone) {
    EXPECT_EQ(raisedBy([] { return createObject(u"Scripting.Dictionary"); }),
              errors::kCannotCreateObject);
}

}  // namespace
}  // namespace kap::platform
