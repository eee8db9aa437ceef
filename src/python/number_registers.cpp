#include "python/number_registers.hpp"

#include <pybind11/stl.h>

#include <optional>
#include <string_view>

#include <kaputil/numbering/number_register.hpp>

#include "python/dates.hpp"
#include "python/texts.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

using numbering::Carrier;
using numbering::NumberRegister;

py::str text(std::string_view utf8) {
    return py::str(utf8.data(), utf8.size());
}

py::tuple carrierTuple(const NumberRegister& of, const Carrier& one) {
    py::object day = py::none();
    if (one.day != 0) {
        day = toPython(Date{static_cast<double>(one.day)}).attr("date")();
    }
    return py::make_tuple(text(numbering::nameOf(one.kind)), toPython(of.labelOf(one)), one.number,
                          day, one.registered);
}

template <class Carriers>
py::list carrierList(const NumberRegister& of, const Carriers& carriers) {
    py::list all;
    for (const Carrier& one : carriers) {
        all.append(carrierTuple(of, one));
    }
    return all;
}

py::dict totalsOf(const NumberRegister& one) {
    py::dict totals;
    totals["used"] = one.totals.used;
    totals["reserved"] = one.totals.reserved;
    totals["missing"] = one.totals.missing;
    totals["doubled"] = one.totals.doubled;
    totals["provisional"] = one.totals.provisional;
    totals["ahead"] = one.totals.ahead;
    totals["beyond"] = one.totals.beyond;
    return totals;
}

py::tuple registerTuple(const NumberRegister& one) {
    py::list rows;
    for (const auto& line : numbering::linesOf(one)) {
        rows.append(py::make_tuple(line.first, line.last, text(numbering::nameOf(line.state)),
                                   carrierList(one, line.carriers)));
    }
    py::list anomalies;
    for (const auto& anomaly : one.anomalies) {
        anomalies.append(py::make_tuple(text(numbering::nameOf(anomaly.kind)), anomaly.first,
                                        anomaly.last, carrierList(one, anomaly.carriers),
                                        toPython(anomaly.other)));
    }
    return py::make_tuple(toPython(one.counter), one.year, toPython(one.description),
                          one.hasCounter, one.definitive, one.provisional, one.keepsProvisional,
                          totalsOf(one), rows, anomalies);
}

py::list numberRegisters(const py::object& connection, const py::object& counter,
                         const std::optional<int>& year, const py::object& today) {
    numbering::RegisterRequest request;
    if (!counter.is_none()) {
        request.counter = toText(counter);
    }
    request.year = year;
    if (!today.is_none()) {
        request.today = toDate(today);
    }
    Variant database = toVariant(connection);
    std::vector<NumberRegister> found;
    {
        const py::gil_scoped_release unlocked;
        found = numbering::readRegisters(database, request);
    }
    py::list all;
    for (const NumberRegister& one : found) {
        all.append(registerTuple(one));
    }
    return all;
}

}  // namespace

void bindNumberRegisters(py::module_& module) {
    module.def("number_registers", &numberRegisters);
}

}  // namespace kap::python
