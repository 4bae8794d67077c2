#include "kit/PackBuild.h"

#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/ArchiveReader.h"
#include "kit/DecodedPack.h"
#include "kit/Failure.h"
#include "kit/QuietProgram.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::kit {
namespace {

constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();

/// Name in an archive of a file of the set-up folder.
std::string inSetup(const std::string& name) {
  return replaceAll(hostPaths::kSetups, "\\", "/") + "/" + name;
}

std::vector<ArchiveFile> filesOf(machine::Files& files, const ZipPart& part) {
  std::vector<ArchiveFile> found;
  found.reserve(part.files.size());
  for (const SourceFile& file : part.files) {
    found.push_back({inSetup(file.name), bytesOf(files, file.path)});
  }
  return found;
}

void require(SystemCode code, const std::string& path) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
}

[[noreturn]] void differs(const std::string& shown, const std::string& what) {
  throw Failure(shown, "riaperto, non contiene ciò che è descritto: " + what);
}

using Contents = std::map<std::string, std::string>;

/// Compares what came out of an archive with what should be in it, name by name.
void requireSame(const std::string& shown, const std::vector<ArchiveFile>& expected,
                 Contents found) {
  for (const ArchiveFile& file : expected) {
    const auto place = found.find(file.name);
    if (place == found.end() || place->second != file.content) {
      differs(shown, file.name);
    }
    found.erase(place);
  }
  if (!found.empty()) {
    differs(shown, found.begin()->first);
  }
}

Contents zipContents(ByteSource source) {
  ArchiveReader reader(std::move(source), ArchiveKind::Zip);
  Contents found;
  for (ArchivedEntry entry; reader.next(entry);) {
    found[entry.name] = reader.content();
  }
  return found;
}

/// A folder that is new and empty.
class WorkingFolder {
 public:
  WorkingFolder(machine::Files& files, const std::string& path) : fileSystem_(files), path_(path) {
    remove();
    require(files.makeFolder(path), path);
  }

  /// Behind a failure it goes with the folder that it lies in.
  void remove() {
    if (fileSystem_.folderExists(path_)) {
      fileSystem_.deleteFolder(path_, true);
    }
  }

 private:
  FileSystemObject fileSystem_;
  std::string path_;
};

}  // namespace

std::string bytesOf(machine::Files& files, const std::string& path) {
  std::string bytes;
  require(files.read(path, kAll, bytes), path);
  return bytes;
}

void writeFile(Workplace& workplace, const std::string& path, const std::string& bytes,
               Moment moment) {
  machine::Files& files = workplace.machine.files;
  QuietProgram quiet(workplace.machine);
  modLibrary::CreaCartella(quiet.program(), modLibrary::ParentPath(path));
  require(files.write(path, bytes), path);
  require(workplace.finished.setModified(path, fileTimeOf(moment)), path);
}

std::string zipPack(machine::Files& files, const ZipPart& part, Moment moment) {
  return zipArchive(filesOf(files, part), moment);
}

std::string gzPack(machine::Files& files, const GzPart& part, Moment moment) {
  std::vector<ArchiveFile> zips;
  zips.reserve(part.zips.size());
  for (const ZipPart& zip : part.zips) {
    zips.push_back({inSetup(zip.name), zipPack(files, zip, moment)});
  }
  return tarGzArchive(zips, moment);
}

std::string mediumPack(machine::Files& files, const PackPlan& pack) {
  std::vector<ArchiveFile> parts;
  parts.reserve(pack.gzParts.size());
  for (const GzPart& part : pack.gzParts) {
    parts.push_back({part.name, gzPack(files, part, pack.moment)});
  }
  return zipArchive(parts, pack.moment);
}

void PackProof::zip(const std::string& path, const std::string& shown, const ZipPart& part) {
  zipHolds(path, shown, filesOf(files_, part));
}

void PackProof::gz(const std::string& path, const std::string& shown, const GzPart& part) {
  gzHolds(bytesOf(files_, path), shown, part);
}

void PackProof::medium(const std::string& path, const std::string& shown, const PackPlan& pack) {
  Contents parts = zipContents(fileSource(files_, path));
  std::vector<ArchiveFile> read;
  for (const GzPart& part : pack.gzParts) {
    gzHolds(parts[part.name], shown + "!" + part.name, part);
    read.push_back({part.name, parts[part.name]});
  }
  zipHolds(path, shown, read);
}

void PackProof::gzHolds(const std::string& bytes, const std::string& shown, const GzPart& part) {
  Contents zips = decodedPack(bytes, shown);
  WorkingFolder folder(files_, folder_);
  std::vector<ArchiveFile> read;
  for (const ZipPart& zip : part.zips) {
    const std::string name = inSetup(zip.name);
    if (!zips.contains(name)) {
      differs(shown, name);
    }
    const std::string path = folder_ + "\\" + zip.name;
    require(files_.write(path, zips[name]), path);
    PackProof(workplace_, folder_ + "\\7-zip")
        .zipHolds(path, shown + "!" + name, filesOf(files_, zip));
    read.push_back({name, zips[name]});
  }
  folder.remove();
  requireSame(shown, read, std::move(zips));
}

void PackProof::zipHolds(const std::string& path, const std::string& shown,
                         const std::vector<ArchiveFile>& expected) {
  requireSame(shown, expected, zipContents(fileSource(files_, path)));
  sevenZipOpens(path, shown, expected);
}

void PackProof::sevenZipOpens(const std::string& path, const std::string& shown,
                              const std::vector<ArchiveFile>& expected) {
  const std::string sevenZip =
      modLibrary::ParentPath(workplace_.machine.system.executablePath()) + "\\7z.exe";
  FileSystemObject fileSystem(files_);
  if (!fileSystem.fileExists(sevenZip)) {
    return;
  }
  WorkingFolder folder(files_, folder_);
  QuietProgram quiet(workplace_.machine);
  std::uint32_t exitCode = 1;
  const std::string command = "\"" + sevenZip + "\" x -y -o\"" + folder_ + "\" \"" + path + "\"";
  if (!modLibrary::Execute(quiet.program(), command, true, std::nullopt, &exitCode) ||
      exitCode != 0) {
    throw Failure(shown, "7-Zip non lo apre (codice " + std::to_string(exitCode) + ")");
  }
  for (const ArchiveFile& file : expected) {
    const std::string unpacked = folder_ + "\\" + replaceAll(file.name, "/", "\\");
    std::string bytes;
    if (files_.read(unpacked, kAll, bytes) != system_code::kSuccess || bytes != file.content) {
      differs(shown, file.name + " (7-Zip)");
    }
  }
  folder.remove();
}

}  // namespace trelv::kit
