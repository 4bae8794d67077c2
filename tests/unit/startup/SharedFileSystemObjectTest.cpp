#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sim/SimMachine.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvLibrary {
namespace {

/// Keeps what was reported.
class FakeReporter : public ErrorReporter {
 public:
  std::int16_t VisualizzaErrore(const std::string& module, const std::string& procedure,
                                const std::string& message, std::int32_t kind,
                                const RuntimeError& failure) override {
    reports.push_back(module + "|" + procedure + "|" + message + "|" + std::to_string(kind) + "|" +
                      std::to_string(failure.number()));
    return 0;
  }
  std::vector<std::string> reports;
};

TEST(SharedFileSystemObject, IsMadeOnFirstUseAndKept) {
  sim::SimMachine machine;
  FakeReporter errors;
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
  FakeReporter errors;
  SharedFileSystemObject shared([] { return nullptr; }, errors);
  EXPECT_EQ(nullptr, shared.fileSystemObject());
  EXPECT_EQ((std::vector<std::string>{
                "modUtility|AllocateFSObjects|Impossibile allocare l'oggetto "
                "FileSystemObject.\r\nVerificare la presenza del componente \"scrrun.dll\" nel "
                "percorso system32 di windows|0|0"}),
            errors.reports);
}

TEST(SharedFileSystemObject, IsTriedAndReportedAgainAtTheNextUse) {
  sim::SimMachine machine;
  FakeReporter errors;
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
