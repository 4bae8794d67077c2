#include "base/RuntimeError.h"

#include <algorithm>
#include <array>
#include <utility>

namespace trelv {
namespace {

struct Meaning {
  SystemCode code;
  std::int32_t number;
  const char* text;
};

constexpr std::array<Meaning, 16> kMeanings{{
    {system_code::kFileNotFound, runtime_number::kFileNotFound, "Impossibile trovare il file"},
    {system_code::kPathNotFound, runtime_number::kPathNotFound, "Impossibile trovare il percorso"},
    {system_code::kBadNetPath, runtime_number::kPathNotFound,
     "Impossibile trovare il percorso di rete"},
    {system_code::kNetNameDeleted, runtime_number::kDeviceFailure,
     "Percorso di rete non più disponibile"},
    {system_code::kBadPathname, runtime_number::kPathNotFound, "Percorso non valido"},
    {system_code::kInvalidName, runtime_number::kPathNotFound, "Nome non valido"},
    {system_code::kDirectoryName, runtime_number::kPathAccess, "Il percorso non è una cartella"},
    {system_code::kAccessDenied, runtime_number::kPermissionDenied, "Autorizzazione negata"},
    {system_code::kSharingViolation, runtime_number::kPermissionDenied,
     "File in uso da un altro programma"},
    {system_code::kFileExists, runtime_number::kFileExists, "Il file esiste già"},
    {system_code::kAlreadyExists, runtime_number::kFileExists, "Il file esiste già"},
    {system_code::kDirectoryNotEmpty, runtime_number::kPathAccess, "La cartella non è vuota"},
    {system_code::kDiskFull, runtime_number::kDiskFull, "Disco pieno"},
    {system_code::kOutOfMemory, runtime_number::kOutOfMemory, "Memoria insufficiente"},
    {system_code::kWriteFault, runtime_number::kDeviceFailure, "Errore di scrittura"},
    {system_code::kReadFault, runtime_number::kDeviceFailure, "Errore di lettura"},
}};

}  // namespace

RuntimeError::RuntimeError(std::int32_t number, std::string source, std::string description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {}

RuntimeError failureFromSystemCode(SystemCode code, const std::string& subject) {
  const auto* const found = std::find_if(kMeanings.begin(), kMeanings.end(),
                                         [code](const Meaning& m) { return m.code == code; });
  if (found != kMeanings.end()) {
    return {found->number, "TrelvManager", std::string(found->text) + ": " + subject};
  }
  return {runtime_number::kApplicationDefined, "TrelvManager",
          "Errore di sistema " + std::to_string(code) + ": " + subject};
}

}  // namespace trelv
