#include "cli/demo/sample_people.hpp"

#include <kaputil/automation/plain_text.hpp>

#include "cli/demo/insert_script.hpp"
#include "cli/demo/sample_words.hpp"

namespace kap::cli {
namespace {

std::string digits(std::int64_t number, std::size_t width) {
    std::string text = plain::text(number);
    if (text.size() < width) {
        text.insert(0, width - text.size(), '0');
    }
    return text;
}

// Every second digit is doubled, its own digits added up; the check digit makes the sum a multiple
// of ten.
char checkDigit(const std::string& number) {
    int sum = 0;
    for (std::size_t i = 0; i < number.size(); ++i) {
        int digit = number[i] - '0';
        if (i % 2 == 1) {
            digit *= 2;
            digit -= digit > 9 ? 9 : 0;
        }
        sum += digit;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

std::string customerName(RandomSource& random) {
    constexpr std::uint64_t kPeople = 15;
    if (random.chance(kPeople)) {
        const std::string first(random.oneOf(kFirstNames));
        return first + " " + std::string(random.oneOf(kSurnames));
    }
    std::string name;
    for (const char unit : random.oneOf(kCompanyNames)) {
        if (unit == '*') {
            name += random.oneOf(kSurnames);
        } else {
            name += unit;
        }
    }
    return name;
}

SqlRow customer(int code, RandomSource& random) {
    constexpr std::int64_t kDiscounts[] = {0, 0, 250, 500, 750, 1000};  // in hundredths
    const Town& town = random.oneOf(kTowns);
    SqlRow row;
    row.number(code).text(customerName(random));
    const std::string street(random.oneOf(kStreets));
    row.text(street + ", " + plain::text(random.between(1, 180)));
    row.text(town.postalCode).text(town.name).text(town.province);
    row.text(vatNumber(random.between(1, 9'999'999), town.taxOffice));
    row.amount(random.oneOf(std::to_array(kDiscounts)), 2);
    if (random.chance(40)) {
        row.null();  // no credit limit agreed
    } else {
        row.number(random.between(2, 60) * 500);
    }
    return row;
}

}  // namespace

std::string vatNumber(std::int64_t serial, int taxOffice) {
    std::string number = digits(serial, 7) + digits(taxOffice, 3);
    number.push_back(checkDigit(number));
    return number;
}

void insertCustomers(ado::Connection& connection, RandomSource& random) {
    InsertScript rows(connection,
                      "Clienti (Codice, RagioneSociale, Indirizzo, CAP, Localita, Provincia, "
                      "PartitaIva, Sconto, Fido)");
    for (int i = 0; i < kCustomers; ++i) {
        rows.add(customer(kFirstCustomer + i, random));
    }
    rows.finish();
}

std::vector<Product> makeProducts() {
    constexpr int kVat = 22;
    constexpr int kReducedVat = 10;
    std::vector<Product> products;
    for (const ProductLine& line : kProductLines) {
        for (const ProductSize& size : kProductSizes) {
            Product product;
            product.code = std::string(line.code) + "-" + std::string(size.code);
            product.description = std::string(line.name) + " " + std::string(size.name);
            product.unit = line.unit;
            product.price = static_cast<std::int64_t>(line.price) * size.percent / 100;
            product.vatPercent = line.unit == "MT" ? kReducedVat : kVat;
            products.push_back(std::move(product));
        }
    }
    return products;
}

void insertProducts(ado::Connection& connection, const std::vector<Product>& products) {
    InsertScript rows(connection, "mag_Articoli (Codice, Descrizione, UM, Prezzo, AliquotaIva)");
    for (const Product& product : products) {
        SqlRow row;
        row.text(product.code).text(product.description).text(product.unit);
        row.amount(product.price, 4).number(product.vatPercent);
        rows.add(row);
    }
    rows.finish();
}

}  // namespace kap::cli
