#include <algorithm>
#include <variant>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/values/exact.hpp"
#include "tsql/server_error.hpp"

// Constants that are bound instead of written: a program sends the same statement with other values
// again and again, and SQLite then prepares it once.
namespace kap::engine {

namespace {

// A statement that is kept holds what was last bound to it.
constexpr std::size_t kLongestConstant = 1000;

bool isShort(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return text->size() <= kLongestConstant;
    }
    const auto* blob = std::get_if<Blob>(&value);
    return blob == nullptr || blob->bytes.size() <= kLongestConstant;
}

// An exact number with as many digits behind the point as the value that it meets.
std::optional<Value> atScaleOf(const BoundExpression& value, int scale) {
    const auto* number = std::get_if<std::int64_t>(value.constant());
    const int own = storedScale(value.type);
    if (number == nullptr || !tsql::isExact(value.type.type) || own > scale) return std::nullopt;
    const auto scaled = rescale(*number, own, scale, Rounding::HalfAway);
    const auto result = scaled ? narrow(*scaled) : std::nullopt;
    return result ? std::optional<Value>(*result) : std::nullopt;
}

std::optional<Value> converted(const BoundExpression& value, const tsql::TypeSpec& type,
                               Overlength overlength) {
    if (value.type == type) return *value.constant();
    if (conversionRule(value.type.type, type.type) != ConversionRule::Implicit) return std::nullopt;
    return convert(*value.constant(), value.type, type, overlength, 0);
}

}  // namespace

WrittenLiteral writtenLiteral(const tsql::Expression& expression) {
    if (const auto* literal = std::get_if<tsql::Literal>(&expression.node)) return {literal, false};
    const auto* unary = std::get_if<tsql::UnaryExpression>(&expression.node);
    if (unary == nullptr || unary->op != tsql::UnaryOperator::Minus) return {};
    return {std::get_if<tsql::Literal>(&unary->operand->node), true};
}

std::optional<Value> constantFrom(const ConstantSource& source, const tsql::Literal& literal) {
    using Use = ConstantSource::Use;
    try {
        BoundExpression value = Binder::literal(literal, 0);
        if (source.negative) value = Binder::negated(value, 0);
        if (value.constant() == nullptr) return std::nullopt;
        if (source.use == Use::Stored) return converted(value, *source.type, Overlength::Refuse);
        if (source.scale) return atScaleOf(value, *source.scale);
        if (value.type.type != source.literalType) return std::nullopt;
        if (source.type) return converted(value, *source.type, Overlength::Cut);
        return *value.constant();
    } catch (const tsql::ServerError&) {
        return std::nullopt;
    }
}

bool Binder::bindsToo(const BoundExpression& value) const {
    const Value* constant = constantsStand_ == Constants::Bound ? value.constant() : nullptr;
    return constant != nullptr && !isNull(*constant) && isShort(*constant);
}

sql::Expression Binder::parameter(std::size_t constant) {
    return sql::Parameter{static_cast<int>(constant) + 1};
}

void Binder::met(const tsql::Literal& literal) {
    if (constantsStand_ == Constants::Bound && literal.token != tsql::kNoToken) {
        ++literals_[literal.token].met;
    }
}

sql::Expression Binder::addConstant(const Value& value, const ConstantSource& source) const {
    constants_.push_back(value);
    sources_.push_back(source);
    if (source.use != ConstantSource::Use::Unknown) ++literals_[source.token].bound;
    return parameter(constants_.size() - 1);
}

// What a condition compares with. The same constant has the same place: an expression of the select
// list may have to be found again in GROUP BY. Two literals that share a place are not free to
// differ.
sql::Expression Binder::operand(const BoundExpression& value, const ConstantSource& source) const {
    if (!bindsToo(value)) return value.tree;
    const auto found = std::find(constants_.begin(), constants_.end(), *value.constant());
    const auto place = static_cast<std::size_t>(found - constants_.begin());
    if (found == constants_.end()) {
        return isFull() ? value.tree : addConstant(*value.constant(), source);
    }
    const bool same =
        source.use != ConstantSource::Use::Unknown && sources_[place].token == source.token;
    if (same) {
        ++literals_[source.token].bound;
    } else {
        sources_[place].use = ConstantSource::Use::Unknown;
    }
    return parameter(place);
}

// What goes into a column: each has a place of its own, so that rows in which two values happen to
// be equal have the text of the others.
sql::Expression Binder::storedConstant(const BoundExpression& value,
                                       const ConstantSource& source) const {
    if (!bindsToo(value) || isFull()) return value.tree;
    return addConstant(*value.constant(), source);
}

ConstantSource Binder::checkedSource(ConstantSource source, const WrittenLiteral& written,
                                     const BoundExpression& constant) const {
    if (constantsStand_ != Constants::Bound || written.literal == nullptr ||
        written.literal->token == tsql::kNoToken || constant.constant() == nullptr) {
        return {};
    }
    source.negative = written.negative;
    source.token = written.literal->token;
    return constantFrom(source, *written.literal) == *constant.constant() ? source
                                                                          : ConstantSource();
}

// What a literal is compared with must stay as it is, whatever the literal is.
ConstantSource Binder::comparedSource(const WrittenLiteral& written, const BoundExpression& literal,
                                      const BoundExpression& operand, const BoundExpression& before,
                                      const BoundExpression& after) const {
    if (written.literal == nullptr || after.constant() != nullptr || after.tree != before.tree) {
        return {};
    }
    ConstantSource source;
    source.use = ConstantSource::Use::Compared;
    source.literalType = literal.type.type;
    if (tsql::isExact(literal.type.type) && tsql::isExact(before.type.type)) {
        source.scale = storedScale(before.type);
    } else if (operand.type != literal.type) {
        if (operand.type != before.type) return {};
        source.type = operand.type;
    }
    return checkedSource(source, written, operand);
}

// A source is one only while every use of its literal has gone into a constant that is known.
BoundValues Binder::boundValues() const {
    std::vector<ConstantSource> sources = sources_;
    for (ConstantSource& source : sources) {
        if (source.use == ConstantSource::Use::Unknown) continue;
        const LiteralUse& use = literals_.at(source.token);
        if (use.met != use.bound) source.use = ConstantSource::Use::Unknown;
    }
    // Where one place of a literal is not known, none is.
    const auto unknown = [&](std::size_t token) {
        return std::ranges::any_of(sources, [&](const ConstantSource& other) {
            return other.token == token && other.use == ConstantSource::Use::Unknown;
        });
    };
    for (ConstantSource& source : sources) {
        if (source.token != tsql::kNoToken && unknown(source.token)) {
            source.use = ConstantSource::Use::Unknown;
        }
    }
    return {usedVariables_, constants_,   std::move(sources),
            readsSchema_,   readsMoment_, drawsNumbers_};
}

}  // namespace kap::engine
