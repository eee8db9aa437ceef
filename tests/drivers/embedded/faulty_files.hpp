#pragma once

#include <cstdint>

#include <sqlite3.h>

namespace kap::ado::embedded::test {

// Makes the file system of the databases opened in its scope fail: after so many writes every
// further one answers an error of SQLite's (SQLITE_FULL: the disk is full).
class FaultyFiles {
public:
    FaultyFiles();
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;
    ~FaultyFiles();

    void failAfter(std::int64_t writes, int code);
    void heal();
};

}  // namespace kap::ado::embedded::test
