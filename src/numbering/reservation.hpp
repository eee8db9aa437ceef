#pragma once

#include <kaputil/ado/recordset.hpp>
#include <kaputil/core/cerrore.hpp>

#include "numbering/request.hpp"

namespace kap::numbering {

// Looks for the number that the caller holds among the reservations of the counter `code`. When it
// is there, `ControllaPrenotato` has dealt with it and the result is true.
[[nodiscard]] bool checkReservation(const Request& request, const String& code,
                                    ado::Recordset& counter, CErrore& errore);

// Moves a reservation that is used through its states, tells in `errore` who else carries the
// number, and when a definitive number is taken deletes the reservation and raises the counter to
// it. `documentType` is empty when the caller named the counter by its code.
void ControllaPrenotato(const Request& request, ado::Recordset& reservation,
                        ado::Recordset& counter, const String& documentType, CErrore& errore);

}  // namespace kap::numbering
