#include "inventory/RegisteredComponent.h"

#include <optional>

#include "base/Text.h"
#include "platform/modRegistry.h"

namespace trelv::modProdTrelvInfo {
namespace {

constexpr const char* kClasses = "Software\\Classes\\ClsID";
constexpr const char* kComponent = "\\setup\\korvatgestionepratiche.ocx";

std::string searchedFolder(Program& program) {
  const std::string found = modRegistry::FindRegisteredFile(program, kClasses, kComponent);
  const std::string path = lowerCase(found);
  const std::size_t at = path.find(lowerCase(kComponent));
  return at == std::string::npos || at == 0 ? found : path.substr(0, at);
}

}  // namespace

std::string NerioComponentFolder(Program& program) {
  std::optional<std::string>& folder = program.state.inventory.componentFolder;
  if (!folder) {
    folder = searchedFolder(program);
  }
  return *folder;
}

}  // namespace trelv::modProdTrelvInfo
