#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// An automation array: one or more dimensions, each with its own lower bound, of elements of one
// type. Byte arrays are kept as plain bytes. Arrays in arrays may be nested 500 deep: putting a
// deeper one into another raises 28 (out of stack).
class KAPUTIL_EXPORT Array {
public:
    struct Dimension {
        std::int32_t lower = 0;
        std::size_t count = 0;
        friend bool operator==(Dimension, Dimension) = default;
    };

    // One dimension with bounds `lower` to `upper`, every element Empty (Byte: 0). Raises 9
    // (subscript out of range) when `upper` is below `lower`.
    static Array withBounds(std::int32_t lower, std::int32_t upper,
                            VarType elementType = VarType::Variant);
    // One dimension from 0 with these elements.
    static Array ofVariants(std::vector<Variant> elements);
    static Array ofBytes(std::vector<std::uint8_t> bytes);
    // Several dimensions; the leftmost index varies fastest.
    Array(std::vector<Dimension> dimensions, VarType elementType);

    [[nodiscard]] VarType elementType() const noexcept { return elementType_; }
    [[nodiscard]] const std::vector<Dimension>& dimensions() const noexcept { return dimensions_; }
    [[nodiscard]] std::size_t size() const noexcept;
    // Bounds of a dimension, counted from 1; raise 9 for a dimension that does not exist.
    [[nodiscard]] std::int32_t lowerBound(std::size_t dimension = 1) const;
    [[nodiscard]] std::int32_t upperBound(std::size_t dimension = 1) const;

    // The element at these indexes, one for each dimension; 9 when one is outside its bounds.
    [[nodiscard]] Variant at(std::span<const std::int32_t> indexes) const;
    [[nodiscard]] Variant at(std::int32_t index) const { return at(std::span(&index, 1)); }
    void put(std::span<const std::int32_t> indexes, Variant value);
    void put(std::int32_t index, Variant value) { put(std::span(&index, 1), std::move(value)); }

    // The bytes of a byte array; raises 13 for any other.
    [[nodiscard]] const std::vector<std::uint8_t>& bytes() const;

private:
    [[nodiscard]] std::size_t offset(std::span<const std::int32_t> indexes) const;
    void noteDepthOf(const Variant& element);

    std::vector<Dimension> dimensions_;
    VarType elementType_;
    int depth_ = 1;  // of the arrays within, and this one; never less than there is
    std::vector<Variant> elements_;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace kap
