#include "tsql/lexer.hpp"

#include <gtest/gtest.h>

#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

// The tokens of a text, each as kind letter and text, separated by blanks.
std::string tokens(const std::string& sql) {
    static constexpr std::string_view kLetters = "wqvidfmtnbpo";
    std::string result;
    for (const Token& token : tokenize(sql)) {
        if (token.kind == TokenKind::End) break;
        if (!result.empty()) result += ' ';
        result += kLetters[static_cast<std::size_t>(token.kind)];
        result += ':' + token.text;
    }
    return result;
}

void expectError(const std::string& sql, int number, int line, const std::string& message) {
    try {
        (void)tokenize(sql);
        FAIL() << "no error for " << sql;
    } catch (const ServerError& error) {
        EXPECT_EQ(error.number(), number);
        EXPECT_EQ(error.line(), line);
        EXPECT_EQ(error.message(), message);
    }
}

TEST(Lexer, ReadsWordsNumbersAndOperators) {
    EXPECT_EQ(tokens("SELECT a1,12 FROM t_x"), "w:SELECT w:a1 o:, i:12 w:FROM w:t_x");
}

TEST(Lexer, ReadsBracketedNamesWithDoubledBrackets) {
    EXPECT_EQ(tokens("[a]]b] [order by]"), "q:a]b q:order by");
}

TEST(Lexer, NumbersTheMarksOfParameters) {
    EXPECT_EQ(tokens("a = ? OR b = ?"), "w:a o:= p:1 w:OR w:b o:= p:2");
}

TEST(Lexer, ReadsCompoundAssignments) {
    EXPECT_EQ(tokens("@a+=1 @b^=2"), "v:@a o:+= i:1 v:@b o:^= i:2");
}

TEST(Lexer, FollowsWhatTheScriptSaysOfDoubleQuotes) {
    EXPECT_EQ(tokens("\"a\" SET QUOTED_IDENTIFIER OFF \"a\" SET quoted_identifier on \"a\""),
              "q:a w:SET w:QUOTED_IDENTIFIER w:OFF t:a w:SET w:quoted_identifier w:on q:a");
}

TEST(Lexer, KnowsWhereATokenStands) {
    const std::vector<Token> found = tokenize("SELECT 'a''b'");
    EXPECT_EQ(found[1].start, 7U);
    EXPECT_EQ(found[1].end, 13U);
}

TEST(Lexer, ReadsDoubleQuotedNamesWithDoubledQuotes) {
    EXPECT_EQ(tokens("\"a\"\"b\""), "q:a\"b");
}

TEST(Lexer, ReadsVariablesAndTemporaryNames) {
    EXPECT_EQ(tokens("@x @@error #t ##g"), "v:@x v:@@error w:#t w:##g");
}

TEST(Lexer, ReadsTextsWithDoubledQuotes) {
    EXPECT_EQ(tokens("'it''s' N'x' ''"), "t:it's n:x t:");
}

TEST(Lexer, ReadsNWithoutAQuoteAsAName) {
    EXPECT_EQ(tokens("N n1"), "w:N w:n1");
}

TEST(Lexer, ReadsAllKindsOfNumbers) {
    EXPECT_EQ(tokens("1 2.5 .5 5. 1e3 1.5E-3 2e+4 $12.5 0x1aF 0x"),
              "i:1 d:2.5 d:.5 d:5. f:1e3 f:1.5E-3 f:2e+4 m:12.5 b:1aF b:");
}

TEST(Lexer, EndsANumberAtALetterThatIsNoExponent) {
    EXPECT_EQ(tokens("1eur"), "i:1 w:eur");
}

TEST(Lexer, ReadsTwoCharacterOperators) {
    EXPECT_EQ(tokens("<> != !< !> <= >= < >"), "o:<> o:!= o:!< o:!> o:<= o:>= o:< o:>");
}

TEST(Lexer, DropsLineComments) {
    EXPECT_EQ(tokens("a -- b ' [\nc"), "w:a w:c");
}

TEST(Lexer, DropsNestedBlockComments) {
    EXPECT_EQ(tokens("a /* b /* c */ ' */ d"), "w:a w:d");
}

TEST(Lexer, KeepsCommentMarksInsideTexts) {
    EXPECT_EQ(tokens("'--/*'"), "t:--/*");
}

TEST(Lexer, ReadsNamesInAnyLanguage) {
    EXPECT_EQ(tokens("città è"), "w:città w:è");
}

TEST(Lexer, SkipsByteOrderMarkAndNoBreakSpace) {
    EXPECT_EQ(tokens("\xEF\xBB\xBF"
                     "a\xC2\xA0"
                     "b"),
              "w:a w:b");
}

TEST(Lexer, CountsLinesThroughTextsAndComments) {
    const auto result = tokenize("a\n'b\nc'\n/* \n */ d", 10);
    EXPECT_EQ(result[0].line, 10);
    EXPECT_EQ(result[1].line, 11);
    EXPECT_EQ(result[2].line, 14);
}

TEST(Lexer, GivesTheEndTokenTheLastText) {
    const auto result = tokenize("SELECT *\n");
    EXPECT_EQ(result.back().kind, TokenKind::End);
    EXPECT_EQ(result.back().text, "*");
    EXPECT_EQ(result.back().line, 1);
}

TEST(Lexer, RefusesAnUnclosedText) {
    expectError("SELECT 1\n, 'abc", 105, 2,
                "Unclosed quotation mark after the character string 'abc'.");
}

TEST(Lexer, RefusesAnUnclosedName) {
    expectError("[abc", 105, 1, "Unclosed quotation mark after the character string 'abc'.");
}

TEST(Lexer, RefusesAnUnclosedComment) {
    expectError("a\n/* b /* c */\n", 113, 2, "Missing end comment mark '*/'.");
}

TEST(Lexer, RefusesACharacterThatStartsNothing) {
    expectError("SELECT `", 102, 1, "Incorrect syntax near '`'.");
}

TEST(Lexer, AcceptsANameOf128CharactersAndRefusesALongerOne) {
    const std::string longest(128, 'x');
    EXPECT_EQ(tokens(longest), "w:" + longest);
    expectError(
        longest + "x", 103, 1,
        "The identifier that starts with '" + longest + "x' is too long. Maximum length is 128.");
}

TEST(Lexer, CountsNameLengthInCharacters) {
    std::string name;
    for (int i = 0; i < 128; ++i)
        name += "è";
    EXPECT_EQ(tokens(name), "w:" + name);
}

TEST(Lexer, RefusesMoreWordsThanABatchMayHave) {
    std::string garbage(2 * kMostTokens + 2, '+');
    for (std::size_t i = 1; i < garbage.size(); i += 2)
        garbage[i] = ' ';
    try {
        static_cast<void>(tokenize(garbage));
        FAIL();
    } catch (const ServerError& error) {
        EXPECT_EQ(701, error.number());
    }
}

}  // namespace
}  // namespace kap::tsql
