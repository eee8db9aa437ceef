#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>

#include "support/other_server.hpp"
#include "support/temporary_folder.hpp"

namespace kap::test {

// A connection string for a new database that nobody else of this process names: in memory, or on
// the server that the tests were told to use.
inline std::string memoryDatabase() {
    if (OtherServer* server = OtherServer::given()) {
        return server->makeDatabase();
    }
    static std::atomic<int> count{0};
    return "Provider=KapLocal;Data Source=:memory:test" + std::to_string(++count);
}

inline Ref<ado::Connection> open(const std::string& connectionString) {
    auto connection = make<ado::Connection>();
    connection->Open(connectionString);
    return connection;
}

inline Ref<ado::Connection> openMemory() {
    return open(memoryDatabase());
}

// A live recordset that can be written through, opened as the record members open theirs.
inline Ref<ado::Recordset> openLive(
    const Ref<ado::Connection>& connection, const String& query,
    ado::CursorLocationEnum location = ado::CursorLocationEnum::adUseClient) {
    auto recordset = make<ado::Recordset>();
    recordset->setCursorLocation(location);
    recordset->Open(query, Variant(connection), ado::CursorTypeEnum::adOpenKeyset,
                    ado::LockTypeEnum::adLockOptimistic);
    return recordset;
}

inline Variant fieldOf(const Ref<ado::Recordset>& recordset, const Variant& index) {
    return recordset->Fields()->Item(index)->Value();
}

// The first column of the first row of a query.
inline Variant valueOf(const Ref<ado::Connection>& connection, const String& query) {
    return fieldOf(connection->Execute(query), 0);
}

// What a query of a table that is not there raises: -2147217865, but for servers that do not tell
// that it was the table.
inline std::int32_t unknownTableNumber() {
    static const std::int32_t number = [] {
        try {
            openMemory()->Execute(u"SELECT * FROM TabellaCheManca");
        } catch (const AutomationError& error) {
            return error.number();
        }
        return std::int32_t{0};
    }();
    return number;
}

}  // namespace kap::test
