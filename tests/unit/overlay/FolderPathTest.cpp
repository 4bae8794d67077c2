#include <gtest/gtest.h>

#include "overlay/FolderPath.h"
#include "support/Matchers.h"

namespace trelv::tests {
namespace {

using overlay::folderPath;
using overlay::joined;

TEST(FolderPath, TakesDrivesSharesAndLiteralPathsApart) {
  EXPECT_EQ(folderPath("C:\\").root, "C:\\");
  EXPECT_THAT(folderPath("C:\\").levels, IsEmpty());
  EXPECT_EQ(folderPath("C:\\a\\b.txt").root, "C:\\");
  EXPECT_THAT(folderPath("C:\\a\\b.txt").levels, ElementsAre("a", "b.txt"));
  EXPECT_EQ(folderPath("\\\\server\\share").root, "\\\\server\\share");
  EXPECT_THAT(folderPath("\\\\server\\share\\a").levels, ElementsAre("a"));
  EXPECT_EQ(folderPath("\\\\?\\C:\\a").root, "\\\\?\\C:\\");
  EXPECT_EQ(folderPath("\\\\?\\UNC\\server\\share\\a").root, "\\\\?\\UNC\\server\\share");
  EXPECT_THAT(folderPath("\\\\?\\UNC\\server\\share\\a").levels, ElementsAre("a"));
}

TEST(FolderPath, LeavesWhatDependsOnTheCurrentFolderToTheSystem) {
  EXPECT_EQ(folderPath("a\\b").root, ".");
  EXPECT_EQ(folderPath("\\a").root, "\\");
  EXPECT_EQ(folderPath("C:a").root, "C:.");
  EXPECT_THAT(folderPath("C:a\\b").levels, ElementsAre("a", "b"));
}

TEST(FolderPath, ReadsNamesAsTheSystemDoes) {
  EXPECT_THAT(folderPath("C:/a\\.\\b\\..\\c. ").levels, ElementsAre("a", "c"));
  EXPECT_THAT(folderPath("C:\\..\\..\\a").levels, ElementsAre("a"));
  EXPECT_THAT(folderPath("\\\\?\\C:\\a. \\..").levels, ElementsAre("a. ", ".."));
}

TEST(FolderPath, KnowsWhatCanMeanAFolderOnly) {
  EXPECT_TRUE(folderPath("C:\\a\\").namesFolder);
  EXPECT_FALSE(folderPath("C:\\a").namesFolder);
  EXPECT_FALSE(folderPath("C:\\").namesFolder);
}

TEST(FolderPath, IsJoinedWithOneSeparator) {
  EXPECT_EQ(joined("C:\\", "a"), "C:\\a");
  EXPECT_EQ(joined("C:\\a", "b"), "C:\\a\\b");
  EXPECT_EQ(joined("", "b"), "b");
}

}  // namespace
}  // namespace trelv::tests
