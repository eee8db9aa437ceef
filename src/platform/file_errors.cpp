#include "platform/file_errors.hpp"

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "platform/paths.hpp"

namespace kap::platform {
namespace {

std::int32_t numberOf(std::error_code error) {
    if (error == std::errc::no_such_file_or_directory) {
        return errors::kFileNotFound;
    }
    if (error == std::errc::not_a_directory) {
        return errors::kPathNotFound;
    }
    if (error == std::errc::file_exists || error == std::errc::directory_not_empty) {
        return errors::kFileAlreadyExists;
    }
    if (error == std::errc::no_space_on_device) {
        return errors::kDiskFull;
    }
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
        error == std::errc::read_only_file_system || error == std::errc::is_a_directory ||
        error == std::errc::resource_unavailable_try_again ||
        error == std::errc::no_such_device_or_address || error == std::errc::not_supported) {
        return errors::kPermissionDenied;
    }
    if (error == std::errc::filename_too_long) {
        return errors::kBadFileName;
    }
    return errors::kDeviceError;
}

}  // namespace

void throwFileError(std::error_code error) {
    throw AutomationError(numberOf(error));
}

void throwFileError(std::error_code error, const std::filesystem::path& file) {
    std::error_code ignored;
    const std::filesystem::path folder = file.parent_path();
    if (error == std::errc::no_such_file_or_directory && !folder.empty() &&
        !std::filesystem::is_directory(folder, ignored)) {
        throw AutomationError(errors::kPathNotFound);
    }
    throwFileError(error);
}

void refuseLongFile(const std::filesystem::path& file, std::uintmax_t most) {
    throw AutomationError(errors::kInvalidArgument,
                          pathText(file) + u" has more than the " +
                              String(plain::text(static_cast<std::int64_t>(most >> 20U))) +
                              u" MB that are read");
}

}  // namespace kap::platform
