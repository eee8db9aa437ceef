// What a client is told when the disk does not give what is on it, and when it gives something
// else.
#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <string>
#include <system_error>

#include <kaputil/automation/error.hpp>

#include "faults/library/failing_calls.hpp"
#include "support/database.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

constexpr int kReadFailed = 823;
constexpr int kDamagedPage = 824;
constexpr int kNotOpened = 4060;

class FailingReads : public testing::Test {
protected:
    FailingReads() {
        test::open(file())->Execute(
            u"CREATE TABLE Righe (Numero int PRIMARY KEY, Testo varchar(400)) "
            u"CREATE INDEX PerTesto ON Righe (Testo) "
            u"DECLARE @i int = 1 WHILE @i <= 200 BEGIN INSERT INTO Righe VALUES (@i, "
            u"REPLICATE('riga ' + CAST(@i AS varchar(9)), 30)) SET @i = @i + 1 END");
    }

    [[nodiscard]] std::string file() const { return folder_.database("a.db"); }

    // What a program does, to the first error: its number and text; 0 when all went well.
    [[nodiscard]] std::pair<int, std::string> use() const {
        const auto connection = make<ado::Connection>();
        try {
            connection->Open(file());
            for (const char16_t* statement :
                 {u"SELECT SUM(LEN(Testo)) FROM Righe",
                  u"SELECT COUNT(*) FROM Righe WHERE Testo > 'riga 5'",
                  u"UPDATE Righe SET Testo = REVERSE(Testo) WHERE Numero = 150", u"DBCC CHECKDB"}) {
                connection->Execute(statement);
            }
            return {0, ""};
        } catch (const AutomationError& error) {
            return {connection->Errors()->Item(0)->NativeError(), error.what()};
        }
    }

    test::TemporaryFolder folder_;
};

TEST_F(FailingReads, AreToldAsWhatTheyAre) {
    for (const int number : {EIO, ENXIO, ESTALE}) {
        const std::string reason = std::generic_category().message(number);
        std::set<int> told;
        bool failed = true;
        for (int nth = 1; failed; ++nth) {
            for (const bool forGood : {false, true}) {
                SCOPED_TRACE(reason + ", read " + std::to_string(nth));
                faults::start({folder_.file("a.db"), {faults::Call::Read}, nth, number, forGood});
                const auto [error, text] = use();
                failed = faults::stop().failed;
                told.insert(error);
                if (error != 0) {
                    EXPECT_TRUE(error == kReadFailed || error == kNotOpened)
                        << error << " " << text;
                    EXPECT_NE(std::string::npos, text.find(reason)) << text;
                }
            }
            ASSERT_EQ(0, use().first) << "the file is as it was";
        }
        EXPECT_TRUE(told.contains(kReadFailed) && told.contains(kNotOpened));
    }
}

// Also by a connection that has met a failing read before.
TEST_F(FailingReads, AreToldApartFromDamage) {
    const auto reader = test::open(file() + ";Mode=Read");
    faults::start({folder_.file("a.db"), {faults::Call::Read}, 1, EIO, true});
    EXPECT_THROW(reader->Execute(u"SELECT SUM(LEN(Testo)) FROM Righe"), AutomationError);
    EXPECT_EQ(kReadFailed, reader->Errors()->Item(0)->NativeError());
    ASSERT_TRUE(faults::stop().failed);

    std::string bytes = test::contentOf(folder_.file("a.db"));
    constexpr std::size_t kSound = std::size_t{5} * 4096;  // the schema, and where the tables begin
    ASSERT_GT(bytes.size(), 2 * kSound);
    bytes.replace(kSound, bytes.size() - kSound, bytes.size() - kSound, '\x7F');
    test::putFile(folder_.file("a.db"), bytes);
    EXPECT_THROW(reader->Execute(u"SELECT SUM(LEN(Testo)) FROM Righe"), AutomationError);
    EXPECT_EQ(kDamagedPage, reader->Errors()->Item(0)->NativeError());
}

}  // namespace
}  // namespace kap
