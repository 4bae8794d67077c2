#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/Codes.h"
#include "base/InstallationPaths.h"
#include "kit/GivenPath.h"
#include "kit/IniText.h"
#include "platform/Program.h"
#include "records/MediumFiles.h"

/// What the rules of lint look at: each is read once, and every rule of its kind sees it.
namespace trelv::kit {

/// The share that commands and names are compared with. Where nothing but a pack or a file is
/// linted there is none.
struct Host {
  Program& program;
  GivenPath place;
  /// Full paths, upper case, of files that the packs which wait there will put there.
  std::set<std::string> arriving = {};
  /// The same of the pack that is being judged.
  std::set<std::string> brought = {};
  /// Bytes that can still be written there; none where that cannot be told.
  std::optional<std::uint64_t> room = {};
  /// At least one product's program, or a recorded version, is there.
  bool anythingInstalled = false;
  /// What stands at the paths that were looked at: most commands start one program.
  std::map<std::string, bool> known = {};
};

/// A text that is an ini file.
struct IniFile {
  std::string shown;
  /// Not owned.
  const IniText* text = nullptr;
};

struct CatalogueLine {
  std::string section;
  std::string id;
  std::string name;
  std::string conf;
};

struct Catalogue {
  IniFile file;
  /// Why there is nothing to read; empty for one that could be read.
  std::string trouble;
  /// The sections prod01 to prod100 that name a configuration file, in this order.
  std::vector<CatalogueLine> entries;
  /// Those that name none.
  std::vector<CatalogueLine> withoutConf;
  /// Null without a share.
  Host* host = nullptr;
  /// The share's own, where this one is in a pack.
  const Catalogue* replaced = nullptr;
};

/// A command as it stands in a product's configuration.
struct Command {
  std::string section;
  std::string key;
  /// As the program reads it, placeholders not resolved.
  std::string text;
  std::optional<std::size_t> line;
};

/// A section that the update run or the removal reads.
struct CommandSection {
  std::string name;
  Operation operation{};
  std::string version;
  std::vector<Command> server;
  std::vector<Command> client;

  bool hasCommands() const { return !server.empty() || !client.empty(); }
};

struct Configuration {
  IniFile file;
  /// The catalogue's identifier; empty where no catalogue names the file.
  std::string product;
  /// Set-up and update sections in the order of their numbers, each with what is read of it, then
  /// the removal. Sections that are not there are left out.
  std::vector<CommandSection> sections;
  /// Programs of the section "Exec".
  std::vector<Command> programs;
  Program* program = nullptr;
  Host* host = nullptr;
  /// The share's own, where this one is in a pack that will put it there.
  const Configuration* replaced = nullptr;
};

/// The server's version record; its text is null where there is none yet.
struct VersionRecords {
  IniFile file;
  machine::FileFacts facts;
  std::string folder;
  const Catalogue* catalogue = nullptr;
  /// By the catalogue's order; may be shorter than it.
  const std::vector<Configuration>* configurations = nullptr;
  Host* host = nullptr;
};

/// The folders and files of the host that are no configuration.
struct Share {
  Host* host = nullptr;
};

/// An entry of an archive.
struct PackEntry {
  /// As stored, names parted by "/".
  std::string name;
  bool folder = false;
  bool link = false;
  bool encrypted = false;
  std::uint64_t size = 0;
};

enum class PackKind {
  /// Brings a set-up tree to a share.
  Zip,
  /// Read by the decoder; holds zip packs.
  Gz,
  /// Lies on a medium; holds gz packs.
  MediumZip
};

/// Where a pack was found: which kinds are opened there.
enum class PackPlace { Alone, SetupFolder, Medium, Archive };

struct Pack {
  std::string shown;
  std::string fileName;
  PackKind kind = PackKind::Zip;
  PackPlace place = PackPlace::Alone;
  /// Its ending is one that is opened.
  bool opened = true;
  bool needsPassword = false;
  /// More folders in each other than are opened.
  bool tooDeep = false;
  /// What is wrong with the archive; empty where it could be read to its end.
  std::string damage;
  /// Why the decoder refuses it.
  std::string refusal;
  std::vector<PackEntry> entries;
  /// Configuration files that it brings.
  std::vector<Configuration> configurations;
  Host* host = nullptr;
};

struct MediumText {
  std::string shown;
  bool stands = false;
  /// UTF-8, without line ends.
  std::vector<std::string> lines;
  /// A line that is no plain text.
  bool odd = false;
};

struct Medium {
  Program& program;
  GivenPath place;
  MediumText setup;
  MediumText version;
  MediumText products;
  mediumFiles::SetupFile menu;
};

}  // namespace trelv::kit
