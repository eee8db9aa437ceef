// The examples of the documentation as Python writes them.
#include <gtest/gtest.h>

#include <stdexcept>

#include <kaputil/catalogue/documentation.hpp>

namespace kap {
namespace {

TEST(PythonForm, MakesObjectsAndCallsTheirMembers) {
    EXPECT_EQ(pythonForm("Set p = CreateObject(\"KapUtil.CProprieta\")\n"
                         "p.Scrivi \"Codice\", 12\n"
                         "WScript.Echo p.Leggi(\"codice\"), p.Count()   ' 12 1\n"
                         "p.Clear\n"),
              "p = kaputil.Dispatch(\"KapUtil.CProprieta\")\n"
              "p.Scrivi(\"Codice\", 12)\n"
              "print(p.Leggi(\"codice\"), p.Count())  # 12 1\n"
              "p.Clear()\n");
}

TEST(PythonForm, AssignsPropertiesAndElements) {
    EXPECT_EQ(pythonForm("e.Numero = 5\n"
                         "rs.Fields(\"Nome\").Value = \"L\"\"Aquila\\\"\n"
                         "rs(\"Nome\") = Null\n"),
              "e.Numero = 5\n"
              "rs.Fields(\"Nome\").Value = \"L\\\"Aquila\\\\\"\n"
              "rs[\"Nome\"] = None\n");
}

TEST(PythonForm, HoldsWhatAMemberWritesBack) {
    EXPECT_EQ(pythonForm("s = \"\"\n"
                         "ok = f.DB_Read(cn, \"SELECT 1\", s)\n"
                         "p.Scrivi \"\", s\n"
                         "WScript.Echo s, ok\n"
                         "s = s & \"x\"\n"),
              "s = kaputil.Ref(\"\")\n"
              "ok = f.DB_Read(cn, \"SELECT 1\", s)\n"
              "p.Scrivi(\"\", s)\n"
              "print(s.value, ok)\n"
              "s.value = s.value + \"x\"\n");
}

TEST(PythonForm, KeepsVariablesThatAreOnlyReadAsTheyAre) {
    EXPECT_EQ(pythonForm("sql = \"SELECT 1\"\n"
                         "Set rs = f.OpenRecordset(sql, cn)\n"
                         "WScript.Echo rs.EOF\n"),
              "sql = \"SELECT 1\"\n"
              "rs = f.OpenRecordset(sql, cn)\n"
              "print(rs.EOF)\n");
}

TEST(PythonForm, WritesLoopsAndConditions) {
    EXPECT_EQ(pythonForm("Do Until rs.EOF\n"
                         "    If rs(\"A\").Value = 1 And Not x Then   ' one\n"
                         "        rs.MoveNext\n"
                         "    Else\n"
                         "        n = 2\n"
                         "    End If\n"
                         "Loop\n"
                         "For Each campo In rs.Fields\n"
                         "    WScript.Echo campo.Name\n"
                         "Next\n"
                         "For i = 1 To p.Count()\n"
                         "    WScript.Echo i\n"
                         "Next\n"),
              "while not rs.EOF:\n"
              "    if rs(\"A\").Value == 1 and not x:  # one\n"
              "        rs.MoveNext()\n"
              "    else:\n"
              "        n = 2\n"
              "for campo in rs.Fields:\n"
              "    print(campo.Name)\n"
              "for i in range(1, p.Count() + 1):\n"
              "    print(i)\n");
}

TEST(PythonForm, CatchesErrorsThatAreLookedAt) {
    EXPECT_EQ(pythonForm("On Error Resume Next\n"
                         "c.Add \"x\"\n"
                         "WScript.Echo Err.Number   ' 457\n"
                         "On Error GoTo 0\n"
                         "' the end\n"),
              "try:\n"
              "    c.Add(\"x\")\n"
              "except kaputil.AutomationError as error:\n"
              "    print(error.number)  # 457\n"
              "# the end\n");
}

TEST(PythonForm, WritesListsAndDates) {
    EXPECT_EQ(pythonForm("Set rs = cmd.Execute(Empty, Array(1, \"A\"))\n"
                         "d = DateSerial(2003, 12, 25)\n"),
              "rs = cmd.Execute(kaputil.Empty, [1, \"A\"])\n"
              "d = datetime.datetime(2003, 12, 25)\n");
}

TEST(PythonForm, RefusesWhatItDoesNotKnow) {
    EXPECT_THROW(static_cast<void>(pythonForm("a = b ^ 2\n")), std::invalid_argument);
    EXPECT_THROW(static_cast<void>(pythonForm("a = \"b\n")), std::invalid_argument);
}

}  // namespace
}  // namespace kap
