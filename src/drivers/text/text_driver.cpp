#include "drivers/text/text_driver.hpp"

#include <filesystem>
#include <system_error>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "base/unicode.hpp"
#include "drivers/driver_registry.hpp"
#include "drivers/text/failure.hpp"
#include "drivers/text/text_session.hpp"
#include "platform/paths.hpp"

namespace kap::ado::text_files {
namespace {

constexpr const char* kName = "Microsoft Text Driver (*.txt; *.csv)";

}  // namespace

void failWith(std::int32_t number, const String& text) {
    throw ado::DriverError({{0, number, "HY000", unicode::displayUtf8(text), 0}}, u"Text Driver");
}

void TextDriver::offer() {
    static const TextDriver driver;
    static const ado::DriverRegistration registration(kName, driver);
}

std::unique_ptr<ado::Session> TextDriver::open(const ado::ConnectionString& keys,
                                               std::chrono::seconds /*timeout: no server*/) const {
    const String folder(keys.find("Dbq").value_or(""));
    std::filesystem::path path = platform::locate(folder);
    std::error_code ignored;
    if (!std::filesystem::is_directory(path, ignored)) {
        failWith(ado::errors::kLogin, u"\"" + folder + u"\" non è una cartella.");
    }
    return std::make_unique<TextSession>(std::move(path));
}

}  // namespace kap::ado::text_files
