#include "engine/catalog/definition_reader.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/quoting.hpp"
#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/catalog/tables.hpp"

namespace kap::engine {
namespace {

using tsql::Token;
using tsql::TokenKind;

bool isAnyWord(const Token& token, std::span<const std::string_view> words) {
    return std::ranges::any_of(words, [&](std::string_view word) { return isWord(token, word); });
}

bool isNameToken(const Token& token) {
    return token.kind == TokenKind::Word || token.kind == TokenKind::QuotedName ||
           token.kind == TokenKind::Text;
}

sql::Formula formulaOf(std::string_view text) {
    return {sql::Definition{withoutSource(std::string(text))}, sourceOf(text)};
}

// Goes through the words of a definition, or of a part of it.
class DefinitionWords {
public:
    DefinitionWords(std::string_view text, std::span<const Token> tokens)
        : text_(text), tokens_(tokens) {}

    [[nodiscard]] bool atEnd() const { return at_ >= tokens_.size(); }
    [[nodiscard]] bool isAt(std::string_view word, std::size_t ahead = 0) const {
        return at_ + ahead < tokens_.size() && isWord(tokens_[at_ + ahead], word);
    }
    [[nodiscard]] bool isAtSign(std::string_view sign, std::size_t ahead = 0) const {
        return at_ + ahead < tokens_.size() && isSign(tokens_[at_ + ahead], sign);
    }
    [[nodiscard]] const Token& token() const { return tokens_[at_]; }
    [[nodiscard]] std::size_t place() const { return at_; }
    [[nodiscard]] const Token& tokenAt(std::size_t place) const { return tokens_[place]; }
    void skip(std::size_t count = 1) { at_ = std::min(at_ + count, tokens_.size()); }
    void goBack(std::size_t place) { at_ = place; }

    bool take(std::string_view word) {
        if (!isAt(word)) return false;
        ++at_;
        return true;
    }
    bool takeSign(std::string_view sign) {
        if (!isAtSign(sign)) return false;
        ++at_;
        return true;
    }
    std::optional<std::string> takeName() {
        if (atEnd() || !isNameToken(token())) return std::nullopt;
        return tokens_[at_++].text;
    }
    // What stands between brackets, which must begin here.
    std::optional<DefinitionWords> takeBrackets() {
        if (!isAtSign("(")) return std::nullopt;
        int open = 0;
        for (std::size_t end = at_; end < tokens_.size(); ++end) {
            if (isSign(tokens_[end], "(")) ++open;
            if (isSign(tokens_[end], ")")) --open;
            if (open > 0) continue;
            const std::size_t first = std::exchange(at_, end + 1);
            const std::size_t start = tokens_[first].end;
            return DefinitionWords(text_.substr(0, tokens_[end].start),
                                   tokens_.subspan(first + 1, end - first - 1), start);
        }
        return std::nullopt;
    }
    // Up to the next comma that stands in no brackets; that is passed over.
    DefinitionWords takeElement() {
        const std::size_t first = at_;
        int open = 0;
        for (; !atEnd(); ++at_) {
            if (isAtSign("(")) ++open;
            if (isAtSign(")")) --open;
            if (open == 0 && isAtSign(",")) break;
        }
        const DefinitionWords element(textBefore(at_), tokens_.subspan(first, at_ - first),
                                      first < tokens_.size() ? tokens_[first].start : start_);
        if (!atEnd()) ++at_;
        return element;
    }

    // As it is written: all of it with the comments around it; from a place up to the current one;
    // from the current one on.
    [[nodiscard]] std::string_view whole() const { return text_.substr(start_); }
    [[nodiscard]] std::string_view since(std::size_t place) const {
        return place == at_ ? std::string_view()
                            : text_.substr(tokens_[place].start,
                                           tokens_[at_ - 1].end - tokens_[place].start);
    }
    [[nodiscard]] std::string_view rest() const {
        return atEnd() ? std::string_view() : text_.substr(token().start);
    }

private:
    DefinitionWords(std::string_view text, std::span<const Token> tokens, std::size_t start)
        : text_(text), tokens_(tokens), start_(start) {}

    [[nodiscard]] std::string_view textBefore(std::size_t place) const {
        return place < tokens_.size() ? text_.substr(0, tokens_[place].start) : text_;
    }

    std::string_view text_;  // up to the end of these words
    std::span<const Token> tokens_;
    std::size_t start_ = 0;
    std::size_t at_ = 0;
};

// "a", "b": nothing where more than names stands there.
std::optional<std::vector<std::string>> plainNames(DefinitionWords words) {
    std::vector<std::string> names;
    do {
        auto name = words.takeName();
        if (!name) return std::nullopt;
        names.push_back(std::move(*name));
    } while (words.takeSign(","));
    return words.atEnd() ? std::optional(std::move(names)) : std::nullopt;
}

// --- Columns

class ColumnReader {
public:
    explicit ColumnReader(DefinitionWords words) : words_(words) {}

    std::optional<sql::ColumnDefinition> read() {
        auto name = words_.takeName();
        if (!name) return std::nullopt;
        column_.name = std::move(*name);
        readType();
        while (!words_.atEnd())
            readPart();
        return std::move(column_);
    }

private:
    void readType() {
        const std::size_t first = words_.place();
        while (!words_.atEnd() && !beginsPart())
            words_.skip();
        if (words_.place() == first) return;
        const Token& type = words_.tokenAt(first);
        if (words_.place() == first + 1 && type.kind == TokenKind::QuotedName) {
            column_.type = type.text;
        } else {
            column_.others = words_.since(first);
        }
    }

    [[nodiscard]] bool beginsPart() const {
        static constexpr std::array<std::string_view, 10> kParts{
            "CONSTRAINT", "PRIMARY", "NOT",        "UNIQUE", "CHECK",
            "DEFAULT",    "COLLATE", "REFERENCES", "AS",     "GENERATED"};
        return isAnyWord(words_.token(), kParts);
    }

    void readPart() {
        const std::size_t first = words_.place();
        std::string name;
        if (words_.take("CONSTRAINT")) name = words_.takeName().value_or("");
        if (readKnown(name)) return;
        words_.goBack(first);
        skipPart();
        if (!column_.others.empty()) column_.others += ' ';
        column_.others += words_.since(first);
    }

    // False for what is to be kept as it is written.
    bool readKnown(const std::string& name) {
        if (words_.take("DEFAULT")) return readDefault(name);
        if (!name.empty()) return false;
        if (words_.take("NOT")) {
            if (!words_.take("NULL") || words_.isAt("ON")) return false;
            return column_.notNull = true;
        }
        if (words_.take("COLLATE")) {
            if (words_.atEnd() || words_.token().kind != TokenKind::Word) return false;
            column_.collation = words_.takeName().value_or("");
            return true;
        }
        if (words_.take("GENERATED") && !words_.take("ALWAYS")) return false;
        if (!words_.take("AS")) return false;
        const auto value = words_.takeBrackets();
        if (!value || words_.isAt("STORED")) return false;
        (void)words_.take("VIRTUAL");
        column_.computed = formulaOf(value->whole());
        return true;
    }

    bool readDefault(const std::string& name) {
        if (words_.atEnd()) return false;
        if (const auto value = words_.takeBrackets()) {
            column_.defaultValue = {name, formulaOf(value->whole())};
            return true;
        }
        const std::size_t first = words_.place();
        if (words_.isAtSign("-") || words_.isAtSign("+")) words_.skip();
        if (words_.atEnd() || words_.token().kind == TokenKind::Operator) return false;
        static constexpr std::array<std::string_view, 6> kConstants{
            "NULL", "TRUE", "FALSE", "CURRENT_TIME", "CURRENT_DATE", "CURRENT_TIMESTAMP"};
        const Token& value = words_.token();
        const bool word = value.kind == TokenKind::Word && !isAnyWord(value, kConstants);
        words_.skip();
        sql::Formula formula = formulaOf(words_.since(first));
        if (word && !words_.atEnd() && words_.token().kind == TokenKind::Text) {
            words_.skip();  // X'41'
            formula = formulaOf(words_.since(first));
        } else if (word || value.kind == TokenKind::QuotedName) {
            // A name is a text to SQLite where no brackets are around it.
            formula.value = sql::Definition{textConstant(value.text)};
        }
        column_.defaultValue = {name, std::move(formula)};
        return true;
    }

    // ON DELETE SET DEFAULT, NOT DEFERRABLE and the brackets of a part belong to it.
    void skipPart() {
        if (words_.take("CONSTRAINT")) (void)words_.takeName();
        do {
            const bool two = words_.isAt("SET") || words_.isAt("GENERATED");
            if (!words_.takeBrackets()) words_.skip(two ? 2 : 1);
        } while (!words_.atEnd() &&
                 (!beginsPart() || (words_.isAt("NOT") && words_.isAt("DEFERRABLE", 1))));
    }

    DefinitionWords words_;
    sql::ColumnDefinition column_;
};

// --- Constraints

std::optional<tsql::ReferenceAction> takeAction(DefinitionWords& words) {
    const std::size_t first = words.place();
    if (words.take("CASCADE")) return tsql::ReferenceAction::Cascade;
    if (words.take("NO") && words.take("ACTION")) return tsql::ReferenceAction::None;
    if (words.take("SET")) {
        if (words.take("NULL")) return tsql::ReferenceAction::SetNull;
        if (words.take("DEFAULT")) return tsql::ReferenceAction::SetDefault;
    }
    words.goBack(first);
    return std::nullopt;
}

std::optional<sql::KeyConstraint> readKey(DefinitionWords& words) {
    sql::KeyConstraint key;
    key.primary = words.take("PRIMARY");
    words.skip();  // KEY or UNIQUE
    const auto brackets = words.takeBrackets();
    auto columns = brackets ? plainNames(*brackets) : std::nullopt;
    if (!columns) return std::nullopt;
    key.columns = std::move(*columns);
    key.notes = notesOf(brackets->whole());
    return key;
}

std::optional<sql::ForeignKey> readForeignKey(DefinitionWords& words) {
    sql::ForeignKey key;
    words.skip(2);
    const auto own = words.takeBrackets();
    auto columns = own ? plainNames(*own) : std::nullopt;
    if (!columns || !words.take("REFERENCES")) return std::nullopt;
    key.columns = std::move(*columns);
    auto parent = words.takeName();
    if (!parent) return std::nullopt;
    key.parent = std::move(*parent);
    if (const auto others = words.takeBrackets()) {
        auto parents = plainNames(*others);
        if (!parents) return std::nullopt;
        key.parentColumns = std::move(*parents);
    }
    while (words.isAt("ON")) {
        const std::size_t first = words.place();
        words.skip();
        const bool deletes = words.isAt("DELETE");
        words.skip();
        const auto action = takeAction(words);
        if (!action) {
            words.goBack(first);
            break;
        }
        (deletes ? key.onDelete : key.onUpdate) = *action;
    }
    return key;
}

bool beginsConstraint(const DefinitionWords& words) {
    return words.isAt("CONSTRAINT") || words.isAt("PRIMARY") || words.isAt("UNIQUE") ||
           words.isAt("CHECK") || words.isAt("FOREIGN");
}

sql::Constraint constraintIn(DefinitionWords words) {
    sql::Constraint constraint{{}, sql::OtherConstraint()};
    if (words.take("CONSTRAINT")) constraint.name = words.takeName().value_or("");
    const std::size_t first = words.place();
    if (words.isAt("PRIMARY") || words.isAt("UNIQUE")) {
        if (auto key = readKey(words)) constraint.kind = std::move(*key);
    } else if (words.isAt("FOREIGN")) {
        if (auto key = readForeignKey(words)) constraint.kind = std::move(*key);
    } else if (words.take("CHECK")) {
        if (const auto condition = words.takeBrackets()) {
            constraint.kind = sql::CheckConstraint{formulaOf(condition->whole())};
        }
    }
    if (std::holds_alternative<sql::OtherConstraint>(constraint.kind)) words.goBack(first);
    constraint.others = words.rest();
    return constraint;
}

// The tokens without the one that stands for the end.
std::span<const Token> wordsOf(const std::vector<Token>& tokens) {
    return tokens.empty() ? std::span<const Token>() : std::span(tokens).first(tokens.size() - 1);
}

// A name that may have that of its database before it.
std::optional<std::string> takePlacedName(DefinitionWords& words) {
    auto name = words.takeName();
    return name && words.takeSign(".") ? words.takeName() : name;
}

// "a", or an expression, or either with DESC behind it.
sql::OrderTerm readTerm(DefinitionWords words) {
    const std::size_t first = words.place();
    auto name = words.takeName();
    if (name && (words.atEnd() || words.isAt("DESC") || words.isAt("ASC"))) {
        return {sql::column(std::move(*name)), words.isAt("DESC")};
    }
    words.goBack(first);
    if (const auto inner = words.takeBrackets()) {
        if (words.atEnd() || words.isAt("DESC") || words.isAt("ASC")) {
            return {sql::Definition{std::string(inner->whole())}, words.isAt("DESC")};
        }
        words.goBack(first);
    }
    bool descending = false;
    while (!words.atEnd() && !descending) {
        descending = words.isAt("DESC");
        if (!descending) words.skip();
    }
    return {sql::Definition{std::string(words.since(first))}, descending};
}

}  // namespace

std::optional<sql::CreateTable> readTable(std::string_view createTable) {
    const std::vector<Token> tokens = tokensOf(createTable);
    DefinitionWords words(createTable, wordsOf(tokens));
    if (!words.take("CREATE") || !words.take("TABLE")) return std::nullopt;
    auto name = takePlacedName(words);
    auto elements = words.takeBrackets();
    if (!name || !elements) return std::nullopt;
    sql::CreateTable table{{sql::Database::None, std::move(*name)}, {}};
    while (!elements->atEnd()) {
        const DefinitionWords element = elements->takeElement();
        if (beginsConstraint(element)) {
            table.constraints.push_back(constraintIn(element));
        } else if (auto column = ColumnReader(element).read()) {
            table.columns.push_back(std::move(*column));
        } else {
            return std::nullopt;
        }
    }
    table.others = words.rest();
    return table;
}

std::optional<sql::Constraint> readConstraint(std::string_view constraint) {
    const std::vector<Token> tokens = tokensOf(constraint);
    const DefinitionWords words(constraint, wordsOf(tokens));
    if (!beginsConstraint(words)) return std::nullopt;
    return constraintIn(words);
}

std::optional<sql::CreateIndex> readIndex(std::string_view createIndex) {
    const std::vector<Token> tokens = tokensOf(createIndex);
    DefinitionWords words(createIndex, wordsOf(tokens));
    if (!words.take("CREATE")) return std::nullopt;
    sql::CreateIndex index{words.take("UNIQUE"), sql::Database::None, {}, {}, {}};
    if (!words.take("INDEX")) return std::nullopt;
    auto name = takePlacedName(words);
    if (!name || !words.take("ON")) return std::nullopt;
    auto table = words.takeName();
    auto terms = words.takeBrackets();
    if (!table || !terms) return std::nullopt;
    index.name = std::move(*name);
    index.table = std::move(*table);
    while (!terms->atEnd())
        index.terms.push_back(readTerm(terms->takeElement()));
    index.notes = notesOf(createIndex);
    if (words.take("WHERE")) index.where = formulaOf(words.rest());
    return index;
}

sql::ColumnDefinition* findColumn(sql::CreateTable& table, std::string_view name) {
    const auto found = std::ranges::find_if(
        table.columns, [&](const auto& column) { return sameName(column.name, name); });
    return found == table.columns.end() ? nullptr : &*found;
}

sql::Constraint* findConstraint(sql::CreateTable& table, std::string_view name) {
    const auto found = std::ranges::find_if(table.constraints, [&](const auto& constraint) {
        return !constraint.name.empty() && sameName(constraint.name, name);
    });
    return found == table.constraints.end() ? nullptr : &*found;
}

}  // namespace kap::engine
