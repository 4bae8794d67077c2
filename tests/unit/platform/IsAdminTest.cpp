#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/modLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::modLibrary {
namespace {

using machine::SupportAnswer;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;

constexpr const char* kUnknownLine =
    "Errore in esecuzione verifica di diritti di amministratore, forzato IsAdmin=TRUE";

TEST(IsAdmin, IsDecidedByTheSupportLibraryWhereItStands) {
  FakeProgram program;
  program.sim.system().setAdministrator(true);
  program.sim.support().setAdministratorAnswer(SupportAnswer::No);
  EXPECT_FALSE(IsAdmin(program));
  program.sim.system().setAdministrator(false);
  program.sim.support().setAdministratorAnswer(SupportAnswer::Yes);
  EXPECT_TRUE(IsAdmin(program));
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST(IsAdmin, IsDecidedByTheGroupOfAdministratorsWithoutTheLibrary) {
  FakeProgram program;
  program.sim.system().setAdministrator(false);
  EXPECT_FALSE(IsAdmin(program));
  program.sim.system().setAdministrator(true);
  EXPECT_TRUE(IsAdmin(program));
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST(IsAdmin, CountsAFailingLibraryAsYesWithALogLine) {
  FakeProgram program;
  program.sim.system().setAdministrator(false);
  program.sim.support().setAdministratorAnswer(SupportAnswer::Failed);
  EXPECT_TRUE(IsAdmin(program));
  EXPECT_THAT(program.lines(), ElementsAre(kUnknownLine));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(IsAdmin, CountsAFailingTestOfOurOwnAsYesWithALogLine) {
  FakeProgram program;
  program.sim.system().setAdministrator(false);
  program.sim.system().failAdministratorQuery(system_code::kAccessDenied);
  EXPECT_TRUE(IsAdmin(program));
  EXPECT_THAT(program.lines(), ElementsAre(kUnknownLine));
}

}  // namespace
}  // namespace trelv::modLibrary
