#include "ado/request_builder.hpp"

#include <string>

#include "data/failures.hpp"

namespace kap::ado {
namespace {

// What is said about how the text is run, beside its kind: not to wait, and to want no rows. A call
// always ends when its work has ended, so that the former changes nothing.
constexpr std::int32_t kHow = 0x10 | 0x20 | 0x40 | 0x80 | 0x400;

}  // namespace

Request requestFor(const String& text, std::int32_t options) {
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
