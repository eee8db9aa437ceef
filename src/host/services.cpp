#include <kaputil/host/services.hpp>

#include <optional>
#include <vector>

#include <kaputil/automation/convert.hpp>
#include <kaputil/platform/creatable_objects.hpp>
#include <kaputil/platform/keyboard.hpp>
#include <kaputil/platform/message_box.hpp>
#include <kaputil/platform/two_second_wait.hpp>
#include <kaputil/platform/user.hpp>

#include "automation/late_bound.hpp"
#include "platform/folder_lock.hpp"
#include "platform/paths.hpp"

namespace kap::host {
namespace {

Variant fileSystem() {
    return platform::createObject(u"Scripting.FileSystemObject");
}

// Keeps other processes out while a log file is looked for and made: one that came between would
// lose its first lines. Where the folder cannot be locked, making the file is left to chance.
std::optional<platform::FolderLock> lockFolderOf(const Variant& file) {
    if (!file.isString()) {
        return std::nullopt;
    }
    return platform::FolderLock::ifPossible(platform::locate(file.as<String>()).parent_path());
}

using platform::VirtualKey;

struct Combination {
    std::u16string_view name;
    std::vector<VirtualKey> keys;
};

const std::vector<Combination>& combinations() {
    static const std::vector<Combination> all = {
        {u"{TAB}", {VirtualKey::Tab}},
        {u"+{TAB}", {VirtualKey::Shift, VirtualKey::Tab}},
        {u"{^HOME}", {VirtualKey::Control, VirtualKey::Home}},
        {u"{^END}", {VirtualKey::Control, VirtualKey::End}},
        {u"{^PGUP}", {VirtualKey::Control, VirtualKey::PageUp}},
        {u"{PGUP}", {VirtualKey::PageUp}},
        {u"{^PGDN}", {VirtualKey::Control, VirtualKey::PageDown}},
        {u"{PGDN}", {VirtualKey::PageDown}},
        {u"{UP}", {VirtualKey::Up}},
        {u"{DOWN}", {VirtualKey::Down}},
        // Deliberately Alt, although "+" is Shift in "+{TAB}": the forms' menus depend on it.
        {u"+C", {VirtualKey::Alt, VirtualKey::C}},
    };
    return all;
}

}  // namespace

void WLog(const Variant& sLog_File, const Variant& sLog_Messaggio) {
    constexpr std::int16_t kAppend = 8;
    const Variant files = fileSystem();
    {
        const auto lock = lockFolderOf(sLog_File);
        if (!convert::toBoolean(late::call(files, u"fileexists", {sLog_File}))) {
            late::call(files, u"CreateTextFile", {sLog_File});
        }
    }
    const Variant stream = late::call(files, u"OpenTextFile", {sLog_File, kAppend, false});
    late::call(stream, u"WriteLine", {sLog_Messaggio});
    late::call(stream, u"Close");
}

String kapNomeUtente() {
    // What the buffer of 256 characters, one of them for the end, takes.
    constexpr std::size_t kLongest = 255;
    const auto name = platform::userName();
    return name && name->size() <= kLongest ? *name : String();
}

Variant AttributiFile(const String& sNomeFile, const String& sAttributo) {
    const Variant file = late::call(fileSystem(), u"GetFile", {sNomeFile});
    return sAttributo == String(u"MOD") ? late::get(file, u"DateLastModified") : Variant();
}

void kapSendKeys(const String& keyString) {
    for (const Combination& combination : combinations()) {
        if (combination.name == keyString.view()) {
            platform::pressTogether(combination.keys);
            return;
        }
    }
    platform::showMessage(u"kapSendKeys", platform::MessageSeverity::Error,
                          u"Tasto " + keyString + u" non gestito");
}

void AspettaDueSecondi() {
    platform::waitTwoSeconds();
}

}  // namespace kap::host
