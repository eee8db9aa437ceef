#include <ostream>

#include <nlohmann/json.hpp>

#include "cli/commands/numbers/numbers_output.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;
using numbering::Carrier;
using numbering::CarrierKind;
using numbering::NumberRegister;

Json jsonOf(const std::optional<std::int64_t>& number) {
    return number ? Json(*number) : Json(nullptr);
}

Json jsonOf(const NumberRegister& one, const Carrier& carrier) {
    Json json = {{"kind", numbering::nameOf(carrier.kind)}, {"number", carrier.number}};
    if (carrier.kind == CarrierKind::Document || carrier.kind == CarrierKind::Invoice) {
        json["type"] = one.labelOf(carrier).utf8();
    }
    if (carrier.kind == CarrierKind::Document || carrier.kind == CarrierKind::Entry) {
        json["date"] = carrier.day == 0 ? Json(nullptr) : Json(isoDay(carrier.day));
    }
    if (carrier.kind == CarrierKind::Document) {
        json["registered"] = carrier.registered;
    }
    if (carrier.kind == CarrierKind::Reservation) {
        const std::string code = one.labelOf(carrier).utf8();
        json["code"] = code;
        json["state"] = reservationState(code, Language::English);
    }
    return json;
}

template <class Carriers>
Json carriersOf(const NumberRegister& one, const Carriers& carriers) {
    Json all = Json::array();
    for (const Carrier& carrier : carriers) {
        all.push_back(jsonOf(one, carrier));
    }
    return all;
}

Json anomaliesOf(const NumberRegister& one) {
    Json all = Json::array();
    for (const auto& anomaly : one.anomalies) {
        Json json = {{"kind", numbering::nameOf(anomaly.kind)},
                     {"first", anomaly.first},
                     {"last", anomaly.last},
                     {"carriers", carriersOf(one, anomaly.carriers)}};
        if (anomaly.kind == numbering::AnomalyKind::CounterChanged) {
            json["otherCounter"] = anomaly.other.utf8();
        }
        all.push_back(std::move(json));
    }
    return all;
}

Json linesOf(const NumbersView& view, const NumberRegister& one) {
    Json all = Json::array();
    for (const auto& line : view.linesOf(one)) {
        all.push_back({{"first", line.first},
                       {"last", line.last},
                       {"state", numbering::nameOf(line.state)},
                       {"carriers", carriersOf(one, line.carriers)}});
    }
    return all;
}

Json jsonOf(const NumbersView& view, const NumberRegister& one) {
    const auto& totals = one.totals;
    Json json = {{"counter", one.counter.utf8()},
                 {"year", one.year},
                 {"description", one.description.utf8()},
                 {"hasCounter", one.hasCounter},
                 {"definitive", jsonOf(one.definitive)},
                 {"provisional", jsonOf(one.provisional)},
                 {"keepsProvisional", one.keepsProvisional},
                 {"totals",
                  {{"used", totals.used},
                   {"reserved", totals.reserved},
                   {"missing", totals.missing},
                   {"doubled", totals.doubled},
                   {"provisional", totals.provisional},
                   {"ahead", totals.ahead},
                   {"beyond", totals.beyond}}},
                 {"reservations", carriersOf(one, view.reservationsOf(one))},
                 {"anomalies", anomaliesOf(one)}};
    if (view.everyNumber) {
        json["register"] = linesOf(view, one);
    }
    return json;
}

}  // namespace

void printNumbersJson(std::ostream& out, const NumbersView& view) {
    Json all = Json::array();
    for (const NumberRegister& one : view.registers) {
        all.push_back(jsonOf(view, one));
    }
    out << Json{{"counters", std::move(all)}}.dump(2) << '\n';
}

}  // namespace kap::cli
