// Writes the product report as the manager does: begins it, then asks for the mode of each product
// whose number stands on the command line. The exit code counts those that stand on their own.
#include <cstdlib>

#include "app/WindowsProgram.h"
#include "inventory/InstallationMode.h"
#include "inventory/ProductReport.h"
#include "platform/PatientParts.h"
#include "platform/XmlStore.h"
#include "win32/Win32Machine.h"

int main(int count, char** words) {
  trelv::win32::Win32Machine windows;
  trelv::PatientParts parts(windows.machine());
  trelv::XmlStore store(parts.files(), windows.registry, windows.locale, windows.system,
                        windows.exclusion);
  trelv::app::WindowsProgram program(parts.machine(store));
  trelv::modProdTrelvInfo::CreateProductReport(program.program());
  int standalone = 0;
  for (int i = 1; i < count; ++i) {
    const auto code = static_cast<trelv::Product>(std::atoi(words[i]));
    standalone += trelv::modProdTrelvInfo::VerifyInstallationMode(program.program(), code) ? 1 : 0;
  }
  return standalone;
}
