// A rights list that is taken over counts on top as it would below: each case is played on a
// machine too, whose answers are those of the table.

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "support/Matchers.h"
#include "unit/overlay/OverlaidMachine.h"

namespace trelv::tests {
namespace {

using machine::FileFacts;
using machine::Files;
using Answers = std::vector<SystemCode>;
using Case = std::function<Answers(Files&)>;

/// In this folder the user may only read.
constexpr const char* kClosed = "S:\\chiusa\\x.txt";
constexpr const char* kOpen = "S:\\a\\uno.txt";
constexpr const char* kNew = "S:\\a\\nuovo.txt";
constexpr const char* kOther = "S:\\a\\altro.txt";

void furnish(sim::SimMachine& machine) {
  const auto share = machine.mount("S:");
  share->put(kOpen, "uno");
  share->put(kClosed, "x");
  share->setRights("S:\\chiusa", {{"*", sim::Right::Read}});
}

void expectOnBoth(const Answers& expected, const Case& played) {
  sim::SimMachine real;
  sim::SimMachine below;
  furnish(real);
  furnish(below);
  EXPECT_EQ(played(real.files()), expected) << "on the machine";
  const std::string before = below.diskOf("S:\\").tree();
  OverlaidMachine over(below);
  EXPECT_EQ(played(over.files()), expected) << "on the overlay";
  EXPECT_EQ(below.diskOf("S:\\").tree(), before);
}

TEST(AnOverlaysRights, OfAClosedFileCloseTheFileThatTakesThemOver) {
  expectOnBoth({0, 0, 5, 5, 5, 5, 0, 0, 5}, [](Files& files) -> Answers {
    FileFacts facts;
    std::string bytes;
    return {
        files.write(kNew, "io"),     files.copyRights(kClosed, kNew), files.write(kNew, "altro"),
        files.append(kNew, "altro"), files.removeFile(kNew),          files.setReadOnly(kNew, true),
        files.look(kNew, facts),     files.read(kNew, 9, bytes),      files.copyFile(kOpen, kNew)};
  });
}

TEST(AnOverlaysRights, OfAnOpenFileLeaveAllAllowed) {
  expectOnBoth({0, 0, 0, 0, 0, 0, 0}, [](Files& files) -> Answers {
    return {files.write(kNew, "io"),        files.copyRights(kOpen, kNew),
            files.append(kNew, "altro"),    files.setReadOnly(kNew, true),
            files.setReadOnly(kNew, false), files.write(kNew, "altro"),
            files.removeFile(kNew)};
  });
}

TEST(AnOverlaysRights, CanBeChangedAgainByWhoMadeTheFile) {
  expectOnBoth({0, 0, 5, 0, 0}, [](Files& files) -> Answers {
    return {files.write(kNew, "io"), files.copyRights(kClosed, kNew), files.append(kNew, "x"),
            files.copyRights(kOpen, kNew), files.append(kNew, "x")};
  });
}

TEST(AnOverlaysRights, StayWithTheFileUnderTheNameThatItHad) {
  expectOnBoth({0, 0, 5, 5, 5}, [](Files& files) -> Answers {
    return {files.write(kNew, "io"), files.copyRights(kClosed, kNew), files.moveFile(kNew, kOther),
            files.replaceFile(kOpen, kNew), files.append(kNew, "x")};
  });
}

TEST(AnOverlaysRights, AreNotThoseOfACopy) {
  expectOnBoth({0, 0, 0, 0, 5}, [](Files& files) -> Answers {
    return {files.write(kNew, "io"), files.copyRights(kClosed, kNew), files.copyFile(kNew, kOther),
            files.append(kOther, "x"), files.append(kNew, "x")};
  });
}

TEST(AnOverlaysRights, CloseAFileThatStoodThereForGood) {
  expectOnBoth({0, 5, 5, 5, 0}, [](Files& files) -> Answers {
    return {files.copyRights(kClosed, kOpen), files.append(kOpen, "x"), files.removeFile(kOpen),
            files.setReadOnly(kOpen, true), files.write(kNew, "x")};
  });
}

TEST(AnOverlaysRights, OfAClosedFileCannotBeChanged) {
  expectOnBoth({5, 5, 0}, [](Files& files) -> Answers {
    return {files.copyRights(kOpen, kClosed), files.append(kClosed, "x"), files.append(kOpen, "x")};
  });
}

TEST(AnOverlaysRights, AreNeitherTakenFromNorGivenToWhatIsMissing) {
  expectOnBoth({2, 2, 3, 3}, [](Files& files) -> Answers {
    return {files.copyRights(kNew, kOpen), files.copyRights(kOpen, kNew),
            files.copyRights("S:\\manca\\x.txt", kOpen), files.copyRights(kOpen, "S:\\manca\\x")};
  });
}

}  // namespace
}  // namespace trelv::tests
