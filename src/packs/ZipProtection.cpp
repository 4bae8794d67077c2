#include "packs/ZipProtection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace trelv::modProdTrelvManager {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kEntrySignature = "PK\3\4"sv;
constexpr std::string_view kDirectorySignature = "PK\1\2"sv;
constexpr std::string_view kEndSignature = "PK\5\6"sv;
constexpr std::string_view kEnd64Signature = "PK\6\6"sv;
constexpr std::string_view kLocator64Signature = "PK\6\7"sv;
constexpr std::string_view k7zSignature = "7z\xBC\xAF\x27\x1C"sv;
constexpr std::string_view kRarSignature = "Rar!\x1A\7"sv;

// Lengths of the records, names and comments left out.
constexpr std::size_t kEntryLength = 30;
constexpr std::size_t kDirectoryLength = 46;
constexpr std::size_t kEndLength = 22;
constexpr std::size_t kEnd64Length = 56;
constexpr std::size_t kLocator64Length = 20;
constexpr std::size_t kLongestComment = 65535;

/// Entries: encrypted, by which method ever; and what the whole directory is encrypted with.
constexpr std::uint64_t kEncrypted = 0x0001;
constexpr std::uint64_t kDirectoryEncrypted = 0x2000;

constexpr std::uint64_t kIn64Record = 0xFFFFFFFF;
/// No directory of a pack is longer; one that says so is none.
constexpr std::uint64_t kLongestDirectory = std::uint64_t{64} * 1024 * 1024;

/// Read at once where the header of an entry stands: those of many small entries, not much of a
/// large one.
constexpr std::size_t kPiece = std::size_t{16} * 1024;

/// The number of `count` bytes at `at`, lowest byte first.
std::uint64_t numberAt(std::string_view bytes, std::size_t at, std::size_t count) {
  std::uint64_t number = 0;
  for (std::size_t i = count; i > 0; --i) {
    number = (number << 8U) | static_cast<unsigned char>(bytes[at + i - 1]);
  }
  return number;
}

/// The end of a file, and where it begins in it.
struct Tail {
  std::string bytes;
  std::uint64_t offset = 0;
};

bool readTail(machine::Files& files, const std::string& path, Tail& tail) {
  machine::FileFacts facts;
  if (files.look(path, facts) != system_code::kSuccess || facts.folder) {
    return false;
  }
  constexpr std::uint64_t kLongest = kLongestComment + kEndLength + kLocator64Length + kEnd64Length;
  tail.offset = facts.size > kLongest ? facts.size - kLongest : 0;
  return files.readPart(path, tail.offset, static_cast<std::size_t>(kLongest), tail.bytes) ==
         system_code::kSuccess;
}

/// Where the directory stands in the file, and what the record behind it says of it.
struct Directory {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  /// As counted from the archive's beginning, which other bytes may stand before.
  std::uint64_t statedOffset = 0;
  std::uint64_t entries = 0;
  /// Bits of the number of entries that the record has room for.
  std::uint64_t entriesMask = 0xFFFF;
};

/// From the record that ends the archive, at `end` of the tail. The directory stands right before
/// it, also where other bytes stand before the archive.
bool findDirectory(const Tail& tail, std::size_t end, Directory& directory) {
  std::uint64_t last = tail.offset + end;
  directory.entries = numberAt(tail.bytes, end + 10, 2);
  directory.length = numberAt(tail.bytes, end + 12, 4);
  directory.statedOffset = numberAt(tail.bytes, end + 16, 4);
  const bool is64 = end >= kLocator64Length + kEnd64Length &&
                    tail.bytes.compare(end - kLocator64Length, 4, kLocator64Signature) == 0;
  if (is64 || directory.length == kIn64Record) {
    const std::size_t at = tail.bytes.rfind(kEnd64Signature, end);
    if (!is64 || at == std::string::npos || at + kEnd64Length > end) {
      return false;
    }
    directory.entries = numberAt(tail.bytes, at + 32, 8);
    directory.entriesMask = ~std::uint64_t{0};
    directory.length = numberAt(tail.bytes, at + 40, 8);
    directory.statedOffset = numberAt(tail.bytes, at + 48, 8);
    last = tail.offset + at;
  }
  directory.offset = last - std::min(last, directory.length);
  return directory.length <= std::min(last, kLongestDirectory) &&
         directory.statedOffset <= directory.offset;
}

/// The headers before the entries' contents, which 7-Zip unpacks by.
class EntryHeaders {
 public:
  EntryHeaders(machine::Files& files, const std::string& path) : files_(files), path_(path) {}

  /// Does one stand here that says nothing of encryption?
  bool isPlain(std::uint64_t offset) {
    if (!isRead(offset)) {
      offset_ = offset;
      bytes_.clear();
      files_.readPart(path_, offset, kPiece, bytes_);
    }
    if (!isRead(offset)) {
      return false;
    }
    const auto at = static_cast<std::size_t>(offset - offset_);
    return bytes_.compare(at, kEntrySignature.size(), kEntrySignature) == 0 &&
           (numberAt(bytes_, at + 6, 2) & (kEncrypted | kDirectoryEncrypted)) == 0;
  }

 private:
  bool isRead(std::uint64_t offset) const {
    return offset >= offset_ && offset - offset_ <= bytes_.size() &&
           bytes_.size() - (offset - offset_) >= kEntryLength;
  }

  machine::Files& files_;
  const std::string& path_;
  /// What was read last, and where it stands in the file.
  std::string bytes_;
  std::uint64_t offset_ = 0;
};

/// One entry of a directory.
struct DirectoryEntry {
  std::uint64_t flags = 0;
  /// Where its header stands, as counted from the archive's beginning.
  std::uint64_t offset = 0;
  /// Its name, which may stand in the extra field once more, in another encoding.
  std::string_view nameAndExtra;
};

/// The offset of an entry beyond 4 GB: in the extra field, behind the sizes that are as large.
std::optional<std::uint64_t> offsetIn64Field(std::string_view record, std::string_view extra) {
  constexpr std::uint64_t kField64 = 1;
  const std::size_t sizes = (numberAt(record, 24, 4) == kIn64Record ? 8U : 0U) +
                            (numberAt(record, 20, 4) == kIn64Record ? 8U : 0U);
  while (extra.size() >= 4) {
    const std::uint64_t length = numberAt(extra, 2, 2);
    if (numberAt(extra, 0, 2) == kField64) {
      return length >= sizes + 8 && extra.size() >= 4 + sizes + 8
                 ? std::optional(numberAt(extra, 4 + sizes, 8))
                 : std::nullopt;
    }
    extra.remove_prefix(std::min(extra.size(), static_cast<std::size_t>(4 + length)));
  }
  return std::nullopt;
}

/// Takes the first entry off a directory; nothing where none can be made out.
std::optional<DirectoryEntry> takeEntry(std::string_view& directory) {
  if (directory.size() < kDirectoryLength || !directory.starts_with(kDirectorySignature)) {
    return std::nullopt;
  }
  const auto name = static_cast<std::size_t>(numberAt(directory, 28, 2));
  const auto extra = static_cast<std::size_t>(numberAt(directory, 30, 2));
  const std::size_t length =
      kDirectoryLength + name + extra + static_cast<std::size_t>(numberAt(directory, 32, 2));
  if (directory.size() < length) {
    return std::nullopt;
  }
  DirectoryEntry entry{numberAt(directory, 8, 2), numberAt(directory, 42, 4),
                       directory.substr(kDirectoryLength, name + extra)};
  if (entry.offset == kIn64Record) {
    const std::optional<std::uint64_t> offset =
        offsetIn64Field(directory, entry.nameAndExtra.substr(name));
    if (!offset) {
      return std::nullopt;
    }
    entry.offset = *offset;
  }
  directory.remove_prefix(length);
  return entry;
}

bool hasTooManyLevels(const DirectoryEntry& entry) {
  return std::count_if(entry.nameAndExtra.begin(), entry.nameAndExtra.end(),
                       [](char c) -> bool { return c == '/' || c == '\\'; }) > kMostPackLevels;
}

/// What cannot be told counts as encrypted.
ZipObstacle obstacleIn(const Directory& place, std::string_view directory, EntryHeaders& headers) {
  const std::uint64_t beginning = place.offset - place.statedOffset;
  std::uint64_t entries = 0;
  for (; !directory.empty(); ++entries) {
    const std::optional<DirectoryEntry> entry = takeEntry(directory);
    if (!entry || (entry->flags & (kEncrypted | kDirectoryEncrypted)) != 0 ||
        !headers.isPlain(beginning + entry->offset)) {
      return ZipObstacle::Password;
    }
    if (hasTooManyLevels(*entry)) {
      return ZipObstacle::Levels;
    }
  }
  // Entries that the directory leaves out are opened where its number of entries is wrong.
  return (entries & place.entriesMask) == place.entries ? ZipObstacle::None : ZipObstacle::Password;
}

/// Where the record that ends the archive stands: the last one behind which just its comment
/// follows, else the last of all.
std::size_t findEnd(const std::string& tail) {
  const auto fits = [&tail](std::size_t at) -> bool {
    return at + kEndLength <= tail.size() &&
           at + kEndLength + numberAt(tail, at + 20, 2) == tail.size();
  };
  const std::size_t last = tail.rfind(kEndSignature);
  for (std::size_t at = last; at != std::string::npos && at > 0;
       at = tail.rfind(kEndSignature, at - 1)) {
    if (fits(at)) {
      return at;
    }
  }
  return last != std::string::npos && last + kEndLength > tail.size() ? std::string::npos : last;
}

bool isOneOf(std::string_view beginning, std::initializer_list<std::string_view> signatures) {
  return std::any_of(signatures.begin(), signatures.end(), [&](std::string_view signature) -> bool {
    return beginning.starts_with(signature);
  });
}

}  // namespace

ZipObstacle FindObstacle(machine::Files& files, const std::string& path) {
  std::string beginning;
  Tail tail;
  if (files.readPart(path, 0, kEndLength, beginning) != system_code::kSuccess ||
      !readTail(files, path, tail)) {
    return ZipObstacle::None;
  }
  if (isOneOf(beginning, {k7zSignature, kRarSignature})) {
    return ZipObstacle::Password;
  }
  const std::size_t end = findEnd(tail.bytes);
  if (end == std::string::npos) {
    // The beginning of a zip archive that was cut: its entries may be encrypted all the same.
    return isOneOf(beginning, {kEntrySignature}) ? ZipObstacle::Password : ZipObstacle::None;
  }
  Directory place;
  std::string directory;
  if (!findDirectory(tail, end, place) ||
      files.readPart(path, place.offset, static_cast<std::size_t>(place.length), directory) !=
          system_code::kSuccess ||
      directory.size() != place.length) {
    return ZipObstacle::Password;
  }
  EntryHeaders headers(files, path);
  return obstacleIn(place, directory, headers);
}

}  // namespace trelv::modProdTrelvManager
