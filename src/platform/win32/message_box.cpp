#include <kaputil/platform/message_box.hpp>

#include <mutex>
#include <string>
#include <vector>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/format.hpp>

#include "automation/clock.hpp"
#include "base/unicode.hpp"
#include "platform/paths.hpp"
#include "platform/win32/wide.hpp"

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

WORD eventType(MessageSeverity severity) {
    switch (severity) {
        case MessageSeverity::Information:
            return EVENTLOG_INFORMATION_TYPE;
        case MessageSeverity::Warning:
            return EVENTLOG_WARNING_TYPE;
        case MessageSeverity::Error:
            break;
    }
    return EVENTLOG_ERROR_TYPE;
}

// Appended in one write, so that several processes do not mix their entries.
bool append(const std::filesystem::path& file, const std::string& entry) {
    void* opened = CreateFileW(file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                               nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return false;
    }
    const Handle closing(opened);
    DWORD written = 0;
    return WriteFile(opened, entry.data(), static_cast<DWORD>(entry.size()), &written, nullptr) !=
               FALSE &&
           written == entry.size();
}

// The application event log, under the library's own name as source.
void report(MessageSeverity severity, const String& text) {
    constexpr DWORD kShownMessage = 1;
    void* log = RegisterEventSourceW(nullptr, L"KapUtil26");
    if (log == nullptr) {
        return;  // there is no log that could take it
    }
    const wchar_t* texts[] = {wide(text)};
    ReportEventW(log, eventType(severity), 0, kShownMessage, nullptr, 1, 0, texts, nullptr);
    DeregisterEventSource(log);
}

}  // namespace

void showMessage(const String& title, MessageSeverity severity, const String& text) {
    if (const auto file = chosenFile()) {
        // Escaped separators: the entry reads the same in every locale.
        const String when = convert::format(localNow(), uR"(yyyy\-mm\-dd hh\:nn\:ss)");
        if (append(*file, when.utf8() + '\t' + severityName(severity) + '\t' +
                              unicode::displayUtf8(title) + '\t' + unicode::displayUtf8(text) +
                              '\n')) {
            return;
        }
    }
    report(severity, title + u": " + text);
}

void setMessageLog(std::optional<std::filesystem::path> file) {
    MessageLog& log = messageLog();
    const std::lock_guard lock(log.guard);
    log.file = std::move(file);
}

String defaultMessageTitle() {
    std::vector<wchar_t> file(MAX_PATH);
    const DWORD length = GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
    return pathText(std::filesystem::path(std::wstring_view(file.data(), length)).stem());
}

}  // namespace kap::platform
