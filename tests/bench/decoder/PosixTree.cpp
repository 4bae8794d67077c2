#include "bench/decoder/PosixTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace trelv::decoder {
namespace {

SystemCode codeOf(int result) {
  if (result == 0) {
    return system_code::kSuccess;
  }
  switch (errno) {
    case ENOENT:
      return system_code::kPathNotFound;
    case ENOTDIR:
      return system_code::kDirectoryName;
    case EEXIST:
      return system_code::kAlreadyExists;
    case ENOSPC:
      return system_code::kDiskFull;
    default:
      return system_code::kAccessDenied;
  }
}

class PosixFile : public OutputFile {
 public:
  explicit PosixFile(int file) : file_(file) {}
  ~PosixFile() override {
    if (file_ >= 0) {
      close(file_);
    }
  }
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;

  SystemCode write(std::string_view bytes) override {
    const ssize_t written = ::write(file_, bytes.data(), bytes.size());
    return codeOf(written == static_cast<ssize_t>(bytes.size()) ? 0 : -1);
  }
  SystemCode finish(std::uint64_t modified) override {
    const auto seconds = static_cast<time_t>(modified / 10000000) - 11644473600;
    const timespec times[2] = {{0, UTIME_OMIT}, {seconds, 0}};
    futimens(file_, times);
    const int result = close(file_);
    file_ = -1;
    return codeOf(result);
  }

 private:
  int file_;
};

}  // namespace

SystemCode PosixTree::look(const std::string& name, Standing& standing) {
  struct stat facts {};
  standing = Standing::kNothing;
  if (lstat(path(name).c_str(), &facts) != 0) {
    return errno == ENOENT ? system_code::kSuccess : codeOf(-1);
  }
  standing = S_ISDIR(facts.st_mode)   ? Standing::kFolder
             : S_ISREG(facts.st_mode) ? Standing::kFile
                                      : Standing::kLink;
  return system_code::kSuccess;
}

SystemCode PosixTree::visit(const std::string& folder, const Visitor& visitor) {
  DIR* const open = opendir(path(folder).c_str());
  if (open == nullptr) {
    return codeOf(-1);
  }
  while (const dirent* const entry = readdir(open)) {
    const std::string name = entry->d_name;
    const Standing standing = entry->d_type == DT_DIR   ? Standing::kFolder
                              : entry->d_type == DT_REG ? Standing::kFile
                                                        : Standing::kLink;
    if (name != "." && name != ".." && !visitor(name, standing)) {
      break;
    }
  }
  closedir(open);
  return system_code::kSuccess;
}

SystemCode PosixTree::makeFolder(const std::string& name) {
  return codeOf(mkdir(path(name).c_str(), 0777));
}

SystemCode PosixTree::createFile(const std::string& name, std::unique_ptr<OutputFile>& file) {
  const int made = open(path(name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (made < 0) {
    return codeOf(-1);
  }
  file = std::make_unique<PosixFile>(made);
  return system_code::kSuccess;
}

SystemCode PosixTree::replaceFile(const std::string& from, const std::string& to) {
  return codeOf(std::rename(path(from).c_str(), path(to).c_str()));
}

SystemCode PosixTree::moveFolder(const std::string& from, const std::string& to) {
  return replaceFile(from, to);
}

SystemCode PosixTree::removeFile(const std::string& name) {
  return codeOf(unlink(path(name).c_str()));
}

SystemCode PosixTree::removeFolder(const std::string& name) {
  return codeOf(rmdir(path(name).c_str()));
}

}  // namespace trelv::decoder
