#include "platform/win32/automation/values.hpp"

#include <limits>
#include <new>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "platform/win32/automation/arrays.hpp"
#include "platform/win32/automation/com_object.hpp"
#include "platform/win32/automation/object_dispatch.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform::automation {
namespace {

template <class T>
const T& at(const void* place) noexcept {
    return *static_cast<const T*>(place);
}

template <class T>
T& at(void* place) noexcept {
    return *static_cast<T*>(place);
}

Decimal decimalOf(const DECIMAL& value) {
    const auto low = static_cast<std::uint32_t>(value.Lo64);
    const auto middle = static_cast<std::uint32_t>(value.Lo64 >> 32);
    return {{low, middle, static_cast<std::uint32_t>(value.Hi32)},
            value.scale,
            value.sign == DECIMAL_NEG};
}

DECIMAL systemDecimal(const Decimal& value) {
    const auto magnitude = value.magnitude();
    DECIMAL made{};
    made.scale = static_cast<BYTE>(value.scale());
    made.sign = value.negative() ? DECIMAL_NEG : 0;
    made.Lo64 = static_cast<ULONGLONG>(magnitude[1]) << 32 | magnitude[0];
    made.Hi32 = magnitude[2];
    return made;
}

Variant wholeNumber(std::int64_t value) {
    if (value >= std::numeric_limits<std::int32_t>::min() &&
        value <= std::numeric_limits<std::int32_t>::max()) {
        return static_cast<std::int32_t>(value);
    }
    return Decimal(value);
}

Variant unknownObject(IUnknown* object) {
    if (object == nullptr) {
        return Ref<Object>();
    }
    InterfacePointer<IDispatch> dispatch;
    if (FAILED(object->QueryInterface(IID_IDispatch, dispatch.outVoid()))) {
        throw AutomationError(errors::kTypeMismatch);
    }
    return objectBehind(dispatch.get());
}

// Whole numbers of the types that automation itself has not.
template <class T>
T wholeNumberFor(const Variant& value) {
    const auto whole = convert::toDecimal(value).scaledTo(0);
    if (!whole || *whole < static_cast<std::int64_t>(std::numeric_limits<T>::min()) ||
        (sizeof(T) < sizeof(*whole) &&
         *whole > static_cast<std::int64_t>(std::numeric_limits<T>::max()))) {
        throw AutomationError(errors::kOverflow);
    }
    return static_cast<T>(*whole);
}

void storeText(BSTR& place, const String& text) {
    BSTR made = toBstr(text);
    SysFreeString(place);
    place = made;
}

IDispatch* dispatchFor(const Variant& value) {
    if (!value.isObject()) {
        throw AutomationError(value.isEmpty() ? errors::kObjectNotSet : errors::kTypeMismatch);
    }
    return dispatchOf(value.as<Ref<Object>>());
}

template <class Interface>
void storeObject(Interface*& place, const Variant& value) {
    IDispatch* made = dispatchFor(value);
    if (place != nullptr) {
        place->Release();
    }
    place = made;
}

void storeArray(VARTYPE element, SAFEARRAY*& place, const Variant& value) {
    if (!value.isArray()) {
        throw AutomationError(errors::kTypeMismatch);
    }
    SAFEARRAY* made = systemArray(value.as<Array>(), element);
    if (place != nullptr) {
        SafeArrayDestroy(place);
    }
    place = made;
}

}  // namespace

String fromBstr(BSTR text) {
    return text == nullptr ? String() : String(narrowView(text, SysStringLen(text)));
}

BSTR toBstr(const String& text) {
    BSTR made = SysAllocStringLen(wide(text), static_cast<UINT>(text.size()));
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    return made;
}

Variant valueAt(VARTYPE type, const void* place) {
    if ((type & VT_ARRAY) != 0) {
        return arrayFrom(at<SAFEARRAY*>(place));
    }
    switch (type) {
        case VT_EMPTY:
            return {};
        case VT_NULL:
            return Variant::null();
        case VT_UI1:
            return at<std::uint8_t>(place);
        case VT_I1:
            return static_cast<std::int16_t>(at<signed char>(place));
        case VT_I2:
            return at<std::int16_t>(place);
        case VT_UI2:
            return static_cast<std::int32_t>(at<std::uint16_t>(place));
        case VT_I4:
        case VT_INT:
            return at<std::int32_t>(place);
        case VT_UI4:
        case VT_UINT:
            return wholeNumber(at<std::uint32_t>(place));
        case VT_I8:
            return wholeNumber(at<std::int64_t>(place));
        case VT_UI8:
            return Decimal::fromUnsigned(at<std::uint64_t>(place));
        case VT_R4:
            return at<float>(place);
        case VT_R8:
            return at<double>(place);
        case VT_CY:
            return Currency{at<std::int64_t>(place)};
        case VT_DATE:
            return Date{at<double>(place)};
        case VT_BSTR:
            return fromBstr(at<BSTR>(place));
        case VT_BOOL:
            return at<VARIANT_BOOL>(place) != VARIANT_FALSE;
        case VT_DECIMAL:
            return decimalOf(at<DECIMAL>(place));
        case VT_DISPATCH:
            return objectBehind(at<IDispatch*>(place));
        case VT_UNKNOWN:
            return unknownObject(at<IUnknown*>(place));
        case VT_VARIANT:
            return fromSystem(at<VARIANT>(place));
        case VT_ERROR:
            if (at<SCODE>(place) == DISP_E_PARAMNOTFOUND) {
                return Variant::missing();
            }
            break;
        default:
            break;
    }
    throw AutomationError(errors::kTypeMismatch);
}

Variant fromSystem(const VARIANT& value) {
    const VARTYPE type = V_VT(&value);
    if ((type & VT_BYREF) != 0) {
        return valueAt(static_cast<VARTYPE>(type & ~VT_BYREF), V_BYREF(&value));
    }
    if (type == VT_DECIMAL) {
        return decimalOf(V_DECIMAL(&value));  // which lies over the whole of the value
    }
    return valueAt(type, &V_I8(&value));
}

void toSystem(const Variant& value, VARIANT& out) {
    VariantInit(&out);
    VARTYPE type = static_cast<VARTYPE>(value.type());
    switch (value.type()) {
        case VarType::Empty:
        case VarType::Null:
            break;
        case VarType::Byte:
            V_UI1(&out) = value.as<std::uint8_t>();
            break;
        case VarType::Integer:
            V_I2(&out) = value.as<std::int16_t>();
            break;
        case VarType::Long:
            V_I4(&out) = value.as<std::int32_t>();
            break;
        case VarType::Single:
            V_R4(&out) = value.as<float>();
            break;
        case VarType::Double:
            V_R8(&out) = value.as<double>();
            break;
        case VarType::Currency:
            V_CY(&out).int64 = value.as<Currency>().scaled;
            break;
        case VarType::Date:
            V_DATE(&out) = value.as<Date>().days;
            break;
        case VarType::String:
            V_BSTR(&out) = toBstr(value.as<String>());
            break;
        case VarType::Boolean:
            V_BOOL(&out) = value.as<bool>() ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case VarType::Decimal:
            V_DECIMAL(&out) = systemDecimal(value.as<Decimal>());
            break;
        case VarType::Object:
            V_DISPATCH(&out) = dispatchOf(value.as<Ref<Object>>());
            break;
        case VarType::Error:
            V_ERROR(&out) = DISP_E_PARAMNOTFOUND;
            break;
        default: {
            const Array& array = value.as<Array>();
            const VARTYPE element = systemTypeOf(array.elementType());
            V_ARRAY(&out) = systemArray(array, element);
            type = static_cast<VARTYPE>(VT_ARRAY | element);
        }
    }
    V_VT(&out) = type;  // last: until here the value frees nothing
}

SystemValue::SystemValue(const Variant& value) {
    toSystem(value, value_);
}

void storeAt(VARTYPE type, void* place, const Variant& value) {
    if ((type & VT_ARRAY) != 0) {
        storeArray(static_cast<VARTYPE>(type & ~VT_ARRAY), at<SAFEARRAY*>(place), value);
        return;
    }
    switch (type) {
        case VT_UI1:
            at<std::uint8_t>(place) = convert::toByte(value);
            return;
        case VT_I1:
            at<signed char>(place) = wholeNumberFor<signed char>(value);
            return;
        case VT_I2:
            at<std::int16_t>(place) = convert::toInteger(value);
            return;
        case VT_UI2:
            at<std::uint16_t>(place) = wholeNumberFor<std::uint16_t>(value);
            return;
        case VT_I4:
        case VT_INT:
            at<std::int32_t>(place) = convert::toLong(value);
            return;
        case VT_UI4:
        case VT_UINT:
            at<std::uint32_t>(place) = wholeNumberFor<std::uint32_t>(value);
            return;
        case VT_I8:
            at<std::int64_t>(place) = wholeNumberFor<std::int64_t>(value);
            return;
        case VT_UI8:
            at<std::uint64_t>(place) = wholeNumberFor<std::uint64_t>(value);
            return;
        case VT_R4:
            at<float>(place) = convert::toSingle(value);
            return;
        case VT_R8:
            at<double>(place) = convert::toDouble(value);
            return;
        case VT_CY:
            at<std::int64_t>(place) = convert::toCurrency(value).scaled;
            return;
        case VT_DATE:
            at<double>(place) = convert::toDate(value).days;
            return;
        case VT_BOOL:
            at<VARIANT_BOOL>(place) = convert::toBoolean(value) ? VARIANT_TRUE : VARIANT_FALSE;
            return;
        case VT_DECIMAL:
            at<DECIMAL>(place) = systemDecimal(convert::toDecimal(value));
            return;
        case VT_BSTR:
            storeText(at<BSTR>(place), convert::toString(value));
            return;
        case VT_DISPATCH:
            storeObject(at<IDispatch*>(place), value);
            return;
        case VT_UNKNOWN:
            storeObject(at<IUnknown*>(place), value);
            return;
        case VT_VARIANT: {
            auto& target = at<VARIANT>(place);
            if ((V_VT(&target) & VT_BYREF) != 0) {
                assignThrough(target, value);
                return;
            }
            VARIANT made;
            toSystem(value, made);
            VariantClear(&target);
            target = made;
            return;
        }
        default:
            throw AutomationError(errors::kTypeMismatch);
    }
}

void assignThrough(const VARIANT& reference, const Variant& value) {
    if ((V_VT(&reference) & VT_BYREF) != 0) {
        storeAt(static_cast<VARTYPE>(V_VT(&reference) & ~VT_BYREF), V_BYREF(&reference), value);
    }
}

}  // namespace kap::platform::automation
