#include "kit/Locks.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "base/Text.h"
#include "kit/Failure.h"
#include "kit/GivenPath.h"
#include "kit/HostProducts.h"
#include "kit/LintRules.h"
#include "kit/QuietProgram.h"
#include "kit/UpdateLocks.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

std::string sideName(Side side) { return modProdTrelvLibrary::ConvertClientServerToString(side); }

template <class Value>
Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json jsonOf(const UpdateLock& lock, const std::string& shownPath) {
  return {{"path", shownPath},
          {"side", sideName(lock.side)},
          {"written", lock.written},
          {"age", lock.age},
          {"owner", orNull(lock.owner)},
          {"open", orNull(lock.open)},
          {"waiting", Json(lock.waiting)}};
}

/// "2 giorni", "3 ore", in whole ones of the largest unit.
std::string ageText(std::int64_t seconds) {
  struct Unit {
    std::int64_t seconds;
    const char* one;
    const char* many;
  };
  for (const Unit& unit :
       {Unit{86400, "giorno", "giorni"}, Unit{3600, "ora", "ore"}, Unit{60, "minuto", "minuti"}}) {
    const std::int64_t count = seconds / unit.seconds;
    if (count > 0) {
      return std::to_string(count) + " " + (count == 1 ? unit.one : unit.many);
    }
  }
  return seconds == 1 ? "1 secondo" : std::to_string(seconds) + " secondi";
}

std::string openText(const std::optional<bool>& open) {
  return !open ? "non noto" : *open ? "sì" : "no";
}

std::string listText(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : ", ") + name;
  }
  return text.empty() ? "nessuno" : text;
}

std::string textOf(const UpdateLock& lock, const std::string& shownPath) {
  return shownPath + ": blocco del lato " + sideName(lock.side) +
         "\n    preso: " + (lock.written.empty() ? "data non leggibile" : lock.written) + " (" +
         ageText(lock.age) + " fa)\n    proprietario: " + lock.owner.value_or("non noto") +
         "\n    aperto da un programma: " + openText(lock.open) +
         "\n    prodotti in attesa: " + listText(lock.waiting) + "\n";
}

/// Nothing where the lock is gone: whoever took it may have removed it meanwhile.
void removeLock(machine::FileUse& fileUse, const UpdateLock& lock, const std::string& shownPath) {
  const SystemCode code = fileUse.removeUnused(lock.path, lock.seen);
  if (code == system_code::kSharingViolation) {
    throw Failure(shownPath, "aperto da un altro programma, non rimosso");
  }
  if (code == machine::kFileChanged) {
    throw Failure(shownPath, "preso nel frattempo da un'altra sessione, non rimosso");
  }
  if (code != system_code::kSuccess && !meansMissing(code)) {
    throw Failure(shownPath, code);
  }
}

/// What lint says of a folder in the place of the server's lock, which no start can remove.
void tellFolder(Program& program, const GivenPath& host, Answer& answer) {
  const std::string path = hostPaths::serverLock(serverPathOf(host));
  if (!modLibrary::FolderExists(program, path)) {
    return;
  }
  for (const Rule& rule : lintRules()) {
    if (std::string_view(rule.code) == "TK402") {
      Report(rule, answer.findings).add(host.shown(path), std::nullopt);
    }
  }
  answer.exitCode = exit_code::kFindings;
}

}  // namespace

void Locks::declare(Syntax& syntax) {
  syntax.argument("HOST", "cartella della suite sul server", host_);
  syntax.flag("remove", "rimuove i blocchi che nessuno ha aperti, dopo conferma", remove_);
  syntax.flag("yes", "con --remove: non chiede conferma", yes_);
}

bool Locks::mayRemove(Workplace& workplace, const std::string& shownPath,
                      const UpdateLock& lock) const {
  if (yes_) {
    return true;
  }
  workplace.console.complain("Rimuovere " + shownPath + " (preso " + ageText(lock.age) +
                             " fa)? [s/N] ");
  const std::string answer = lowerCase(trim(workplace.console.readLine().value_or("")));
  return answer == "s" || answer == "si" || answer == "sì";
}

Answer Locks::run(Workplace& workplace, Progress& progress) {
  if (yes_ && !remove_) {
    throw WrongUsage("--yes richiede --remove");
  }
  const GivenPath host(workplace.paths, host_);
  QuietProgram quiet(workplace.machine);
  const std::string serverPath = serverPathOf(host);
  if (!modLibrary::FolderExists(quiet.program(), host.full())) {
    throw Failure(host.given(), system_code::kPathNotFound);
  }
  if (remove_ && !yes_ && !workplace.console.inputIsTerminal()) {
    throw Failure(host.given(), "nessun blocco rimosso: manca --yes e nessuno può confermare");
  }
  progress.tell("Ricerca dei blocchi");
  const std::vector<UpdateLock> locks = updateLocks(quiet.program(), workplace.fileUse, serverPath);
  progress.clear();
  Answer answer;
  answer.result = std::make_shared<Json>(Json{{"locks", Json::array()}});
  tellFolder(quiet.program(), host, answer);
  for (const UpdateLock& lock : locks) {
    const std::string shownPath = host.shown(lock.path);
    (*answer.result)["locks"].push_back(jsonOf(lock, shownPath));
    answer.text += textOf(lock, shownPath);
    if (!remove_ || !mayRemove(workplace, shownPath, lock)) {
      answer.exitCode = exit_code::kFindings;
      continue;
    }
    removeLock(workplace.fileUse, lock, shownPath);
    answer.text += "    rimosso\n";
  }
  if (locks.empty()) {
    answer.text = "Nessun blocco.\n";
  }
  return answer;
}

}  // namespace trelv::kit
