#include <gio/gio.h>
#include <gmime/gmime.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>

#include <kaputil/automation/error.hpp>

#include "platform/file_errors.hpp"
#include "platform/loaded_library.hpp"
#include "platform/mail/draft.hpp"
#include "platform/whole_file.hpp"

namespace kap::platform::mail {
namespace {

// What makes messages is loaded with the first of them. Its functions, and those of the libraries
// that it stands on, are called by their own names.
constexpr LoadedLibrary kMessages("libgmime-3.0.so.0");

// NOLINTBEGIN(readability-identifier-naming)
#define KAPUTIL_MESSAGES(name) \
    constinit const LoadedFunction<decltype(::name)> name(kMessages, #name)
KAPUTIL_MESSAGES(g_content_type_get_mime_type);
KAPUTIL_MESSAGES(g_content_type_guess);
KAPUTIL_MESSAGES(g_date_time_new_now_local);
KAPUTIL_MESSAGES(g_date_time_unref);
KAPUTIL_MESSAGES(g_free);
KAPUTIL_MESSAGES(g_mime_data_wrapper_new_with_stream);
KAPUTIL_MESSAGES(g_mime_format_options_free);
KAPUTIL_MESSAGES(g_mime_format_options_new);
KAPUTIL_MESSAGES(g_mime_format_options_set_newline_format);
KAPUTIL_MESSAGES(g_mime_init);
KAPUTIL_MESSAGES(g_mime_message_get_from);
KAPUTIL_MESSAGES(g_mime_message_get_to);
KAPUTIL_MESSAGES(g_mime_message_new);
KAPUTIL_MESSAGES(g_mime_message_set_date);
KAPUTIL_MESSAGES(g_mime_message_set_mime_part);
KAPUTIL_MESSAGES(g_mime_message_set_subject);
KAPUTIL_MESSAGES(g_mime_multipart_add);
KAPUTIL_MESSAGES(g_mime_multipart_new_with_subtype);
KAPUTIL_MESSAGES(g_mime_object_get_type);
KAPUTIL_MESSAGES(g_mime_object_set_content_type_parameter);
KAPUTIL_MESSAGES(g_mime_object_set_disposition);
KAPUTIL_MESSAGES(g_mime_object_set_header);
KAPUTIL_MESSAGES(g_mime_object_to_string);
KAPUTIL_MESSAGES(g_mime_parser_options_get_default);
KAPUTIL_MESSAGES(g_mime_part_new_with_type);
KAPUTIL_MESSAGES(g_mime_part_set_content);
KAPUTIL_MESSAGES(g_mime_part_set_content_encoding);
KAPUTIL_MESSAGES(g_mime_part_set_filename);
KAPUTIL_MESSAGES(g_mime_stream_mem_new_with_buffer);
KAPUTIL_MESSAGES(g_object_unref);
KAPUTIL_MESSAGES(g_type_check_instance_cast);
KAPUTIL_MESSAGES(internet_address_list_append);
KAPUTIL_MESSAGES(internet_address_list_parse);
#undef KAPUTIL_MESSAGES
// NOLINTEND(readability-identifier-naming)

struct Unreference {
    void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using Owned = std::unique_ptr<T, Unreference>;

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

// A header is one line, whatever a caller writes into it.
std::string oneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char unit) { return static_cast<unsigned char>(unit) < 0x20 || unit == 0x7F; },
        ' ');
    return text;
}

// Users separate addresses by semicolons, messages by commas; what stands in quotes is a name.
std::string withCommas(std::string addresses) {
    bool quoted = false;
    for (char& unit : addresses) {
        quoted = quoted != (unit == '"');
        if (unit == ';' && !quoted) {
            unit = ',';
        }
    }
    return addresses;
}

void addAddresses(InternetAddressList* list, const std::string& text) {
    const std::string addresses = withCommas(oneLine(text));
    const Owned<InternetAddressList> parsed(
        internet_address_list_parse(g_mime_parser_options_get_default(), addresses.c_str()));
    if (parsed) {
        internet_address_list_append(list, parsed.get());
    }
}

std::string withPlainLineEnds(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            plain.push_back(text[i]);
        } else if (i + 1 == text.size() || text[i + 1] != '\n') {
            plain.push_back('\n');
        }
    }
    return plain;
}

// A part of these bytes, to be carried in an encoding that passes everywhere.
GMimePart* newPart(const std::string& type, const std::string& subtype, const std::string& bytes,
                   GMimeContentEncoding encoding) {
    GMimePart* part = g_mime_part_new_with_type(type.c_str(), subtype.c_str());
    const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(bytes.data(), bytes.size()));
    const Owned<GMimeDataWrapper> content(
        g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_BINARY));
    g_mime_part_set_content(part, content.get());
    g_mime_part_set_content_encoding(part, encoding);
    return part;
}

Owned<GMimeObject> bodyPart(const Draft& draft) {
    GMimePart* part = newPart("text", draft.html ? "html" : "plain", withPlainLineEnds(draft.body),
                              GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE);
    g_mime_object_set_content_type_parameter(GMIME_OBJECT(part), "charset", "utf-8");
    return Owned<GMimeObject>(GMIME_OBJECT(part));
}

// The kind of a file by its name. A message in a message would have to be left readable: it goes
// as plain bytes.
std::string mediaTypeOf(const std::filesystem::path& file) {
    constexpr const char* kBytes = "application/octet-stream";
    const OwnedText type(g_content_type_guess(file.filename().c_str(), nullptr, 0, nullptr));
    const OwnedText media(g_content_type_get_mime_type(type.get()));
    const std::string found = media ? media.get() : kBytes;
    return found.starts_with("message/") || found.starts_with("multipart/") ||
                   found.find('/') == std::string::npos
               ? kBytes
               : found;
}

Owned<GMimeObject> attachmentPart(const std::filesystem::path& file) {
    const auto bytes = readFile(file, kLargestMessage);
    if (!bytes) {
        throwFileError(std::make_error_code(std::errc::no_such_file_or_directory), file);
    }
    const std::string media = mediaTypeOf(file);
    const std::size_t slash = media.find('/');
    GMimePart* part = newPart(media.substr(0, slash), media.substr(slash + 1), *bytes,
                              GMIME_CONTENT_ENCODING_BASE64);
    g_mime_object_set_disposition(GMIME_OBJECT(part), "attachment");
    g_mime_part_set_filename(part, file.filename().c_str());
    return Owned<GMimeObject>(GMIME_OBJECT(part));
}

Owned<GMimeObject> contentOf(const Draft& draft) {
    Owned<GMimeObject> body = bodyPart(draft);
    if (draft.attachments.empty()) {
        return body;
    }
    GMimeMultipart* all = g_mime_multipart_new_with_subtype("mixed");
    Owned<GMimeObject> owned(GMIME_OBJECT(all));
    g_mime_multipart_add(all, body.get());
    for (const std::filesystem::path& file : draft.attachments) {
        const Owned<GMimeObject> part = attachmentPart(file);
        g_mime_multipart_add(all, part.get());
    }
    return owned;
}

void putHeaders(GMimeMessage* message, const Draft& draft) {
    if (const char* sender = std::getenv("EMAIL")) {  // NOLINT(concurrency-mt-unsafe)
        addAddresses(g_mime_message_get_from(message), sender);
    }
    addAddresses(g_mime_message_get_to(message), draft.to);
    g_mime_message_set_subject(message, oneLine(draft.subject).c_str(), "utf-8");
    const std::unique_ptr<GDateTime, decltype(&::g_date_time_unref)> now(
        g_date_time_new_now_local(), g_date_time_unref);
    g_mime_message_set_date(message, now.get());
    g_mime_object_set_header(GMIME_OBJECT(message), "X-Unsent", "1", nullptr);
}

// The library that makes messages ends the program when there is no memory. So the size is looked
// at before, and whether there is room for what it makes of that: the bytes, their encoded form
// and the text of the whole, which grows as it is written.
void requireRoom(const Draft& draft) {
    constexpr std::uintmax_t kTimesInMemory = 8;
    constexpr std::uintmax_t kForTheRest = 1 << 20;
    std::uintmax_t size = draft.to.size() + draft.subject.size() + draft.body.size();
    for (const std::filesystem::path& file : draft.attachments) {
        std::error_code ignored;  // one that is not there is told when it is read
        const std::uintmax_t bytes = std::filesystem::file_size(file, ignored);
        size += ignored ? 0 : bytes;
    }
    if (size > kLargestMessage) {
        throw AutomationError(errors::kInvalidArgument,
                              u"A message with its attachments has at most 150 MB");
    }
    ::operator delete(::operator new(kTimesInMemory* size + kForTheRest));
}

}  // namespace

std::string messageText(const Draft& draft) {
    requireRoom(draft);
    static std::once_flag begun;
    std::call_once(begun, g_mime_init);
    const Owned<GMimeMessage> message(g_mime_message_new(TRUE));
    putHeaders(message.get(), draft);
    const Owned<GMimeObject> content = contentOf(draft);
    g_mime_message_set_mime_part(message.get(), content.get());

    const std::unique_ptr<GMimeFormatOptions, decltype(&::g_mime_format_options_free)> options(
        g_mime_format_options_new(), g_mime_format_options_free);
    g_mime_format_options_set_newline_format(options.get(), GMIME_NEWLINE_FORMAT_DOS);
    const OwnedText text(g_mime_object_to_string(GMIME_OBJECT(message.get()), options.get()));
    return text.get();
}

}  // namespace kap::platform::mail
