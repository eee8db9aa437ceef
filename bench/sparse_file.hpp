#pragma once

#include <memory>
#include <string>

#include <sqlite3.h>

// Databases larger than the disk. A connection opened here leaves out every block of zeros that it
// would write, so that the file system keeps a hole for it: with pages of 64 KiB, a table of
// blobs of zeros takes a sixteenth of its size. Readers see the same file as ever.
namespace kap::bench {

struct SparseFileCloser {
    void operator()(sqlite3* handle) const { sqlite3_close(handle); }
};
using SparseFile = std::unique_ptr<sqlite3, SparseFileCloser>;

// For one program alone, and without a journal: what is being filled is thrown away when filling
// fails. Throws std::runtime_error when the file cannot be opened.
SparseFile openSparse(const std::string& path);

}  // namespace kap::bench
