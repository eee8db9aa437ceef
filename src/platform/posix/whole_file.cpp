#include "platform/whole_file.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "platform/file_errors.hpp"
#include "platform/posix/descriptor.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kSharedMode = 0664;  // less what the user's mask takes away
constexpr mode_t kPrivateMode = 0600;

void writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = write(descriptor, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            throwFileError(lastError());
        }
        if (written > 0) {
            content.remove_prefix(static_cast<std::size_t>(written));
        }
    }
}

void synchronise(int descriptor) {
    if (fsync(descriptor) != 0) {
        throwFileError(lastError());
    }
}

void synchroniseFolder(const fs::path& folder) {
    const Descriptor opened(
        open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));  // NOLINT(*-vararg)
    if (!opened) {
        throwFileError(lastError());
    }
    synchronise(opened.get());
}

bool isStillAt(int descriptor, const fs::path& path) {
    struct stat opened {};
    struct stat named {};
    return fstat(descriptor, &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// The size of a file that has one, for a device has none.
std::optional<std::uintmax_t> regularSize(int descriptor) {
    struct stat status {};
    const bool regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return regular ? std::optional(static_cast<std::uintmax_t>(status.st_size)) : std::nullopt;
}

[[noreturn]] void refuse() {
    throwFileError(std::make_error_code(std::errc::permission_denied));
}

bool lockAtOnce(int descriptor) {
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

// Removes what a program has left that was killed while it wrote. Whoever still writes has his file
// locked.
void removeStale(const fs::path& path) {
    const Descriptor left(
        open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));  // NOLINT(*-vararg)
    if (left && lockAtOnce(left.get()) && isStillAt(left.get(), path)) {
        unlink(path.c_str());
    }
}

// A new file beside the one to be replaced, removed again unless it takes its place. Its name is
// free or was left by somebody who is gone, so that at most a few of them ever stay.
class Replacement {
public:
    Replacement(const fs::path& file, mode_t mode) {
        constexpr int kMostWriters = 1000;
        for (int number = 0; number < kMostWriters && !opened_; ++number) {
            make(nameBeside(file, number), mode);
        }
        if (!opened_) {
            throwFileError(std::make_error_code(std::errc::file_exists));
        }
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!path_.empty()) {
            unlink(path_.c_str());
        }
    }

    [[nodiscard]] int descriptor() const noexcept { return opened_.get(); }

    void takePlaceOf(const fs::path& file) {
        if (rename(path_.c_str(), file.c_str()) != 0) {
            throwFileError(lastError());
        }
        path_.clear();
    }

private:
    // Long names are cut: two files may share a name here.
    static fs::path nameBeside(const fs::path& file, int number) {
        constexpr std::size_t kLongestPart = 200;
        const std::string part = file.filename().string().substr(0, kLongestPart);
        return file.parent_path() / ("." + part + ".kap" + plain::text(number) + ".tmp");
    }

    // Makes the file, unless somebody else has one of this name.
    void make(fs::path path, mode_t mode) {
        Descriptor made = created(path, mode);
        if (!made && errno == EEXIST) {
            removeStale(path);
            made = created(path, mode);
        }
        if (!made && errno != EEXIST) {
            throwFileError(lastError());
        }
        // Who came between takes it for left behind.
        if (made && lockAtOnce(made.get()) && isStillAt(made.get(), path)) {
            opened_ = std::move(made);
            path_ = std::move(path);
        }
    }

    static Descriptor created(const fs::path& path, mode_t mode) {
        return Descriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                               mode));  // NOLINT(*-vararg)
    }

    fs::path path_;
    Descriptor opened_;
};

}  // namespace

fs::path realFile(const fs::path& file) {
    std::error_code error;
    fs::path real = fs::canonical(file, error);
    return error ? fs::absolute(file) : real;
}

std::optional<std::string> readFile(const fs::path& file, std::uintmax_t most) {
    // A pipe would be waited for until somebody writes it.
    const Descriptor opened(
        open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));  // NOLINT(*-vararg)
    if (!opened) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        throwFileError(lastError());
    }
    refusePipe(opened.get());
    const auto size = regularSize(opened.get());
    if (size.value_or(0) > most) {
        refuseLongFile(file, most);
    }
    std::string content;
    std::array<char, 1 << 16> buffer{};
    for (;;) {
        const ssize_t got = read(opened.get(), buffer.data(), buffer.size());
        if (got == 0) {
            return content;
        }
        if (got < 0 && errno != EINTR) {
            throwFileError(lastError());
        }
        if (got > 0 && !size) {
            refuse();  // a device: one that is empty may be read, another has no content of its own
        }
        if (got > 0) {
            content.append(buffer.data(), static_cast<std::size_t>(got));
        }
        if (content.size() > most) {
            refuseLongFile(file, most);
        }
    }
}

void replaceFile(const fs::path& file, std::string_view content, FileAccess access) {
    const fs::path real = realFile(file);
    struct stat before {};
    const bool isThere = stat(real.c_str(), &before) == 0;
    if (isThere && !S_ISREG(before.st_mode) && !S_ISDIR(before.st_mode)) {
        refuse();  // a pipe or a device would be a file afterwards, for everybody
    }
    Replacement replacement(real, access == FileAccess::Private ? kPrivateMode : kSharedMode);
    if (isThere && fchmod(replacement.descriptor(), before.st_mode & 07777U) != 0) {
        throwFileError(lastError());
    }
    writeAll(replacement.descriptor(), content);
    synchronise(replacement.descriptor());
    replacement.takePlaceOf(real);
    synchroniseFolder(real.parent_path());
}

void makePrivateFolder(const fs::path& folder) {
    constexpr mode_t kMode = 0700;
    std::error_code ignored;
    if (folder.empty() || fs::is_directory(folder, ignored)) {
        return;
    }
    if (folder.parent_path() != folder) {
        makePrivateFolder(folder.parent_path());
    }
    if (mkdir(folder.c_str(), kMode) != 0 && errno != EEXIST) {
        throwFileError(lastError());
    }
}

}  // namespace kap::platform
