#include "kit/Publish.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/Failure.h"
#include "kit/GivenPath.h"
#include "kit/HostShare.h"
#include "kit/Linting.h"
#include "kit/Publication.h"
#include "kit/Withdrawal.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

std::string lines(const std::string& title, const std::vector<std::string>& items) {
  std::string text = items.empty() ? "" : title + "\n";
  for (const std::string& item : items) {
    text += "    " + item + "\n";
  }
  return text;
}

Answer answer(int exitCode, const Json& result, const std::string& text) {
  return {exitCode, {}, std::make_shared<Json>(result), text};
}

/// Paths of this text as they were given.
std::string asGiven(std::string text, Workplace& workplace, const std::vector<std::string>& given) {
  for (const std::string& path : given) {
    const GivenPath known(workplace.paths, path);
    text = replaceAll(std::move(text), known.full(), known.given());
  }
  return workplace.paths.separator() == '/' ? replaceAll(std::move(text), "\\", "/") : text;
}

// --- Putting packs there

std::string textOf(const PublicationResult& result) {
  if (result.refused) {
    return "Nessun pacco pubblicato: il server non è stato modificato.\n";
  }
  std::string text =
      lines("Già presenti sul server:", result.present) + lines("Pubblicati:", result.published);
  if (result.journal.empty()) {
    return text + "Nulla da fare.\n";
  }
  return text + lines("All'apertura verranno sostituiti:", result.replaces) +
         lines("All'apertura verranno aggiunti:", result.adds) + "Giornale: " + result.journal +
         " (si annulla con --undo " + result.journal + ")\n";
}

Json jsonOf(const PublicationResult& result) {
  return {{"journal", result.journal.empty() ? Json(nullptr) : Json(result.journal)},
          {"published", result.published},
          {"present", result.present},
          {"replaces", result.replaces},
          {"adds", result.adds}};
}

/// Is it said of the pack itself, or of something in it?
bool isOf(const Finding& finding, const std::string& pack) {
  return finding.file == pack || finding.file.starts_with(pack + "!");
}

/// A start may open a pack that waits while lint reads the host: it is gone then.
constexpr int kMostLooks = 3;

std::vector<Finding> lint(Workplace& workplace, Progress& progress,
                          const std::vector<std::string>& paths) {
  const RuleChoice rules({}, {});
  for (int look = 1;; ++look) {
    try {
      return Linting(workplace, rules, progress).run(paths);
    } catch (const Failure&) {
      if (look == kMostLooks) {
        throw;
      }
    } catch (const RuntimeError&) {
      if (look == kMostLooks) {
        throw;
      }
    }
  }
}

/// What lint says of packs, compared with the host as it is; what it says of the host alone has
/// nothing to do with them.
std::vector<Finding> judge(Workplace& workplace, Progress& progress, const std::string& host,
                           const std::vector<std::string>& packs) {
  std::vector<std::string> paths{host};
  paths.insert(paths.end(), packs.begin(), packs.end());
  std::vector<Finding> findings = lint(workplace, progress, paths);
  std::erase_if(findings, [&](const Finding& finding) -> bool {
    return std::none_of(packs.begin(), packs.end(),
                        [&](const std::string& pack) -> bool { return isOf(finding, pack); });
  });
  return findings;
}

Answer publishPacks(Workplace& workplace, Progress& progress, const GivenPath& host,
                    const std::vector<std::string>& given) {
  std::vector<std::string> packs;
  packs.reserve(given.size());
  std::map<std::string, std::string> givenOf;
  for (const std::string& pack : given) {
    packs.push_back(GivenPath(workplace.paths, pack).full());
    givenOf[packs.back()] = pack;
  }
  HostShare share(workplace.machine, host.full());
  const PackJudge toJudge = [&](const std::vector<std::string>& outstanding) {
    std::vector<std::string> asGiven;
    asGiven.reserve(outstanding.size());
    for (const std::string& pack : outstanding) {
      asGiven.push_back(givenOf[pack]);
    }
    return judge(workplace, progress, host.given(), asGiven);
  };
  const PublicationResult result = publish(share, packs, toJudge, progress);
  Answer told = answer(result.refused ? exit_code::kFindings : exit_code::kGood, jsonOf(result),
                       textOf(result));
  told.findings = result.findings;
  return told;
}

// --- Taking them back

std::string textOf(const RaisedVersion& raised) {
  return raised.product + ": sul server resta registrata la versione " + raised.recorded +
         (raised.before.empty() ? " (prima nessuna)" : " (prima " + raised.before + ")") +
         ": i programmi già installati restano quelli nuovi e gli aggiornamenti fino a questa "
         "versione non vengono più eseguiti, finché prg\\etc\\agdvver.ini non viene corretto; lo "
         "stesso vale per le versioni registrate sulle postazioni\n";
}

std::string textOf(const WithdrawalResult& result) {
  if (result.journal.empty()) {
    return "Nessuna pubblicazione da annullare.\n";
  }
  std::string text =
      "Annullata la pubblicazione " + result.journal +
      (result.interrupted ? " (interrotta prima che un pacco fosse al suo posto)" : "") + "\n" +
      lines("Pacchi tolti prima dell'apertura:", result.withdrawn) +
      lines("File ripristinati:", result.restored) + lines("File rimossi:", result.removed) +
      lines("File modificati dopo la pubblicazione, lasciati come sono:", result.left);
  for (const RaisedVersion& raised : result.raised) {
    text += textOf(raised);
  }
  return text;
}

Json jsonOf(const WithdrawalResult& result) {
  Json raised = Json::array();
  for (const RaisedVersion& each : result.raised) {
    raised.push_back({{"product", each.product},
                      {"side", "Server"},
                      {"recorded", each.recorded},
                      {"before", each.before.empty() ? Json(nullptr) : Json(each.before)}});
  }
  return {{"journal", result.journal.empty() ? Json(nullptr) : Json(result.journal)},
          {"withdrawn", result.withdrawn},
          {"restored", result.restored},
          {"removed", result.removed},
          {"left", result.left},
          {"raised", raised}};
}

/// Its name, or the path of its folder.
std::string journalName(const std::string& given) {
  const std::size_t end = given.find_last_not_of("\\/");
  const std::string path = given.substr(0, end == std::string::npos ? 0 : end + 1);
  return path.substr(path.find_last_of("\\/") + 1);
}

Answer undoPublication(Workplace& workplace, Progress& progress, const GivenPath& host,
                       const std::vector<std::string>& given) {
  HostShare share(workplace.machine, host.full());
  const std::optional<std::string> name =
      given.empty() ? std::nullopt : std::optional(journalName(given.front()));
  const WithdrawalResult result = withdraw(share, name, progress);
  return answer(exit_code::kGood, jsonOf(result), textOf(result));
}

// --- Telling what was published

/// How a publication stands, in the document and for a reader.
struct JournalState {
  const char* name;
  const char* text;
};

JournalState stateOf(const ListedJournal& listed) {
  if (listed.undone) {
    return {"undone", "annullata"};
  }
  if (listed.damaged) {
    return {"damaged", "giornale danneggiato"};
  }
  return listed.waiting.empty() ? JournalState{"opened", "aperta"}
                                : JournalState{"waiting", "in attesa"};
}

std::string textOf(const ListedJournal& listed) {
  std::string text = listed.journal.name + "  " + listed.journal.written + "  " +
                     listed.journal.author + "  " + stateOf(listed).text + "\n";
  for (const JournalPack& pack : listed.journal.packs) {
    text += "    " + pack.name + "\n";
  }
  return text;
}

Json jsonOf(const ListedJournal& listed) {
  Json packs = Json::array();
  for (const JournalPack& pack : listed.journal.packs) {
    packs.push_back(pack.name);
  }
  Json replaces = Json::array();
  Json adds = Json::array();
  for (const JournalFile& file : listed.journal.files) {
    (file.kept.empty() ? adds : replaces).push_back(file.path);
  }
  return {{"name", listed.journal.name},
          {"written", listed.journal.written},
          {"author", listed.journal.author},
          {"state", stateOf(listed).name},
          {"packs", packs},
          {"waiting", listed.waiting},
          {"replaces", replaces},
          {"adds", adds}};
}

Answer listPublications(Workplace& workplace, const GivenPath& host) {
  HostShare share(workplace.machine, host.full());
  Json journals = Json::array();
  std::string text;
  for (const ListedJournal& listed : listJournals(share)) {
    journals.push_back(jsonOf(listed));
    text += textOf(listed);
  }
  return answer(exit_code::kGood, {{"journals", journals}},
                text.empty() ? "Nessuna pubblicazione.\n" : text);
}

}  // namespace

void Publish::declare(Syntax& syntax) {
  syntax.argument("HOST", "cartella host del server", host_);
  syntax.rest("PACK", "pacchi zip da pubblicare; con --undo il giornale da annullare", 0, rest_);
  syntax.flag("undo", "annulla la pubblicazione del giornale indicato, altrimenti l'ultima", undo_);
  syntax.flag("list", "elenca le pubblicazioni", list_);
}

Answer Publish::run(Workplace& workplace, Progress& progress) {
  if (undo_ && list_) {
    throw WrongUsage("--undo e --list si escludono");
  }
  if (undo_ && rest_.size() > 1) {
    throw WrongUsage("--undo annulla un solo giornale");
  }
  if (list_ && !rest_.empty()) {
    throw WrongUsage("--list non vuole pacchi");
  }
  if (!undo_ && !list_ && rest_.empty()) {
    throw WrongUsage("manca PACK");
  }
  std::vector<std::string> given = undo_ ? std::vector<std::string>() : rest_;
  given.push_back(host_);
  try {
    return runOn(workplace, progress);
  } catch (const Failure& failure) {
    throw RuntimeError(0, "trelv", asGiven(failure.what(), workplace, given));
  } catch (const RuntimeError& failure) {
    throw RuntimeError(failure.number(), failure.source(),
                       asGiven(failure.description(), workplace, given));
  }
}

Answer Publish::runOn(Workplace& workplace, Progress& progress) {
  const GivenPath host(workplace.paths, host_);
  if (list_) {
    return listPublications(workplace, host);
  }
  return undo_ ? undoPublication(workplace, progress, host, rest_)
               : publishPacks(workplace, progress, host, rest_);
}

}  // namespace trelv::kit
