#pragma once

/// Where the libraries that this process loads by name are looked for.
namespace trelv::win32 {

/// From now on in the system folder only; on systems that cannot (before Windows 7 with its
/// updates) everywhere as ever, but never in the current folder. Libraries that are named in full,
/// and what lies beside those, are not concerned. To be called before anything is loaded.
void searchLibrariesOfTheSystemOnly();

/// While it lives a program can be started that looks for its libraries as ever: the rule of the
/// older systems would pass on to it.
class OwnLibrarySearchSuspended {
 public:
  OwnLibrarySearchSuspended();
  OwnLibrarySearchSuspended(const OwnLibrarySearchSuspended&) = delete;
  OwnLibrarySearchSuspended& operator=(const OwnLibrarySearchSuspended&) = delete;
  ~OwnLibrarySearchSuspended();
};

}  // namespace trelv::win32
