#include <gtest/gtest.h>

#include "sqlscript/transfer_fixture.hpp"

namespace kap {
namespace {

using test::transfer;
using test::TransferOfTables;

// The text of a transfer between two temporary tables of the columns C1, C2 and so on.
String transferOfColumns(int count) {
    std::string columns;
    for (int i = 1; i <= count; ++i) {
        columns += (i == 1 ? "C" : ", C") + std::to_string(i) + " int";
    }
    return transfer("CREATE TABLE #T (" + columns + ") CREATE TABLE #W (" + columns + ")",
                    {{"FROM", "#T"}, {"TO", "#W"}})
        ->AddTmp();
}

TEST_F(TransferOfTables, ListsOneColumn) {
    EXPECT_EQ(transferOfColumns(1),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T TO #W'\r\n"
              u" INSERT #W  \r\n"
              u" (  [C1] ) \r\n"
              u" \r\n"
              u" SELECT  #T.[C1]\r\n"
              u" FROM #T\r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

TEST_F(TransferOfTables, ListsNineColumns) {
    EXPECT_EQ(transferOfColumns(9),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T TO #W'\r\n"
              u" INSERT #W  \r\n"
              u" (  [C1], [C2], [C3], [C4], [C5], [C6], [C7], [C8], [C9] ) \r\n"
              u" \r\n"
              u" SELECT  #T.[C1], #T.[C2], #T.[C3], #T.[C4], #T.[C5], #T.[C6], #T.[C7], #T.[C8], "
              u"#T.[C9]\r\n"
              u" FROM #T\r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

TEST_F(TransferOfTables, ListsTenColumns) {
    EXPECT_EQ(transferOfColumns(10),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T TO #W'\r\n"
              u" INSERT #W  \r\n"
              u" (  [C1], [C2], [C3], [C4], [C5], [C6], [C7], [C8], [C9], [C10]\r\n"
              u" ) \r\n"
              u" \r\n"
              u" SELECT  #T.[C1], #T.[C2], #T.[C3], #T.[C4], #T.[C5], #T.[C6], #T.[C7], #T.[C8], "
              u"#T.[C9], #T.[C10]\r\n"
              u"\r\n"
              u" FROM #T\r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

TEST_F(TransferOfTables, ListsElevenColumns) {
    EXPECT_EQ(transferOfColumns(11),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T TO #W'\r\n"
              u" INSERT #W  \r\n"
              u" (  [C1], [C2], [C3], [C4], [C5], [C6], [C7], [C8], [C9], [C10],\r\n"
              u" [C11] ) \r\n"
              u" \r\n"
              u" SELECT  #T.[C1], #T.[C2], #T.[C3], #T.[C4], #T.[C5], #T.[C6], #T.[C7], #T.[C8], "
              u"#T.[C9], #T.[C10],\r\n"
              u" #T.[C11]\r\n"
              u" FROM #T\r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

TEST_F(TransferOfTables, ListsTwentyColumns) {
    EXPECT_EQ(transferOfColumns(20),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T TO #W'\r\n"
              u" INSERT #W  \r\n"
              u" (  [C1], [C2], [C3], [C4], [C5], [C6], [C7], [C8], [C9], [C10],\r\n"
              u" [C11], [C12], [C13], [C14], [C15], [C16], [C17], [C18], [C19], [C20]\r\n"
              u" ) \r\n"
              u" \r\n"
              u" SELECT  #T.[C1], #T.[C2], #T.[C3], #T.[C4], #T.[C5], #T.[C6], #T.[C7], #T.[C8], "
              u"#T.[C9], #T.[C10],\r\n"
              u" #T.[C11], #T.[C12], #T.[C13], #T.[C14], #T.[C15], #T.[C16], #T.[C17], #T.[C18], "
              u"#T.[C19], #T.[C20]\r\n"
              u"\r\n"
              u" FROM #T\r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

TEST_F(TransferOfTables, ListsTwentyOneColumns) {
    EXPECT_EQ(transferOfColumns(21),
              u"SET @ERRORE_DESC='AddTmp(INSERT):   FROM #T TO #W'\r\n"
              u" INSERT #W  \r\n"
              u" (  [C1], [C2], [C3], [C4], [C5], [C6], [C7], [C8], [C9], [C10],\r\n"
              u" [C11], [C12], [C13], [C14], [C15], [C16], [C17], [C18], [C19], [C20],\r\n"
              u" [C21] ) \r\n"
              u" \r\n"
              u" SELECT  #T.[C1], #T.[C2], #T.[C3], #T.[C4], #T.[C5], #T.[C6], #T.[C7], #T.[C8], "
              u"#T.[C9], #T.[C10],\r\n"
              u" #T.[C11], #T.[C12], #T.[C13], #T.[C14], #T.[C15], #T.[C16], #T.[C17], #T.[C18], "
              u"#T.[C19], #T.[C20],\r\n"
              u" #T.[C21]\r\n"
              u" FROM #T\r\n"
              u" WHERE 1=1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

}  // namespace
}  // namespace kap
