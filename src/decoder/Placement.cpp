#include "decoder/Placement.h"

#include <cstddef>
#include <vector>

#include "decoder/EntryName.h"
#include "decoder/Refusal.h"

namespace trelv::decoder {
namespace {

constexpr const char* kLinkStands =
    "nella cartella di destinazione c'è un collegamento al posto di una voce del pacco";
constexpr const char* kFolderStands =
    "nella cartella di destinazione c'è una cartella al posto di un file del pacco";
constexpr const char* kFileStands =
    "nella cartella di destinazione c'è un file al posto di una cartella del pacco";

/// How many entries of a folder are remembered at a time, so that a long folder costs no memory,
/// and folders one in the other, which each remember theirs, little.
constexpr std::size_t kBatch = 1024;
/// More temporary folders than a work folder can hold by accident.
constexpr int kLastNumber = 9999;

struct Found {
  std::string name;
  Standing standing;
};

std::string joined(const std::string& folder, const std::string& name) {
  return folder.empty() ? name : folder + "/" + name;
}

/// Some of a folder's entries; none when it is empty.
SystemCode someOf(OutputTree& output, const std::string& folder, std::vector<Found>& found) {
  found.clear();
  return output.visit(folder, [&found](const std::string& name, Standing standing) {
    found.push_back({name, standing});
    return found.size() < kBatch;
  });
}

Standing lookAt(OutputTree& output, const std::string& name) {
  Standing standing = Standing::kNothing;
  require(output.look(name, standing), output.path(name));
  return standing;
}

/// What stands at a final name, unless the entry cannot take its place.
Standing placeFor(OutputTree& output, const std::string& target, Standing entry) {
  const Standing standing = lookAt(output, target);
  if (standing == Standing::kLink) {
    refuseEntry(kLinkStands, output.path(target));
  }
  if (entry == Standing::kFile && standing == Standing::kFolder) {
    refuseEntry(kFolderStands, output.path(target));
  }
  if (entry == Standing::kFolder && standing == Standing::kFile) {
    refuseEntry(kFileStands, output.path(target));
  }
  return standing;
}

void checkPlaces(OutputTree& output, const std::string& source, const std::string& target) {
  const auto check = [&](const std::string& name, Standing entry) {
    const Standing standing = placeFor(output, joined(target, name), entry);
    if (entry == Standing::kFolder && standing == Standing::kFolder) {
      checkPlaces(output, joined(source, name), joined(target, name));
    }
    return true;
  };
  require(output.visit(source, check), output.path(source));
}

void placeContent(OutputTree& output, const std::string& source, const std::string& target);

/// A folder that is new is moved as a whole. Where that is refused, as Windows does while any
/// program has a file in it open, its files go one by one.
void placeFolder(OutputTree& output, const std::string& source, const std::string& target) {
  if (placeFor(output, target, Standing::kFolder) == Standing::kNothing) {
    if (output.moveFolder(source, target) == system_code::kSuccess) {
      return;
    }
    require(output.makeFolder(target), output.path(target));
  }
  placeContent(output, source, target);
  require(output.removeFolder(source), output.path(source));
}

void placeFile(OutputTree& output, const std::string& source, const std::string& target) {
  placeFor(output, target, Standing::kFile);
  require(output.replaceFile(source, target), output.path(target));
}

void placeContent(OutputTree& output, const std::string& source, const std::string& target) {
  std::vector<Found> found;
  while (true) {
    require(someOf(output, source, found), output.path(source));
    if (found.empty()) {
      return;
    }
    for (const Found& entry : found) {
      const bool folder = entry.standing == Standing::kFolder;
      (folder ? placeFolder : placeFile)(output, joined(source, entry.name),
                                         joined(target, entry.name));
    }
  }
}

/// Removes what it can; answers false as soon as something stays, so that it always ends.
bool removeTree(OutputTree& output, const std::string& folder) {
  std::vector<Found> found;
  while (someOf(output, folder, found) == system_code::kSuccess && !found.empty()) {
    for (const Found& entry : found) {
      const std::string name = joined(folder, entry.name);
      const bool removed = entry.standing == Standing::kFolder
                               ? removeTree(output, name)
                               : output.removeFile(name) == system_code::kSuccess;
      if (!removed) {
        return false;
      }
    }
  }
  return output.removeFolder(folder) == system_code::kSuccess;
}

}  // namespace

TemporaryFolder::TemporaryFolder(OutputTree& output) : output_(output) {
  SystemCode code = system_code::kAlreadyExists;
  for (int number = 1; code == system_code::kAlreadyExists && number <= kLastNumber; ++number) {
    name_ = kTemporaryPrefix + std::to_string(number) + ".tmp";
    code = output.makeFolder(name_);
  }
  require(code, output.path(name_));
}

TemporaryFolder::~TemporaryFolder() {
  try {
    removeTree(output_, name_);
  } catch (...) {
    // Memory has run out: the folder stays.
  }
}

void TemporaryFolder::place() {
  checkPlaces(output_, name_, "");
  placeContent(output_, name_, "");
}

}  // namespace trelv::decoder
