#include "ado/results.hpp"

#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/later_execution.hpp"
#include "data/failures.hpp"
#include "data/schema_rows.hpp"

namespace kap::ado {

Variant rowsWritten(const std::vector<Result>& results) {
    std::int64_t rows = 0;
    bool counted = false;
    for (const Result& result : results) {
        if (result.rowsAffected && result.columns.empty()) {
            rows += *result.rowsAffected;
            counted = true;
        }
    }
    return counted ? static_cast<std::int32_t>(rows) : -1;
}

Ref<Recordset> recordsetFor(const Ref<Connection>& connection) {
    auto recordset = make<Recordset>();
    recordset->connection_ = connection;
    recordset->cursorLocation_ = connection->CursorLocation();
    return recordset;
}

void answer(Recordset& recordset, std::shared_ptr<const Request> request, Reply reply) {
    recordset.request_ = std::move(request);
    recordset.take(std::move(reply));
}

void takeRecords(LaterExecution& ran, const Ref<Connection>& connection, bool noRecords) {
    if (noRecords) {
        return;
    }
    Ref<Recordset>& records = ran.execution.recordset;
    if (!records) {
        records = recordsetFor(connection);
    }
    answer(*records, ran.request, std::move(ran.reply));
}

SchemaRestrictions restrictionsOf(SchemaEnum kind, const Variant& given) {
    SchemaRestrictions wanted(restrictionColumns(kind).size());
    if (given.isMissing() || given.isEmpty()) {
        return wanted;
    }
    if (!given.isArray()) {
        fail::invalidArgument();
    }
    const Array& values = given.as<Array>();
    if (values.size() > wanted.size()) {
        fail::invalidArgument();
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Variant value = values.at(values.lowerBound() + static_cast<std::int32_t>(i));
        if (!value.isEmpty() && !value.isNull() && !value.isMissing()) {
            wanted[i] = convert::toString(value).utf8();
        }
    }
    return wanted;
}

}  // namespace kap::ado
