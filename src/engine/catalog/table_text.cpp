#include "engine/catalog/table_text.hpp"

#include <algorithm>
#include <utility>

#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/tables.hpp"

namespace kap::engine {
namespace {

using tsql::Token;

// Where a default stands among a column's tokens: from CONSTRAINT or DEFAULT to its last bracket.
std::pair<std::size_t, std::size_t> defaultPlace(const std::vector<Token>& tokens) {
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        if (!isWord(tokens[i], "DEFAULT")) continue;
        const std::size_t first = i >= 2 && isWord(tokens[i - 2], "CONSTRAINT") ? i - 2 : i;
        int open = 0;
        for (std::size_t end = i + 1; end < tokens.size(); ++end) {
            if (isSign(tokens[end], "(")) ++open;
            if (isSign(tokens[end], ")")) --open;
            if (open == 0) return {first, end};
        }
    }
    return {0, 0};
}

}  // namespace

TableText::TableText(std::string_view sql) {
    const std::vector<Token> tokens = tokensOf(sql);
    int open = 0;
    std::size_t first = 0;
    for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
        const bool opens = isSign(tokens[i], "(");
        const bool closes = isSign(tokens[i], ")");
        if (opens && ++open == 1) {
            head_ = sql.substr(0, tokens[i].end);
            first = i + 1;
            continue;
        }
        const bool ends = open == 1 && (closes || isSign(tokens[i], ","));
        if (ends && i > first) {
            Element element;
            element.constraint = isWord(tokens[first], "CONSTRAINT");
            element.name = tokens[first + (element.constraint ? 1 : 0)].text;
            element.text = sql.substr(tokens[first].start, tokens[i - 1].end - tokens[first].start);
            elements_.push_back(std::move(element));
            first = i + 1;
        }
        if (closes && --open == 0) {
            tail_ = sql.substr(tokens[i].start);
            return;
        }
    }
}

TableText::Element* TableText::column(std::string_view name) {
    const auto found = std::ranges::find_if(elements_, [&](const Element& element) {
        return !element.constraint && sameName(element.name, name);
    });
    return found == elements_.end() ? nullptr : &*found;
}

TableText::Element* TableText::constraint(std::string_view name) {
    const auto found = std::ranges::find_if(elements_, [&](const Element& element) {
        return element.constraint && sameName(element.name, name);
    });
    return found == elements_.end() ? nullptr : &*found;
}

void TableText::remove(const Element* element) {
    elements_.erase(elements_.begin() + (element - elements_.data()));
}

std::string TableText::sql() const {
    std::string result = head_;
    for (const Element& element : elements_) {
        result += (&element == &elements_.front() ? "" : ", ") + element.text;
    }
    return result + tail_;
}

bool TableText::Element::isForeignKey() const {
    return constraint && text.find("FOREIGN KEY") != std::string::npos;
}

bool TableText::Element::isCheck() const {
    return constraint && text.find(" CHECK (") != std::string::npos;
}

bool TableText::Element::isKey() const {
    return constraint && !isForeignKey() && !isCheck();
}

TableText::Element constraintElement(const std::string& text) {
    const TableText whole("CREATE TABLE t (" + text + ")");
    return whole.elements().front();
}

std::string withoutDefault(const std::string& column) {
    const std::vector<Token> tokens = tokensOf(column);
    const auto [first, last] = defaultPlace(tokens);
    if (first == 0) return column;
    std::string result = column.substr(0, tokens[first].start);
    while (!result.empty() && result.back() == ' ')
        result.pop_back();
    return result + column.substr(tokens[last].end);
}

std::string defaultNameOf(const std::string& column) {
    const std::vector<Token> tokens = tokensOf(column);
    const auto [first, last] = defaultPlace(tokens);
    return first != 0 && isWord(tokens[first], "CONSTRAINT") ? tokens[first + 1].text : "";
}

std::optional<std::string> computedTextOf(const std::string& column) {
    const std::vector<Token> tokens = tokensOf(column);
    for (std::size_t i = 1; i + 1 < tokens.size(); ++i) {
        if (!isWord(tokens[i], "AS") || !isSign(tokens[i + 1], "(")) continue;
        int open = 0;
        for (std::size_t end = i + 1; end < tokens.size(); ++end) {
            if (isSign(tokens[end], "(")) ++open;
            if (isSign(tokens[end], ")")) --open;
            if (open > 0) continue;
            const std::size_t first = tokens[i + 1].end;
            return column.substr(first, tokens[end].start - first);
        }
    }
    return std::nullopt;
}

}  // namespace kap::engine
