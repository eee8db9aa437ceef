#include "engine/executor/bulk_file.hpp"
#include "engine/executor/function_arguments.hpp"
#include "engine/script/session_functions.hpp"
#include "engine/values/text_units.hpp"
#include "platform/text_encoding.hpp"
#include "tsql/server_error.hpp"

// What OPENROWSET(BULK ...) reads, called by SQLite in the middle of a statement.
namespace kap::engine {
namespace {

constexpr std::string_view kByteOrderMark = "\xFF\xFE";

std::string narrowText(const std::string& bytes) {
    return fromUnits(platform::decodeText(platform::encodingOf(bytes), bytes));
}

std::string wideText(const std::string& bytes) {
    if (!std::string_view(bytes).starts_with(kByteOrderMark)) {
        throw tsql::ServerError(tsql::Message::NoWideFile);
    }
    return fromUnits(platform::fromUtf16Bytes(bytes.substr(kByteOrderMark.size())));
}

}  // namespace

void SessionFunctions::provideFiles() {
    provide("kap_file", 2, &SessionFunctions::wholeFile);
}

// kap_file(name, SINGLE_BLOB, SINGLE_CLOB or SINGLE_NCLOB): all that is in the file.
Value SessionFunctions::wholeFile(const Arguments& arguments) {
    const std::string kind = textAt(arguments, 1);
    std::string bytes = bytesOfFile(textAt(arguments, 0), 0);
    if (kind == "SINGLE_BLOB") return Blob{std::move(bytes)};
    return kind == "SINGLE_NCLOB" ? wideText(bytes) : narrowText(bytes);
}

}  // namespace kap::engine
