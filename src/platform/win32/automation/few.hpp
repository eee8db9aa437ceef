#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace kap::platform::automation {

// A sequence whose greatest length is known before its first element, and nearly always small: up
// to `kFew` elements take no allocation, and none is constructed that is not added.
template <class T, std::size_t kFew>
class Few {
public:
    explicit Few(std::size_t capacity)
        : first_(capacity <= kFew ? reinterpret_cast<T*>(room_)
                                  : std::allocator<T>().allocate(capacity)),
          capacity_(capacity) {}
    Few(const Few&) = delete;
    Few& operator=(const Few&) = delete;
    ~Few() {
        std::destroy_n(first_, size_);
        if (capacity_ > kFew) {
            std::allocator<T>().deallocate(first_, capacity_);
        }
    }

    // Adds what `make` gives. Never more than the capacity: elements stay where they are.
    template <class Make>
    T& add(Make make) {
        T* made = ::new (static_cast<void*>(first_ + size_)) T(make());
        ++size_;
        return *made;
    }

    [[nodiscard]] std::span<T> all() noexcept { return {first_, size_}; }

private:
    alignas(T) std::byte room_[kFew * sizeof(T)];
    T* first_;
    std::size_t size_ = 0;
    std::size_t capacity_;
};

}  // namespace kap::platform::automation
