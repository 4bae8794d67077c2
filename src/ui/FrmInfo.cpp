#include "ui/FrmInfo.h"

#include <cstdint>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"

namespace trelv {
namespace {

/// Name of the program's file, with the extension that it was built with.
std::string programFile(const std::string& executablePath) {
  const std::string name = executablePath.substr(executablePath.rfind('\\') + 1);
  return name.substr(0, name.rfind('.')) + ".exe";
}

/// Day of a file's last change: "05/03/2009".
std::string dayOfChange(Program& program, const std::string& path) {
  constexpr std::uint64_t kMomentsPerSecond = 10'000'000;
  const std::uint64_t changed = program.fileSystem.dateLastModified(path);
  const machine::LocalTime day = program.machine.clock.localTime(changed * kMomentsPerSecond);
  return twoDigits(day.day) + "/" + twoDigits(day.month) + "/" + std::to_string(day.year);
}

}  // namespace

void FrmInfo::loaded(machine::FormWindow& window) {
  loggedTrap(program_.log, program_.errors, "FrmInfo", "Form_Load",
             "Errore in gestione finestra: ", false, [&]() -> bool {
               fill(window);
               return true;
             });
}

void FrmInfo::fill(machine::FormWindow& window) {
  const std::string running = program_.machine.system.executablePath();
  const std::string file = programFile(running);
  window.setText("lblinfo_0", file);
  const std::string path = modLibrary::ParentPath(running) + "\\" + file;
  window.setText("lblinfo_1", dayOfChange(program_, path));
  window.setText("lblinfo_2", modLibrary::FileVersionText(program_, path, true));
}

void FrmInfo::clicked(machine::FormWindow& window, const std::string& control) {
  if (control == "Command1") {
    window.close();
  }
}

void FrmInfo::closeRequested(machine::FormWindow& window) { window.close(); }

}  // namespace trelv
