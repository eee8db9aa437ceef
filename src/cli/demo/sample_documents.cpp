#include "cli/demo/sample_documents.hpp"

#include <chrono>
#include <cstdint>
#include <string_view>

#include <kaputil/automation/plain_text.hpp>

#include "cli/demo/insert_script.hpp"
#include "cli/demo/sample_company.hpp"
#include "cli/demo/sample_words.hpp"

namespace kap::cli {
namespace {

constexpr int kYears = 2;
constexpr int kDocumentsAYear = 800;
constexpr std::int64_t kHundred = 100;

struct Line {
    const Product* product = nullptr;
    std::int64_t quantity = 0;
    std::int64_t discount = 0;  // in hundredths of a per cent
    std::int64_t amount = 0;    // in cents
};

struct Document {
    const DocumentType* type = nullptr;
    int year = 0;
    int number = 0;
    std::chrono::year_month_day date;
    std::int64_t customer = 0;
    std::int64_t discount = 0;
    std::vector<Line> lines;

    // In cents.
    std::int64_t taxable = 0;
    std::int64_t vat = 0;

    [[nodiscard]] bool is(std::string_view code) const { return code == type->code; }
    [[nodiscard]] bool invoiced() const { return is("FAI") || is("NCR"); }
    // The accounts are closed up to the end of October.
    [[nodiscard]] bool registered() const {
        return invoiced() && (year < kCurrentYear || date.month() <= std::chrono::October);
    }
};

// Halves go up; amounts are never negative here.
std::int64_t divided(std::int64_t value, std::int64_t by) {
    return (value + by / 2) / by;
}

// What is left of an amount after a discount in hundredths of a per cent.
std::int64_t discounted(std::int64_t amount, std::int64_t discount) {
    return divided(amount * (kHundred * kHundred - discount), kHundred * kHundred);
}

class DocumentWriter {
public:
    DocumentWriter(ado::Connection& connection, RandomSource& random,
                   const std::vector<Product>& products)
        : random_(random),
          products_(products),
          headers_(connection,
                   "mag_TDocumenti (Anno, Tipo, Numero, Data, Cliente, Valuta, Sconto, Imponibile, "
                   "Iva, Totale, Note, Annotazioni, MC_Registrazione)"),
          lines_(connection,
                 "mag_RDocumenti (Anno, Tipo, Numero, Riga, Articolo, Descrizione, Qta, Prezzo, "
                 "Sconto, Importo, AliquotaIva)"),
          invoices_(connection, "mag_TFatture (Anno, Tipo, Numero, NumFat, Data)"),
          entries_(connection, "con_MovConT (Registrazione, Data, Causale, Protocollo, Importo)"),
          registers_(connection, "con_MovConD (Registrazione, Anno, Registro, Protocollo)") {}

    LastNumbers write() {
        for (int year = kCurrentYear - kYears + 1; year <= kCurrentYear; ++year) {
            for (int i = 0; i < kDocumentsAYear; ++i) {
                write(make(year, i));
            }
        }
        for (InsertScript* script : {&headers_, &lines_, &invoices_, &entries_, &registers_}) {
            script->finish();
        }
        return lastNumbers_;
    }

private:
    // Now and then a quotation, so that there are some whatever the seed; the rest by their shares.
    const DocumentType& typeAt(int position) {
        constexpr int kBetweenQuotations = 100;
        if (position % kBetweenQuotations == kBetweenQuotations / 2) {
            return kQuotation;
        }
        auto drawn = static_cast<int>(random_.below(kHundred));
        for (const DocumentType& type : kDocumentTypes) {
            drawn -= type.share;
            if (drawn < 0) {
                return type;
            }
        }
        return kQuotation;
    }

    // The documents of a year are spread evenly over it.
    static std::chrono::year_month_day dateOf(int year, int position) {
        constexpr int kDays = 364;
        const std::chrono::sys_days first = std::chrono::year{year} / 1 / 2;
        return first + std::chrono::days(position * kDays / kDocumentsAYear);
    }

    Line drawLine() {
        constexpr std::int64_t kQuantities[] = {1, 2, 4, 5, 10, 12, 20, 24, 50, 100, 200, 500};
        constexpr std::int64_t kDiscounts[] = {0, 0, 0, 500, 1000, 1550};
        Line line;
        line.product = &random_.oneOf(products_);
        line.quantity = random_.oneOf(std::to_array(kQuantities));
        line.discount = random_.oneOf(std::to_array(kDiscounts));
        line.amount =
            divided(discounted(line.quantity * line.product->price, line.discount), kHundred);
        return line;
    }

    Document make(int year, int position) {
        constexpr std::int64_t kDiscounts[] = {0, 0, 0, 200, 300, 500};
        Document document;
        document.type = &typeAt(position);
        document.year = year;
        document.number = ++lastNumbers_[{document.type->counter, year}];
        document.date = dateOf(year, position);
        document.customer = kFirstCustomer + random_.between(0, kCustomers - 1);
        document.discount = random_.oneOf(std::to_array(kDiscounts));
        const std::int64_t lines = document.is("PRV") ? 0 : random_.between(1, 5);
        std::int64_t vat = 0;
        for (std::int64_t i = 0; i < lines; ++i) {
            const Line& line = document.lines.emplace_back(drawLine());
            document.taxable += line.amount;
            vat += line.amount * line.product->vatPercent;
        }
        document.taxable = discounted(document.taxable, document.discount);
        document.vat = divided(discounted(vat, document.discount), kHundred);
        return document;
    }

    static SqlRow key(const Document& document) {
        SqlRow row;
        row.number(document.year).text(document.type->code).number(document.number);
        return row;
    }

    static void addDate(SqlRow& row, const Document& document) {
        row.date(document.year, static_cast<int>(static_cast<unsigned>(document.date.month())),
                 static_cast<int>(static_cast<unsigned>(document.date.day())));
    }

    void write(const Document& document) {
        const int entry = document.registered() ? ++lastEntry_ : 0;
        writeHeader(document, entry);
        writeLines(document);
        if (document.is("FAI")) {
            SqlRow invoice = key(document);
            invoice.number(document.number);
            addDate(invoice, document);
            invoices_.add(invoice);
        }
        if (entry != 0) {
            writeEntry(document, entry);
        }
    }

    void writeHeader(const Document& document, int entry) {
        SqlRow row = key(document);
        addDate(row, document);
        row.number(document.customer).text("EUR").amount(document.discount, 2);
        row.amount(document.taxable, 2).amount(document.vat, 2);
        row.amount(document.taxable + document.vat, 2);
        if (random_.chance(60)) {
            row.text(random_.oneOf(kNotes));
        } else {
            row.null();
        }
        row.null();
        if (entry != 0) {
            row.text(plain::text(entry));
        } else {
            row.null();
        }
        headers_.add(row);
    }

    void writeLines(const Document& document) {
        // Numbered in tens, so that a line can be put between two others.
        constexpr int kStep = 10;
        int number = 0;
        for (const Line& line : document.lines) {
            SqlRow row = key(document);
            row.number(number += kStep).text(line.product->code).text(line.product->description);
            row.number(line.quantity).amount(line.product->price, 4).amount(line.discount, 2);
            row.amount(line.amount, 2).number(line.product->vatPercent);
            lines_.add(row);
        }
    }

    void writeEntry(const Document& document, int entry) {
        SqlRow row;
        row.number(entry);
        addDate(row, document);
        row.text(document.is("FAI") ? "FVE" : "NCV").number(document.number);
        row.amount(document.taxable + document.vat, 2);
        entries_.add(row);
        SqlRow line;
        line.number(entry).number(document.year).text(document.type->counter);
        line.number(document.number);
        registers_.add(line);
    }

    RandomSource& random_;
    const std::vector<Product>& products_;
    InsertScript headers_;
    InsertScript lines_;
    InsertScript invoices_;
    InsertScript entries_;
    InsertScript registers_;
    LastNumbers lastNumbers_;
    int lastEntry_ = 0;
};

}  // namespace

LastNumbers insertDocuments(ado::Connection& connection, RandomSource& random,
                            const std::vector<Product>& products) {
    return DocumentWriter(connection, random, products).write();
}

}  // namespace kap::cli
