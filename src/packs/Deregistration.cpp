#include "packs/Deregistration.h"

#include <algorithm>
#include <vector>

#include "base/Trap.h"
#include "packs/NumberedFailure.h"
#include "platform/modLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

/// File names of the controls, unsorted.
std::vector<std::string> controlsIn(Program& program, const std::string& folder) {
  std::vector<std::string> names = program.fileSystem.files(folder);
  names.erase(std::remove_if(names.begin(), names.end(),
                             [](const std::string& name) -> bool {
                               return modLibrary::Extension(name) != "ocx";
                             }),
              names.end());
  return names;
}

}  // namespace

void DeregisterOcxInFolder(Program& program, const std::string& folder) {
  trap(
      [&]() -> void {
        program.log.WriteLog(
            "Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: \"" + folder + "\"");
        for (const std::string& name : controlsIn(program, folder)) {
          // Kept: the system's tool is regsvr32. Sites that want controls deregistered bring a
          // program of this other name; elsewhere nothing starts, and the control stays as it is.
          modLibrary::ExecuteTool(program, "regsrv32 /u /s \"" + folder + "\\" + name + "\"", true);
        }
      },
      [&](const RuntimeError& failure) -> void {
        logNumbered(program, "Gestione ProdTrelv - Errore in deregistrazione ocx (", failure);
      });
}

}  // namespace trelv::modProdTrelvManager
