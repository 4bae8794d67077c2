// Whatever stands in a removal command: no folder that others need goes with it.
#include <memory>

#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "packs/SetupFolderGuard.h"
#include "startup/modProdTrelvLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::fuzz {
namespace {

/// Neither they nor what holds them may go.
constexpr const char* kKept[] = {"C:\\WINDOWS\\system32",
                                 "C:\\Program Files\\Common Files",
                                 "C:\\Users\\mario\\Temp",
                                 "C:\\Users\\anna",
                                 "C:\\Users\\Public",
                                 "C:\\ProgramData",
                                 "C:\\Lumo\\Client",
                                 "C:\\Lumo\\Programmi\\TrelvManager.exe",
                                 "S:\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini",
                                 "S:\\Lumo\\prg\\com\\bin\\cpy\\client",
                                 "S:\\Lumo\\prg\\etc\\agdvver.ini",
                                 "S:\\Lumo\\prg\\tempterm",
                                 "S:\\Lumo\\mv",
                                 "D:\\Integrazione\\mv"};

constexpr const char* kProducts[] = {"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\disinst.exe",
                                     "S:\\Lumo\\mv\\zb\\mvbil.exe",
                                     "C:\\WINDOWS\\zb\\unins.exe",
                                     "C:\\Program Files\\Lumo zb\\unins.exe",
                                     "D:\\zb\\setup.exe",
                                     "C:\\Users\\mario\\zb\\unins.exe",
                                     "D:\\Integrazione\\mv\\zb\\a b.exe"};

/// A workstation, the host's share under several names, links to both.
struct World {
  World() {
    machine.mount("S:");
    machine.mount("D:");
    machine.mount("T:", machine.volumes().diskOf("S:\\"));
    machine.mount("\\\\srv\\dati", machine.volumes().diskOf("S:\\"));
    for (const char* const file : kProducts) {
      machine.putFile(file, "MZ");
    }
    for (const char* const path : kKept) {
      if (std::string_view(path).find('.') == std::string_view::npos) {
        machine.makeFolders(path);
      } else {
        machine.putFile(path, "x");
      }
    }
    putLinks();
  }

  void putLinks() {
    machine.diskOf("C:\\").putLink("C:\\utenti", "C:\\Users");
    machine.diskOf("C:\\").putLink("C:\\win", "C:\\WINDOWS");
    machine.diskOf("D:\\").putLink("D:\\server", "S:\\Lumo");
    machine.diskOf("D:\\").putLink("D:\\setup", "S:\\Lumo\\prg\\com\\setup");
  }

  sim::SimMachine machine;
  tests::FakeProgram program{machine};
};

World& world() {
  static World made;
  return made;
}

sim::SimNode* nodeOf(const std::string& path, bool followLast) {
  const sim::SimVolumes::Place place = world().machine.volumes().find(path, followLast);
  return place.code == system_code::kSuccess ? place.node : nullptr;
}

bool isAtOrBelow(const sim::SimNode* node, const sim::SimNode* folder) {
  while (node != nullptr && node != folder) {
    node = node->parent;
  }
  return node == folder;
}

/// What goes with a folder, told from the disks alone. A link goes without what it leads to.
void checkGone(const std::string& command, const std::string& folder) {
  const sim::SimNode* const gone = nodeOf(folder, false);
  if (gone == nullptr || !gone->linkTarget.empty()) {
    return;
  }
  for (const char* const path : kKept) {
    require(!isAtOrBelow(nodeOf(path, true), gone), "what others need does not go",
            {command, folder, path});
  }
  require(!isAtOrBelow(gone, nodeOf("C:\\WINDOWS", true)), "nothing goes from the Windows folder",
          {command, folder});
}

}  // namespace

void checkRemovalCommand(std::string_view bytes) {
  constexpr const char* kServers[] = {"S:\\Lumo", "\\\\srv\\dati\\Lumo", "T:\\lumo",
                                      "\\\\?\\S:\\Lumo"};
  const unsigned choice = takeNumber(bytes);
  const InstallationPaths paths{kServers[choice % std::size(kServers)], "D:\\Integrazione",
                                "C:\\Lumo\\Client"};
  Program& program = world().program;
  std::string command(bytes);
  modProdTrelvLibrary::ReplacePlaceholders(program, command, paths);
  // Half of all inputs are the folder itself.
  const bool isFolder = choice / std::size(kServers) % 2 == 1;
  const std::string folder =
      isFolder ? command : modProdTrelvManager::FolderOfCommand(program, command);
  require(command.find(folder) != std::string::npos, "the folder stands in the command",
          {command, folder});
  if (modProdTrelvManager::IsRemovableSetupFolder(program, paths, folder)) {
    checkGone(command, folder);
  }
  world().machine.callLog().clear();
}

}  // namespace trelv::fuzz
