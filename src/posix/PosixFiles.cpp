#include "posix/PosixFiles.h"

#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "base/Text.h"
#include "posix/OpenFile.h"
#include "posix/PosixPath.h"

namespace trelv::posix {
namespace {

/// Seconds from 1601 to 1970.
constexpr std::int64_t kSecondsTo1970 = 11644473600;
constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kNewFile = 0666;
constexpr mode_t kNewFolder = 0777;

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

machine::FileFacts factsOf(const struct stat& status, bool link) {
  machine::FileFacts facts;
  facts.folder = S_ISDIR(status.st_mode);
  facts.readOnly = !facts.folder && (status.st_mode & kAnyWrite) == 0;
  facts.reparsePoint = link;
  facts.size = facts.folder ? 0 : static_cast<std::uint64_t>(status.st_size);
  facts.modified = static_cast<std::uint64_t>(
      (status.st_mtim.tv_sec + kSecondsTo1970) * kTicksPerSecond + status.st_mtim.tv_nsec / 100);
  return facts;
}

/// Of a link what it leads to counts, where there is such a thing.
int lookAt(const std::string& path, machine::FileFacts& facts) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return errno;
  }
  const bool link = S_ISLNK(status.st_mode);
  struct stat target {};
  if (link && stat(path.c_str(), &target) == 0) {
    status = target;
  }
  facts = factsOf(status, link);
  return 0;
}

/// Finds the plain path and has `work(path)` answer 0 or an error number.
template <class Work>
SystemCode at(const std::string& path, Work&& work) {
  std::string plain;
  const SystemCode code = hostPath(path, plain);
  return code == system_code::kSuccess ? codeOf(work(plain), plain) : code;
}

/// The same for two paths.
template <class Work>
SystemCode between(const std::string& source, const std::string& target, Work&& work) {
  std::string plainTarget;
  const SystemCode code = hostPath(target, plainTarget);
  return code == system_code::kSuccess
             ? at(source, [&](const std::string& plain) -> int { return work(plain, plainTarget); })
             : code;
}

int result(int answer) { return answer == 0 ? 0 : errno; }

bool isPlainFile(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// Reads up to `size` bytes from `offset` on.
int readFrom(const std::string& path, std::uint64_t offset, std::size_t size,
             std::string& content) {
  // A pipe in the place of a file must not make the reader wait.
  const OpenFile file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) {
    return errno;
  }
  if (!isPlainFile(file.get())) {
    return EISDIR;
  }
  std::string bytes;
  std::size_t piece = 0x10000;
  while (bytes.size() < size) {
    const std::size_t before = bytes.size();
    bytes.resize(before + std::min(piece, size - before));
    const ssize_t got = pread(file.get(), bytes.data() + before, bytes.size() - before,
                              static_cast<off_t>(offset + before));
    if (got < 0) {
      return errno;
    }
    bytes.resize(before + static_cast<std::size_t>(got));
    if (got == 0) {
      break;
    }
    piece = std::min<std::size_t>(piece * 2, 0x1000000);
  }
  content = std::move(bytes);
  return 0;
}

int writeTo(const OpenFile& file, std::string_view bytes) {
  if (!file) {
    return errno;
  }
  while (!bytes.empty()) {
    const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
    if (written < 0) {
      return errno;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

int writeFile(const std::string& path, std::string_view bytes, int mode) {
  return writeTo(OpenFile(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | mode, kNewFile)),
                 bytes);
}

/// Source and target of a copy are read and written in pieces, so that a large file needs no
/// memory.
int copyBytes(const OpenFile& source, const OpenFile& target) {
  if (!source || !target) {
    return errno;
  }
  std::string piece(0x100000, '\0');
  for (;;) {
    const ssize_t got = ::read(source.get(), piece.data(), piece.size());
    if (got <= 0) {
      return got < 0 ? errno : 0;
    }
    if (const int failed =
            writeTo(target, std::string_view(piece).substr(0, static_cast<std::size_t>(got)))) {
      return failed;
    }
  }
}

/// Puts what was written to a file on the disk: after a power failure its new name must not stand
/// for content that was still on its way.
void flush(const std::string& path) {
  const OpenFile file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file) {
    fsync(file.get());
  }
}

int copyOnto(const std::string& source, const std::string& target) {
  struct stat status {};
  struct stat there {};
  if (stat(source.c_str(), &status) != 0) {
    return errno;
  }
  if (!S_ISREG(status.st_mode)) {
    return EISDIR;
  }
  if (stat(target.c_str(), &there) == 0) {
    if (there.st_ino == status.st_ino && there.st_dev == status.st_dev) {
      return EBUSY;
    }
    if (!S_ISREG(there.st_mode) || (there.st_mode & kAnyWrite) == 0) {
      return EACCES;
    }
  }
  const OpenFile from(open(source.c_str(), O_RDONLY | O_CLOEXEC));
  const OpenFile to(open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFile));
  if (const int failed = copyBytes(from, to)) {
    return failed;
  }
  const std::array<timespec, 2> times{status.st_mtim, status.st_mtim};
  futimens(to.get(), times.data());
  return result(fchmod(to.get(), status.st_mode & 0777U));
}

bool endsWith(const std::string& name, const std::string& ending) {
  return name.size() >= ending.size() &&
         equalNoCase(std::string_view(name).substr(name.size() - ending.size()), ending);
}

int listFolder(const std::string& path, const std::string& ending,
               std::vector<machine::FolderEntry>& entries) {
  const std::unique_ptr<DIR, FolderCloser> folder(opendir(path.c_str()));
  if (!folder) {
    return errno;
  }
  std::vector<machine::FolderEntry> found;
  while (const dirent* const entry = readdir(folder.get())) {
    machine::FolderEntry next{entry->d_name, {}};
    // One that went meanwhile is passed over, as a listing of the other system would.
    if (next.name != "." && next.name != ".." && endsWith(next.name, ending) &&
        lookAt(path + "/" + next.name, next.facts) == 0) {
      found.push_back(std::move(next));
    }
  }
  entries = std::move(found);
  return 0;
}

}  // namespace

SystemCode PosixFiles::look(const std::string& path, machine::FileFacts& facts) {
  return at(path, [&](const std::string& plain) -> int { return lookAt(plain, facts); });
}

SystemCode PosixFiles::identify(const std::string& path, machine::FileIdentity& identity) {
  return at(path, [&](const std::string& plain) -> int {
    struct stat status {};
    if (stat(plain.c_str(), &status) != 0) {
      return errno;
    }
    identity = {static_cast<std::uint32_t>(status.st_dev), status.st_ino};
    return 0;
  });
}

SystemCode PosixFiles::read(const std::string& path, std::size_t limit, std::string& content) {
  return readPart(path, 0, limit, content);
}

SystemCode PosixFiles::readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                                std::string& content) {
  return at(path, [&](const std::string& plain) -> int {
    return readFrom(plain, offset, size, content);
  });
}

SystemCode PosixFiles::write(const std::string& path, std::string_view bytes) {
  return at(path,
            [&](const std::string& plain) -> int { return writeFile(plain, bytes, O_TRUNC); });
}

SystemCode PosixFiles::append(const std::string& path, std::string_view bytes) {
  return at(path,
            [&](const std::string& plain) -> int { return writeFile(plain, bytes, O_APPEND); });
}

SystemCode PosixFiles::removeFile(const std::string& path) {
  return at(path, [](const std::string& plain) -> int {
    machine::FileFacts facts;
    if (const int failed = lookAt(plain, facts)) {
      return failed;
    }
    return facts.readOnly && !facts.reparsePoint ? EACCES : result(unlink(plain.c_str()));
  });
}

SystemCode PosixFiles::setReadOnly(const std::string& path, bool readOnly) {
  return at(path, [readOnly](const std::string& plain) -> int {
    struct stat status {};
    if (stat(plain.c_str(), &status) != 0) {
      return errno;
    }
    const mode_t mode = readOnly ? status.st_mode & ~kAnyWrite : status.st_mode | S_IWUSR;
    return result(chmod(plain.c_str(), mode & 0777U));
  });
}

SystemCode PosixFiles::makeFolder(const std::string& path) {
  const SystemCode code = at(path, [](const std::string& plain) -> int {
    return result(mkdir(plain.c_str(), kNewFolder));
  });
  // Its parent is what is missing.
  return code == system_code::kFileNotFound ? system_code::kPathNotFound : code;
}

SystemCode PosixFiles::removeFolder(const std::string& path) {
  return at(path, [](const std::string& plain) -> int {
    machine::FileFacts facts;
    if (const int failed = lookAt(plain, facts)) {
      return failed;
    }
    return result(facts.reparsePoint ? unlink(plain.c_str()) : rmdir(plain.c_str()));
  });
}

SystemCode PosixFiles::list(const std::string& folder, const std::string& ending,
                            std::vector<machine::FolderEntry>& entries) {
  machine::FileFacts facts;
  const SystemCode code = look(folder, facts);
  if (code != system_code::kSuccess) {
    return meansMissing(code) ? system_code::kPathNotFound : code;
  }
  if (!facts.folder) {
    return system_code::kDirectoryName;
  }
  return at(folder,
            [&](const std::string& plain) -> int { return listFolder(plain, ending, entries); });
}

SystemCode PosixFiles::copyFile(const std::string& source, const std::string& target) {
  return between(source, target, copyOnto);
}

SystemCode PosixFiles::replaceFile(const std::string& source, const std::string& target) {
  return between(source, target, [](const std::string& from, const std::string& to) -> int {
    machine::FileFacts facts;
    if (lookAt(to, facts) == 0 && facts.folder) {
      return EACCES;
    }
    flush(from);
    return result(rename(from.c_str(), to.c_str()));
  });
}

SystemCode PosixFiles::moveFile(const std::string& source, const std::string& target) {
  return between(source, target, [](const std::string& from, const std::string& to) -> int {
    flush(from);
    return result(renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE));
  });
}

SystemCode PosixFiles::copyRights(const std::string& source, const std::string& target) {
  return between(source, target, [](const std::string& from, const std::string& to) -> int {
    struct stat status {};
    return stat(from.c_str(), &status) != 0 ? errno
                                            : result(chmod(to.c_str(), status.st_mode & 0777U));
  });
}

SystemCode PosixFiles::mayAddFile(const std::string& folder) {
  return at(folder, [](const std::string& plain) -> int {
    return result(access(plain.c_str(), W_OK | X_OK));
  });
}

SystemCode PosixFiles::removeStream(const std::string& path, const std::string& /*stream*/) {
  machine::FileFacts facts;
  const SystemCode code = look(path, facts);
  return code == system_code::kSuccess ? system_code::kInvalidName : code;
}

}  // namespace trelv::posix
