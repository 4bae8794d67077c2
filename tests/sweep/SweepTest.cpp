// The sweep itself: that each trouble meets each call in each way, and that what is found is told.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "sweep/Sweep.h"

namespace trelv::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// What the worlds of a sweep left behind; they run in threads.
struct Notes {
  std::mutex guard;
  std::vector<std::string> texts;
};

/// Writes a file, looks at one on the share, keeps the code in a variable. Notes the number of the
/// call that met trouble, the file and the variable.
class NotedWorld : public SweptWorld {
 public:
  explicit NotedWorld(Notes& notes) : notes_(notes) {}

  sim::SimMachine& machine() override { return machine_; }
  sim::SimDisk& share() override { return *share_; }
  void run() override {
    machine::FileFacts facts;
    machine_.files().write("C:\\a.txt", "1234");
    machine_.environment().set("X", std::to_string(machine_.files().look("S:\\b.txt", facts)));
  }
  void judge(const Fault& fault, Findings&) override {
    const bool written = machine_.fileExists("C:\\a.txt");
    const std::lock_guard<std::mutex> lock(notes_.guard);
    notes_.texts.push_back(std::to_string(fault.number) + " " +
                           (written ? "'" + machine_.fileText("C:\\a.txt") + "'" : "-") + " " +
                           machine_.environment().value("X"));
  }

 private:
  Notes& notes_;
  sim::SimMachine machine_;
  std::shared_ptr<sim::SimDisk> share_ = machine_.mount("S:");
};

std::vector<std::string> notesOf(std::initializer_list<Trouble> troubles) {
  Notes notes;
  const SweepResult result = sweep([&] { return std::make_unique<NotedWorld>(notes); }, troubles);
  EXPECT_EQ(result.calls, 3U);
  EXPECT_THAT(result.findings, IsEmpty());
  return notes.texts;
}

TEST(Sweep, BeginsWithARunThatNothingDisturbs) {
  EXPECT_THAT(notesOf({}), ElementsAre("0 '1234' 2"));
}

TEST(Sweep, FailsEachCallInEachOfItsWays) {
  EXPECT_THAT(notesOf({Trouble::FailsOnce}),
              UnorderedElementsAre("0 '1234' 2", "1 - 2", "1 - 2", "1 '' 2", "2 '1234' 5",
                                   "2 '1234' 32", "2 '1234' 64", "3 '1234' "));
}

TEST(Sweep, FailsEverythingFromEachCallOn) {
  EXPECT_THAT(notesOf({Trouble::FailsFromThenOn}),
              UnorderedElementsAre("0 '1234' 2", "1 - ", "2 '1234' ", "3 '1234' "));
}

TEST(Sweep, EndsTheProgramBeforeEachCallAndWithinTheWritingOnes) {
  EXPECT_THAT(
      notesOf({Trouble::Killed}),
      UnorderedElementsAre("0 '1234' 2", "1 - ", "1 '' ", "1 '12' ", "2 '1234' ", "3 '1234' "));
}

TEST(Sweep, TakesTheShareAwayBeforeEachCall) {
  EXPECT_THAT(notesOf({Trouble::ShareVanishes}),
              UnorderedElementsAre("0 '1234' 2", "1 '1234' 64", "2 '1234' 53", "3 '1234' 2"));
}

/// Reads three files; what happens to the second is found wrong, and raised with the third.
class FaultyWorld : public SweptWorld {
 public:
  sim::SimMachine& machine() override { return machine_; }
  void run() override {
    for (const char* const file : {"C:\\1.txt", "C:\\2.txt", "C:\\3.txt"}) {
      machine::FileFacts facts;
      machine_.files().look(file, facts);
    }
  }
  void judge(const Fault& fault, Findings& findings) override {
    findings.expect(fault.number != 2, "wrong");
    if (fault.number == 3) {
      throw std::runtime_error("badly wrong");
    }
  }

 private:
  sim::SimMachine machine_;
};

TEST(Sweep, TellsWhatItFindsWithTheCallInTheOrderOfCalls) {
  const auto make = [] { return std::make_unique<FaultyWorld>(); };
  EXPECT_THAT(
      sweep(make, {Trouble::FailsFromThenOn, Trouble::Killed}).findings,
      ElementsAre("everything failed from call 2, files.look C:\\2.txt on: wrong",
                  "everything failed from call 3, files.look C:\\3.txt on: ends: it was raised: "
                  "badly wrong",
                  "ended by force in call 2, files.look C:\\2.txt (not begun): wrong",
                  "ended by force in call 3, files.look C:\\3.txt (not begun): ends: it was "
                  "raised: badly wrong"));
}

/// A program that does something else each time, so that a fault meets another call.
class RestlessWorld : public FaultyWorld {
 public:
  explicit RestlessWorld(int& runs) : runs_(runs) {}
  void run() override { machine().files().removeFile("C:\\" + std::to_string(++runs_)); }

 private:
  int& runs_;
};

TEST(Sweep, OfAProgramThatTakesAnotherWayEachTimeIsTold) {
  int runs = 0;
  EXPECT_THAT(
      sweep([&] { return std::make_unique<RestlessWorld>(runs); }, {Trouble::Killed}).findings,
      ElementsAre("ended by force in call 1, files.removeFile C:\\1 (not begun): it was met "
                  "by another call: files.removeFile C:\\2"));
}

TEST(CallTable, FindsTheFirstRowThatFitsCallAndTrouble) {
  const CallTable<Exception> table{
      {"files.look C:\\a", "one"}, {"files.look", "two"}, {"files.look", "three", Trouble::Killed}};
  const auto reasonOf = [&table](const char* call, Trouble trouble) -> std::string {
    const Exception* const row = table.of({.trouble = trouble, .call = call});
    return row == nullptr ? "none" : row->reason;
  };
  EXPECT_EQ(reasonOf("files.look C:\\b", Trouble::FailsOnce), "two");
  EXPECT_EQ(reasonOf("files.read C:\\a", Trouble::FailsOnce), "none");
  EXPECT_EQ(reasonOf("files.look C:\\b", Trouble::FailsFromThenOn), "none");
  EXPECT_THAT(table.unmatched(), ElementsAre("files.look C:\\a: one", "files.look: three"));
  EXPECT_EQ(reasonOf("files.look C:\\abc", Trouble::FailsOnce), "one");
  EXPECT_EQ(reasonOf("files.look C:\\a", Trouble::Killed), "three");
  EXPECT_THAT(table.unmatched(), IsEmpty());
}

}  // namespace
}  // namespace trelv::tests
