// An object that lives as long as the library: made where it is first asked for, never destroyed, since
// threads of the application may still call while the process ends. It lies in static storage, so that an
// unloaded library leaves no memory behind.
//
//   static NeverDestroyed<Registry> registry;
//   return registry.get();
#pragma once

#include <cstddef>
#include <new>

namespace tavra {

template <class T>
class NeverDestroyed {
  public:
    NeverDestroyed() { object_ = ::new (static_cast<void*>(storage_)) T; }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& get() { return *object_; }

  private:
    alignas(T) std::byte storage_[sizeof(T)];
    T* object_;
};

}  // namespace tavra
