// What the provider of a connection tells, and lets be chosen before it is opened.
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/connection_notices.hpp"
#include "automation/class_builder.hpp"
#include "base/quoting.hpp"
#include "data/connection_string.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

using Details = Property::Details;

// What reads and writes follow is that of one of the server's own statements.
constexpr std::int32_t kDefinitionsInTransactions = 8;  // DBPROPVAL_TC_ALL
constexpr std::int32_t kNamesIgnoreCase = 8;            // DBPROPVAL_IC_MIXED

Details constant(const char16_t* name, DataTypeEnum type, const Variant& value) {
    return {name, type, [value] { return value; }};
}

String withLogin(const String& keys, const String& userId, const String& password) {
    String all = keys;
    if (!userId.empty()) {
        all += u";User ID=\"" + userId.units() + u"\"";
    }
    if (!password.empty()) {
        all += u";Password=\"" + password.units() + u"\"";
    }
    return all;
}

}  // namespace

// What a driver is given.
ado::ConnectionString Connection::prepared(const Opening& wanted) {
    requireClosed();
    if (!wanted.connectionString.empty()) {
        setConnectionString(wanted.connectionString);
    }
    std::optional<ado::ConnectionString> keys;
    reporting([&] {
        keys = ado::ConnectionString::parse(
            completed(withLogin(keys_, wanted.userId, wanted.password)).utf8());
    });
    return std::move(*keys);
}

void Connection::opened(const Opening& wanted) {
    keys_ = withLogin(keys_, wanted.userId, wanted.password);
    connectionString_ = String(ado::ConnectionString::shown(connectionString_.utf8()));
}

void Connection::setAttributes(std::int32_t value) {
    constexpr auto kKnown = static_cast<std::int32_t>(XactAttributeEnum::adXactCommitRetaining) |
                            static_cast<std::int32_t>(XactAttributeEnum::adXactAbortRetaining);
    if ((value & ~kKnown) != 0) {
        fail::invalidArgument();
    }
    attributes_ = value;
}

Variant Connection::keyValue(const char* name, const char* otherName) const {
    const auto keys = ado::ConnectionString::parse(ConnectionString().utf8());
    for (const char* each : {name, otherName}) {
        if (const auto value = keys.find(each)) {
            return String(*value);
        }
    }
    return String();
}

// The last one of two keys of a name counts.
void Connection::setKey(const char* name, const Variant& value) {
    requireClosed();
    const String given = convert::toString(value);
    const String key(name);
    const String before = ConnectionString();
    setConnectionString(before + (before.empty() ? u"" : u";") + key.units() + u"=" +
                        enclosed(given.view(), u'"', u'"'));
}

Ref<Properties> Connection::Properties() {
    const Ref<Connection> self(this);
    std::vector<Details> all;
    const auto key = [&](const char16_t* name, const char* first, const char* second) {
        all.push_back({name, DataTypeEnum::adBSTR,
                       [self, first, second] { return self->keyValue(first, second); },
                       [self, first](const Variant& value) { self->setKey(first, value); }});
    };
    key(u"Data Source", "Data Source", "Server");
    key(u"Extended Properties", "Extended Properties", "Extended Properties");
    key(u"Initial Catalog", "Initial Catalog", "Database");
    key(u"Password", "Password", "PWD");
    key(u"Persist Security Info", "Persist Security Info", "Persist Security Info");
    key(u"User ID", "User ID", "UID");
    all.push_back(
        {u"Connect Timeout", DataTypeEnum::adInteger,
         [self] { return Variant(self->ConnectionTimeout()); },
         [self](const Variant& value) { self->setConnectionTimeout(convert::toLong(value)); }});
    all.push_back(
        {u"General Timeout", DataTypeEnum::adInteger,
         [self] { return Variant(self->CommandTimeout()); },
         [self](const Variant& value) { self->setCommandTimeout(convert::toLong(value)); }});
    all.push_back({u"Mode", DataTypeEnum::adInteger,
                   [self] { return Variant(static_cast<std::int32_t>(self->Mode())); },
                   [self](const Variant& value) {
                       self->setMode(static_cast<ConnectModeEnum>(convert::toLong(value)));
                   }});
    // Nobody is ever asked: what the string leaves out is an error.
    all.push_back({u"Prompt", DataTypeEnum::adSmallInt,
                   [self] { return Variant(static_cast<std::int16_t>(self->prompt_)); },
                   [self](const Variant& value) { self->prompt_ = convert::toLong(value); }});
    all.push_back(
        {u"Current Catalog", DataTypeEnum::adBSTR,
         [self] { return Variant(self->DefaultDatabase()); },
         [self](const Variant& value) { self->setDefaultDatabase(convert::toString(value)); }});
    const auto told = [&](const char16_t* name, std::string Product::*part) {
        all.push_back({name, DataTypeEnum::adBSTR,
                       [self, part] { return Variant(String(self->session()->product().*part)); }});
    };
    if (State() == ObjectStateEnum::adStateOpen) {
        told(u"DBMS Name", &Product::name);
        told(u"DBMS Version", &Product::version);
        told(u"Server Name", &Product::server);
        told(u"Data Source Name", &Product::server);
        told(u"User Name", &Product::user);
        all.push_back(
            {u"Provider Name", DataTypeEnum::adBSTR, [self] { return Variant(self->Provider()); }});
        all.push_back({u"Read-Only Data Source", DataTypeEnum::adBoolean, [self] {
                           const String mode = convert::toString(self->keyValue("Mode", "Mode"));
                           return Variant(self->Mode() == ConnectModeEnum::adModeRead ||
                                          mode == String(u"Read"));
                       }});
        all.push_back(
            constant(u"Transaction DDL", DataTypeEnum::adInteger, kDefinitionsInTransactions));
        all.push_back(
            constant(u"Identifier Case Sensitivity", DataTypeEnum::adInteger, kNamesIgnoreCase));
        all.push_back(constant(u"Multiple Results", DataTypeEnum::adInteger, std::int32_t{1}));
        all.push_back(constant(u"Autocommit Isolation Levels", DataTypeEnum::adInteger,
                               static_cast<std::int32_t>(IsolationLevelEnum::adXactReadCommitted)));
    }
    return make<ado::Properties>(std::move(all));
}

}  // namespace kap::ado
