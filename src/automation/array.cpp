#include <kaputil/automation/array.hpp>

#include <algorithm>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/nesting.hpp>

namespace kap {
namespace {

std::size_t elementCount(const std::vector<Array::Dimension>& dimensions) {
    std::size_t count = dimensions.empty() ? 0 : 1;
    for (const Array::Dimension& dimension : dimensions) {
        count *= dimension.count;
    }
    return count;
}

}  // namespace

Array::Array(std::vector<Dimension> dimensions, VarType elementType)
    : dimensions_(std::move(dimensions)), elementType_(elementType) {
    if (elementType_ == VarType::Byte) {
        bytes_.resize(elementCount(dimensions_));
    } else {
        elements_.resize(elementCount(dimensions_));
    }
}

Array Array::withBounds(std::int32_t lower, std::int32_t upper, VarType elementType) {
    if (upper < lower) {
        throw AutomationError(errors::kSubscriptOutOfRange);
    }
    const auto count = static_cast<std::size_t>(std::int64_t{upper} - lower + 1);
    return Array({{lower, count}}, elementType);
}

Array Array::ofVariants(std::vector<Variant> elements) {
    Array array({{0, 0}}, VarType::Variant);
    array.dimensions_[0].count = elements.size();
    for (const Variant& element : elements) {
        array.noteDepthOf(element);
    }
    array.elements_ = std::move(elements);
    return array;
}

Array Array::ofBytes(std::vector<std::uint8_t> bytes) {
    Array array({{0, 0}}, VarType::Byte);
    array.dimensions_[0].count = bytes.size();
    array.bytes_ = std::move(bytes);
    return array;
}

std::size_t Array::size() const noexcept {
    return elementType_ == VarType::Byte ? bytes_.size() : elements_.size();
}

std::int32_t Array::lowerBound(std::size_t dimension) const {
    if (dimension < 1 || dimension > dimensions_.size()) {
        throw AutomationError(errors::kSubscriptOutOfRange);
    }
    return dimensions_[dimension - 1].lower;
}

std::int32_t Array::upperBound(std::size_t dimension) const {
    const std::int64_t lower = lowerBound(dimension);
    return static_cast<std::int32_t>(
        lower + static_cast<std::int64_t>(dimensions_[dimension - 1].count) - 1);
}

std::size_t Array::offset(std::span<const std::int32_t> indexes) const {
    if (indexes.size() != dimensions_.size()) {
        throw AutomationError(errors::kSubscriptOutOfRange);
    }
    std::size_t offset = 0;
    std::size_t stride = 1;
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        const std::int64_t position = std::int64_t{indexes[i]} - dimensions_[i].lower;
        if (position < 0 || static_cast<std::uint64_t>(position) >= dimensions_[i].count) {
            throw AutomationError(errors::kSubscriptOutOfRange);
        }
        offset += static_cast<std::size_t>(position) * stride;
        stride *= dimensions_[i].count;
    }
    return offset;
}

Variant Array::at(std::span<const std::int32_t> indexes) const {
    const std::size_t position = offset(indexes);
    return elementType_ == VarType::Byte ? Variant(bytes_[position]) : elements_[position];
}

void Array::put(std::span<const std::int32_t> indexes, Variant value) {
    const std::size_t position = offset(indexes);
    if (elementType_ == VarType::Byte) {
        bytes_[position] = convert::toByte(value);
    } else {
        noteDepthOf(value);
        elements_[position] = elementType_ == VarType::Variant
                                  ? std::move(value)
                                  : convert::changeType(value, elementType_);
    }
}

void Array::noteDepthOf(const Variant& element) {
    if (!element.isArray()) {
        return;
    }
    const int depth = element.as<Array>().depth_ + 1;
    if (depth > kDeepestNesting) {
        throw AutomationError(errors::kOutOfStack);
    }
    depth_ = std::max(depth_, depth);
}

const std::vector<std::uint8_t>& Array::bytes() const {
    if (elementType_ != VarType::Byte) {
        throw AutomationError(errors::kTypeMismatch);
    }
    return bytes_;
}

}  // namespace kap
