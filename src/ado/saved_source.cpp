#include "ado/saved_source.hpp"

#include <filesystem>
#include <system_error>

#include <kaputil/ado/stream.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "base/ascii.hpp"
#include "data/connection_string.hpp"
#include "data/failures.hpp"
#include "platform/paths.hpp"
#include "platform/whole_file.hpp"

namespace kap::ado {

bool isPersistProvider(const Variant& connection) {
    if (!connection.isString()) {
        return false;
    }
    const auto keys = ConnectionString::parse(connection.as<String>().utf8());
    const auto provider = keys.find("Provider");
    return provider && equalsIgnoringCase(*provider, "MSPersist");
}

bool isStream(const Variant& source) {
    return source.isObject() &&
           dynamic_cast<const Stream*>(source.as<Ref<Object>>().get()) != nullptr;
}

bool isFile(const Variant& source) {
    if (!source.isString() || source.as<String>().empty()) {
        return false;
    }
    try {
        std::error_code ignored;
        return std::filesystem::is_regular_file(platform::locate(source.as<String>().view()),
                                                ignored);
    } catch (const AutomationError&) {
        return false;  // a text that no file can be named: a query
    }
}

std::string savedContent(const Variant& source) {
    if (isStream(source)) {
        return static_cast<const Stream&>(*source.as<Ref<Object>>()).bytes();
    }
    auto file = make<Stream>();
    file->setType(StreamTypeEnum::adTypeBinary);
    file->Open();
    file->LoadFromFile(convert::toString(source));
    return file->bytes();
}

}  // namespace kap::ado
