// Writes numbers into the configuration store as the manager does, each under a key of its own:
// writer NAME COUNT records the keys NAME1 to NAMEn. The exit code counts the writes that were
// refused.
#include <cstdlib>
#include <string>

#include "platform/PatientFiles.h"
#include "platform/XmlStore.h"
#include "win32/Win32Machine.h"

int main(int count, char** words) {
  if (count < 3) {
    return 200;
  }
  trelv::win32::Win32Machine windows;
  trelv::PatientFiles files(windows.files, windows.clock);
  trelv::XmlStore store(files, windows.registry, windows.locale, windows.system, windows.exclusion);
  int refused = 0;
  for (int i = 1; i <= std::atoi(words[2]); ++i) {
    const std::string number = std::to_string(i);
    const std::string key = words[1] + number;
    refused += store.setParameter("SYSTEM", "Prova", key, "Valore", 1, number) != 0 ? 1 : 0;
  }
  return refused;
}
