#include "engine/sqlite/flat_text.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/sqlite/function_names.hpp"

namespace kap::engine {
namespace {

// How many symbols a part leaves waiting in the parser, at most.
constexpr int kSymbolsOfQuery = 10;
constexpr int kSymbolsOfCase = 8;
constexpr int kSymbolsOfCall = 5;
constexpr int kSymbolsOfBrackets = 4;
// What a part may hold before it gets a name.
constexpr int kMostSymbols = 34;

constexpr std::string_view kPartName = "\"kap part ";

// What is called once for each row or group that its place belongs to: a query of its own would
// call it in another place.
constexpr std::array kBoundToTheirPlace{
    fn::kCount,
    fn::kMin,
    fn::kMax,
    fn::kSum,
    fn::kSumInt,
    fn::kSumBigint,
    fn::kSumNumeric,
    fn::kSumMoney,
    fn::kSumFloat,
    fn::kChecksumAgg,
    fn::kStdev,
    fn::kStdevp,
    fn::kVar,
    fn::kVarp,
    fn::kStringAgg,
    fn::kPercentileCont,
    fn::kPercentileDisc,
    fn::kSingle,
    fn::kVariable,
    fn::kAssign,
    fn::kFirst,
    fn::kCurrentRow,
    fn::kCapturing,
    fn::kNextValue,
    fn::kOffered,
    fn::kSameValue,
    fn::kRankedValue,
    fn::kIdentity,
    fn::kIdentityGiven,
    fn::kRowversion,
    fn::kRandom,
    fn::kNewid,
    fn::kNewsequentialid,
    fn::kRandomBytes,
    fn::kRowsOfQuery,
    fn::kRowsOfFunction,
};

bool isWordOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::ranges::any_of(
        words, [&](std::string_view each) { return equalsIgnoringCase(word, each); });
}

enum class PartKind { Other, Query, Call, Brackets };

// What stands between two brackets, and a call's name before them.
struct Part {
    PartKind kind = PartKind::Other;
    std::string text;      // from the name or the bracket on
    bool begun = false;    // a word or symbol stood behind the bracket
    bool isBound = false;  // holds what must stay in its place
    bool isCase = false;
    bool isList = false;
    bool isRows = false;        // VALUES: its brackets are rows
    bool isDefinition = false;  // what WITH gives a name
    bool namesTables = false;   // WITH: what is in it may read tables that only it knows
    int symbols = 0;            // of the deepest part in it
};

class Flattener {
public:
    explicit Flattener(std::string_view sql) : sql_(sql) { parts_.emplace_back(); }

    std::string run() {
        while (place_ < sql_.size())
            step();
        if (parts_.size() != 1 || named_.empty() || !writesOrReads_) return {};
        std::string& whole = parts_.front().text;
        const std::string_view behind = std::string_view(whole).substr(begin_);
        if (beginsWithTables_) return whole.substr(0, begin_) + named_ + "," + std::string(behind);
        return whole.substr(0, begin_) + "WITH " + named_ + " " + std::string(behind);
    }

private:
    void step() {
        const char letter = sql_[place_];
        if (letter == '\'' || letter == '"') {
            take(quotedEnd());
            previous_ = letter == '"' ? "\"" : "'";
        } else if (isWordLetter(letter)) {
            word();
        } else if (letter == '(') {
            open();
        } else if (letter == ')' && parts_.size() > 1) {
            close();
        } else {
            if (letter == ',') parts_.back().isList = true;
            if (letter != ' ') previous_ = sql_.substr(place_, 1);
            take(place_ + 1);
        }
    }

    [[nodiscard]] static bool isWordLetter(char letter) {
        return isAsciiLetter(letter) || isAsciiDigit(letter) || letter == '_';
    }

    // Where what begins with this quote ends; a doubled quote goes on.
    [[nodiscard]] std::size_t quotedEnd() const {
        const std::size_t end = sql_.find(sql_[place_], place_ + 1);
        return end == std::string_view::npos ? sql_.size() : end + 1;
    }

    void take(std::size_t end) {
        parts_.back().text += sql_.substr(place_, end - place_);
        parts_.back().begun = parts_.back().begun || sql_[place_] != ' ';
        place_ = end;
    }

    void word() {
        std::size_t end = place_;
        while (end < sql_.size() && isWordLetter(sql_[end]))
            ++end;
        const std::string_view word = sql_.substr(place_, end - place_);
        Part& part = parts_.back();
        const bool first = !part.begun;
        if (first && parts_.size() == 1) beginStatement(word);
        if (first && parts_.size() > 1 && isWordOf(word, {"SELECT", "VALUES", "WITH"})) {
            part.kind = isWordOf(word, {"VALUES"}) ? PartKind::Other : PartKind::Query;
            part.namesTables = isWordOf(word, {"WITH"});
        }
        if (isWordOf(word, {"CASE"})) part.isCase = true;
        if (isWordOf(word, {"VALUES"})) part.isRows = true;
        wordAt_ = part.text.size();
        previous_ = word;
        take(end);
        if (parts_.size() == 1 && !begun_) placeOfTables();
    }

    void beginStatement(std::string_view word) {
        writesOrReads_ =
            isWordOf(word, {"SELECT", "WITH", "INSERT", "REPLACE", "UPDATE", "DELETE"});
        beginsWithTables_ = isWordOf(word, {"WITH"});
    }

    // The names go to the front of the statement, or behind its own WITH.
    void placeOfTables() {
        Part& whole = parts_.front();
        begun_ = true;
        if (!beginsWithTables_) return;
        constexpr std::string_view kRecursive = " RECURSIVE";
        if (sql_.substr(place_).starts_with(kRecursive)) take(place_ + kRecursive.size());
        whole.text += ' ';
        begin_ = whole.text.size();
    }

    void open() {
        Part part;
        Part& outer = parts_.back();
        const bool behindWord = place_ > 0 && isWordLetter(sql_[place_ - 1]);
        if (behindWord) {
            part.kind = PartKind::Call;
            part.text = outer.text.substr(wordAt_);
            outer.text.resize(wordAt_);
            const auto isCalled = [&](const fn::Function& each) { return each.name == part.text; };
            part.isBound = std::ranges::any_of(kBoundToTheirPlace, isCalled);
        } else if (!outer.isRows &&
                   !isWordOf(previous_, {"FROM", "JOIN", "IN", "INTO", "VALUES", "AS", "OVER",
                                         "FILTER", "USING", "MATERIALIZED", "\"", "SET"})) {
            part.kind = PartKind::Brackets;
        }
        part.isBound = part.isBound || isWordOf(previous_, {"OVER", "FILTER"});
        part.text += '(';
        part.isDefinition = isWordOf(previous_, {"AS", "MATERIALIZED"});
        parts_.push_back(std::move(part));
        previous_ = "(";
        ++place_;
    }

    void close() {
        Part part = std::move(parts_.back());
        parts_.pop_back();
        part.text += ')';
        ++place_;
        const std::string_view behind = sql_.substr(place_);
        const bool isWindow = behind.starts_with(" OVER") || behind.starts_with(" FILTER");
        part.isBound = part.isBound || isWindow;
        const int symbols = part.symbols + ownSymbols(part);
        const bool stays = part.isDefinition || part.kind == PartKind::Other ||
                           (part.kind == PartKind::Brackets && part.isList) ||
                           (part.kind != PartKind::Query && part.isBound) || isWithinTables();
        Part& outer = parts_.back();
        if (!stays && symbols >= kMostSymbols) {
            outer.text += named(part);
            outer.symbols = std::max(outer.symbols, kSymbolsOfQuery);
        } else {
            outer.text += part.text;
            outer.symbols = std::max(outer.symbols, symbols);
        }
        outer.begun = true;
        outer.isBound = outer.isBound || (part.isBound && part.kind != PartKind::Query);
        previous_ = ")";
    }

    [[nodiscard]] bool isWithinTables() const {
        return std::any_of(parts_.begin() + 1, parts_.end(),
                           [](const Part& part) { return part.namesTables; });
    }

    [[nodiscard]] static int ownSymbols(const Part& part) {
        if (part.kind == PartKind::Query || part.kind == PartKind::Other) return kSymbolsOfQuery;
        const int brackets = part.kind == PartKind::Call ? kSymbolsOfCall : kSymbolsOfBrackets;
        return part.isCase ? kSymbolsOfCase : brackets;
    }

    // Gives the part a name, and answers what stands for it.
    std::string named(const Part& part) {
        const std::string name = std::string(kPartName) + plain::text(++count_) + '"';
        if (!named_.empty()) named_ += ", ";
        named_ += name;
        named_ += part.kind == PartKind::Query ? " AS " + part.text : " AS (SELECT " + part.text;
        if (part.kind != PartKind::Query) named_ += ')';
        return "(SELECT * FROM " + name + ")";
    }

    std::string_view sql_;
    std::size_t place_ = 0;
    std::vector<Part> parts_;    // the statement, and the brackets that are open in it
    std::string_view previous_;  // word or symbol; a quote for what stands between two
    std::size_t wordAt_ = 0;     // the last word's place in its part
    std::size_t begin_ = 0;      // where the names are put
    std::int64_t count_ = 0;
    std::string named_;
    bool begun_ = false;
    bool writesOrReads_ = false;
    bool beginsWithTables_ = false;
};

}  // namespace

std::string flattened(std::string_view sql) {
    return Flattener(sql).run();
}

}  // namespace kap::engine
