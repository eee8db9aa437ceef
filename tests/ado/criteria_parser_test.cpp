#include "ado/criteria_parser.hpp"

#include <gtest/gtest.h>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

namespace kap::ado {
namespace {

using Node = CriteriaNode;

std::string shown(const Node& node) {
    if (node.kind == Node::Kind::Comparison) {
        constexpr const char* kSigns[] = {"=", "<>", "<", "<=", ">", ">=", "LIKE"};
        constexpr const char* kMarks[] = {"'", "#", ""};
        const std::string mark = kMarks[static_cast<int>(node.literal)];
        return "[" + node.column + "] " + kSigns[static_cast<int>(node.comparison)] + " " + mark +
               node.value + mark;
    }
    std::string text = "(";
    for (const Node& part : node.parts) {
        text += text.size() == 1 ? "" : (node.kind == Node::Kind::And ? " AND " : " OR ");
        text += shown(part);
    }
    return text + ")";
}

std::string parsed(std::string_view text) {
    return shown(parseCriteria(text));
}

std::string refusal(std::string_view text) {
    try {
        (void)parseCriteria(text);
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kInvalidArgument);
        return error.description().utf8();
    }
    return "(accepted)";
}

TEST(CriteriaParser, ReadsEveryOperator) {
    EXPECT_EQ(parsed("A = 1"), "[A] = 1");
    EXPECT_EQ(parsed("A<>1"), "[A] <> 1");
    EXPECT_EQ(parsed("A <1"), "[A] < 1");
    EXPECT_EQ(parsed("A<= 1"), "[A] <= 1");
    EXPECT_EQ(parsed("A>1"), "[A] > 1");
    EXPECT_EQ(parsed(" A >= -1.5 "), "[A] >= -1.5");
    EXPECT_EQ(parsed("A like 'x*'"), "[A] LIKE 'x*'");
}

TEST(CriteriaParser, ReadsNamesInBracketsAndTextsWithQuotes) {
    EXPECT_EQ(parsed("[Ragione sociale]='O''Brien'"), "[Ragione sociale] = 'O'Brien'");
    EXPECT_EQ(parsed("[a]]b] = ''"), "[a]b] = ''");
    EXPECT_EQ(parsed("Dal > #31/12/2003 18:30#"), "[Dal] > #31/12/2003 18:30#");
}

TEST(CriteriaParser, AndBindsCloserThanOr) {
    EXPECT_EQ(parsed("A=1 OR B=2 AND C=3"), "([A] = 1 OR ([B] = 2 AND [C] = 3))");
    EXPECT_EQ(parsed("(A=1 and B=2) or C=3"), "(([A] = 1 AND [B] = 2) OR [C] = 3)");
}

TEST(CriteriaParser, AColumnMayBeginWithAKeyword) {
    EXPECT_EQ(parsed("Ordine=1 AND AndareA=2"), "([Ordine] = 1 AND [AndareA] = 2)");
}

TEST(CriteriaParser, SaysWhatIsWrong) {
    EXPECT_EQ(refusal("A = "), "The criteria 'A = ' need a value where the end stands.");
    EXPECT_EQ(refusal("A ~ 1"), "The criteria 'A ~ 1' need a comparison where '~ 1' stands.");
    EXPECT_EQ(refusal("= 1"), "The criteria '= 1' need a name where '= 1' stands.");
    EXPECT_EQ(refusal("A = 'x"), "The criteria 'A = 'x' need ' where ''x' stands.");
    EXPECT_EQ(refusal("(A = 1"), "The criteria '(A = 1' need ')' where the end stands.");
    EXPECT_EQ(refusal("A = 1 B = 2"),
              "The criteria 'A = 1 B = 2' need AND, OR or the end where 'B = 2' stands.");
}

TEST(CriteriaParser, RefusesWhatNotEveryReaderOfCriteriaTakes) {
    EXPECT_EQ(refusal("(A=1 or B=2) and C=3"),
              "The criteria '(A=1 or B=2) and C=3': a group of alternatives (OR) cannot be joined "
              "to others by AND; write (A AND C) OR (B AND C).");
    EXPECT_EQ(refusal("A LIKE 'R*i'"),
              "The criteria 'A LIKE 'R*i'': LIKE takes * and % at the end of 'R*i', or at both "
              "ends.");
}

TEST(CriteriaParser, ParenthesesHaveALimit) {
    EXPECT_NE(refusal(std::string(100'000, '(')).find("need fewer parentheses"), std::string::npos);
}

TEST(SortParser, ReadsNamesWithTheirDirections) {
    const auto names = parseSort("Nome, [Data doc] desc ,N ASC");
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(names[0].column, "Nome");
    EXPECT_FALSE(names[0].descending);
    EXPECT_EQ(names[1].column, "Data doc");
    EXPECT_TRUE(names[1].descending);
    EXPECT_EQ(names[2].column, "N");
    EXPECT_FALSE(names[2].descending);
}

TEST(SortParser, RefusesWhatIsNoListOfNames) {
    for (const char* text : {"", "Nome,", "Nome UP", "Nome DESC ASC", ",Nome"}) {
        EXPECT_THROW((void)parseSort(text), AutomationError) << text;
    }
}

}  // namespace
}  // namespace kap::ado
