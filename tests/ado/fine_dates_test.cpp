#include "ado/recordset_fixture.hpp"

// Columns of the newer dates, which programs see as texts.
namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::shown;
using test::valueOf;

class FineDates : public ::testing::Test {
protected:
    FineDates() : connection_(test::openMemory()) {
        connection_->Execute(
            u"CREATE TABLE Orari (Id int NOT NULL PRIMARY KEY, Ora time(0), Quando datetime2(3), "
            u"Dove datetimeoffset);"
            u"INSERT INTO Orari VALUES (1, '08:30', '2021-02-03 04:05:06.789', "
            u"'2021-02-03 04:05:06.1234567 +02:00'), (2, NULL, NULL, NULL)");
    }

    [[nodiscard]] Ref<Recordset> all() const {
        return openLive(connection_, u"SELECT * FROM Orari ORDER BY Id",
                        CursorLocationEnum::adUseClient);
    }

    LocaleScope locale_{"it-IT"};
    Ref<Connection> connection_;
};

TEST_F(FineDates, AreTextsOfTheSizeOfTheirValues) {
    const auto rows = all();
    for (const char16_t* name : {u"Ora", u"Quando", u"Dove"}) {
        EXPECT_EQ(rows->Fields()->Item(name)->Type(), DataTypeEnum::adVarWChar);
    }
    EXPECT_EQ(rows->Fields()->Item(u"Ora")->DefinedSize(), 8);
    EXPECT_EQ(rows->Fields()->Item(u"Quando")->DefinedSize(), 23);
    EXPECT_EQ(rows->Fields()->Item(u"Dove")->DefinedSize(), 34);
    EXPECT_EQ(shown(fieldOf(rows, u"Ora")), "String 08:30:00");
    EXPECT_EQ(shown(fieldOf(rows, u"Quando")), "String 2021-02-03 04:05:06.789");
    EXPECT_EQ(shown(fieldOf(rows, u"Dove")), "String 2021-02-03 04:05:06.1234567 +02:00");
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, u"Quando")), "Null");
}

TEST_F(FineDates, AreWrittenAndReadBackAsTheColumnKeepsThem) {
    const auto rows = all();
    rows->Fields()->Item(u"Ora")->setValue(u"17:45");
    rows->Fields()->Item(u"Quando")->setValue(u"20210204");
    rows->Fields()->Item(u"Dove")->setValue(u"2021-02-04 10:00 -03:00");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_,
                            u"SELECT convert(varchar(40), Quando, 121) FROM Orari "
                            u"WHERE Id = 1")),
              "String 2021-02-04 00:00:00.000");
    rows->Fields()->Item(u"Ora")->setValue(u"18:00:00");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Ora FROM Orari WHERE Id = 1")),
              "String 18:00:00");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Dove FROM Orari WHERE Id = 1")),
              "String 2021-02-04 10:00:00.0000000 -03:00");
}

TEST_F(FineDates, AnotherUsersChangeOfThemIsSeen) {
    const auto rows = openLive(connection_, u"SELECT Id, Quando FROM Orari WHERE Id = 1",
                               CursorLocationEnum::adUseClient);
    connection_->Execute(u"UPDATE Orari SET Quando = '2021-02-03 04:05:06.788'");
    rows->Fields()->Item(u"Quando")->setValue(u"2022-01-01");
    EXPECT_EQ(test::raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kConcurrency);
}

TEST_F(FineDates, NewRowsTakeThem) {
    const auto rows = all();
    rows->AddNew();
    rows->Fields()->Item(u"Id")->setValue(3);
    rows->Fields()->Item(u"Quando")->setValue(u"2021-02-03T04:05:06.78");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Quando FROM Orari WHERE Id = 3")),
              "String 2021-02-03 04:05:06.780");
}

}  // namespace
}  // namespace kap::ado
