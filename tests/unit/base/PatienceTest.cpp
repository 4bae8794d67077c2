#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "base/Patience.h"

namespace trelv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace system_code;

constexpr std::uint32_t kAll = 3000;

class PatienceTest : public testing::Test {
 protected:
  /// A change that is refused with `code` until `passes` milliseconds have gone by.
  SystemCode change(const std::string& path, SystemCode code, std::uint32_t passes,
                    bool lasts = false) {
    const std::uint32_t end = waited() + passes;
    tries_ = 0;
    return patience_.change(
        path,
        [&]() -> SystemCode {
          ++tries_;
          return waited() < end ? code : kSuccess;
        },
        [lasts]() -> bool { return lasts; });
  }
  /// The same, refused for longer than anybody waits; how long it waited.
  std::uint32_t inVain(const std::string& path, SystemCode code) {
    const std::uint32_t before = waited();
    EXPECT_EQ(change(path, code, 2 * kAll), code);
    return waited() - before;
  }
  std::uint32_t waited() const { return std::accumulate(pauses_.begin(), pauses_.end(), 0U); }

  std::vector<std::uint32_t> pauses_;
  int tries_ = 0;
  Patience patience_{[this](std::uint32_t milliseconds) { pauses_.push_back(milliseconds); }};
};

TEST_F(PatienceTest, WhatGoesThroughAtOnceWaitsForNothing) {
  EXPECT_EQ(change("C:\\a", kAccessDenied, 0), kSuccess);
  EXPECT_EQ(tries_, 1);
  EXPECT_THAT(pauses_, IsEmpty());
}

TEST_F(PatienceTest, WhatMayPassIsTriedAgainUntilItDoes) {
  // Locked in part, in somebody's memory, on its way out.
  for (const SystemCode code : {kAccessDenied, kSharingViolation, kDirectoryNotEmpty,
                                SystemCode{33}, SystemCode{1224}, SystemCode{303}}) {
    pauses_.clear();
    EXPECT_EQ(change("C:\\a", code, 1500), kSuccess) << code;
    EXPECT_GE(waited(), 1500U) << code;
    EXPECT_LE(waited(), 2200U) << code;
  }
}

TEST_F(PatienceTest, EveryOtherRefusalIsOneAtOnce) {
  for (const SystemCode code :
       {kFileNotFound, kPathNotFound, kNetNameDeleted, kDiskFull, kAlreadyExists, kDirectoryName}) {
    EXPECT_EQ(change("C:\\a", code, 1), code);
    EXPECT_EQ(tries_, 1) << code;
  }
  EXPECT_THAT(pauses_, IsEmpty());
}

TEST_F(PatienceTest, ThePausesGrowAndEndAfterThreeSeconds) {
  EXPECT_EQ(inVain("C:\\a", kSharingViolation), kAll);
  EXPECT_THAT(pauses_, ElementsAre(10, 20, 40, 80, 160, 320, 640, 640, 640, 450));
  EXPECT_EQ(tries_, 11);
}

TEST_F(PatienceTest, ATryThatMeetsAnotherFailureEndsThere) {
  const SystemCode code = patience_.change(
      "C:\\a",
      [this]() -> SystemCode { return pauses_.size() < 3 ? kSharingViolation : kDiskFull; },
      []() -> bool { return false; });
  EXPECT_EQ(code, kDiskFull);
  EXPECT_THAT(pauses_, SizeIs(3));
}

TEST_F(PatienceTest, ARefusalThatIsSureToLastIsNotWaitedFor) {
  EXPECT_EQ(change("C:\\a", kAccessDenied, 100, true), kAccessDenied);
  EXPECT_EQ(tries_, 1);
  EXPECT_EQ(change("C:\\a", kSharingViolation, 100, true), kSuccess)
      << "only a refused right can be seen to last";
}

TEST_F(PatienceTest, ARefusedRightIsWaitedForOnceInAFolder) {
  EXPECT_EQ(inVain("C:\\d\\a", kAccessDenied), kAll);
  EXPECT_EQ(inVain("C:\\D\\A", kAccessDenied), 0U);
  EXPECT_EQ(inVain("C:\\d\\b", kAccessDenied), 0U);
  EXPECT_EQ(inVain("C:\\d\\#1", kAccessDenied), 0U) << "whatever it is named";
  EXPECT_EQ(inVain("C:\\d\\e\\a", kAccessDenied), kAll) << "another folder has rights of its own";
  EXPECT_EQ(inVain("C:\\d\\b", kSharingViolation), kAll) << "a file in use is no refused right";
}

TEST_F(PatienceTest, AFileInUseIsWaitedForOnce) {
  EXPECT_EQ(inVain("C:\\d\\a", kSharingViolation), kAll);
  EXPECT_EQ(inVain("c:\\d\\a", kSharingViolation), 0U);
  EXPECT_EQ(inVain("C:\\d\\b", kSharingViolation), kAll);
}

TEST_F(PatienceTest, AFileThatWasDeniedIsNotWaitedForWhenItIsCalledInUse) {
  EXPECT_EQ(inVain("C:\\d\\a", kAccessDenied), kAll);
  EXPECT_EQ(inVain("C:\\d\\a", kSharingViolation), 0U);
}

TEST_F(PatienceTest, AFileThatIsKnownToBeInUseIsNotWaitedFor) {
  EXPECT_FALSE(patience_.wasInVain("C:\\d\\a"));
  patience_.expectInVain("C:\\d\\a");
  EXPECT_TRUE(patience_.wasInVain("c:\\D\\A"));
  EXPECT_EQ(inVain("C:\\d\\a", kAccessDenied), 0U);
  EXPECT_EQ(inVain("C:\\d\\b", kAccessDenied), kAll) << "it says nothing of others";
}

TEST_F(PatienceTest, WhatCouldBeChangedIsWaitedForAgain) {
  EXPECT_EQ(inVain("C:\\d\\a", kAccessDenied), kAll);
  EXPECT_EQ(change("C:\\d\\b", kAccessDenied, 0), kSuccess);
  EXPECT_EQ(inVain("C:\\d\\a", kAccessDenied), kAll);
  EXPECT_EQ(inVain("C:\\e\\a", kSharingViolation), kAll);
  EXPECT_EQ(change("C:\\e\\a", kSharingViolation, 0), kSuccess);
  EXPECT_EQ(inVain("C:\\e\\a", kSharingViolation), kAll);
}

TEST_F(PatienceTest, AFileInUseStaysOneWhenAnotherOfItsFolderCouldBeChanged) {
  EXPECT_EQ(inVain("C:\\d\\a", kSharingViolation), kAll);
  EXPECT_EQ(change("C:\\d\\b", kSharingViolation, 0), kSuccess);
  EXPECT_EQ(inVain("C:\\d\\a", kSharingViolation), 0U);
}

TEST_F(PatienceTest, ARefusedRightStaysOneWhenAFileOfAnotherFolderCouldBeChanged) {
  EXPECT_EQ(inVain("C:\\d\\a", kAccessDenied), kAll);
  EXPECT_EQ(change("C:\\e\\a", kAccessDenied, 0), kSuccess);
  EXPECT_EQ(inVain("C:\\d\\a", kAccessDenied), 0U);
}

TEST_F(PatienceTest, AllWaitingInVainTogetherHasAnEnd) {
  std::uint32_t together = 0;
  for (int i = 0; i < 40; ++i) {
    const std::string folder = "C:\\" + std::to_string(i) + "\\";
    together += inVain(folder + "a", i % 2 == 0 ? kSharingViolation : kAccessDenied);
  }
  EXPECT_EQ(together, 5 * kAll);
}

TEST_F(PatienceTest, WhatPassesInTimeIsWaitedForHoweverOften) {
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(change("C:\\" + std::to_string(i), kSharingViolation, kAll / 2), kSuccess) << i;
  }
}

TEST_F(PatienceTest, WhereOneOfThoseCouldBeChangedAnotherIsWaitedFor) {
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(inVain("C:\\" + std::to_string(i), kSharingViolation), kAll);
  }
  EXPECT_EQ(inVain("C:\\5", kSharingViolation), 0U);
  EXPECT_EQ(change("C:\\3", kSharingViolation, 0), kSuccess);
  EXPECT_EQ(inVain("C:\\5", kSharingViolation), kAll);
}

}  // namespace
}  // namespace trelv
