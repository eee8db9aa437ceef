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
            .summary(u"An open session with a database.")
            .events(&ConnectionEvents::classDescription)
            .property<&Connection::CommandTimeout, &Connection::setCommandTimeout>(
                u"CommandTimeout", u"Seconds that a script may run; 0: no limit.")
            .property<&Connection::ConnectionString, &Connection::setConnectionString>(
                u"ConnectionString", u"The keys that say which database to open.")
            .property<&Connection::ConnectionTimeout, &Connection::setConnectionTimeout>(
                u"ConnectionTimeout", u"Seconds that opening may take; 0: no limit.")
            .property<&Connection::CursorLocation, &Connection::setCursorLocation>(
                u"CursorLocation", u"Where the cursors of Execute's recordsets live.")
            .property<&Connection::DefaultDatabase, &Connection::setDefaultDatabase>(
                u"DefaultDatabase", u"The server's database in use.")
            .property<&Connection::Errors>(u"Errors", u"The errors of the last failed operation.")
            .property<&Connection::IsolationLevel, &Connection::setIsolationLevel>(
                u"IsolationLevel", u"How far transactions are kept apart.")
            .property<&Connection::Mode, &Connection::setMode>(u"Mode", u"1 read, 2 write, 3 both.")
            .property<&Connection::Provider, &Connection::setProvider>(u"Provider",
                                                                       u"The provider's name.")
            .property<&Connection::State>(u"State", u"0 closed, 1 open.")
            .property<&Connection::Version>(u"Version", u"The version of the data-access objects.")
            .method<&Connection::BeginTrans>(u"BeginTrans", {},
                                             u"Begins a transaction; gives the nesting level.")
            .method<&Connection::Cancel>(u"Cancel", {}, u"Ends what is running.")
            .method<&Connection::Close>(u"Close", {}, u"Closes the database.")
            .method<&Connection::CommitTrans>(u"CommitTrans", {}, u"Commits the transaction.")
            .method<&Connection::Execute>(
                u"Execute",
                {u"CommandText", Parameter(u"RecordsAffected").otherwise(Variant::missing()),
                 Parameter(u"Options").otherwise(-1)},
                u"Runs a script.")
            .method<&Connection::Open>(
                u"Open",
                {Parameter(u"ConnectionString").otherwise(u""), Parameter(u"UserID").otherwise(u""),
                 Parameter(u"Password").otherwise(u""), Parameter(u"Options").otherwise(-1)},
                u"Opens the database.")
            .method<&Connection::OpenSchema>(
                u"OpenSchema",
                {u"Schema", Parameter(u"Restrictions").otherwise(Variant::missing()),
                 Parameter(u"SchemaID").otherwise(Variant::missing())},
                u"Describes tables, columns, keys, indexes or types.")
            .method<&Connection::RollbackTrans>(u"RollbackTrans", {}, u"Undoes the transaction.")
            .property<&Connection::Attributes, &Connection::setAttributes>(
                u"Attributes", u"What follows the end of a transaction.")
            .property<&Connection::Properties>(u"Properties", u"What the provider tells.")
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
