#pragma once

#include <filesystem>
#include <optional>

#include <kaputil/automation/string.hpp>
#include <kaputil/base/export.hpp>

namespace kap::platform {

enum class MessageSeverity : unsigned char { Information, Warning, Error };

// What a message box becomes where nobody is there to read it: its text is logged, and the caller
// goes on as if the box had been acknowledged.
//
// One entry is appended to the file chosen with `setMessageLog`: local date and time, severity,
// title and text, separated by tabs, in UTF-8. Without a file, or when it cannot be written, the
// entry goes to the host's log. Nothing is raised.
KAPUTIL_EXPORT void showMessage(const String& title, MessageSeverity severity, const String& text);

// The file that entries are appended to, made when it is missing, for the whole process; nullopt
// for the host's log.
KAPUTIL_EXPORT void setMessageLog(std::optional<std::filesystem::path> file);

// The title of a message box that names none: the host application.
[[nodiscard]] KAPUTIL_EXPORT String defaultMessageTitle();

}  // namespace kap::platform
