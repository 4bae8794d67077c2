#pragma once

#include <cstddef>

#ifdef __SANITIZE_ADDRESS__
// The sanitiser's own; the compiler's headers do not declare it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace trelv::tests {

/// Bytes that the process has allocated and not given back.
inline std::size_t allocated() {
#ifdef __SANITIZE_ADDRESS__
  return __sanitizer_get_current_allocated_bytes();
#else
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
#endif
}

}  // namespace trelv::tests
