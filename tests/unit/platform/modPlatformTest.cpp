#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "platform/modPlatform.h"
#include "support/FakeProgram.h"

namespace trelv::modPlatform {
namespace {

using sim::WindowsEdition;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;

struct Probe {
  const char* name;
  bool (*ask)(Program&);
  /// Size of the version record that it asks with.
  std::uint32_t size;
};

constexpr std::array<Probe, 12> kProbes{{
    {"IsWin95", IsWin95, 148},
    {"IsWin98", IsWin98, 148},
    {"IsWinMe", IsWinMe, 148},
    {"IsWinNt40", IsWinNt40, 148},
    {"IsWin2000Server", IsWin2000Server, 156},
    {"IsWin2000Professional", IsWin2000Professional, 156},
    {"IsWinXP", IsWinXP, 148},
    {"IsWin2003Server", IsWin2003Server, 148},
    {"IsWinVista", IsWinVista, 156},
    {"IsWinSeven", IsWinSeven, 156},
    {"IsWinVistaServer", IsWinVistaServer, 156},
    {"IsWin2008Server", IsWin2008Server, 156},
}};

/// Names of the probes that answer yes.
std::vector<std::string> answersOf(FakeProgram& program) {
  std::vector<std::string> names;
  for (const Probe& probe : kProbes) {
    if (probe.ask(program)) {
      names.emplace_back(probe.name);
    }
  }
  return names;
}

struct Row {
  const char* label;
  std::uint32_t major;
  std::uint32_t minor;
  std::uint32_t platform;
  std::uint8_t productType;
  std::vector<std::string> answers;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.label; }

class EditionTest : public testing::TestWithParam<Row> {};

TEST_P(EditionTest, IsRecognisedByExactlyTheseProbes) {
  FakeProgram program;
  VersionRecord record;
  record.major = GetParam().major;
  record.minor = GetParam().minor;
  record.platform = GetParam().platform;
  record.productType = GetParam().productType;
  program.sim.system().setVersion(record);
  EXPECT_EQ(answersOf(program), GetParam().answers);
}

INSTANTIATE_TEST_SUITE_P(
    Editions, EditionTest,
    testing::Values(
        // The first Windows 95 is 4.0 as well and counts as NT 4.0 too.
        Row{"95", 4, 0, 1, 0, {"IsWin95", "IsWinNt40"}}, Row{"95 second", 4, 3, 1, 0, {"IsWin95"}},
        Row{"95 last", 4, 9, 1, 0, {"IsWin95"}},
        // The major version is not looked at.
        Row{"95 family of another major", 7, 1, 1, 0, {"IsWin95"}},
        Row{"98", 4, 10, 1, 0, {"IsWin98"}}, Row{"between 98 and Me", 4, 11, 1, 0, {}},
        Row{"Me", 4, 90, 1, 0, {"IsWinMe"}}, Row{"4.90 of the NT family", 4, 90, 2, 1, {"IsWinMe"}},
        Row{"NT 3.51", 3, 51, 2, 1, {}}, Row{"NT 4", 4, 0, 2, 1, {"IsWinNt40"}},
        Row{"NT 4 server", 4, 0, 2, 3, {"IsWinNt40"}},
        Row{"2000 Professional", 5, 0, 2, 1, {"IsWin2000Professional"}},
        Row{"2000 domain controller", 5, 0, 2, 2, {"IsWin2000Server"}},
        Row{"2000 Server", 5, 0, 2, 3, {"IsWin2000Server"}}, Row{"2000 unknown", 5, 0, 2, 0, {}},
        Row{"XP", 5, 1, 2, 1, {"IsWinXP"}}, Row{"5.1 server", 5, 1, 2, 3, {"IsWinXP"}},
        // The product type is not looked at.
        Row{"XP 64 bit", 5, 2, 2, 1, {"IsWin2003Server"}},
        Row{"2003", 5, 2, 2, 3, {"IsWin2003Server"}}, Row{"Vista", 6, 0, 2, 1, {"IsWinVista"}},
        Row{"2008", 6, 0, 2, 3, {"IsWinVistaServer", "IsWin2008Server"}},
        Row{"2008 domain controller", 6, 0, 2, 2, {"IsWinVistaServer", "IsWin2008Server"}},
        Row{"Seven", 6, 1, 2, 1, {"IsWinSeven"}}, Row{"2008 R2", 6, 1, 2, 3, {"IsWin2008Server"}},
        Row{"8", 6, 2, 2, 1, {}}, Row{"2012", 6, 2, 2, 3, {}}, Row{"10", 10, 0, 2, 1, {}}));

class ProbeTest : public testing::TestWithParam<std::size_t> {
 protected:
  const Probe& probe() const { return kProbes.at(GetParam()); }
};

/// Notes the sizes that the version is asked with; may fail in two ways.
class MeasuringSystem : public machine::SystemFacts {
 public:
  explicit MeasuringSystem(machine::SystemFacts& inner) : inner_(inner) {}

  bool queryVersion(VersionRecord& record) override {
    sizes.push_back(record.size);
    if (raising) {
      throw RuntimeError(5, "prova", "guasto");
    }
    return inner_.queryVersion(record);
  }
  bool suiteIncludes(std::uint16_t mask) override {
    if (raising) {
      throw RuntimeError(5, "prova", "guasto");
    }
    return inner_.suiteIncludes(mask);
  }
  bool hasKernelFunction(const std::string& name) override {
    return inner_.hasKernelFunction(name);
  }
  bool isWow64() override { return inner_.isWow64(); }
  SystemCode isAdministrator(bool& member) override { return inner_.isAdministrator(member); }
  SystemCode userName(std::uint32_t size, std::string& name) override {
    sizes.push_back(size);
    return inner_.userName(size, name);
  }
  SystemCode systemWindowsFolder(std::string& f) override { return inner_.systemWindowsFolder(f); }
  SystemCode shellFolder(int number, std::string& f) override {
    return inner_.shellFolder(number, f);
  }
  SystemCode temporaryFolder(std::string& f) override { return inner_.temporaryFolder(f); }
  std::uint32_t driveType(const std::string& root) override { return inner_.driveType(root); }
  SystemCode connectionName(const std::string& drive, std::uint32_t size,
                            std::string& name) override {
    return inner_.connectionName(drive, size, name);
  }
  SystemCode deviceNames(const std::string& drive, std::uint32_t size,
                         std::string& names) override {
    return inner_.deviceNames(drive, size, names);
  }
  SystemCode computerName(std::string& name) override { return inner_.computerName(name); }
  std::string executablePath() override { return inner_.executablePath(); }
  std::string commandLine() override { return inner_.commandLine(); }

  std::vector<std::uint32_t> sizes;
  bool raising = false;

 private:
  machine::SystemFacts& inner_;
};

/// A machine whose system facts are measured.
struct Measured {
  sim::SimMachine sim;
  MeasuringSystem system{sim.machine().system};
  machine::Machine machine{
      sim.machine().files,         sim.machine().profiles,    sim.machine().registry,
      sim.machine().processes,     sim.machine().environment, system,
      sim.machine().clock,         sim.machine().locale,      sim.machine().versions,
      sim.machine().configuration, sim.machine().support,     sim.machine().desktop,
      sim.machine().automation};
  FakeProgram program{sim, machine};
};

TEST_P(ProbeTest, AsksTheSystemOnceWithItsFormOfTheRecord) {
  Measured measured;
  probe().ask(measured.program);
  const bool first = probe().ask(measured.program);
  EXPECT_EQ(probe().ask(measured.program), first);
  const bool cached = probe().ask != &IsWinNt40;
  EXPECT_EQ(measured.system.sizes, std::vector<std::uint32_t>(cached ? 1 : 3, probe().size));
}

TEST_P(ProbeTest, OwnsItsRecord) {
  Measured measured;
  for (const Probe& other : kProbes) {
    if (other.ask != probe().ask) {
      other.ask(measured.program);
    }
  }
  measured.system.sizes.clear();
  probe().ask(measured.program);
  EXPECT_EQ(measured.system.sizes, std::vector<std::uint32_t>{probe().size});
}

TEST_P(ProbeTest, AnswersFalseAfterAFailedQueryAndAsksAgain) {
  Measured measured;
  measured.sim.system().failVersionQuery();
  EXPECT_FALSE(probe().ask(measured.program));
  EXPECT_FALSE(probe().ask(measured.program));
  EXPECT_EQ(measured.system.sizes.size(), 2U);
  EXPECT_THAT(measured.program.reports(), IsEmpty());
}

TEST_P(ProbeTest, ReportsAnUnexpectedFailureAndAnswersFalse) {
  Measured measured;
  measured.system.raising = true;
  EXPECT_FALSE(probe().ask(measured.program));
  ASSERT_EQ(measured.program.reports().size(), 1U);
  EXPECT_EQ(measured.program.reports()[0].module, "modPlatform");
  EXPECT_EQ(measured.program.reports()[0].procedure, probe().name);
  EXPECT_EQ(measured.program.reports()[0].kind, ReportKind::ProgramError);
}

INSTANTIATE_TEST_SUITE_P(Probes, ProbeTest, testing::Range<std::size_t>(0, kProbes.size()),
                         [](const auto& row) { return kProbes.at(row.param).name; });

TEST(EditionProbes, KeepTheirAnswerWhenTheSystemTellsSomethingElseLater) {
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::XP);
  EXPECT_TRUE(IsWinXP(program));
  EXPECT_TRUE(IsWinXP(program));
  EXPECT_EQ(program.sim.system().versionQueries(), 1U);
  program.sim.setEdition(WindowsEdition::NT4);
  EXPECT_TRUE(IsWinXP(program));
  EXPECT_TRUE(IsWinNt40(program));
  program.sim.setEdition(WindowsEdition::XP);
  EXPECT_FALSE(IsWinNt40(program));
}

// --- Terminal servers

struct TerminalProbe {
  const char* name;
  bool (*ask)(Program&);
};

constexpr std::array<TerminalProbe, 4> kTerminalProbes{{
    {"IsWinNT40TS", IsWinNT40TS},
    {"IsWin2000TS", IsWin2000TS},
    {"IsWin2003TS", IsWin2003TS},
    {"IsWin2008TS", IsWin2008TS},
}};

std::vector<std::string> terminalAnswersOf(FakeProgram& program) {
  std::vector<std::string> names;
  for (const TerminalProbe& probe : kTerminalProbes) {
    if (probe.ask(program)) {
      names.emplace_back(probe.name);
    }
  }
  return names;
}

struct TerminalRow {
  const char* label;
  WindowsEdition edition;
  std::vector<std::string> answers;
};

void PrintTo(const TerminalRow& row, std::ostream* out) { *out << row.label; }

class TerminalServerTest : public testing::TestWithParam<TerminalRow> {};

TEST_P(TerminalServerTest, IsRecognisedByExactlyTheseProbes) {
  FakeProgram program;
  program.sim.setEdition(GetParam().edition);
  EXPECT_EQ(terminalAnswersOf(program), GetParam().answers);
}

INSTANTIATE_TEST_SUITE_P(
    Editions, TerminalServerTest,
    testing::Values(
        TerminalRow{"NT 4", WindowsEdition::NT4, {}},
        TerminalRow{"NT 4 terminal server", WindowsEdition::NT4TerminalServer, {"IsWinNT40TS"}},
        TerminalRow{"2000 Professional", WindowsEdition::Win2000Pro, {}},
        TerminalRow{"2000", WindowsEdition::Win2000Server, {}},
        TerminalRow{"2000 terminal server", WindowsEdition::Win2000TerminalServer, {"IsWin2000TS"}},
        TerminalRow{"XP", WindowsEdition::XP, {}}, TerminalRow{"2003", WindowsEdition::Win2003, {}},
        TerminalRow{"2003 terminal server", WindowsEdition::Win2003TerminalServer, {"IsWin2003TS"}},
        TerminalRow{"2008", WindowsEdition::Win2008, {}},
        TerminalRow{"2008 terminal server", WindowsEdition::Win2008TerminalServer, {"IsWin2008TS"}},
        TerminalRow{"2008 R2", WindowsEdition::Win2008R2, {}},
        TerminalRow{
            "2008 R2 terminal server", WindowsEdition::Win2008R2TerminalServer, {"IsWin2008TS"}},
        TerminalRow{"Seven", WindowsEdition::Seven, {}}));

struct SuiteRow {
  std::uint16_t mask;
  bool win2000;
  bool later;
};

class SuiteTest : public testing::TestWithParam<SuiteRow> {
 protected:
  static bool ask(WindowsEdition edition, bool (*probe)(Program&)) {
    FakeProgram program;
    VersionRecord record = sim::versionOf(edition);
    record.suiteMask = GetParam().mask;
    program.sim.system().setVersion(record);
    return probe(program);
  }
};

TEST_P(SuiteTest, DecidesOnAServer) {
  EXPECT_EQ(ask(WindowsEdition::Win2000Server, IsWin2000TS), GetParam().win2000);
  EXPECT_EQ(ask(WindowsEdition::Win2003, IsWin2003TS), GetParam().later);
  EXPECT_EQ(ask(WindowsEdition::Win2008, IsWin2008TS), GetParam().later);
}

TEST_P(SuiteTest, DoesNotMatterOnAWorkstation) {
  EXPECT_FALSE(ask(WindowsEdition::Win2000Pro, IsWin2000TS));
  EXPECT_FALSE(ask(WindowsEdition::Vista, IsWin2008TS));
}

INSTANTIATE_TEST_SUITE_P(Masks, SuiteTest,
                         testing::Values(SuiteRow{0, false, false}, SuiteRow{0x10, true, true},
                                         SuiteRow{0x100, false, false},
                                         SuiteRow{0x110, true, false},
                                         SuiteRow{0x2, false, false}));

TEST(TerminalServerAnswers, AreResetAtEveryCall) {
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::Win2003TerminalServer);
  EXPECT_TRUE(IsWin2003TS(program));
  EXPECT_TRUE(program.state.platform.win2003TerminalServer);
  VersionRecord record = program.sim.system().version();
  record.suiteMask = 0x110;
  program.sim.system().setVersion(record);
  EXPECT_FALSE(IsWin2003TS(program));
  EXPECT_FALSE(program.state.platform.win2003TerminalServer);
  EXPECT_TRUE(program.state.platform.win2003SingleUser);
  record.suiteMask = 0;
  program.sim.system().setVersion(record);
  EXPECT_FALSE(IsWin2003TS(program));
  EXPECT_FALSE(program.state.platform.win2003SingleUser);
}

TEST(IsWinNT40TS, NeedsTheNameOfTheTerminalServerInTheRegistry) {
  constexpr const char* kKey = "System\\CurrentControlSet\\Control\\ProductOptions";
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::NT4);
  EXPECT_FALSE(IsWinNT40TS(program));
  sim::SimRegistry& registry = program.sim.registry();
  registry.setText(machine::Hive::LocalMachine, kKey, "ProductSuite", "Small Business");
  EXPECT_FALSE(IsWinNT40TS(program));
  registry.setText(machine::Hive::LocalMachine, kKey, "ProductSuite", "Any TERMINAL server");
  EXPECT_TRUE(IsWinNT40TS(program));
  program.sim.setEdition(WindowsEdition::XP);
  registry.setText(machine::Hive::LocalMachine, kKey, "ProductSuite", "Terminal Server");
  EXPECT_FALSE(IsWinNT40TS(program));
}

TEST(IsWin2008Server, WritesItsAnswerAtEveryCall) {
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::Win2008);
  IsWin2008Server(program);
  IsWin2008Server(program);
  EXPECT_THAT(program.lines(), ElementsAre("IsWin2008Server = Vero", "IsWin2008Server = Vero"));
}

TEST(IsWin2008TS, WritesItsAnswerBehindThatOfTheServerProbe) {
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::Win2008TerminalServer);
  IsWin2008TS(program);
  program.sim.setEdition(WindowsEdition::Win2008);
  IsWin2008TS(program);
  EXPECT_THAT(program.lines(), ElementsAre("IsWin2008Server = Vero", "IsWin2008TS = Vero",
                                           "IsWin2008Server = Vero", "IsWin2008TS = Falso"));
}

TEST(IsWin2008TS, WritesItsAnswerInTheSystemsLanguage) {
  FakeProgram program;
  program.sim.locale().setLanguage(sim::Language::English);
  IsWin2008TS(program);
  EXPECT_THAT(program.lines(), ElementsAre("IsWin2008Server = False", "IsWin2008TS = False"));
}

TEST(IsWin2008TS, WritesItsAnswerAfterAFailureToo) {
  Measured measured;
  measured.sim.setEdition(WindowsEdition::Win2008TerminalServer);
  EXPECT_TRUE(IsWin2008Server(measured.program));
  measured.system.raising = true;
  EXPECT_FALSE(IsWin2008TS(measured.program));
  ASSERT_FALSE(measured.program.lines().empty());
  EXPECT_EQ(measured.program.lines().back(), "IsWin2008TS = Falso");
  ASSERT_EQ(measured.program.reports().size(), 1U);
  EXPECT_EQ(measured.program.reports()[0].procedure, "IsWin2008TS");
}

// --- User

TEST(UserName, IsAskedWith251Characters) {
  Measured measured;
  measured.sim.system().setUserName("mario.rossi");
  EXPECT_EQ(UserName(measured.program), "mario.rossi");
  EXPECT_EQ(measured.system.sizes, std::vector<std::uint32_t>{251});
}

TEST(UserName, EndsAtTheFirstNul) {
  FakeProgram program;
  program.sim.system().setUserName(std::string("mario\0x", 7));
  EXPECT_EQ(UserName(program), "mario");
}

TEST(UserName, IsEmptyInSilenceWhenItCannotBeRead) {
  FakeProgram program;
  program.sim.system().failUserName(system_code::kInsufficientBuffer);
  EXPECT_EQ(UserName(program), "");
  EXPECT_THAT(program.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv::modPlatform
