#include "cli/commands/export/kept_file.hpp"

#include <system_error>
#include <utility>

#include "cli/output/usage_error.hpp"

namespace kap::cli {

namespace fs = std::filesystem;

KeptFile::KeptFile(fs::path file) : file_(std::move(file)) {
    std::error_code error;
    if (!fs::is_regular_file(file_, error)) {
        return;
    }
    before_ = file_;
    before_ += ".before";
    fs::rename(file_, before_, error);
    if (error) {
        throw UsageError("cannot write " + file_.string() + ": " + error.message());
    }
}

KeptFile::~KeptFile() {
    std::error_code ignored;  // what failed is told already, or nothing has
    if (!done_ && fs::is_regular_file(file_, ignored)) {
        fs::remove(file_, ignored);
    }
    if (!before_.empty()) {
        if (done_) {
            fs::remove(before_, ignored);
        } else {
            fs::rename(before_, file_, ignored);
        }
    }
}

}  // namespace kap::cli
