#include "packs/Deregistration.h"

#include <algorithm>
#include <vector>

#include "base/Trap.h"
#include "packs/NumberedFailure.h"
#include "platform/FileSystemObject.h"
#include "platform/modLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

/// Names of the controls in the order in which the file system lists them.
std::vector<std::string> controlsIn(Program& program, const std::string& folder) {
  std::vector<std::string> names = FileSystemObject(program.machine.files).files(folder);
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
          // Kept: regsrv32 is not the system's tool, so wherever no program of that name exists the
          // command fails and the controls stay registered. Sites that want them deregistered have
          // one.
          modLibrary::Execute(program, "regsrv32 /u /s \"" + folder + "\\" + name + "\"", true);
        }
      },
      [&](const RuntimeError& failure) -> void {
        logNumbered(program, "Gestione ProdTrelv - Errore in deregistrazione ocx (", failure);
      });
}

}  // namespace trelv::modProdTrelvManager
