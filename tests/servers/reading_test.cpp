// What queries on a database server read, and how their columns are described.
#include <gtest/gtest.h>

#include <kaputil/ado/command.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "server.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::shown;

class ServerReading : public test::ServerTest {
protected:
    [[nodiscard]] Ref<Field> field(const std::string& text) const {
        return query(text)->Fields()->Item(0);
    }
    // Type, defined size, precision and scale of a query's first column.
    [[nodiscard]] std::string described(const std::string& text) const {
        const auto first = field(text);
        return std::to_string(static_cast<int>(first->Type())) + " " +
               std::to_string(first->DefinedSize()) + " " + std::to_string(first->Precision()) +
               " " + std::to_string(first->NumericScale());
    }

    LocaleScope locale_{"it-IT"};
};

TEST_F(ServerReading, ReadsEveryTypeExactly) {
    EXPECT_EQ(value("SELECT 12::smallint"), "Integer 12");
    EXPECT_EQ(value("SELECT 123456789"), "Long 123456789");
    EXPECT_EQ(value("SELECT 9007199254740993::bigint"), "Decimal 9007199254740993");
    EXPECT_EQ(value("SELECT 1234567890123.45::numeric(18,2)"), "Decimal 1234567890123,45");
    EXPECT_EQ(value("SELECT -0.05::numeric(5,2)"), "Decimal -0,05");
    EXPECT_EQ(value("SELECT 1.5::real"), "Single 1,5");
    EXPECT_EQ(value("SELECT 0.1::double precision"), "Double 0,1");
    EXPECT_EQ(value("SELECT 1234.56::money"), "Currency 1234,56");
    EXPECT_EQ(value("SELECT (-0.5)::numeric::money"), "Currency -0,5");
    EXPECT_EQ(value("SELECT true"), "Boolean Vero");
    EXPECT_EQ(value("SELECT false"), "Boolean Falso");
    EXPECT_EQ(value("SELECT DATE '2004-02-29'"), "Date 29/02/2004");
    EXPECT_EQ(value("SELECT TIMESTAMP '2003-12-31 18:30:15'"), "Date 31/12/2003 18:30:15");
    EXPECT_EQ(value("SELECT TIME '18:30:15'"), "Date 18:30:15");
    EXPECT_EQ(value("SELECT 'Ferramenta'::varchar(20)"), "String Ferramenta");
    EXPECT_EQ(value("SELECT 'ab'::char(4)"), "String ab  ");
    EXPECT_EQ(value("SELECT '6f9619ff-8b86-d011-b42d-00c04fc964ff'::uuid"),
              "String {6F9619FF-8B86-D011-B42D-00C04FC964FF}");
    EXPECT_EQ(value("SELECT NULL::int"), "Null");
}

TEST_F(ServerReading, ReadsManyRowsOfEveryWidth) {
    const auto rows = query(
        "SELECT n, n % 2 = 0 AS pari, DATE '2004-01-01' + n AS giorno, TIME '10:00:00' + n * "
        "INTERVAL '1 minute' AS ora, n::smallint AS breve, (n / 4.0)::real AS peso, "
        "md5(n::text)::uuid AS chiave FROM generate_series(0, 299) AS n ORDER BY n");
    for (int n = 0; n < 300; ++n, rows->MoveNext()) {
        ASSERT_FALSE(rows->Eof());
        EXPECT_EQ(fieldOf(rows, u"n").as<std::int32_t>(), n);
        EXPECT_EQ(fieldOf(rows, u"pari").as<bool>(), n % 2 == 0) << n;
        EXPECT_EQ(fieldOf(rows, u"giorno").as<Date>().days, 37987 + n);
        EXPECT_NEAR(fieldOf(rows, u"ora").as<Date>().days * 1440, 600 + n, 1e-6);
        EXPECT_EQ(fieldOf(rows, u"breve").as<std::int16_t>(), n);
        EXPECT_EQ(fieldOf(rows, u"peso").as<float>(), static_cast<float>(n) / 4);
        EXPECT_EQ(fieldOf(rows, u"chiave").as<String>().size(), 38U);
    }
    EXPECT_TRUE(rows->Eof());
}

TEST_F(ServerReading, ReadsTextsOfEveryLanguage) {
    EXPECT_EQ(value("SELECT 'Perché costa 5 € — 東京 \xF0\x9F\x94\xA9'::varchar(60)"),
              "String Perché costa 5 € — 東京 \xF0\x9F\x94\xA9");
}

TEST_F(ServerReading, ReadsDatesWithFractionsOfASecond) {
    const auto rows = query("SELECT TIMESTAMP '2003-12-31 18:30:15.250'");
    const double days = fieldOf(rows, 0).as<Date>().days;
    EXPECT_NEAR(days, 37986 + (18 * 3600 + 30 * 60 + 15.25) / 86400, 1e-9);
}

TEST_F(ServerReading, ReadsBinaryValuesAndLongTextsInPieces) {
    const auto rows = query(
        "SELECT '\\x00ff10'::bytea, repeat('perché ', 60000), "
        "decode(repeat('0102', 100000), 'hex'), 7 UNION ALL SELECT NULL, 'corto', '\\x05', 8");
    EXPECT_EQ(fieldOf(rows, 0).as<Array>().bytes(), (std::vector<std::uint8_t>{0, 255, 16}));
    const Variant text = fieldOf(rows, 1);
    EXPECT_EQ(text.as<String>().size(), 420000U);
    EXPECT_EQ(text.as<String>().view().substr(419993), u"perché ");
    const auto bytes = fieldOf(rows, 2).as<Array>().bytes();
    ASSERT_EQ(bytes.size(), 200000U);
    EXPECT_EQ(bytes[199999], 2);
    EXPECT_EQ(shown(fieldOf(rows, 3)), "Long 7");
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Null");
    EXPECT_EQ(shown(fieldOf(rows, 1)), "String corto");
    EXPECT_EQ(fieldOf(rows, 2).as<Array>().bytes(), (std::vector<std::uint8_t>{5}));
}

TEST_F(ServerReading, DoesNotBelieveAnAnnouncedSize) {
    run("CREATE TABLE t (a varchar, b int)");
    run("INSERT INTO t VALUES (repeat('x', 5000), 1), ('', 2), (repeat('y', 255), 3)");
    const auto rows = query("SELECT * FROM t ORDER BY b");
    EXPECT_EQ(fieldOf(rows, 0).as<String>().size(), 5000U);
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "String ");
    rows->MoveNext();
    EXPECT_EQ(fieldOf(rows, 0).as<String>().size(), 255U);
    EXPECT_EQ(rows->Fields()->Item(0)->Type(), DataTypeEnum::adLongVarChar);
}

TEST_F(ServerReading, KeepsDecimalsWhoseDigitsAreNotAnnounced) {
    const auto rows = query(
        "SELECT 1.5::numeric AS n UNION ALL SELECT 0.123456789 "
        "UNION ALL SELECT NULL UNION ALL SELECT -300");
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Decimal 1,5");
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Decimal 0,123456789");
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Decimal -300");
    EXPECT_EQ(rows->Fields()->Item(0)->NumericScale(), 9);
}

TEST_F(ServerReading, ReadsEveryDigitOfADecimal) {
    EXPECT_EQ(value("SELECT 1234567890123456789012.5::numeric(38,10)"),
              "Decimal 1234567890123456789012,5");
    EXPECT_EQ(value("SELECT -0.0000000000000000000000000001::numeric(38,28)"),
              "Decimal -0,0000000000000000000000000001");
    EXPECT_EQ(value("SELECT 79228162514264337593543950335::numeric"),
              "Decimal 79228162514264337593543950335");
    EXPECT_EQ(value("SELECT 0::numeric(30,5)"), "Decimal 0");
    EXPECT_EQ(value("SELECT NULL::numeric(30,5)"), "Null");
}

TEST_F(ServerReading, NamesTheColumnOfADecimalThatIsTooLong) {
    const auto refusal = [&](const std::string& expression) -> std::string {
        try {
            (void)query("SELECT " + expression + " AS totale");
        } catch (const AutomationError& error) {
            EXPECT_EQ(error.number(), errors::kMultipleStep);
            return error.description().utf8();
        }
        return "(read)";
    };
    EXPECT_EQ(refusal("79228162514264337593543950336::numeric"),
              "A value of the column 'totale' cannot be read: '79228162514264337593543950336' has "
              "more digits than are kept exactly; round it in the query.");
    EXPECT_NE(refusal("0.12345678901234567890123456789::numeric"), "(read)");
}

TEST_F(ServerReading, SortsAndFindsLongDecimals) {
    run("CREATE TABLE t (n numeric(30,4)); INSERT INTO t VALUES (99999999999999999999.5), "
        "(-99999999999999999999.5), (NULL), (3.25), (-3.25), (100000000000000000000)");
    const auto rows = query("SELECT n FROM t");
    rows->setSort(u"n");
    std::string all;
    for (; !rows->Eof(); rows->MoveNext()) {
        all += shown(fieldOf(rows, 0)) + "|";
    }
    EXPECT_EQ(all,
              "Null|Decimal -99999999999999999999,5|Decimal -3,25|Decimal 3,25|"
              "Decimal 99999999999999999999,5|Decimal 100000000000000000000|");
    rows->setFilter(u"n >= 99999999999999999999.5");
    EXPECT_EQ(rows->RecordCount(), 2);
    rows->setFilter(u"n = -3.25");
    EXPECT_EQ(rows->RecordCount(), 1);
}

TEST_F(ServerReading, DescribesItsColumns) {
    run("CREATE TABLE t (a int PRIMARY KEY, b varchar(20), c numeric(10,2), d timestamp, e bytea,"
        " f char(5), g text, h bool, i money, j real, k varchar(300), l char(400), m varchar,"
        " n varchar(9000))");
    EXPECT_EQ(described("SELECT a FROM t"), "3 4 10 255");
    EXPECT_EQ(described("SELECT b FROM t"), "200 20 255 255");
    EXPECT_EQ(described("SELECT c FROM t"), "131 19 10 2");
    EXPECT_EQ(described("SELECT e FROM t"), "205 2147483647 255 255");
    EXPECT_EQ(described("SELECT f FROM t"), "129 5 255 255");
    EXPECT_EQ(described("SELECT g FROM t"), "201 2147483647 255 255");
    EXPECT_EQ(described("SELECT h FROM t"), "11 2 255 255");
    EXPECT_EQ(described("SELECT i FROM t"), "6 8 19 255");
    EXPECT_EQ(described("SELECT j FROM t"), "4 4 7 255");
    EXPECT_EQ(described("SELECT k FROM t"), "200 300 255 255");
    EXPECT_EQ(described("SELECT CAST(g AS varchar(2000)) FROM t"), "200 2000 255 255");
    EXPECT_EQ(described("SELECT l FROM t"), "129 400 255 255");
    EXPECT_EQ(described("SELECT m FROM t"), "201 2147483647 255 255");
    EXPECT_EQ(described("SELECT n FROM t"), "200 9000 255 255");
    EXPECT_EQ(field("SELECT d FROM t")->Type(), DataTypeEnum::adDBTimeStamp);
}

TEST_F(ServerReading, KnowsKeysAndWhatCannotBeWritten) {
    run("CREATE TABLE t (a int PRIMARY KEY, b int GENERATED ALWAYS AS IDENTITY, c int)");
    const auto attributes = [&](const std::string& text) {
        return live(text, CursorLocationEnum::adUseServer)->Fields()->Item(0)->Attributes();
    };
    constexpr auto kUpdatable =
        static_cast<std::int32_t>(FieldAttributeEnum::adFldUnknownUpdatable) |
        static_cast<std::int32_t>(FieldAttributeEnum::adFldUpdatable);
    EXPECT_NE(attributes("SELECT c FROM t") & kUpdatable, 0);
    EXPECT_EQ(attributes("SELECT b FROM t") & kUpdatable, 0);
    EXPECT_EQ(attributes("SELECT c + 1 FROM t") & kUpdatable, 0);
    EXPECT_EQ(attributes("SELECT DISTINCT c FROM t") & kUpdatable, 0);
    EXPECT_EQ(attributes("SELECT c FROM t GROUP BY c") & kUpdatable, 0);
}

TEST_F(ServerReading, TakesEveryResultOfAScript) {
    run("CREATE TABLE t (a int)");
    Variant written;
    auto rows = connection_->Execute(
        u"INSERT INTO t VALUES (1), (2); SELECT a FROM t ORDER BY a; DELETE FROM t WHERE a = 2;"
        u"SELECT count(*) FROM t",
        written);
    EXPECT_EQ(shown(written), "Long 3");
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    rows = rows->NextRecordset();
    rows = rows->NextRecordset();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Decimal 1");
}

TEST_F(ServerReading, AStatementThatTouchesNoRowIsNoError) {
    run("CREATE TABLE t (a int)");
    Variant written;
    connection_->Execute(u"UPDATE t SET a = 1 WHERE a = 99", written);
    EXPECT_EQ(shown(written), "Long 0");
}

TEST_F(ServerReading, ReadsOneResultWhileAnotherIsOpen) {
    run("CREATE TABLE t AS SELECT generate_series(1, 20000) AS a");
    const auto first = query("SELECT a FROM t ORDER BY a");
    const auto second = query("SELECT max(a) FROM t");
    EXPECT_EQ(shown(fieldOf(second, 0)), "Long 20000");
    EXPECT_EQ(first->RecordCount(), 20000);
    first->MoveLast();
    EXPECT_EQ(shown(fieldOf(first, 0)), "Long 20000");
}

// The statement of a query that was read at once is run again for the next one of its kind.
TEST_F(ServerReading, ReadsTheSameQueryAgainWhateverHasChanged) {
    const auto other = database_->open();
    run("CREATE TABLE t (a int PRIMARY KEY, b varchar(10)); INSERT INTO t VALUES (1, 'uno'), (2, "
        "NULL)");
    const auto read = [&](int key) {
        return shown(
            fieldOf(query("SELECT b FROM t WHERE a = " + std::to_string(key) + " OR a > 2"), 0));
    };
    EXPECT_EQ(read(1), "String uno");
    EXPECT_EQ(read(2), "Null");
    other->Execute(u"ALTER TABLE t ALTER b TYPE int USING 7");
    EXPECT_EQ(read(1), "Long 7");
    other->Execute(u"ALTER TABLE t ALTER b TYPE varchar(2000) USING repeat('x', 1500)");
    EXPECT_EQ(read(2), "String " + std::string(1500, 'x'));
    other->Execute(u"INSERT INTO t SELECT n, n FROM generate_series(3, 5000) AS n");
    EXPECT_EQ(query("SELECT b FROM t WHERE a = 1 OR a > 2")->RecordCount(), 4999);
    other->Execute(u"DELETE FROM t WHERE a > 2");
    other->Execute(u"ALTER TABLE t RENAME TO u");
    EXPECT_NE(test::raisedBy([&] { (void)read(1); }), 0);
    other->Execute(u"ALTER TABLE u ALTER b TYPE numeric(30,2) USING 1.5");
    other->Execute(u"ALTER TABLE u RENAME TO t");
    EXPECT_EQ(read(1), "Decimal 1,5");
    other->Execute(u"ALTER TABLE t ALTER b TYPE varchar(10) USING 'due'");
    EXPECT_EQ(read(1), "String due");
    other->Execute(u"DELETE FROM t");
    EXPECT_TRUE(query("SELECT b FROM t WHERE a = 1 OR a > 2")->Eof());
}

TEST_F(ServerReading, ReadsTheSameQueryWhileItIsStillOpen) {
    run("CREATE TABLE t AS SELECT n AS a, n % 3 AS b FROM generate_series(1, 20000) AS n");
    const auto rest = query("SELECT a FROM t WHERE b = 0 ORDER BY a");
    EXPECT_EQ(shown(fieldOf(query("SELECT a FROM t WHERE b = 7 OR a = 5"), 0)), "Long 5");
    const auto again = query("SELECT a FROM t WHERE b = 1 ORDER BY a");
    EXPECT_EQ(rest->RecordCount(), 6666);
    EXPECT_EQ(again->RecordCount(), 6667);
    rest->MoveLast();
    again->MoveLast();
    EXPECT_EQ(shown(fieldOf(rest, 0)) + shown(fieldOf(again, 0)), "Long 19998Long 19999");
}

TEST_F(ServerReading, ReadsTheFirstResultToItsEndWhereOnlyOneCanBeOpen) {
    run("CREATE TABLE t AS SELECT generate_series(1, 20000) AS a; ALTER TABLE t ADD PRIMARY KEY "
        "(a)");
    connection_->Close();
    connection_ = database_->open(";MARS Connection=False");
    const auto first = live("SELECT a FROM t ORDER BY a");
    EXPECT_NE(first->Fields()->Item(0)->Attributes() &
                  static_cast<std::int32_t>(FieldAttributeEnum::adFldKeyColumn),
              0);
    EXPECT_EQ(value("SELECT max(a) FROM t"), "Long 20000");
    first->Update(u"a", 0);
    EXPECT_EQ(first->RecordCount(), 20000);
    first->MoveLast();
    EXPECT_EQ(shown(fieldOf(first, 0)), "Long 20000");
}

TEST_F(ServerReading, FetchesFromTheServersCursorWhereTheDriverIsToldTo) {
    const auto connection = database_->open(";UseDeclareFetch=1;Fetch=100");
    auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT generate_series(1, 20000) AS a", Variant(connection));
    EXPECT_EQ(rows->RecordCount(), 20000);
}

TEST_F(ServerReading, InformationsAreKeptApartFromErrors) {
    connection_->Execute(u"DO $$ BEGIN RAISE NOTICE 'ciao %', 1; END $$");
    ASSERT_EQ(connection_->Errors()->Count(), 1);
    EXPECT_EQ(connection_->Errors()->Item(0)->Number(), 0);
    EXPECT_EQ(connection_->Errors()->Item(0)->Description(), String(u"NOTICE: ciao 1"));
}

TEST_F(ServerReading, TakesTheFirstRowsAsTransactSqlAsksForThem) {
    run("CREATE TABLE t (a int); INSERT INTO t SELECT generate_series(1, 9)");
    EXPECT_EQ(query("SELECT TOP 3 * FROM t ORDER BY a DESC")->RecordCount(), 3);
    EXPECT_EQ(value("select top (1) a from t order by a desc;"), "Long 9");
    EXPECT_EQ(value("SELECT TOP 1 a AS \"top\" FROM t WHERE a = 4 -- the fourth"), "Long 4");
    EXPECT_EQ(value("SELECT 'TOP 1' FROM t WHERE a = 1"), "String TOP 1");
    EXPECT_EQ(test::raisedBy([&] { return query("SELECT TOP 50 PERCENT a FROM t"); }),
              errors::kCommandText);
    const auto live = this->live("SELECT TOP 1 * FROM t ORDER BY a");
    EXPECT_EQ(test::shown(test::fieldOf(live, 0)), "Long 1");
}

TEST_F(ServerReading, KnowsTheFunctionsThatTheLibrarysOwnQueriesCall) {
    run("CREATE TABLE t (a varchar(5), d timestamp); INSERT INTO t VALUES (NULL, '2025-03-31')");
    EXPECT_EQ(value("SELECT isnull(a, '') FROM t WHERE ISNULL(t.a,'')='' AND year(t.d) = '2025'"),
              "String ");
    EXPECT_EQ(value("SELECT TOP 1 'isnull(' FROM t WHERE Month(d) = 3 AND day ( d ) = 31"),
              "String isnull(");
}

TEST_F(ServerReading, DeletesAsTransactSqlAsksForIt) {
    run("CREATE TABLE t (a int); INSERT INTO t SELECT generate_series(1, 9)");
    run(" DELETE t  WHERE a > 6");
    EXPECT_EQ(value("SELECT 'x' || count(*) FROM t"), "String x6");
    run("delete \"t\" where a > 4; DELETE FROM t WHERE a = 1");
    EXPECT_EQ(value("SELECT 'x' || count(*) FROM t"), "String x3");
    run("DELETE -- all\nt");
    EXPECT_EQ(value("SELECT 'x' || count(*) FROM t"), "String x0");
    EXPECT_EQ(test::raisedBy([&] { run("DELETE"); }), errors::kCommandText);
}

TEST_F(ServerReading, OpensATableByItsName) {
    run("CREATE TABLE clienti (codice int); INSERT INTO clienti VALUES (12)");
    auto rows = make<Recordset>();
    rows->Open(u"Clienti", Variant(connection_), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockReadOnly,
               static_cast<std::int32_t>(CommandTypeEnum::adCmdTable));
    EXPECT_EQ(shown(fieldOf(rows, u"Codice")), "Long 12");
}

TEST_F(ServerReading, PassesParametersOfEveryType) {
    auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    command->setCommandText(
        u"SELECT ?::int + 1, ?::varchar, ?::numeric, ?::timestamp, ?::boolean, ?::int");
    const auto add = [&](DataTypeEnum type, const Variant& value) {
        const auto parameter =
            command->CreateParameter(u"", type, ParameterDirectionEnum::adParamInput, 50, value);
        parameter->setPrecision(18);
        parameter->setNumericScale(2);
        command->Parameters()->Append(parameter);
    };
    add(DataTypeEnum::adInteger, 41);
    add(DataTypeEnum::adVarWChar, u"Perché");
    add(DataTypeEnum::adNumeric, 12.25);
    add(DataTypeEnum::adDBTimeStamp, Date{37986.5});
    add(DataTypeEnum::adBoolean, true);
    add(DataTypeEnum::adInteger, Variant::null());
    const auto rows = command->Execute();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 42");
    EXPECT_EQ(shown(fieldOf(rows, 1)), "String Perché");
    EXPECT_EQ(shown(fieldOf(rows, 2)), "Decimal 12,25");
    EXPECT_EQ(shown(fieldOf(rows, 3)), "Date 31/12/2003 12:00:00");
    EXPECT_EQ(shown(fieldOf(rows, 4)), "Boolean Vero");
    EXPECT_EQ(shown(fieldOf(rows, 5)), "Null");
}

}  // namespace
}  // namespace kap::ado
