#include "model/element/LazyLibrary.h"

#include <dlfcn.h>

#include <string>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

bool LazyLibrary::IsThere() const {
    return dlopen(name, RTLD_NOW) != nullptr;
}

void* LazyLibrary::Find(const char* function) const {
    void* const library = dlopen(name, RTLD_NOW);
    void* const address = library ? dlsym(library, function) : nullptr;
    if (address) return address;
    const char* const reason = dlerror();
    throw Error(Status::Usage, reason ? reason : std::string("cannot load ") + name);
}

}  // namespace ZVSmartModel
