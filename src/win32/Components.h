#pragma once

#include <windows.h>
// The component library's header needs the one above first.
#include <objbase.h>

namespace trelv::win32 {

/// The component library, in use on this thread as long as this lives.
class Components {
 public:
  Components() : begun_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
  ~Components() {
    if (begun_) {
      CoUninitialize();
    }
  }
  Components(const Components&) = delete;
  Components& operator=(const Components&) = delete;

 private:
  bool begun_;
};

/// For Owned: a reference to an object of the component library.
template <class Interface>
struct ObjectKind {
  using Handle = Interface*;
  static Handle none() { return nullptr; }
  static void close(Handle object) { object->Release(); }
};

}  // namespace trelv::win32
