#pragma once

#include <windows.h>

#include <oleauto.h>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>

// The library's objects as the system's component model sees them.
namespace kap::platform::automation {

// The dispatch interface of an object, with a reference of the caller's: the one that a client
// passed in, or a view of the library's own object, always the same one as long as anybody holds
// it. Null for the unset object.
//
// The view finds members in any case, takes named, optional and missing arguments in every form,
// writes by-reference arguments back, and tells errors with number, source and description. It
// knows no class: everything comes from the object's description. It belongs to the thread that
// made it and answers RPC_E_WRONG_THREAD on any other; the system marshals calls between threads
// for those who ask it to.
[[nodiscard]] IDispatch* dispatchOf(const Ref<Object>& object);

// The library's object behind its view; null for anything else.
[[nodiscard]] Ref<Object> ownObjectBehind(IDispatch* dispatch);

// How many views (and enumerations of collections) there are: the module stays loaded as long as
// there is one.
[[nodiscard]] long liveViews() noexcept;

// Where type information of classes comes from: of a class's interface, or of the class itself.
// Without a source, or where it has none for a class, objects have no type information.
struct TypeInformationSource {
    HRESULT (*interfaceOf)(const ClassDescription& description, ITypeInfo** information);
    HRESULT (*classOf)(const ClassDescription& description, ITypeInfo** information);
};
void setTypeInformation(const TypeInformationSource& source);

// The identity behind a text without braces.
[[nodiscard]] GUID identityOf(const String& text);

}  // namespace kap::platform::automation
