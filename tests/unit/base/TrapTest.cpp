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

TEST(ReportingTrap, ReportsOnceAndAnswersTheGivenValue) {
  FakeErrorReporter errors;
  EXPECT_FALSE(reportingTrap(errors, "modX", "Prova", "testo", false, []() -> bool {
    fail();
    return true;
  }));
  ASSERT_EQ(errors.reports.size(), 1U);
  EXPECT_EQ(errors.reports[0].module, "modX");
  EXPECT_EQ(errors.reports[0].procedure, "Prova");
  EXPECT_EQ(errors.reports[0].message, "testo");
  EXPECT_EQ(errors.reports[0].kind, 0);
  EXPECT_EQ(errors.reports[0].failure.number(), 70);
}

TEST(ReportingTrap, IsSilentWhenNothingFails) {
  FakeErrorReporter errors;
  EXPECT_TRUE(reportingTrap(errors, "modX", "Prova", "testo", false, [] { return true; }));
  EXPECT_TRUE(errors.reports.empty());
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
  resumeNext(note, [&] {
    done.push_back("uno");
    fail();
    done.push_back("mai");
  });
  resumeNext(note, [&] { done.push_back("due"); });
  EXPECT_EQ(done, (std::vector<std::string>{"uno", "Autorizzazione negata: C:\\a", "due"}));
}

}  // namespace
}  // namespace trelv
