#include "com/server/registration.hpp"

#include <string>

#include <kaputil/automation/error.hpp>
#include <kaputil/platform/registry.hpp>

#include "base/unicode.hpp"
#include "com/served_classes.hpp"
#include "com/server/module.hpp"
#include "com/server/type_library.hpp"
#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/registry_key.hpp"
#include "platform/win32/wide.hpp"

namespace kap::com {
namespace {

namespace registry = platform::registry;

// The type library's place for this bitness, and what shows the classes of the other one. A system
// that knows only one shows the same classes again, which are removed by then.
#ifdef _WIN64
constexpr const char16_t* kPlatform = u"win64";
constexpr REGSAM kOtherBitness = KEY_WOW64_32KEY;
#else
constexpr const char16_t* kPlatform = u"win32";
constexpr REGSAM kOtherBitness = KEY_WOW64_64KEY;
#endif

// Calls between threads go the way of every dispatch interface.
constexpr const char16_t* kDispatchProxy = u"{00020420-0000-0000-C000-000000000046}";

// The system's log shows an event by a message of its source. The library's texts are whole, and
// the system's own program for making events has messages that show a text as it is.
constexpr const char16_t* kEventSource =
    u"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\KapUtil26";
constexpr const char16_t* kEventMessages = u"%SystemRoot%\\System32\\EventCreate.exe";

std::u16string bracedName(const String& identity) {
    return u"{" + identity.units() + u"}";
}

// The keys of one registration.
class Entries {
public:
    explicit Entries(Registration registration)
        : forMachine_(registration == Registration::Machine),
          root_(forMachine_ ? u"HKEY_LOCAL_MACHINE\\Software\\Classes\\"
                            : u"HKEY_CURRENT_USER\\Software\\Classes\\") {}

    void add() const {
        for (const ServedClass& one : servedClasses()) {
            addClass(one);
        }
        for (const TypeLibrary& types : typeLibraries()) {
            addTypeLibrary(types);
            for (const PublishedClass& one : types.classes) {
                addInterface(one, types);
            }
        }
        if (forMachine_) {
            addEventSource();
        }
    }

    void remove() const {
        for (const ServedClass& one : servedClasses()) {
            registry::deleteKey(root_ + u"CLSID\\" + bracedName(one.classId));
            if (!isRegisteredElsewhere(one)) {
                registry::deleteKey(root_ + one.programmaticName.units());
            }
        }
        for (const TypeLibrary& types : typeLibraries()) {
            removeTypeLibrary(types);
            for (const PublishedClass& one : types.classes) {
                registry::deleteKey(root_ + u"Interface\\" + bracedName(one.interfaceId));
            }
        }
        for (const char16_t* folder : {u"CLSID", u"Interface", u"TypeLib"}) {
            removeIfEmpty(root_ + folder);
        }
        if (!forMachine_) {
            removeIfEmpty(root_.substr(0, root_.size() - 1));  // the user had no classes at all
        }
        if (forMachine_ && !isRegisteredElsewhere(servedClasses().front())) {
            registry::deleteKey(kEventSource);
        }
    }

private:
    // The names are shared by both bitnesses, and stay as long as one of them is there.
    [[nodiscard]] bool isRegisteredElsewhere(const ServedClass& one) const {
        return registry::OpenedKey(root_ + u"CLSID\\" + bracedName(one.classId),
                                   KEY_QUERY_VALUE | kOtherBitness)
            .isOpen();
    }

    // A folder of classes that was made for ours alone, as it may be for a user.
    static void removeIfEmpty(const std::u16string& key) {
        if (registry::hasKey(key) && registry::keysBelow(key).empty() &&
            registry::valuesOf(key).empty()) {
            registry::deleteKey(key);
        }
    }

    static void set(const std::u16string& key, const char16_t* name, const registry::Value& value) {
        registry::createKey(key);
        if (!registry::setValue(key, name, value)) {
            throw AutomationError(errors::kPermissionDenied);
        }
    }

    void set(const std::u16string& key, const char16_t* name, std::u16string_view value) const {
        set(root_ + key, name, registry::textValue(value));
    }

    void addClass(const ServedClass& one) const {
        const std::u16string name = one.programmaticName.units();
        const std::u16string identity = bracedName(one.classId);
        const std::u16string key = u"CLSID\\" + identity;
        set(name, u"", one.summary);
        set(name + u"\\CLSID", u"", identity);
        set(key, u"", one.summary);
        set(key + u"\\InprocServer32", u"", modulePath());
        set(key + u"\\InprocServer32", u"ThreadingModel", u"Apartment");
        set(key + u"\\ProgID", u"", name);
        set(key + u"\\Programmable", u"", u"");
        set(key + u"\\TypeLib", u"", bracedName(one.types->identity));
        set(key + u"\\VERSION", u"", one.types->version);
    }

    void addTypeLibrary(const TypeLibrary& types) const {
        const std::u16string path = modulePath();
        const std::u16string key =
            u"TypeLib\\" + bracedName(types.identity) + u"\\" + types.version.units();
        set(key, u"", types.description);
        set(key + u"\\FLAGS", u"", u"0");
        set(key + u"\\0\\" + kPlatform, u"", carriedPath(types));
        set(key + u"\\HELPDIR", u"", path.substr(0, path.rfind(u'\\')));
    }

    void removeTypeLibrary(const TypeLibrary& types) const {
        const std::u16string identity = root_ + u"TypeLib\\" + bracedName(types.identity);
        const std::u16string version = identity + u"\\" + types.version.units();
        registry::deleteKey(version + u"\\0\\" + kPlatform);
        if (registry::keysBelow(version + u"\\0").empty()) {
            registry::deleteKey(identity);
        }
    }

    void addInterface(const PublishedClass& one, const TypeLibrary& types) const {
        const std::u16string key = u"Interface\\" + bracedName(one.interfaceId);
        set(key, u"", one.interfaceName);
        set(key + u"\\ProxyStubClsid32", u"", kDispatchProxy);
        set(key + u"\\TypeLib", u"", bracedName(types.identity));
        set(key + u"\\TypeLib", u"Version", types.version);
    }

    static void addEventSource() {
        registry::Value messages = registry::textValue(kEventMessages);
        messages.type = REG_EXPAND_SZ;
        set(kEventSource, u"EventMessageFile", messages);
        set(kEventSource, u"TypesSupported",
            registry::numberValue(EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE |
                                  EVENTLOG_INFORMATION_TYPE));
    }

    bool forMachine_;
    std::u16string root_;
};

// What the registration tool shows for a failure.
HRESULT codeFor(const AutomationError& error) {
    return error.number() == errors::kPermissionDenied
               ? E_ACCESSDENIED
               : platform::automation::codeOf(error.number());
}

}  // namespace

HRESULT registerModule(Registration registration) {
    try {
        Entries(registration).add();
        return S_OK;
    } catch (const AutomationError& error) {
        unregisterModule(registration);
        return codeFor(error);
    }
}

HRESULT unregisterModule(Registration registration) {
    try {
        Entries(registration).remove();
        return S_OK;
    } catch (const AutomationError& error) {
        return codeFor(error);
    }
}

Registration allowedRegistration() {
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Classes", 0,
                                         KEY_CREATE_SUB_KEY | KEY_SET_VALUE, &key);
    if (status != ERROR_SUCCESS) {
        return Registration::User;
    }
    RegCloseKey(key);
    return Registration::Machine;
}

}  // namespace kap::com
