#include <algorithm>
#include <variant>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"

// Constants that are bound instead of written: a program sends the same statement with other values
// again and again, and SQLite then prepares it once.
namespace kap::engine {

namespace {

// A statement with more of them than a row has columns is a list of rows, which does not come back.
constexpr std::size_t kMostConstants = 64;
// A statement that is kept holds what was last bound to it.
constexpr std::size_t kLongestConstant = 1000;

bool isShort(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return text->size() <= kLongestConstant;
    }
    const auto* blob = std::get_if<Blob>(&value);
    return blob == nullptr || blob->bytes.size() <= kLongestConstant;
}

}  // namespace

bool Binder::bindsToo(const BoundExpression& value) const {
    return constantsStand_ == Constants::Bound && value.constant && !isNull(*value.constant) &&
           isShort(*value.constant);
}

std::string Binder::parameter(std::size_t constant) const {
    return "?" + plain::text(static_cast<std::int64_t>(names_.variables().size() + constant) + 1);
}

// What a condition compares with. The same constant has the same text: an expression of the select
// list may have to be found again in GROUP BY.
std::string Binder::operand(const BoundExpression& value) const {
    if (!bindsToo(value)) return value.sql;
    const auto found = std::find(constants_.begin(), constants_.end(), *value.constant);
    const auto place = static_cast<std::size_t>(found - constants_.begin());
    if (found == constants_.end()) {
        if (constants_.size() == kMostConstants) return value.sql;
        constants_.push_back(*value.constant);
    }
    return parameter(place);
}

// What goes into a column: each has a place of its own, so that rows in which two values happen to
// be equal have the text of the others.
std::string Binder::storedConstant(const BoundExpression& value) const {
    if (!bindsToo(value) || constants_.size() == kMostConstants) return value.sql;
    constants_.push_back(*value.constant);
    return parameter(constants_.size() - 1);
}

BoundValues Binder::boundValues() const {
    return {usedVariables_, constants_, static_cast<int>(names_.variables().size()), readsSchema_};
}

}  // namespace kap::engine
