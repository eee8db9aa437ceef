#include <kaputil/db/recordsets.hpp>

#include <cmath>
#include <cstddef>

#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/platform/two_second_wait.hpp>

#include "ado/row_cursor.hpp"
#include "automation/late_bound.hpp"
#include "base/unicode.hpp"
#include "data/driver.hpp"
#include "db/passing_rows.hpp"

namespace kap::db {
namespace {

using ado::DataTypeEnum;
using ado::FieldAttributeEnum;
using ado::Recordset;

constexpr int kMaxFailures = 11;
constexpr std::int16_t kFirstRow = 1;

// The substitutes for options that the caller leaves to the library.
constexpr std::int16_t kChoose = -1;
constexpr auto kDefaultCursorType = static_cast<std::int16_t>(ado::CursorTypeEnum::adOpenStatic);
constexpr auto kDefaultLockType = static_cast<std::int16_t>(ado::LockTypeEnum::adLockOptimistic);
constexpr auto kDefaultOptions = static_cast<std::int16_t>(ado::CommandTypeEnum::adCmdText);
constexpr auto kDefaultLocation = static_cast<std::int16_t>(ado::CursorLocationEnum::adUseClient);

void substitute(std::int16_t& option, std::int16_t chosen) {
    if (option == kChoose) {
        option = chosen;
    }
}

// Moving to the last row makes a client cursor fetch every row; one that passes its rows would have
// to run the query again to go back.
void fetchAll(Recordset& recordset) {
    if (recordset.Eof()) {
        return;
    }
    try {
        recordset.fetchAll();
        recordset.MoveLast();
    } catch (const AutomationError&) {
        platform::waitTwoSeconds();
        throw;
    }
    recordset.MoveFirst();
}

// A connection of the caller's that is lost stays so; a string opens another one each time.
bool hasLost(const AutomationError& error, const Variant& connection) {
    const auto* told = dynamic_cast<const ado::DriverError*>(&error);
    return told != nullptr && told->messages().front().state == "08S01" && !connection.isString();
}

bool healsByRetrying(const AutomationError& error, const Variant& connection) {
    return error.number() != ado::errors::kUnknownObject &&
           error.number() != ado::errors::kCommandText && !hasLost(error, connection);
}

void closeIfOpen(Recordset& recordset) {
    if (recordset.State() == ado::ObjectStateEnum::adStateOpen) {
        recordset.Close();
    }
}

// Calls `open` until it works; gives up quietly after the last failure.
template <class Open>
void retrying(Recordset& recordset, const Variant& connection, Open open) {
    for (int failures = 0; failures < kMaxFailures; ++failures) {
        try {
            open();
            return;
        } catch (const AutomationError& error) {
            if (!healsByRetrying(error, connection)) {
                // Callers see the number and the description; the source is left out.
                throw AutomationError(error.number(), error.description());
            }
            closeIfOpen(recordset);
        }
    }
}

// The types whose Nulls are replaced. Deliberately no others: long integers, Booleans, big
// integers, fixed-length and long wide texts, time stamps and binary values stay Null.
bool hasNeutralValue(DataTypeEnum type) {
    switch (type) {
        case DataTypeEnum::adSmallInt:
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
        case DataTypeEnum::adCurrency:
        case DataTypeEnum::adDate:
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adUnsignedTinyInt:
        case DataTypeEnum::adChar:
        case DataTypeEnum::adNumeric:
        case DataTypeEnum::adDBDate:
        case DataTypeEnum::adVarChar:
        case DataTypeEnum::adLongVarChar:
        case DataTypeEnum::adVarWChar:
            return true;
        default:
            return false;
    }
}

bool mayBeAssigned(const ado::RowCursor& rows, std::size_t column) {
    constexpr auto kAssignable =
        static_cast<std::int32_t>(FieldAttributeEnum::adFldUpdatable) |
        static_cast<std::int32_t>(FieldAttributeEnum::adFldUnknownUpdatable);
    return (rows.attributes(column) & kAssignable) != 0;
}

void replaceNulls(Recordset& recordset) {
    if (recordset.Eof()) {
        return;
    }
    const ado::RowCursor& rows = recordset.rows();
    for (std::size_t i = 0; i < rows.columns().size(); ++i) {
        if (hasNeutralValue(rows.columns()[i].type) && mayBeAssigned(rows, i)) {
            recordset.replaceNulls(i);
        }
    }
    recordset.MoveFirst();
}

// The same of one that cannot be written, as if it could.
void replaceNullsRead(Recordset& recordset) {
    const auto& columns = recordset.rows().columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (hasNeutralValue(columns[i].type) && !columns[i].identity && !columns[i].rowVersion) {
            recordset.replaceNulls(i);
        }
    }
}

// Of any maker's recordset.
bool isEmpty(const Variant& recordset) {
    return convert::toBoolean(late::get(recordset, u"BOF")) &&
           convert::toBoolean(late::get(recordset, u"EOF"));
}

// Line numbers go through their text form and back through a reading that knows only the period:
// where the decimal separator is a comma a fraction is lost. Deliberate; line numbers are whole.
double throughText(const Variant& value) {
    return convert::leadingNumber(convert::toString(value));
}

}  // namespace

Ref<Recordset> OpenRecordset(const String& sqlString, ByRef<Variant> connessione,
                             ByRef<std::int16_t> cursorType, ByRef<std::int16_t> lockType,
                             ByRef<std::int16_t> options, ByRef<bool> deleteNull,
                             ByRef<bool> closeConnection, ByRef<std::int16_t> cursorLocation) {
    substitute(*cursorType, kDefaultCursorType);
    substitute(*lockType, kDefaultLockType);
    substitute(*options, kDefaultOptions);
    substitute(*cursorLocation, kDefaultLocation);
    auto recordset = make<Recordset>();
    recordset->setCursorLocation(static_cast<ado::CursorLocationEnum>(*cursorLocation));
    retrying(*recordset, *connessione, [&] {
        recordset->Open(sqlString, *connessione, static_cast<ado::CursorTypeEnum>(*cursorType),
                        static_cast<ado::LockTypeEnum>(*lockType), *options);
        fetchAll(*recordset);
    });
    if (*closeConnection) {
        recordset->setActiveConnection(Variant(Ref<Object>()));
    }
    if (*deleteNull) {
        replaceNulls(*recordset);
    }
    return recordset;
}

Ref<Recordset> openPassingRows(const String& sqlString, ByRef<Variant> connessione) {
    auto recordset = make<Recordset>();
    recordset->setCursorLocation(ado::CursorLocationEnum::adUseServer);
    retrying(*recordset, *connessione, [&] {
        recordset->Open(sqlString, *connessione, ado::CursorTypeEnum::adOpenForwardOnly,
                        ado::LockTypeEnum::adLockReadOnly, kDefaultOptions);
    });
    if (!recordset->Eof()) {
        replaceNullsRead(*recordset);
    }
    return recordset;
}

void ControllaConnessione(ByRef<Variant> connessione) {
    if (ado::isConnection(*connessione)) {
        return;
    }
    auto connection = make<ado::Connection>();
    connection->Open(convert::toString(*connessione), u"", u"", -1);
    *connessione = Variant(connection);
}

bool kapGoTo(ByRef<Ref<Object>> rst, const Variant& posizione) {
    const Variant recordset = *rst;
    const auto moveUnlessEmpty = [&](std::u16string_view movement) {
        if (!isEmpty(recordset)) {
            late::call(recordset, movement);
        }
    };
    static_cast<void>(late::objectOf(recordset));
    const std::u16string keyword = unicode::upper(convert::toString(posizione).view());
    if (keyword == u"FIRST") {
        moveUnlessEmpty(u"MoveFirst");
    } else if (keyword == u"LAST") {
        moveUnlessEmpty(u"MoveLast");
    } else if (arithmetic::compare(posizione, kFirstRow) == 0) {
        moveUnlessEmpty(u"MoveFirst");
    } else {
        late::call(recordset, u"MoveFirst");
        // The difference is rounded, not the position: 2.5 means the third row.
        late::call(recordset, u"Move",
                   {convert::toLong(arithmetic::subtract(posizione, kFirstRow))});
    }
    return false;  // deliberate: never anything else
}

Variant Riga_Prog(ByRef<Variant> connessione, ByRef<String> sSQL, ByRef<std::int16_t> nPasso,
                  ByRef<std::int16_t> nInizio) {
    if (*nInizio == 0) {
        *nInizio = 1;
    }
    if (*nPasso == 0) {
        *nPasso = 1;
    }
    const auto recordset = OpenRecordset(*sSQL, connessione, -1, -1, -1, /*deleteNull=*/false);
    const Variant highest = recordset->Fields()->Item(0)->Value();
    if (highest.isNull()) {
        return *nInizio;
    }
    const double last = throughText(highest);
    // In 64 bits: the lowest number by -1 has a quotient that 32 bits do not hold.
    const std::int64_t remainder = std::int64_t{convert::toLong(last)} % *nPasso;
    return last + *nPasso - static_cast<double>(remainder);
}

}  // namespace kap::db
