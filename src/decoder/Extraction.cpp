#include "decoder/Extraction.h"

#include <memory>
#include <string>
#include <string_view>

#include "decoder/EntryName.h"
#include "decoder/GzipReader.h"
#include "decoder/Placement.h"
#include "decoder/Refusal.h"
#include "decoder/TarReader.h"

namespace trelv::decoder {
namespace {

constexpr const char* kLink = "collegamento";
constexpr const char* kNoFile = "voce che non è né un file né una cartella";
constexpr const char* kNoName = "file senza nome";
constexpr const char* kTooLong = "percorso troppo lungo";
constexpr const char* kTwice = "nome presente due volte nel pacco";

/// The checked name of an entry that may be unpacked.
std::string acceptedName(const TarEntry& entry, const OutputTree& output) {
  if (entry.kind == EntryKind::kLink) {
    refuseEntry(kLink, entry.name);
  }
  if (entry.kind == EntryKind::kOther) {
    refuseEntry(kNoFile, entry.name);
  }
  const EntryName name = readEntryName(entry.name);
  if (name.refusal != nullptr) {
    refuseEntry(name.refusal, entry.name);
  }
  if (name.path.empty() && entry.kind == EntryKind::kFile) {
    refuseEntry(kNoName, entry.name);
  }
  if (name.length > output.longestName()) {
    refuseEntry(kTooLong, entry.name);
  }
  return name.path;
}

/// Unpacks entries into the temporary folder. It was empty and is written by nobody else: whatever
/// stands in it comes from this pack.
class Unpacking {
 public:
  Unpacking(OutputTree& output, const TemporaryFolder& folder) : output_(output), folder_(folder) {}

  void add(TarReader& archive, const TarEntry& entry) {
    const std::string name = acceptedName(entry, output_);
    if (entry.kind == EntryKind::kFolder) {
      makeFolders(name);
    } else {
      writeFile(archive, entry, name);
    }
  }

 private:
  bool stands(const std::string& name, Standing wanted) const {
    Standing standing = Standing::kNothing;
    const SystemCode code = output_.look(folder_.name(name), standing);
    return code == system_code::kSuccess && standing == wanted;
  }

  /// Makes a folder and those that lead to it, unless they are there. Ends the work where a file
  /// is.
  void makeFolders(const std::string& name) {
    for (std::size_t end = 0; end != std::string::npos && !name.empty();) {
      end = name.find('/', end + 1);
      makeFolder(name.substr(0, end));
    }
  }

  void makeFolder(const std::string& name) {
    const SystemCode code = output_.makeFolder(folder_.name(name));
    if (code == system_code::kAlreadyExists && !stands(name, Standing::kFolder)) {
      refuseEntry(kTwice, name);
    }
    if (code != system_code::kAlreadyExists) {
      require(code, output_.path(folder_.name(name)));
    }
  }

  std::unique_ptr<OutputFile> createFile(const std::string& name) {
    std::unique_ptr<OutputFile> file;
    SystemCode code = output_.createFile(folder_.name(name), file);
    // Archives name a folder before what is in it, but need not do so.
    const std::size_t parent = name.rfind('/');
    const bool noFolder = code == system_code::kPathNotFound || code == system_code::kDirectoryName;
    if (noFolder && parent != std::string::npos) {
      makeFolders(name.substr(0, parent));
      code = output_.createFile(folder_.name(name), file);
    }
    if (code != system_code::kSuccess &&
        (stands(name, Standing::kFile) || stands(name, Standing::kFolder))) {
      refuseEntry(kTwice, name);
    }
    require(code, output_.path(folder_.name(name)));
    return file;
  }

  void writeFile(TarReader& archive, const TarEntry& entry, const std::string& name) {
    const std::unique_ptr<OutputFile> file = createFile(name);
    const std::string path = output_.path(folder_.name(name));
    for (std::string_view bytes = archive.data(); !bytes.empty(); bytes = archive.data()) {
      require(file->write(bytes), path);
    }
    require(file->finish(entry.modified), path);
  }

  OutputTree& output_;
  const TemporaryFolder& folder_;
};

}  // namespace

void extractPack(PackInput& pack, OutputTree& output, std::uint64_t largestContent) {
  GzipReader packed(pack, largestContent);
  TarReader archive(packed);
  TemporaryFolder folder(output);
  Unpacking unpacking(output, folder);
  TarEntry entry;
  while (archive.next(entry)) {
    unpacking.add(archive, entry);
  }
  folder.place();
}

}  // namespace trelv::decoder
