#include <gtest/gtest.h>

#include <memory>

#include "sim/SimMachine.h"
#include "startup/modProdTrelvLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::modProdTrelvLibrary {
namespace {

TEST(SharedFileSystemObject, IsMadeOnFirstUseAndKept) {
  sim::SimMachine machine;
  tests::FakeErrorReporter errors;
  int made = 0;
  SharedFileSystemObject shared(
      [&] {
        ++made;
        return std::make_unique<FileSystemObject>(machine.machine().files);
      },
      errors);
  EXPECT_EQ(0, made);
  FileSystemObject* const first = shared.fileSystemObject();
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, shared.fileSystemObject());
  EXPECT_TRUE(shared.AllocateFSObjects());
  EXPECT_EQ(1, made);
  EXPECT_TRUE(errors.reports.empty());
}

TEST(SharedFileSystemObject, ThatCannotBeMadeIsReportedAndMissing) {
  tests::FakeErrorReporter errors;
  SharedFileSystemObject shared([] { return nullptr; }, errors);
  EXPECT_EQ(nullptr, shared.fileSystemObject());
  ASSERT_EQ(1U, errors.reports.size());
  const tests::FakeReport& report = errors.reports.front();
  EXPECT_EQ("modUtility", report.module);
  EXPECT_EQ("AllocateFSObjects", report.procedure);
  EXPECT_EQ(
      "Impossibile allocare l'oggetto FileSystemObject.\r\nVerificare la presenza del componente "
      "\"scrrun.dll\" nel percorso system32 di windows",
      report.message);
  EXPECT_EQ(ReportKind::ProgramError, report.kind);
}

TEST(SharedFileSystemObject, IsTriedAndReportedAgainAtTheNextUse) {
  sim::SimMachine machine;
  tests::FakeErrorReporter errors;
  bool available = false;
  SharedFileSystemObject shared(
      [&] {
        return available ? std::make_unique<FileSystemObject>(machine.machine().files) : nullptr;
      },
      errors);
  EXPECT_FALSE(shared.AllocateFSObjects());
  EXPECT_FALSE(shared.AllocateFSObjects());
  EXPECT_EQ(2U, errors.reports.size());
  available = true;
  EXPECT_NE(nullptr, shared.fileSystemObject());
  EXPECT_EQ(2U, errors.reports.size());
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
