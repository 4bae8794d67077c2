#include "kit/BuildPack.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "kit/BuildPlace.h"
#include "kit/Description.h"
#include "kit/Failure.h"
#include "kit/GivenPath.h"
#include "kit/Making.h"
#include "kit/PackBuild.h"
#include "platform/FileSystemObject.h"
#include "platform/modLibrary.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

/// What becomes of a pack: which of its archives, and where.
struct Order {
  const PackPlan* pack = nullptr;
  /// The file, full path and as it was given.
  std::string path;
  std::string shown;
  bool gz = false;
};

std::string pathIn(const std::string& folder, const std::string& name) {
  return folder + (folder.ends_with('\\') ? "" : "\\") + name;
}

std::string nameOf(const std::string& path) { return path.substr(path.find_last_of('\\') + 1); }

/// Works one command line off.
class Building {
 public:
  Building(Workplace& workplace, Progress& progress, std::string description,
           const std::string& output, const RuleChoice& rules)
      : workplace_(workplace),
        progress_(progress),
        rules_(rules),
        description_(std::move(description)),
        output_(workplace.paths, output),
        endsOpen_(output.ends_with('\\') || output.ends_with('/')) {}

  Answer run() {
    const PacksPlan plan = readPacksPlan(workplace_, description_);
    if (plan.packs.empty()) {
      throw Failure(description_, "manca la sezione [pack NOME]");
    }
    const std::vector<Order> orders = ordersOf(plan.packs);
    for (const Order& order : orders) {
      requireOnePart(order);
      requireApart(workplace_, GivenPath(workplace_.paths, order.shown), plan.sources);
    }
    Answer answer;
    std::vector<std::unique_ptr<Making>> makings;
    Json written = Json::array();
    for (const Order& order : orders) {
      makings.push_back(build(order, answer));
      written.push_back(order.shown);
      answer.text += "Pronto: " + order.shown + "\n";
    }
    if (holdsError(answer.findings)) {
      for (const std::unique_ptr<Making>& making : makings) {
        making->finish();
      }
      return {exit_code::kFindings, answer.findings,
              std::make_shared<Json>(Json{{"written", Json::array()}}),
              "Nessun pacco costruito.\n"};
    }
    for (const std::unique_ptr<Making>& making : makings) {
      making->placeFile();
    }
    answer.result = std::make_shared<Json>(Json{{"written", written}});
    return answer;
  }

 private:
  std::vector<Order> ordersOf(const std::vector<PackPlan>& packs) {
    FileSystemObject fileSystem(workplace_.machine.files);
    if (endsOpen_ || fileSystem.folderExists(output_.full())) {
      std::vector<Order> orders;
      for (const PackPlan& pack : packs) {
        const std::string path = pathIn(output_.full(), pack.name + ".zip");
        orders.push_back({&pack, path, output_.shown(path), false});
      }
      return orders;
    }
    const std::string ending = modLibrary::Extension(nameOf(output_.full()));
    if (ending != "zip" && ending != "gz") {
      throw WrongUsage(output_.given() +
                       ": OUTPUT è una cartella, oppure finisce in .zip o .gz (in minuscolo)");
    }
    return {{&chosen(packs), output_.full(), output_.given(), ending == "gz"}};
  }

  /// The only one, else the one that the file is named for.
  const PackPlan& chosen(const std::vector<PackPlan>& packs) {
    if (packs.size() == 1) {
      return packs.front();
    }
    const std::string name = nameOf(output_.full());
    const std::string stem = name.substr(0, name.rfind('.'));
    std::string names;
    for (const PackPlan& pack : packs) {
      if (equalNoCase(pack.name, stem)) {
        return pack;
      }
      names += (names.empty() ? "" : ", ") + pack.name;
    }
    throw Failure(description_, "il nome di OUTPUT sceglie fra più pacchi: " + names);
  }

  std::unique_ptr<Making> build(const Order& order, Answer& answer) {
    progress_.tell("Costruzione di " + nameOf(order.path));
    machine::Files& files = workplace_.machine.files;
    auto making = std::make_unique<Making>(workplace_, order.shown);
    PackProof proof(workplace_, making->side("riaperto"));
    const GzPart& part = order.pack->gzParts.front();
    writeFile(workplace_, {making->path(), order.shown},
              order.gz ? gzPack(files, part, order.pack->moment)
                       : zipPack(files, part.zips.front(), order.pack->moment),
              order.pack->moment);
    progress_.tell("Riapertura di " + nameOf(order.path));
    if (order.gz) {
      proof.gz(making->path(), order.shown, part);
    } else {
      proof.zip(making->path(), order.shown, part.zips.front());
    }
    const std::vector<Finding> findings = making->judge(making->path(), rules_, progress_);
    answer.findings.insert(answer.findings.end(), findings.begin(), findings.end());
    return making;
  }

  void requireOnePart(const Order& order) {
    const std::string where = description_ + ":" + std::to_string(order.pack->line);
    const std::string what = "pacco " + order.pack->name + ": ";
    if (order.pack->gzParts.size() > 1) {
      throw Failure(where, what + "più archivi gz, li tiene insieme solo un supporto");
    }
    if (!order.gz && order.pack->gzParts.front().zips.size() > 1) {
      throw Failure(where, what + "più archivi zip, li tiene insieme un pacco .gz");
    }
  }

  Workplace& workplace_;
  Progress& progress_;
  const RuleChoice& rules_;
  std::string description_;
  GivenPath output_;
  bool endsOpen_;
};

}  // namespace

void BuildPack::declare(Syntax& syntax) {
  syntax.argument("DESCRIPTION", "descrizione dei pacchi", description_);
  syntax.argument("OUTPUT", "il pacco, .zip o .gz, o una cartella per tutti i pacchi zip", output_);
  syntax.list("ignore", "CODICE,…", "non cerca questi errori", ignored_);
}

Answer BuildPack::run(Workplace& workplace, Progress& progress) {
  const RuleChoice rules({}, ignored_);
  return toldOf(output_, [&]() -> Answer {
    return Building(workplace, progress, description_, output_, rules).run();
  });
}

}  // namespace trelv::kit
