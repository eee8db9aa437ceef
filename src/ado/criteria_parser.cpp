#include "ado/criteria_parser.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "base/ascii.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

using Node = CriteriaNode;

constexpr int kDeepest = 50;

bool isCriteriaBlank(char letter) {
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

// Ends a name or a number that stands without brackets or quotes.
bool endsWord(char letter) {
    return isCriteriaBlank(letter) ||
           std::string_view("=<>(),[]'#").find(letter) != std::string_view::npos;
}

class CriteriaReader {
public:
    explicit CriteriaReader(std::string_view text) : text_(text) { skipBlanks(); }

    [[nodiscard]] bool atEnd() const { return rest().empty(); }

    bool take(std::string_view sign) {
        if (!rest().starts_with(sign)) {
            return false;
        }
        position_ += sign.size();
        skipBlanks();
        return true;
    }

    bool takeWord(std::string_view keyword) {
        if (!equalsIgnoringCase(peekWord(), keyword)) {
            return false;
        }
        position_ += keyword.size();
        skipBlanks();
        return true;
    }

    std::string word(const char* wanted) {
        std::string found(peekWord());
        if (found.empty()) {
            fail(wanted);
        }
        position_ += found.size();
        skipBlanks();
        return found;
    }

    std::string name() { return rest().starts_with('[') ? enclosed('[', ']') : word("a name"); }

    // What stands between two signs; the closing one is doubled inside.
    std::string enclosed(char opening, char closing) {
        std::string found;
        for (std::size_t i = position_ + 1; i < text_.size(); ++i) {
            if (text_[i] != closing) {
                found += text_[i];
            } else if (i + 1 < text_.size() && text_[i + 1] == closing && opening != '#') {
                found += text_[i++];
            } else {
                position_ = i + 1;
                skipBlanks();
                return found;
            }
        }
        fail(std::string(1, closing));
    }

    [[nodiscard]] std::string_view rest() const { return text_.substr(position_); }

    [[noreturn]] void refuse(const std::string& why) const {
        fail::invalidArgument("The criteria '" + std::string(text_) + "': " + why);
    }

    [[noreturn]] void fail(const std::string& wanted) const {
        const std::string found = rest().empty() ? "the end" : "'" + std::string(rest()) + "'";
        fail::invalidArgument("The criteria '" + std::string(text_) + "' need " + wanted +
                              " where " + found + " stands.");
    }

private:
    [[nodiscard]] std::string_view peekWord() const {
        std::size_t length = 0;
        while (length < rest().size() && !endsWord(rest()[length])) {
            ++length;
        }
        return rest().substr(0, length);
    }

    void skipBlanks() {
        while (position_ < text_.size() && isCriteriaBlank(text_[position_])) {
            ++position_;
        }
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

Node::Operator readOperator(CriteriaReader& reader) {
    constexpr std::array<std::pair<const char*, Node::Operator>, 6> kSigns = {{
        {"<>", Node::Operator::NotEqual},
        {"<=", Node::Operator::LessOrEqual},
        {">=", Node::Operator::GreaterOrEqual},
        {"=", Node::Operator::Equal},
        {"<", Node::Operator::Less},
        {">", Node::Operator::Greater},
    }};
    for (const auto& [sign, meaning] : kSigns) {
        if (reader.take(sign)) {
            return meaning;
        }
    }
    if (reader.takeWord("LIKE")) {
        return Node::Operator::Like;
    }
    reader.fail("a comparison");
}

// Any characters may follow what is given, or stand on both sides of it.
bool isPattern(std::string_view text) {
    constexpr std::string_view kWild = "*%";
    const std::size_t first = text.find_first_not_of(kWild);
    if (first == std::string_view::npos) {
        return true;
    }
    const std::size_t last = text.find_last_not_of(kWild);
    const bool inside = text.substr(first, last - first).find_first_of(kWild) != text.npos;
    return !inside && (first == 0 || last + 1 < text.size());
}

Node readComparison(CriteriaReader& reader) {
    Node node;
    node.column = reader.name();
    node.comparison = readOperator(reader);
    if (reader.rest().starts_with('\'')) {
        node.literal = Node::Literal::Text;
        node.value = reader.enclosed('\'', '\'');
    } else if (reader.rest().starts_with('#')) {
        node.literal = Node::Literal::Date;
        node.value = reader.enclosed('#', '#');
    } else {
        node.value = reader.word("a value");
    }
    if (node.comparison == Node::Operator::Like && !isPattern(node.value)) {
        reader.refuse("LIKE takes * and % at the end of '" + node.value + "', or at both ends.");
    }
    return node;
}

Node readAlternatives(CriteriaReader& reader, int depth);

Node readPrimary(CriteriaReader& reader, int depth) {
    if (!reader.take("(")) {
        return readComparison(reader);
    }
    if (depth == kDeepest) {
        reader.fail("fewer parentheses");
    }
    Node inside = readAlternatives(reader, depth + 1);
    if (!reader.take(")")) {
        reader.fail("')'");
    }
    return inside;
}

// One part, or several with the keyword between.
template <class ReadPart>
Node readJoined(CriteriaReader& reader, const char* keyword, Node::Kind kind, ReadPart readPart) {
    Node first = readPart();
    if (!reader.takeWord(keyword)) {
        return first;
    }
    Node joined;
    joined.kind = kind;
    joined.parts.push_back(std::move(first));
    do {
        joined.parts.push_back(readPart());
    } while (reader.takeWord(keyword));
    return joined;
}

// A client that cannot count on it everywhere is told at once.
void refuseJoinedAlternatives(const CriteriaReader& reader, const Node& joined) {
    const auto isOr = [](const Node& part) { return part.kind == Node::Kind::Or; };
    if (joined.kind == Node::Kind::And && std::ranges::any_of(joined.parts, isOr)) {
        reader.refuse(
            "a group of alternatives (OR) cannot be joined to others by AND; write "
            "(A AND C) OR (B AND C).");
    }
}

Node readAlternatives(CriteriaReader& reader, int depth) {
    return readJoined(reader, "OR", Node::Kind::Or, [&] {
        Node all =
            readJoined(reader, "AND", Node::Kind::And, [&] { return readPrimary(reader, depth); });
        refuseJoinedAlternatives(reader, all);
        return all;
    });
}

}  // namespace

CriteriaNode parseCriteria(std::string_view text) {
    CriteriaReader reader(text);
    CriteriaNode node = readAlternatives(reader, 0);
    if (!reader.atEnd()) {
        reader.fail("AND, OR or the end");
    }
    return node;
}

std::vector<SortName> parseSort(std::string_view text) {
    CriteriaReader reader(text);
    std::vector<SortName> names;
    while (true) {
        SortName name{reader.name()};
        name.descending = reader.takeWord("DESC");
        if (!name.descending) {
            reader.takeWord("ASC");
        }
        names.push_back(std::move(name));
        if (reader.atEnd()) {
            return names;
        }
        if (!reader.take(",")) {
            reader.fail("ASC, DESC or a comma");
        }
    }
}

}  // namespace kap::ado
