#pragma once

#include <atomic>

namespace kap::platform {

// A library of the host that is loaded when something of it is first needed: most programs neither
// write messages nor talk to database servers, and none should wait at its start for what it may
// never use. It stays loaded, for it keeps state of its own.
class LoadedLibrary {
public:
    // `file` is its name with its version, as the host's loader finds it.
    constexpr explicit LoadedLibrary(const char* file) noexcept : file_(file) {}

    [[nodiscard]] bool isThere() const noexcept;

    // The address of a name in the library or in one that it needs itself. Raises 429 when the
    // library or the name is missing.
    [[nodiscard]] void* find(const char* name) const;

private:
    const char* file_;
};

// A function of such a library, called like the function itself.
template <class Signature>
class LoadedFunction {
public:
    constexpr LoadedFunction(const LoadedLibrary& library, const char* name) noexcept
        : library_(library), name_(name) {}

    operator Signature*() const {
        Signature* function = function_.load(std::memory_order_acquire);
        if (function == nullptr) {
            function = reinterpret_cast<Signature*>(library_.find(name_));
            function_.store(function, std::memory_order_release);
        }
        return function;
    }

private:
    const LoadedLibrary& library_;
    const char* name_;
    mutable std::atomic<Signature*> function_{nullptr};
};

}  // namespace kap::platform
