#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numbering/company.hpp"
#include "numbering/decision_table.hpp"

namespace kap::numbering::test {
namespace {

// Every case starts from n_Def 41 and n_Prov 7; documents carry 42 and 8, and 120 is reserved. The
// caller holds no number (none), 57, which nobody carries (free), or 120 (reserved).
constexpr int kFree = 57;
constexpr int kReserved = 120;

// path, sequence, mode, GestProvv, number held, handling of reservations => result, n_Def, n_Prov.
// GestProvv is 0, the text "0", 1 or Null.
const std::vector<Words> kConditions = {{"code", "type"},
                                        {"D", "X", "P"},
                                        {"read", "write"},
                                        {"0", "'0'", "1", "NULL"},
                                        {"none", "free", "reserved"},
                                        {"0", "1", "2", "3", "4", "5"}};

const std::vector<Rule> kAssignment = {
    // A number that is reserved comes back; what becomes of the counter is another table's matter.
    {"* * * * reserved 1|2|3|4|5", "Double 120"},
    // Named by its code: the counter's next number, GestProvv does not matter.
    {"code D|X read * * 0", "Long 42, 41 7"},
    {"code D|X read * none|free 1|2|3|4|5", "Long 43, 41 7"},
    {"code P read * * 0", "Long 8, 41 7"},
    {"code P read * none|free 1|2|3|4|5", "Long 9, 41 7"},
    {"code D|X write * * 0", "Long 42, 42 7"},
    {"code D|X write * none|free 1|2|3|5", "Long 43, 43 7"},
    {"code D|X write * none|free 4", "Long 43, 41 7"},
    {"code P write * * 0", "Long 8, 41 8"},
    {"code P write * none|free 1|2|3|5", "Long 9, 41 9"},
    {"code P write * none|free 4", "Long 9, 41 7"},
    // Through the document type.
    {"type D|X read * * 0", "Long 42, 41 7"},
    {"type D|X read * none|free 1|2|3|4|5", "Long 43, 41 7"},
    {"type P read 0|'0'|NULL * 0", "Long 42, 41 7"},
    {"type P read 0|'0'|NULL none|free 1|2|3|4|5", "Long 43, 41 7"},
    {"type P read 1 * 0", "Long 8, 41 7"},
    {"type P read 1 none|free 1|2|3|4|5", "Long 9, 41 7"},
    {"type D|X write 0|'0' none 0", "Long 42, 42 7"},
    {"type D|X write 0|'0' none 1|2|3|4|5", "Long 43, 43 7"},
    {"type D|X write 0|'0' free *", "Double 57, 57 7"},
    {"type D|X write 0|'0' reserved 0", "Double 120, 120 7"},
    {"type D|X write 1|NULL * 0", "Long 42, 42 7"},
    {"type D|X write 1|NULL none|free 1|2|3|4|5", "Long 43, 43 7"},
    {"type P write 0|'0' none *", "Double 0, 0 7"},
    {"type P write 0|'0' free *", "Double 57, 57 7"},
    {"type P write 0|'0' reserved 0", "Double 120, 120 7"},
    {"type P write 1 * 0", "Long 8, 41 8"},
    {"type P write 1 none|free 1|2|3|4|5", "Long 9, 41 9"},
    // Null keeps no provisional sequence, but it is not 0 either: n_Prov is written.
    {"type P write NULL * 0", "Long 8, 41 8"},
    {"type P write NULL none 1|2|3|4|5", "Long 9, 41 9"},
    {"type P write NULL free 1|2|3|4|5", "Long 57, 41 57"},
};

// The same for the earlier member, for which reservations do not exist.
const std::vector<Words> kOldConditions(kConditions.begin(), kConditions.end() - 1);

const std::vector<Rule> kOldAssignment = {
    {"code D|X read * *", "Long 42, 41 7"},
    {"code P read * *", "Long 8, 41 7"},
    {"code D|X write * *", "Long 42, 42 7"},
    {"code P write * *", "Long 8, 41 8"},
    {"type D|X read * *", "Long 42, 41 7"},
    {"type P read * *", "Long 8, 41 7"},
    {"type D|X write 0|'0' none", "Long 42, 42 7"},
    {"type D|X write 0|'0' free", "Double 57, 57 7"},
    {"type D|X write 0|'0' reserved", "Double 120, 120 7"},
    {"type D|X write 1|NULL *", "Long 42, 42 7"},
    {"type P write 0|'0' none", "Double 0, 0 7"},
    {"type P write 0|'0' free", "Double 57, 57 7"},
    {"type P write 0|'0' reserved", "Double 120, 120 7"},
    {"type P write 1|NULL *", "Long 8, 41 8"},
};

Ask askFor(const Words& values) {
    Ask ask;
    ask.counter = values[0] == "code" ? "FAT" : "°°°";
    ask.sequence = values[1].c_str();
    ask.mode = values[2] == "write" ? "S" : "L";
    ask.number = values[4] == "free" ? kFree : values[4] == "reserved" ? kReserved : 0;
    return ask;
}

// One company for the numbers of GestProvv, another one for its text.
class AssignmentTable : public testing::Test {
protected:
    AssignmentTable() {
        for (const Company* company : {&numbers_, &texts_}) {
            company->document(42);
            company->document(8);
        }
    }

    const Company& companyFor(const Words& values) const {
        const Company& company = values[3] == "'0'" ? texts_ : numbers_;
        company.counter("41", "7", values[3]);
        company.run("DELETE FROM vtx_TabProPrenotati");
        company.reserve(kReserved);
        return company;
    }

    static std::string outcome(const Company& company, const std::string& result) {
        const auto number = [](const std::string& shown) { return shown.substr(5); };  // "Long 42"
        return result + ", " + number(company.definitive()) + " " + number(company.provisional());
    }

private:
    Company numbers_{"int"};
    Company texts_{"varchar(1)"};
};

TEST_F(AssignmentTable, HoldsForEveryCase) {
    forEachCase(kConditions, [&](const Words& values) {
        const Company& company = companyFor(values);
        Ask ask = askFor(values);
        ask.handling = std::stoi(values[5]);
        Caller caller(company);
        const std::string result = caller.progressivi(ask);
        const bool reserved = values[4] == "reserved" && ask.handling > 0;
        EXPECT_EQ(reserved ? result : outcome(company, result), expectedOf(kAssignment, values))
            << joined(values);
        EXPECT_EQ(caller.message(), "") << joined(values);
    });
}

TEST_F(AssignmentTable, HoldsForTheEarlierMember) {
    forEachCase(kOldConditions, [&](const Words& values) {
        const Company& company = companyFor(values);
        Caller caller(company);
        const std::string result = caller.old(askFor(values));
        EXPECT_EQ(outcome(company, result), expectedOf(kOldAssignment, values)) << joined(values);
        EXPECT_EQ(caller.message(), "") << joined(values);
        EXPECT_EQ(company.state(kReserved), "String ") << joined(values);
    });
}

}  // namespace
}  // namespace kap::numbering::test
