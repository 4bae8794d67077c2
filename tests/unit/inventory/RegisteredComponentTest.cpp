#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inventory/RegisteredComponent.h"
#include "platform/modLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using machine::Hive;
using modProdTrelvInfo::NerioComponentFolder;

constexpr const char* kServerKey =
    "Software\\Classes\\ClsID\\{5F2A0001-0000-0000-0000-000000000001}\\InprocServer32";

void registerComponent(FakeProgram& program, const std::string& path) {
  program.sim.registry().setText(Hive::LocalMachine, kServerKey, "", path);
}

TEST(RegisteredComponent, FolderStandsBeforeTheSetUpFolder) {
  FakeProgram program;
  registerComponent(program, "C:\\Nerio Locale\\Setup\\KorvatGestionePratiche.OCX");
  EXPECT_EQ(NerioComponentFolder(program), "c:\\nerio locale");
}

TEST(RegisteredComponent, OnAShareIsFoundToo) {
  FakeProgram program;
  registerComponent(program, "\\\\SRV\\Lumo\\mv\\nerio\\setup\\korvatgestionepratiche.ocx");
  EXPECT_EQ(NerioComponentFolder(program), "\\\\srv\\lumo\\mv\\nerio");
}

TEST(RegisteredComponent, ThatBeginsThePathIsUsedWhole) {
  FakeProgram program;
  registerComponent(program, "\\Setup\\KorvatGestionePratiche.ocx");
  EXPECT_EQ(NerioComponentFolder(program), "\\Setup\\KorvatGestionePratiche.ocx");
}

TEST(RegisteredComponent, ThatIsMissingGivesEmptyText) {
  FakeProgram program;
  registerComponent(program, "C:\\Nerio\\korvatgestionepratiche.ocx");
  EXPECT_EQ(NerioComponentFolder(program), "");
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
