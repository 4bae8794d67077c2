// What the profile functions do on Windows is held by the contract; here is what only the simulated
// machine can show.

#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

class SimProfileFilesTest : public testing::Test {
 protected:
  void write(const std::string& file) {
    EXPECT_EQ(machine_.profiles().writeValue("S", "k", "v", file), 1U);
  }

  SimMachine machine_;
};

TEST_F(SimProfileFilesTest, GivesTheDefaultWithoutTrailingBlanksAndQuotes) {
  const auto defaultAs = [&](const std::string& text) {
    return machine_.profiles().readValue("S", "k", text, 100, "C:\\no.ini");
  };
  EXPECT_EQ(defaultAs("\"a \"  "), "a ");
  EXPECT_EQ(defaultAs(" a\t "), " a\t");
  EXPECT_EQ(defaultAs("  "), " ");
}

TEST_F(SimProfileFilesTest, OfNamelessKeysInARowOnlyTheFirstIsKept) {
  machine_.putFile("C:\\p.ini", "[S]\r\n=1\r\n=2\r\na=1\r\n=3\r\n");
  write("C:\\p.ini");
  EXPECT_EQ(machine_.fileText("C:\\p.ini"), "[S]\r\n=1\r\na=1\r\n=3\r\nk=v\r\n");
}

TEST_F(SimProfileFilesTest, BareNamesLieInTheWindowsFolder) {
  write("bare.ini");
  EXPECT_EQ(machine_.fileText("C:\\WINDOWS\\bare.ini"), "[S]\r\nk=v\r\n");
  write(".\\here.ini");
  EXPECT_TRUE(machine_.fileExists("C:\\Lumo\\Programmi\\here.ini"));
}

TEST_F(SimProfileFilesTest, BareNamesAreTheUsersOwnOnATerminalServer) {
  machine_.setEdition(WindowsEdition::Win2003TerminalServer);
  write("bare.ini");
  EXPECT_EQ(machine_.fileText("C:\\Users\\mario\\windows\\bare.ini"), "[S]\r\nk=v\r\n");
  EXPECT_FALSE(machine_.fileExists("C:\\WINDOWS\\bare.ini"));
}

}  // namespace
}  // namespace trelv::sim
