#include <kaputil/platform/message_box.hpp>

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <string>
#include <system_error>

#include <kaputil/automation/format.hpp>

#include "automation/clock.hpp"
#include "base/unicode.hpp"

namespace kap::platform {
namespace {

struct MessageLog {
    std::mutex guard;
    std::optional<std::filesystem::path> file;
};

MessageLog& messageLog() {
    static MessageLog log;
    return log;
}

std::optional<std::filesystem::path> chosenFile() {
    MessageLog& log = messageLog();
    const std::lock_guard lock(log.guard);
    return log.file;
}

const char* severityName(MessageSeverity severity) {
    switch (severity) {
        case MessageSeverity::Information:
            return "information";
        case MessageSeverity::Warning:
            return "warning";
        case MessageSeverity::Error:
            break;
    }
    return "error";
}

int systemPriority(MessageSeverity severity) {
    switch (severity) {
        case MessageSeverity::Information:
            return LOG_INFO;
        case MessageSeverity::Warning:
            return LOG_WARNING;
        case MessageSeverity::Error:
            break;
    }
    return LOG_ERR;
}

// Appended in one write, so that several processes do not mix their entries.
bool append(const std::filesystem::path& file, const std::string& entry) {
    constexpr int kMode = 0666;  // less what the user's mask takes away
    const int descriptor =
        open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC,
             kMode);  // NOLINT(*-vararg)
    if (descriptor < 0) {
        return false;
    }
    ssize_t written = 0;
    do {
        written = write(descriptor, entry.data(), entry.size());
    } while (written < 0 && errno == EINTR);
    return close(descriptor) == 0 && written == static_cast<ssize_t>(entry.size());
}

}  // namespace

void showMessage(const String& title, MessageSeverity severity, const String& text) {
    const std::string shownTitle = unicode::displayUtf8(title);
    const std::string shownText = unicode::displayUtf8(text);
    if (const auto file = chosenFile()) {
        // Escaped separators: the entry reads the same in every locale.
        const String when = convert::format(localNow(), uR"(yyyy\-mm\-dd hh\:nn\:ss)");
        if (append(*file, when.utf8() + '\t' + severityName(severity) + '\t' + shownTitle + '\t' +
                              shownText + '\n')) {
            return;
        }
    }
    syslog(LOG_USER | systemPriority(severity), "%s: %s", shownTitle.c_str(),  // NOLINT(*-vararg)
           shownText.c_str());
}

void setMessageLog(std::optional<std::filesystem::path> file) {
    MessageLog& log = messageLog();
    const std::lock_guard lock(log.guard);
    log.file = std::move(file);
}

String defaultMessageTitle() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return unicode::utf16(program.filename().string()).value_or(u"");
}

}  // namespace kap::platform
