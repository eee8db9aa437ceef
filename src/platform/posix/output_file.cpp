#include "platform/output_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/file_errors.hpp"
#include "platform/posix/descriptor.hpp"

namespace kap::platform {
namespace {

int flagsOf(OutputFile::Begin begin) {
    switch (begin) {
        case OutputFile::Begin::Empty:
            return O_CREAT | O_TRUNC;
        case OutputFile::Begin::New:
            return O_CREAT | O_EXCL;
        case OutputFile::Begin::AtEnd:
            break;
    }
    return 0;
}

}  // namespace

OutputFile::OutputFile(const std::filesystem::path& file, Begin begin)
    // A pipe would be waited for until somebody reads it.
    : descriptor_(open(file.c_str(),  // NOLINT(*-vararg)
                       O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC | flagsOf(begin),
                       0664)) {  // less what the user's mask takes away
    Descriptor opened(descriptor_);
    if (!opened) {
        throwFileError(lastError(), file);
    }
    refusePipe(opened.get());
    descriptor_ = opened.release();
}

OutputFile::~OutputFile() {
    const Descriptor closing(descriptor_);
}

void OutputFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            throwFileError(lastError());
        }
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }
}

std::uintmax_t OutputFile::size() const {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) {
        throwFileError(lastError());
    }
    return static_cast<std::uintmax_t>(status.st_size);
}

}  // namespace kap::platform
