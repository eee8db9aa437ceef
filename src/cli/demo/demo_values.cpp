#include "cli/demo/demo_values.hpp"

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include <kaputil/automation/variant.hpp>
#include <kaputil/platform/message_box.hpp>

#include "cli/temporary_folder.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

// Message boxes go to a file of its own for as long as it lives.
class MessageLog {
public:
    MessageLog() : file_(folder_.path() / "messages.log") { platform::setMessageLog(file_); }
    ~MessageLog() { platform::setMessageLog(std::nullopt); }
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    // The text of the last message, which stands behind its time, severity and title.
    [[nodiscard]] std::string lastText() const {
        std::ifstream in(file_);
        std::string last;
        for (std::string line; std::getline(in, line);) {
            last = line;
        }
        return last.substr(last.rfind('\t') + 1);
    }

private:
    TemporaryFolder folder_;
    std::filesystem::path file_;
};

void expect(DemoReport& report, Step step, const Json& result) {
    step.expected = step.result == result;
    report.add(step);
}

// The value of an argument as the call left it.
std::string valueIn(const Step& step, const std::string& name) {
    for (const auto& [argument, text] : step.values) {
        if (argument == name) {
            return text;
        }
    }
    return {};
}

void amountsAndDates(DemoReport& report, DemoUser& user) {
    constexpr std::int16_t kCents = 2;
    constexpr std::int16_t kAugust = 8;
    report.chapter("Amounts and dates",
                   "Rounded as bookkeepers do; typed in a hurry, written in full.", "");
    expect(report, user.call("KapRound", {{"Numero", 2.675}, {"Decimali", kCents}}), 2.68);
    expect(report,
           user.call("KapRound", {{"Numero", 1.239}, {"Decimali", kCents}, {"Arrotonda", "I"}}),
           1.23);
    expect(report, user.call("kapControllaData", {{"Valore", "25122003"}}), "25/12/2003");
    expect(report, user.call("kapControllaData", {{"Valore", "31022003"}}), "");
    expect(report, user.call("NomeMese", {{"nMese", kAugust}, {"sLingua", "FRA"}}), "Août");
    expect(report, user.call("ConvertiData", {{"sData", "2003-03-05"}, {"sLingua", "ITA"}}),
           "5 Marzo 2003 ");
}

void priceOfALine(DemoReport& report, DemoUser& user) {
    report.chapter("The price of a line",
                   "Quantity times price less discounts, with the decimals of the currency; of a "
                   "discount above 99.99 a hair is left.",
                   "");
    expect(report,
           user.callConnected("CalcVal", {{"sValuta", "EUR"},
                                          {"nPrezzo", 10.0},
                                          {"nQta", 3.0},
                                          {"nSc1", 10.0},
                                          {"nScTestata", 5.0}}),
           25.65);
    expect(report,
           user.callConnected("CalcVal", {{"sValuta", "JPY"}, {"nPrezzo", 1234.5}, {"nQta", 3.0}}),
           3704.0);
    Step capped = user.callConnected(
        "CalcVal", {{"sValuta", "EUR"}, {"nPrezzo", 1000.0}, {"nQta", 10.0}, {"nSc1", 150.0}});
    const std::string discount = valueIn(capped, "nSc1");
    capped.expected = capped.result == 1.0 && (discount == "99,99" || discount == "99.99");
    report.add(capped);
}

// Nobody sits in front of a server: what would be a message box is a line of a log.
void messageForNobody(DemoReport& report, DemoUser& user) {
    report.chapter("A message for nobody",
                   "The currency is unknown; the message box is written to a log instead.", "");
    const MessageLog log;
    Step unknown =
        user.callConnected("CalcVal", {{"sValuta", "XYZ"}, {"nPrezzo", 10.0}, {"nQta", 3.0}});
    unknown.message = log.lastText();
    unknown.expected = unknown.result.is_null() && unknown.message == "Valuta XYZ non trovata!";
    report.add(unknown);
}

}  // namespace

void tellOfValues(DemoReport& report, DemoUser& user) {
    amountsAndDates(report, user);
    priceOfALine(report, user);
    messageForNobody(report, user);
}

}  // namespace kap::cli
