#pragma once

#include <windows.h>

#include <string>

#include "win32/Owned.h"

namespace trelv::win32 {

struct BitmapKind {
  using Handle = HBITMAP;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { DeleteObject(handle); }
};

using OwnedBitmap = Owned<BitmapKind>;

/// The largest rectangle with the proportions of `width` to `height` that fits into `size` pixels,
/// in its middle; at least a pixel wide and high.
RECT fittedRectangle(LONG width, LONG height, SIZE size);

/// A picture file (JPEG, bitmap) drawn into a bitmap of `size` pixels: as large as fits with its
/// proportions kept, in the middle, on the colour of dialogs. None when it cannot be read whole.
OwnedBitmap loadPicture(const std::string& path, SIZE size);

}  // namespace trelv::win32
