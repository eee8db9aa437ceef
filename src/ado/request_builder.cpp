#include "ado/request_builder.hpp"

#include <string>

#include "data/failures.hpp"

namespace kap::ado {
namespace {

// What is said about how the text is run, beside its kind: not to wait, and to want no rows.
constexpr std::int32_t kHow = 0x10 | 0x20 | 0x40 | 0x80 | 0x400;

}  // namespace

Request requestFor(const String& text, std::int32_t options) {
    if (text.empty()) {
        fail::noCommandText();
    }
    Request request;
    request.text = text.utf8();
    const std::int32_t kind = options < 0 ? options : options & ~kHow;
    switch (static_cast<CommandTypeEnum>(kind)) {
        case CommandTypeEnum::adCmdUnspecified:
        case CommandTypeEnum::adCmdText:
        case CommandTypeEnum::adCmdUnknown:
            break;
        case CommandTypeEnum::adCmdTable:
        case CommandTypeEnum::adCmdTableDirect:
            request.table = true;
            break;
        case CommandTypeEnum::adCmdStoredProc:
            request.procedure = true;
            break;
        default:
            if (kind != 0) {
                fail::invalidArgument();
            }
    }
    return request;
}

void comeAsNeeded(Request& request, bool readOnce, std::int32_t options) noexcept {
    const auto asks = [options](ExecuteOptionEnum option) {
        return options >= 0 && (options & static_cast<std::int32_t>(option)) != 0;
    };
    if (!readOnce && asks(ExecuteOptionEnum::adAsyncFetchNonBlocking)) {
        request.fetching = Request::Fetching::NonBlocking;
    } else if (!readOnce && asks(ExecuteOptionEnum::adAsyncFetch)) {
        request.fetching = Request::Fetching::Background;
    }
    const bool streams = readOnce || request.fetching != Request::Fetching::WhenNeeded;
    request.streaming = streams ? Request::Streaming::OfReading : Request::Streaming::Never;
    request.oneByOne = readOnce;
}

bool saysKind(std::int32_t options) noexcept {
    return options >= 0 && (options & ~kHow) != 0;
}

bool wantsNoRecords(std::int32_t options) noexcept {
    return options >= 0 &&
           (options & static_cast<std::int32_t>(ExecuteOptionEnum::adExecuteNoRecords)) != 0;
}

std::int32_t checkedSeconds(std::int32_t seconds) {
    if (seconds < 0) {
        fail::invalidArgument();
    }
    return seconds;
}

}  // namespace kap::ado
