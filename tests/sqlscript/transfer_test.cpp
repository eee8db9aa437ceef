#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "sqlscript/transfer_fixture.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::shown;
using test::transfer;
using test::TransferOfTables;

TEST_F(TransferOfTables, MatchesColumnsByNameAndWritesItsDefaultsIntoTheParameters) {
    const auto sql = transfer(
        "CREATE TABLE #T1 (A int, B int, Z int) CREATE TABLE Archivio (A int, Y int, B int)",
        {{"FROM", "#T1"}, {"TO", "ARCHIVIO"}});
    sql->setSQLString(u"-- prima\r\n");
    const String text = sql->AddTmp();
    EXPECT_EQ(text,
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T1 TO ARCHIVIO'\r\n"
              u" INSERT ARCHIVIO  \r\n"
              u" (  [A], [B] ) \r\n"
              u" \r\n"
              u" SELECT  #T1.[A], #T1.[B]\r\n"
              u" FROM #T1\r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
    EXPECT_EQ(sql->SQLString(), u"-- prima\r\n" + text);
    EXPECT_EQ(shown(sql->Parametri()->Leggi()),
              "String <FROM>#T1</FROM><TO>ARCHIVIO</TO><WHERE>1=1</WHERE>"
              "<DELETE_FROM>NO</DELETE_FROM>");
    EXPECT_EQ(shown(sql->Errore()->Numero()), "String 0");
}

TEST_F(TransferOfTables, WritesEveryOptionalParameterInItsPlace) {
    const auto sql = transfer("CREATE TABLE #T (A int, B int) CREATE TABLE #W (B int, A int)",
                              {{"FROM", " #T "},
                               {"TO", "#W"},
                               {"WHERE", "#T.A > 'x'"},
                               {"DELETE_FROM", "SI"},
                               {"MSG_ERRORE", "Righe l''anno"},
                               {"SELECT_OPTIONS", "DISTINCT TOP 5"},
                               {"#w.b", "U.K + 1"},
                               {"JOIN1", "INNER JOIN U ON U.K = #T.A"},
                               {"JOIN2", "LEFT JOIN V ON V.K = #T.B"}});
    sql->Parametri()->Scrivi(u"FROM", u"#T");
    EXPECT_EQ(sql->AddTmp(),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   Righe l''anno'\r\n"
              u" INSERT #W  \r\n"
              u" (  [B], [A] ) \r\n"
              u" \r\n"
              u" SELECT  DISTINCT TOP 5  U.K + 1, #T.[A]\r\n"
              u" FROM #T\r\n"
              u" INNER JOIN U ON U.K = #T.A\r\n"
              u" LEFT JOIN V ON V.K = #T.B\r\n"
              u" WHERE #T.A > 'x'\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n"
              u" \r\n"
              u"SET @ERRORE_DESC='AddTmp(DELETE):   Righe l''anno'\r\n"
              u" DELETE #T FROM #T\r\n"
              u" INNER JOIN U ON U.K = #T.A\r\n"
              u" LEFT JOIN V ON V.K = #T.B\r\n"
              u" WHERE #T.A > 'x'\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

TEST_F(TransferOfTables, TrimsTableNamesInTheDefaultMessageOnly) {
    const auto sql = transfer("CREATE TABLE #T (A int) CREATE TABLE #W (A int)",
                              {{"FROM", "#T "}, {"TO", "#W  "}, {"MSG_ERRORE", "  "}});
    sql->Parametri()->Scrivi(u"#W  .A", u"7");
    EXPECT_EQ(sql->AddTmp(),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T TO #W'\r\n"
              u" INSERT #W    \r\n"
              u" (  [A] ) \r\n"
              u" \r\n"
              u" SELECT  7\r\n"
              u" FROM #T \r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

// The lists of columns and expressions alone.
std::string listsOf(const Ref<CSQL>& sql) {
    const std::string text = sql->AddTmp().utf8();
    const std::size_t start = text.find(" ( ");
    return start == std::string::npos ? text
                                      : text.substr(start, text.find(" FROM ", start) - start);
}

TEST_F(TransferOfTables, NeverWritesTheRowVersion) {
    EXPECT_EQ(listsOf(transfer("CREATE TABLE #T (AggId int, A int) CREATE TABLE #W (A int, "
                               "AGGID int)",
                               {{"FROM", "#T"}, {"TO", "#W"}, {"#W.AGGID", "1"}})),
              " (  [A] ) \r\n \r\n SELECT  #T.[A]\r\n");
}

TEST_F(TransferOfTables, PrefersTheClientsExpressionAndFillsWhatTheSourceLacks) {
    EXPECT_EQ(
        listsOf(transfer(
            "CREATE TABLE #T (Prezzo money, A int) CREATE TABLE #W (PREZZO "
            "money, N int, M int, A int)",
            {{"FROM", "#T"}, {"TO", "#W"}, {"#W.PREZZO", "0"}, {"#W.N", "A+1"}, {"#W.A", " "}})),
        " (  [PREZZO], [N], [A] ) \r\n \r\n SELECT  0, A+1, #T.[A]\r\n");
}

TEST_F(TransferOfTables, TakesExpressionsThatLookLikeTagsOfAPropertyString) {
    const std::vector<std::pair<const char*, const char*>> parameters = {
        {"FROM", "#T"},
        {"TO", "#W"},
        {"#W.A", "CASE WHEN 1</* uno */2 THEN 1 ELSE 0 END"},
        {"#W.B", "'<b>1</b>'"}};
    const auto sql = transfer(
        "CREATE TABLE #T (A int, C int) CREATE TABLE #W (A int, B varchar(20), C int)", parameters);
    EXPECT_EQ(listsOf(sql),
              " (  [A], [B], [C] ) \r\n \r\n SELECT  CASE WHEN 1</* uno */2 THEN 1 ELSE 0 END, "
              "'<b>1</b>', #T.[C]\r\n");
    EXPECT_TRUE(sql->Execute()) << shown(sql->Errore()->MsgToString());
}

TEST_F(TransferOfTables, NamesTheSourcesColumnsAsTheSourceSpellsThem) {
    EXPECT_EQ(listsOf(transfer("CREATE TABLE #T (codice int) CREATE TABLE #W (Codice int)",
                               {{"FROM", "#T"}, {"TO", "#W"}})),
              " (  [CODICE] ) \r\n \r\n SELECT  #T.[codice]\r\n");
}

TEST_F(TransferOfTables, FindsAPermanentTablesParametersUnderTheNameOfTheCatalogue) {
    EXPECT_EQ(listsOf(transfer("CREATE TABLE #T (A int) CREATE TABLE Archivio (A int, B int)",
                               {{"FROM", "#T"}, {"TO", "archivio"}, {"ARCHIVIO.B", "2"}})),
              " (  [A], [B] ) \r\n \r\n SELECT  #T.[A], 2\r\n");
}

TEST_F(TransferOfTables, EndsTheJoinsAtTheFirstBlankOne) {
    const auto sql = transfer("CREATE TABLE #T (A int) CREATE TABLE #W (A int)",
                              {{"FROM", "#T"}, {"TO", "#W"}, {"JOIN1", "J1"}, {"JOIN3", "J3"}});
    const std::string text = sql->AddTmp().utf8();
    EXPECT_NE(text.find(" FROM #T\r\n J1\r\n WHERE 1=1\r\n"), std::string::npos) << text;
}

TEST_F(TransferOfTables, TakesFiftyJoinsAndNoMore) {
    const auto sql =
        transfer("CREATE TABLE #T (A int) CREATE TABLE #W (A int)", {{"FROM", "#T"}, {"TO", "#W"}});
    for (int i = 1; i <= 51; ++i) {
        const std::string number = std::to_string(i);
        sql->Parametri()->Scrivi("JOIN" + number, "J" + number);
    }
    const std::string text = sql->AddTmp().utf8();
    EXPECT_NE(text.find(" J49\r\n J50\r\n WHERE 1=1\r\n"), std::string::npos) << text;
}

TEST_F(TransferOfTables, DeletesOnlyWhenToldInCapitals) {
    const auto sql = transfer("CREATE TABLE #T (A int) CREATE TABLE #W (A int)",
                              {{"FROM", "#T"}, {"TO", "#W"}, {"DELETE_FROM", "si"}});
    EXPECT_EQ(sql->AddTmp().utf8().find("DELETE"), std::string::npos);
    EXPECT_EQ(shown(sql->Parametri()->Leggi(u"DELETE_FROM")), "String si");
}

TEST(Transfer, TellsOfBothMissingTablesAtOnce) {
    const auto sql = make<CSQL>();
    sql->Parametri()->Scrivi(u"FROM", u"  ");
    sql->setSQLString(u"resta");
    EXPECT_EQ(sql->AddTmp(), u"");
    EXPECT_EQ(shown(sql->Errore()->Numero()), "String 1");
    EXPECT_EQ(shown(sql->Errore()->MsgToString()),
              "String Parametro FROM obbligatorio (tabella di origine)\r\n"
              "Parametro TO obbligatorio (tabella di destinazione)\r\n");
    EXPECT_EQ(sql->SQLString(), u"resta");
    EXPECT_EQ(shown(sql->Parametri()->Leggi(u"WHERE")), "String 1=1");
    EXPECT_EQ(shown(sql->Parametri()->Leggi(u"DELETE_FROM")), "String NO");
}

TEST(Transfer, TellsOfOneMissingTable) {
    const auto sql = make<CSQL>();
    sql->Parametri()->Scrivi(u"FROM", u"#T");
    EXPECT_EQ(sql->AddTmp(), u"");
    EXPECT_EQ(shown(sql->Errore()->MsgToString()),
              "String Parametro TO obbligatorio (tabella di destinazione)\r\n");
}

TEST_F(TransferOfTables, TellsWhenNoColumnCanBeWritten) {
    for (const char* tables : {"CREATE TABLE #T (A int) CREATE TABLE #W (B int, AGGID int)",
                               "CREATE TABLE #T (AGGID int) CREATE TABLE #W (AGGID int)"}) {
        const auto sql = transfer(tables, {{"FROM", "#T"}, {"TO", "#W"}});
        EXPECT_EQ(sql->AddTmp(), u"");
        EXPECT_EQ(sql->SQLString(), u"");
        EXPECT_EQ(shown(sql->Errore()->ToString()),
                  "String <ERR_NUMERO>1</ERR_NUMERO><ERR_MSG1>Nessun campo da collegare tra "
                  "tabella FROM e tabella TO</ERR_MSG1>");
    }
}

TEST_F(TransferOfTables, FindsNoColumnsInAPermanentTableThatIsNotThere) {
    for (const auto& [from, to] : {std::pair("#T", "Manca"), {"Manca", "#T"}}) {
        const auto sql = transfer("CREATE TABLE #T (A int)", {{"FROM", from}, {"TO", to}});
        EXPECT_EQ(sql->AddTmp(), u"");
        EXPECT_EQ(shown(sql->Errore()->MsgToString()),
                  "String Nessun campo da collegare tra tabella FROM e tabella TO\r\n");
    }
}

TEST_F(TransferOfTables, RaisesTheDatabasesErrorForATemporaryTableThatIsNotThere) {
    const auto sql = transfer("CREATE TABLE #T (A int)", {{"FROM", "#T"}, {"TO", "#Manca"}});
    EXPECT_EQ(test::raisedBy([&] { return sql->AddTmp(); }), test::unknownTableNumber());
    EXPECT_EQ(sql->SQLString(), u"");
}

TEST(Transfer, RaisesTheDatabasesErrorWithoutAConnection) {
    const auto sql = make<CSQL>();
    sql->Parametri()->Scrivi(u"FROM", u"#T");
    sql->Parametri()->Scrivi(u"TO", u"#W");
    EXPECT_EQ(test::raisedBy([&] { return sql->AddTmp(); }), ado::errors::kInvalidConnection);
}

TEST_F(TransferOfTables, ForgetsEarlierMessages) {
    const auto sql =
        transfer("CREATE TABLE #T (A int) CREATE TABLE #W (A int)", {{"FROM", "#T"}, {"TO", "#W"}});
    sql->Errore()->setNumero(1);
    sql->Errore()->AddMessaggio(u"di prima");
    EXPECT_FALSE(sql->AddTmp().empty());
    EXPECT_EQ(shown(sql->Errore()->MsgToString()), "String ");
}

TEST(Transfer, SeesTemporaryTablesOfItsOwnConnectionOnly) {
    const test::TemporaryFolder folder;
    const auto mine = test::open(folder.database());
    const auto others = test::open(folder.database());
    mine->Execute(u"CREATE TABLE #T (A int) CREATE TABLE Archivio (A int)");
    const auto sql = make<CSQL>();
    sql->Parametri()->Scrivi(u"FROM", u"#T");
    sql->Parametri()->Scrivi(u"TO", u"Archivio");
    sql->setActiveConnection(others);
    EXPECT_EQ(test::raisedBy([&] { return sql->AddTmp(); }), ado::errors::kUnknownObject);
    sql->setActiveConnection(mine);
    EXPECT_FALSE(sql->AddTmp().empty());
}

TEST_F(TransferOfTables, MovesRowsThereAndBack) {
    const auto sql = transfer(
        "CREATE TABLE #T (Codice int, Qta int, Scarto int) "
        "CREATE TABLE Archivio (Codice int PRIMARY KEY, Qta int, Valore int, AggID timestamp) "
        "INSERT INTO #T VALUES (1, 10, 0), (2, 20, 0), (3, 30, 1)",
        {{"FROM", "#T"},
         {"TO", "Archivio"},
         {"WHERE", "#T.Scarto = 0"},
         {"DELETE_FROM", "SI"},
         {"Archivio.Valore", "#T.Qta * 2"}});
    const auto connection = sql->ActiveConnection();
    sql->AddTmp();
    EXPECT_TRUE(sql->Execute()) << shown(sql->Errore()->MsgToString());
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT SUM(Valore) FROM Archivio")), "Long 60");
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT SUM(Codice) FROM #T")), "Long 3");

    sql->Clear();
    for (const auto& [name, value] : {std::pair(u"FROM", u"Archivio"),
                                      {u"TO", u"#T"},
                                      {u"DELETE_FROM", u"SI"},
                                      {u"#T.Scarto", u"9"}}) {
        sql->Parametri()->Scrivi(name, value);
    }
    sql->AddTmp();
    EXPECT_TRUE(sql->Execute()) << shown(sql->Errore()->MsgToString());
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT COUNT(*) FROM Archivio")), "Long 0");
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT SUM(Scarto) FROM #T")), "Long 19");
}

TEST_F(TransferOfTables, LeavesBothTablesAsTheyWereWhenARowIsRefused) {
    const auto sql = transfer(
        "CREATE TABLE #T (Codice int) CREATE TABLE Archivio (Codice int PRIMARY KEY) "
        "INSERT INTO #T VALUES (1), (2) INSERT INTO Archivio VALUES (2)",
        {{"FROM", "#T"}, {"TO", "Archivio"}, {"DELETE_FROM", "SI"}});
    const auto connection = sql->ActiveConnection();
    sql->AddTmp();
    EXPECT_FALSE(sql->Execute());
    EXPECT_TRUE(sql->Errore()->MsgToString().as<String>().view().ends_with(
        u"\r\nAddTmp(INSERT):   FROM #T TO Archivio\r\n"))
        << shown(sql->Errore()->MsgToString());
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT COUNT(*) FROM Archivio")), "Long 1");
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT COUNT(*) FROM #T")), "Long 2");
}

}  // namespace
}  // namespace kap
