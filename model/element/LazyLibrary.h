#pragma once

#include <atomic>

namespace ZVSmartModel {

/// A library of others that is loaded when it is first called. Were it loaded with the program, all
/// who never draw, print or serve would wait for it and for all that it needs in turn. It stays
/// loaded. Safe to use from several threads at once.
class LazyLibrary {
  public:
    /// `name` is that of the shared object, with the version whose functions are called. Borrowed.
    constexpr explicit LazyLibrary(const char* name) : name(name) {}

    /// Whether it can be loaded. Throws std::bad_alloc where memory is all that is missing.
    bool IsThere() const;

    /// Where a function of it is. Throws Error Usage where it or the library is not there,
    /// std::bad_alloc where memory is all that is missing.
    void* Find(const char* function) const;

  private:
    const char* name;
};

/// A function of such a library, called as if it were linked with.
template <class Signature>
class LazyFunction {
  public:
    /// Both are borrowed.
    constexpr LazyFunction(const LazyLibrary& library, const char* name)
        : library(library), name(name) {}

    /// Which is what a call is made through.
    operator Signature*() const {
        Signature* function = address.load(std::memory_order_acquire);
        if (!function) {
            function = reinterpret_cast<Signature*>(library.Find(name));
            address.store(function, std::memory_order_release);
        }
        return function;
    }

  private:
    const LazyLibrary& library;
    const char* name;
    mutable std::atomic<Signature*> address = nullptr;
};

/// Declares, in a namespace, what hides the function `name` that a header has declared outside it.
#define ZVG_LAZY_FUNCTION(library, name) \
    inline constinit const LazyFunction<decltype(::name)> name(library, #name)

}  // namespace ZVSmartModel
