#include <string>
#include <vector>

#include "kit/CommandLine.h"
#include "platform/PatientParts.h"
#include "platform/XmlStore.h"
#include "win32/LibrarySearch.h"
#include "win32/Win32Console.h"
#include "win32/Win32FileUse.h"
#include "win32/Win32FinishedFiles.h"
#include "win32/Win32Machine.h"
#include "win32/Win32Text.h"

namespace {

std::vector<std::string> texts(int count, wchar_t** arguments) {
  std::vector<std::string> result;
  for (int i = 1; i < count; ++i) {
    result.push_back(trelv::win32::utf8(arguments[i]));
  }
  return result;
}

}  // namespace

// The composition root of the second program on Windows: its machine is the manager's.
int wmain(int count, wchar_t** arguments) {
  trelv::win32::searchLibrariesOfTheSystemOnly();
  trelv::win32::Win32Machine windows;
  trelv::win32::Win32Console console;
  trelv::win32::Win32GivenPaths paths;
  trelv::win32::Win32FileUse fileUse;
  trelv::win32::Win32FinishedFiles finished;
  trelv::PatientParts parts(windows.machine());
  trelv::XmlStore ownStore(parts.files(), windows.registry, windows.locale, windows.system,
                           windows.exclusion);
  const bool hostsStore = windows.hostConfiguration.stands();
  trelv::machine::Machine machine = parts.machine(
      hostsStore ? static_cast<trelv::machine::ConfigurationLibrary&>(windows.hostConfiguration)
                 : ownStore);
  trelv::kit::Workplace workplace{machine, console, paths, fileUse, finished};
  return trelv::kit::run(texts(count, arguments), workplace);
}
