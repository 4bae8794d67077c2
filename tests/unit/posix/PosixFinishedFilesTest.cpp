#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <vector>

#include "base/Text.h"
#include "posix/PosixFinishedFiles.h"
#include "unit/posix/PosixTest.h"

namespace trelv::tests {
namespace {

namespace fs = std::filesystem;
using namespace system_code;

/// Whose renames the system does in one step, or, as on NFS and exFAT, by plain renames only.
enum class Renames { Flagged, PlainOnly };

/// Lets this process and its children see a file system that knows no flags of a rename.
bool forbidFlags() {
  constexpr std::uint32_t kFlags = offsetof(seccomp_data, args) + 4 * sizeof(std::uint64_t);
  std::array<sock_filter, 6> filter{{
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
      {BPF_JMP | BPF_JEQ | BPF_K, 0, 3, SYS_renameat2},
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, kFlags},
      {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, 0},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EINVAL},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  }};
  const sock_fprog program{filter.size(), filter.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
}

class PosixFinishedFiles : public Posix, public testing::WithParamInterface<Renames> {
 protected:
  PosixFinishedFiles() {
    put("nuova/x", "nuovo");
    put("vecchia/x", "vecchio");
  }

  std::string shown(const std::string& name) const { return shown_ + "\\" + name; }

  /// Does the work in a process of its own, on a file system of the kind that the case asks for.
  SystemCode answerOf(const std::function<SystemCode(posix::PosixFinishedFiles&)>& work) {
    return static_cast<SystemCode>(inChild([&]() -> int {
      posix::PosixFinishedFiles finished;
      const bool isReady = GetParam() == Renames::Flagged || forbidFlags();
      return isReady ? static_cast<int>(work(finished)) : -1;
    }));
  }

  /// The text of x in a folder; "-" where it is not there.
  std::string textIn(const std::string& name) {
    return fs::exists(folder_ / name / "x") ? textOf(shown(name) + "\\x") : "-";
  }
  /// What x holds in the folders "nuova", "vecchia", "via".
  std::string texts() { return textIn("nuova") + " " + textIn("vecchia") + " " + textIn("via"); }
};

INSTANTIATE_TEST_SUITE_P(OnBothKinds, PosixFinishedFiles,
                         testing::Values(Renames::Flagged, Renames::PlainOnly));

TEST_P(PosixFinishedFiles, MovesAFolderToANameThatIsFree) {
  EXPECT_EQ(answerOf([&](posix::PosixFinishedFiles& finished) -> SystemCode {
              return finished.moveFolder(shown("NUOVA"), shown("via"));
            }),
            kSuccess);
  EXPECT_EQ(texts(), "- vecchio nuovo");
}

TEST_P(PosixFinishedFiles, MovesNothingOverWhatStandsThere) {
  fs::create_directory(folder_ / "vuota");
  for (const char* const target : {"vecchia", "vuota"}) {
    EXPECT_EQ(answerOf([&](posix::PosixFinishedFiles& finished) -> SystemCode {
                return finished.moveFolder(shown("nuova"), shown(target));
              }),
              kAlreadyExists)
        << target;
  }
  EXPECT_EQ(texts(), "nuovo vecchio -");
  EXPECT_TRUE(fs::is_empty(folder_ / "vuota"));
}

TEST_P(PosixFinishedFiles, TellsWhyNothingIsMoved) {
  const std::vector<std::tuple<std::string, std::string, SystemCode>> rows{
      {shown("manca"), shown("via"), kFileNotFound},
      {shown("nuova"), shown("manca\\via"), kFileNotFound},
      {shown("nuova"), shown("nuova\\via"), kInvalidName},
      {"C:\\nuova", shown("via"), kPathNotFound},
      {shown("nuova"), "C:\\via", kPathNotFound}};
  for (const auto& [source, target, code] : rows) {
    EXPECT_EQ(answerOf([&](posix::PosixFinishedFiles& finished) -> SystemCode {
                return finished.moveFolder(source, target);
              }),
              code)
        << source << " to " << target;
  }
  EXPECT_EQ(texts(), "nuovo vecchio -");
}

TEST_P(PosixFinishedFiles, PutsAFolderInThePlaceOfAnother) {
  EXPECT_EQ(answerOf([&](posix::PosixFinishedFiles& finished) -> SystemCode {
              return finished.replaceFolder({shown("nuova"), shown("vecchia"), shown("via")});
            }),
            kSuccess);
  EXPECT_EQ(texts(), "- nuovo vecchio");
}

TEST_P(PosixFinishedFiles, AFailedReplacementLeavesAllWhereItWas) {
  put("piena/x", "pieno");
  const std::vector<std::tuple<std::string, std::string, std::string, SystemCode>> rows{
      {"nuova", "vecchia", "piena", kAlreadyExists},
      {"manca", "vecchia", "via", kFileNotFound},
      {"nuova", "manca", "via", kFileNotFound},
      {"vecchia", "vecchia\\dentro", "via", kInvalidName}};
  put("vecchia/dentro/x", "dentro");
  for (const auto& [source, target, aside, code] : rows) {
    EXPECT_EQ(answerOf([&, source = source, target = target,
                        aside = aside](posix::PosixFinishedFiles& finished) -> SystemCode {
                return finished.replaceFolder({shown(source), shown(target), shown(aside)});
              }),
              code)
        << source << ", " << target << ", " << aside;
    EXPECT_EQ(texts(), "nuovo vecchio -");
    EXPECT_EQ(textIn("piena") + textIn("vecchia/dentro"), "pienodentro");
  }
}

TEST_F(Posix, AFinishedFileHasItsDateAndEverybodyMayReadIt) {
  put("cartella/a", "a");
  ASSERT_EQ(chmod((folder_ / "cartella" / "a").c_str(), 0600), 0);
  ASSERT_EQ(chmod((folder_ / "cartella").c_str(), 0700), 0);
  // 2026-01-02 03:04:05 UTC and a bit
  constexpr std::uint64_t kWritten = 134'117'966'459'876'543U;
  posix::PosixFinishedFiles finished;
  EXPECT_EQ(finished.finish(shown_ + "\\manca", kWritten), kFileNotFound);
  EXPECT_EQ(finished.finish("C:\\a", kWritten), kPathNotFound);
  for (const auto& [name, rights] :
       std::vector<std::pair<std::string, mode_t>>{{"cartella\\a", 0644}, {"cartella", 0755}}) {
    ASSERT_EQ(finished.finish(shown_ + "\\" + name, kWritten), kSuccess);
    machine::FileFacts facts;
    ASSERT_EQ(machine_.files.look(shown_ + "\\" + name, facts), kSuccess);
    EXPECT_EQ(facts.modified, kWritten) << name;
    struct stat status {};
    ASSERT_EQ(stat((folder_ / replaceAll(name, "\\", "/")).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, rights) << name;
  }
}

}  // namespace
}  // namespace trelv::tests
