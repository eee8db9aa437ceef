#include "drivers/embedded/faulty_files.hpp"

#include <limits>
#include <map>
#include <stdexcept>

namespace kap::ado::embedded::test {
namespace {

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

sqlite3_vfs* real = nullptr;
sqlite3_vfs faulty{};
std::int64_t writesLeft = kNever;
int answer = SQLITE_OK;

// The functions of an open file with the writing one replaced. The system has several sets of them,
// for files that are locked and files that are not.
struct Methods {
    sqlite3_io_methods faulty;  // first: an open file points to it
    const sqlite3_io_methods* real;
};
std::map<const sqlite3_io_methods*, Methods> methodsByReal;

int write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
    if (writesLeft <= 0) {
        return answer;
    }
    --writesLeft;
    const auto* methods = reinterpret_cast<const Methods*>(file->pMethods);
    return methods->real->xWrite(file, data, size, offset);
}

int open(sqlite3_vfs* /*self*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    const int code = real->xOpen(real, name, file, flags, outFlags);
    if (code == SQLITE_OK && file->pMethods != nullptr) {
        const sqlite3_io_methods* own = file->pMethods;
        Methods& methods = methodsByReal.try_emplace(own, Methods{*own, own}).first->second;
        methods.faulty.xWrite = &write;
        file->pMethods = &methods.faulty;
    }
    return code;
}

}  // namespace

FaultyFiles::FaultyFiles() {
    real = sqlite3_vfs_find(nullptr);
    faulty = *real;
    faulty.zName = "faulty";
    faulty.pNext = nullptr;
    faulty.xOpen = &open;
    heal();
    if (sqlite3_vfs_register(&faulty, 1) != SQLITE_OK) {
        throw std::runtime_error("the faulty file system was not accepted");
    }
}

FaultyFiles::~FaultyFiles() {
    sqlite3_vfs_unregister(&faulty);
    sqlite3_vfs_register(real, 1);
}

void FaultyFiles::failAfter(std::int64_t writes, int code) {
    writesLeft = writes;
    answer = code;
}

void FaultyFiles::heal() {
    failAfter(kNever, SQLITE_OK);
}

}  // namespace kap::ado::embedded::test
