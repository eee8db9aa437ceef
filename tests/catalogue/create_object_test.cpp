#include <kaputil/catalogue/create_object.hpp>

#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>

#include "support/database.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::call;
using test::raisedBy;
using test::shown;

TEST(CreateObject, MakesObjectsByNameInAnyLetterCase) {
    EXPECT_EQ(createObject(u"KapUtil.CProprieta")->className(), String(u"CProprieta"));
    EXPECT_EQ(createObject(u"KAPUTIL.cerrore")->className(), String(u"CErrore"));
    EXPECT_EQ(createObject(u"KapUtil.StdFunctions")->className(), String(u"StdFunctions"));
    EXPECT_EQ(createObject(u"ADODB.Connection")->className(), String(u"Connection"));
    EXPECT_EQ(createObject(u"ADODB.Command")->className(), String(u"Command"));
    EXPECT_EQ(createObject(u"ADODB.Parameter")->className(), String(u"Parameter"));
    EXPECT_EQ(createObject(u"adodb.recordset")->className(), String(u"Recordset"));
}

TEST(CreateObject, RefusesNamesThatStandForNothing) {
    for (const char16_t* name : {u"", u"CProprieta", u"KapUtil.", u"KapUtil.Manca", u"ADODB.Field",
                                 u"ADODB.Errors", u"Altro.CProprieta"}) {
        EXPECT_EQ(raisedBy([&] { return createObject(name); }), errors::kCannotCreateObject)
            << String(name).utf8();
    }
}

// Numbers as a script host takes them: the last argument means nothing to the older member.
TEST(LateBoundNumbers, AreTakenByBothMembersAndTheirFailuresAreTold) {
    const auto connection = createObject(u"ADODB.Connection");
    call(*connection, u"Open", {Variant(test::memoryDatabase().c_str())});
    call(*connection, u"Execute",
         {u"CREATE TABLE vtx_TabDoc (Codice varchar(3), TipoProg varchar(5));"
          u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
          u"GestProvv int, PRIMARY KEY (Codice, Anno));"
          u"INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 7, 0)"});
    const auto functions = createObject(u"KapUtil.StdFunctions");
    const auto take = [&](const char16_t* member, const char16_t* counter, std::int16_t handling) {
        return shown(call(*functions, member,
                          {u"FAI", u"D", u"S", std::int16_t{2025}, 0.0, Variant(connection),
                           counter, u"vtx_TabDoc", handling}));
    };
    EXPECT_EQ(take(u"Progressivi_OLD", u"FAT", 4), "Long 42");
    EXPECT_EQ(take(u"Progressivi", u"FAT", 0), "Long 43");
    EXPECT_EQ(take(u"Progressivi_OLD", u"MANCA", 0), "Empty");
    const Ref<Object> errore = functions->invoke(u"Errore", InvokeKind::Get, {}).as<Ref<Object>>();
    EXPECT_EQ(shown(errore->invoke(u"Numero", InvokeKind::Get, {})), "String 1");
}

// The whole edit of a record as a script host would do it: nothing but names and Variants.
TEST(LateBoundRecord, IsReadEditedSavedAndRefused) {
    const auto connection = createObject(u"ADODB.Connection");
    call(*connection, u"Open", {Variant(test::memoryDatabase().c_str())});
    call(*connection, u"Execute",
         {u"CREATE TABLE T (Id int PRIMARY KEY, Nome varchar(20), AggID timestamp);"
          u"INSERT INTO T (Id, Nome) VALUES (1, 'uno')"});
    const auto functions = createObject(u"KapUtil.StdFunctions");
    const auto properties = createObject(u"KapUtil.CProprieta");

    std::vector<Variant> read = {Variant(connection), u"SELECT * FROM T", Variant()};
    EXPECT_EQ(functions->invoke(u"db_read", InvokeKind::Method, Arguments{read, {}}).as<bool>(),
              true);
    call(*properties, u"Scrivi", {u"", read[2]});
    call(*properties, u"Scrivi", {u"Nome", u"due"});
    const Variant text = call(*properties, u"Leggi");
    EXPECT_TRUE(
        call(*functions, u"DB_Update", {Variant(connection), u"SELECT * FROM T", text}).as<bool>());
    EXPECT_FALSE(
        call(*functions, u"DB_Update", {Variant(connection), u"SELECT * FROM T", text}).as<bool>());
    const Variant error = call(*functions, u"Errore");
    EXPECT_EQ(shown(call(*error.as<Ref<Object>>(), u"MsgToString")),
              "String Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!\r\n");
}

TEST(LateBoundOpenRecordset, WritesDefaultsBackAndTakesNamedArguments) {
    const auto functions = createObject(u"KapUtil.StdFunctions");
    Variant connection(test::openMemory());
    Variant query(u"SELECT 1 AS A");
    Variant cursorType(std::int16_t{-1});
    Variant keep(false);
    const std::array<Arguments::Named, 4> named = {{{u"sqlstring", &query},
                                                    {u"Connessione", &connection},
                                                    {u"CloseConnection", &keep},
                                                    {u"CursorType", &cursorType}}};
    const Variant rows =
        functions->invoke(u"OpenRecordset", InvokeKind::Method, Arguments{{}, named});
    EXPECT_EQ(shown(cursorType), "Integer 3");
    EXPECT_TRUE(call(*rows.as<Ref<Object>>(), u"ActiveConnection").as<Ref<Object>>());
}

TEST(StdFunctions, MakesItsErrorObjectOnFirstUseAndKeepsTheOneGiven) {
    const auto functions = createObject(u"KapUtil.StdFunctions");
    const Variant first = call(*functions, u"Errore");
    EXPECT_EQ(call(*functions, u"Errore").as<Ref<Object>>(), first.as<Ref<Object>>());
    const auto other = createObject(u"KapUtil.CErrore");
    test::invoke(*functions, u"Errore", InvokeKind::Set, {Variant(other)});
    EXPECT_EQ(call(*functions, u"Errore").as<Ref<Object>>(), other);
}

}  // namespace
}  // namespace kap
