#include "win32/Win32Pictures.h"

// The headers of pictures need the one of our own above them.
#include <ocidl.h>
#include <olectl.h>

#include <algorithm>

#include "win32/Components.h"
#include "win32/FilePath.h"

namespace trelv::win32 {
namespace {

/// No picture of a form comes near; a wrong file must not fill the memory.
constexpr DWORD kLongestPicture = 64U << 20U;

struct MemoryContextKind {
  using Handle = HDC;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { DeleteDC(handle); }
};

struct ScreenContextKind {
  using Handle = HDC;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { ReleaseDC(nullptr, handle); }
};

struct GlobalMemoryKind {
  using Handle = HGLOBAL;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { GlobalFree(handle); }
};

using OwnedMemory = Owned<GlobalMemoryKind>;
using OwnedStream = Owned<ObjectKind<IStream>>;
using OwnedPicture = Owned<ObjectKind<IPicture>>;

bool readInto(HANDLE file, HGLOBAL memory, DWORD length) {
  void* const bytes = GlobalLock(memory);
  DWORD got = 0;
  const bool read = bytes != nullptr && ReadFile(file, bytes, length, &got, nullptr) != FALSE;
  GlobalUnlock(memory);
  return read && got == length;
}

/// A file's bytes; none when it is empty, too long or cannot be read.
OwnedMemory fileMemory(const std::string& path) {
  const OwnedFile file(CreateFileW(filePath(path).c_str(), GENERIC_READ,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  const DWORD length = file ? GetFileSize(file.get(), nullptr) : 0;
  if (length == 0 || length > kLongestPicture) {
    return {};
  }
  OwnedMemory memory(GlobalAlloc(GMEM_MOVEABLE, length));
  return memory && readInto(file.get(), memory.get(), length) ? std::move(memory) : OwnedMemory();
}

OwnedPicture readPicture(const OwnedMemory& memory) {
  IStream* stream = nullptr;
  if (FAILED(CreateStreamOnHGlobal(memory.get(), FALSE, &stream))) {
    return {};
  }
  const OwnedStream owned(stream);
  void* picture = nullptr;
  const HRESULT outcome = OleLoadPicture(stream, 0, FALSE, IID_IPicture, &picture);
  return OwnedPicture(SUCCEEDED(outcome) ? static_cast<IPicture*>(picture) : nullptr);
}

/// Draws the picture over the whole of a context of `size` pixels.
bool draw(IPicture& picture, HDC context, SIZE size) {
  OLE_XSIZE_HIMETRIC width = 0;
  OLE_YSIZE_HIMETRIC height = 0;
  if (FAILED(picture.get_Width(&width)) || FAILED(picture.get_Height(&height)) || width <= 0 ||
      height <= 0) {
    return false;
  }
  const RECT whole{0, 0, size.cx, size.cy};
  FillRect(context, &whole, GetSysColorBrush(COLOR_BTNFACE));
  // The mode that makes smaller pictures smooth wants the brush's origin set behind it.
  SetStretchBltMode(context, HALFTONE);
  SetBrushOrgEx(context, 0, 0, nullptr);
  const RECT place = fittedRectangle(width, height, size);
  // A picture's own co-ordinates begin at its lower left corner.
  return SUCCEEDED(picture.Render(context, place.left, place.top, place.right - place.left,
                                  place.bottom - place.top, 0, height, width, -height, nullptr));
}

OwnedBitmap drawn(IPicture& picture, SIZE size) {
  const Owned<ScreenContextKind> screen(GetDC(nullptr));
  const Owned<MemoryContextKind> context(CreateCompatibleDC(screen.get()));
  OwnedBitmap bitmap(CreateCompatibleBitmap(screen.get(), size.cx, size.cy));
  if (!context || !bitmap) {
    return {};
  }
  HGDIOBJ const before = SelectObject(context.get(), bitmap.get());
  const bool done = draw(picture, context.get(), size);
  SelectObject(context.get(), before);
  return done ? std::move(bitmap) : OwnedBitmap();
}

}  // namespace

RECT fittedRectangle(LONG width, LONG height, SIZE size) {
  LONG across = size.cx;
  LONG down = MulDiv(size.cx, height, width);
  if (down > size.cy) {
    down = size.cy;
    across = MulDiv(size.cy, width, height);
  }
  const LONG left = (size.cx - across) / 2;
  const LONG top = (size.cy - down) / 2;
  return {left, top, left + std::max<LONG>(across, 1), top + std::max<LONG>(down, 1)};
}

OwnedBitmap loadPicture(const std::string& path, SIZE size) {
  const OwnedMemory memory = fileMemory(path);
  if (!memory || size.cx <= 0 || size.cy <= 0) {
    return {};
  }
  const Components components;
  const OwnedPicture picture = readPicture(memory);
  return picture ? drawn(*picture.get(), size) : OwnedBitmap();
}

}  // namespace trelv::win32
