#include "platform/posix/descriptor.hpp"

#include <sys/stat.h>

#include "platform/file_errors.hpp"

namespace kap::platform {

void refusePipe(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        throwFileError(lastError());
    }
    if (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) {
        throwFileError(std::make_error_code(std::errc::not_supported));
    }
}

}  // namespace kap::platform
