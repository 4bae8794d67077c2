#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Trap.h"
#include "support/FakeProgram.h"

namespace trelv {
namespace {

using tests::FakeErrorReporter;
using tests::FakeRunLog;

int fail() { throw RuntimeError(70, "qui", "Autorizzazione negata: C:\\a"); }

TEST(Trap, GivesWhatTheBodyGives) {
  EXPECT_EQ(trap([] { return 3; }, [](const RuntimeError&) { return 4; }), 3);
}

TEST(Trap, GivesWhatTheHandlerGivesOnAFailure) {
  EXPECT_EQ(trap(fail, [](const RuntimeError& failure) { return failure.number(); }), 70);
}

TEST(Trap, SeesMissingMemoryAsAFailure) {
  const auto body = []() -> int { throw std::bad_alloc(); };
  EXPECT_EQ(trap(body, [](const RuntimeError& failure) { return failure.number(); }), 7);
}

TEST(Trap, SeesFailuresOfTheLibraryWithTheirText) {
  const auto body = []() -> std::string { throw std::length_error("troppo lungo"); };
  EXPECT_EQ(trap(body, [](const RuntimeError& failure) { return failure.description(); }),
            "troppo lungo");
}

TEST(Trap, LetsAFailureOfTheHandlerTravel) {
  EXPECT_THROW(trap(fail, [](const RuntimeError&) -> int { throw RuntimeError(5, "", "due"); }),
               RuntimeError);
}

TEST(LoggedTrap, ReportsOnceAndAnswersTheGivenValue) {
  FakeErrorReporter errors;
  FakeRunLog log;
  EXPECT_FALSE(loggedTrap(log, errors, "modX", "Prova", "testo", false, []() -> bool {
    fail();
    return true;
  }));
  ASSERT_EQ(errors.reports.size(), 1U);
  EXPECT_EQ(errors.reports[0].module, "modX");
  EXPECT_EQ(errors.reports[0].procedure, "Prova");
  EXPECT_EQ(errors.reports[0].message, "testo");
  EXPECT_EQ(errors.reports[0].kind, ReportKind::ProgramError);
  EXPECT_EQ(errors.reports[0].failure.number(), 70);
}

TEST(LoggedTrap, IsSilentWhenNothingFails) {
  FakeErrorReporter errors;
  FakeRunLog log;
  EXPECT_TRUE(loggedTrap(log, errors, "modX", "Prova", "testo", false, [] { return true; }));
  EXPECT_TRUE(errors.reports.empty());
  EXPECT_TRUE(log.lines.empty());
}

TEST(LoggedTrap, LeavesALineWithTheDescriptionBehindTheMessage) {
  FakeErrorReporter errors;
  FakeRunLog log;
  EXPECT_EQ(loggedTrap(log, errors, "modX", "Prova", "Errore in prova: ", 0, fail), 0);
  EXPECT_EQ(errors.reports.size(), 1U);
  EXPECT_EQ(log.lines, std::vector<std::string>{
                           "Gestione ProdTrelv - Errore in prova: Autorizzazione negata: C:\\a"});
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
