#include "kit/ArchiveReading.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string_view>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "decoder/Extraction.h"
#include "decoder/GzipReader.h"
#include "decoder/TarReader.h"

namespace trelv::kit {
namespace {

/// 7-Zip knows more ways of packing than the archive library, which says so of each.
bool isUnknownMethod(const RuntimeError& failure) {
  return failure.description().find("nsupported") != std::string::npos;
}

/// Reads what is in the entry to its end, which compares its check sum.
std::string contentOf(ArchiveReader& zip, bool wanted) {
  std::string content;
  try {
    for (std::string_view piece = zip.block(); !piece.empty(); piece = zip.block()) {
      content.append(wanted ? piece : std::string_view());
    }
  } catch (const RuntimeError& failure) {
    if (!isUnknownMethod(failure)) {
      throw;
    }
  }
  return content;
}

/// Nothing but the record that ends an archive, with no entries: good for 7-Zip, not for the
/// library.
bool isEmptyZip(const ByteSource& source) {
  using namespace std::string_view_literals;
  constexpr std::string_view kEndOfNothing = "PK\5\6\0\0\0\0\0\0\0\0\0\0\0\0"sv;
  constexpr std::size_t kEndLength = 22;
  std::string bytes;
  source.read(0, kEndLength, bytes);
  return bytes.size() == kEndLength && bytes.starts_with(kEndOfNothing);
}

// --- Gz

class SourceInput : public decoder::PackInput {
 public:
  SourceInput(const ByteSource& source, std::string shown)
      : source_(source), shown_(std::move(shown)) {}

  std::string path() const override { return shown_; }
  SystemCode read(char* buffer, std::size_t size, std::size_t& count) override {
    std::string bytes;
    const SystemCode code = source_.read(position_, size, bytes);
    std::copy(bytes.begin(), bytes.end(), buffer);
    count = bytes.size();
    position_ += count;
    return code;
  }

 private:
  const ByteSource& source_;
  std::string shown_;
  std::uint64_t position_ = 0;
};

/// An output folder that forgets what is written and keeps the names: what the decoder would refuse
/// it refuses here too.
class NamesOnly : public decoder::OutputTree {
 public:
  std::string path(const std::string& name) const override { return name; }
  std::size_t longestName() const override {
    constexpr std::size_t kLongest = 2040;
    return kLongest;
  }

  SystemCode look(const std::string& name, decoder::Standing& standing) override {
    const auto found = nodes_.find(upperCase(name));
    standing = name.empty()            ? decoder::Standing::kFolder
               : found == nodes_.end() ? decoder::Standing::kNothing
                                       : found->second;
    return system_code::kSuccess;
  }

  /// Nothing stands where the entries would go, so that placing them refuses nothing.
  SystemCode visit(const std::string& /*folder*/, const Visitor& /*visitor*/) override {
    return system_code::kSuccess;
  }

  SystemCode makeFolder(const std::string& name) override {
    return add(name, decoder::Standing::kFolder);
  }

  SystemCode createFile(const std::string& name,
                        std::unique_ptr<decoder::OutputFile>& file) override {
    const SystemCode code = add(name, decoder::Standing::kFile);
    if (code == system_code::kSuccess) {
      file = std::make_unique<Sink>();
    }
    return code;
  }

  SystemCode replaceFile(const std::string& /*from*/, const std::string& /*to*/) override {
    return system_code::kSuccess;
  }
  SystemCode moveFolder(const std::string& /*from*/, const std::string& /*to*/) override {
    return system_code::kSuccess;
  }
  SystemCode removeFile(const std::string& /*name*/) override { return system_code::kSuccess; }
  SystemCode removeFolder(const std::string& /*name*/) override { return system_code::kSuccess; }

 private:
  class Sink : public decoder::OutputFile {
   public:
    SystemCode write(std::string_view /*bytes*/) override { return system_code::kSuccess; }
    SystemCode finish(std::uint64_t /*modified*/) override { return system_code::kSuccess; }
  };

  SystemCode add(const std::string& name, decoder::Standing standing) {
    const std::size_t end = name.find_last_of('/');
    decoder::Standing parent = decoder::Standing::kFolder;
    look(end == std::string::npos ? std::string() : name.substr(0, end), parent);
    if (parent != decoder::Standing::kFolder) {
      return parent == decoder::Standing::kNothing ? system_code::kPathNotFound
                                                   : system_code::kDirectoryName;
    }
    return nodes_.emplace(upperCase(name), standing).second ? system_code::kSuccess
                                                            : system_code::kAlreadyExists;
  }

  std::map<std::string, decoder::Standing> nodes_;
};

PackEntry entryOf(const decoder::TarEntry& entry) {
  return {entry.name, entry.kind == decoder::EntryKind::kFolder,
          entry.kind == decoder::EntryKind::kLink, false, entry.size};
}

/// Runs `work`; the words of a failure, empty without one.
template <class Work>
std::string wordsOf(Work&& work) {
  try {
    work();
  } catch (const RuntimeError& failure) {
    return failure.description();
  }
  return {};
}

}  // namespace

std::string readZip(const ByteSource& source, const WantEntry& want, const TakeContent& take) {
  return wordsOf([&]() -> void {
    if (isEmptyZip(source)) {
      return;
    }
    ArchiveReader zip(source, ArchiveKind::Zip);
    for (ArchivedEntry header; zip.next(header);) {
      const PackEntry entry{replaceAll(header.name, "\\", "/"), header.folder, header.link,
                            header.encrypted, header.size};
      const bool wanted = want(entry);
      if (entry.folder || header.other || entry.link || entry.encrypted) {
        continue;
      }
      std::string content = contentOf(zip, wanted);
      if (wanted) {
        take(entry, std::move(content));
      }
    }
  });
}

std::string readGz(const ByteSource& source, const std::string& shown, const WantEntry& want,
                   const TakeContent& take) {
  return wordsOf([&]() -> void {
    SourceInput input(source, shown);
    decoder::GzipReader packed(input, decoder::kLargestContent);
    decoder::TarReader tar(packed);
    decoder::TarEntry header;
    while (tar.next(header)) {
      const PackEntry entry = entryOf(header);
      if (want(entry) && header.kind == decoder::EntryKind::kFile) {
        std::string content;
        for (std::string_view bytes = tar.data(); !bytes.empty(); bytes = tar.data()) {
          content += bytes;
        }
        take(entry, std::move(content));
      }
    }
  });
}

std::string decoderRefusal(const ByteSource& source, const std::string& shown) {
  return wordsOf([&]() -> void {
    SourceInput input(source, shown);
    NamesOnly output;
    decoder::extractPack(input, output);
  });
}

}  // namespace trelv::kit
