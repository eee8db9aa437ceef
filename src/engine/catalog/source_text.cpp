#include "engine/catalog/source_text.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/quoting.hpp"
#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/catalog/view_rows.hpp"
#include "engine/sqlite/definition_notes.hpp"
#include "engine/sqlite/sql_writer.hpp"

namespace kap::engine {
namespace {

using tsql::Token;

// Where the comment's text stands; nothing but brackets may follow the comment.
std::optional<std::pair<std::size_t, std::size_t>> placeOfSource(std::string_view sql) {
    const std::size_t end = sql.rfind(kCommentCloses);
    if (end == std::string_view::npos) return std::nullopt;
    const std::size_t start = sql.substr(0, end).rfind(kSourceOpens);
    const std::string_view behind = sql.substr(end + kCommentCloses.size());
    if (start == std::string_view::npos ||
        behind.find_first_not_of(") ") != std::string_view::npos) {
        return std::nullopt;
    }
    return std::pair(start + kSourceOpens.size(), end);
}

// Whether the first bracket ends with the last one.
bool isInBrackets(std::string_view text) {
    const std::vector<Token> tokens = tokensOf(text);
    int open = 0;
    for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
        if (isSign(tokens[i], "(")) ++open;
        if (isSign(tokens[i], ")")) --open;
        if (open == 0) return i > 0 && i + 2 == tokens.size();
    }
    return false;
}

bool isWhole(std::string_view text) {
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

// Amounts and decimals are stored as whole numbers of their last decimal.
std::string withPoint(std::string stored, std::size_t scale) {
    const std::size_t sign = stored.starts_with('-') ? 1 : 0;
    if (stored.size() - sign <= scale) {
        stored.insert(sign, scale + 1 - (stored.size() - sign), '0');
    }
    return stored.insert(stored.size() - scale, ".");
}

}  // namespace

std::optional<std::string> sourceOf(std::string_view sql) {
    const auto place = placeOfSource(sql);
    if (!place) return std::nullopt;
    return withStars(sql.substr(place->first, place->second - place->first));
}

std::string withoutSource(const std::string& sql) {
    const auto place = placeOfSource(sql);
    if (!place) return sql;
    std::string bare = sql.substr(0, place->first - kSourceOpens.size());
    if (bare.ends_with(' ')) bare.pop_back();
    return bare + sql.substr(place->second + kCommentCloses.size());
}

std::string shownDefinition(std::string_view sql) {
    const std::string text = sourceOf(sql).value_or(std::string(sql));
    return isInBrackets(text) ? text : "(" + text + ")";
}

std::string shownDefinition(const sql::Formula& formula) {
    const auto* kept = formula.value.as<sql::Definition>();
    const std::string text =
        formula.source.value_or(kept != nullptr ? kept->text : sqlOf(formula.value));
    return isInBrackets(text) ? text : "(" + text + ")";
}

std::string shownSource(const Column& column) {
    if (!column.source.empty()) return column.source;
    const std::string& sql = *column.defaultSql;
    const int scale = tsql::isDecimal(column.type.type) || tsql::isMoney(column.type.type)
                          ? static_cast<int>(tsql::scaleOf(column.type))
                          : 0;
    return scale > 0 && isWhole(sql) ? withPoint(sql, static_cast<std::size_t>(scale)) : sql;
}

std::string withColumnRenamed(const std::string& source, std::string_view before,
                              const std::string& after) {
    std::string renamed;
    std::size_t done = 0;
    for (const Token& token : tokensOf(source)) {
        const bool named =
            token.kind == tsql::TokenKind::Word || token.kind == tsql::TokenKind::QuotedName;
        if (!named || !sameName(token.text, before)) continue;
        renamed += source.substr(done, token.start - done) + inBrackets(after);
        done = token.end;
    }
    return renamed + source.substr(done);
}

std::string withObjectName(const std::string& text, const std::string& name) {
    const std::vector<Token> tokens = tokensOf(text);
    const auto kind = std::ranges::find_if(tokens, [](const Token& token) {
        return isWord(token, "VIEW") || isWord(token, "PROC") || isWord(token, "PROCEDURE") ||
               isWord(token, "FUNCTION") || isWord(token, "TRIGGER");
    });
    if (kind == tokens.end() || kind + 1 == tokens.end()) return text;
    auto last = kind + 1;
    while (last + 2 < tokens.end() && isSign(last[1], "."))
        last += 2;
    return text.substr(0, last->start) + inBrackets(name) + text.substr(last->end);
}

std::string asCreation(const std::string& text) {
    const std::vector<Token> tokens = tokensOf(text);
    if (tokens.empty() || !isWord(tokens.front(), "ALTER")) return text;
    return text.substr(0, tokens.front().start) + "CREATE" + text.substr(tokens.front().end);
}

}  // namespace kap::engine
