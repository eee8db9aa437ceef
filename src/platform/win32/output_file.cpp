#include "platform/output_file.hpp"

#include "platform/file_errors.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform {
namespace {

DWORD dispositionOf(OutputFile::Begin begin) {
    switch (begin) {
        case OutputFile::Begin::Empty:
            return CREATE_ALWAYS;
        case OutputFile::Begin::New:
            return CREATE_NEW;
        case OutputFile::Begin::AtEnd:
            break;
    }
    return OPEN_EXISTING;
}

}  // namespace

// With the right to append and no other, every write goes to the end in one step.
OutputFile::OutputFile(const std::filesystem::path& file, Begin begin)
    : descriptor_(HandleToLong(CreateFileW(file.c_str(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           dispositionOf(begin), FILE_ATTRIBUTE_NORMAL, nullptr))) {
    if (handleOf(descriptor_) == INVALID_HANDLE_VALUE) {
        throwFileError(lastError(), file);
    }
}

OutputFile::~OutputFile() {
    const Handle closing(handleOf(descriptor_));
}

void OutputFile::write(std::string_view bytes) {
    constexpr std::size_t kMost = 1U << 30;
    while (!bytes.empty()) {
        const std::size_t part = bytes.size() < kMost ? bytes.size() : kMost;
        DWORD written = 0;
        if (WriteFile(handleOf(descriptor_), bytes.data(), static_cast<DWORD>(part), &written,
                      nullptr) == FALSE) {
            throwFileError(lastError());
        }
        bytes.remove_prefix(written);
    }
}

std::uintmax_t OutputFile::size() const {
    LARGE_INTEGER size{};
    if (GetFileSizeEx(handleOf(descriptor_), &size) == FALSE) {
        throwFileError(lastError());
    }
    return static_cast<std::uintmax_t>(size.QuadPart);
}

}  // namespace kap::platform
