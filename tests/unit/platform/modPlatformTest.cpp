#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "platform/modPlatform.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"

namespace trelv::modPlatform {
namespace {

using sim::WindowsEdition;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;
using tests::isReport;

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

struct Row {
  const char* label;
  VersionRecord version;
  std::vector<std::string> answers;
};

VersionRecord version(std::uint32_t major, std::uint32_t minor, std::uint32_t platform,
                      std::uint8_t productType) {
  VersionRecord record;
  record.major = major;
  record.minor = minor;
  record.platform = platform;
  record.productType = productType;
  return record;
}

const std::vector<Row> kRows = {
    // The first Windows 95 is 4.0 as well and counts as NT 4.0 too.
    {"95", version(4, 0, 1, 0), {"IsWin95", "IsWinNt40"}},
    {"95 second", version(4, 3, 1, 0), {"IsWin95"}},
    {"95 last", version(4, 9, 1, 0), {"IsWin95"}},
    // The major version is not looked at.
    {"95 family of another major", version(7, 1, 1, 0), {"IsWin95"}},
    {"98", version(4, 10, 1, 0), {"IsWin98"}},
    {"between 98 and Me", version(4, 11, 1, 0), {}},
    {"Me", version(4, 90, 1, 0), {"IsWinMe"}},
    {"4.90 of the NT family", version(4, 90, 2, 1), {"IsWinMe"}},
    {"NT 3.51", version(3, 51, 2, 1), {}},
    {"NT 4", version(4, 0, 2, 1), {"IsWinNt40"}},
    {"NT 4 server", version(4, 0, 2, 3), {"IsWinNt40"}},
    {"2000 Professional", version(5, 0, 2, 1), {"IsWin2000Professional"}},
    {"2000 domain controller", version(5, 0, 2, 2), {"IsWin2000Server"}},
    {"2000 Server", version(5, 0, 2, 3), {"IsWin2000Server"}},
    {"2000 unknown", version(5, 0, 2, 0), {}},
    {"XP", version(5, 1, 2, 1), {"IsWinXP"}},
    {"5.1 server", version(5, 1, 2, 3), {"IsWinXP"}},
    // The product type is not looked at.
    {"XP 64 bit", version(5, 2, 2, 1), {"IsWin2003Server"}},
    {"2003", version(5, 2, 2, 3), {"IsWin2003Server"}},
    {"Vista", version(6, 0, 2, 1), {"IsWinVista"}},
    {"2008", version(6, 0, 2, 3), {"IsWinVistaServer", "IsWin2008Server"}},
    {"2008 domain controller", version(6, 0, 2, 2), {"IsWinVistaServer", "IsWin2008Server"}},
    {"Seven", version(6, 1, 2, 1), {"IsWinSeven"}},
    {"2008 R2", version(6, 1, 2, 3), {"IsWin2008Server"}},
    {"8", version(6, 2, 2, 1), {}},
    {"2012", version(6, 2, 2, 3), {}},
    {"10", version(10, 0, 2, 1), {}}};

TEST(EditionProbes, RecogniseExactlyTheirEdition) {
  for (const Row& row : kRows) {
    FakeProgram program;
    program.sim.system().setVersion(row.version);
    std::vector<std::string> found;
    for (const Probe& probe : kProbes) {
      if (probe.ask(program)) found.emplace_back(probe.name);
    }
    EXPECT_EQ(found, row.answers) << row.label;
  }
}

/// What the system's version was asked for, and with which size.
std::vector<std::string> queries(FakeProgram& program) {
  std::vector<std::string> texts = program.sim.calls();
  std::erase_if(texts, [](const std::string& text) { return !text.starts_with("system.queryV"); });
  return texts;
}

/// From now on a question about the version ends in a failure that nobody expects.
void raiseFromNowOn(FakeProgram& program) {
  program.sim.callLog().setInjector([](const sim::SimCall&) -> std::optional<SystemCode> {
    throw RuntimeError(5, "prova", "guasto");
  });
}

class ProbeTest : public testing::TestWithParam<std::size_t> {
 protected:
  const Probe& probe() const { return kProbes.at(GetParam()); }
  std::string query() const { return "system.queryVersion " + std::to_string(probe().size); }

  FakeProgram program;
};

TEST_P(ProbeTest, AsksTheSystemOnceWithItsFormOfTheRecordWhateverTheOthersAsked) {
  for (const Probe& other : kProbes) {
    if (other.ask != probe().ask) {
      other.ask(program);
    }
  }
  program.sim.callLog().clear();
  const bool first = probe().ask(program);
  EXPECT_EQ(probe().ask(program), first);
  EXPECT_EQ(probe().ask(program), first);
  const bool cached = probe().ask != &IsWinNt40;
  EXPECT_EQ(queries(program), std::vector<std::string>(cached ? 1 : 3, query()));
}

TEST_P(ProbeTest, AnswersFalseAfterAFailedQueryAndAsksAgain) {
  program.sim.system().failVersionQuery();
  EXPECT_FALSE(probe().ask(program));
  EXPECT_FALSE(probe().ask(program));
  EXPECT_EQ(queries(program).size(), 2U);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_P(ProbeTest, ReportsAnUnexpectedFailureAndAnswersFalse) {
  raiseFromNowOn(program);
  EXPECT_FALSE(probe().ask(program));
  EXPECT_THAT(program.reports(), ElementsAre(isReport(probe().name, _, 5, "modPlatform")));
}

INSTANTIATE_TEST_SUITE_P(Probes, ProbeTest, testing::Range<std::size_t>(0, kProbes.size()),
                         [](const auto& row) { return kProbes.at(row.param).name; });

TEST(EditionProbes, KeepTheirAnswerWhenTheSystemTellsSomethingElseLater) {
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::XP);
  EXPECT_TRUE(IsWinXP(program));
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

constexpr std::array<TerminalProbe, 4> kTerminalProbes{{{"IsWinNT40TS", IsWinNT40TS},
                                                        {"IsWin2000TS", IsWin2000TS},
                                                        {"IsWin2003TS", IsWin2003TS},
                                                        {"IsWin2008TS", IsWin2008TS}}};

TEST(TerminalServerProbes, RecogniseTheirOwnEdition) {
  using enum WindowsEdition;
  // The only probe that answers yes; empty: none does.
  const std::vector<std::pair<WindowsEdition, std::string>> rows = {
      {NT4, ""},        {NT4TerminalServer, "IsWinNT40TS"},
      {Win2000Pro, ""}, {Win2000Server, ""},
      {XP, ""},         {Win2000TerminalServer, "IsWin2000TS"},
      {Win2003, ""},    {Win2003TerminalServer, "IsWin2003TS"},
      {Win2008, ""},    {Win2008TerminalServer, "IsWin2008TS"},
      {Win2008R2, ""},  {Win2008R2TerminalServer, "IsWin2008TS"},
      {Seven, ""}};
  for (const auto& [edition, answers] : rows) {
    FakeProgram program;
    program.sim.setEdition(edition);
    std::string found;
    for (const TerminalProbe& probe : kTerminalProbes)
      found += probe.ask(program) ? probe.name : "";
    EXPECT_EQ(found, answers) << static_cast<int>(edition);
  }
}

bool asked(WindowsEdition edition, std::uint16_t suiteMask, bool (*probe)(Program&)) {
  FakeProgram program;
  VersionRecord record = sim::versionOf(edition);
  record.suiteMask = suiteMask;
  program.sim.system().setVersion(record);
  return probe(program);
}

TEST(TerminalServerProbes, GoByTheSuitesOfAServerOnly) {
  struct SuiteRow {
    std::uint16_t mask;
    bool win2000;
    bool later;
  };
  for (const SuiteRow& row :
       {SuiteRow{0, false, false}, SuiteRow{0x10, true, true}, SuiteRow{0x100, false, false},
        SuiteRow{0x110, true, false}, SuiteRow{0x2, false, false}}) {
    SCOPED_TRACE(row.mask);
    EXPECT_EQ(asked(WindowsEdition::Win2000Server, row.mask, IsWin2000TS), row.win2000);
    EXPECT_EQ(asked(WindowsEdition::Win2003, row.mask, IsWin2003TS), row.later);
    EXPECT_EQ(asked(WindowsEdition::Win2008, row.mask, IsWin2008TS), row.later);
    EXPECT_FALSE(asked(WindowsEdition::Win2000Pro, row.mask, IsWin2000TS));
    EXPECT_FALSE(asked(WindowsEdition::Vista, row.mask, IsWin2008TS));
  }
}

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

TEST(TerminalServerAnswers, AreThoseOfNoneWhereTheSystemCannotBeAskedAnyMore) {
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::Win2003TerminalServer);
  EXPECT_TRUE(IsWin2003TS(program));
  raiseFromNowOn(program);
  EXPECT_FALSE(IsWin2003TS(program));
  EXPECT_FALSE(program.state.platform.win2003TerminalServer);
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
  FakeProgram program;
  program.sim.setEdition(WindowsEdition::Win2008TerminalServer);
  EXPECT_TRUE(IsWin2008Server(program));
  raiseFromNowOn(program);
  EXPECT_FALSE(IsWin2008TS(program));
  EXPECT_EQ(program.lines().back(), "IsWin2008TS = Falso");
  EXPECT_THAT(program.reports(), ElementsAre(isReport("IsWin2008TS", _, 5, "modPlatform")));
}

// --- User

TEST(UserName, HasUpTo250CharactersEndsAtTheFirstNulAndIsElseEmptyInSilence) {
  FakeProgram program;
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"mario.rossi", "mario.rossi"},
      {std::string(250, 'x'), std::string(250, 'x')},
      {std::string(251, 'x'), ""},
      {std::string("mario\0x", 7), "mario"}};
  for (const auto& [name, found] : rows) {
    program.sim.system().setUserName(name);
    EXPECT_EQ(UserName(program), found);
  }
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(UserName, ThatFailsUnexpectedlyIsReportedAndEmpty) {
  FakeProgram program;
  raiseFromNowOn(program);
  EXPECT_EQ(UserName(program), "");
  EXPECT_THAT(
      program.reports(),
      ElementsAre(isReport("UserName", "Errore in lettura nome utente: ", 5, "modPlatform")));
}

}  // namespace
}  // namespace trelv::modPlatform
