#include "app/WindowsProgram.h"
#include "platform/PatientParts.h"
#include "platform/XmlStore.h"
#include "startup/modMain.h"
#include "win32/LibrarySearch.h"
#include "win32/Win32Machine.h"

// The one place that knows both the machine and the program. The host suite's configuration store
// is used where it is installed, else ours.
int main() {
  trelv::win32::searchLibrariesOfTheSystemOnly();
  try {
    trelv::win32::Win32Machine windows;
    trelv::PatientParts parts(windows.machine());
    trelv::XmlStore ownStore(parts.files(), windows.registry, windows.locale, windows.system,
                             windows.exclusion);
    const bool hostsStore = windows.hostConfiguration.stands();
    trelv::app::WindowsProgram program(parts.machine(
        hostsStore ? static_cast<trelv::machine::ConfigurationLibrary&>(windows.hostConfiguration)
                   : ownStore));
    trelv::modMain::Main(program.program());
  } catch (...) {
    // Nothing that could still be reported: the program's own traps have all been passed. The
    // process ends as always, without an exit code, and never with the system's crash box.
  }
  return 0;
}
