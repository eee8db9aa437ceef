#pragma once

#include <filesystem>

namespace kap::cli {

// A file that is about to be written anew by somebody who writes it in place. Unless it is told
// that this was done, what is there at the end goes, and what was there before is back.
class KeptFile {
public:
    // Throws UsageError when the file that is there cannot be put aside.
    explicit KeptFile(std::filesystem::path file);
    ~KeptFile();
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

    void done() noexcept { done_ = true; }

private:
    std::filesystem::path file_;
    std::filesystem::path before_;  // empty: there was none
    bool done_ = false;
};

}  // namespace kap::cli
