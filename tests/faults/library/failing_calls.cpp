#include "failing_calls.hpp"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <optional>

namespace kap::faults {
namespace {

struct State {
    std::mutex guard;
    std::optional<Fault> fault;
    Outcome outcome;
    std::optional<std::string> recorded;
    std::vector<Event> events;
};

State& state() {
    static auto* made = new State();  // also for calls at the very end of the program
    return *made;
}

// Looked at by every call before anything else.
bool active =
    false;  // NOLINT: changed by the tests' own thread, between the calls that it asks for

std::string pathOf(int descriptor) {
    std::array<char, 64> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    std::string path(4096, '\0');
    const ssize_t length = readlink(link.data(), path.data(), path.size());
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return path;
}

std::string nameOf(Call call) {
    constexpr std::array kNames = {"open",   "read",   "write", "sync", "truncate",
                                   "rename", "unlink", "lock",  "map"};
    return kNames.at(static_cast<std::size_t>(call));
}

bool isMeant(const Fault& fault, Call call, const std::string& path, bool creates) {
    if (path.find(fault.folder) == std::string::npos || !path.ends_with(fault.nameEnd)) {
        return false;
    }
    if (call == Call::Open && fault.onlyCreating && !creates) {
        return false;
    }
    return fault.calls.empty() || std::ranges::find(fault.calls, call) != fault.calls.end();
}

}  // namespace

void start(const Fault& fault) {
    const std::lock_guard lock(state().guard);
    state().fault = fault;
    state().outcome = {};
    active = true;
}

Outcome stop() {
    const std::lock_guard lock(state().guard);
    state().fault.reset();
    active = state().recorded.has_value();
    return state().outcome;
}

void startRecording(const std::string& folder) {
    const std::lock_guard lock(state().guard);
    state().recorded = folder;
    state().events.clear();
    active = true;
}

void mark(const std::string& text) {
    const std::lock_guard lock(state().guard);
    state().events.push_back({Event::Kind::Mark, {}, {}, 0, text});
}

std::vector<Event> stopRecording() {
    const std::lock_guard lock(state().guard);
    state().recorded.reset();
    active = state().fault.has_value();
    return std::move(state().events);
}

namespace {

// Whether this call is the one that fails; errno says why then.
bool fails(Call call, const std::string& path, bool creates = false) {
    const std::lock_guard lock(state().guard);
    if (!state().fault || !isMeant(*state().fault, call, path, creates)) {
        return false;
    }
    const Fault& fault = *state().fault;
    const int number = ++state().outcome.calls;
    if (fault.nth == 0 || number < fault.nth || (number > fault.nth && !fault.andAllAfter)) {
        return false;
    }
    state().outcome.failed = true;
    if (number == fault.nth) {
        state().outcome.which = nameOf(call) + " of " + path;
    }
    if (fault.error == kKill) {
        kill(getpid(), SIGKILL);
    }
    errno = fault.error;
    return true;
}

void note(Event event) {
    const std::lock_guard lock(state().guard);
    if (state().recorded && event.path.find(*state().recorded) != std::string::npos) {
        state().events.push_back(std::move(event));
    }
}

// The host's own function of a name.
template <class Function>
Function host(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

template <class Function, class... Arguments>
auto onDescriptor(Call call, const char* name, int descriptor, Arguments... arguments) {
    static const auto real = host<Function>(name);
    using Result = decltype(real(descriptor, arguments...));
    if (active && fails(call, pathOf(descriptor))) {
        return static_cast<Result>(-1);
    }
    return real(descriptor, arguments...);
}

int openedAs(const char* name, const char* path, int flags, mode_t mode) {
    using Function = int (*)(const char*, int, mode_t);
    const auto real = host<Function>(name);
    if (active && fails(Call::Open, path, (flags & O_CREAT) != 0)) {
        return -1;
    }
    const int opened = real(path, flags, mode);
    if (active && opened >= 0 && (flags & O_TRUNC) != 0) {
        note({Event::Kind::Truncate, pathOf(opened), {}, 0, {}});
    }
    return opened;
}

ssize_t written(int descriptor, const void* bytes, ssize_t count, std::int64_t offset) {
    if (active && count > 0) {
        note({Event::Kind::Write,
              pathOf(descriptor),
              {},
              offset,
              std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(count))});
    }
    return count;
}

int synchronised(int descriptor, int result) {
    if (active && result == 0) {
        note({Event::Kind::Sync, pathOf(descriptor), {}, 0, {}});
    }
    return result;
}

int truncatedTo(int descriptor, off64_t length, int result) {
    if (active && result == 0) {
        note({Event::Kind::Truncate, pathOf(descriptor), {}, length, {}});
    }
    return result;
}

}  // namespace
}  // namespace kap::faults

using namespace kap::faults;

extern "C" {

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return openedAs("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return openedAs("open64", path, flags, mode);
}

ssize_t read(int descriptor, void* bytes, size_t count) {
    return onDescriptor<ssize_t (*)(int, void*, size_t)>(Call::Read, "read", descriptor, bytes,
                                                         count);
}

ssize_t pread64(int descriptor, void* bytes, size_t count, off64_t offset) {
    return onDescriptor<ssize_t (*)(int, void*, size_t, off64_t)>(Call::Read, "pread64", descriptor,
                                                                  bytes, count, offset);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
    const off64_t offset = active ? lseek64(descriptor, 0, SEEK_CUR) : 0;
    return written(descriptor, bytes,
                   onDescriptor<ssize_t (*)(int, const void*, size_t)>(Call::Write, "write",
                                                                       descriptor, bytes, count),
                   offset);
}

ssize_t pwrite64(int descriptor, const void* bytes, size_t count, off64_t offset) {
    return written(descriptor, bytes,
                   onDescriptor<ssize_t (*)(int, const void*, size_t, off64_t)>(
                       Call::Write, "pwrite64", descriptor, bytes, count, offset),
                   offset);
}

int fsync(int descriptor) {
    return synchronised(descriptor, onDescriptor<int (*)(int)>(Call::Sync, "fsync", descriptor));
}

int fdatasync(int descriptor) {
    return synchronised(descriptor,
                        onDescriptor<int (*)(int)>(Call::Sync, "fdatasync", descriptor));
}

int ftruncate64(int descriptor, off64_t length) noexcept {
    return truncatedTo(
        descriptor, length,
        onDescriptor<int (*)(int, off64_t)>(Call::Truncate, "ftruncate64", descriptor, length));
}

int flock(int descriptor, int operation) noexcept {
    return onDescriptor<int (*)(int, int)>(Call::Lock, "flock", descriptor, operation);
}

int fcntl64(int descriptor, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void* argument = va_arg(rest, void*);
    va_end(rest);
    using Function = int (*)(int, int, void*);
    // Giving a lock back never fails.
    const bool locks = (command == F_SETLK || command == F_SETLKW) &&
                       static_cast<const struct flock*>(argument)->l_type != F_UNLCK;
    if (locks) {
        return onDescriptor<Function>(Call::Lock, "fcntl64", descriptor, command, argument);
    }
    static const auto real = host<Function>("fcntl64");
    return real(descriptor, command, argument);
}

int rename(const char* from, const char* to) noexcept {
    using Function = int (*)(const char*, const char*);
    static const auto real = host<Function>("rename");
    if (active && fails(Call::Rename, from)) {
        return -1;
    }
    const int result = real(from, to);
    if (active && result == 0) {
        note({Event::Kind::Rename, from, to, 0, {}});
    }
    return result;
}

int unlink(const char* path) noexcept {
    using Function = int (*)(const char*);
    static const auto real = host<Function>("unlink");
    if (active && fails(Call::Unlink, path)) {
        return -1;
    }
    const int result = real(path);
    if (active && result == 0) {
        note({Event::Kind::Remove, path, {}, 0, {}});
    }
    return result;
}

void* mmap64(void* place, size_t length, int protection, int flags, int descriptor,
             off64_t offset) noexcept {
    using Function = void* (*)(void*, size_t, int, int, int, off64_t);
    static const auto real = host<Function>("mmap64");
    if (active && descriptor >= 0 && fails(Call::Map, pathOf(descriptor))) {
        return MAP_FAILED;  // NOLINT: the system's own value
    }
    return real(place, length, protection, flags, descriptor, offset);
}

}  // extern "C"
