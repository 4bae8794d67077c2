#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "kit/PackCommand.h"

namespace trelv::tests {
namespace {

TEST(PackCommand, IsTakenApartAndPutTogetherWithOtherPathsForBothPrograms) {
  const overlay::FindUnpacking find = kit::packCommands("C:\\Lumo");
  const std::optional<overlay::Unpacking> zip =
      find(R"("c:\lumo\7z.exe" x -y -o"S:\Mia cartella" "S:\a.zip")");
  ASSERT_TRUE(zip);
  EXPECT_EQ(zip->program, R"(c:\lumo\7z.exe)");
  EXPECT_EQ(zip->pack, R"(S:\a.zip)");
  EXPECT_EQ(zip->output, R"(S:\Mia cartella)");
  EXPECT_EQ(zip->with("P", "A b", "C d"), R"("P" x -y -o"C d" "A b")");
  const std::optional<overlay::Unpacking> gz =
      find(R"("C:\Lumo\qalbunex.exe" "D:\a.gz" "S:\Mia cartella")");
  ASSERT_TRUE(gz);
  EXPECT_EQ(gz->pack, R"(D:\a.gz)");
  EXPECT_EQ(gz->output, R"(S:\Mia cartella)");
  EXPECT_EQ(gz->with("P", "A b", "C d"), R"("P" "A b" "C d")");
}

TEST(PackCommand, OfAnotherProgramOrFormIsNone) {
  const overlay::FindUnpacking find = kit::packCommands("C:\\Lumo");
  for (const char* const command :
       {R"("C:\Altro\7z.exe" x -y -o"S:\a" "S:\a.zip")", R"("C:\Lumo\7z.exe" "S:\a" "S:\a.zip")",
        R"("C:\Lumo\qalbunex.exe" "D:\a.gz")", R"("S:\setup.exe" "a" "b")", ""}) {
    EXPECT_FALSE(find(command)) << command;
  }
}

}  // namespace
}  // namespace trelv::tests
