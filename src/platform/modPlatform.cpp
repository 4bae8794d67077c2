#include "platform/modPlatform.h"

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "platform/modRegistry.h"

namespace trelv::modPlatform {
namespace {

constexpr const char* kModule = "modPlatform";

constexpr std::uint16_t kTerminalSuite = 0x10;
constexpr std::uint16_t kSingleUserTerminalSuite = 0x100;
constexpr std::uint8_t kWorkstation = 1;
constexpr std::uint8_t kDomainController = 2;
constexpr std::uint8_t kServer = 3;
constexpr std::uint32_t kWindows95Family = 1;

/// Characters of the buffer that receives the user's name, its closing NUL included.
constexpr std::uint32_t kUserNameSize = 251;

/// Runs a question under the module's trap; a failure is reported and answers false.
template <class Question>
bool answer(Program& program, const char* procedure, Question&& question) {
  return loggedTrap(program.log, program.errors, kModule, procedure,
                    "Errore in verifica della versione di Windows: ", false,
                    std::forward<Question>(question));
}

/// Answer of a probe, asked from the system unless its record is already filled. A query that
/// failed leaves the record empty, so that the next call asks again.
template <class Test>
bool askOnce(Program& program, const char* procedure, EditionProbe& probe, std::uint32_t size,
             Test&& test) {
  return answer(program, procedure, [&]() -> bool {
    if (probe.record.platform == 0) {
      probe.record.size = size;
      probe.querySucceeded = program.machine.system.queryVersion(probe.record);
      probe.answer = test(probe.record);
    }
    return probe.answer;
  });
}

template <class Test>
bool askShort(Program& program, const char* procedure, EditionProbe& probe, Test&& test) {
  return askOnce(program, procedure, probe, kShortVersionRecord, std::forward<Test>(test));
}

template <class Test>
bool askExtended(Program& program, const char* procedure, EditionProbe& probe, Test&& test) {
  return askOnce(program, procedure, probe, kExtendedVersionRecord,
                 [&](const VersionRecord& v) { return probe.querySucceeded && test(v); });
}

void logAnswer(Program& program, const std::string& line, bool value) {
  program.log.WriteLog(line + program.machine.locale.truthText(value));
}

/// A server is a terminal server when it has the terminal suite and is not limited to single users,
/// as one with remote desktop for its administration only is.
bool multiUserTerminalServer(Program& program, bool isServer, bool& terminalServer,
                             bool& singleUser) {
  machine::SystemFacts& system = program.machine.system;
  if (isServer && system.suiteIncludes(kTerminalSuite)) {
    singleUser = system.suiteIncludes(kSingleUserTerminalSuite);
    terminalServer = !singleUser;
  }
  return terminalServer;
}

}  // namespace

// The major version is not looked at: kept, only the 95 family has platform 1.
bool IsWin95(Program& program) {
  return askShort(program, "IsWin95", program.state.platform.win95, [](const VersionRecord& v) {
    return v.platform == kWindows95Family && v.minor < 10;
  });
}

bool IsWin98(Program& program) {
  return askShort(program, "IsWin98", program.state.platform.win98, [](const VersionRecord& v) {
    return v.platform == kWindows95Family && v.minor == 10;
  });
}

bool IsWinMe(Program& program) {
  return askShort(program, "IsWinMe", program.state.platform.winMe,
                  [](const VersionRecord& v) { return v.major == 4 && v.minor == 90; });
}

// The platform is not looked at, so the first Windows 95, which is 4.0 too, counts as NT 4.0: kept,
// the answer is used for terminal servers only, where the registry decides.
bool IsWinNt40(Program& program) {
  return answer(program, "IsWinNt40", [&]() -> bool {
    VersionRecord record;
    record.size = kShortVersionRecord;
    program.machine.system.queryVersion(record);
    return record.major == 4 && record.minor == 0;
  });
}

bool IsWin2000Server(Program& program) {
  return askExtended(program, "IsWin2000Server", program.state.platform.win2000Server,
                     [](const VersionRecord& v) {
                       return v.major == 5 && v.minor == 0 &&
                              (v.productType == kDomainController || v.productType == kServer);
                     });
}

bool IsWin2000Professional(Program& program) {
  return askExtended(program, "IsWin2000Professional", program.state.platform.win2000Professional,
                     [](const VersionRecord& v) {
                       return v.productType == kWorkstation && v.major == 5 && v.minor == 0;
                     });
}

bool IsWinXP(Program& program) {
  return askShort(program, "IsWinXP", program.state.platform.winXP,
                  [](const VersionRecord& v) { return v.major == 5 && v.minor == 1; });
}

// The product type is not looked at, so the 64-bit Windows XP counts as a server: kept, it has no
// terminal suite for several users.
bool IsWin2003Server(Program& program) {
  return askShort(program, "IsWin2003Server", program.state.platform.win2003Server,
                  [](const VersionRecord& v) { return v.major == 5 && v.minor == 2; });
}

bool IsWinVista(Program& program) {
  return askExtended(program, "IsWinVista", program.state.platform.winVista,
                     [](const VersionRecord& v) {
                       return v.productType == kWorkstation && v.major == 6 && v.minor == 0;
                     });
}

bool IsWinSeven(Program& program) {
  return askExtended(program, "IsWinSeven", program.state.platform.winSeven,
                     [](const VersionRecord& v) {
                       return v.productType == kWorkstation && v.major == 6 && v.minor == 1;
                     });
}

bool IsWinVistaServer(Program& program) {
  return askExtended(program, "IsWinVistaServer", program.state.platform.winVistaServer,
                     [](const VersionRecord& v) {
                       return v.major == 6 && v.productType != kWorkstation && v.minor == 0;
                     });
}

// 6.1 counts too, so that the second release of this server is one: kept.
bool IsWin2008Server(Program& program) {
  const bool result = askExtended(
      program, "IsWin2008Server", program.state.platform.win2008Server, [](const VersionRecord& v) {
        return v.productType != kWorkstation && v.major == 6 && (v.minor == 0 || v.minor == 1);
      });
  logAnswer(program, "IsWin2008Server = ", result);
  return result;
}

bool IsWinNT40TS(Program& program) {
  if (!IsWinNt40(program)) {
    return false;
  }
  modRegistry::Variant value;
  const bool found = modRegistry::QueryValue(program, machine::Hive::LocalMachine,
                                             "System\\CurrentControlSet\\Control\\ProductOptions",
                                             "ProductSuite", value);
  const auto* const text = std::get_if<std::string>(&value);
  return found && text != nullptr && upperCase(*text).find("TERMINAL SERVER") != std::string::npos;
}

bool IsWin2000TS(Program& program) {
  return answer(program, "IsWin2000TS", [&]() -> bool {
    bool& terminalServer = program.state.platform.win2000TerminalServer;
    terminalServer = false;
    if (IsWin2000Server(program)) {
      terminalServer = program.machine.system.suiteIncludes(kTerminalSuite);
    }
    return terminalServer;
  });
}

bool IsWin2003TS(Program& program) {
  return answer(program, "IsWin2003TS", [&]() -> bool {
    PlatformProbes& probes = program.state.platform;
    probes.win2003TerminalServer = false;
    probes.win2003SingleUser = false;
    return multiUserTerminalServer(program, IsWin2003Server(program), probes.win2003TerminalServer,
                                   probes.win2003SingleUser);
  });
}

bool IsWin2008TS(Program& program) {
  const bool result = answer(program, "IsWin2008TS", [&]() -> bool {
    PlatformProbes& probes = program.state.platform;
    probes.win2008TerminalServer = false;
    probes.win2008SingleUser = false;
    return multiUserTerminalServer(program, IsWin2008Server(program), probes.win2008TerminalServer,
                                   probes.win2008SingleUser);
  });
  logAnswer(program, "IsWin2008TS = ", result);
  return result;
}

std::string UserName(Program& program) {
  return loggedTrap(program.log, program.errors, kModule, "UserName",
                    "Errore in lettura nome utente: ", std::string(), [&]() -> std::string {
                      std::string name;
                      const SystemCode code = program.machine.system.userName(kUserNameSize, name);
                      return code == system_code::kSuccess ? modLibrary::CutAtNul(name)
                                                           : std::string();
                    });
}

}  // namespace trelv::modPlatform
