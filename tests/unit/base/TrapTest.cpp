#include <new>
#include <stdexcept>

#include "base/Trap.h"
#include "support/Matchers.h"

namespace trelv {
namespace {

using tests::FakeErrorReporter;
using tests::FakeRunLog;

int fail() { throw RuntimeError(70, "qui", "Autorizzazione negata: C:\\a"); }

TEST(Trap, GivesWhatTheBodyGivesAndOnAFailureWhatTheHandlerGives) {
  EXPECT_EQ(trap([] { return 3; }, [](const RuntimeError&) { return 4; }), 3);
  EXPECT_EQ(trap(fail, [](const RuntimeError& failure) { return failure.number(); }), 70);
}

TEST(Trap, SeesMissingMemoryAndFailuresOfTheLibraryAsFailures) {
  const auto withoutMemory = []() -> int { throw std::bad_alloc(); };
  EXPECT_EQ(trap(withoutMemory, [](const RuntimeError& failure) { return failure.number(); }), 7);
  const auto tooLong = []() -> std::string { throw std::length_error("troppo lungo"); };
  EXPECT_EQ(trap(tooLong, [](const RuntimeError& failure) { return failure.description(); }),
            "troppo lungo");
}

TEST(Trap, NamesTheProgramAsTheSourceOfWhatTheLibraryRaises) {
  const auto sourceOf = [](const RuntimeError& failure) { return failure.source(); };
  EXPECT_EQ(trap([]() -> std::string { throw std::bad_alloc(); }, sourceOf), "TrelvManager");
  EXPECT_EQ(trap([]() -> std::string { throw std::length_error("x"); }, sourceOf), "TrelvManager");
}

TEST(Trap, LetsAFailureOfTheHandlerTravel) {
  EXPECT_THROW(trap(fail, [](const RuntimeError&) -> int { throw RuntimeError(5, "", "due"); }),
               RuntimeError);
}

TEST(LoggedTrap, ReportsOnceAndLeavesALineWithTheDescriptionBehindTheMessage) {
  FakeErrorReporter errors;
  FakeRunLog log;
  EXPECT_EQ(loggedTrap(log, errors, "modX", "Prova", "Errore in prova: ", 0, fail), 0);
  EXPECT_THAT(errors.reports,
              testing::ElementsAre(tests::isReport("Prova", "Errore in prova: ", 70, "modX")));
  EXPECT_THAT(log.lines, testing::ElementsAre(
                             "Gestione ProdTrelv - Errore in prova: Autorizzazione negata: C:\\a"));
}

TEST(LoggedTrap, IsSilentWhenNothingFails) {
  FakeErrorReporter errors;
  FakeRunLog log;
  EXPECT_TRUE(loggedTrap(log, errors, "modX", "Prova", "testo", false, [] { return true; }));
  EXPECT_TRUE(errors.reports.empty() && log.lines.empty());
}

TEST(ResumeNext, GoesOnAfterAFailedStep) {
  std::vector<std::string> done;
  const auto note = [&](const RuntimeError& failure) { done.push_back(failure.description()); };
  const auto first = [&] {
    done.push_back("uno");
    fail();
    done.push_back("mai");
  };
  resumeNext(first, note);
  resumeNext([&] { done.push_back("due"); }, note);
  EXPECT_EQ(done, (std::vector<std::string>{"uno", "Autorizzazione negata: C:\\a", "due"}));
}

}  // namespace
}  // namespace trelv
