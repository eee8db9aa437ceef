#include <kaputil/platform/creatable_objects.hpp>

#include <string>

#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/com_object.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform {

// The system has its own file-system object, and what else is installed.
std::span<const PlatformClass> hostClasses() {
    return {};
}

std::span<const ClassReference> hostObjectClasses() {
    return {};
}

Ref<Object> createHostObject(std::u16string_view programmaticName) {
    CLSID identity{};
    if (FAILED(CLSIDFromProgID(wide(std::u16string(programmaticName)), &identity))) {
        return {};
    }
    automation::InterfacePointer<IDispatch> made;
    const HRESULT result =
        CoCreateInstance(identity, nullptr, CLSCTX_SERVER, IID_IDispatch, made.outVoid());
    if (result == CO_E_NOTINITIALIZED) {
        // A program that uses no components itself: its thread takes part from now on.
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        return createHostObject(programmaticName);
    }
    if (FAILED(result)) {
        EXCEPINFO none{};
        automation::raise(result, none);
    }
    return automation::objectBehind(made.get());
}

}  // namespace kap::platform
