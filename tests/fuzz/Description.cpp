// A description is refused with its path and a line that it has, or gives a plan that, written down
// again as a description, is the same plan. Its packs are the same without the medium.
#include "kit/Description.h"

#include <optional>

#include "base/RuntimeError.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "kit/Failure.h"
#include "support/kit/Trelv.h"

namespace trelv::fuzz {
namespace {

const std::string kPath = "C:\\d\\supporto.txt";

/// A folder with what a description can name.
struct World {
  World() {
    for (const char* const file :
         {"C:\\d\\gestore\\TrelvManager.exe", "C:\\d\\gestore\\images\\a.jpg", "C:\\d\\manuale.pdf",
          "C:\\d\\zb\\agdvcomp.ini", "C:\\d\\zb\\zb.ini", "C:\\d\\q2\\agdvcomp.ini",
          "C:\\d\\q2\\q2\\setup.exe", "C:\\d\\altro\\nota.txt", "C:\\d\\altro\\NOTE.TXT",
          "C:\\d\\brutta\\~qalbunex1"}) {
      machine.putFile(file, "x");
    }
    machine.makeFolders("C:\\d\\vuota");
    machine.diskOf("C:\\").putLink("C:\\d\\legata\\zb", "C:\\d\\zb");
  }

  kit::MediumPlan read(std::string_view text) {
    machine.putFile(kPath, text);
    return kit::readMediumPlan(workplace, kPath);
  }

  /// As the packs alone are built.
  kit::PacksPlan readPacks(std::string_view text) {
    machine.putFile(kPath, text);
    return kit::readPacksPlan(workplace, kPath);
  }

  sim::SimMachine machine;
  tests::FakeConsole console;
  tests::FakeGivenPaths paths;
  sim::SimFileUse fileUse{machine.volumes(), machine.files(), machine.callLog()};
  tests::FakeFinishedFiles finished{machine};
  kit::Workplace workplace{machine.machine(), console, paths, fileUse, finished};
};

World& world() {
  static World made;
  return made;
}

std::string line(const std::string& key, const std::string& value) {
  return value.empty() ? "" : key + " = " + value + "\n";
}

/// The folders that files come from, in their order.
std::string trees(const std::string& key, const std::vector<kit::SourceFile>& files) {
  std::string text;
  std::string last;
  for (const kit::SourceFile& file : files) {
    const std::string root =
        file.source.path.substr(0, file.source.path.size() - file.name.size() - 1);
    text += root == last ? "" : line(key, root);
    last = root;
  }
  return text;
}

std::string headText(const kit::MediumPlan& plan) {
  std::string text = "[medium]\n" + line("date", kit::momentText(plan.moment)) +
                     line("version", plan.version) + line("header", plan.header) +
                     trees("manager", plan.manager) +
                     line("manager-date", kit::momentText(plan.managerMoment)) +
                     line("manual", plan.documents.front().source.path) +
                     line("show-integration-path", plan.showIntegrationPath ? "yes" : "no");
  text += "[products]\n";
  for (const std::string& product : plan.products) {
    const std::size_t bar = product.find('|');
    text += line(product.substr(0, bar), product.substr(bar + 1));
  }
  text += "[documents]\n";
  for (std::size_t i = 1; i < plan.documents.size(); ++i) {
    text += line(plan.documents[i].name, plan.documents[i].source.path);
  }
  return text;
}

std::string packText(const kit::PackPlan& pack) {
  std::string text = "[pack " + pack.name + "]\n" + line("date", kit::momentText(pack.moment));
  for (const kit::GzPart& gz : pack.gzParts) {
    text += line("gz", gz.name.substr(0, gz.name.size() - 3));
    for (const kit::ZipPart& zip : gz.zips) {
      text += line("zip", zip.name.substr(0, zip.name.size() - 4)) + trees("tree", zip.files);
    }
  }
  return text;
}

std::string packsText(const std::vector<kit::PackPlan>& packs) {
  std::string text;
  for (const kit::PackPlan& pack : packs) {
    text += packText(pack);
  }
  return text;
}

std::string entryText(const kit::MediumPlan& plan, const kit::EntryPlan& entry) {
  std::string text = "[entry]\n" + line("caption", entry.caption) + line("product", entry.product) +
                     line("folder", entry.folder);
  for (const std::size_t pack : entry.packs) {
    text += line("pack", plan.packs.at(pack).name);
  }
  for (const std::string& command : entry.commands) {
    text += line("command", command);
  }
  return text;
}

std::string textOf(const kit::MediumPlan& plan) {
  std::string text = headText(plan);
  text += packsText(plan.packs);
  for (std::size_t i = 0; i < plan.lists.size(); ++i) {
    text += "[list " + std::to_string(i + 1) + "]\n" + line("caption", plan.lists[i].caption);
    for (const kit::EntryPlan& entry : plan.lists[i].entries) {
      text += entryText(plan, entry);
    }
  }
  return text;
}

void checkRefusal(std::string_view bytes, const std::string& reason) {
  require(reason.starts_with(kPath) || reason.starts_with("C:\\d\\"),
          "a refusal begins with a path", {reason});
  if (!reason.starts_with(kPath + ":") || reason.size() == kPath.size() + 1 ||
      reason[kPath.size() + 1] < '0' || reason[kPath.size() + 1] > '9') {
    return;
  }
  const auto lines = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n')) + 1;
  const unsigned long number = std::stoul(reason.substr(kPath.size() + 1));
  require(number >= 1 && number <= lines, "a refusal names a line of the file", {reason});
}

/// The plan of what is read with `read`; nothing where it was refused.
template <typename Plan>
std::optional<Plan> accepted(std::string_view bytes, Plan (World::*read)(std::string_view)) {
  try {
    return (world().*read)(bytes);
  } catch (const kit::Failure& refused) {
    checkRefusal(bytes, refused.what());
    return std::nullopt;
  }
}

}  // namespace

void checkDescription(std::string_view bytes) {
  world().machine.callLog().clear();
  const std::optional<kit::PacksPlan> packs = accepted(bytes, &World::readPacks);
  const std::optional<kit::MediumPlan> medium = accepted(bytes, &World::read);
  if (!medium) {
    return;
  }
  const kit::MediumPlan& plan = *medium;
  require(packs && packsText(packs->packs) == packsText(plan.packs),
          "a medium's packs are the same without it", {bytes});
  const std::string text = textOf(plan);
  try {
    require(textOf(world().read(text)) == text, "a plan written down is the same plan",
            {bytes, text});
  } catch (const kit::Failure& refused) {
    require(false, "a plan written down is accepted", {refused.what(), bytes, text});
  }
}

}  // namespace trelv::fuzz
