#include "kit/PackBuild.h"

#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "base/VersionRecord.h"
#include "kit/ArchiveReader.h"
#include "kit/DecodedPack.h"
#include "kit/Failure.h"
#include "kit/QuietProgram.h"
#include "kit/SevenZip.h"
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
    found.push_back({inSetup(file.name), bytesOf(files, file.source)});
  }
  return found;
}

void require(SystemCode code, const std::string& shown) {
  if (code != system_code::kSuccess) {
    throw Failure(shown, code);
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

/// Makes a folder new and empty, for what is called `shown`. It goes with the folder it lies in.
void makeAnew(machine::Files& files, const std::string& path, const std::string& shown) {
  FileSystemObject fileSystem(files);
  if (fileSystem.folderExists(path)) {
    fileSystem.deleteFolder(path, true);
  }
  require(files.makeFolder(path), shown);
}

/// Full path of the 7-Zip that lies beside this program; empty where no program of Windows runs.
std::string sevenZipOf(machine::Machine& machine) {
  VersionRecord record;
  record.size = kShortVersionRecord;
  if (!machine.system.queryVersion(record)) {
    return "";
  }
  std::string path = modLibrary::ParentPath(machine.system.executablePath()) + "\\7z.exe";
  FileSystemObject fileSystem(machine.files);
  if (!fileSystem.fileExists(path)) {
    throw Failure(path, "manca, e senza 7-Zip ciò che si costruisce non si può riaprire");
  }
  return path;
}

/// Adds all files below a folder: names with "/", from `below` on.
void gather(machine::Files& files, const std::string& folder, const std::string& below,
            Contents& found) {
  std::vector<machine::FolderEntry> entries;
  require(files.list(folder, "", entries), folder);
  for (const machine::FolderEntry& entry : entries) {
    const std::string path = folder + "\\" + entry.name;
    if (entry.facts.folder) {
      gather(files, path, below + entry.name + "/", found);
    } else {
      found[below + entry.name] = bytesOf(files, {path, path});
    }
  }
}

}  // namespace

std::string bytesOf(machine::Files& files, const Source& source) {
  std::string bytes;
  require(files.read(source.path, kAll, bytes), source.shown);
  return bytes;
}

void writeFile(Workplace& workplace, const Source& target, const std::string& bytes,
               Moment moment) {
  machine::Files& files = workplace.machine.files;
  QuietProgram quiet(workplace.machine);
  modLibrary::CreaCartella(quiet.program(), modLibrary::ParentPath(target.path));
  require(files.write(target.path, bytes), target.shown);
  require(workplace.finished.finish(target.path, fileTimeOf(moment)), target.shown);
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

PackProof::PackProof(Workplace& workplace, std::string folder)
    : workplace_(workplace),
      files_(workplace.machine.files),
      folder_(std::move(folder)),
      sevenZip_(sevenZipOf(workplace.machine)) {}

void PackProof::zip(const std::string& path, const std::string& shown, const ZipPart& part) {
  zipHolds(path, shown, filesOf(files_, part));
}

void PackProof::gz(const std::string& path, const std::string& shown, const GzPart& part) {
  gzHolds(bytesOf(files_, {path, shown}), shown, part);
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
  makeAnew(files_, folder_, shown);
  std::vector<ArchiveFile> read;
  for (const ZipPart& zip : part.zips) {
    const std::string name = inSetup(zip.name);
    if (!zips.contains(name)) {
      differs(shown, name);
    }
    const std::string path = folder_ + "\\" + zip.name;
    require(files_.write(path, zips[name]), shown + "!" + name);
    PackProof(workplace_, folder_ + "\\7-zip")
        .zipHolds(path, shown + "!" + name, filesOf(files_, zip));
    read.push_back({name, zips[name]});
  }
  requireSame(shown, read, std::move(zips));
}

void PackProof::zipHolds(const std::string& path, const std::string& shown,
                         const std::vector<ArchiveFile>& expected) {
  requireSame(shown, expected, zipContents(fileSource(files_, path)));
  sevenZipOpens(path, shown, expected);
}

void PackProof::sevenZipOpens(const std::string& path, const std::string& shown,
                              const std::vector<ArchiveFile>& expected) {
  if (sevenZip_.empty()) {
    return;
  }
  makeAnew(files_, folder_, shown);
  QuietProgram quiet(workplace_.machine);
  std::uint32_t exitCode = 0;
  const std::string command = "\"" + sevenZip_ + "\" x -y -o\"" + folder_ + "\" \"" + path + "\"";
  if (!modLibrary::ExecuteBound(quiet.program(), command + kSilentSevenZip, exitCode)) {
    throw Failure(sevenZip_, "non si avvia");
  }
  if (exitCode != 0) {
    throw Failure(shown, "7-Zip non lo apre (codice " + std::to_string(exitCode) + ")");
  }
  Contents found;
  gather(files_, folder_, "", found);
  requireSame(shown + " (7-Zip)", expected, std::move(found));
}

}  // namespace trelv::kit
