#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kap::platform::mail {

// A message that the user is still to send. Texts are UTF-8.
struct Draft {
    std::string to;  // addresses, between them commas or semicolons
    std::string subject;
    std::string body;
    bool html = false;  // what `body` is
    std::vector<std::filesystem::path> attachments;
};

// The most that the texts and attachments of a message may take together, in bytes; no mail server
// takes as much.
inline constexpr std::uintmax_t kLargestMessage = 150'000'000;

// The message as standards have it, marked as not sent yet. The sender is the address in the
// variable EMAIL, none without it. Raises the file-system object's errors for an attachment that
// cannot be read, 5 for a message that is too large, and std::bad_alloc before anything is made
// when there is no memory for it.
[[nodiscard]] std::string messageText(const Draft& draft);

// Puts the message into the user's folder of drafts and gives back its file.
[[nodiscard]] std::filesystem::path keepDraft(const Draft& draft);

// Has the user's desktop open a file in the program for its kind. False when there is no desktop or
// it cannot.
[[nodiscard]] bool openOnDesktop(const std::filesystem::path& file);

}  // namespace kap::platform::mail
