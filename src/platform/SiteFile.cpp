#include "platform/SiteFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "base/Text.h"
#include "platform/modLibrary.h"

namespace trelv::siteFile {
namespace {

constexpr const char* kFileName = "TrelvManager.ini";
/// Longest value with its terminating NUL; longer ones are cut and so refused below.
constexpr std::uint32_t kValueSize = 260;
/// The store's product names are this long.
constexpr std::size_t kShortestProduct = 2;
constexpr std::size_t kLongestProduct = 8;

bool isStoreProductName(const std::string& name) {
  return name.size() >= kShortestProduct && name.size() <= kLongestProduct &&
         std::all_of(name.begin(), name.end(), [](char letter) -> bool {
           return (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9');
         });
}

/// A report is dropped when such a name is anywhere in it: one of two letters would drop them all.
bool isLibraryName(const std::string& name) {
  constexpr std::size_t kShortestLibrary = 5;
  return name.size() >= kShortestLibrary && name.find('.') != std::string::npos;
}

bool isFileName(const std::string& name) {
  return name.find_first_of("*?\"<>|") == std::string::npos;
}

/// A section of the file, whose values take the place of the built-in ones.
class Section {
 public:
  Section(Program& program, const char* name) : program_(program), name_(name) {}

  template <class IsRight>
  void replace(std::string& value, const std::string& key, IsRight&& isRight) {
    const std::string given = program_.configurationFiles.read({file(), name_, key}, kValueSize);
    if (given.empty()) return;
    if (isRight(given)) {
      value = given;
    } else {
      program_.log.WriteLog("Gestione ProdTrelv - " + file() + ": [" + name_ + "] " + key +
                            " = \"" + given + "\" non valido, vale \"" + value + "\"");
    }
  }

 private:
  std::string file() const {
    return modLibrary::ParentPath(program_.machine.system.executablePath()) + "\\" + kFileName;
  }

  Program& program_;
  const char* name_;
};

SiteNames namesOf(Program& program) {
  SiteNames names;
  Section libraries(program, "LibrerieInnocue");
  int number = 1;
  for (std::string& library : names.harmlessLibraries) {
    libraries.replace(library, "Libreria" + std::to_string(number++), isLibraryName);
    library = upperCase(library);
  }
  Section products(program, "ProdottiArchivio");
  for (auto& [code, name] : names.storeProducts) {
    products.replace(name, std::to_string(code), [](const std::string& given) -> bool {
      return isStoreProductName(upperCase(given));
    });
    name = upperCase(name);
  }
  Section(program, "Travolin").replace(names.travolinIniFile, "File", isFileName);
  return names;
}

}  // namespace

const SiteNames& Names(Program& program) {
  std::optional<SiteNames>& names = program.state.siteNames;
  if (!names) names = namesOf(program);
  return *names;
}

}  // namespace trelv::siteFile
