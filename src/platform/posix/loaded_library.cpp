#include "platform/loaded_library.hpp"

#include <dlfcn.h>

#include <string>

#include <kaputil/automation/error.hpp>

namespace kap::platform {
namespace {

// The loader counts how often a library is opened and looks it up by its name each time, so there
// is nothing to remember here.
void* handleOf(const char* file) noexcept {
    return dlopen(file, RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

bool LoadedLibrary::isThere() const noexcept {
    return handleOf(file_) != nullptr;
}

void* LoadedLibrary::find(const char* name) const {
    void* library = handleOf(file_);
    void* found = library == nullptr ? nullptr : dlsym(library, name);
    if (found == nullptr) {
        const char* reason = dlerror();  // NOLINT(concurrency-mt-unsafe): a text of this thread
        throw AutomationError(errors::kCannotCreateObject,
                              std::string("The library ") + file_ +
                                  " cannot be used: " + (reason == nullptr ? name : reason));
    }
    return found;
}

}  // namespace kap::platform
