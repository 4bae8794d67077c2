#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kit/BuildPlace.h"
#include "kit/Moment.h"
#include "kit/Workplace.h"

/// The text from which packs and media are built: docs/medium.md tells each of its lines.
namespace trelv::kit {

/// A file that goes into a pack or onto a medium.
struct SourceFile {
  /// Where it goes, "/" between the levels.
  std::string name;
  /// Where it lies.
  Source source;
};

struct ZipPart {
  /// "NAME.zip".
  std::string name;
  /// Names below the set-up folder.
  std::vector<SourceFile> files;
};

struct GzPart {
  /// "NAME.gz".
  std::string name;
  std::vector<ZipPart> zips;
};

struct PackPlan {
  std::size_t line = 0;
  std::string name;
  Moment moment = 0;
  std::vector<GzPart> gzParts;
};

/// An entry of a menu list.
struct EntryPlan {
  std::string caption;
  /// Name of its pack folder; empty for none.
  std::string folder;
  std::string product;
  /// Indices of its packs.
  std::vector<std::size_t> packs;
  std::vector<std::string> commands;
};

/// One of the four menu lists.
struct ListPlan {
  std::string caption;
  std::vector<EntryPlan> entries;
};

struct MediumPlan {
  Moment moment = 0;
  std::string version;
  std::string header;
  bool showIntegrationPath = false;
  /// Lines of "Products.cmf".
  std::vector<std::string> products;
  std::vector<SourceFile> manager;
  Moment managerMoment = 0;
  /// The manual and all other files of the folder of documents.
  std::vector<SourceFile> documents;
  std::vector<PackPlan> packs;
  std::vector<ListPlan> lists;
  /// The description and all files and folders that it names.
  std::vector<Source> sources;
};

/// The packs of a description.
struct PacksPlan {
  std::vector<PackPlan> packs;
  /// The description and the trees that it names.
  std::vector<Source> sources;
};

/// What the medium that this file describes holds; the files that it names are there, but not read.
/// Raises Failure with the file's path and line.
MediumPlan readMediumPlan(Workplace& workplace, const std::string& description);

/// The packs alone that a file describes, which need not describe a medium.
PacksPlan readPacksPlan(Workplace& workplace, const std::string& description);

/// A text in code page 1252, in which the files of a medium are; nothing where a letter has no
/// place there.
std::optional<std::string> inCodePage(const std::string& text);

}  // namespace trelv::kit
