#include "win32/decoder/Win32OutputTree.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "win32/FilePath.h"
#include "win32/SystemCall.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using decoder::Standing;

/// Far beyond what a pack needs, and so short that the levels of a hostile one cannot fill the
/// stack.
constexpr std::size_t kLongestPath = 2047;

Standing standingOf(DWORD attributes) {
  if ((attributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE)) != 0) {
    return Standing::kLink;
  }
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Standing::kFolder : Standing::kFile;
}

/// Where the backslash behind a drive stands in a literal path.
constexpr std::size_t kDriveEnd = 6;

/// Makes a folder with its parents; `path` literal, without trailing backslash.
SystemCode makeWithParents(const std::wstring& path) {
  const Called<DWORD> attributes = called(GetFileAttributesW, path);
  if (attributes.answer != INVALID_FILE_ATTRIBUTES) {
    return (attributes.answer & FILE_ATTRIBUTE_DIRECTORY) != 0 ? system_code::kSuccess
                                                               : system_code::kDirectoryName;
  }
  SystemCode code = attributes.failure();
  const std::size_t parent = path.rfind(L'\\');
  if (!meansMissing(code) || parent == std::wstring::npos || parent + 1 == path.size()) {
    return code;
  }
  // What is above "\\?\C:\name" is the drive: there, or not to be made.
  code = parent > kDriveEnd ? makeWithParents(path.substr(0, parent)) : system_code::kSuccess;
  if (code != system_code::kSuccess) {
    return code;
  }
  const SystemCode made = codeOf(CreateDirectoryW, path, nullptr);
  // Another program may have made it meanwhile.
  return made == system_code::kAlreadyExists ? system_code::kSuccess : made;
}

class Win32OutputFile : public decoder::OutputFile {
 public:
  explicit Win32OutputFile(OwnedFile file) : file_(std::move(file)) {}

  SystemCode write(std::string_view bytes) override {
    DWORD written = 0;
    const SystemCode code = codeOf(WriteFile, file_.get(), bytes.data(),
                                   static_cast<DWORD>(bytes.size()), &written, nullptr);
    return code == system_code::kSuccess && written != bytes.size() ? system_code::kDiskFull : code;
  }

  SystemCode finish(std::uint64_t modified) override {
    SystemCode code = system_code::kSuccess;
    if (modified != 0) {
      const FILETIME time{static_cast<DWORD>(modified), static_cast<DWORD>(modified >> 32U)};
      code = codeOf(SetFileTime, file_.get(), nullptr, nullptr, &time);
    }
    file_ = OwnedFile();
    return code;
  }

 private:
  OwnedFile file_;
};

bool isSelfOrParent(const wchar_t* name) {
  const std::wstring_view text(name);
  return text == L"." || text == L"..";
}

SystemCode moved(const std::wstring& from, const std::wstring& to) {
  return codeOf(MoveFileExW, from, to, MOVEFILE_REPLACE_EXISTING);
}

}  // namespace

SystemCode Win32OutputTree::open(const std::string& path,
                                 std::unique_ptr<decoder::OutputTree>& output) {
  std::wstring full = fullPath(path);
  if (full.empty()) {
    return system_code::kBadPathname;
  }
  const SystemCode code = makeWithParents(literalPath(full));
  if (code != system_code::kSuccess) {
    return code;
  }
  output = std::make_unique<Win32OutputTree>(std::move(full));
  return system_code::kSuccess;
}

Win32OutputTree::Win32OutputTree(std::wstring full)
    : full_(std::move(full)), base_(literalPath(full_)) {
  if (base_.back() != L'\\') {
    full_ += L'\\';
    base_ += L'\\';
  }
}

std::wstring Win32OutputTree::literal(const std::string& name) const {
  std::wstring below = wide(name);
  std::replace(below.begin(), below.end(), L'/', L'\\');
  return base_ + below;
}

std::string Win32OutputTree::path(const std::string& name) const {
  std::string below = name;
  std::replace(below.begin(), below.end(), '/', '\\');
  return utf8(full_) + below;
}

std::size_t Win32OutputTree::longestName() const {
  return full_.size() < kLongestPath ? kLongestPath - full_.size() : 0;
}

SystemCode Win32OutputTree::look(const std::string& name, Standing& standing) {
  const Called<DWORD> attributes = called(GetFileAttributesW, literal(name));
  if (attributes.answer != INVALID_FILE_ATTRIBUTES) {
    standing = standingOf(attributes.answer);
    return system_code::kSuccess;
  }
  const SystemCode code = attributes.failure();
  standing = Standing::kNothing;
  return meansMissing(code) ? system_code::kSuccess : code;
}

SystemCode Win32OutputTree::visit(const std::string& folder, const Visitor& visitor) {
  const std::wstring pattern = literal(folder) + (folder.empty() ? L"*" : L"\\*");
  WIN32_FIND_DATAW data{};
  OwnedSearch search;
  SystemCode code = obtain(search, FindFirstFileW, pattern, &data);
  if (code != system_code::kSuccess) {
    return meansNoEntry(code) ? system_code::kSuccess : code;
  }
  for (; code == system_code::kSuccess; code = codeOf(FindNextFileW, search.get(), &data)) {
    if (!isSelfOrParent(data.cFileName) &&
        !visitor(utf8(data.cFileName), standingOf(data.dwFileAttributes))) {
      return system_code::kSuccess;
    }
  }
  return code == system_code::kNoMoreFiles ? system_code::kSuccess : code;
}

SystemCode Win32OutputTree::makeFolder(const std::string& name) {
  return codeOf(CreateDirectoryW, literal(name), nullptr);
}

SystemCode Win32OutputTree::createFile(const std::string& name,
                                       std::unique_ptr<decoder::OutputFile>& file) {
  OwnedFile made;
  const SystemCode code =
      obtain(made, CreateFileW, literal(name), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
             nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (code != system_code::kSuccess) {
    return code;
  }
  file = std::make_unique<Win32OutputFile>(std::move(made));
  return system_code::kSuccess;
}

SystemCode Win32OutputTree::replaceFile(const std::string& from, const std::string& to) {
  const std::wstring source = literal(from);
  const std::wstring target = literal(to);
  const SystemCode code = moved(source, target);
  const DWORD attributes =
      code == system_code::kAccessDenied ? GetFileAttributesW(target.c_str()) : 0;
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0) {
    return code;
  }
  SetFileAttributesW(target.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  const SystemCode again = moved(source, target);
  if (again != system_code::kSuccess) {
    SetFileAttributesW(target.c_str(), attributes);
  }
  return again;
}

SystemCode Win32OutputTree::moveFolder(const std::string& from, const std::string& to) {
  return codeOf(MoveFileW, literal(from), literal(to));
}

SystemCode Win32OutputTree::removeFile(const std::string& name) {
  return codeOf(DeleteFileW, literal(name));
}

SystemCode Win32OutputTree::removeFolder(const std::string& name) {
  return codeOf(RemoveDirectoryW, literal(name));
}

}  // namespace trelv::win32
