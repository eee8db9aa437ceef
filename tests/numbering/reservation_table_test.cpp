#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numbering/company.hpp"
#include "numbering/decision_table.hpp"

namespace kap::numbering::test {
namespace {

// Every case asks for the reserved number 120 of a counter with n_Def 41.
constexpr int kNumber = 120;

// path, mode, Stato, handling, who carries the number => Stato behind it, message.
// Stato is empty, Null, a letter without meaning (Z), or one with a meaning. The number is carried
// by nobody, by a document or an invoice of the type asked for (FAI) or of another one (NCR), or by
// an accounting entry (MC).
const std::vector<Words> kReservedConditions = {
    {"code", "type"},
    {"read", "write"},
    {"empty", "NULL", "Z", "U", "D", "M"},
    {"1", "2", "3", "4", "5"},
    {"nobody", "docFAI", "docNCR", "invFAI", "invNCR", "MC"}};

const std::vector<Rule> kTouching = {
    {"* read empty|NULL|Z 2 *", "D"},
    {"* read empty|NULL|Z 1|3|4|5 *", "as it was"},
    {"* write empty|NULL|Z 1 nobody|invFAI|invNCR|MC", "U"},
    {"type write empty|NULL|Z 1 docFAI", "as it was"},
    {"code write empty|NULL|Z 1 docFAI", "U, Numero progressivo già Utilizzato da Documento FAI!"},
    {"* write empty|NULL|Z 1 docNCR", "U, Numero progressivo già Utilizzato da Documento NCR!"},
    {"* write empty|NULL|Z 3 MC", "as it was"},
    {"* write empty|NULL|Z 3 nobody|docFAI|docNCR|invFAI|invNCR", "M"},
    {"* write empty|NULL|Z 2|4|5 *", "as it was"},
    {"* * U * nobody|MC", "U"},
    {"type * U 1|3|4|5 docFAI", "U"},
    {"type * U 2 docFAI", "U, Numero progressivo già Utilizzato da Documento FAI!"},
    {"code * U * docFAI", "U, Numero progressivo già Utilizzato da Documento FAI!"},
    {"* * U * docNCR", "U, Numero progressivo già Utilizzato da Documento NCR!"},
    {"type * U * invFAI", "U"},
    {"code * U * invFAI", "U, Numero progressivo già Utilizzato da Documento FAI!"},
    {"* * U * invNCR", "U, Numero progressivo già Utilizzato da Documento NCR!"},
    {"type * M * MC", "M, Numero progressivo già Utilizzato in Movimenti Contabili !"},
    {"code * M * MC", "M"},
    {"* * M * nobody|docFAI|docNCR|invFAI|invNCR", "M"},
    {"* * D * invFAI",
     "D, Numero progressivo già Utilizzato da Documento FAI in Fatturazione Differita !"},
    {"* * D * invNCR",
     "D, Numero progressivo già Utilizzato da Documento NCR in Fatturazione Differita !"},
    {"* * D * nobody|docFAI|docNCR|MC", "D"},
};

// sequence, mode, handling => what becomes of reservation and counter in the end, whatever the
// other table says.
const std::vector<Rule> kEnding = {
    {"* read *", "kept"},
    {"D write 1|2|4|5", "deleted"},
    {"D write 3", "kept"},
    {"X|P write *", "kept"},
};

std::string shownState(const std::string& literal) {
    return literal == "NULL" ? "Null" : literal == "empty" ? "String " : "String " + literal;
}

class ReservationTable : public testing::Test {
protected:
    void prepare(const std::string& state, const std::string& carrier) const {
        company_.run(
            "DELETE FROM vtx_TabProPrenotati; DELETE FROM mag_TDocumenti; "
            "DELETE FROM mag_TFatture; DELETE FROM con_MovConD");
        company_.counter("41", "7", "0");
        company_.reserve(kNumber, state == "NULL"    ? "NULL"
                                  : state == "empty" ? "''"
                                                     : "'" + state + "'");
        if (carrier.starts_with("doc")) {
            company_.document(kNumber, carrier.substr(3));
        } else if (carrier.starts_with("inv")) {
            company_.invoice(kNumber, carrier.substr(3));
        } else if (carrier == "MC") {
            company_.entry(kNumber);
        }
    }

    void check(const Words& values, const char* sequence) const {
        const std::string& state = values[2];
        prepare(state, values[4]);
        Ask ask;
        ask.counter = values[0] == "code" ? "FAT" : "°°°";
        ask.sequence = sequence;
        ask.mode = values[1] == "write" ? "S" : "L";
        ask.number = kNumber;
        ask.handling = std::stoi(values[3]);
        Caller caller(company_);
        EXPECT_EQ(caller.progressivi(ask), "Double 120") << joined(values);

        std::string touched = expectedOf(kTouching, values);
        std::string message;
        if (const auto comma = touched.find(", "); comma != std::string::npos) {
            message = touched.substr(comma + 2);
            touched.resize(comma);
        }
        EXPECT_EQ(caller.message(), message) << joined(values) << ' ' << sequence;
        const std::string ending = expectedOf(kEnding, {sequence, values[1], values[3]});
        const std::string after = touched == "as it was" ? shownState(state) : shownState(touched);
        EXPECT_EQ(company_.state(kNumber), ending == "deleted" ? "gone" : after)
            << joined(values) << ' ' << sequence << ' ' << ending;
        EXPECT_EQ(company_.definitive(), ending == "deleted" ? "Long 120" : "Long 41")
            << joined(values) << ' ' << sequence;
        EXPECT_EQ(company_.provisional(), "Long 7") << joined(values);
    }

    Company company_;
};

TEST_F(ReservationTable, HoldsForDefinitiveNumbers) {
    forEachCase(kReservedConditions, [&](const Words& values) { check(values, "D"); });
}

TEST_F(ReservationTable, HoldsForDefinitiveNumbersAskedForByAnotherLetter) {
    forEachCase(kReservedConditions, [&](const Words& values) { check(values, "X"); });
}

TEST_F(ReservationTable, HoldsForProvisionalNumbers) {
    forEachCase(kReservedConditions, [&](const Words& values) { check(values, "P"); });
}

TEST(Reservation, LeavesACounterThatIsPastTheNumberWhereItIs) {
    const Company company;
    company.counter("150");
    company.reserve(kNumber);
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.mode = "S", .number = kNumber, .handling = 1}), "Double 120");
    EXPECT_EQ(company.state(kNumber), "gone");
    EXPECT_EQ(company.definitive(), "Long 150");
}

TEST(Reservation, LeavesANullCounterAsItIs) {
    const Company company;
    company.counter("NULL");
    company.reserve(kNumber);
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.mode = "S", .number = kNumber, .handling = 1}), "Double 120");
    EXPECT_EQ(company.definitive(), "Null");
}

TEST(Reservation, IsThatOfTheCounterAndYear) {
    const Company company;
    company.counter("41");
    company.run(
        "INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2024, 120, ''), ('BOL', 2025, 120, '')");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.number = kNumber, .handling = 2}), "Long 42");
}

TEST(Reservation, IsNotLookedForBelowOne) {
    const Company company;
    company.counter("41");
    company.reserve(0);
    company.reserve(-5);
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.number = 0, .handling = 2}), "Long 42");
    EXPECT_EQ(caller.progressivi({.number = -5, .handling = 2}), "Long 42");
    EXPECT_EQ(company.state(-5), "String ");
}

}  // namespace
}  // namespace kap::numbering::test
