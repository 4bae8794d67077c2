#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "contract/Contract.h"

namespace trelv::contract {
namespace {

class FileUseContract : public Contract {
 protected:
  machine::FileFacts seen(const std::string& path) {
    machine::FileFacts facts;
    machine().files.look(path, facts);
    return facts;
  }
  SystemCode remove(const std::string& path) {
    return world().fileUse().removeUnused(path, seen(path));
  }
};

TEST_F(FileUseContract, AFileThatNobodyHasOpenIsRemoved) {
  const std::string file = putFile("a.lck", "text");
  EXPECT_NE(world().fileUse().isOpen(file), true);
  EXPECT_EQ(remove(file), system_code::kSuccess);
  EXPECT_FALSE(world().exists(file));
}

TEST_F(FileUseContract, AFileThatIsHeldInWhateverWayStays) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held here");
  const std::string file = putFile("a.lck", "text");
  for (const Sharing& sharing : {Sharing{}, Sharing{true, false, false}, Sharing{true, true, false},
                                 Sharing{true, true, true}, Sharing{false, false, true}}) {
    const std::unique_ptr<HeldFile> held = world().hold(file, sharing);
    EXPECT_NE(world().fileUse().isOpen(file), false);
    EXPECT_EQ(remove(file), system_code::kSharingViolation);
    EXPECT_TRUE(world().exists(file));
  }
  EXPECT_EQ(remove(file), system_code::kSuccess);
}

TEST_F(FileUseContract, WhatIsMissingAReadOnlyFileAndAFolderAreNotRemoved) {
  EXPECT_EQ(remove(path("missing")), system_code::kFileNotFound);
  EXPECT_EQ(remove(path("missing\\a")), system_code::kPathNotFound);
  EXPECT_EQ(remove(world().folder()), system_code::kAccessDenied);
  const std::string file = putFile("a.lck", "text");
  machine().files.setReadOnly(file, true);
  EXPECT_EQ(remove(file), system_code::kAccessDenied);
  EXPECT_TRUE(world().exists(file));
}

TEST_F(FileUseContract, AFileThatIsNotTheOneThatWasSeenStays) {
  const std::string file = putFile("a.lck", "text");
  const machine::FileFacts before = seen(file);
  machine::FileFacts other = before;
  other.modified += 20000000;
  EXPECT_EQ(world().fileUse().removeUnused(file, other), machine::kFileChanged);
  machine().files.append(file, "more");
  EXPECT_EQ(world().fileUse().removeUnused(file, before), machine::kFileChanged);
  EXPECT_TRUE(world().exists(file));
  EXPECT_EQ(remove(file), system_code::kSuccess);
}

TEST_F(FileUseContract, TheOwnerOfAMissingFileIsNotKnown) {
  std::string account = "before";
  EXPECT_EQ(world().fileUse().owner(path("missing"), account), system_code::kFileNotFound);
  EXPECT_EQ(account, "before");
}

}  // namespace
}  // namespace trelv::contract
