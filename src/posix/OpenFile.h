#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace trelv::posix {

/// An open file; closed when destroyed.
class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }

  /// False where the file could not be opened.
  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace trelv::posix
