#pragma once

#include <windows.h>

#include <oleauto.h>

#include <kaputil/automation/variant.hpp>

// Values across the border between the library and the system's automation.
namespace kap::platform::automation {

// Holds one of the system's values and frees what it holds.
class SystemValue {
public:
    SystemValue() noexcept { VariantInit(&value_); }
    explicit SystemValue(const Variant& value);
    SystemValue(const SystemValue&) = delete;
    SystemValue& operator=(const SystemValue&) = delete;
    ~SystemValue() { VariantClear(&value_); }

    [[nodiscard]] VARIANT& get() noexcept { return value_; }

private:
    VARIANT value_;
};

// What a value of the system holds, itself or by reference. Whole numbers of widths that automation
// has not are the next wider type, or a Decimal; an object of this library is that object again.
// Raises 13 for what no client of automation passes (records, error codes).
[[nodiscard]] Variant fromSystem(const VARIANT& value);

// The way back, into a value that holds nothing yet; the caller frees it.
void toSystem(const Variant& value, VARIANT& out);

// Stores a value where a by-reference value points to, converted to the type that it points to.
// Raises 6 and 13 when it does not convert. Nothing happens to a value that is none by reference.
void assignThrough(const VARIANT& reference, const Variant& value);

// The text of the system, and the way back; the caller frees it.
[[nodiscard]] String fromBstr(BSTR text);
[[nodiscard]] BSTR toBstr(const String& text);

// One value of a type of the system's at an address, as arrays and references have it.
[[nodiscard]] Variant valueAt(VARTYPE type, const void* place);
// The same converted to the type and stored; what was there is freed first.
void storeAt(VARTYPE type, void* place, const Variant& value);

}  // namespace kap::platform::automation
