#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

#include "posix/PosixFileUse.h"
#include "posix/PosixMachine.h"
#include "posix/PosixPath.h"

namespace trelv::tests {
namespace {

namespace fs = std::filesystem;

/// A folder of its own, as a plain path and as the program sees it.
class Posix : public testing::Test {
 protected:
  Posix() {
    std::string name = (fs::temp_directory_path() / "trelv-posix-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    shown_ = posix::shownPath(folder_.string());
  }
  ~Posix() override { fs::remove_all(folder_); }

  void put(const std::string& name, const std::string& bytes) {
    fs::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
  }
  std::string textOf(const std::string& path) {
    std::string content;
    EXPECT_EQ(machine_.files.read(path, 1000, content), 0U);
    return content;
  }
  std::string valueOf(const std::string& bytes, const std::string& section, const std::string& key,
                      std::uint32_t size = 100) {
    put("a.ini", bytes);
    return machine_.profiles.readValue(section, key, "", size, shown_ + "\\a.ini");
  }

  fs::path folder_;
  std::string shown_;
  posix::PosixMachine machine_;
};

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
  std::vector<machine::FolderEntry> entries;
  ASSERT_EQ(machine_.files.list(shown_, ".zip", entries), 0U);
  std::vector<std::string> names;
  for (const machine::FolderEntry& entry : entries) {
    names.push_back(entry.name + " " + std::to_string(entry.facts.size));
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre("a.zip 1", "b.ZIP 2"));
}

TEST_F(Posix, NeitherAFolderNorAPipeIsReadAsAFile) {
  std::string content = "before";
  EXPECT_EQ(machine_.files.read(shown_, 10, content), system_code::kAccessDenied);
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(machine_.files.read(shown_ + "\\pipe", 10, content), system_code::kAccessDenied);
  EXPECT_EQ(content, "before");
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

TEST_F(Posix, CopiesWithTheDateAndNotOntoAReadOnlyFile) {
  put("a", "a");
  put("b", "b");
  const auto date = fs::file_time_type::clock::now() - std::chrono::hours(100);
  fs::last_write_time(folder_ / "a", date);
  ASSERT_EQ(machine_.files.copyFile(shown_ + "\\a", shown_ + "\\b"), 0U);
  EXPECT_EQ(fs::last_write_time(folder_ / "b"), date);
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

TEST_F(Posix, AMarkIsTakenOnce) {
  std::unique_ptr<machine::Mark> first;
  std::unique_ptr<machine::Mark> second;
  const std::string path = shown_ + "\\mark.lck";
  ASSERT_EQ(machine_.exclusion.take(path, "io", 0, first), 0U);
  EXPECT_EQ(machine_.exclusion.take(path, "tu", 0, second), system_code::kSharingViolation);
  EXPECT_EQ(textOf(path), "io");
  first.reset();
  EXPECT_FALSE(fs::exists(folder_ / "mark.lck"));
  EXPECT_EQ(machine_.exclusion.take(path, "tu", 0, second), 0U);
  EXPECT_EQ(machine_.exclusion.take(shown_ + "\\no\\mark.lck", "", 0, first),
            system_code::kPathNotFound);
}

TEST_F(Posix, ReadsIniFilesAsThePlatformDoes) {
  const std::string text = "[a]\r\nk=1\r\nk=2\r\n[b]\n x = \"quoted\" \n[A]\nz=3\n;k=5";
  EXPECT_EQ(valueOf(text, "A", "K"), "1");
  EXPECT_EQ(valueOf(text, "b", "x"), "quoted");
  EXPECT_EQ(valueOf(text, "a", "z"), "");
  EXPECT_EQ(valueOf(text, "c", "z"), "");
  EXPECT_EQ(valueOf("[a]\nk=12345", "a", "k", 4), "123");
  EXPECT_EQ(valueOf("[\xE8]\nk=\xE0\x80", "è", "k"), "à€");
}

TEST_F(Posix, ReadsUtf16WithItsMarkAndNoUtf8Mark) {
  const std::string wide("\xFF\xFE[\0a\0]\0\n\0k\0=\0\xE8\0", 16);
  EXPECT_EQ(valueOf(wide, "a", "k"), "è");
  EXPECT_EQ(valueOf("\xEF\xBB\xBF[a]\nk=1", "a", "k"), "");
}

TEST_F(Posix, FindsTheVersionInAProgram) {
  const std::string fixed("\xBD\x04\xEF\xFE\x00\x00\x01\x00\x02\x00\x01\x00\x04\x00\x03\x00", 16);
  put("a.exe", "MZ...." + fixed + "...");
  put("b.exe", "MZ....");
  put("c.txt", fixed);
  machine::FileVersion version{};
  EXPECT_EQ(machine_.versions.read(shown_ + "\\a.exe", version), 0U);
  EXPECT_EQ(version, (machine::FileVersion{1, 2, 3, 4}));
  EXPECT_EQ(machine_.versions.read(shown_ + "\\b.exe", version),
            system_code::kResourceDataNotFound);
  EXPECT_EQ(machine_.versions.read(shown_ + "\\c.txt", version),
            system_code::kResourceDataNotFound);
  EXPECT_EQ(machine_.versions.read(shown_ + "\\d.exe", version), system_code::kFileNotFound);
}

TEST_F(Posix, TakesPathsAsTheyAreGiven) {
  posix::PosixGivenPaths paths;
  std::string full;
  ASSERT_EQ(paths.fullPath("/srv/lumo/", full), 0U);
  EXPECT_EQ(full, "Z:\\srv\\lumo");
  ASSERT_EQ(paths.fullPath("/srv/./x/../lumo", full), 0U);
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

TEST_F(Posix, MarkExcludesHoweverManyAskForIt) {
  std::atomic<int> inside = 0;
  std::atomic<int> mixed = 0;
  std::vector<std::thread> askers;
  for (int number = 0; number < 8; ++number) {
    askers.emplace_back([&]() -> void {
      for (int time = 0; time < 200; ++time) {
        std::unique_ptr<machine::Mark> mark;
        if (machine_.exclusion.take(shown_ + "\\m.lck", "x", 0, mark) == 0U) {
          mixed += ++inside > 1 ? 1 : 0;
          std::this_thread::yield();
          --inside;
        }
      }
    });
  }
  for (std::thread& asker : askers) {
    asker.join();
  }
  EXPECT_EQ(mixed, 0);
}

TEST_F(Posix, ClosedStreamsAndFullDisksAreTold) {
  const auto codeOf = [](const char* target) -> int {
    const pid_t child = fork();
    if (child == 0) {
      close(STDOUT_FILENO);
      if (target != nullptr) {
        open(target, O_WRONLY);
      }
      _exit(static_cast<int>(posix::PosixConsole().print("testo")));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  };
  EXPECT_EQ(codeOf("/dev/null"), 0);
  EXPECT_EQ(codeOf("/dev/full"), static_cast<int>(system_code::kDiskFull));
  EXPECT_EQ(codeOf(nullptr), static_cast<int>(system_code::kWriteFault));
}

TEST_F(Posix, TellsTheRoomThatIsLeft) {
  posix::PosixGivenPaths paths;
  std::uint64_t bytes = 0;
  ASSERT_EQ(paths.room(shown_, bytes), 0U);
  EXPECT_LT(0U, bytes);
  EXPECT_NE(paths.room(shown_ + "\\manca", bytes), 0U);
}

TEST_F(Posix, WritesTextsInTheCodePage) {
  EXPECT_EQ(machine_.locale.toAnsi("è€Ω😀"), "\xE8\x80???");
  EXPECT_EQ(machine_.locale.fromAnsi("\xE8\x80"), "è€");
  EXPECT_EQ(machine_.locale.longTime({2026, 1, 2, 3, 4, 5}), "03:04:05");
}

}  // namespace
}  // namespace trelv::tests
