#include "bench/sparse_file.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <stdexcept>

namespace kap::bench {

namespace {

constexpr const char* kSparseFiles = "kaputil-bench-sparse";
constexpr int kFileBlock = 4096;

// The file system's own file behind ours, which SQLite makes in the room after this struct.
struct SparseHandle {
    sqlite3_file base;
    sqlite3_int64 size;  // of the file with its holes, the last of which nothing may have written

    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

SparseHandle* handleOf(sqlite3_file* file) {
    return reinterpret_cast<SparseHandle*>(file);
}

sqlite3_file* realOf(sqlite3_file* file) {
    return handleOf(file)->real();
}

bool isZero(const char* bytes, int count) {
    return bytes[0] == 0 && std::memcmp(bytes, bytes + 1, static_cast<std::size_t>(count) - 1) == 0;
}

// What is written over something else is written whole: only behind the end is nothing there yet.
int writeWithHoles(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    SparseHandle* const handle = handleOf(file);
    const bool isNew = offset >= handle->size;
    const auto* from = static_cast<const char*>(bytes);
    for (int at = 0; at < count; at += kFileBlock) {
        const int length = std::min(kFileBlock, count - at);
        if (isNew && isZero(from + at, length)) continue;
        const int result =
            realOf(file)->pMethods->xWrite(realOf(file), from + at, length, offset + at);
        if (result != SQLITE_OK) return result;
    }
    handle->size = std::max(handle->size, offset + count);
    return SQLITE_OK;
}

int closeAtItsSize(sqlite3_file* file) {
    sqlite3_file* const real = realOf(file);
    const int sized = real->pMethods->xTruncate(real, handleOf(file)->size);
    const int closed = real->pMethods->xClose(real);
    return sized == SQLITE_OK ? closed : sized;
}

int sizeWithHoles(sqlite3_file* file, sqlite3_int64* size) {
    *size = handleOf(file)->size;
    return SQLITE_OK;
}

int truncateWithHoles(sqlite3_file* file, sqlite3_int64 size) {
    handleOf(file)->size = size;
    return realOf(file)->pMethods->xTruncate(realOf(file), size);
}

const sqlite3_io_methods kSparseMethods{
    .iVersion = 1,
    .xClose = closeAtItsSize,
    .xRead =
        [](sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
            return realOf(file)->pMethods->xRead(realOf(file), bytes, count, offset);
        },
    .xWrite = writeWithHoles,
    .xTruncate = truncateWithHoles,
    .xSync = [](sqlite3_file*, int) { return SQLITE_OK; },
    .xFileSize = sizeWithHoles,
    .xLock = [](sqlite3_file* file,
                int level) { return realOf(file)->pMethods->xLock(realOf(file), level); },
    .xUnlock = [](sqlite3_file* file,
                  int level) { return realOf(file)->pMethods->xUnlock(realOf(file), level); },
    .xCheckReservedLock =
        [](sqlite3_file* file, int* reserved) {
            return realOf(file)->pMethods->xCheckReservedLock(realOf(file), reserved);
        },
    .xFileControl = [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; },
    .xSectorSize = [](sqlite3_file*) { return kFileBlock; },
    .xDeviceCharacteristics = [](sqlite3_file*) { return 0; },
    // None of what later versions of the interface have: files are neither shared nor mapped.
    .xShmMap = nullptr,
    .xShmLock = nullptr,
    .xShmBarrier = nullptr,
    .xShmUnmap = nullptr,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

sqlite3_vfs* fileSystem() {
    return sqlite3_vfs_find(nullptr);
}

int openWithHoles(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* given) {
    auto* const handle = new (file) SparseHandle{};
    const int opened = fileSystem()->xOpen(fileSystem(), name, handle->real(), flags, given);
    if (opened != SQLITE_OK) return opened;
    handle->base.pMethods = &kSparseMethods;
    return handle->real()->pMethods->xFileSize(handle->real(), &handle->size);
}

void registerSparseFiles() {
    if (sqlite3_vfs_find(kSparseFiles) != nullptr) return;
    static sqlite3_vfs sparse = *fileSystem();
    sparse.pNext = nullptr;
    sparse.zName = kSparseFiles;
    sparse.szOsFile += static_cast<int>(sizeof(SparseHandle));
    sparse.xOpen = openWithHoles;
    sqlite3_vfs_register(&sparse, /*makeDflt=*/0);
}

}  // namespace

SparseFile openSparse(const std::string& path) {
    registerSparseFiles();
    sqlite3* handle = nullptr;
    const int opened = sqlite3_open_v2(path.c_str(), &handle,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, kSparseFiles);
    SparseFile file(handle);
    if (opened != SQLITE_OK) throw std::runtime_error(path + " cannot be opened");
    sqlite3_exec(handle,
                 // Alone first: a log beside the file is only then left without shared memory.
                 "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = OFF; "
                 "PRAGMA synchronous = OFF; PRAGMA cache_size = 100",
                 nullptr, nullptr, nullptr);
    return file;
}

}  // namespace kap::bench
