// Writes documents, invoices, accounting entries and reservations at random, right and wrong ones,
// beside other programs that do the same: takes numbers from the counters, but also writes numbers
// twice, deletes what was written, and lets a document type change its counter.
//
//     keep_books CONNECTION_STRING SEED OPERATIONS

#include <exception>
#include <iostream>
#include <random>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/numbering/document_numbers.hpp>

namespace {

using namespace kap;

class Office {
public:
    Office(const std::string& connectionString, std::uint32_t seed) : random_(seed) {
        const auto connection = make<ado::Connection>();
        connection->Open(connectionString);
        database_ = connection;
        connection_ = connection;
    }

    void work() {
        const int number = below(4) == 0 ? below(12) : taken();
        switch (below(10)) {
            case 0:
                return run("DELETE FROM mag_TDocumenti WHERE Numero = " + text(below(12)));
            case 1:
                return run("DELETE FROM con_MovConD WHERE Protocollo = " + text(below(12)));
            case 2:
                return run("INSERT INTO mag_TFatture VALUES (" + year() + ", " + type() + ", " +
                           text(number) + ", " + text(below(3) == 0 ? below(12) : number) + ")");
            case 3:
                return run("INSERT INTO con_MovConT VALUES (" + text(number) + ", " +
                           oneOf({"'FVE'", "'FV2'"}) + ", " + day() + ")");
            case 4:
                return run("INSERT INTO con_MovConD VALUES (" + text(number) + ", " + year() +
                           ", " + counter() + ")");
            case 5:
                return run("INSERT INTO vtx_TabProPrenotati VALUES (" + counter() + ", " + year() +
                           ", " + text(below(14)) + ", " + oneOf({"''", "'D'", "'U'", "'M'"}) +
                           ")");
            case 6:
                if (below(6) == 0) {
                    run("UPDATE vtx_TabDoc SET TipoProg = " + counter() +
                        " WHERE Codice = " + type());
                }
                return;
            default:
                return run("INSERT INTO mag_TDocumenti VALUES (" + year() + ", " + type() + ", " +
                           text(number) + ", " + oneOf({"NULL", "''", "'0'", "'M1'", "'M2'"}) +
                           ", " + (below(8) == 0 ? "NULL" : day()) + ")");
        }
    }

private:
    int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
    static std::string text(int number) { return plain::text(number); }
    template <std::size_t Count>
    std::string oneOf(const char* const (&texts)[Count]) {
        return texts[below(Count)];
    }
    std::string type() { return oneOf({"'FAI'", "'NCR'", "'DDT'"}); }
    std::string counter() { return oneOf({"'FAT'", "'BOL'", "'FA2'", "'ACQ'"}); }
    std::string year() { return oneOf({"2024", "2025", "2025", "2025"}); }
    std::string day() {
        return "'" + std::string(below(6) == 0 ? "2024" : "2025") + "0" + text(1 + below(9)) + "1" +
               text(below(9)) + "'";
    }
    void run(const std::string& statement) { database_->Execute(String(statement)); }

    // A number that the counter gives out; 0 when another program was faster too often.
    int taken() {
        const Variant number =
            numbering::Progressivi(u"FAI", u"D", u"S", 2025, 0, connection_, u"°°°", u"vtx_TabDoc",
                                   static_cast<std::int16_t>(below(2)), errore_);
        return convert::toLong(number);
    }

    std::mt19937 random_;
    Ref<ado::Connection> database_;
    Variant connection_;
    Ref<CErrore> errore_;
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: keep_books CONNECTION_STRING SEED OPERATIONS\n";
        return 2;
    }
    try {
        Office office(arguments[1], static_cast<std::uint32_t>(std::stoul(arguments[2])));
        for (int i = std::stoi(arguments[3]); i > 0; --i) {
            office.work();
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
