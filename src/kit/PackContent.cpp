#include "kit/PackContent.h"

#include <functional>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/ArchiveReader.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::kit {
namespace {

/// A pack in a pack in a pack is no pack that anybody made.
constexpr int kDeepest = 3;
constexpr std::size_t kPiece = std::size_t{1} << 20U;

/// Takes in a content piece by piece.
class Hash {
 public:
  void add(std::string_view bytes) {
    print_.size += bytes.size();
    for (const char byte : bytes) {
      print_.hash = (print_.hash ^ static_cast<unsigned char>(byte)) * kPrime;
    }
  }
  const Fingerprint& print() const { return print_; }

 private:
  static constexpr std::uint64_t kBasis = 14695981039346656037U;
  static constexpr std::uint64_t kPrime = 1099511628211U;
  Fingerprint print_{0, kBasis};
};

/// Below the set-up folder; empty for what is not copied from there.
std::string pathInSetup(const std::string& stored) {
  const std::string path = replaceAll(stored, "/", "\\");
  const std::string folder = std::string(hostPaths::kSetups) + "\\";
  return equalNoCase(path.substr(0, folder.size()), folder) ? path.substr(folder.size())
                                                            : std::string();
}

bool isPackInside(const std::string& path) {
  return path.find('\\') == std::string::npos && modLibrary::Extension(path) == "zip";
}

using Take = std::function<void(std::string_view piece)>;

/// Is told of each file: its path, and what hands over its bytes.
using Visitor =
    std::function<void(const std::string& path, const std::function<void(const Take&)>& bytes)>;

void visit(ByteSource source, int depth, const Visitor& visitor) {
  ArchiveReader reader(std::move(source), ArchiveKind::Zip);
  std::vector<std::string> inside;
  for (ArchivedEntry entry; reader.next(entry);) {
    const std::string path = pathInSetup(entry.name);
    if (entry.folder || entry.other || path.empty()) {
      continue;
    }
    if (isPackInside(path) && depth < kDeepest) {
      inside.push_back(reader.content());
      visitor(path, [&](const Take& take) -> void { take(inside.back()); });
      continue;
    }
    visitor(path, [&](const Take& take) -> void {
      for (std::string_view piece = reader.block(); !piece.empty(); piece = reader.block()) {
        take(piece);
      }
    });
  }
  for (std::string& bytes : inside) {
    visit(textSource(std::move(bytes)), depth + 1, visitor);
  }
}

}  // namespace

Fingerprint fingerprintOf(std::string_view bytes) {
  Hash hash;
  hash.add(bytes);
  return hash.print();
}

std::optional<Fingerprint> fingerprintOfFile(machine::Files& files, const std::string& path) {
  machine::FileFacts facts;
  SystemCode code = files.look(path, facts);
  if (meansMissing(code) || facts.folder) {
    return std::nullopt;
  }
  Hash hash;
  std::string piece;
  do {
    code = code == system_code::kSuccess ? files.readPart(path, hash.print().size, kPiece, piece)
                                         : code;
    if (meansMissing(code)) {
      // A start has opened it meanwhile.
      return std::nullopt;
    }
    if (code != system_code::kSuccess) {
      throw failureFromSystemCode(code, path);
    }
    hash.add(piece);
  } while (piece.size() == kPiece);
  return hash.print();
}

std::vector<PackedFile> packContent(machine::Files& files, const std::string& pack) {
  std::vector<PackedFile> content;
  visit(fileSource(files, pack), 1,
        [&](const std::string& path, const std::function<void(const Take&)>& bytes) -> void {
          Hash hash;
          bytes([&](std::string_view piece) -> void { hash.add(piece); });
          content.push_back({path, hash.print()});
        });
  return content;
}

std::optional<std::string> packedBytes(machine::Files& files, const std::string& pack,
                                       const std::string& wanted) {
  std::optional<std::string> found;
  visit(fileSource(files, pack), 1,
        [&](const std::string& path, const std::function<void(const Take&)>& bytes) -> void {
          if (equalNoCase(path, wanted)) {
            found.emplace();
            bytes([&](std::string_view piece) -> void { *found += piece; });
          }
        });
  return found;
}

}  // namespace trelv::kit
