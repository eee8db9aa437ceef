#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace kap::platform {

// Owns a file descriptor; -1 is none.
class Descriptor {
public:
    explicit Descriptor(int number = -1) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }

    [[nodiscard]] int get() const noexcept { return number_; }
    explicit operator bool() const noexcept { return number_ >= 0; }
    [[nodiscard]] int release() noexcept { return std::exchange(number_, -1); }

private:
    int number_;
};

[[nodiscard]] inline std::error_code lastError() {
    return {errno, std::generic_category()};
}

// Raises the file-system object's error 70 for an opened pipe, which is no file: reading and
// writing it wait for other programs.
void refusePipe(int descriptor);

}  // namespace kap::platform
