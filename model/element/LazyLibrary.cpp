#include "model/element/LazyLibrary.h"

#include <dlfcn.h>

#include <new>
#include <string>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

namespace {

/// Why the last call failed; the loader tells lack of memory in words alone.
std::string Reason() {
    const char* const said = dlerror();
    std::string reason = said ? said : "";
    for (const char* words : {"failed to map segment", "annot allocate memory"}) {
        if (reason.find(words) != std::string::npos) throw std::bad_alloc();
    }
    return reason;
}

}  // namespace

bool LazyLibrary::IsThere() const {
    if (dlopen(name, RTLD_NOW)) return true;
    Reason();
    return false;
}

void* LazyLibrary::Find(const char* function) const {
    void* const library = dlopen(name, RTLD_NOW);
    void* const address = library ? dlsym(library, function) : nullptr;
    if (!address) throw Error(Status::Usage, Reason());
    return address;
}

}  // namespace ZVSmartModel
