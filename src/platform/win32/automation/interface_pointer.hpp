#pragma once

#include <utility>

namespace kap::platform::automation {

// A counted pointer to an interface of the system's component model.
template <class Interface>
class InterfacePointer {
public:
    InterfacePointer() noexcept = default;
    // Counts a reference of its own.
    explicit InterfacePointer(Interface* pointer) noexcept : pointer_(pointer) {
        if (pointer_ != nullptr) {
            pointer_->AddRef();
        }
    }
    InterfacePointer(InterfacePointer&& other) noexcept
        : pointer_(std::exchange(other.pointer_, nullptr)) {}
    InterfacePointer(const InterfacePointer& other) noexcept : InterfacePointer(other.pointer_) {}
    InterfacePointer& operator=(InterfacePointer other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }
    ~InterfacePointer() {
        if (pointer_ != nullptr) {
            pointer_->Release();
        }
    }

    [[nodiscard]] Interface* get() const noexcept { return pointer_; }
    Interface* operator->() const noexcept { return pointer_; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }

    // For functions that give a pointer with a reference of the caller's. Only while it is empty.
    [[nodiscard]] Interface** out() noexcept { return &pointer_; }
    [[nodiscard]] void** outVoid() noexcept { return reinterpret_cast<void**>(&pointer_); }
    // Gives the reference away.
    [[nodiscard]] Interface* detach() noexcept { return std::exchange(pointer_, nullptr); }

private:
    Interface* pointer_ = nullptr;
};

}  // namespace kap::platform::automation
