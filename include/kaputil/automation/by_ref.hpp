#pragma once

#include <concepts>
#include <type_traits>
#include <utility>

namespace kap {

// A parameter passed by reference, as automation means it: the member may write into the caller's
// variable, and a caller who has none may pass a plain value, which then goes nowhere.
//
//     std::int16_t cursorType = -1;
//     f->OpenRecordset(sql, connection, cursorType);   // cursorType is 3 afterwards
//     f->OpenRecordset(sql, connection, -1);           // fine too
template <class T>
class ByRef {
public:
    ByRef(T& variable) noexcept : target_(&variable) {}
    template <class U>
    requires(std::convertible_to<U, T> && !std::same_as<std::remove_cvref_t<U>, ByRef> &&
             !std::same_as<U, T&>)
        ByRef(U&& value)  // NOLINT(bugprone-forwarding-reference-overload): ByRef is excluded
        : own_(static_cast<T>(std::forward<U>(value))), target_(&own_) {}
    ByRef(const ByRef& other)
        : own_(other.own_), target_(other.target_ == &other.own_ ? &own_ : other.target_) {}
    ByRef& operator=(const ByRef&) = delete;
    ~ByRef() = default;

    [[nodiscard]] T& get() const noexcept { return *target_; }
    T& operator*() const noexcept { return *target_; }
    T* operator->() const noexcept { return target_; }

private:
    T own_{};
    T* target_;
};

}  // namespace kap
