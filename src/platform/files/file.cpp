#include "platform/files/file.hpp"

#include <chrono>
#include <limits>
#include <system_error>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "automation/clock.hpp"
#include "platform/file_errors.hpp"
#include "platform/files/folder.hpp"
#include "platform/paths.hpp"

namespace kap::platform::files {
namespace {

namespace fs = std::filesystem;

// Where a file goes that is sent to a destination.
fs::path targetOf(const fs::path& file, const String& destination) {
    const fs::path target = locate(destination);
    std::error_code ignored;
    const bool isFolder = fs::is_directory(target, ignored) || !target.has_filename();
    return isFolder ? target / file.filename() : target;
}

}  // namespace

File::File(fs::path path) : path_(std::move(path)) {}

const ClassDescription& File::classDescription() {
    constexpr std::int32_t kReading = static_cast<std::int32_t>(IoMode::Reading);
    static const ClassDescription description =
        ClassBuilder<File>(u"File", u"", u"")
            .property<&File::Path>(u"Path")
            .property<&File::Name>(u"Name")
            .property<&File::ParentFolder>(u"ParentFolder")
            .property<&File::DateLastModified>(u"DateLastModified")
            .property<&File::Size>(u"Size")
            .method<&File::Delete>(u"Delete", {Parameter(u"Force").otherwise(false)})
            .method<&File::Copy>(u"Copy",
                                 {u"Destination", Parameter(u"OverWriteFiles").otherwise(true)})
            .method<&File::Move>(u"Move", {u"Destination"})
            .method<&File::OpenAsTextStream>(u"OpenAsTextStream",
                                             {Parameter(u"IOMode").otherwise(kReading),
                                              Parameter(u"Format").otherwise(std::int32_t{0})})
            .build(u"Path");
    return description;
}

String File::Path() {
    return pathText(path_);
}

String File::Name() {
    return pathText(path_.filename());
}

Variant File::Size() {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path_, error);
    checkFile(error);
    if (size > static_cast<std::uintmax_t>(std::numeric_limits<std::int32_t>::max())) {
        return static_cast<double>(size);
    }
    return static_cast<std::int32_t>(size);
}

Date File::DateLastModified() {
    return lastModified(path_);
}

Ref<Folder> File::ParentFolder() {
    return make<Folder>(path_.parent_path());
}

void File::Delete(bool /*force*/) {
    removeFile(path_);
}

void File::Copy(const String& destination, bool overwriteFiles) {
    copyFile(path_, destination, overwriteFiles);
}

void File::Move(const String& destination) {
    path_ = moveFile(path_, destination);
}

Ref<TextStream> File::OpenAsTextStream(std::int32_t ioMode, std::int32_t format) {
    return openTextStream(path_, ioMode, /*create=*/false, format);
}

void removeFile(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(fs::status(file, error))) {
        throwFileError(std::make_error_code(std::errc::no_such_file_or_directory), file);
    }
    fs::remove(file, error);
    checkFile(error);
}

void copyFile(const fs::path& file, const String& destination, bool overwrite) {
    const fs::path target = targetOf(file, destination);
    std::error_code error;
    fs::copy_file(file, target,
                  overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none, error);
    if (error) {
        throwFileError(error, target);
    }
}

fs::path moveFile(const fs::path& file, const String& destination) {
    fs::path target = targetOf(file, destination);
    std::error_code error;
    if (!fs::is_regular_file(fs::status(file, error))) {
        throwFileError(std::make_error_code(std::errc::no_such_file_or_directory), file);
    }
    if (fs::exists(target, error)) {
        throw AutomationError(errors::kFileAlreadyExists);
    }
    fs::rename(file, target, error);
    if (error == std::errc::cross_device_link) {
        fs::copy_file(file, target, error);
        if (!error) {
            fs::remove(file, error);
        }
    }
    if (error) {
        throwFileError(error, target);
    }
    return target;
}

Date lastModified(const fs::path& path) {
    std::error_code error;
    const fs::file_time_type time = fs::last_write_time(path, error);
    checkFile(error);
    return localTime(std::chrono::time_point_cast<std::chrono::system_clock::duration>(
        std::chrono::file_clock::to_sys(time)));
}

}  // namespace kap::platform::files
