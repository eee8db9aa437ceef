#include <kaputil/host/cregistro.hpp>

#include <filesystem>

#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/platform/message_box.hpp>
#include <kaputil/platform/registry.hpp>

#include "support/late_bound.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

namespace registry = platform::registry;
using test::raisedBy;
using test::shown;

constexpr const char16_t* kUser = u"HKEY_CURRENT_USER";
constexpr const char16_t* kPath = u"Software\\Vertex";
constexpr const char16_t* kKey = u"HKEY_CURRENT_USER\\Software\\Vertex";

class CRegistroTest : public testing::Test {
protected:
    CRegistroTest() { registry::createKey(kKey); }
    ~CRegistroTest() override { platform::setMessageLog(std::nullopt); }

    static void put(const char16_t* name, const registry::Value& value) {
        ASSERT_TRUE(registry::setValue(kKey, name, value));
    }
    // What the store holds; nothing when there is no such value.
    static std::string stored(const char16_t* name, const char16_t* key = kKey) {
        const auto value = registry::value(key, name);
        return value ? registry::textOf(*value).utf8() : "nothing";
    }

    LocaleScope locale_{"it-IT"};
    test::TemporaryFolder folder_;
    test::ScopedVariable home_{"KAPUTIL_HOME", folder_.file("")};
    Ref<CRegistro> registro_ = make<CRegistro>();
};

TEST_F(CRegistroTest, ReadsATextWithoutTheNulAtItsEnd) {
    put(u"Nome", registry::textValue(u"Rossi"));
    put(u"Vuoto", registry::textValue(u""));
    EXPECT_EQ(shown(registro_->Leggi(kUser, u"Nome", kPath)), "String Rossi");
    EXPECT_EQ(shown(registro_->Leggi(kUser, u"Vuoto", kPath)), "String ");
}

TEST_F(CRegistroTest, DropsTheLastCharacterOfATextThatNoNulEnds) {
    put(u"Nome", {registry::kText, {'a', 0, 'b', 0}});
    EXPECT_EQ(shown(registro_->Leggi(kUser, u"Nome", kPath)), "String a");
}

TEST_F(CRegistroTest, ReadsEveryNumberAsZero) {
    put(u"Copie", registry::numberValue(7));
    EXPECT_EQ(shown(registro_->Leggi(kUser, u"Copie", kPath)), "Long 0");
}

TEST_F(CRegistroTest, ReadsOtherTypesAndWhatIsNotThereAsEmpty) {
    put(u"Byte", {3, {1, 2}});
    put(u"Niente", {registry::kText, {}});
    for (const char16_t* name : {u"Byte", u"Niente", u"Manca"}) {
        EXPECT_EQ(shown(registro_->Leggi(kUser, name, kPath)), "Empty") << String(name).utf8();
    }
    EXPECT_EQ(shown(registro_->Leggi(kUser, u"Nome", u"Software\\Manca")), "Empty");
    EXPECT_EQ(shown(registro_->Leggi(u"1234", u"Nome", kPath)), "Empty");
}

TEST_F(CRegistroTest, TakesTheKeyPathFromNomeValoreWhenNoneIsGiven) {
    put(u"Nome", registry::textValue(u"Rossi"));
    registro_->setNomeValore(kPath);
    EXPECT_EQ(shown(registro_->Leggi(kUser, u"Nome")), "String Rossi");
}

TEST_F(CRegistroTest, TakesTheValueNameFromChiaveAndWritesItBack) {
    put(u"Nome", registry::textValue(u"Rossi"));
    registro_->setChiave(u"Nome");
    String name;
    String path = kPath;
    EXPECT_EQ(shown(registro_->Leggi(kUser, name, path)), "String Rossi");
    EXPECT_EQ(name, u"Nome");
    EXPECT_EQ(path, kPath);
}

TEST_F(CRegistroTest, KeepsItsDefaultsAsTexts) {
    EXPECT_EQ(shown(registro_->NomeValore()), "String ");
    EXPECT_EQ(shown(registro_->Chiave()), "String ");
    test::invoke(*registro_, u"chiave", InvokeKind::Let, {12});
    test::invoke(*registro_, u"nomevalore", InvokeKind::Let, {2.5});
    EXPECT_EQ(shown(registro_->Chiave()), "String 12");
    EXPECT_EQ(shown(registro_->NomeValore()), "String 2,5");
}

TEST_F(CRegistroTest, WritesATextAndANumber) {
    EXPECT_EQ(shown(registro_->Scrivi(kUser, u"città", u"REG_SZ", u"Nome", kPath)), "String Done");
    EXPECT_EQ(shown(registro_->Scrivi(kUser, u"12", u"REG_DWORD", u"Copie", kPath)), "String Done");
    EXPECT_EQ(*registry::value(kKey, u"Nome"), registry::textValue(u"città"));
    EXPECT_EQ(*registry::value(kKey, u"Copie"), registry::numberValue(12));
}

TEST_F(CRegistroTest, WritesTheNumberOfTheTypeBack) {
    String type = u"REG_DWORD";
    registro_->Scrivi(kUser, u"12", type, u"Copie", kPath);
    EXPECT_EQ(type, u"4");
    registro_->Scrivi(kUser, u"x", type = u"1", u"Nome", kPath);
    EXPECT_EQ(type, u"1");
    EXPECT_EQ(stored(u"Nome"), "x");
}

TEST_F(CRegistroTest, WritesTheUnnamedValueEvenWhenChiaveIsSet) {
    registro_->setChiave(u"Nome");
    String name;
    registro_->Scrivi(kUser, u"x", u"REG_SZ", name, kPath);
    EXPECT_EQ(stored(u""), "x");
    EXPECT_EQ(stored(u"Nome"), "nothing");
    EXPECT_EQ(name, u"");
    registro_->setNomeValore(kPath);
    registro_->Scrivi(kUser, u"y", u"REG_SZ");
    EXPECT_EQ(stored(u""), "y");
    EXPECT_EQ(stored(u"Nome"), "nothing");
}

TEST_F(CRegistroTest, TakesAPathThatNoKeyCanHaveForOneThatIsNotThere) {
    platform::setMessageLog(folder_.file("messaggi.log"));
    for (const char16_t* path : {u"\\Software", u"Software\\\\Vertex", u"Software\\"}) {
        EXPECT_EQ(shown(registro_->Leggi(kUser, u"Nome", path)), "Empty");
        EXPECT_EQ(shown(registro_->Scrivi(kUser, u"x", u"REG_SZ", u"Nome", path)), "String Done");
    }
    EXPECT_FALSE(std::filesystem::exists(folder_.file("messaggi.log")));
}

TEST_F(CRegistroTest, WritesUnderTheKeyOfNomeValoreWhenNoneIsGiven) {
    registro_->setNomeValore(kPath);
    registro_->Scrivi(kUser, u"x", u"REG_SZ", u"Nome");
    EXPECT_EQ(stored(u"Nome"), "x");
}

TEST_F(CRegistroTest, WritesNothingWhereTheKeyIsNotThereAndStillSaysDone) {
    EXPECT_EQ(shown(registro_->Scrivi(kUser, u"x", u"REG_SZ", u"Nome", u"Software\\Manca")),
              "String Done");
    EXPECT_FALSE(registry::hasKey(u"HKCU\\Software\\Manca"));
    EXPECT_EQ(shown(registro_->Scrivi(u"1234", u"x", u"REG_SZ", u"Nome", kPath)), "String Done");
}

TEST_F(CRegistroTest, WritesNoOtherTypes) {
    EXPECT_EQ(shown(registro_->Scrivi(kUser, u"x", u"3", u"Nome", kPath)), "String Done");
    EXPECT_EQ(stored(u"Nome"), "nothing");
}

TEST_F(CRegistroTest, TakesARootByNameOrByTheTextOfItsHandle) {
    registry::createKey(u"HKLM\\A");
    registry::createKey(u"HKCR\\A");
    registry::createKey(u"HKU\\A");
    registro_->Scrivi(u"-2147483646", u"x", u"REG_SZ", u"Nome", u"A");
    registro_->Scrivi(u"HKEY_CLASSES_ROOT", u"y", u"REG_SZ", u"Nome", u"A");
    registro_->Scrivi(u"HKEY_USERS", u"z", u"REG_SZ", u"Nome", u"A");
    EXPECT_EQ(stored(u"Nome", u"HKEY_LOCAL_MACHINE\\A"), "x");
    EXPECT_EQ(stored(u"Nome", u"HKEY_CLASSES_ROOT\\A"), "y");
    EXPECT_EQ(stored(u"Nome", u"HKEY_USERS\\A"), "z");
    EXPECT_EQ(shown(registro_->Leggi(u"HKEY_LOCAL_MACHINE", u"Nome", u"A")), "String x");
}

TEST_F(CRegistroTest, RaisesForAMissingRootOrValue) {
    EXPECT_EQ(raisedBy([&] { return registro_->Leggi(u"", u"Nome", kPath); }),
              errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] { return registro_->Scrivi(u"", u"x", u"REG_SZ", u"Nome", kPath); }),
              errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] { return registro_->Scrivi(kUser, u"", u"REG_SZ", u"Nome", kPath); }),
              errors::kObjectNotSet);
}

TEST_F(CRegistroTest, RaisesForWhatIsNoNumber) {
    EXPECT_EQ(raisedBy([&] { return registro_->Leggi(u"hkey_current_user", u"Nome", kPath); }),
              errors::kTypeMismatch);
    EXPECT_EQ(raisedBy([&] { return registro_->Scrivi(kUser, u"x", u"REG_BINARY", u"N", kPath); }),
              errors::kTypeMismatch);
    EXPECT_EQ(raisedBy([&] { return registro_->Scrivi(kUser, u"x", u"REG_DWORD", u"N", kPath); }),
              errors::kTypeMismatch);
    EXPECT_EQ(raisedBy([&] {
                  return registro_->Scrivi(kUser, u"2147483648", u"REG_DWORD", u"N", kPath);
              }),
              errors::kOverflow);
}

TEST_F(CRegistroTest, HasNoErrorObject) {
    EXPECT_FALSE(registro_->IClassi_Errore());
    EXPECT_FALSE(test::call(*registro_, u"IClassi_Errore").as<Ref<Object>>());
}

TEST_F(CRegistroTest, LeavesADamagedStoreAloneAndTellsTheLog) {
    test::putFile(folder_.file("registry.reg"), "rotto\n");
    platform::setMessageLog(folder_.file("messaggi.log"));
    EXPECT_EQ(shown(registro_->Leggi(kUser, u"Nome", kPath)), "Empty");
    EXPECT_EQ(shown(registro_->Scrivi(kUser, u"x", u"REG_SZ", u"Nome", kPath)), "String Done");
    EXPECT_EQ(test::contentOf(folder_.file("registry.reg")), "rotto\n");
    EXPECT_NE(test::contentOf(folder_.file("messaggi.log")).find("registry.reg, line 1: "),
              std::string::npos);
}

}  // namespace
}  // namespace kap
