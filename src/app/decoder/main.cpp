#include "win32/LibrarySearch.h"
#include "win32/decoder/Win32Decoder.h"

// The composition root of the pack decoder: everything that it needs is Windows.
int wmain(int count, wchar_t** arguments) {
  trelv::win32::searchLibrariesOfTheSystemOnly();
  return trelv::win32::runDecoder(count, arguments);
}
