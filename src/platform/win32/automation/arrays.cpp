#include "platform/win32/automation/arrays.hpp"

#include <memory>
#include <new>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/nesting.hpp>

#include "platform/win32/automation/values.hpp"

namespace kap::platform::automation {
namespace {

VarType elementTypeFor(VARTYPE type) {
    switch (type) {
        case VT_UI1:
            return VarType::Byte;
        case VT_I2:
            return VarType::Integer;
        case VT_I4:
        case VT_INT:
            return VarType::Long;
        case VT_R4:
            return VarType::Single;
        case VT_R8:
            return VarType::Double;
        case VT_CY:
            return VarType::Currency;
        case VT_DATE:
            return VarType::Date;
        case VT_BSTR:
            return VarType::String;
        case VT_BOOL:
            return VarType::Boolean;
        case VT_DECIMAL:
            return VarType::Decimal;
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return VarType::Object;
        default:
            return VarType::Variant;
    }
}

// The elements of an array of the system's, locked for as long as it lives.
class ElementAccess {
public:
    explicit ElementAccess(SAFEARRAY* array) : array_(array) {
        if (FAILED(SafeArrayAccessData(array, &first_))) {
            throw AutomationError(errors::kTypeMismatch);
        }
    }
    ElementAccess(const ElementAccess&) = delete;
    ElementAccess& operator=(const ElementAccess&) = delete;
    ~ElementAccess() { SafeArrayUnaccessData(array_); }

    [[nodiscard]] void* at(std::size_t index) const {
        return static_cast<unsigned char*>(first_) + index * SafeArrayGetElemsize(array_);
    }

private:
    SAFEARRAY* array_;
    void* first_ = nullptr;
};

// Goes through the indexes of an array in the order in which both sides keep the elements: the
// leftmost one fastest.
class IndexWalk {
public:
    explicit IndexWalk(const std::vector<Array::Dimension>& dimensions) : dimensions_(dimensions) {
        for (const Array::Dimension& dimension : dimensions) {
            indexes_.push_back(dimension.lower);
        }
    }

    [[nodiscard]] std::span<const std::int32_t> indexes() const { return indexes_; }

    void next() {
        for (std::size_t i = 0; i < indexes_.size(); ++i) {
            const auto past =
                dimensions_[i].lower + static_cast<std::int32_t>(dimensions_[i].count);
            if (++indexes_[i] < past) {
                return;
            }
            indexes_[i] = dimensions_[i].lower;
        }
    }

private:
    const std::vector<Array::Dimension>& dimensions_;
    std::vector<std::int32_t> indexes_;
};

std::vector<Array::Dimension> dimensionsOf(SAFEARRAY* array) {
    std::vector<Array::Dimension> dimensions;
    for (UINT i = 1; i <= SafeArrayGetDim(array); ++i) {
        LONG lower = 0;
        LONG upper = -1;
        SafeArrayGetLBound(array, i, &lower);
        SafeArrayGetUBound(array, i, &upper);
        dimensions.push_back(
            {static_cast<std::int32_t>(lower),
             static_cast<std::size_t>(static_cast<std::int64_t>(upper) - lower + 1)});
    }
    return dimensions;
}

struct ArrayDestroyer {
    void operator()(SAFEARRAY* array) const noexcept { SafeArrayDestroy(array); }
};
using OwnedArray = std::unique_ptr<SAFEARRAY, ArrayDestroyer>;

}  // namespace

VARTYPE systemTypeOf(VarType type) {
    return static_cast<VARTYPE>(type);
}

Array arrayFrom(SAFEARRAY* array) {
    const NestingGuard guard;  // clients nest arrays as deep as they like
    if (array == nullptr) {
        return Array::ofVariants({});
    }
    VARTYPE element = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(array, &element))) {
        throw AutomationError(errors::kTypeMismatch);
    }
    const ElementAccess elements(array);
    const std::vector<Array::Dimension> dimensions = dimensionsOf(array);
    if (element == VT_UI1 && dimensions.size() == 1 && dimensions.front().lower == 0) {
        const auto* first = static_cast<const std::uint8_t*>(elements.at(0));
        return Array::ofBytes({first, first + dimensions.front().count});
    }
    Array made(dimensions, elementTypeFor(element));
    IndexWalk walk(dimensions);
    for (std::size_t i = 0; i < made.size(); ++i, walk.next()) {
        made.put(walk.indexes(), valueAt(element, elements.at(i)));
    }
    return made;
}

SAFEARRAY* systemArray(const Array& array, VARTYPE element) {
    std::vector<SAFEARRAYBOUND> bounds;
    for (const Array::Dimension& dimension : array.dimensions()) {
        bounds.push_back({static_cast<ULONG>(dimension.count), dimension.lower});
    }
    OwnedArray made(SafeArrayCreate(element, static_cast<UINT>(bounds.size()), bounds.data()));
    if (!made) {
        throw std::bad_alloc();
    }
    const ElementAccess elements(made.get());
    IndexWalk walk(array.dimensions());
    for (std::size_t i = 0; i < array.size(); ++i, walk.next()) {
        storeAt(element, elements.at(i), array.at(walk.indexes()));
    }
    return made.release();
}

}  // namespace kap::platform::automation
