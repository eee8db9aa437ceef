#include <kaputil/platform/keyboard.hpp>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <memory>
#include <vector>

#include <kaputil/platform/message_box.hpp>

#include "platform/loaded_library.hpp"

namespace kap::platform {
namespace {

void warn(const char16_t* reason) {
    showMessage(defaultMessageTitle(), MessageSeverity::Warning,
                String(u"Nessun tasto inviato: ") + reason);
}

// A server has none of the libraries of a desktop.
constexpr LoadedLibrary kWindows("libX11.so.6");
constexpr LoadedLibrary kKeys("libXtst.so.6");

// The functions of the window system that are used here, called by their own names.
// NOLINTBEGIN(readability-identifier-naming)
constinit const LoadedFunction<decltype(::XOpenDisplay)> XOpenDisplay(kWindows, "XOpenDisplay");
constinit const LoadedFunction<decltype(::XCloseDisplay)> XCloseDisplay(kWindows, "XCloseDisplay");
constinit const LoadedFunction<decltype(::XKeysymToKeycode)> XKeysymToKeycode(kWindows,
                                                                              "XKeysymToKeycode");
constinit const LoadedFunction<decltype(::XSync)> XSync(kWindows, "XSync");
constinit const LoadedFunction<decltype(::XTestQueryExtension)> XTestQueryExtension(
    kKeys, "XTestQueryExtension");
constinit const LoadedFunction<decltype(::XTestFakeKeyEvent)> XTestFakeKeyEvent(
    kKeys, "XTestFakeKeyEvent");
// NOLINTEND(readability-identifier-naming)

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
std::vector<KeyCode> codesOf(Display* display, std::span<const VirtualKey> keys) {
    std::vector<KeyCode> codes;
    for (const VirtualKey key : keys) {
        const KeyCode code = XKeysymToKeycode(display, symbolOf(key));
        if (code == 0) {
            return {};
        }
        codes.push_back(code);
    }
    return codes;
}

void press(Display* display, const std::vector<KeyCode>& codes) {
    for (const KeyCode code : codes) {
        XTestFakeKeyEvent(display, code, True, CurrentTime);
    }
    for (auto code = codes.rbegin(); code != codes.rend(); ++code) {
        XTestFakeKeyEvent(display, *code, False, CurrentTime);
    }
    XSync(display, False);
}

}  // namespace

void pressTogether(std::span<const VirtualKey> keys) {
    if (!kWindows.isThere() || !kKeys.isThere()) {
        warn(u"il sistema grafico non è installato");
        return;
    }
    const DisplayHandle display(XOpenDisplay(nullptr), XCloseDisplay);
    if (!display) {
        warn(u"non c'è uno schermo");
        return;
    }
    int unused = 0;
    if (XTestQueryExtension(display.get(), &unused, &unused, &unused, &unused) == False) {
        warn(u"lo schermo non accetta tasti da programmi");
        return;
    }
    const std::vector<KeyCode> codes = codesOf(display.get(), keys);
    if (codes.empty()) {
        warn(u"la tastiera non ha il tasto");
        return;
    }
    press(display.get(), codes);
}

}  // namespace kap::platform
