#include "drivers/late_bound/late_bound_driver.hpp"

#include <kaputil/automation/variant.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "automation/late_bound.hpp"
#include "drivers/late_bound/late_bound_session.hpp"

namespace kap::ado::late_bound {
namespace {

// The string again, each value in quotes, which every provider reads.
String textOf(const ConnectionString& keys) {
    std::string text;
    for (const ConnectionString::Pair& pair : keys.pairs()) {
        std::string value;
        for (const char byte : pair.value) {
            value += byte;
            if (byte == '"') {
                value += byte;
            }
        }
        text += (text.empty() ? "" : ";") + pair.key + "=\"" + value + "\"";
    }
    return text;
}

}  // namespace

std::unique_ptr<Session> LateBoundDriver::open(const ConnectionString& keys,
                                               std::chrono::seconds timeout) const {
    const Ref<Object> connection = make_();
    if (!connection) {
        throw AutomationError(errors::kProviderNotFound,
                              u"The data-access objects of the system are not installed.",
                              u"ADODB");
    }
    late::let(Variant(connection), u"ConnectionTimeout",
              static_cast<std::int32_t>(timeout.count()));
    late::call(Variant(connection), u"Open", {textOf(keys)});
    return std::make_unique<LateBoundSession>(connection);
}

}  // namespace kap::ado::late_bound
