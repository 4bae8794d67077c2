#include <gtest/gtest.h>

#include <new>

#include "startup/modProdTrelvLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::modProdTrelvLibrary {
namespace {

TEST(AllocateFSObjects, AnswersYesInSilenceWhenTheObjectIsMade) {
  tests::FakeErrorReporter errors;
  int made = 0;
  EXPECT_TRUE(AllocateFSObjects(errors, [&] { ++made; }));
  EXPECT_EQ(1, made);
  EXPECT_TRUE(errors.reports.empty());
}

TEST(AllocateFSObjects, ReportsEachTimeThatTheObjectCannotBeMade) {
  tests::FakeErrorReporter errors;
  const auto withoutMemory = [] { throw std::bad_alloc(); };
  EXPECT_FALSE(AllocateFSObjects(errors, withoutMemory));
  EXPECT_FALSE(AllocateFSObjects(errors, withoutMemory));
  ASSERT_EQ(2U, errors.reports.size());
  const tests::FakeReport& report = errors.reports.front();
  EXPECT_EQ("modUtility", report.module);
  EXPECT_EQ("AllocateFSObjects", report.procedure);
  EXPECT_EQ(
      "Impossibile allocare l'oggetto FileSystemObject.\r\nVerificare la presenza del componente "
      "\"scrrun.dll\" nel percorso system32 di windows",
      report.message);
  EXPECT_EQ(ReportKind::ProgramError, report.kind);
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
