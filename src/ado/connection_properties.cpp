// What a connection can be asked and told, and its description.
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/events.hpp>
#include <kaputil/ado/recordset.hpp>

#include "ado/request_builder.hpp"
#include "automation/class_builder.hpp"
#include "base/quoting.hpp"
#include "data/connection_string.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"
#include "drivers/late_bound/foreign_connection.hpp"

namespace kap::ado {
namespace {

String keyOf(const String& connectionString, std::initializer_list<const char*> names) {
    const auto keys = ado::ConnectionString::parse(connectionString.utf8());
    for (const char* name : names) {
        if (const auto value = keys.find(name)) {
            return *value;
        }
    }
    return {};
}

}  // namespace

const ClassDescription& Connection::classDescription() {
    using kap::Parameter;
    static const ClassDescription description =
        ClassBuilder<Connection>(u"Connection", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b11",
                                 u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b21")
            .events(&ConnectionEvents::classDescription)
            .property<&Connection::CommandTimeout, &Connection::setCommandTimeout>(
                u"CommandTimeout")
            .property<&Connection::ConnectionString, &Connection::setConnectionString>(
                u"ConnectionString")
            .property<&Connection::ConnectionTimeout, &Connection::setConnectionTimeout>(
                u"ConnectionTimeout")
            .property<&Connection::CursorLocation, &Connection::setCursorLocation>(
                u"CursorLocation")
            .property<&Connection::DefaultDatabase, &Connection::setDefaultDatabase>(
                u"DefaultDatabase")
            .property<&Connection::Errors>(u"Errors")
            .property<&Connection::IsolationLevel, &Connection::setIsolationLevel>(
                u"IsolationLevel")
            .property<&Connection::Mode, &Connection::setMode>(u"Mode")
            .property<&Connection::Provider, &Connection::setProvider>(u"Provider")
            .property<&Connection::State>(u"State")
            .property<&Connection::Version>(u"Version")
            .method<&Connection::BeginTrans>(u"BeginTrans")
            .method<&Connection::Cancel>(u"Cancel")
            .method<&Connection::Close>(u"Close")
            .method<&Connection::CommitTrans>(u"CommitTrans")
            .method<&Connection::Execute>(
                u"Execute",
                {u"CommandText", Parameter(u"RecordsAffected").otherwise(Variant::missing()),
                 Parameter(u"Options").otherwise(-1)})
            .method<&Connection::Open>(
                u"Open",
                {Parameter(u"ConnectionString").otherwise(u""), Parameter(u"UserID").otherwise(u""),
                 Parameter(u"Password").otherwise(u""), Parameter(u"Options").otherwise(-1)})
            .method<&Connection::OpenSchema>(
                u"OpenSchema", {u"Schema", Parameter(u"Restrictions").otherwise(Variant::missing()),
                                Parameter(u"SchemaID").otherwise(Variant::missing())})
            .method<&Connection::RollbackTrans>(u"RollbackTrans")
            .property<&Connection::Attributes, &Connection::setAttributes>(u"Attributes")
            .property<&Connection::Properties>(u"Properties")
            .build(u"ConnectionString");
    return description;
}

void Connection::setCursorLocation(CursorLocationEnum value) {
    if (value != CursorLocationEnum::adUseServer && value != CursorLocationEnum::adUseClient) {
        fail::invalidArgument();
    }
    cursorLocation_ = value;
}

void Connection::setCommandTimeout(std::int32_t seconds) {
    if (foreign_) {
        late_bound::setCommandTimeout(foreign_, checkedSeconds(seconds));
        return;
    }
    commandTimeout_ = checkedSeconds(seconds);
}

void Connection::setConnectionTimeout(std::int32_t seconds) {
    requireClosed();
    connectionTimeout_ = checkedSeconds(seconds);
}

String Connection::Provider() const {
    String named = keyOf(ConnectionString(), {"Provider"});
    if (!named.empty()) {
        return named;
    }
    return provider_.empty() ? String(u"MSDASQL") : provider_;
}

void Connection::setProvider(const String& value) {
    requireClosed();
    provider_ = value;
}

void Connection::setMode(ConnectModeEnum value) {
    requireClosed();
    if (value < ConnectModeEnum::adModeUnknown || value > ConnectModeEnum::adModeShareDenyNone) {
        fail::invalidArgument();
    }
    mode_ = value;
}

String Connection::DefaultDatabase() const {
    return database_.empty() ? keyOf(ConnectionString(), {"Initial Catalog", "Database"})
                             : database_;
}

void Connection::setDefaultDatabase(const String& value) {
    static_cast<void>(Execute(String(u"USE ") + enclosed(value.view(), u'[', u']')));
    database_ = value;
}

void Connection::setIsolationLevel(IsolationLevelEnum value) {
    switch (value) {
        case IsolationLevelEnum::adXactUnspecified:
        case IsolationLevelEnum::adXactChaos:
        case IsolationLevelEnum::adXactReadUncommitted:
        case IsolationLevelEnum::adXactReadCommitted:
        case IsolationLevelEnum::adXactRepeatableRead:
        case IsolationLevelEnum::adXactSerializable:
            isolationLevel_ = value;
            isolationChosen_ = true;
            return;
    }
    fail::invalidArgument();
}

}  // namespace kap::ado
