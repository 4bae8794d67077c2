#include "prove/ChanceExceptions.h"

#include <array>

namespace trelv::tests {
namespace {

using Table = CallTable<Exception>;

constexpr const char* kStarts = "start|two-starts|two-installs";
constexpr const char* kPackWorks = "start|two-starts|two-installs|single-install|session";
constexpr const char* kInstallations = "two-starts|two-installs|single-install";
constexpr const char* kUsers = "maintenance|session";
constexpr const char* kEvery = "";

constexpr const char* kNoStore = "these results of the store count as an empty path";
constexpr const char* kDefault = "ini reading answers its default";
constexpr const char* kMissing = "what cannot be looked at counts as missing until the next start";
constexpr const char* kNobody = "there is nobody to answer";
constexpr const char* kAbsent =
    "a key that cannot be opened is an ordinary answer: no suite is seen";
constexpr const char* kPlugin = "the host is no Dovra then";
constexpr const char* kLockUnseen =
    "a lock that cannot be looked at counts as missing: it is not respected and not removed";
constexpr const char* kLockStays = "its removal is what failed; a run without work frees it";
constexpr const char* kNoResource = "a program without version resource has no version";
constexpr const char* kPreparedOnce = "a preparation acts before the first installation only";

constexpr Exception once(const char* call, const char* works, const char* reason,
                         const char* codes = "") {
  return {call, reason, Trouble::FailsOnce, works, codes};
}

const Table kProgramDoesNotStart{
    once("files.look *.exe$", "start|two-starts", "its own test"),
    once("processes.start", "start|two-starts", "its own start"),
    once("profiles.readValue *agdvcomp.ini", "start|two-starts", kDefault),
    once("profiles.readValue *.ini [Exec]", "start|two-starts", kDefault)};

const Table kVersionsTrue{once("profiles.readValue *agdvver.ini", kStarts, kDefault)};

const Table kLocksStay{once("files.removeFile *agdv.lck$", kEvery, kLockStays),
                       once("files.look *agdv.lck$", kEvery, kLockUnseen)};

const Table kLocksNotRespected{once("files.look *agdv.lck$", kEvery, kLockUnseen)};

const Table kSilent{
    once("files.look *.zip$", kPackWorks,
         "a pack that is not seen is not removed: it is opened again"),
    once("files.look *agdv.lck$", kEvery, kLockUnseen),
    once("files.look *\\plugin$", kStarts, kPlugin),
    once("files.look *\\LUDA2003$", kStarts, kMissing),
    once("files.look *\\ZM$", kStarts, kMissing),
    once("files.look *uda.ini$", kStarts, kMissing),
    once("files.look *\\nerio.ini$", kStarts, kMissing),
    once("files.look *\\zeltomodelli.ini$", kStarts, kMissing),
    once("versions.read", kStarts, kNoResource, "1812"),
    once("files.look *ProdInfo.txt$", "session", "the report of before counts as missing"),
    once("files.look *Setup.cmf$", "session", "the menu counts as missing the second time"),
    once("configuration.getConfigPath", kEvery, kNoStore),
    once("profiles.readValue", kEvery, kDefault),
    once("profiles.writeValue *agdvver.ini *version=$", kStarts,
         "a version that nothing raised is written by the next start"),
    once("environment.", kEvery, "the folders are then those without the variable"),
    once("desktop.messageBox", kUsers, kNobody)};

const Table kDoesNotHeal{
    once("configuration.getConfigPath", kEvery, "what was put by an empty path stays there"),
    once("registry.*FerPrg", kStarts, kAbsent),
    once("system.systemWindowsFolder", kStarts, kPreparedOnce),
    once("profiles.writeValue *umow.ini [Archivi]", kStarts, kPreparedOnce),
    once("profiles.writeValue *.ini [TipoInstallazione]", kStarts, kPreparedOnce),
    once("profiles.writeValue *.ini [Parametri] PathCheck", kStarts, kPreparedOnce),
    once("profiles.writeValue *agdvver.ini", kStarts, "the correction for Dovra runs once"),
    once("profiles.readValue", "start|two-starts|two-installs|session|maintenance", kDefault),
    once("system.queryVersion", kStarts, "the edition's probes answer no"),
    once("system.suiteIncludes", kStarts, "the edition's probes answer no"),
    once("*.isAdministrator", kStarts, "a test that fails counts as an administrator's"),
    once("system.isWow64", "session", "the system counts as one of 32 bits"),
    once("system.hasKernelFunction", "session", "the system counts as one of 32 bits"),
    once("processes.start", kStarts,
         "what set-ups before it brought is recorded: the next start takes the sections of an "
         "update"),
    once("files.look *\\plugin$", kStarts, kPlugin),
    once("files.look *\\aggdovra\\*.ini$", kStarts,
         "a product that is not seen is passed over, and what stops an update stops it later"),
    once("files.look *agdv.lck$", kEvery, kLockUnseen),
    once("files.removeFile *agdv.lck$", kEvery, kLockStays),
    once("versions.read", kStarts, kNoResource, "1812"),
    once("environment.", kEvery, "the folders are then those without the variable"),
    once("system.temporaryFolder", kInstallations,
         "without a temporary folder nobody can have it: the manager's own copy is made")};

const Table kNone{};

constexpr std::array kWithExceptions{Invariant::ProgramStarts, Invariant::VersionsTrue,
                                     Invariant::LocksGo,       Invariant::LocksRespected,
                                     Invariant::FailureTold,   Invariant::Heals};

}  // namespace

const Table& exceptionsByChance(Invariant invariant) {
  switch (invariant) {
    case Invariant::ProgramStarts:
      return kProgramDoesNotStart;
    case Invariant::VersionsTrue:
      return kVersionsTrue;
    case Invariant::LocksGo:
      return kLocksStay;
    case Invariant::LocksRespected:
      return kLocksNotRespected;
    case Invariant::FailureTold:
      return kSilent;
    case Invariant::Heals:
      return kDoesNotHeal;
    default:
      return kNone;
  }
}

std::vector<std::string> namesOfExceptions(Trouble trouble) {
  std::vector<std::string> names;
  for (const Invariant invariant : kWithExceptions) {
    for (const Exception& exception : exceptionsByChance(invariant).rows()) {
      if (exception.in == trouble) {
        names.push_back(nameOf(invariant, exception));
      }
    }
  }
  return names;
}

}  // namespace trelv::tests
