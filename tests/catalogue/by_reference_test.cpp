// Members that write into their parameters, called by name: what they had written stays when they
// raise, and what they only read is left alone.
#include <gtest/gtest.h>

#include <vector>

#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/core/iclassi.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/host/cfile_ini.hpp>
#include <kaputil/host/cregistro.hpp>
#include <kaputil/host/property_bag.hpp>

#include "support/database.hpp"
#include "support/late_bound.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::shown;

class WrittenParameters : public testing::Test {
protected:
    // The number that a call raises; `arguments` hold afterwards what the caller's variables do.
    static std::int32_t raised(Object& object, std::u16string_view member,
                               std::vector<Variant>& arguments) {
        return raisedBy([&] {
            return object.invoke(member, InvokeKind::Method, Arguments{arguments, {}});
        });
    }

    test::TemporaryFolder folder_;
    test::ScopedVariable home_{"KAPUTIL_HOME", folder_.file("")};
    Ref<StdFunctions> functions_ = make<StdFunctions>();
    Variant connection_{test::openMemory()};
};

TEST_F(WrittenParameters, OpenRecordsetLeavesTheOptionsItChoseWhenTheTableIsMissing) {
    std::vector<Variant> arguments = {u"SELECT * FROM Manca", connection_,        -1, -1, -1,
                                      Variant::missing(),     Variant::missing(), -1};
    EXPECT_EQ(raised(*functions_, u"OpenRecordset", arguments), ado::errors::kUnknownObject);
    EXPECT_EQ(shown(arguments[2]), "Integer 3");
    EXPECT_EQ(shown(arguments[3]), "Integer 3");
    EXPECT_EQ(shown(arguments[4]), "Integer 1");
    EXPECT_EQ(shown(arguments[7]), "Integer 3");

    std::int16_t cursorType = -1;
    std::int16_t lockType = -1;
    std::int16_t options = -1;
    std::int16_t location = -1;
    EXPECT_EQ(raisedBy([&] {
                  return functions_->OpenRecordset(u"SELECT * FROM Manca", connection_, cursorType,
                                                   lockType, options, true, true, location);
              }),
              ado::errors::kUnknownObject);
    EXPECT_EQ((std::vector<int>{cursorType, lockType, options, location}),
              (std::vector<int>{3, 3, 1, 3}));
}

TEST_F(WrittenParameters, OpenRecordsetLeavesGivenOptionsTheirTypes) {
    std::vector<Variant> arguments = {u"SELECT 1 AS A", connection_, u"3", 3.0};
    EXPECT_EQ(raised(*functions_, u"OpenRecordset", arguments), 0);
    EXPECT_EQ(shown(arguments[2]), "String 3");
    EXPECT_EQ(shown(arguments[3]), "Double 3");
}

TEST_F(WrittenParameters, LineNumbersLeaveTheirStepAndStartWhenTheTableIsMissing) {
    std::vector<Variant> arguments = {connection_, u"SELECT MAX(Riga) FROM Manca", 0, u"0"};
    EXPECT_EQ(raised(*functions_, u"Riga_Prog", arguments), ado::errors::kUnknownObject);
    EXPECT_EQ(shown(arguments[2]), "Integer 1");
    EXPECT_EQ(shown(arguments[3]), "Integer 1");
}

TEST_F(WrittenParameters, LineNumbersLeaveAnObjectThatHoldsTheQuery) {
    const auto box = make<PropertyBag>(u"TextBox", u"Text");
    box->put(u"Text", u"SELECT 7");
    std::vector<Variant> arguments = {connection_, box, 10, 1};
    EXPECT_EQ(raised(*functions_, u"Riga_Prog", arguments), 0);
    EXPECT_EQ(arguments[1].as<Ref<Object>>(), Ref<Object>(box));
    EXPECT_EQ(shown(arguments[2]), "Long 10");
    EXPECT_EQ(shown(arguments[3]), "Long 1");
}

TEST_F(WrittenParameters, TheRegistryLeavesTheValueNameItChose) {
    const auto registro = make<CRegistro>();
    registro->setChiave(u"Cartella");
    std::vector<Variant> arguments = {u"Nessuna", u"", u"Software"};
    EXPECT_EQ(raised(*registro, u"Leggi", arguments), errors::kTypeMismatch);
    EXPECT_EQ(shown(arguments[1]), "String Cartella");
    arguments = {u"", u"", u"Software"};
    EXPECT_EQ(raised(*registro, u"Leggi", arguments), errors::kObjectNotSet);
    EXPECT_EQ(shown(arguments[1]), "String ");
}

TEST_F(WrittenParameters, TheRegistryLeavesTheNumberOfTheType) {
    const auto registro = make<CRegistro>();
    std::vector<Variant> arguments = {u"", u"x", u"REG_DWORD", 5, 6};
    EXPECT_EQ(raised(*registro, u"Scrivi", arguments), errors::kObjectNotSet);
    EXPECT_EQ(shown(arguments[2]), "String 4");
    EXPECT_EQ(shown(arguments[3]), "Long 5");
    EXPECT_EQ(shown(arguments[4]), "Long 6");
    arguments = {u"HKEY_CURRENT_USER", u"x", 1};
    EXPECT_EQ(raised(*registro, u"Scrivi", arguments), 0);
    EXPECT_EQ(shown(arguments[2]), "Long 1");
}

TEST_F(WrittenParameters, TheExportLeavesTheFolderAndTheConnectionItChecked) {
    const String folder = folder_.file("scambio");
    std::vector<Variant> arguments = {u"SELECT 1 AS A", Variant(test::memoryDatabase()),
                                      u"EXPORT.TXT", folder};
    EXPECT_NE(raised(*functions_, u"EsportaTXT", arguments), 0) << "the folder is not there";
    EXPECT_EQ(shown(arguments[3]), "String " + folder.utf8() + "\\");
    EXPECT_TRUE(arguments[1].isObject());
}

TEST_F(WrittenParameters, TheContractOfBusinessClassesLeavesItsKeyAlone) {
    std::vector<Variant> arguments = {5, Variant::null()};
    EXPECT_EQ(raised(*make<IClassi>(), u"PgUpDown", arguments), 0);
    EXPECT_EQ(shown(arguments[0]), "Long 5");
    EXPECT_EQ(shown(arguments[1]), "Null");
}

TEST_F(WrittenParameters, TheNameOfTheProfileFileLeavesTheFolderItChose) {
    std::vector<Variant> arguments = {u"", 12};
    EXPECT_EQ(raised(*make<CFileINI>(), u"NomeFileINI", arguments), 0);
    EXPECT_NE(shown(arguments[0]), "String ");
    EXPECT_EQ(shown(arguments[1]), "Long 12");
}

TEST_F(WrittenParameters, ARecordsFieldIsAssignedThroughItsDefaultMembers) {
    const auto connection = test::openMemory();
    connection->Execute(u"CREATE TABLE Prova (N varchar(10) PRIMARY KEY)");
    connection->Execute(u"INSERT INTO Prova VALUES ('a')");
    const auto rows = test::openLive(connection, u"SELECT N FROM Prova");
    const auto assign = [&](Object& object, std::u16string_view member, const char16_t* value) {
        test::invoke(object, member, InvokeKind::Let, {u"N", value});
        EXPECT_EQ(test::fieldOf(rows, u"N").as<String>().view(), value);
    };
    std::vector<Variant> arguments = {u"N", u"b"};
    rows->invoke(kDefaultMember, InvokeKind::Let, Arguments{arguments, {}});
    EXPECT_EQ(shown(test::fieldOf(rows, u"N")), "String b");
    assign(*rows, u"Fields", u"c");
    assign(*rows->Fields(), u"Item", u"d");
    rows->Update();
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT N FROM Prova")), "String d");
}

}  // namespace
}  // namespace kap
