#include <kaputil/platform/keyboard.hpp>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <dlfcn.h>

#include <memory>
#include <optional>
#include <vector>

#include <kaputil/platform/message_box.hpp>

namespace kap::platform {
namespace {

void warn(const char16_t* reason) {
    showMessage(defaultMessageTitle(), MessageSeverity::Warning,
                String(u"Nessun tasto inviato: ") + reason);
}

// A library of the system that is loaded when it is first needed: a server has none of those of a
// desktop. It stays loaded, for it keeps state of its own.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const char* file) : handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}

    [[nodiscard]] bool isThere() const noexcept { return handle_ != nullptr; }

    // Finds a function; `function` stays null when it is missing.
    template <class Function>
    void find(const char* name, Function& function) const {
        function = reinterpret_cast<Function>(dlsym(handle_, name));
    }

private:
    void* handle_;
};

// The functions of the window system that are used here.
struct WindowSystem {
    decltype(&XOpenDisplay) openDisplay = nullptr;
    decltype(&XCloseDisplay) closeDisplay = nullptr;
    decltype(&XKeysymToKeycode) keysymToKeycode = nullptr;
    decltype(&XSync) sync = nullptr;
    decltype(&XTestQueryExtension) queryExtension = nullptr;
    decltype(&XTestFakeKeyEvent) fakeKeyEvent = nullptr;
};

std::optional<WindowSystem> load() {
    const LoadedLibrary base("libX11.so.6");
    const LoadedLibrary test("libXtst.so.6");
    if (!base.isThere() || !test.isThere()) {
        return std::nullopt;
    }
    WindowSystem functions;
    base.find("XOpenDisplay", functions.openDisplay);
    base.find("XCloseDisplay", functions.closeDisplay);
    base.find("XKeysymToKeycode", functions.keysymToKeycode);
    base.find("XSync", functions.sync);
    test.find("XTestQueryExtension", functions.queryExtension);
    test.find("XTestFakeKeyEvent", functions.fakeKeyEvent);
    const bool complete = functions.openDisplay != nullptr && functions.closeDisplay != nullptr &&
                          functions.keysymToKeycode != nullptr && functions.sync != nullptr &&
                          functions.queryExtension != nullptr && functions.fakeKeyEvent != nullptr;
    return complete ? std::optional(functions) : std::nullopt;
}

KeySym symbolOf(VirtualKey key) {
    switch (key) {
        case VirtualKey::Tab:
            return XK_Tab;
        case VirtualKey::Shift:
            return XK_Shift_L;
        case VirtualKey::Control:
            return XK_Control_L;
        case VirtualKey::Alt:
            return XK_Alt_L;
        case VirtualKey::PageUp:
            return XK_Page_Up;
        case VirtualKey::PageDown:
            return XK_Page_Down;
        case VirtualKey::End:
            return XK_End;
        case VirtualKey::Home:
            return XK_Home;
        case VirtualKey::Up:
            return XK_Up;
        case VirtualKey::Down:
            return XK_Down;
        case VirtualKey::C:
            return XK_c;
    }
    return NoSymbol;
}

using DisplayHandle = std::unique_ptr<Display, int (*)(Display*)>;

// The keys of this keyboard; empty when it lacks one.
std::vector<KeyCode> codesOf(const WindowSystem& system, Display* display,
                             std::span<const VirtualKey> keys) {
    std::vector<KeyCode> codes;
    for (const VirtualKey key : keys) {
        const KeyCode code = system.keysymToKeycode(display, symbolOf(key));
        if (code == 0) {
            return {};
        }
        codes.push_back(code);
    }
    return codes;
}

void press(const WindowSystem& system, Display* display, const std::vector<KeyCode>& codes) {
    for (const KeyCode code : codes) {
        system.fakeKeyEvent(display, code, True, CurrentTime);
    }
    for (auto code = codes.rbegin(); code != codes.rend(); ++code) {
        system.fakeKeyEvent(display, *code, False, CurrentTime);
    }
    system.sync(display, False);
}

}  // namespace

void pressTogether(std::span<const VirtualKey> keys) {
    static const std::optional<WindowSystem> system = load();
    if (!system) {
        warn(u"il sistema grafico non è installato");
        return;
    }
    const DisplayHandle display(system->openDisplay(nullptr), system->closeDisplay);
    if (!display) {
        warn(u"non c'è uno schermo");
        return;
    }
    int unused = 0;
    if (system->queryExtension(display.get(), &unused, &unused, &unused, &unused) == False) {
        warn(u"lo schermo non accetta tasti da programmi");
        return;
    }
    const std::vector<KeyCode> codes = codesOf(*system, display.get(), keys);
    if (codes.empty()) {
        warn(u"la tastiera non ha il tasto");
        return;
    }
    press(*system, display.get(), codes);
}

}  // namespace kap::platform
