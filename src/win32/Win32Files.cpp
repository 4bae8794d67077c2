#include "win32/Win32Files.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "win32/FilePath.h"
#include "win32/SystemCall.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

/// Facts from the fields that a look and a listing have in common.
template <class Data>
machine::FileFacts factsOf(const Data& data) {
  machine::FileFacts facts;
  facts.folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  facts.readOnly = (data.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
  facts.hidden = (data.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0;
  facts.system = (data.dwFileAttributes & FILE_ATTRIBUTE_SYSTEM) != 0;
  facts.reparsePoint = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if (!facts.folder) {
    facts.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32U) | data.nFileSizeLow;
  }
  facts.modified = (static_cast<std::uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32U) |
                   data.ftLastWriteTime.dwLowDateTime;
  return facts;
}

SystemCode open(OwnedFile& file, const std::string& path, DWORD access, DWORD sharing,
                DWORD disposition) {
  return obtain(file, CreateFileW, filePath(path), access, sharing, nullptr, disposition,
                FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Writes all bytes with one call; fewer written without a code of their own mean a full disk.
SystemCode writeAll(const OwnedFile& file, std::string_view bytes) {
  DWORD written = 0;
  const SystemCode code = codeOf(WriteFile, file.get(), bytes.data(),
                                 static_cast<DWORD>(bytes.size()), &written, nullptr);
  return code == system_code::kSuccess && written != bytes.size() ? system_code::kDiskFull : code;
}

SystemCode changeReadOnly(const std::wstring& name, bool readOnly) {
  const Called<DWORD> attributes = called(GetFileAttributesW, name);
  if (attributes.answer == INVALID_FILE_ATTRIBUTES) {
    return attributes.failure();
  }
  const DWORD wanted = readOnly ? attributes.answer | FILE_ATTRIBUTE_READONLY
                                : attributes.answer & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
  return codeOf(SetFileAttributesW, name, wanted);
}

SystemCode flushOnce(const std::string& path) {
  OwnedFile file;
  const SystemCode code =
      open(file, path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
           OPEN_EXISTING);
  return code == system_code::kSuccess ? codeOf(FlushFileBuffers, file.get()) : code;
}

bool isReadOnly(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(filePath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

/// Puts what was written to a file on the disk, as far as the system lets it. A read-only file
/// refuses to be opened for that: it is an ordinary one meanwhile.
void flush(const std::string& path) {
  if (flushOnce(path) == system_code::kAccessDenied && isReadOnly(path) &&
      changeReadOnly(filePath(path), false) == system_code::kSuccess) {
    flushOnce(path);
    changeReadOnly(filePath(path), true);
  }
}

SystemCode copyBytes(const OwnedFile& from, const OwnedFile& to) {
  std::vector<char> piece(0x10000);
  DWORD got = 0;
  SystemCode code = system_code::kSuccess;
  do {
    code =
        codeOf(ReadFile, from.get(), piece.data(), static_cast<DWORD>(piece.size()), &got, nullptr);
    if (code == system_code::kSuccess) {
      code = writeAll(to, {piece.data(), got});
    }
  } while (code == system_code::kSuccess && got > 0);
  return code;
}

constexpr DWORD kCopiedAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                    FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

/// Copies a file without its encryption, which the system's own copy keeps where it can: nobody
/// else could read what was put on the share. Its alternate streams stay behind. What a failure
/// leaves is removed.
SystemCode copyDecrypted(const std::string& source, const std::string& target) {
  // Nobody writes to it meanwhile, and it cannot be its own target.
  OwnedFile from;
  SystemCode code = open(from, source, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  BY_HANDLE_FILE_INFORMATION data{};
  if (code == system_code::kSuccess) {
    code = codeOf(GetFileInformationByHandle, from.get(), &data);
  }
  if (code != system_code::kSuccess) {
    return code;
  }
  OwnedFile to;
  code = obtain(to, CreateFileW, filePath(target), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                data.dwFileAttributes & kCopiedAttributes, nullptr);
  if (code != system_code::kSuccess) {
    return code;
  }
  code = copyBytes(from, to);
  if (code == system_code::kSuccess) {
    code = codeOf(SetFileTime, to.get(), nullptr, nullptr, &data.ftLastWriteTime);
  }
  if (code != system_code::kSuccess) {
    to = OwnedFile();
    SetFileAttributesW(filePath(target).c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(filePath(target).c_str());
  }
  return code;
}

bool isEncrypted(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(filePath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_ENCRYPTED) != 0;
}

/// Reads to the end or the limit. A file's read that gives less than was asked for has met the
/// end, so that a usual file costs one call.
SystemCode readAll(const OwnedFile& file, std::size_t limit, std::string& content) {
  std::string bytes;
  std::size_t piece = 0x10000;
  while (bytes.size() < limit) {
    const std::size_t before = bytes.size();
    const std::size_t asked = std::min(piece, limit - before);
    bytes.resize(before + asked);
    DWORD got = 0;
    const SystemCode code = codeOf(ReadFile, file.get(), bytes.data() + before,
                                   static_cast<DWORD>(asked), &got, nullptr);
    if (code != system_code::kSuccess) {
      return code;
    }
    bytes.resize(before + got);
    if (got < asked) {
      break;
    }
    piece = std::min<std::size_t>(piece * 2, 0x1000000);
  }
  // Callers may keep what they read: a short file must not hold a long piece.
  bytes.shrink_to_fit();
  content = std::move(bytes);
  return system_code::kSuccess;
}

bool isFile(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(filePath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

/// The answer of a listing that gave no first entry but this code.
SystemCode withoutSearch(SystemCode code, const std::string& folder,
                         std::vector<machine::FolderEntry>& entries) {
  if (meansNoEntry(code)) {
    entries.clear();
    return system_code::kSuccess;
  }
  // Systems differ in what they call a file in the place of a folder.
  return isFile(folder) ? system_code::kDirectoryName : code;
}

/// The rights list of a file as the system hands it out, in one block of its own making.
using RightsList = std::vector<DWORD>;

SystemCode readRights(const std::wstring& path, RightsList& list) {
  DWORD size = 0;
  SystemCode code = ERROR_INSUFFICIENT_BUFFER;
  // Another program may lengthen the list between two calls.
  for (int tries = 0; code == ERROR_INSUFFICIENT_BUFFER && tries < 8; ++tries) {
    list.assign((size + sizeof(DWORD) - 1) / sizeof(DWORD), 0);
    code = codeOf(GetFileSecurityW, path, DACL_SECURITY_INFORMATION, list.data(), size, &size);
  }
  return code;
}

/// What file systems without rights answer to a question about them.
bool meansNoRights(SystemCode code) {
  return code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED ||
         code == ERROR_CALL_NOT_IMPLEMENTED;
}

/// Entries that came down from a folder stay told apart from the file's own only where this is
/// asked for.
void keepInheritance(RightsList& list) {
  auto* const header = reinterpret_cast<SECURITY_DESCRIPTOR_RELATIVE*>(list.data());
  if ((header->Control & SE_DACL_AUTO_INHERITED) != 0) {
    header->Control = static_cast<WORD>(header->Control | SE_DACL_AUTO_INHERIT_REQ);
  }
}

bool isSelfOrParent(const wchar_t* name) {
  const std::wstring_view text(name);
  return text == L"." || text == L"..";
}

}  // namespace

SystemCode Win32Files::look(const std::string& path, machine::FileFacts& facts) {
  if (path.empty()) {
    return system_code::kPathNotFound;
  }
  WIN32_FILE_ATTRIBUTE_DATA data{};
  const SystemCode code =
      codeOf(GetFileAttributesExW, filePath(path), GetFileExInfoStandard, &data);
  if (code == system_code::kSuccess) {
    facts = factsOf(data);
  }
  return code;
}

SystemCode Win32Files::identify(const std::string& path, machine::FileIdentity& identity) {
  // A folder can be opened with this flag only; without any access nobody is in its way.
  OwnedFile file;
  SystemCode code = obtain(file, CreateFileW, filePath(path), 0,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  BY_HANDLE_FILE_INFORMATION data{};
  if (code == system_code::kSuccess) {
    code = codeOf(GetFileInformationByHandle, file.get(), &data);
  }
  if (code == system_code::kSuccess) {
    identity = {data.dwVolumeSerialNumber,
                (static_cast<std::uint64_t>(data.nFileIndexHigh) << 32U) | data.nFileIndexLow};
  }
  return code;
}

SystemCode Win32Files::read(const std::string& path, std::size_t limit, std::string& content) {
  OwnedFile file;
  const SystemCode code =
      open(file, path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
           OPEN_EXISTING);
  return code == system_code::kSuccess ? readAll(file, limit, content) : code;
}

SystemCode Win32Files::readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                                std::string& content) {
  OwnedFile file;
  SystemCode code = open(file, path, GENERIC_READ,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
  if (code == system_code::kSuccess) {
    LARGE_INTEGER begin{};
    begin.QuadPart = static_cast<LONGLONG>(offset);
    code = codeOf(SetFilePointerEx, file.get(), begin, nullptr, FILE_BEGIN);
  }
  return code == system_code::kSuccess ? readAll(file, size, content) : code;
}

SystemCode Win32Files::write(const std::string& path, std::string_view bytes) {
  OwnedFile file;
  const SystemCode code = open(file, path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
  return code == system_code::kSuccess ? writeAll(file, bytes) : code;
}

SystemCode Win32Files::append(const std::string& path, std::string_view bytes) {
  // Append access alone lets the system put the bytes at the end, whoever else writes meanwhile.
  OwnedFile file;
  const SystemCode code =
      open(file, path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS);
  return code == system_code::kSuccess ? writeAll(file, bytes) : code;
}

SystemCode Win32Files::removeFile(const std::string& path) {
  return codeOf(DeleteFileW, filePath(path));
}

SystemCode Win32Files::setReadOnly(const std::string& path, bool readOnly) {
  return changeReadOnly(filePath(path), readOnly);
}

SystemCode Win32Files::makeFolder(const std::string& path) {
  return codeOf(CreateDirectoryW, filePath(path), nullptr);
}

SystemCode Win32Files::removeFolder(const std::string& path) {
  return codeOf(RemoveDirectoryW, filePath(path));
}

SystemCode Win32Files::list(const std::string& folder, const std::string& ending,
                            std::vector<machine::FolderEntry>& entries) {
  const bool root = !folder.empty() && folder.back() == '\\';
  WIN32_FIND_DATAW data{};
  OwnedSearch search;
  SystemCode code =
      obtain(search, FindFirstFileW, filePath(folder + (root ? "*" : "\\*") + ending), &data);
  if (code != system_code::kSuccess) {
    return withoutSearch(code, folder, entries);
  }
  std::vector<machine::FolderEntry> found;
  for (; code == system_code::kSuccess; code = codeOf(FindNextFileW, search.get(), &data)) {
    if (!isSelfOrParent(data.cFileName)) {
      found.push_back({utf8(data.cFileName), factsOf(data)});
    }
  }
  if (code != system_code::kNoMoreFiles) {
    return code;
  }
  entries = std::move(found);
  return system_code::kSuccess;
}

SystemCode Win32Files::copyFile(const std::string& source, const std::string& target) {
  return isEncrypted(source) ? copyDecrypted(source, target)
                             : codeOf(CopyFileW, filePath(source), filePath(target), FALSE);
}

SystemCode Win32Files::replaceFile(const std::string& source, const std::string& target) {
  // After a power failure the name must not stand for content that was still on its way.
  flush(source);
  return codeOf(MoveFileExW, filePath(source), filePath(target), MOVEFILE_REPLACE_EXISTING);
}

SystemCode Win32Files::moveFile(const std::string& source, const std::string& target) {
  flush(source);
  return codeOf(MoveFileExW, filePath(source), filePath(target), 0);
}

SystemCode Win32Files::copyRights(const std::string& source, const std::string& target) {
  RightsList wanted;
  RightsList found;
  SystemCode code = readRights(filePath(source), wanted);
  if (code == system_code::kSuccess) {
    code = readRights(filePath(target), found);
  }
  if (code != system_code::kSuccess || wanted == found) {
    return meansNoRights(code) ? system_code::kSuccess : code;
  }
  keepInheritance(wanted);
  return codeOf(SetFileSecurityW, filePath(target), DACL_SECURITY_INFORMATION, wanted.data());
}

SystemCode Win32Files::mayAddFile(const std::string& folder) {
  OwnedFile opened;
  return obtain(opened, CreateFileW, filePath(folder), FILE_ADD_FILE,
                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

SystemCode Win32Files::removeStream(const std::string& path, const std::string& stream) {
  return codeOf(DeleteFileW, filePath(path + ":" + stream));
}

}  // namespace trelv::win32
