#include <kaputil/engine/embedded_database.hpp>

#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/scaled_text.hpp"
#include "data/variant_cell.hpp"
#include "engine/engine_session.hpp"

namespace kap::engine {
namespace {

std::string utf8Of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

Options optionsOf(const std::filesystem::path& file, const DatabaseSettings& settings) {
    Options options;
    options.source = utf8Of(file);
    options.readOnly = settings.readOnly;
    options.lockTimeout = settings.lockTimeout;
    options.synchronous = settings.synchronous ? Synchronous::Full : Synchronous::Off;
    return options;
}

// Of an error the client gets the first that is one; warnings may stand before it.
DatabaseError databaseError(const ado::DriverError& error) {
    const ado::ServerMessage* first = &error.messages().front();
    for (const ado::ServerMessage& message : error.messages()) {
        if (message.isError()) {
            first = &message;
            break;
        }
    }
    return {first->nativeNumber, first->text, first->line, first->severity};
}

template <class Work>
auto withDatabaseErrors(Work work) {
    try {
        return work();
    } catch (const ado::DriverError& error) {
        throw databaseError(error);
    }
}

bool isDateColumn(ado::DataTypeEnum type) {
    return type == ado::DataTypeEnum::adDBTimeStamp || type == ado::DataTypeEnum::adDBDate ||
           type == ado::DataTypeEnum::adDate;
}

std::string digitsOf(const ado::ColumnInfo& column, std::int64_t units) {
    constexpr std::size_t kMoneyScale = 4;
    const bool money = column.type == ado::DataTypeEnum::adCurrency;
    const std::size_t scale = money ? kMoneyScale : column.numericScale;
    return std::string(plain::ScaledText(units, scale).view());
}

// With as many zeros at its end as its column's decimals want.
std::string withDecimals(std::string text, std::size_t scale) {
    if (scale == 0) return text;
    const std::size_t point = std::min(text.find('.'), text.size());
    if (point == text.size()) text += '.';
    text.resize(point + 1 + scale, '0');
    return text;
}

ResultValue resultValueOf(const ado::ColumnInfo& column, const ado::ColumnStore& store,
                          std::size_t row) {
    if (store.cell(row) != ado::ColumnStore::Cell::Filled) {
        return std::monostate{};
    }
    const bool exact =
        column.type == ado::DataTypeEnum::adCurrency || column.type == ado::DataTypeEnum::adNumeric;
    if (column.wideDecimal) {
        return withDecimals(std::string(store.bytes(row)), column.numericScale);
    }
    if (column.type == ado::DataTypeEnum::adVariant) {
        const ado::VariantCell cell = ado::unpackVariantCell(store.bytes(row));
        ado::ColumnStore own;
        ado::append(own, cell.value);
        return resultValueOf(cell.column, own, 0);
    }
    switch (ado::storageOf(column.type)) {
        case ado::Storage::Integer:
            return exact ? ResultValue(digitsOf(column, store.integer(row)))
                         : ResultValue(store.integer(row));
        case ado::Storage::Real:
            return isDateColumn(column.type)
                       ? ResultValue(plain::isoDateTime(Date{store.real(row)}))
                       : ResultValue(store.real(row));
        case ado::Storage::Binary:
            return Bytes{std::string(store.bytes(row))};
        default:
            return std::string(store.bytes(row));
    }
}

ResultSet resultSetOf(const ado::Result& result) {
    ResultSet set;
    set.rowsWritten = result.rowsAffected.value_or(-1);
    for (const ado::ColumnInfo& column : result.columns) {
        set.columns.push_back({column.name, column.nullable});
    }
    const std::size_t rows = result.rows.empty() ? 0 : result.rows.front().size();
    set.rows.resize(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t i = 0; i < result.columns.size(); ++i) {
            set.rows[row].push_back(resultValueOf(result.columns[i], result.rows[i], row));
        }
    }
    return set;
}

ColumnFacts factsOf(const Column& column) {
    return {column.name, tsql::typeText(column.type), column.nullable, column.identity.has_value(),
            column.keyOrdinal};
}

}  // namespace

struct EmbeddedDatabase::Inside {
    explicit Inside(const Options& options) : session(options) {}

    // Raises DriverError.
    ado::Reply execute(std::string_view script) {
        ado::Request request;
        request.text = script;
        ado::Reply reply;
        session.execute(request, reply);
        return reply;
    }

    void keepPrinted(const std::vector<ado::ServerMessage>& all) {
        for (const ado::ServerMessage& message : all) {
            if (!message.isError()) messages.push_back(message.text);
        }
    }

    EngineSession session;
    std::vector<std::string> messages;
};

EmbeddedDatabase::EmbeddedDatabase(const std::filesystem::path& file,
                                   const DatabaseSettings& settings)
    : inside_(
          withDatabaseErrors([&] { return std::make_unique<Inside>(optionsOf(file, settings)); })) {
}

EmbeddedDatabase::EmbeddedDatabase(EmbeddedDatabase&&) noexcept = default;
EmbeddedDatabase& EmbeddedDatabase::operator=(EmbeddedDatabase&&) noexcept = default;
EmbeddedDatabase::~EmbeddedDatabase() = default;

std::vector<ResultSet> EmbeddedDatabase::run(std::string_view script) {
    try {
        const ado::Reply reply = inside_->execute(script);
        inside_->keepPrinted(reply.messages);
        std::vector<ResultSet> sets;
        sets.reserve(reply.results.size());
        for (const ado::Result& result : reply.results) {
            sets.push_back(resultSetOf(result));
        }
        return sets;
    } catch (const ado::DriverError& error) {
        inside_->keepPrinted(error.messages());
        throw databaseError(error);
    }
}

std::vector<std::string> EmbeddedDatabase::takeMessages() {
    return std::exchange(inside_->messages, {});
}

void EmbeddedDatabase::begin() {
    withDatabaseErrors([&] { inside_->session.begin(); });
}

void EmbeddedDatabase::commit() {
    withDatabaseErrors([&] { inside_->session.commit(); });
}

void EmbeddedDatabase::rollback() {
    withDatabaseErrors([&] { inside_->session.rollback(); });
}

int EmbeddedDatabase::transactionDepth() const {
    return inside_->session.transactions().depth();
}

std::vector<TableFacts> EmbeddedDatabase::tables() {
    EngineSession& session = inside_->session;
    return withDatabaseErrors([&] {
        return session.reported([&] {
            const Transactions::ReadScope scope(session.transactions());
            std::vector<TableFacts> tables;
            for (const Table* table : session.catalogue().tables()) {
                if (table->temporary) continue;
                TableFacts& facts = tables.emplace_back();
                facts.name = table->name;
                for (const Column& column : table->columns) {
                    facts.columns.push_back(factsOf(column));
                }
            }
            return tables;
        });
    });
}

void EmbeddedDatabase::backUp(const std::filesystem::path& copy) {
    withDatabaseErrors([&] {
        inside_->execute("BACKUP DATABASE " + sqlName(inside_->session.catalogue().databaseName()) +
                         " TO DISK = " + sqlText(utf8Of(copy)));
    });
}

void EmbeddedDatabase::check() {
    withDatabaseErrors([&] { inside_->execute("DBCC CHECKDB"); });
}

}  // namespace kap::engine
