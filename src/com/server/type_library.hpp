#pragma once

namespace kap::com {

// Gives the objects of published classes the type information that the module carries.
void offerTypeInformation();

// Lets the loaded type library go: it must not outlive the module.
void dropTypeInformation();

}  // namespace kap::com
