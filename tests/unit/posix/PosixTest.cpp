#include "unit/posix/PosixTest.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "posix/OpenFile.h"
#include "posix/PosixFileUse.h"
#include "posix/PosixPath.h"

namespace trelv::tests {
namespace {

namespace fs = std::filesystem;

/// A process that has a file open while this object lives.
class HoldingProcess {
 public:
  explicit HoldingProcess(const fs::path& file) : process_([&]() -> int { return hold(file); }) {
    char letter = '\0';
    EXPECT_EQ(read(ready_.front(), &letter, 1), 1);
  }

 private:
  /// Two connected descriptors: the second is written when the file is open.
  class Pipe : public std::array<int, 2> {
   public:
    Pipe() : array() { EXPECT_EQ(pipe(data()), 0); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
      close(front());
      close(back());
    }
  };

  int hold(const fs::path& file) const {
    const posix::OpenFile held(open(file.c_str(), O_RDONLY));
    if (held && write(ready_.back(), "x", 1) == 1) {
      pause();
    }
    return 1;
  }

  Pipe ready_;
  Process process_;
};

constexpr uid_t kOrdinaryUser = 65534;

/// Where all may be done here, a file is given to a user for whom that does not hold.
void giveToOrdinaryUser(const fs::path& path) {
  if (geteuid() == 0) {
    EXPECT_EQ(chown(path.c_str(), kOrdinaryUser, kOrdinaryUser), 0) << path;
  }
}

int becomeOrdinaryUser() {
  const bool isOne = geteuid() != 0;
  return isOne || (setgid(kOrdinaryUser) == 0 && setuid(kOrdinaryUser) == 0) ? 0 : 1;
}

TEST_F(Posix, NamesMatchInAnyCase) {
  put("Prg/Com/AGDVCOMP.INI", "x");
  put("prg2/èà.txt", "y");
  EXPECT_EQ(textOf(shown_ + "\\prg\\com\\agdvcomp.ini"), "x");
  EXPECT_EQ(textOf(shown_ + "\\PRG2\\ÈÀ.TXT"), "y");
}

TEST_F(Posix, TheExactNameComesBeforeOneOfAnotherCase) {
  put("A.txt", "capital");
  put("a.txt", "small");
  EXPECT_EQ(textOf(shown_ + "\\a.txt"), "small");
  EXPECT_EQ(textOf(shown_ + "\\A.txt"), "capital");
}

TEST_F(Posix, TheDriveShowsTheWholeFileSystem) {
  const auto meant = [](const std::string& path) -> std::string {
    std::string plain = "nowhere";
    EXPECT_EQ(posix::hostPath(path, plain), 0U) << path;
    return plain;
  };
  EXPECT_EQ(meant("Z:\\"), "/");
  EXPECT_EQ(meant("z:"), "/");
  EXPECT_EQ(meant("Z:\\PROC\\Version"), "/proc/version");
  EXPECT_EQ(meant("\\\\?\\Z:\\proc"), "/proc");
  EXPECT_EQ(meant("Z:\\etc\\.\\..\\proc\\.."), "/");
  std::string plain;
  for (const char* const path : {"Y:\\proc", "Z:proc", "Zx\\proc", "Z", "proc", "\\\\z\\proc"}) {
    EXPECT_EQ(posix::hostPath(path, plain), system_code::kPathNotFound) << path;
  }
}

TEST_F(Posix, TellsAMissingFileFromAMissingFolder) {
  machine::FileFacts facts;
  EXPECT_EQ(machine_.files.look(shown_ + "\\a.txt", facts), system_code::kFileNotFound);
  EXPECT_EQ(machine_.files.look(shown_ + "\\a\\b.txt", facts), system_code::kPathNotFound);
  EXPECT_EQ(machine_.files.look("C:\\Windows", facts), system_code::kPathNotFound);
  EXPECT_EQ(machine_.files.look("", facts), system_code::kPathNotFound);
  std::vector<machine::FolderEntry> entries;
  EXPECT_EQ(machine_.files.list(shown_ + "\\a", "", entries), system_code::kPathNotFound);
  put("f", "");
  EXPECT_EQ(machine_.files.list(shown_ + "\\f", "", entries), system_code::kDirectoryName);
}

TEST_F(Posix, ListsByEndingInAnyCase) {
  put("a.zip", "1");
  put("b.ZIP", "22");
  put("c.gz", "");
  put(".zip", "333");
  put("zip", "");
  std::vector<machine::FolderEntry> entries;
  ASSERT_EQ(machine_.files.list(shown_, ".zip", entries), 0U);
  std::vector<std::string> names;
  for (const machine::FolderEntry& entry : entries) {
    names.push_back(entry.name + " " + std::to_string(entry.facts.size));
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre(".zip 3", "a.zip 1", "b.ZIP 2"));
}

TEST_F(Posix, ListsNoFolderInItself) {
  put("a/x", "");
  put("b", "");
  std::vector<machine::FolderEntry> entries;
  ASSERT_EQ(machine_.files.list(shown_, "", entries), 0U);
  EXPECT_EQ(entries.size(), 2U);
  for (const machine::FolderEntry& entry : entries) {
    EXPECT_EQ(entry.facts.folder, entry.name == "a") << entry.name;
  }
}

TEST_F(Posix, TellsFilesApartByWhateverName) {
  put("a", "");
  put("b", "");
  fs::create_symlink(folder_ / "a", folder_ / "link");
  const auto identified = [&](const std::string& name) -> machine::FileIdentity {
    machine::FileIdentity identity;
    EXPECT_EQ(machine_.files.identify(shown_ + "\\" + name, identity), 0U) << name;
    return identity;
  };
  EXPECT_TRUE(identified("a") == identified("A"));
  EXPECT_TRUE(identified("a") == identified("link"));
  EXPECT_NE(identified("a").number, identified("b").number);
  EXPECT_EQ(identified("a").volume, identified("b").volume);
}

TEST_F(Posix, ChangesNothingThatIsMissing) {
  machine::Files& files = machine_.files;
  machine::FileIdentity identity;
  for (const auto& [path, code] : std::vector<std::pair<std::string, SystemCode>>{
           {"\\manca", system_code::kFileNotFound}, {"\\manca\\x", system_code::kPathNotFound}}) {
    const std::string missing = shown_ + path;
    EXPECT_EQ(files.identify(missing, identity), code);
    EXPECT_EQ(files.setReadOnly(missing, true), code);
    EXPECT_EQ(files.removeFile(missing), code);
    EXPECT_EQ(files.removeFolder(missing), code);
    EXPECT_EQ(files.copyFile(missing, shown_ + "\\a"), code);
    EXPECT_EQ(files.copyRights(missing, shown_), code);
    EXPECT_EQ(files.mayAddFile(missing), code);
  }
  EXPECT_EQ(files.makeFolder(shown_ + "\\manca\\x"), system_code::kPathNotFound);
  EXPECT_EQ(files.makeFolder(shown_), system_code::kAlreadyExists);
  EXPECT_TRUE(fs::is_empty(folder_));
}

TEST_F(Posix, NeitherAFolderNorAPipeIsReadOrWrittenAsAFile) {
  std::string content = "before";
  EXPECT_EQ(machine_.files.read(shown_, 10, content), system_code::kAccessDenied);
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(machine_.files.read(shown_ + "\\pipe", 10, content), system_code::kAccessDenied);
  EXPECT_EQ(content, "before");
  put("a", "a");
  EXPECT_EQ(machine_.files.copyFile(shown_ + "\\a", shown_ + "\\pipe"), system_code::kAccessDenied)
      << "who opens one for writing waits for its reader";
}

TEST_F(Posix, TellsWhenAFileWasWrittenToTheTick) {
  put("a", "a");
  // 2026-01-02 03:04:05 UTC
  constexpr std::time_t kWritten = 1767323045;
  const std::array<timespec, 2> times{timespec{0, 0}, timespec{kWritten, 987654399}};
  ASSERT_EQ(utimensat(AT_FDCWD, (folder_ / "a").c_str(), times.data(), 0), 0);
  machine::FileFacts facts;
  ASSERT_EQ(machine_.files.look(shown_ + "\\a", facts), 0U);
  EXPECT_EQ(facts.modified, 134'117'966'459'876'543U);
}

TEST_F(Posix, ReadsAPart) {
  put("a", "0123456789");
  std::string content;
  ASSERT_EQ(machine_.files.readPart(shown_ + "\\a", 7, 100, content), 0U);
  EXPECT_EQ(content, "789");
}

TEST_F(Posix, RenamesWithoutReplacing) {
  put("a", "a");
  put("b", "b");
  EXPECT_EQ(machine_.files.moveFile(shown_ + "\\a", shown_ + "\\B"), system_code::kAlreadyExists);
  EXPECT_EQ(machine_.files.moveFile(shown_ + "\\a", shown_ + "\\c"), 0U);
  EXPECT_EQ(machine_.files.replaceFile(shown_ + "\\c", shown_ + "\\B"), 0U);
  EXPECT_EQ(textOf(shown_ + "\\b"), "a");
}

TEST_F(Posix, NothingReplacesAFolder) {
  put("a", "a");
  put("cartella/x", "x");
  fs::create_directory(folder_ / "vuota");
  for (const char* const source : {"\\a", "\\cartella"}) {
    EXPECT_EQ(machine_.files.replaceFile(shown_ + source, shown_ + "\\vuota"),
              system_code::kAccessDenied)
        << source;
  }
  EXPECT_EQ(textOf(shown_ + "\\a"), "a");
  EXPECT_EQ(textOf(shown_ + "\\cartella\\x"), "x");
  EXPECT_TRUE(fs::is_empty(folder_ / "vuota"));
}

TEST_F(Posix, FilesHaveNoStreams) {
  put("a", "a");
  EXPECT_EQ(machine_.files.removeStream(shown_ + "\\a", "Zone.Identifier"),
            system_code::kInvalidName);
  EXPECT_EQ(machine_.files.removeStream(shown_ + "\\manca", "Zone.Identifier"),
            system_code::kFileNotFound);
  EXPECT_EQ(textOf(shown_ + "\\a"), "a");
}

TEST_F(Posix, CopiesWithTheDateAndNotOntoAReadOnlyFile) {
  put("a", "a");
  put("b", "b");
  const auto date = fs::file_time_type::clock::now() - std::chrono::hours(100);
  fs::last_write_time(folder_ / "a", date);
  ASSERT_EQ(machine_.files.copyFile(shown_ + "\\a", shown_ + "\\b"), 0U);
  EXPECT_EQ(fs::last_write_time(folder_ / "b"), date);
  EXPECT_EQ(textOf(shown_ + "\\b"), "a");
  ASSERT_EQ(machine_.files.setReadOnly(shown_ + "\\b", true), 0U);
  EXPECT_EQ(machine_.files.copyFile(shown_ + "\\a", shown_ + "\\b"), system_code::kAccessDenied);
  EXPECT_EQ(machine_.files.removeFile(shown_ + "\\b"), system_code::kAccessDenied);
  EXPECT_EQ(machine_.files.copyFile(shown_ + "\\a", shown_ + "\\A"),
            system_code::kSharingViolation);
}

TEST_F(Posix, KnowsALinkAndRemovesItAlone) {
  put("folder/a", "a");
  fs::create_directory_symlink(folder_ / "folder", folder_ / "link");
  machine::FileFacts facts;
  ASSERT_EQ(machine_.files.look(shown_ + "\\link", facts), 0U);
  EXPECT_TRUE(facts.reparsePoint);
  EXPECT_TRUE(facts.folder);
  EXPECT_EQ(machine_.files.removeFolder(shown_ + "\\link"), 0U);
  EXPECT_EQ(textOf(shown_ + "\\folder\\a"), "a");
}

TEST_F(Posix, TakesPathsAsTheyAreGiven) {
  posix::PosixGivenPaths paths;
  std::string full;
  ASSERT_EQ(paths.fullPath("/srv/lumo/", full), 0U);
  EXPECT_EQ(full, "Z:\\srv\\lumo");
  ASSERT_EQ(paths.fullPath("/srv/./x/../lumo", full), 0U);
  EXPECT_EQ(full, "Z:\\srv\\lumo");
  ASSERT_EQ(paths.fullPath("\\srv\\lumo\\", full), 0U);
  EXPECT_EQ(full, "Z:\\srv\\lumo");
  ASSERT_EQ(paths.fullPath("/", full), 0U);
  EXPECT_EQ(full, "Z:\\");
  ASSERT_EQ(paths.fullPath("demo", full), 0U);
  EXPECT_EQ(full, posix::shownPath((fs::current_path() / "demo").string()));
  EXPECT_EQ(paths.fullPath("", full), system_code::kBadPathname);
}

TEST_F(Posix, TellsWhoOwnsAFile) {
  put("a.txt", "");
  posix::PosixFileUse fileUse;
  std::string account;
  ASSERT_EQ(fileUse.owner(shown_ + "\\a.txt", account), 0U);
  std::ifstream users("/etc/passwd");
  const std::string all((std::istreambuf_iterator<char>(users)), {});
  EXPECT_NE(("\n" + all).find("\n" + account + ":x:" + std::to_string(getuid()) + ":"),
            std::string::npos)
      << account;
  EXPECT_EQ(fileUse.owner(shown_ + "\\manca", account), system_code::kFileNotFound);
}

TEST_F(Posix, RemovesOnlyTheFileThatWasSeenAndThatNobodyHasOpen) {
  put("a.lck", "preso");
  const std::string path = shown_ + "\\a.lck";
  posix::PosixFileUse fileUse;
  machine::FileFacts seen;
  ASSERT_EQ(machine_.files.look(path, seen), 0U);
  {
    const std::ifstream held(folder_ / "a.lck");
    EXPECT_EQ(fileUse.removeUnused(path, seen), system_code::kSharingViolation);
  }
  machine::FileFacts other = seen;
  ++other.modified;
  EXPECT_EQ(fileUse.removeUnused(path, other), machine::kFileChanged);
  EXPECT_EQ(machine_.files.look(path, other), 0U);
  EXPECT_EQ(fileUse.removeUnused(path, seen), 0U);
  EXPECT_EQ(machine_.files.look(path, other), system_code::kFileNotFound);
}

TEST_F(Posix, SeesWhoElseHasAFileOpen) {
  put("a.lck", "preso");
  put("b.lck", "preso");
  posix::PosixFileUse fileUse;
  machine::FileFacts seen;
  ASSERT_EQ(machine_.files.look(shown_ + "\\a.lck", seen), 0U);
  EXPECT_EQ(fileUse.isOpen(shown_ + "\\a.lck"), std::nullopt) << "another computer may have it";
  {
    const HoldingProcess holder(folder_ / "a.lck");
    EXPECT_EQ(fileUse.isOpen(shown_ + "\\a.lck"), true);
    EXPECT_EQ(fileUse.isOpen(shown_ + "\\b.lck"), std::nullopt);
    EXPECT_EQ(fileUse.removeUnused(shown_ + "\\a.lck", seen), system_code::kSharingViolation);
  }
  EXPECT_EQ(fileUse.isOpen(shown_ + "\\a.lck"), std::nullopt);
  EXPECT_EQ(textOf(shown_ + "\\a.lck"), "preso");
}

TEST_F(Posix, RemovesNeitherAReadOnlyFileNorAFolder) {
  put("a.lck", "preso");
  fs::create_directory(folder_ / "b.lck");
  ASSERT_EQ(machine_.files.setReadOnly(shown_ + "\\a.lck", true), 0U);
  posix::PosixFileUse fileUse;
  for (const char* const name : {"\\a.lck", "\\b.lck"}) {
    machine::FileFacts seen;
    ASSERT_EQ(machine_.files.look(shown_ + name, seen), 0U);
    EXPECT_EQ(fileUse.removeUnused(shown_ + name, seen), system_code::kAccessDenied) << name;
  }
  EXPECT_EQ(textOf(shown_ + "\\a.lck"), "preso");
  EXPECT_TRUE(fs::is_directory(folder_ / "b.lck"));
}

TEST_F(Posix, RemovesAFileThatItsOwnerMayWriteButNotRead) {
  put("a.lck", "preso");
  const std::string path = shown_ + "\\a.lck";
  machine::FileFacts seen;
  ASSERT_EQ(machine_.files.look(path, seen), 0U);
  giveToOrdinaryUser(folder_);
  giveToOrdinaryUser(folder_ / "a.lck");
  ASSERT_EQ(chmod((folder_ / "a.lck").c_str(), 0200), 0);
  const int code = inChild([&]() -> int {
    const int failed = becomeOrdinaryUser();
    return failed + static_cast<int>(posix::PosixFileUse().removeUnused(path, seen));
  });
  EXPECT_EQ(code, 0);
  EXPECT_FALSE(fs::exists(folder_ / "a.lck"));
}

TEST_F(Posix, WhoOpensAFileWhileItIsRemovedEndsNobody) {
  const std::string path = shown_ + "\\a.lck";
  const Process visitor([name = (folder_ / "a.lck").string()]() -> int {
    for (;;) {
      const posix::OpenFile opened(open(name.c_str(), O_RDONLY | O_NONBLOCK));
    }
  });
  const auto removes = [&]() -> bool {
    put("a.lck", "preso");
    machine::FileFacts seen;
    machine_.files.look(path, seen);
    SystemCode code = system_code::kSharingViolation;
    for (int time = 0; code == system_code::kSharingViolation && time < 1'000'000; ++time) {
      code = posix::PosixFileUse().removeUnused(path, seen);
    }
    return code == system_code::kSuccess;
  };
  const int code = inChild([&]() -> int {
    std::signal(SIGIO, SIG_DFL);
    int times = 0;
    while (times < 20 && removes()) {
      ++times;
    }
    return times;
  });
  EXPECT_EQ(code, 20) << "-1: a signal ended it";
}

TEST_F(Posix, TellsTheRoomThatIsLeft) {
  posix::PosixGivenPaths paths;
  std::uint64_t bytes = 0;
  ASSERT_EQ(paths.room(shown_, bytes), 0U);
  EXPECT_LT(0U, bytes);
  EXPECT_NE(paths.room(shown_ + "\\manca", bytes), 0U);
}

}  // namespace
}  // namespace trelv::tests
