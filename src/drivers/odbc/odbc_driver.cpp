#include "drivers/odbc/odbc_driver.hpp"

#include <array>
#include <string>
#include <vector>

#include "base/unicode.hpp"
#include "drivers/odbc/connect_text.hpp"
#include "drivers/odbc/handles.hpp"
#include "drivers/odbc/session.hpp"

namespace kap::ado::odbc {
namespace {

// The names of the drivers that are installed.
std::vector<std::string> installedDrivers() {
    constexpr SQLSMALLINT kLongest = 256;
    std::vector<std::string> names;
    std::array<char16_t, kLongest> name{};
    std::array<char16_t, kLongest> attributes{};
    for (SQLUSMALLINT direction = SQL_FETCH_FIRST;; direction = SQL_FETCH_NEXT) {
        SQLSMALLINT length = 0;
        const SQLRETURN code = SQLDriversW(environment(), direction, wide(name.data()), kLongest,
                                           &length, wide(attributes.data()), kLongest, &length);
        if (!SQL_SUCCEEDED(code)) {
            return names;
        }
        names.push_back(unicode::displayUtf8(std::u16string_view(name.data())));
    }
}

}  // namespace

bool asksForServer(const ConnectionString& keys) {
    if (const auto provider = keys.find("Provider")) {
        return isServerProvider(*provider);
    }
    return keys.find("Driver") || keys.find("DSN") || keys.find("FILEDSN");
}

std::unique_ptr<Session> OdbcDriver::open(const ConnectionString& keys,
                                          std::chrono::seconds timeout) const {
    return std::make_unique<OdbcSession>(connectTextOf(keys, installedDrivers(), timeout));
}

}  // namespace kap::ado::odbc
