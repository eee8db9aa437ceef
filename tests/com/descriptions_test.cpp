// What the COM module is made of beside its code.
#include <gtest/gtest.h>

#include <kaputil/catalogue/catalogue.hpp>

#include "com/interface_text.hpp"
#include "com/module_texts.hpp"
#include "com/served_classes.hpp"

namespace kap::com {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(InterfaceText, BeginsWithTheLibrary) {
    EXPECT_TRUE(contains(interfaceText(),
                         "[uuid(749c4a7f-4612-49ed-994a-2e3285c059ca), version(1.0), "
                         "helpstring(\"KAP Utility 2.6\")]\nlibrary KapUtil {\n"));
}

TEST(InterfaceText, HasEveryClassAndItsInterface) {
    const std::string text = interfaceText();
    for (const PublishedClass& one : publishedClasses()) {
        EXPECT_TRUE(contains(text, "[uuid(" + one.interfaceId.utf8() + ")]\n    dispinterface _" +
                                       one.name.utf8() + " {"))
            << one.name.utf8();
        EXPECT_TRUE(contains(text, "coclass " + one.name.utf8() + " {")) << one.name.utf8();
    }
}

TEST(InterfaceText, TellsOfTheGlobalClassAndOfThoseThatAreNotCreated) {
    const std::string text = interfaceText();
    EXPECT_TRUE(contains(text, ", appobject]\n    coclass StdFunctions {"));
    EXPECT_TRUE(contains(text, ", noncreatable]\n    coclass CConstant {"));
}

TEST(InterfaceText, HasMembersWithIdentifiersTypesAndDefaults) {
    const std::string text = interfaceText();
    EXPECT_TRUE(
        contains(text, "void Scrivi([in, out] BSTR *sNomeProprieta, [in, out] VARIANT *sValore);"));
    EXPECT_TRUE(contains(text, "[in, out, optional, defaultvalue(-1)] short *CursorType"));
    EXPECT_TRUE(contains(text, "[in, out, optional, defaultvalue(-1)] VARIANT_BOOL *DeleteNull"));
    EXPECT_TRUE(contains(text, "[id(0), propget"));
    EXPECT_TRUE(contains(text, "[in] _CErrore * rhs"));
}

TEST(InterfaceText, IsInTheCodePageOfTheCompiler) {
    EXPECT_FALSE(contains(interfaceText(), "\xC2\xB0"));
}

TEST(InterfaceText, HasTheEnumeration) {
    EXPECT_TRUE(contains(interfaceText(),
                         "enum CostantiNumeriche {\n        kaOK = 0,\n        kaerror = 1,"));
}

TEST(ModuleTexts, TellTheVersionOfTheFile) {
    const std::string text = resourceText();
    EXPECT_TRUE(contains(text, "FILEVERSION 2,6,0,5\n"));
    EXPECT_TRUE(contains(text, "VALUE \"FileVersion\", \"2.06.0005\""));
    EXPECT_TRUE(contains(text, "1 TYPELIB \"KapUtil26.tlb\""));
}

TEST(ModuleTexts, NameEveryServedClassInTheManifest) {
    const std::string text = manifestText("amd64");
    EXPECT_TRUE(contains(text, "processorArchitecture=\"amd64\""));
    for (const ServedClass& one : servedClasses()) {
        EXPECT_TRUE(contains(text, "progid=\"" + one.programmaticName.utf8() + "\""));
    }
    EXPECT_FALSE(contains(text, "CConstant\" description"));
}

TEST(ServedClasses, AreThePublishedOnesAndThoseOfTheEmbeddedDatabase) {
    std::vector<String> names;
    for (const ServedClass& one : servedClasses()) {
        if (!one.published) {
            names.push_back(one.programmaticName);
        }
    }
    EXPECT_EQ(
        (std::vector<String>{u"KapLocal.Connection", u"KapLocal.Recordset", u"KapLocal.Command"}),
        names);
}

}  // namespace
}  // namespace kap::com
