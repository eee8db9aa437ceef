#include <kaputil/db/records.hpp>

#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap::db {
namespace {

using test::openMemory;
using test::raisedBy;
using test::shown;
using test::valueOf;

constexpr const char16_t* kUpdatedByOthers =
    u"Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!\r\n";
constexpr const char16_t* kDeletedByOthers =
    u"Attenzione: Record Eliminato da altro Utente, Operazione Annullata!\r\n";
constexpr const char16_t* kDeletedMeanwhile =
    u"Attenzione: Record Eliminato da altro Utente contemporaneamente , Operazione Annullata!\r\n";

class RecordsTest : public ::testing::Test {
protected:
    RecordsTest() : connection_(openMemory()), error_(make<CErrore>()) {
        kap::test::prepare(
            connection_,
            u"CREATE TABLE Doc (Codice varchar(5) NOT NULL PRIMARY KEY, Descr varchar(20), "
            u"Importo money, Sconto decimal(5,2), Peso real, Misura float, Data datetime, "
            u"Giorno date, Righe int, Note text, Chiuso bit, AggID timestamp);"
            u"INSERT INTO Doc (Codice, Descr, Importo, Sconto, Peso, Misura, Data, Giorno, Righe, "
            u"Note, Chiuso) VALUES ('A1', 'Primo', 1234.5, 10.25, 1.5, 2.25, "
            u"'2003-12-31 18:30:00', '2004-02-29', 3, 'nota', 1);"
            u"INSERT INTO Doc (Codice) VALUES ('B2')");
    }

    [[nodiscard]] static String row(const char16_t* code) {
        return String(u"SELECT * FROM Doc WHERE Codice = '") + code + u"'";
    }

    [[nodiscard]] Ref<CProprieta> read(const char16_t* code, bool expected = true) {
        Variant text;
        EXPECT_EQ(DB_Read(connection_, row(code), text), expected);
        auto properties = make<CProprieta>();
        properties->Scrivi(u"", text);
        return properties;
    }

    bool update(const char16_t* code, const Ref<CProprieta>& properties) {
        return DB_Update(connection_, row(code), properties->Leggi(), *error_);
    }

    [[nodiscard]] std::string stored(const char16_t* column, const char16_t* code) {
        return shown(valueOf(connection_, String(u"SELECT ") + column +
                                              u" FROM Doc WHERE Codice = '" + code + u"'"));
    }

    [[nodiscard]] std::u16string message() { return error_->MsgToString().as<String>().units(); }

    LocaleScope locale_{"it-IT"};
    Ref<ado::Connection> connection_;
    Ref<CErrore> error_;
};

TEST_F(RecordsTest, ReadsEveryFieldInOrderUnderItsUpperCasedName) {
    Variant text = u"what was there before";
    ASSERT_TRUE(DB_Read(connection_, row(u"A1"), text));
    const auto version = make<CProprieta>();
    version->Scrivi(u"", text);
    EXPECT_EQ(text.as<String>(),
              String(u"<CODICE>A1</CODICE><DESCR>Primo</DESCR><IMPORTO>1234,5</IMPORTO>"
                     u"<SCONTO>10,25</SCONTO><PESO>1,5</PESO><MISURA>2,25</MISURA>"
                     u"<DATA>31/12/2003 18:30:00</DATA><GIORNO>29/02/2004</GIORNO>"
                     u"<RIGHE>3</RIGHE><NOTE>nota</NOTE><CHIUSO>Vero</CHIUSO><AGGID>") +
                  version->Leggi(u"AggID").as<String>() + u"</AGGID>");
}

TEST_F(RecordsTest, ReadsTheRowVersionAsTheDecimalTextOfItsNumber) {
    const auto version = read(u"A1")->Leggi(u"AggID").as<String>().utf8();
    EXPECT_FALSE(version.empty());
    EXPECT_EQ(version.find_first_not_of("0123456789"), std::string::npos) << version;
}

TEST_F(RecordsTest, ReadsASingleWithFourDecimals) {
    connection_->Execute(u"UPDATE Doc SET Peso = 0.123456 WHERE Codice = 'A1'");
    EXPECT_EQ(shown(read(u"A1")->Leggi(u"Peso")), "String 0,1235");
}

TEST_F(RecordsTest, DbReadOfARowWhoseVarcharFieldIsNullGivesThatPropertyAnEmptyValue) {
    EXPECT_EQ(shown(read(u"B2")->Leggi(u"Descr")), "String ");
}

TEST_F(RecordsTest, ReadsNullsOfOtherTypesAsNeutralValuesOrEmptyText) {
    const auto record = read(u"B2");
    EXPECT_EQ(shown(record->Leggi(u"Importo")), "String 0");
    EXPECT_EQ(shown(record->Leggi(u"Righe")), "String ");
    EXPECT_EQ(shown(record->Leggi(u"Data")), "String ");
    EXPECT_EQ(shown(record->Leggi(u"Chiuso")), "String ");
}

TEST_F(RecordsTest, DbReadOfAQueryWithNoRowsReturnsFalseAndEveryFieldWithItsNeutralValue) {
    Variant text;
    EXPECT_FALSE(DB_Read(connection_, row(u"ZZ"), text));
    EXPECT_EQ(text.as<String>(),
              String(u"<CODICE>     </CODICE><DESCR>                    </DESCR>"
                     u"<IMPORTO>0</IMPORTO><SCONTO>0</SCONTO><PESO>0</PESO><MISURA>0</MISURA>"
                     u"<DATA></DATA><GIORNO>      </GIORNO><RIGHE>    </RIGHE><NOTE></NOTE>"
                     u"<CHIUSO>  </CHIUSO><AGGID></AGGID>"));
}

TEST_F(RecordsTest, AMissingRecordWithALongWideTextIsOutOfStringSpace) {
    KAP_NEEDS_DIALECT(connection_, "wide texts are no types of their own there");
    kap::test::prepare(connection_, u"CREATE TABLE Lunghi (Id int, Testo ntext)");
    Variant text = u"before";
    EXPECT_EQ(raisedBy([&] { return DB_Read(connection_, u"SELECT * FROM Lunghi", text); }), 14);
    EXPECT_EQ(shown(text), "String before");
}

TEST_F(RecordsTest, DbUpdateOfAnUnchangedRowWritesItAndASecondTimeItIsUpdatedByOthers) {
    const auto record = read(u"A1");
    EXPECT_TRUE(update(u"A1", record));
    EXPECT_EQ(shown(error_->Numero()), "String 0");
    EXPECT_FALSE(update(u"A1", record));
    EXPECT_EQ(shown(error_->Numero()), "String 1");
    EXPECT_EQ(message(), kUpdatedByOthers);
}

TEST_F(RecordsTest, WritesEditedFieldsOfEveryType) {
    const auto record = read(u"A1");
    record->Scrivi(u"Descr", u"L'ultimo");
    record->Scrivi(u"Importo", u"9.876,54");
    record->Scrivi(u"Sconto", u"5,5");
    record->Scrivi(u"Peso", u"0,25");
    record->Scrivi(u"Misura", u"1,125");
    record->Scrivi(u"Data", u"01/02/2004 08:15:00");
    record->Scrivi(u"Giorno", u"03/04/2005");
    record->Scrivi(u"Righe", u"12");
    record->Scrivi(u"Note", u"una nota più lunga");
    record->Scrivi(u"Chiuso", u"Falso");
    ASSERT_TRUE(update(u"A1", record));
    EXPECT_EQ(stored(u"Descr", u"A1"), "String L'ultimo");
    EXPECT_EQ(stored(u"Importo", u"A1"), test::shownMoney(connection_, "9876,54"));
    EXPECT_EQ(stored(u"Sconto", u"A1"), "Decimal 5,5");
    EXPECT_EQ(stored(u"Peso", u"A1"), "Single 0,25");
    EXPECT_EQ(stored(u"Misura", u"A1"), "Double 1,125");
    EXPECT_EQ(stored(u"Data", u"A1"), "Date 01/02/2004 08:15:00");
    EXPECT_EQ(stored(u"Giorno", u"A1"), "Date 03/04/2005");
    EXPECT_EQ(stored(u"Righe", u"A1"), "Long 12");
    EXPECT_EQ(stored(u"Note", u"A1"), "String una nota più lunga");
    EXPECT_EQ(stored(u"Chiuso", u"A1"), "Boolean Falso");
}

TEST_F(RecordsTest, WritesBlankValuesAsZeroEmptyTextOrNull) {
    const auto record = read(u"A1");
    for (const char16_t* name : {u"Descr", u"Importo", u"Sconto", u"Peso", u"Misura", u"Data",
                                 u"Giorno", u"Righe", u"Note", u"Chiuso"}) {
        record->Scrivi(name, u"  ");
    }
    ASSERT_TRUE(update(u"A1", record));
    EXPECT_EQ(stored(u"Descr", u"A1"), "String ");
    EXPECT_EQ(stored(u"Importo", u"A1"), test::shownMoney(connection_, "0"));
    EXPECT_EQ(stored(u"Sconto", u"A1"), "Decimal 0");
    EXPECT_EQ(stored(u"Peso", u"A1"), "Single 0");
    EXPECT_EQ(stored(u"Misura", u"A1"), "Double 0");
    EXPECT_EQ(stored(u"Data", u"A1"), "Null");
    EXPECT_EQ(stored(u"Giorno", u"A1"), "Null");
    EXPECT_EQ(stored(u"Righe", u"A1"), "Null");
    EXPECT_EQ(stored(u"Note", u"A1"), "String ");
    EXPECT_EQ(stored(u"Chiuso", u"A1"), "Null");
}

TEST_F(RecordsTest, ARowWithNullsIsReadAndSaved) {
    const auto record = read(u"B2");
    record->Scrivi(u"Righe", 4);
    EXPECT_TRUE(update(u"B2", record));
    EXPECT_EQ(stored(u"Righe", u"B2"), "Long 4");
    EXPECT_EQ(stored(u"Data", u"B2"), "Null");
}

TEST_F(RecordsTest, DbUpdateOfARowDeletedMeanwhileIsRefused) {
    const auto record = read(u"A1");
    connection_->Execute(u"DELETE FROM Doc WHERE Codice = 'A1'");
    EXPECT_FALSE(update(u"A1", record));
    EXPECT_EQ(shown(error_->Numero()), "String 1");
    EXPECT_EQ(message(), kDeletedByOthers);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT CAST(COUNT(*) AS int) FROM Doc")), "Long 1");
}

TEST_F(RecordsTest, ARefusedUpdateWritesNothing) {
    const auto record = read(u"A1");
    connection_->Execute(u"UPDATE Doc SET Descr = 'Altro' WHERE Codice = 'A1'");
    record->Scrivi(u"Descr", u"Mio");
    EXPECT_FALSE(update(u"A1", record));
    EXPECT_EQ(stored(u"Descr", u"A1"), "String Altro");
}

TEST_F(RecordsTest, DbReadOfAMissingKeyFollowedByDbUpdateInsertsARecord) {
    const auto record = read(u"C3", false);
    record->Scrivi(u"Codice", u"C3");
    record->Scrivi(u"Descr", u"Terzo");
    record->Scrivi(u"Importo", u"1,5");
    EXPECT_TRUE(update(u"C3", record));
    EXPECT_EQ(stored(u"Descr", u"C3"), "String Terzo");
    EXPECT_EQ(stored(u"Importo", u"C3"), test::shownMoney(connection_, "1,5"));
    EXPECT_FALSE(read(u"C3")->Leggi(u"AggID").as<String>().empty());
}

TEST_F(RecordsTest, AnInsertionWithoutTheVersionPropertyRaisesInvalidUseOfNull) {
    auto record = make<CProprieta>();
    record->Scrivi(u"Codice", u"D4");
    EXPECT_EQ(raisedBy([&] { return update(u"D4", record); }), errors::kInvalidUseOfNull);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT CAST(COUNT(*) AS int) FROM Doc")), "Long 2");
}

TEST_F(RecordsTest, AnUpdateWithoutTheVersionPropertyIsUpdatedByOthers) {
    auto record = make<CProprieta>();
    record->Scrivi(u"Descr", u"x");
    EXPECT_FALSE(update(u"A1", record));
    EXPECT_EQ(message(), kUpdatedByOthers);
}

TEST_F(RecordsTest, PropertiesThatMatchNoFieldAreIgnoredAndFieldsWithoutAPropertyAreKept) {
    const auto whole = read(u"A1");
    auto record = make<CProprieta>();
    record->Scrivi(u"AggID", whole->Leggi(u"AggID"));
    record->Scrivi(u"Descr", u"Nuova");
    record->Scrivi(u"Inesistente", u"x");
    EXPECT_TRUE(update(u"A1", record));
    EXPECT_EQ(stored(u"Descr", u"A1"), "String Nuova");
    EXPECT_EQ(stored(u"Importo", u"A1"), test::shownMoney(connection_, "1234,5"));
}

TEST_F(RecordsTest, AnUpdateClearsWhatWasReportedBefore) {
    error_->setNumero(std::int16_t{9});
    error_->AddMessaggio(u"vecchio");
    EXPECT_TRUE(update(u"A1", read(u"A1")));
    EXPECT_EQ(error_->ToString().as<String>(),
              String(u"<ERR_NUMERO>0</ERR_NUMERO><ERR_MSG1></ERR_MSG1>"));
}

TEST_F(RecordsTest, AValueThatDoesNotConvertIsRaisedAndNothingIsWritten) {
    const auto record = read(u"A1");
    record->Scrivi(u"Importo", u"tanto");
    EXPECT_EQ(raisedBy([&] { return update(u"A1", record); }), errors::kTypeMismatch);
    record->Scrivi(u"Importo", u"1");
    record->Scrivi(u"Righe", u"molte");
    EXPECT_EQ(raisedBy([&] { return update(u"A1", record); }), ado::errors::kWrongValueType);
    EXPECT_EQ(stored(u"Importo", u"A1"), test::shownMoney(connection_, "1234,5"));
}

TEST_F(RecordsTest, ANullPropertyStringIsAnInvalidUseOfNull) {
    EXPECT_EQ(
        raisedBy([&] { return DB_Update(connection_, row(u"A1"), Variant::null(), *error_); }),
        errors::kInvalidUseOfNull);
}

TEST_F(RecordsTest, ARecordWithAnIdentityIsReadAndSaved) {
    kap::test::prepare(
        connection_,
        u"CREATE TABLE Ident (Id int IDENTITY PRIMARY KEY, Nome varchar(9), AggID timestamp);"
        u"INSERT INTO Ident (Nome) VALUES ('a')");
    Variant text;
    ASSERT_TRUE(DB_Read(connection_, u"SELECT * FROM Ident WHERE Id = 1", text));
    EXPECT_TRUE(DB_Update(connection_, u"SELECT * FROM Ident WHERE Id = 1", text, *error_));
    ASSERT_FALSE(DB_Read(connection_, u"SELECT * FROM Ident WHERE Id = 2", text));
    EXPECT_TRUE(DB_Update(connection_, u"SELECT * FROM Ident WHERE Id = 2", text, *error_));
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT MAX(Id) FROM Ident")), "Long 2");
}

TEST_F(RecordsTest, DeletesTheFirstRecordAndEmptiesTheString) {
    Variant text = u"<CODICE>A1</CODICE>";
    EXPECT_TRUE(DB_Delete(connection_, u"SELECT * FROM Doc ORDER BY Codice", text, *error_));
    EXPECT_EQ(shown(text), "String ");
    EXPECT_EQ(shown(error_->Numero()), "String 0");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Codice FROM Doc")), "String B2");
}

TEST_F(RecordsTest, DeletingARecordThatIsGoneIsReported) {
    Variant text = u"x";
    EXPECT_FALSE(DB_Delete(connection_, row(u"ZZ"), text, *error_));
    EXPECT_EQ(shown(error_->Numero()), "String 1");
    EXPECT_EQ(message(), kDeletedByOthers);
    EXPECT_EQ(shown(text), "String ");
}

TEST_F(RecordsTest, AFailureOfTheDeletionIsReportedAndNeverRaised) {
    Variant text = u"x";
    EXPECT_FALSE(DB_Delete(connection_, u"SELECT * FROM Manca", text, *error_));
    EXPECT_EQ(shown(error_->Numero()), "String 1");
    EXPECT_EQ(message(), kDeletedMeanwhile);
    EXPECT_EQ(shown(text), "String ");
}

TEST_F(RecordsTest, KapLeggiRecordWithTwoNamesSeparatedByACommaAndABlankReadsTheTwoFields) {
    const auto record = kapLeggiRecord(connection_, row(u"A1"), u"Descr, Righe");
    EXPECT_EQ(shown(record->Leggi()), "String <DESCR>Primo</DESCR><RIGHE>3</RIGHE><EOF>0</EOF>");
}

TEST_F(RecordsTest, KapLeggiRecordWithNoNamesReadsEveryFieldExceptAggId) {
    KAP_NEEDS_DIALECT(connection_, "AggID comes back in lower case");
    const auto record = kapLeggiRecord(connection_,
                                       u"SELECT Codice, Descr, AggID FROM Doc "
                                       u"WHERE Codice = 'A1'");
    EXPECT_EQ(shown(record->Leggi()), "String <CODICE>A1</CODICE><DESCR>Primo</DESCR><EOF>0</EOF>");
}

TEST_F(RecordsTest, KapLeggiRecordTellsAggIdFromOtherSpellings) {
    const auto record =
        kapLeggiRecord(connection_, u"SELECT Righe AS AGGID FROM Doc WHERE Codice = 'A1'");
    EXPECT_EQ(shown(record->Leggi()), "String <AGGID>3</AGGID><EOF>0</EOF>");
}

TEST_F(RecordsTest, KapLeggiRecordOnNoRowsReturnsTheNamesWithEmptyValuesAndEof) {
    EXPECT_EQ(shown(kapLeggiRecord(connection_, row(u"ZZ"), u"Descr,Righe")->Leggi()),
              "String <DESCR></DESCR><RIGHE></RIGHE><EOF>1</EOF>");
    EXPECT_EQ(shown(kapLeggiRecord(connection_, row(u"ZZ"))->Leggi()), "String <EOF>1</EOF>");
}

TEST_F(RecordsTest, KapLeggiRecordTakesItsNamesFromAPropertyStringWithoutItsBlanks) {
    const auto none = kapLeggiRecord(connection_, row(u"ZZ"), u"<DESCR>un valore</DESCR>");
    EXPECT_EQ(shown(none->Leggi()), "String <DESCR>unvalore</DESCR><EOF>1</EOF>");
    const auto found = kapLeggiRecord(connection_, row(u"A1"), u"<DESCR>x</DESCR><RIGHE></RIGHE>");
    EXPECT_EQ(shown(found->Leggi()), "String <DESCR>Primo</DESCR><RIGHE>3</RIGHE><EOF>0</EOF>");
}

TEST_F(RecordsTest, KapLeggiRecordOfOneNameReadsThatField) {
    EXPECT_EQ(shown(kapLeggiRecord(connection_, row(u"A1"), u" Descr ")->Leggi()),
              "String <DESCR>Primo</DESCR><EOF>0</EOF>");
}

TEST_F(RecordsTest, KapLeggiRecordStoresNullsThatAreLeftAsEmptyValues) {
    EXPECT_EQ(shown(kapLeggiRecord(connection_, row(u"B2"), u"Descr,Data,Righe")->Leggi()),
              "String <DESCR></DESCR><DATA></DATA><RIGHE></RIGHE><EOF>0</EOF>");
}

TEST_F(RecordsTest, KapLeggiRecordRaisesForANameThatIsNoField) {
    EXPECT_EQ(raisedBy([&] { return kapLeggiRecord(connection_, row(u"A1"), u"Descr,Manca"); }),
              ado::errors::kItemNotFound);
}

TEST_F(RecordsTest, AnUnknownTableIsRaisedByReading) {
    Variant text;
    EXPECT_EQ(raisedBy([&] { return DB_Read(connection_, u"SELECT * FROM Manca", text); }),
              test::unknownTableNumber());
    EXPECT_EQ(
        raisedBy([&] { return DB_Update(connection_, u"SELECT * FROM Manca", u"", *error_); }),
        test::unknownTableNumber());
}

}  // namespace
}  // namespace kap::db
