#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "contract/Contract.h"

namespace trelv::contract {
namespace {

class ExclusionContract : public Contract {
 protected:
  SystemCode take(const std::string& name, std::unique_ptr<machine::Mark>& mark,
                  const std::string& text = "first", std::uint32_t milliseconds = 0) {
    return machine().exclusion.take(path(name), text, milliseconds, mark);
  }

  std::unique_ptr<machine::Mark> first_;
  std::unique_ptr<machine::Mark> second_;
};

TEST_F(ExclusionContract, AMarkIsTakenOnceAndGoneWhenItIsFree) {
  ASSERT_EQ(take("a.lck", first_), system_code::kSuccess);
  EXPECT_EQ(take("a.lck", second_, "second"), system_code::kSharingViolation);
  EXPECT_EQ(second_, nullptr);
  first_.reset();
  EXPECT_FALSE(world().exists(path("a.lck")));
  EXPECT_EQ(take("a.lck", second_, "second"), system_code::kSuccess);
}

TEST_F(ExclusionContract, NoCaseMakesAnotherMark) {
  ASSERT_EQ(take("a.lck", first_), system_code::kSuccess);
  EXPECT_EQ(take("A.LCK", second_), system_code::kSharingViolation);
  EXPECT_EQ(take("b.lck", second_), system_code::kSuccess);
}

TEST_F(ExclusionContract, OthersReadWhoseItIsAndCannotRemoveIt) {
  ASSERT_EQ(take("a.lck", first_, "mario"), system_code::kSuccess);
  std::string text;
  EXPECT_EQ(machine().files.read(path("a.lck"), 100, text), system_code::kSuccess);
  EXPECT_EQ(text, "mario");
  EXPECT_EQ(machine().files.removeFile(path("a.lck")), system_code::kSharingViolation);
  EXPECT_EQ(machine().files.write(path("a.lck"), "x"), system_code::kSharingViolation);
}

TEST_F(ExclusionContract, AFileThatWasLeftIsTakenWithANewText) {
  putFile("a.lck", "left by a power failure");
  ASSERT_EQ(take("a.lck", first_, "new"), system_code::kSuccess);
  std::string text;
  machine().files.read(path("a.lck"), 100, text);
  EXPECT_EQ(text, "new");
}

TEST_F(ExclusionContract, AWaitInVainEnds) {
  ASSERT_EQ(take("a.lck", first_), system_code::kSuccess);
  EXPECT_EQ(take("a.lck", second_, "second", 250), system_code::kSharingViolation);
}

TEST_F(ExclusionContract, AMissingFolderAndAFolderInItsPlaceAreRefused) {
  EXPECT_EQ(take("missing\\a.lck", first_), system_code::kPathNotFound);
  world().putFolder(path("sub"));
  EXPECT_EQ(take("sub", first_), system_code::kAccessDenied);
  EXPECT_EQ(first_, nullptr);
}

}  // namespace
}  // namespace trelv::contract
