// What the COM module is made of beside its code.
#include <gtest/gtest.h>

#include <set>

#include <kaputil/catalogue/catalogue.hpp>

#include "com/interface_text.hpp"
#include "com/module_texts.hpp"
#include "com/served_classes.hpp"
#include "com/type_libraries.hpp"

namespace kap::com {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(InterfaceText, BeginsWithTheLibrary) {
    EXPECT_TRUE(contains(interfaceText(typeLibraries().front()),
                         "[uuid(749c4a7f-4612-49ed-994a-2e3285c059ca), version(1.0), "
                         "helpstring(\"KAP Utility 2.6\")]\nlibrary KapUtil {\n"));
}

TEST(InterfaceText, HasEveryClassAndItsInterface) {
    const std::string text = interfaceText(typeLibraries().front());
    for (const PublishedClass& one : publishedClasses()) {
        EXPECT_TRUE(contains(text, "[uuid(" + one.interfaceId.utf8() + ")]\n    dispinterface _" +
                                       one.name.utf8() + " {"))
            << one.name.utf8();
        EXPECT_TRUE(contains(text, "coclass " + one.name.utf8() + " {")) << one.name.utf8();
    }
}

TEST(InterfaceText, TellsOfTheGlobalClassAndOfThoseThatAreNotCreated) {
    const std::string text = interfaceText(typeLibraries().front());
    EXPECT_TRUE(contains(text, ", appobject]\n    coclass StdFunctions {"));
    EXPECT_TRUE(contains(text, ", noncreatable]\n    coclass CConstant {"));
}

TEST(InterfaceText, HasMembersWithIdentifiersTypesAndDefaults) {
    const std::string text = interfaceText(typeLibraries().front());
    EXPECT_TRUE(
        contains(text, "void Scrivi([in, out] BSTR *sNomeProprieta, [in, out] VARIANT *sValore);"));
    EXPECT_TRUE(contains(text, "[in, out, optional, defaultvalue(-1)] short *CursorType"));
    EXPECT_TRUE(contains(text, "[in, out, optional, defaultvalue(-1)] VARIANT_BOOL *DeleteNull"));
    EXPECT_TRUE(contains(text, "[id(0), propget"));
    EXPECT_TRUE(contains(text, "[in] _CErrore * rhs"));
}

TEST(InterfaceText, HelpsWithTheFirstSentenceOfTheDocumentation) {
    const std::string text = interfaceText(typeLibraries().front());
    EXPECT_TRUE(contains(
        text, "helpstring(\"Legge il primo record di una query in una stringa propriet\xE0.\")]"));
    EXPECT_TRUE(contains(text, "helpstring(\"D\xE0 il nome di un mese.\")]"));
}

TEST(InterfaceText, IsInTheCodePageOfTheCompiler) {
    EXPECT_FALSE(contains(interfaceText(typeLibraries().front()), "\xC2\xB0"));
}

TEST(InterfaceText, HasTheEnumeration) {
    EXPECT_TRUE(contains(interfaceText(typeLibraries().front()),
                         "enum CostantiNumeriche {\n        kaOK = 0,\n        kaerror = 1,"));
}

TEST(InterfaceText, OfDataAccessHasItsClassesCollectionsAndEnumerations) {
    const std::string text = interfaceText(typeLibraries()[1]);
    EXPECT_TRUE(
        contains(text, "helpstring(\"KAP Utility 2.6 Data Access\")]\nlibrary KapLocal {\n"));
    EXPECT_TRUE(contains(text,
                         "[uuid(e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b22)]\n    dispinterface "
                         "_Recordset {"));
    EXPECT_TRUE(contains(text, "_Fields * Fields();"));
    EXPECT_TRUE(contains(text, "_Field * Item([in] VARIANT Index);"));
    EXPECT_TRUE(contains(text, "_Recordset * Execute("));
    EXPECT_TRUE(contains(text, ", noncreatable]\n    coclass Fields {"));
    EXPECT_FALSE(contains(text, ", noncreatable]\n    coclass Recordset {"));
    EXPECT_TRUE(
        contains(text,
                 "enum CursorLocationEnum {\n        adUseServer = 2,\n        "
                 "adUseClient = 3,\n        adUseNone = 1,\n        adUseClientBatch = 3\n    } "
                 "CursorLocationEnum;"));
    std::size_t enumerations = 0;
    for (auto at = text.find("_NewEnum"); at != std::string::npos;
         at = text.find("_NewEnum", at + 1)) {
        ++enumerations;
    }
    EXPECT_EQ(enumerations, 4) << "of fields, parameters, errors and properties";
}

TEST(InterfaceText, HasTheEventsOfThoseThatRaiseThem) {
    const std::string text = interfaceText(typeLibraries()[1]);
    EXPECT_TRUE(contains(text, "\n    dispinterface RecordsetEvents {"));
    EXPECT_TRUE(contains(text,
                         "void WillMove([in] long adReason, [in, out] long *adStatus, [in] "
                         "_Recordset * pRecordset);"));
    EXPECT_TRUE(contains(text,
                         "coclass Recordset {\n        [default] dispinterface _Recordset;\n      "
                         "  [default, source] dispinterface RecordsetEvents;\n"));
    EXPECT_TRUE(contains(text, "[default, source] dispinterface ConnectionEvents;"));
    EXPECT_FALSE(contains(interfaceText(typeLibraries()[0]), "[default, source]"));
    EXPECT_TRUE(contains(manifestText("x86"), "name=\"ConnectionEvents\" iid=\"{e6d06f3b"));
}

TEST(TypeLibraries, GiveEveryClassAnIdentityOfItsOwn) {
    std::set<std::string> identities;
    for (const TypeLibrary& types : typeLibraries()) {
        EXPECT_TRUE(identities.insert(types.identity.utf8()).second);
        for (const PublishedClass& one : types.classes) {
            EXPECT_EQ(one.classId.size(), 36U) << one.name.utf8();
            EXPECT_TRUE(identities.insert(one.classId.utf8()).second) << one.name.utf8();
            EXPECT_TRUE(identities.insert(one.interfaceId.utf8()).second) << one.name.utf8();
            EXPECT_EQ(typeLibraryOf(*one.description), &types);
            if (const ClassDescription* events = eventsOf(one)) {
                EXPECT_TRUE(identities.insert(events->interfaceId.utf8()).second)
                    << events->name.utf8();
            }
        }
    }
}

TEST(ModuleTexts, TellTheVersionOfTheFile) {
    const std::string text = resourceText();
    EXPECT_TRUE(contains(text, "FILEVERSION 2,6,0,5\n"));
    EXPECT_TRUE(contains(text, "VALUE \"FileVersion\", \"2.06.0005\""));
    EXPECT_TRUE(contains(text, "1 TYPELIB \"KapUtil26.tlb\"\n2 TYPELIB \"KapLocal.tlb\"\n"));
}

TEST(ModuleTexts, NameEveryServedClassInTheManifest) {
    const std::string text = manifestText("amd64");
    EXPECT_TRUE(contains(text, "processorArchitecture=\"amd64\""));
    for (const ServedClass& one : servedClasses()) {
        EXPECT_TRUE(contains(text, "progid=\"" + one.programmaticName.utf8() + "\""));
    }
    EXPECT_FALSE(contains(text, "CConstant\" description"));
    EXPECT_TRUE(contains(text,
                         "<typelib tlbid=\"{e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b01}\" "
                         "version=\"1.0\" helpdir=\"\" resourceid=\"2\"/>"));
}

TEST(ServedClasses, AreThePublishedOnesAndThoseOfTheEmbeddedDatabase) {
    std::vector<String> names;
    for (const ServedClass& one : servedClasses()) {
        if (one.types == &typeLibraries()[1]) {
            names.push_back(one.programmaticName);
        }
    }
    EXPECT_EQ((std::vector<String>{u"KapLocal.Connection", u"KapLocal.Recordset",
                                   u"KapLocal.Command", u"KapLocal.Stream"}),
              names);
}

}  // namespace
}  // namespace kap::com
