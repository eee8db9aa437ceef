#pragma once

#include <utility>

#include "drivers/odbc/api.hpp"

namespace kap::ado::odbc {

// A handle of the interface, freed with its object.
class Handle {
public:
    Handle() = default;
    // Raises std::bad_alloc, or the error that `parent` tells.
    Handle(SQLSMALLINT kind, SQLHANDLE parent);
    ~Handle();
    Handle(Handle&& other) noexcept
        : kind_(other.kind_), handle_(std::exchange(other.handle_, kNoHandle)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(kind_, other.kind_);
        std::swap(handle_, other.handle_);
        return *this;
    }

    [[nodiscard]] SQLHANDLE get() const noexcept { return handle_; }
    [[nodiscard]] SQLSMALLINT kind() const noexcept { return kind_; }

private:
    SQLSMALLINT kind_ = 0;
    SQLHANDLE handle_ = kNoHandle;
};

// What every connection of the process is made in; lives as long as the process.
[[nodiscard]] SQLHANDLE environment();

}  // namespace kap::ado::odbc
