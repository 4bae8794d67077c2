#include "kit/DecodedPack.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "decoder/Extraction.h"
#include "kit/ArchiveSurroundings.h"

namespace trelv::kit {
namespace {

/// A pack in memory.
class TextPack : public decoder::PackInput {
 public:
  TextPack(const std::string& bytes, std::string shown) : bytes_(bytes), shown_(std::move(shown)) {}

  std::string path() const override { return shown_; }
  SystemCode read(char* buffer, std::size_t size, std::size_t& count) override {
    count = std::min(size, bytes_.size() - at_);
    std::copy_n(bytes_.data() + at_, count, buffer);
    at_ += count;
    return system_code::kSuccess;
  }

 private:
  const std::string& bytes_;
  std::string shown_;
  std::size_t at_ = 0;
};

/// An output folder in memory. It was empty, and only the decoder writes there.
class TextTree : public decoder::OutputTree {
 public:
  std::map<std::string, std::string> files;

  std::string path(const std::string& name) const override { return name; }
  std::size_t longestName() const override { return kLongest; }

  SystemCode look(const std::string& name, decoder::Standing& standing) override {
    standing = files.contains(name) ? decoder::Standing::kFile
               : isFolder(name)     ? decoder::Standing::kFolder
                                    : decoder::Standing::kNothing;
    return system_code::kSuccess;
  }

  SystemCode visit(const std::string& folder, const Visitor& visitor) override {
    std::map<std::string, decoder::Standing> found;
    const std::string above = folder.empty() ? "" : folder + "/";
    const auto note = [&](const std::string& name, decoder::Standing standing) -> void {
      const bool child = name.size() > above.size() && name.starts_with(above) &&
                         name.find('/', above.size()) == std::string::npos;
      if (child) {
        found[name.substr(above.size())] = standing;
      }
    };
    for (const auto& [name, ignored] : folders_) {
      note(name, decoder::Standing::kFolder);
    }
    for (const auto& [name, content] : files) {
      note(name, decoder::Standing::kFile);
    }
    for (const auto& [name, standing] : found) {
      if (!visitor(name, standing)) {
        break;
      }
    }
    return system_code::kSuccess;
  }

  SystemCode makeFolder(const std::string& name) override {
    if (files.contains(name) || isFolder(name)) {
      return system_code::kAlreadyExists;
    }
    if (!isFolder(above(name))) {
      return system_code::kPathNotFound;
    }
    folders_[name] = true;
    return system_code::kSuccess;
  }

  SystemCode createFile(const std::string& name,
                        std::unique_ptr<decoder::OutputFile>& file) override {
    if (files.contains(name) || isFolder(name)) {
      return system_code::kAlreadyExists;
    }
    if (!isFolder(above(name))) {
      return system_code::kPathNotFound;
    }
    file = std::make_unique<TextFile>(files[name]);
    return system_code::kSuccess;
  }

  SystemCode replaceFile(const std::string& from, const std::string& to) override {
    auto moved = files.extract(from);
    if (moved.empty()) {
      return system_code::kFileNotFound;
    }
    moved.key() = to;
    files.insert(std::move(moved));
    return system_code::kSuccess;
  }

  SystemCode moveFolder(const std::string& from, const std::string& to) override {
    rename(folders_, from, to);
    rename(files, from, to);
    return system_code::kSuccess;
  }

  SystemCode removeFile(const std::string& name) override {
    return files.erase(name) != 0 ? system_code::kSuccess : system_code::kFileNotFound;
  }
  SystemCode removeFolder(const std::string& name) override {
    folders_.erase(name);
    return system_code::kSuccess;
  }

 private:
  static constexpr std::size_t kLongest = 32767;

  class TextFile : public decoder::OutputFile {
   public:
    explicit TextFile(std::string& content) : content_(content) {}
    SystemCode write(std::string_view bytes) override {
      content_ += bytes;
      return system_code::kSuccess;
    }
    SystemCode finish(std::uint64_t /*modified*/) override { return system_code::kSuccess; }

   private:
    std::string& content_;
  };

  static std::string above(const std::string& name) {
    const std::size_t end = name.rfind('/');
    return end == std::string::npos ? std::string() : name.substr(0, end);
  }
  bool isFolder(const std::string& name) const { return name.empty() || folders_.contains(name); }

  template <class Content>
  static void rename(std::map<std::string, Content>& entries, const std::string& from,
                     const std::string& to) {
    std::map<std::string, Content> renamed;
    for (auto& [name, content] : entries) {
      const bool moves = name == from || name.starts_with(from + "/");
      renamed[moves ? to + name.substr(from.size()) : name] = std::move(content);
    }
    entries = std::move(renamed);
  }

  std::map<std::string, bool> folders_;
};

}  // namespace

std::map<std::string, std::string> decodedPack(const std::string& bytes, const std::string& shown) {
  const ArchiveSurroundings surroundings;
  TextPack pack(bytes, shown);
  TextTree tree;
  decoder::extractPack(pack, tree);
  return std::move(tree.files);
}

}  // namespace trelv::kit
