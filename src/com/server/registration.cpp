#include "com/server/registration.hpp"

#include <string>

#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/frame/error.hpp>
#include <kaputil/platform/registry.hpp>

#include "com/served_classes.hpp"
#include "com/server/module.hpp"
#include "frame/unicode.hpp"
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
        addTypeLibrary();
        for (const PublishedClass& one : publishedClasses()) {
            addInterface(one);
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
        const std::u16string identity = root_ + u"TypeLib\\" + bracedName(library().typeLibraryId);
        const std::u16string version = identity + u"\\" + library().typeLibraryVersion.units();
        registry::deleteKey(version + u"\\0\\" + kPlatform);
        if (registry::keysBelow(version + u"\\0").empty()) {
            registry::deleteKey(identity);
        }
        for (const PublishedClass& one : publishedClasses()) {
            registry::deleteKey(root_ + u"Interface\\" + bracedName(one.interfaceId));
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
        if (one.published) {
            set(key + u"\\TypeLib", u"", bracedName(library().typeLibraryId));
            set(key + u"\\VERSION", u"", library().typeLibraryVersion);
        }
    }

    void addTypeLibrary() const {
        const std::u16string path = modulePath();
        const std::u16string key = u"TypeLib\\" + bracedName(library().typeLibraryId) + u"\\" +
                                   library().typeLibraryVersion.units();
        set(key, u"", library().description);
        set(key + u"\\FLAGS", u"", u"0");
        set(key + u"\\0\\" + kPlatform, u"", path);
        set(key + u"\\HELPDIR", u"", path.substr(0, path.rfind(u'\\')));
    }

    void addInterface(const PublishedClass& one) const {
        const std::u16string key = u"Interface\\" + bracedName(one.interfaceId);
        set(key, u"", one.interfaceName);
        set(key + u"\\ProxyStubClsid32", u"", kDispatchProxy);
        set(key + u"\\TypeLib", u"", bracedName(library().typeLibraryId));
        set(key + u"\\TypeLib", u"Version", library().typeLibraryVersion);
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
