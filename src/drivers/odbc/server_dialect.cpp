#include "drivers/odbc/server_dialect.hpp"

#include <utility>

#include "base/ascii.hpp"
#include "base/quoting.hpp"

namespace kap::ado::odbc {
namespace {

// A server of which nothing is known.
class PlainDialect final : public ServerDialect {
public:
    using ServerDialect::ServerDialect;
};

bool productHolds(std::string_view product, std::string_view part) {
    return asciiLower(product).find(part) != std::string::npos;
}

}  // namespace

std::unique_ptr<const ServerDialect> dialectOf(DriverTraits driver) {
    if (productHolds(driver.product, "sql server") || productHolds(driver.product, "sybase")) {
        return makeTransactDialect(std::move(driver));
    }
    if (productHolds(driver.product, "postgresql")) {
        return makePostgresDialect(std::move(driver));
    }
    return std::make_unique<PlainDialect>(std::move(driver));
}

void ServerDialect::describe(const AnnouncedType& type, ColumnInfo& info) const {
    describeType(meant(type), inventedSize(), wideTexts(), info);
}

// Signs of more than one letter have no way to stand in a name.
std::string ServerDialect::quoted(std::string_view name) const {
    const std::string& quote = driver_.quote;
    return quote.size() == 1 ? enclosed(name, quote.front(), quote.front())
                             : quote + std::string(name) + quote;
}

std::string ServerDialect::folded(std::string_view name) const {
    switch (driver_.folding) {
        case DriverTraits::Folding::Lower:
            return asciiLower(name);
        case DriverTraits::Folding::Upper:
            return asciiUpper(name);
        case DriverTraits::Folding::AsWritten:
            break;
    }
    return std::string(name);
}

Comparison ServerDialect::comparison(const std::string& column, const AnnouncedType& type) const {
    return {column + " = " + mark(type)};
}

std::string ServerDialect::returning(const RowStatement& row) const {
    return textOf(row);
}

std::string ServerDialect::selecting(const RowStatement& row, const std::string& /*reading*/,
                                     bool /*transaction*/) const {
    return textOf(row);
}

}  // namespace kap::ado::odbc
