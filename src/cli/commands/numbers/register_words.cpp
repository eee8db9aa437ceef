#include "cli/commands/numbers/register_words.hpp"

#include <cstddef>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

namespace kap::cli {
namespace {

using numbering::Anomaly;
using numbering::AnomalyKind;
using numbering::Carrier;
using numbering::CarrierKind;
using numbering::NumberRegister;
using numbering::NumberState;

// A word as Italians and the English have it.
struct Word {
    std::string_view italian;
    std::string_view english;

    [[nodiscard]] std::string_view in(Language language) const {
        return language == Language::Italian ? italian : english;
    }
};

const Word& wordOf(NumberState state) {
    static constexpr Word kWords[] = {
        {"usati", "used"},       {"provvisori", "provisional"}, {"prenotati", "reserved"},
        {"mancanti", "missing"}, {"doppi", "doubled"},          {"oltre il contatore", "beyond"},
    };
    return kWords[static_cast<std::size_t>(state)];
}

const Word& wordOf(AnomalyKind kind) {
    static constexpr Word kWords[] = {
        {"mancante", "missing"},
        {"doppio", "doubled"},
        {"oltre il contatore", "beyond the counter"},
        {"movimento senza documento", "entry without document"},
        {"documento senza movimento", "document without entry"},
        {"prenotato e usato", "reserved and in use"},
        {"prenotazione scaduta", "reservation expired"},
        {"prenotazione senza uso", "reservation without use"},
        {"data che retrocede", "date goes back"},
        {"data di un altro anno", "date of another year"},
        {"contatore cambiato", "counter changed"},
    };
    return kWords[static_cast<std::size_t>(kind)];
}

const Word& wordOf(CarrierKind kind) {
    static constexpr Word kWords[] = {
        {"documento", "document"},
        {"fattura", "invoice"},
        {"movimento", "entry"},
        {"prenotazione", "reservation"},
    };
    return kWords[static_cast<std::size_t>(kind)];
}

std::string withType(const NumberRegister& numberRegister, const Carrier& carrier) {
    return numberRegister.labelOf(carrier).utf8() + " " + plain::text(carrier.number);
}

// What stands in parentheses behind a carrier.
std::string remarks(const NumberRegister& numberRegister, const Carrier& carrier,
                    Language language) {
    if (carrier.kind == CarrierKind::Reservation) {
        return reservationState(numberRegister.labelOf(carrier).utf8(), language);
    }
    std::string text = carrier.day == 0 ? std::string() : dayFor(carrier.day, language);
    if (carrier.registered) {
        text += text.empty() ? "" : ", ";
        text += language == Language::Italian ? "registrato" : "registered";
    }
    return text;
}

std::string placeText(const NumberRegister& numberRegister, const Anomaly& missing,
                      Language language) {
    const bool italian = language == Language::Italian;
    if (missing.carriers.empty()) {
        return italian ? "nessun documento" : "no document at all";
    }
    const Carrier& first = missing.carriers.front();
    const std::string text = carrierText(numberRegister, first, language);
    if (missing.carriers.size() == 1) {
        const bool behind = first.number > missing.last;
        const char* word = italian ? (behind ? "prima di " : "dopo ")  //
                                   : (behind ? "before " : "behind ");
        return word + text;
    }
    const std::string other = carrierText(numberRegister, missing.carriers.back(), language);
    return italian ? "tra " + text + " e " + other : "between " + text + " and " + other;
}

}  // namespace

std::string reservationState(std::string_view code, Language language) {
    const bool italian = language == Language::Italian;
    if (code == "D") {
        return italian ? "letta" : "read";
    }
    if (code == "U") {
        return italian ? "presa" : "taken";
    }
    if (code == "M") {
        return italian ? "presa per la contabilità" : "taken for the accounts";
    }
    return italian ? "libera" : "untouched";
}

std::string_view wordFor(NumberState state, Language language) {
    return wordOf(state).in(language);
}

std::string_view wordFor(AnomalyKind kind, Language language) {
    return wordOf(kind).in(language);
}

std::string isoDay(std::int32_t day) {
    return plain::isoDate(Date{static_cast<double>(day)});
}

std::string dayFor(std::int32_t day, Language language) {
    std::string iso = isoDay(day);
    if (language == Language::English) {
        return iso;
    }
    return iso.substr(8, 2) + "/" + iso.substr(5, 2) + "/" + iso.substr(0, 4);
}

std::string minuteFor(Date time, Language language) {
    constexpr std::string_view kDay = "2025-12-31";
    constexpr std::string_view kMinute = " 10:30";
    return dayFor(static_cast<std::int32_t>(time.days), language) +
           plain::isoDateTime(time).substr(kDay.size(), kMinute.size());
}

std::string grouped(std::int64_t number, Language language) {
    std::string text = plain::text(number);
    const std::size_t first = text.front() == '-' ? 1 : 0;
    for (std::size_t end = text.size(); end > first + 3; end -= 3) {
        text.insert(end - 3, 1, language == Language::Italian ? '.' : ',');
    }
    return text;
}

std::string carrierText(const NumberRegister& numberRegister, const Carrier& carrier,
                        Language language) {
    std::string text;
    if (carrier.kind != CarrierKind::Document) {
        text = std::string(wordOf(carrier.kind).in(language)) + " ";
    }
    const bool typed =
        carrier.kind == CarrierKind::Document || carrier.kind == CarrierKind::Invoice;
    text += typed ? withType(numberRegister, carrier) : plain::text(carrier.number);
    const std::string more = remarks(numberRegister, carrier, language);
    return more.empty() ? text : text + " (" + more + ")";
}

std::string carriersText(const NumberRegister& numberRegister, std::span<const Carrier> carriers,
                         Language language) {
    std::string text;
    for (const Carrier& one : carriers) {
        text += (text.empty() ? "" : ", ") + carrierText(numberRegister, one, language);
    }
    return text;
}

std::string anomalyText(const NumberRegister& numberRegister, const Anomaly& anomaly,
                        Language language) {
    if (anomaly.kind == AnomalyKind::Missing) {
        return placeText(numberRegister, anomaly, language);
    }
    std::string text = carriersText(numberRegister, anomaly.carriers, language);
    const bool italian = language == Language::Italian;
    if (anomaly.kind == AnomalyKind::CounterChanged) {
        text += (italian ? "; altro contatore: " : "; other counter: ") + anomaly.other.utf8();
    }
    if (anomaly.kind == AnomalyKind::DateBack && anomaly.carriers.size() == 2) {
        return carrierText(numberRegister, anomaly.carriers.front(), language) +
               (italian ? " dopo " : " behind ") +
               carrierText(numberRegister, anomaly.carriers.back(), language);
    }
    return text;
}

std::string rangeText(std::int64_t first, std::int64_t last) {
    return first == last ? plain::text(first) : plain::text(first) + "-" + plain::text(last);
}

}  // namespace kap::cli
