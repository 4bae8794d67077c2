#include "kit/BuildMedium.h"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/ArchiveReader.h"
#include "kit/ArchiveWriter.h"
#include "kit/BuildPlace.h"
#include "kit/Description.h"
#include "kit/Failure.h"
#include "kit/GivenPath.h"
#include "kit/Making.h"
#include "kit/PackBuild.h"
#include "platform/FileSystemObject.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSetupFile = "Setup.cmf";
constexpr const char* kVersionFile = "Versione.ver";
constexpr const char* kProductsFile = "Products.cmf";
constexpr const char* kContentFolder = "prodotti";
constexpr const char* kManagerFolder = "prodotti/manager/";
constexpr const char* kDocumentFolder = "prodotti/docs/";
constexpr const char* kPackFolder = "prodotti/packs/";
constexpr const char* kShowPath = "%SHOW_PATH_INTEGRATION%";
constexpr const char* kNotInImage = "un'immagine non può tenere questo nome";
constexpr const char* kLabel = "PRODOTTI";
/// The medium of which an image is made.
constexpr const char* kTree = "supporto";
constexpr std::array kMarkers{"#PRIMA_LISTA#", "#SECONDA_LISTA#", "#TERZA_LISTA#",
                              "#QUARTA_LISTA#"};

/// A file of the medium: "/" between the levels of its name.
struct MediumFile {
  Moment moment = 0;
  std::function<std::string()> content;
};
using MediumFiles = std::map<std::string, MediumFile>;

std::string linesOf(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += inCodePage(line).value_or("") + kCrLf;
  }
  return text;
}

std::string menuLine(const EntryPlan& entry) {
  const std::string folder =
      entry.folder.empty() ? std::string() : replaceAll(kPackFolder, "/", "\\") + entry.folder;
  std::string line = entry.caption + "|" + folder + "|" + entry.product;
  for (const std::string& command : entry.commands) {
    line += "|" + command;
  }
  return line;
}

std::vector<std::string> setupLines(const MediumPlan& plan) {
  std::vector<std::string> lines{plan.header, dayText(plan.moment)};
  if (plan.showIntegrationPath) {
    lines.emplace_back(kShowPath);
  }
  for (std::size_t list = 0; list < plan.lists.size(); ++list) {
    if (!plan.lists[list].caption.empty()) {
      lines.push_back(kMarkers.at(list) + plan.lists[list].caption);
    }
    for (const EntryPlan& entry : plan.lists[list].entries) {
      lines.push_back(kMarkers.at(list) + menuLine(entry));
    }
  }
  return lines;
}

std::string packName(const EntryPlan& entry, const PackPlan& pack) {
  return kPackFolder + entry.folder + "/" + pack.name + ".zip";
}

/// Everything that lies on the medium, by name; contents are made when they are asked for.
MediumFiles filesOf(machine::Files& files, const MediumPlan& plan) {
  MediumFiles found;
  const auto put = [&](const std::string& name, Moment moment,
                       std::function<std::string()> content) -> void {
    found[name] = {moment, std::move(content)};
  };
  const auto copy = [&](const std::string& name, Moment moment, const SourceFile& file) -> void {
    put(name, moment, [&files, source = file.source]() { return bytesOf(files, source); });
  };
  put(kSetupFile, plan.moment, [&plan]() { return linesOf(setupLines(plan)); });
  put(kVersionFile, plan.moment, [&plan]() { return linesOf({plan.version}); });
  put(kProductsFile, plan.moment, [&plan]() { return linesOf(plan.products); });
  for (const SourceFile& file : plan.manager) {
    copy(kManagerFolder + file.name, plan.managerMoment, file);
  }
  for (const SourceFile& file : plan.documents) {
    copy(kDocumentFolder + file.name, plan.moment, file);
  }
  for (const ListPlan& list : plan.lists) {
    for (const EntryPlan& entry : list.entries) {
      for (const std::size_t index : entry.packs) {
        const PackPlan& pack = plan.packs[index];
        put(packName(entry, pack), pack.moment,
            [&files, &pack]() { return mediumPack(files, pack); });
      }
    }
  }
  return found;
}

Moment newestOf(const MediumFiles& files) {
  Moment newest = 0;
  for (const auto& [name, file] : files) {
    newest = std::max(newest, file.moment);
  }
  return newest;
}

/// What is built of a description, and which of the rules count.
struct Kind {
  bool iso;
  const RuleChoice& rules;
};

/// Builds one medium.
class Building {
 public:
  Building(Workplace& workplace, Progress& progress, const std::string& description,
           const std::string& output, const Kind& kind)
      : workplace_(workplace),
        progress_(progress),
        rules_(kind.rules),
        machineFiles_(workplace.machine.files),
        output_(workplace.paths, output),
        iso_(kind.iso),
        plan_(planFor(description)),
        files_(filesOf(machineFiles_, plan_)),
        newest_(newestOf(files_)),
        making_(workplace, output_.given()),
        tree_(iso_ ? making_.side(kTree) : making_.path()),
        proof_(workplace, making_.side("riaperto")) {}

  Answer run() {
    if (iso_) {
      requireImageTakesAll();
    }
    writeTree();
    proveTree();
    if (iso_) {
      writeImage();
      proveImage();
    }
    Answer answer;
    progress_.tell("Controllo del supporto");
    answer.findings = making_.judge(tree_, rules_, progress_);
    if (holdsError(answer.findings)) {
      making_.finish();
      answer.exitCode = exit_code::kFindings;
      answer.result = std::make_shared<Json>(Json{{"written", nullptr}});
      answer.text = "Supporto non costruito.\n";
      return answer;
    }
    place();
    answer.result = std::make_shared<Json>(Json{{"written", output_.given()}});
    answer.text = "Pronto: " + output_.given() + "\n";
    return answer;
  }

 private:
  /// What stands there is looked at first: nothing is made for a medium that would have no place.
  MediumPlan planFor(const std::string& description) {
    MediumPlan plan = readMediumPlan(workplace_, description);
    requireApart(workplace_, output_, plan.sources);
    requireReplaceable();
    return plan;
  }

  void requireImageTakesAll() const {
    for (const auto& [name, file] : files_) {
      if (!IsoImage::takes(name)) {
        throw Failure(shown(name), kNotInImage);
      }
    }
  }

  void requireReplaceable() {
    machine::FileFacts facts;
    const SystemCode code = machineFiles_.look(output_.full(), facts);
    if (meansMissing(code)) {
      return;
    }
    if (code != system_code::kSuccess) {
      throw Failure(output_.given(), code);
    }
    if (iso_ && facts.folder) {
      throw Failure(output_.given(), "è una cartella");
    }
    if (!iso_ && !isMedium()) {
      throw Failure(output_.given(), "c'è già e non è un supporto");
    }
  }

  void place() {
    // What stood there may be another by now.
    requireReplaceable();
    if (iso_) {
      making_.placeFile();
    } else {
      making_.placeFolder();
    }
  }

  bool isMedium() {
    FileSystemObject fileSystem(machineFiles_);
    return fileSystem.fileExists(output_.full() + "\\" + kSetupFile) &&
           fileSystem.folderExists(output_.full() + "\\" + kContentFolder);
  }

  std::string inTree(const std::string& name) const {
    return tree_ + "\\" + replaceAll(name, "/", "\\");
  }

  void writeTree() {
    for (const auto& [name, file] : files_) {
      progress_.tell("Costruzione di " + name);
      writeFile(workplace_, {inTree(name), shown(name)}, file.content(), file.moment);
    }
    setFolderTimes();
  }

  /// Those below first: to set a time changes nothing above, to make a file did.
  void setFolderTimes() {
    std::set<std::string, std::greater<>> folders{tree_};
    for (const auto& [name, file] : files_) {
      for (std::size_t at = name.find('/'); at != std::string::npos; at = name.find('/', at + 1)) {
        folders.insert(inTree(name.substr(0, at)));
      }
    }
    for (const std::string& folder : folders) {
      requireSet(folder, newest_);
    }
  }

  void requireSet(const std::string& path, Moment moment) {
    const SystemCode code = workplace_.finished.finish(path, fileTimeOf(moment));
    if (code != system_code::kSuccess) {
      throw Failure(output_.given(), code);
    }
  }

  std::string shown(const std::string& name) const {
    return output_.shown(output_.full() + "\\" + replaceAll(name, "/", "\\"));
  }

  void proveTree() {
    std::set<std::string> packs;
    for (const ListPlan& list : plan_.lists) {
      for (const EntryPlan& entry : list.entries) {
        for (const std::size_t index : entry.packs) {
          const std::string name = packName(entry, plan_.packs[index]);
          progress_.tell("Riapertura di " + name);
          proof_.medium(inTree(name), shown(name), plan_.packs[index]);
          packs.insert(name);
        }
      }
    }
    for (const auto& [name, file] : files_) {
      if (!packs.contains(name) &&
          bytesOf(machineFiles_, {inTree(name), shown(name)}) != file.content()) {
        throw Failure(shown(name), "riletto, è diverso");
      }
    }
  }

  void writeImage() {
    progress_.tell("Scrittura dell'immagine");
    constexpr std::size_t kPiece = std::size_t{4} << 20U;
    std::string piece;
    const auto writePiece = [&]() -> void {
      const SystemCode code = machineFiles_.append(making_.path(), piece);
      if (code != system_code::kSuccess) {
        throw Failure(output_.given(), code);
      }
      piece.clear();
    };
    IsoImage image(kLabel, newest_, [&](std::string_view bytes) -> void {
      piece += bytes;
      if (piece.size() >= kPiece) {
        writePiece();
      }
    });
    for (const auto& [name, file] : files_) {
      image.add({name, bytesOf(machineFiles_, {inTree(name), shown(name)})}, file.moment);
    }
    image.finish();
    writePiece();
    requireSet(making_.path(), newest_);
  }

  void proveImage() {
    progress_.tell("Rilettura dell'immagine");
    ArchiveReader reader(fileSource(machineFiles_, making_.path()), ArchiveKind::Iso);
    std::set<std::string> read;
    std::string other;
    for (ArchivedEntry entry; reader.next(entry);) {
      if (entry.folder) {
        continue;
      }
      if (files_.contains(entry.name)) {
        requireSame(entry, reader.content());
        read.insert(entry.name);
      } else {
        other = entry.name;
      }
    }
    for (const auto& [name, file] : files_) {
      if (!read.contains(name)) {
        throw Failure(shown(name), kNotInImage);
      }
    }
    if (!other.empty()) {
      throw Failure(output_.given(), "riletta, l'immagine ha un file in più: " + other);
    }
  }

  void requireSame(const ArchivedEntry& entry, const std::string& content) {
    const Source built{inTree(entry.name), shown(entry.name)};
    if (files_.at(entry.name).moment != entry.moment || content != bytesOf(machineFiles_, built)) {
      throw Failure(built.shown, "riletto nell'immagine, è diverso");
    }
  }

  Workplace& workplace_;
  Progress& progress_;
  const RuleChoice& rules_;
  machine::Files& machineFiles_;
  GivenPath output_;
  bool iso_;
  MediumPlan plan_;
  MediumFiles files_;
  Moment newest_;
  Making making_;
  /// The folder that is the root of the medium.
  std::string tree_;
  PackProof proof_;
};

}  // namespace

void BuildMedium::declare(Syntax& syntax) {
  syntax.argument("DESCRIPTION", "descrizione del supporto", description_);
  syntax.argument("OUTPUT", "la cartella che diventa la radice del supporto, o l'immagine",
                  output_);
  syntax.flag("iso", "scrive l'immagine di un disco invece di una cartella", iso_);
  syntax.list("ignore", "CODICE,…", "non cerca questi errori", ignored_);
}

Answer BuildMedium::run(Workplace& workplace, Progress& progress) {
  const RuleChoice rules({}, ignored_);
  return toldOf(output_, [&]() -> Answer {
    return Building(workplace, progress, description_, output_, {iso_, rules}).run();
  });
}

}  // namespace trelv::kit
