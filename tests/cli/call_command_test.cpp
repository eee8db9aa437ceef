#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"
#include "support/text_files.hpp"

namespace kap::tests {
namespace {

using test::contentOf;

using nlohmann::json;

Outcome call(std::vector<std::string> words) {
    words.insert(words.begin(), "call");
    return kaputil(words);
}

// What a call printed, which must have succeeded.
std::string printed(const std::vector<std::string>& words) {
    const Outcome run = call(words);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    return run.out;
}

json printedJson(std::vector<std::string> words) {
    words.emplace_back("--json");
    return json::parse(printed(words));
}

// How an argument reads: kapVal gives numbers back as they are when asked for a Decimal.
std::string numberOf(const std::string& argument) {
    return printed({"kapVal", argument, "Decimal"});
}

// What a text argument is for a member.
std::string textOf(const std::string& argument) {
    return printed({"CProprieta.Scrivi", "A", argument, "+", "Leggi", "A"});
}

TEST(CallCommand, PrintsTheResultWithItsType) {
    EXPECT_EQ(printed({"KapRound", "2.675", "2"}), "Double  2.68\n");
    EXPECT_EQ(printed({"KapRound", "2.675", "2", "x"}), "Integer  -1\n");
    EXPECT_EQ(printed({"kapEmpty", "Null"}), "Boolean  True\n");
    EXPECT_EQ(printed({"NomeMese", "8", "fra"}), "String  \"Août\"\n");
}

TEST(CallCommand, FindsMembersIgnoringCaseAndWithTheNameOfTheirClass) {
    EXPECT_EQ(printed({"kapround", "2.5"}), "Double  3\n");
    EXPECT_EQ(printed({"stdfunctions.KAPROUND", "2.5"}), "Double  3\n");
    EXPECT_EQ(printed({"KapUtil.StdFunctions.KapRound", "2.5"}), "Double  3\n");
}

TEST(CallCommand, ShowsTheBlanksOfATextBetweenQuotes) {
    EXPECT_EQ(printed({"ConvertiData", "05/03/2003", "ITA"}), "String  \"5 Marzo 2003 \"\n");
    EXPECT_EQ(printed({"kapApice", "string:"}), "String  \"\"\n");
    EXPECT_EQ(printed({"kapApice", "dice \"sì\""}), "String  \"dice \"\"sì\"\"\"\n");
}

TEST(CallCommand, ReadsWholeNumbersAsTheSmallestTypeThatHoldsThem) {
    EXPECT_EQ(numberOf("12"), "Integer  12\n");
    EXPECT_EQ(numberOf("32767"), "Integer  32767\n");
    EXPECT_EQ(numberOf("32768"), "Long  32768\n");
    EXPECT_EQ(numberOf("-32768"), "Integer  -32768\n");
    EXPECT_EQ(numberOf("2147483647"), "Long  2147483647\n");
    EXPECT_EQ(numberOf("2147483648"), "Double  2147483648\n");
}

TEST(CallCommand, ReadsNumbersWithAPointOrAnExponentAsDoubles) {
    EXPECT_EQ(numberOf("2.50"), "Double  2.5\n");
    EXPECT_EQ(numberOf("1e3"), "Double  1000\n");
    EXPECT_EQ(numberOf("-2.5"), "Double  -2.5\n");
    EXPECT_EQ(numberOf("-.5"), "Double  -0.5\n");
    EXPECT_EQ(numberOf("0.5"), "Double  0.5\n");
}

TEST(CallCommand, KeepsDigitsBehindALeadingZeroAsText) {
    EXPECT_EQ(printed({"kapControllaData", "010271"}), "String  \"01/02/1971\"\n");
    EXPECT_EQ(numberOf("007"), "String  \"007\"\n");
    EXPECT_EQ(numberOf("0"), "Integer  0\n");
}

TEST(CallCommand, ReadsNumbersOfTheUsersLanguageAsTexts) {
    EXPECT_EQ(numberOf("2,5"), "String  \"2,5\"\n");
    EXPECT_EQ(printed({"kapVal", "2,5"}), "Double  2.5\n");
}

TEST(CallCommand, ReadsTheWordsForValuesInAnyCase) {
    EXPECT_EQ(numberOf("TRUE"), "Boolean  True\n");
    EXPECT_EQ(numberOf("false"), "Boolean  False\n");
    EXPECT_EQ(numberOf("Empty"), "Empty\n");
    EXPECT_EQ(printed({"kapVal", "3.7", "missing"}), "Double  3.7\n");
}

TEST(CallCommand, ReadsDatesBetweenNumberSigns) {
    EXPECT_EQ(textOf("#2003-12-25#"), "String  \"25/12/2003\"\n");
    EXPECT_EQ(textOf("#2003-12-25 10:30:00#"), "String  \"25/12/2003 10:30:00\"\n");
    EXPECT_EQ(textOf("#10:30#"), "String  \"10:30:00\"\n");
}

TEST(CallCommand, ConvertsToATypeInTheUsersLanguage) {
    EXPECT_EQ(numberOf("double:2,5"), "Double  2.5\n");
    EXPECT_EQ(numberOf("integer:2,5"), "Integer  2\n");
    EXPECT_EQ(numberOf("currency:1234,50"), "Currency  1234.5\n");
    EXPECT_EQ(numberOf("DECIMAL:0,1"), "Decimal  0.1\n");
    EXPECT_EQ(numberOf("byte:255"), "Byte  255\n");
    EXPECT_EQ(numberOf("string:12"), "String  \"12\"\n");
    EXPECT_EQ(numberOf("boolean:1"), "Boolean  True\n");
    EXPECT_EQ(textOf("date:25/12/03"), "String  \"25/12/2003\"\n");
}

TEST(CallCommand, KeepsTextsWithAColonThatNameNoType) {
    EXPECT_EQ(textOf("nota:12"), "String  \"nota:12\"\n");
    EXPECT_EQ(textOf("string:date:x"), "String  \"date:x\"\n");
}

TEST(CallCommand, SpeaksTheLanguageThatIsAskedFor) {
    EXPECT_EQ(printed({"kapVal", "double:2.5", "--locale", "en-US"}), "Double  2.5\n");
    EXPECT_EQ(printed({"--locale", "en-US", "kapVal", "2,500.5"}), "Double  2500.5\n");
}

TEST(CallCommand, TakesEveryTextAsItIsTyped) {
    for (const std::string text : {"[a]", "{}", "++", "sql", "-", "%s", "a=b", "/h"}) {
        EXPECT_EQ(textOf(text), "String  \"" + text + "\"\n");
    }
    EXPECT_EQ(textOf(""), "String  \"\"\n");
}

TEST(CallCommand, TakesNoWordBehindTwoDashesForAnOption) {
    EXPECT_EQ(printed({"kapApice", "--", "--json"}), "String  \"--json\"\n");
    EXPECT_EQ(printed({"kapVal", "--", "-2,5"}), "Double  -2.5\n");
}

TEST(CallCommand, PassesNamedArguments) {
    EXPECT_EQ(printed({"KapRound", "2.675", "decimali:=2"}), "Double  2.68\n");
    EXPECT_EQ(printed({"KapRound", "Arrotonda:=S", "Numero:=2.1"}), "Double  3\n");
    EXPECT_EQ(printed({"KapRound", "2.5", "Arrotonda:=string:I"}), "Double  2\n");
}

TEST(CallCommand, ShowsByReferenceArgumentsThatHaveANewValue) {
    EXPECT_EQ(printed({"kapControllaData", "25122003", "string:"}),
              "String  \"25/12/2003\"\n"
              "  sFormat  String  \"dd/mm/yyyy\"\n");
    EXPECT_EQ(printed({"kapControllaData", "25122003", "yyyymmdd"}), "String  \"20031225\"\n");
}

TEST(CallCommand, CallsSeveralMembersOfOneObject) {
    EXPECT_EQ(printed({"CProprieta.Scrivi", "Codice", "12", "+", "Leggi", "codice", "+", "Leggi"}),
              "String  \"12\"\n"
              "String  \"<CODICE>12</CODICE>\"\n");
}

TEST(CallCommand, MakesANewObjectForEachRun) {
    EXPECT_EQ(printed({"CProprieta.Leggi"}), "String  \"\"\n");
}

TEST(CallCommand, PrintsNothingForAMemberWithoutAResult) {
    EXPECT_EQ(printed({"CErrore.Clear"}), "");
}

TEST(CallCommand, PrintsArraysWithTheirBounds) {
    EXPECT_EQ(
        printed({"CErrore.AddMessaggio", "uno", "+", "AddMessaggio", "due", "+", "MsgToArray"}),
        "Variant(1 To 2)  (\"uno\", \"due\")\n");
}

TEST(CallCommand, ReadsPropertiesAndFollowsThemToOtherObjects) {
    EXPECT_EQ(printed({"Errore"}), "Object  CErrore\n");
    EXPECT_EQ(printed({"Errore.Numero"}), "String  \"0\"\n");
}

TEST(CallCommand, OpensTheObjectsOfThePlatform) {
    EXPECT_EQ(printed({"ADODB.Connection.Open", connectionTo(":memory:"), "+", "State"}),
              "Long  1\n");
}

TEST(CallCommand, ShowsControlCharactersByTheirPictures) {
    EXPECT_EQ(printed({"CErrore.AddMessaggio", "uno", "+", "MsgToString"}), "String  \"uno␍␊\"\n");
}

TEST(CallCommand, PrintsOneJsonObjectALineForPrograms) {
    EXPECT_EQ(printed({"--json", "KapRound", "2.675", "2"}),
              "{\"type\":\"Double\",\"value\":2.68,\"byref\":{}}\n");
    EXPECT_EQ(printedJson({"kapVal", "currency:12,5", "decimal"}),
              json::parse(R"({"type":"Currency","value":"12.5","byref":{}})"));
    EXPECT_EQ(printedJson({"kapVal", "decimal:0,1", "decimal"}),
              json::parse(R"({"type":"Decimal","value":"0.1","byref":{}})"));
    EXPECT_EQ(printedJson({"CProprieta.Leggi", "manca"}),
              json::parse(R"({"type":"Null","value":null,"byref":{}})"));
    EXPECT_EQ(printedJson({"IClassi.Read", "x"}), json::parse(R"({"type":"Empty","byref":{}})"));
}

TEST(CallCommand, PrintsByReferenceArgumentsInJson) {
    EXPECT_EQ(printedJson({"kapControllaData", "25122003", "string:"}),
              json::parse(R"({"type":"String","value":"25/12/2003","byref":
                             {"sFormat":{"type":"String","value":"dd/mm/yyyy"}}})"));
}

TEST(CallCommand, WritesMessageBoxesToTheFileThatIsNamed) {
    const Folder folder;
    const std::string log = folder / "messaggi.log";
    const std::string database = folder / "a.db";
    ASSERT_EQ(kaputil({"sql", "--connection", connectionTo(database), "--command",
                       "CREATE TABLE vtx_TabVal (Codice varchar(3), Dec_Imp smallint)"})
                  .exitCode,
              0);
    EXPECT_EQ(printed({"CalcVal", connectionTo(database), "XYZ", "10", "3", "--message-log", log}),
              "Empty\n");
    EXPECT_TRUE(contains(contentOf(log), "\tValuta XYZ non trovata!\n")) << contentOf(log);
}

TEST(CallCommand, TellsTheErrorThatAMemberRaised) {
    const Outcome run = call({"ConvertiData", "domani"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error 13: Type mismatch\n");
}

TEST(CallCommand, ShowsWhatTheMemberHadWrittenBeforeItRaised) {
    const Outcome run = call({"CRegistro.Scrivi", "string:", "x", "REG_DWORD"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "  sTipo  String  \"4\"\n");
    EXPECT_EQ(run.err.substr(0, 10), "error 91: ");
    const Outcome asJson = call({"--json", "CRegistro.Scrivi", "string:", "x", "REG_DWORD"});
    EXPECT_EQ(asJson.exitCode, 1);
    EXPECT_EQ(asJson.out, "{\"byref\":{\"sTipo\":{\"type\":\"String\",\"value\":\"4\"}}}\n");
}

TEST(CallCommand, TellsTheErrorInJson) {
    const Outcome run = call({"--json", "ConvertiData", "domani"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(json::parse(run.err)["error"]["number"], 13);
}

TEST(CallCommand, PrintsTheResultsBeforeAnError) {
    const Outcome run = call({"CProprieta.Count", "+", "NomeProprieta", "Null", "+", "Count"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "Integer  0\n");
    EXPECT_EQ(run.err, "error 94: Invalid use of Null\n");
}

TEST(CallCommand, CannotCreateWhatIsNotCreatable) {
    const Outcome run = call({"CConstant.kaOK"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.starts_with("error 429: ")) << run.err;
}

TEST(CallCommand, RefusesArgumentsThatAreTooMany) {
    const Outcome run = call({"NomeMese", "1", "ITA", "x"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.starts_with("error 450: ")) << run.err;
}

// Wrong words end with exit code 2 and this message, before anything is called.
struct WrongWords {
    std::vector<std::string> words;
    std::string message;
};

void PrintTo(const WrongWords& wrong, std::ostream* out) {
    *out << wrong.message;
}

class WrongCall : public testing::TestWithParam<WrongWords> {};

TEST_P(WrongCall, IsRefusedWithAReason) {
    const Outcome run = call(GetParam().words);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "kaputil: " + GetParam().message + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Words, WrongCall,
    testing::Values(
        WrongWords{{}, "call needs the name of a member (see \"kaputil call --help\")"},
        WrongWords{{"+"}, "a member is missing before or after \"+\""},
        WrongWords{{"kapVal", "1", "+"}, "a member is missing before or after \"+\""},
        WrongWords{{"2.5"}, "\"2.5\" names no member"},
        WrongWords{{"kapVall", "1"}, "StdFunctions has no member kapVall; did you mean kapVal?"},
        WrongWords{{"CProprieta"},
                   "CProprieta is a class; name a member of it, as in CProprieta.MEMBER"},
        WrongWords{{"CProprieta.Legi"}, "CProprieta has no member Legi; did you mean Leggi?"},
        WrongWords{{"Errore.Numero.X"}, "Numero gives no object to call a member of"},
        WrongWords{{"kapVal", "integer:x"}, "\"x\" is no Integer: Type mismatch"},
        WrongWords{{"kapVal", "byte:256"}, "\"256\" is no Byte: Overflow"},
        WrongWords{{"kapVal", "1e999"}, "the number 1e999 is out of range"},
        WrongWords{{"kapVal", "#2003-02-30#"},
                   "#2003-02-30# is no date; write it as #2003-12-25# or #2003-12-25 10:30:00#"},
        WrongWords{{"kapVal", "#2003-13-01#"},
                   "#2003-13-01# is no date; write it as #2003-12-25# or #2003-12-25 10:30:00#"},
        WrongWords{{"KapRound", "Decimali:=2", "2.5"},
                   "arguments by position come before named ones: 2.5"},
        WrongWords{{"kapVal", "caff\xE8"}, "an argument is not UTF-8"},
        WrongWords{{"kapVal", "1", "--locale", "klingon"},
                   "unknown language \"klingon\"; try it-IT, en-US or en-GB"}));

TEST(CallCommand, RefusesAnUnknownOption) {
    const Outcome run = call({"kapVal", "--jsn", "1"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "--jsn")) << run.err;
}

}  // namespace
}  // namespace kap::tests
