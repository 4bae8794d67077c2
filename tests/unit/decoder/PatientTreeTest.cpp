#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "decoder/PatientTree.h"
#include "support/decoder/MemoryTree.h"

namespace trelv::decoder {
namespace {

using testing::Contains;
using namespace system_code;

class PatientTreeTest : public testing::Test {
 protected:
  PatientTreeTest() {
    tree_.put("a", "old");
    tree_.put("b", "new");
    tree_.putFolder("d");
  }

  /// The operation is refused with `code` for so long.
  void refuse(const std::string& operation, SystemCode code, std::uint32_t milliseconds) {
    tree_.failAlways(operation, code);
    operation_ = operation;
    end_ = waited_ + milliseconds;
  }
  void pause(std::uint32_t milliseconds) {
    waited_ += milliseconds;
    if (waited_ >= end_) {
      tree_.failAlways(operation_, kSuccess);
    }
  }

  MemoryTree tree_;
  PatientTree patient_{tree_, [this](std::uint32_t milliseconds) { pause(milliseconds); }};
  std::string operation_;
  std::uint32_t end_ = 0;
  std::uint32_t waited_ = 0;
};

TEST_F(PatientTreeTest, WhatIsInUseForAMomentIsWaitedFor) {
  refuse("replaceFile", kAccessDenied, 1500);
  EXPECT_EQ(patient_.replaceFile("b", "a"), kSuccess);
  refuse("moveFolder", kAccessDenied, 1500);
  EXPECT_EQ(patient_.moveFolder("d", "e"), kSuccess);
  refuse("makeFolder", kAccessDenied, 1500);
  EXPECT_EQ(patient_.makeFolder("f"), kSuccess);
  refuse("removeFolder", kDirectoryNotEmpty, 1500);
  EXPECT_EQ(patient_.removeFolder("f"), kSuccess);
  refuse("removeFile", kSharingViolation, 1500);
  EXPECT_EQ(patient_.removeFile("a"), kSuccess);
  EXPECT_THAT(tree_.names(), testing::ElementsAre("e/"));
}

TEST_F(PatientTreeTest, WhatIsInUseForLongerIsRefusedAfterThreeSeconds) {
  refuse("replaceFile", kSharingViolation, 60'000);
  EXPECT_EQ(patient_.replaceFile("b", "a"), kSharingViolation);
  EXPECT_EQ(waited_, 3000U);
}

TEST_F(PatientTreeTest, NothingIsWaitedForWhereNothingIsRefusedOrAFolderStandsInTheWay) {
  EXPECT_EQ(patient_.replaceFile("b", "a"), kSuccess);
  EXPECT_EQ(patient_.replaceFile("a", "d"), kAccessDenied);
  EXPECT_EQ(patient_.makeFolder("d"), kAlreadyExists);
  EXPECT_EQ(waited_, 0U);
}

TEST_F(PatientTreeTest, EverythingElseIsHandedOn) {
  EXPECT_EQ(patient_.path("d/a"), tree_.path("d/a"));
  EXPECT_EQ(patient_.longestName(), tree_.longestName());
  std::unique_ptr<OutputFile> file;
  EXPECT_EQ(patient_.createFile("d/c", file), kSuccess);
  Standing standing = Standing::kNothing;
  EXPECT_EQ(patient_.look("d/c", standing), kSuccess);
  EXPECT_EQ(standing, Standing::kFile);
  std::vector<std::string> seen;
  EXPECT_EQ(patient_.visit("",
                           [&](const std::string& name, Standing) {
                             seen.push_back(name);
                             return true;
                           }),
            kSuccess);
  EXPECT_THAT(seen, Contains("d"));
}

}  // namespace
}  // namespace trelv::decoder
