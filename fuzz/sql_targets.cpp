// What the database makes of a stranger's script and of texts that it converts.
#include <array>
#include <cstdint>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>

#include "base/unicode.hpp"
#include "fuzz/reader_support.hpp"
#include "fuzz/reader_targets.hpp"

namespace kap::fuzz {
namespace {

std::int32_t numberOf(const Ref<ado::Connection>& connection, const char16_t* query) {
    return convert::toLong(answerOf(connection, query));
}

// Whatever a script does, the connection answers afterwards, nothing is open once it is rolled
// back, and the database is sound.
void statements(std::u16string_view text) {
    static Ref<ado::Connection> connection = freshDatabase();
    static int runs = 0;
    const std::u16string upper = unicode::upper(text);
    // What takes its time, and what writes files.
    for (const std::u16string_view left : {u"WAITFOR", u"BACKUP", u"WHILE", u"GOTO", u"SHOWPLAN"}) {
        if (upper.find(left) != std::u16string::npos) {
            return;
        }
    }
    connection->BeginTrans();
    ends([&] { connection->Execute(text); });
    if (numberOf(connection, u"SELECT @@TRANCOUNT") > 0) {
        connection->RollbackTrans();
    }
    require(numberOf(connection, u"SELECT @@TRANCOUNT") == 0, "a transaction that stays open");
    constexpr int kRunsOfOne = 200;
    if (++runs % kRunsOfOne == 0) {
        connection->Execute(u"DBCC CHECKDB");
        connection = freshDatabase();
    }
    // Settings of a script stay with its connection.
    ends([&] {
        connection->Execute(
            u"SET NOEXEC OFF SET PARSEONLY OFF SET ROWCOUNT 0 SET IMPLICIT_TRANSACTIONS OFF");
    });
}

// The first unit chooses a culture and a style, the rest is value and pattern.
void conversions(std::u16string_view text) {
    static const Ref<ado::Connection> connection = freshDatabase();
    if (text.empty()) {
        return;
    }
    constexpr std::array kCultures = {u"'it-IT'", u"'en-US'", u"'de-DE'", u"'fr-FR'"};
    const std::u16string culture = kCultures[text[0] % kCultures.size()];
    const std::u16string style = String(std::to_string(text[0] % 140)).units();
    const std::u16string value = quoted(text.substr(1, 200));
    for (const std::u16string& expression :
         {u"FORMAT(1234567.891, " + value + u", " + culture + u")", u"FORMAT(-0.5, " + value + u")",
          u"FORMAT(CAST('20040229 13:05:09' AS datetime), " + value + u", " + culture + u")",
          u"PARSE(" + value + u" AS datetime USING " + culture + u")",
          u"PARSE(" + value + u" AS money USING " + culture + u")",
          u"CONVERT(datetime, " + value + u", " + style + u")",
          u"CONVERT(varbinary(20), " + value + u", 1)", u"CAST(" + value + u" AS decimal(18, 4))",
          u"TRY_CONVERT(float, " + value + u")", u"ISDATE(" + value + u")",
          u"ISNUMERIC(" + value + u")", u"PATINDEX(" + value + u", 'aX1%_[')",
          u"CASE WHEN 'abc' LIKE " + value + u" ESCAPE '!' THEN 1 END"}) {
        ends([&] { connection->Execute(u"SELECT " + expression); });
    }
}

constexpr std::array<Target, 2> kSqlTargets = {
    {{"statements", &statements, 20}, {"conversions", &conversions, 20}}};

}  // namespace

std::span<const Target> sqlTargets() {
    return kSqlTargets;
}

}  // namespace kap::fuzz
