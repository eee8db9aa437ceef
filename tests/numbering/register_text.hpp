#pragma once

#include <string>
#include <vector>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/numbering/number_register.hpp>

namespace kap::numbering::test {

// A carrier in a word: "FAI 5", "FAI 5*" when it is registered, "invoice FAI 5", "entry 5",
// "reservation 5" with its state.
inline std::string carrierText(const NumberRegister& of, const Carrier& one) {
    const std::string number = plain::text(one.number);
    const std::string label = of.labelOf(one).utf8();
    switch (one.kind) {
        case CarrierKind::Document:
            return label + " " + number + (one.registered ? "*" : "");
        case CarrierKind::Invoice:
            return "invoice " + label + " " + number;
        case CarrierKind::Entry:
            return "entry " + number;
        case CarrierKind::Reservation:
            break;
    }
    return "reservation " + number + (label.empty() ? "" : " " + label);
}

inline const char* anomalyName(AnomalyKind kind) {
    constexpr const char* kNames[] = {"missing",
                                      "doubled",
                                      "beyond",
                                      "entry without document",
                                      "document without entry",
                                      "reserved in use",
                                      "reservation expired",
                                      "reservation unused",
                                      "date back",
                                      "other year",
                                      "counter changed"};
    return kNames[static_cast<std::size_t>(kind)];
}

inline std::string rangeText(std::int64_t first, std::int64_t last) {
    return first == last ? plain::text(first) : plain::text(first) + "-" + plain::text(last);
}

template <class Carriers>
std::string carriersText(const NumberRegister& of, const Carriers& carriers) {
    std::string text;
    for (const Carrier& one : carriers) {
        text += (text.empty() ? "" : ", ") + carrierText(of, one);
    }
    return text;
}

// "3-4 missing", "5 used: FAI 5*, entry 5"
inline std::vector<std::string> lineTexts(const NumberRegister& of) {
    std::vector<std::string> texts;
    for (const RegisterLine& line : linesOf(of)) {
        const std::string carriers = carriersText(of, line.carriers);
        texts.push_back(rangeText(line.first, line.last) + " " + std::string(nameOf(line.state)) +
                        (carriers.empty() ? "" : ": " + carriers));
    }
    return texts;
}

// "3-4 missing: FAI 2, FAI 5"
inline std::vector<std::string> anomalyTexts(const NumberRegister& of) {
    std::vector<std::string> texts;
    for (const Anomaly& one : of.anomalies) {
        const std::string carriers = carriersText(of, one.carriers);
        texts.push_back(rangeText(one.first, one.last) + " " + anomalyName(one.kind) +
                        (one.other.empty() ? "" : " " + one.other.utf8()) +
                        (carriers.empty() ? "" : ": " + carriers));
    }
    return texts;
}

}  // namespace kap::numbering::test
