#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/bulk_terminator.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// BULK INSERT.
namespace kap::tsql {

Statement::Node Parser::bulkInsert() {
    BulkInsertStatement result;
    next();
    next();
    result.table = objectName();
    expectKeyword("FROM");
    result.file = bulkWord();
    if (!acceptKeyword("WITH")) return result;
    expectOperator("(");
    do {
        bulkOption(result);
    } while (acceptOperator(","));
    expectOperator(")");
    return result;
}

// A text, or a word without quotes.
std::string Parser::bulkWord() {
    const bool text = peek().kind == TokenKind::Text || peek().kind == TokenKind::NationalText;
    if (!text && !atName()) unexpected();
    return next().text;
}

void Parser::bulkOption(BulkInsertStatement& bulk) {
    // How the server is to go about it; rows are always checked here.
    static constexpr std::array kNoMatter{"ROWS_PER_BATCH", "KILOBYTES_PER_BATCH",
                                          "CHECK_CONSTRAINTS", "TABLOCK", "ORDER"};
    if (peek().kind != TokenKind::Word) unexpected();
    const std::string option = asciiUpper(next().text);
    if (option == "KEEPNULLS") {
        bulk.keepsNulls = true;
    } else if (option == "KEEPIDENTITY") {
        bulk.keepsIdentity = true;
    } else if (option == "FIRE_TRIGGERS") {
        bulk.firesTriggers = true;
    } else if (std::ranges::find(kNoMatter, option) != kNoMatter.end()) {
        if (acceptOperator("=")) next();
        if (atOperator("(")) skipBrackets();
    } else if (!bulkNumber(bulk, option) && !bulkText(bulk, option)) {
        refuse("BULK INSERT WITH " + option);
    }
}

bool Parser::bulkNumber(BulkInsertStatement& bulk, const std::string& option) {
    const std::array<std::pair<const char*, std::int64_t*>, 4> numbers{
        {{"FIRSTROW", &bulk.firstRow},
         {"LASTROW", &bulk.lastRow},
         {"MAXERRORS", &bulk.maxErrors},
         {"BATCHSIZE", &bulk.batchSize}}};
    const auto* const found =
        std::ranges::find_if(numbers, [&](const auto& each) { return option == each.first; });
    if (found == numbers.end()) return false;
    expectOperator("=");
    const Token& token = peek();
    if (token.kind != TokenKind::Integer) unexpected();
    const auto number = plain::readWhole(next().text);
    if (!number) throw syntaxError(token.text, token.line);
    *found->second = *number;
    return true;
}

bool Parser::bulkText(BulkInsertStatement& bulk, const std::string& option) {
    static constexpr std::array kTexts{"FIELDTERMINATOR", "ROWTERMINATOR", "CODEPAGE",
                                       "DATAFILETYPE",    "FORMAT",        "FIELDQUOTE",
                                       "FORMATFILE"};
    if (std::ranges::find(kTexts, option) == kTexts.end()) return false;
    expectOperator("=");
    const int line = peek().line;
    const std::string text = bulkWord();
    if (option == "FIELDTERMINATOR") {
        bulk.fieldTerminator = bulkTerminator(text, line);
    } else if (option == "ROWTERMINATOR") {
        bulk.rowTerminator = bulkTerminator(text, line);
        if (text.empty()) refuse("BULK INSERT WITH ROWTERMINATOR = ''");
    } else if (option == "CODEPAGE") {
        bulk.codePage = asciiUpper(text);
    } else if (option == "FORMATFILE") {
        bulk.formatFile = text;
    } else if (option == "FIELDQUOTE") {
        if (text.size() != 1) throw syntaxError(text, line);
        bulk.quote = text.front();
    } else if (option == "FORMAT") {
        if (!equalsIgnoringCase(text, "CSV")) refuse("BULK INSERT WITH FORMAT = " + text);
        if (bulk.quote == '\0') bulk.quote = '"';
        if (bulk.fieldTerminator == "\t") bulk.fieldTerminator = ",";
    } else {
        bulk.wideText = equalsIgnoringCase(text, "widechar");
        if (!bulk.wideText && !equalsIgnoringCase(text, "char")) {
            refuse("BULK INSERT WITH DATAFILETYPE = " + text);
        }
    }
    return true;
}

}  // namespace kap::tsql
