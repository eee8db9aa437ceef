// The examples of the documentation as C++ writes them.
#include <gtest/gtest.h>

#include <stdexcept>

#include <kaputil/catalogue/documentation.hpp>

namespace kap {
namespace {

TEST(CppForm, CallsTheMembersOfKnownClassesAsTheHeadersDeclareThem) {
    EXPECT_EQ(cppForm("Set p = CreateObject(\"KapUtil.CProprieta\")\n"
                      "p.Scrivi \"Codice\", 12\n"
                      "WScript.Echo p.Leggi(\"codice\"), p.Count()   ' 12 1\n"),
              "const auto p = kap::make<kap::CProprieta>();\n"
              "p->Scrivi(u\"Codice\", 12);\n"
              "std::cout << kap::convert::toString(p->Leggi(u\"codice\")).utf8() << ' ' << "
              "p->Count() << '\\n';  // 12 1\n");
}

TEST(CppForm, CallsAnyOtherObjectByName) {
    EXPECT_EQ(cppForm("Set fso = CreateObject(\"Scripting.FileSystemObject\")\n"
                      "Set testo = fso.CreateTextFile(\"prova.txt\")\n"
                      "testo.Close\n"
                      "modulo.Left = testo.Line\n"),
              "const auto fso = kap::createObject(u\"Scripting.FileSystemObject\");\n"
              "const auto testo = kap::late::call(fso, u\"CreateTextFile\", {u\"prova.txt\"});\n"
              "kap::late::call(testo, u\"Close\");\n"
              "kap::late::let(modulo, u\"Left\", kap::late::get(testo, u\"Line\"));\n");
}

TEST(CppForm, KnowsTheVariablesOfTheSetup) {
    EXPECT_EQ(cppForm("e.Numero = 5\n", "Set e = CreateObject(\"KapUtil.CErrore\")\n"),
              "e->setNumero(5);\n");
}

TEST(CppForm, NamesTheValuesOfEnumerations) {
    const char* const setup = "Set rs = CreateObject(\"ADODB.Recordset\")\n";
    EXPECT_EQ(cppForm("rs.CursorLocation = 3\nrs.Open \"SELECT 1\", cn, 3\n", setup),
              "rs->setCursorLocation(kap::ado::CursorLocationEnum::adUseClient);\n"
              "rs->Open(u\"SELECT 1\", cn, kap::ado::CursorTypeEnum::adOpenStatic);\n");
    EXPECT_EQ(cppForm("rs.CursorType = 77\n", setup),
              "rs->setCursorType(static_cast<kap::ado::CursorTypeEnum>(77));\n");
}

TEST(CppForm, GivesVariablesTheTypeThatAMemberWritesInto) {
    EXPECT_EQ(cppForm("tipo = -1\n"
                      "record = \"\"\n"
                      "sql = \"SELECT 1\"\n"
                      "Set rs = f.OpenRecordset(sql, cn, tipo)\n"
                      "trovato = f.DB_Read(cn, sql, record)\n",
                      "Set f = CreateObject(\"KapUtil.StdFunctions\")\n"
                      "Set cn = CreateObject(\"ADODB.Connection\")\n"),
              "std::int16_t tipo = -1;\n"
              "kap::Variant record = u\"\";\n"
              "kap::String sql = u\"SELECT 1\";\n"
              "const auto rs = f->OpenRecordset(sql, cn, tipo);\n"
              "const auto trovato = f->DB_Read(cn, sql, record);\n");
}

TEST(CppForm, GoesThroughDefaultMembers) {
    EXPECT_EQ(cppForm("rs.Fields(\"Nome\").Value = \"L\"\"Aquila\\\"\n"
                      "rs.Fields(\"Nome\") = Null\n",
                      "Set rs = CreateObject(\"ADODB.Recordset\")\n"),
              "rs->Fields()->Item(u\"Nome\")->setValue(u\"L\\\"Aquila\\\\\");\n"
              "rs->Fields()->Item(u\"Nome\")->setValue(kap::Variant::null());\n");
}

TEST(CppForm, WritesLoopsAndConditions) {
    EXPECT_EQ(cppForm("Do Until rs.EOF\n"
                      "    If rs.RecordCount = 1 And Not x Then   ' one\n"
                      "        rs.MoveNext\n"
                      "    Else\n"
                      "        n = 2\n"
                      "    End If\n"
                      "Loop\n"
                      "For Each campo In rs.Fields\n"
                      "    WScript.Echo campo.Name\n"
                      "Next\n"
                      "For i = 1 To rs.RecordCount\n"
                      "    WScript.Echo i\n"
                      "Next\n",
                      "Set rs = CreateObject(\"ADODB.Recordset\")\n"),
              "while (!rs->Eof()) {\n"
              "    if (rs->RecordCount() == 1 && !kap::convert::toBoolean(x)) {  // one\n"
              "        rs->MoveNext();\n"
              "    } else {\n"
              "        const auto n = 2;\n"
              "    }\n"
              "}\n"
              "for (const kap::Variant& campo : rs->Fields()->elements()) {\n"
              "    std::cout << kap::convert::toString(kap::late::get(campo, u\"Name\")).utf8() << "
              "'\\n';\n"
              "}\n"
              "for (std::int32_t i = 1; i <= rs->RecordCount(); ++i) {\n"
              "    std::cout << i << '\\n';\n"
              "}\n");
}

TEST(CppForm, CatchesErrorsThatAreLookedAt) {
    EXPECT_EQ(cppForm("On Error Resume Next\n"
                      "c.Add \"x\"\n"
                      "WScript.Echo Err.Number   ' 457\n"
                      "On Error GoTo 0\n"),
              "try {\n"
              "    kap::late::call(c, u\"Add\", {u\"x\"});\n"
              "} catch (const kap::AutomationError& error) {\n"
              "    std::cout << error.number() << '\\n';  // 457\n"
              "}\n");
}

TEST(CppForm, ConvertsWhatCppWouldNot) {
    EXPECT_EQ(cppForm("e.Init e.ToString()\n"
                      "s = \"a\" & e.Numero & \"b\"\n"
                      "WScript.Echo Len(s), s & \"!\"\n",
                      "Set e = CreateObject(\"KapUtil.CErrore\")\n"),
              "e->Init(kap::convert::toString(e->ToString()));\n"
              "const kap::String s = kap::String(u\"a\") + kap::convert::toString(e->Numero()) + "
              "u\"b\";\n"
              "std::cout << s.size() << ' ' << (s + u\"!\").utf8() << '\\n';\n");
}

TEST(CppForm, RefusesWhatItDoesNotKnow) {
    EXPECT_THROW(static_cast<void>(cppForm("a = b ^ 2\n")), std::invalid_argument);
    EXPECT_THROW(
        static_cast<void>(cppForm("e.Manca 1\n", "Set e = CreateObject(\"KapUtil.CErrore\")\n")),
        std::invalid_argument);
}

TEST(VbscriptForm, NamesTheDataAccessThatScriptsOnWindowsHave) {
    EXPECT_EQ(vbscriptForm("Set cn = CreateObject(\"ADODB.Connection\")\n"
                           "Set p = CreateObject(\"KapUtil.CProprieta\")\n"),
              "Set cn = CreateObject(\"KapLocal.Connection\")\n"
              "Set p = CreateObject(\"KapUtil.CProprieta\")\n");
}

TEST(CppHeaders, AreThoseOfWhatTheStatementsMention) {
    EXPECT_EQ(cppHeaders("const auto p = kap::make<kap::CProprieta>();\n"
                         "std::cout << kap::convert::toString(p->Leggi()).utf8();\n"),
              "#include <kaputil/automation/convert.hpp>\n"
              "#include <kaputil/core/cproprieta.hpp>\n"
              "#include <iostream>\n");
    EXPECT_EQ(cppHeaders(""), "");
}

}  // namespace
}  // namespace kap
