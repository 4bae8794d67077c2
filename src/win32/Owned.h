#pragma once

#include <windows.h>

#include <utility>

namespace trelv::win32 {

/// Owner of one system handle: closes it when destroyed. `Kind` names the handle's type, the value
/// that means "none" and how it is closed.
template <class Kind>
class Owned {
 public:
  using Handle = typename Kind::Handle;

  Owned() = default;
  explicit Owned(Handle handle) : handle_(handle) {}
  Owned(Owned&& other) noexcept : handle_(std::exchange(other.handle_, Kind::none())) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() {
    if (handle_ != Kind::none()) {
      Kind::close(handle_);
    }
  }

  Handle get() const { return handle_; }
  explicit operator bool() const { return handle_ != Kind::none(); }

 private:
  Handle handle_ = Kind::none();
};

struct FileKind {
  using Handle = HANDLE;
  static Handle none() { return INVALID_HANDLE_VALUE; }
  static void close(Handle handle) { CloseHandle(handle); }
};

struct SearchKind {
  using Handle = HANDLE;
  static Handle none() { return INVALID_HANDLE_VALUE; }
  static void close(Handle handle) { FindClose(handle); }
};

struct ProcessKind {
  using Handle = HANDLE;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { CloseHandle(handle); }
};

struct KeyKind {
  using Handle = HKEY;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { RegCloseKey(handle); }
};

struct LibraryKind {
  using Handle = HMODULE;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { FreeLibrary(handle); }
};

using OwnedFile = Owned<FileKind>;
using OwnedSearch = Owned<SearchKind>;
using OwnedProcess = Owned<ProcessKind>;
using OwnedKey = Owned<KeyKind>;
using OwnedLibrary = Owned<LibraryKind>;

}  // namespace trelv::win32
