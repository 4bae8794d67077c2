#include <gtest/gtest.h>

#include "inventory/RegisteredComponent.h"
#include "platform/modLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using modProdTrelvInfo::NerioComponentFolder;

constexpr const char* kServerKey =
    "Software\\Classes\\ClsID\\{5F2A0001-0000-0000-0000-000000000001}\\InprocServer32";

void registerComponent(FakeProgram& program, const std::string& path) {
  program.sim.registry().setText(machine::Hive::LocalMachine, kServerKey, "", path);
}

TEST(RegisteredComponent, FolderStandsBeforeTheSetUpFolder) {
  const std::pair<const char*, const char*> rows[]{
      {R"(C:\Nerio Locale\Setup\KorvatGestionePratiche.OCX)", R"(c:\nerio locale)"},
      {R"(\\SRV\Lumo\mv\nerio\setup\korvatgestionepratiche.ocx)", R"(\\srv\lumo\mv\nerio)"},
      // Nothing stands before it: the path is used whole.
      {R"(\Setup\KorvatGestionePratiche.ocx)", R"(\Setup\KorvatGestionePratiche.ocx)"},
      {R"(C:\Nerio\korvatgestionepratiche.ocx)", ""},
  };
  for (const auto& [path, folder] : rows) {
    FakeProgram program;
    registerComponent(program, path);
    EXPECT_EQ(NerioComponentFolder(program), folder) << path;
  }
}

TEST(RegisteredComponent, IsSearchedOnceUntilAProgramRan) {
  FakeProgram program;
  program.sim.programs().define("C:\\registra.exe", [&program](sim::SimProcess&) {
    registerComponent(program, "D:\\Nuovo\\setup\\korvatgestionepratiche.ocx");
    return 0U;
  });
  registerComponent(program, "C:\\Vecchio\\setup\\korvatgestionepratiche.ocx");
  EXPECT_EQ(NerioComponentFolder(program), "c:\\vecchio");
  const std::size_t calls = program.sim.callCount();
  EXPECT_EQ(NerioComponentFolder(program), "c:\\vecchio");
  EXPECT_EQ(program.sim.callCount(), calls);
  ASSERT_TRUE(modLibrary::Execute(program, "C:\\registra.exe", true));
  EXPECT_EQ(NerioComponentFolder(program), "d:\\nuovo");
}

TEST(RegisteredComponent, ThatIsMissingIsRememberedToo) {
  FakeProgram program;
  EXPECT_EQ(NerioComponentFolder(program), "");
  const std::size_t calls = program.sim.callCount();
  EXPECT_EQ(NerioComponentFolder(program), "");
  EXPECT_EQ(program.sim.callCount(), calls);
}

}  // namespace
}  // namespace trelv::tests
