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

struct StartMeaning {
  SystemCode code;
  const char* text;
};

constexpr SystemCode kNotEnoughMemory = 14;
constexpr SystemCode kNotReady = 21;
constexpr SystemCode kBadNetName = 67;
constexpr SystemCode kNameTooLong = 206;
constexpr SystemCode kOtherMachineType = 216;
constexpr SystemCode kVirusInfected = 225;
constexpr SystemCode kCancelled = 1223;
constexpr SystemCode kForbiddenByPolicy = 1260;
constexpr SystemCode kFileCorrupt = 1392;
constexpr SystemCode kTooLittleMemory = 1455;
constexpr SystemCode kSideBySide = 14001;

constexpr std::array<StartMeaning, 22> kStartMeanings{{
    {system_code::kFileNotFound, "Impossibile trovare il programma"},
    {system_code::kPathNotFound, "Impossibile trovare il percorso del programma"},
    {system_code::kAccessDenied, "Accesso al programma negato"},
    {system_code::kOutOfMemory, "Memoria insufficiente"},
    {kNotEnoughMemory, "Memoria insufficiente"},
    {kNotReady, "Unità non pronta"},
    {system_code::kSharingViolation, "Il programma è in uso da un altro programma"},
    {system_code::kBadNetPath, "Impossibile trovare il percorso di rete"},
    {system_code::kNetNameDeleted, "Percorso di rete non più disponibile"},
    {kBadNetName, "Impossibile trovare la condivisione di rete"},
    {system_code::kInvalidParameter, "Riga di comando non valida o troppo lunga"},
    {system_code::kInvalidName, "Nome del programma non valido"},
    {system_code::kBadExeFormat, "Il file non è un programma valido per questo Windows"},
    {kNameTooLong, "Nome del programma troppo lungo"},
    {kOtherMachineType, "Il programma non è per questa versione di Windows"},
    {kVirusInfected, "Il programma è bloccato dall'antivirus"},
    {system_code::kElevationRequired, "Il programma richiede i diritti di amministratore"},
    {kCancelled, "Operazione annullata dall'utente"},
    {kForbiddenByPolicy, "Il programma è bloccato da un criterio di gruppo"},
    {kFileCorrupt, "Il file del programma è danneggiato"},
    {kTooLittleMemory, "Memoria virtuale insufficiente"},
    {kSideBySide, "Mancano componenti di cui il programma ha bisogno"},
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

RuntimeError failureToStart(SystemCode code) {
  const auto* const found =
      std::find_if(kStartMeanings.begin(), kStartMeanings.end(),
                   [code](const StartMeaning& meaning) { return meaning.code == code; });
  return {
      static_cast<std::int32_t>(code), "TrelvManager",
      found != kStartMeanings.end() ? found->text : "Errore di sistema " + std::to_string(code)};
}

}  // namespace trelv
