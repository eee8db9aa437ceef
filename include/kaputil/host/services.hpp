#pragma once

#include <cstdint>

#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Small services for programs and their forms. Forms and text boxes are any late-bound objects with
// the properties named here; all measures are in twips. Errors of the file-system object, of a form
// and of its properties pass through.
namespace kap::host {

// Appends a line to a text file, which is made when it is missing; the message stands there
// unchanged. Several processes may write to the same file: each line stays whole.
KAPUTIL_EXPORT void WLog(const Variant& sLog_File, const Variant& sLog_Messaggio);

// The name of the user who is logged on; empty when the host does not know one.
[[nodiscard]] KAPUTIL_EXPORT String kapNomeUtente();

// For "MOD" the date and time at which a file was last changed, for any other attribute Empty.
// Raises 53 when the file is not there.
[[nodiscard]] KAPUTIL_EXPORT Variant AttributiFile(const String& sNomeFile,
                                                   const String& sAttributo = u"MOD");

// Presses keys for the window that has the keyboard: "{TAB}", "+{TAB}" (shift), "{^HOME}",
// "{^END}", "{^PGUP}", "{^PGDN}" (control), "{PGUP}", "{PGDN}", "{UP}", "{DOWN}" and "+C", which is
// Alt and C, written exactly so. Any other text presses nothing and shows a message that says so.
KAPUTIL_EXPORT void kapSendKeys(const String& keyString);

// Waits between one and two seconds; returns at once in the last two of a minute.
KAPUTIL_EXPORT void AspettaDueSecondi();

// Where a form stands below the title and tool bars of its parent: the parent's `Top` and `nTop`
// added to their heights. Raises 6 beyond 32767.
[[nodiscard]] KAPUTIL_EXPORT std::int16_t TrovaTop(const Variant& frmPadre, std::int16_t nTop);

// Places a form in its parent by `Left`, `Width`, `Top` and `Height`, from `nTop` down to the
// parent's lower edge. A parent whose `Tag` contains "[MDIExtender]" has bars of its own, which are
// left free. Raises 6 when the new `Top` is beyond 32767.
KAPUTIL_EXPORT void PosizionaForm(const Variant& frmFiglio, const Variant& frmPadre,
                                  std::int16_t nTop);

// Where the `Text` of a field is a single dot, among blanks or not, it becomes the value of another
// field: of its default property.
KAPUTIL_EXPORT void Ripeti(const Variant& txtDA_Campo, const Variant& txtA_Campo);

}  // namespace kap::host
