#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include <kaputil/automation/decimal.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

class Array;

// The automation types, with the codes that automation gives them.
enum class VarType : std::uint16_t {
    Empty = 0,
    Null = 1,
    Integer = 2,
    Long = 3,
    Single = 4,
    Double = 5,
    Currency = 6,
    Date = 7,
    String = 8,
    Object = 9,
    Error = 10,
    Boolean = 11,
    Variant = 12,  // only in descriptions of parameters and array elements
    Decimal = 14,
    Byte = 17,
    Array = 0x2000,
};

// The English name of a type ("Integer", "String", ...).
[[nodiscard]] KAPUTIL_EXPORT std::string_view typeName(VarType type) noexcept;

// An amount with four decimals, exact: the value times 10,000 as a whole number.
struct Currency {
    std::int64_t scaled = 0;
    friend bool operator==(Currency, Currency) = default;
};

// An instant: days from 30 December 1899; the fraction is the time of day, also before that day
// (-1.25 is 29 December 1899, six o'clock).
struct Date {
    double days = 0;
    friend bool operator==(Date, Date) = default;
};

// The dynamically typed value that members take and return.
//
// Copies share text and arrays and count references to objects, so a copy is cheap whatever it
// holds. `as<T>()` reads the exact type; the conversions between types are in
// <kaputil/automation/convert.hpp>.
class KAPUTIL_EXPORT Variant {
public:
    struct Empty {
        friend bool operator==(Empty, Empty) = default;
    };
    struct Null {
        friend bool operator==(Null, Null) = default;
    };
    // An argument that the caller did not give.
    struct Missing {
        friend bool operator==(Missing, Missing) = default;
    };

    Variant() noexcept = default;
    Variant(Null) noexcept : value_(Null{}) {}
    Variant(Missing) noexcept : value_(Missing{}) {}
    Variant(bool value) noexcept : value_(value) {}
    Variant(std::uint8_t value) noexcept : value_(value) {}
    Variant(std::int16_t value) noexcept : value_(value) {}
    Variant(std::int32_t value) noexcept : value_(value) {}
    Variant(float value) noexcept : value_(value) {}
    Variant(double value) noexcept : value_(value) {}
    Variant(Currency value) noexcept : value_(value) {}
    Variant(Date value) noexcept : value_(value) {}
    Variant(Decimal value) noexcept : value_(value) {}
    Variant(String text) : value_(std::make_shared<const String>(std::move(text))) {}
    Variant(std::u16string_view text) : Variant(String(text)) {}
    Variant(const char16_t* text) : Variant(String(text)) {}
    Variant(std::string_view utf8) : Variant(String(utf8)) {}
    Variant(const std::string& utf8) : Variant(String(utf8)) {}
    Variant(const char* utf8) : Variant(String(utf8)) {}
    Variant(Array array);  // defined with Array, in <kaputil/automation/array.hpp>
    Variant(Ref<Object> object) noexcept : value_(std::move(object)) {}
    template <class T>
    requires std::is_convertible_v<T*, Object*> Variant(Ref<T> object)
    noexcept : value_(Ref<Object>(std::move(object))) {}
    // Whole numbers of other widths have no automation type: the caller chooses one.
    template <class T>
    requires(std::is_integral_v<T> || std::is_pointer_v<T>) Variant(T)
    = delete;

    [[nodiscard]] static Variant null() noexcept { return Null{}; }
    [[nodiscard]] static Variant missing() noexcept { return Missing{}; }

    [[nodiscard]] VarType type() const noexcept;
    [[nodiscard]] bool isEmpty() const noexcept { return holds<Empty>(); }
    [[nodiscard]] bool isNull() const noexcept { return holds<Null>(); }
    [[nodiscard]] bool isMissing() const noexcept { return holds<Missing>(); }
    [[nodiscard]] bool isString() const noexcept { return holds<std::shared_ptr<const String>>(); }
    [[nodiscard]] bool isObject() const noexcept { return holds<Ref<Object>>(); }
    [[nodiscard]] bool isArray() const noexcept { return holds<std::shared_ptr<const Array>>(); }

    // The value when it has exactly this type (bool, std::int16_t, String, Ref<Object>, Array,
    // ...); raises 13 (type mismatch) otherwise. No conversion takes place. Of a temporary it is a
    // copy, which outlives it.
    template <class T>
    [[nodiscard]] T as() const&& {
        return as<T>();
    }
    template <class T>
    [[nodiscard]] const T& as() const& {
        constexpr bool kShared = std::is_same_v<T, String> || std::is_same_v<T, Array>;
        using Held = std::conditional_t<kShared, std::shared_ptr<const T>, T>;
        const Held* held = std::get_if<Held>(&value_);
        if (held == nullptr) {
            throwTypeMismatch();
        }
        if constexpr (kShared) {
            return **held;
        } else {
            return *held;
        }
    }

private:
    using Value =
        std::variant<Empty, Null, Missing, bool, std::uint8_t, std::int16_t, std::int32_t, float,
                     double, Currency, Date, Decimal, std::shared_ptr<const String>,
                     std::shared_ptr<const Array>, Ref<Object>>;

    template <class T>
    [[nodiscard]] bool holds() const noexcept {
        return std::holds_alternative<T>(value_);
    }
    [[noreturn]] static void throwTypeMismatch();

    Value value_;
};

static_assert(sizeof(Variant) <= 24);

}  // namespace kap
