#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace kap {

// A counted reference to an object: copying it shares the object, dropping the last one ends it.
// An empty reference is the unset object ("Nothing").
template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}
    explicit Ref(T* object) noexcept : object_(object) {
        if (object_ != nullptr) {
            object_->retain();
        }
    }
    Ref(const Ref& other) noexcept : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other)
    noexcept : Ref(static_cast<T*>(other.get())) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
    noexcept : object_(other.detach()) {}
    ~Ref() {
        if (object_ != nullptr) {
            object_->release();
        }
    }

    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    [[nodiscard]] T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // Gives the reference away without dropping it.
    [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }

    friend bool operator==(const Ref& left, const Ref& right) noexcept {
        return left.object_ == right.object_;
    }

private:
    T* object_ = nullptr;
};

// A new object of class `T`, held by its first reference.
template <class T, class... Arguments>
[[nodiscard]] Ref<T> make(Arguments&&... arguments) {
    return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace kap
