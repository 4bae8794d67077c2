#include "platform/ConfigurationFiles.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/Text.h"
#include "records/IniDocument.h"

namespace trelv {
namespace {

/// Larger files are not kept in memory; no configuration file comes near.
constexpr std::size_t kLargestKept = std::size_t{64} << 20U;

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

bool isLetter(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

/// A path with drive or share that names the same file for everyone: the platform looks for other
/// names in the Windows folder or the current one.
bool isFullPath(std::string_view path) {
  if (path.size() < 3 || path.find('/') != std::string_view::npos) return false;
  const bool drive = isLetter(path[0]) && path[1] == ':' && path[2] == '\\';
  const bool share = path[0] == '\\' && path[1] == '\\' && path[2] != '.' && path[2] != '?';
  return drive || share;
}

/// Names of other kinds are the platform's to understand.
bool canKeep(const IniAddress& address) {
  return isFullPath(address.file) && IniDocument::canFind(address.section, address.key);
}

/// The platform takes paths in the ANSI code page: with characters beyond it, it finds nothing.
bool isAnsi(machine::Locale& locale, const std::string& path) {
  return isAscii(path) || locale.fromAnsi(locale.toAnsi(path)) == path;
}

/// The file is not there, or its server is gone. A connection that was dropped does not count: the
/// next use of the share makes it anew.
bool isOutOfReach(SystemCode code) {
  return meansMissing(code) || code == system_code::kBadNetPath;
}

/// A server that is out of reach for a moment must not make a file look empty, for then versions
/// would be lost: it is asked once more. One that stays away would let each of thousands of values
/// wait for it.
SystemCode readAll(machine::Files& files, const std::string& path, std::size_t limit,
                   std::string& bytes) {
  const SystemCode code = files.read(path, limit, bytes);
  return code == system_code::kBadNetPath ? files.read(path, limit, bytes) : code;
}

/// True when the value comes whole out of a buffer of `size` characters. Quotes that were taken off
/// count, because the platform takes them off after it has cut the text.
bool fits(std::string_view value, std::uint32_t size) { return value.size() + 2 < size; }

/// True when a written value is read back as it is: no blanks or quotes that could get lost.
bool survivesWriting(std::string_view value) {
  const auto plain = [](char character) { return isLetter(character) || isDigit(character); };
  return value.empty() || (plain(value.front()) && plain(value.back()));
}

}  // namespace

/// A file as it was found, by upper-cased path.
struct ConfigurationFiles::Kept {
  struct File {
    bool leftToPlatform = false;
    /// Nothing for a file that is left to the platform or could not be read.
    std::optional<IniDocument> document;
  };

  static File open(machine::Machine& machine, const std::string& path) {
    if (!isAnsi(machine.locale, path)) return {true, std::nullopt};
    std::string bytes;
    const SystemCode code = readAll(machine.files, path, kLargestKept + 1, bytes);
    // A file that is there and cannot be read at this moment (another workstation writes to it)
    // must not look empty until the next forget(): versions would be lost.
    if (code != system_code::kSuccess) return {!isOutOfReach(code), std::nullopt};
    if (bytes.size() > kLargestKept || !IniDocument::understands(bytes)) {
      return {true, std::nullopt};
    }
    return {false, IniDocument(std::move(bytes))};
  }

  const File& file(machine::Machine& machine, const std::string& path) {
    if (last == nullptr || path != lastPath) {
      const std::string name = upperCase(path);
      auto known = files.find(name);
      if (known == files.end()) known = files.emplace(name, open(machine, path)).first;
      last = &known->second;
      lastPath = path;
    }
    return *last;
  }

  void forget(const std::string& path) {
    last = nullptr;
    files.erase(upperCase(path));
  }

  void forgetAll() {
    last = nullptr;
    files.clear();
  }

  std::unordered_map<std::string, File> files;
  /// The file that was asked for last: many values of one are read one after the other.
  const File* last = nullptr;
  std::string lastPath;
};

ConfigurationFiles::ConfigurationFiles(machine::Machine& machine)
    : machine_(machine), kept_(std::make_unique<Kept>()) {}
ConfigurationFiles::~ConfigurationFiles() = default;

std::string ConfigurationFiles::read(const IniAddress& address, std::uint32_t size) {
  const auto askPlatform = [&] {
    return machine_.profiles.readValue(address.section, address.key, "", size, address.file);
  };
  if (!canKeep(address)) return askPlatform();
  const Kept::File& kept = kept_->file(machine_, address.file);
  if (kept.leftToPlatform) return askPlatform();
  if (!kept.document) return {};
  const std::optional<std::string_view> value = kept.document->value(address.section, address.key);
  if (!value) return {};
  if (!fits(*value, size)) return askPlatform();
  return isAscii(*value) ? std::string(*value) : machine_.locale.fromAnsi(std::string(*value));
}

bool ConfigurationFiles::holds(const IniAddress& address) {
  if (!canKeep(address)) return false;
  const Kept::File& kept = kept_->file(machine_, address.file);
  return kept.document && kept.document->value(address.section, address.key).has_value();
}

void ConfigurationFiles::forget() { kept_->forgetAll(); }

void ConfigurationFiles::forget(const std::string& file) { kept_->forget(file); }

void ConfigurationFiles::written(const IniAddress& address, const std::string& value) {
  const auto known = kept_->files.find(upperCase(address.file));
  const bool unchanged = known != kept_->files.end() && known->second.document &&
                         survivesWriting(value) && isAscii(value) &&
                         IniDocument::canFind(address.section, address.key) &&
                         known->second.document->value(address.section, address.key) == value;
  if (!unchanged) {
    forget(address.file);
  }
}

}  // namespace trelv
