#include "packs/ZipProtection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

/// Where the directory stands in the file.
struct Directory {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

/// From the record that ends the archive, at `end` of the tail. The directory stands right before
/// it, also where other bytes stand before the archive.
bool findDirectory(const Tail& tail, std::size_t end, Directory& directory) {
  std::uint64_t last = tail.offset + end;
  directory.length = numberAt(tail.bytes, end + 12, 4);
  const bool is64 = end >= kLocator64Length + kEnd64Length &&
                    tail.bytes.compare(end - kLocator64Length, 4, kLocator64Signature) == 0;
  if (is64 || directory.length == kIn64Record) {
    const std::size_t at = tail.bytes.rfind(kEnd64Signature, end);
    if (!is64 || at == std::string::npos || at + kEnd64Length > end) {
      return false;
    }
    directory.length = numberAt(tail.bytes, at + 40, 8);
    last = tail.offset + at;
  }
  directory.offset = last - std::min(last, directory.length);
  return directory.length <= std::min(last, kLongestDirectory);
}

/// True where it cannot be told.
bool hasEncryptedEntry(const std::string& directory) {
  for (std::size_t at = 0; at < directory.size();) {
    if (directory.size() - at < kDirectoryLength ||
        directory.compare(at, kDirectorySignature.size(), kDirectorySignature) != 0) {
      return true;
    }
    if ((numberAt(directory, at + 8, 2) & (kEncrypted | kDirectoryEncrypted)) != 0) {
      return true;
    }
    // Name, extra field and comment follow.
    at += kDirectoryLength + static_cast<std::size_t>(numberAt(directory, at + 28, 2) +
                                                      numberAt(directory, at + 30, 2) +
                                                      numberAt(directory, at + 32, 2));
  }
  return false;
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

bool NeedsPassword(machine::Files& files, const std::string& path) {
  std::string beginning;
  Tail tail;
  if (files.readPart(path, 0, kEndLength, beginning) != system_code::kSuccess ||
      !readTail(files, path, tail)) {
    return false;
  }
  if (isOneOf(beginning, {k7zSignature, kRarSignature})) {
    return true;
  }
  const std::size_t end = findEnd(tail.bytes);
  if (end == std::string::npos) {
    // The beginning of a zip archive that was cut: its entries may be encrypted all the same.
    return isOneOf(beginning, {kEntrySignature});
  }
  Directory place;
  std::string directory;
  return !findDirectory(tail, end, place) ||
         files.readPart(path, place.offset, static_cast<std::size_t>(place.length), directory) !=
             system_code::kSuccess ||
         directory.size() != place.length || hasEncryptedEntry(directory);
}

}  // namespace trelv::modProdTrelvManager
