#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "integrated/TerminalServerRepairs.h"
#include "sim/FailingMachine.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using namespace modProdTrelvManager;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kRoot = "S:\\Lumo";
// Where the copies of a Terminal Server session lie, as the log names them.
const std::string kUser = "C:\\Users\\mario\\windows";
const std::string kProfile = "C:\\Users\\mario\\windows\\..\\..\\mario\\windows";
const std::string kSystem = "c:\\windows";

std::string copyLine(const std::string& source, const std::string& target) {
  return "Gestione ProdTrelv - copia file ini mancante da: " + source + " a: " + target;
}

std::string missingLine(const std::string& path) {
  return "Gestione ProdTrelv - Ricerca mancanza file: " + path;
}

std::string createdLine(const std::string& path) {
  return "Gestione ProdTrelv - creazione file ini mancante : " + path;
}

/// A session of the user mario on a Terminal Server.
class Repairs : public testing::Test {
 protected:
  Repairs() {
    program_.sim.setEdition(sim::WindowsEdition::Win2003TerminalServer);
    program_.state.startup.terminalServer = true;
    program_.sim.mount("S:");
  }

  /// Takes the session off the Terminal Server: an ordinary workstation.
  void useWorkstation() {
    program_.sim.setEdition(sim::WindowsEdition::XP);
    program_.state.startup.terminalServer = false;
    program_.sim.removeTree(kUser);
  }

  sim::SimMachine& machine() { return program_.sim; }
  const std::vector<std::string>& lines() const { return program_.lines(); }
  void put(const std::string& path, const std::string& text) { machine().putFile(path, text); }
  std::string text(const std::string& path) { return machine().fileText(path); }
  bool exists(const std::string& path) { return machine().fileExists(path); }
  std::string value(const std::string& file, const std::string& section, const std::string& key) {
    return machine().iniValue(file, section, key);
  }
  /// All files of the machine and the share.
  std::string everything() {
    return machine().diskOf("C:\\").tree() + machine().diskOf("S:\\").tree();
  }

  FakeProgram program_;
};

// --- The session's profile

TEST_F(Repairs, ProfileThatCarriesTheDomainIsTakenWhereItStands) {
  machine().environment().put("USERDOMAIN", "UFFICIO");
  machine().makeFolders("C:\\Users\\mario.UFFICIO\\windows");
  put("C:\\WINDOWS\\lumow.ini", "x");
  EXPECT_TRUE(RiparaCorvelTS(program_));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Inizio copia da: c:\\windows\\lumow.ini a: "
            "C:\\Users\\mario\\windows\\..\\..\\mario.UFFICIO\\windows\\lumow.ini");
  EXPECT_TRUE(exists("C:\\Users\\mario.UFFICIO\\windows\\lumow.ini"));
  EXPECT_FALSE(exists(kUser + "\\lumow.ini"));
}

TEST_F(Repairs, ProfileOfAUserWithoutDomainIsNotThatOfANameWithAPoint) {
  machine().environment().remove("USERDOMAIN");
  machine().makeFolders("C:\\Users\\mario.");
  put("C:\\WINDOWS\\lumow.ini", "x");
  RiparaCorvelTS(program_);
  EXPECT_TRUE(exists(kUser + "\\lumow.ini"));
  // To the system both names are the same folder.
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Inizio copia da: c:\\windows\\lumow.ini a: " +
                                kProfile + "\\lumow.ini");
}

// --- Corvel

constexpr const char* kCorvelBegun = "Gestione ProdTrelv - Inizio gestione anomalia Corvel";

TEST_F(Repairs, CorvelDoesNothingOnAWorkstation) {
  useWorkstation();
  put("C:\\WINDOWS\\lumow.ini", "x");
  const std::string before = everything();
  EXPECT_FALSE(RiparaCorvelTS(program_));
  EXPECT_THAT(lines(), ElementsAre(kCorvelBegun,
                                   "Gestione ProdTrelv - Ambiente Terminal Server non rilevato, "
                                   "nessuna gestione anomalia TS Corvel"));
  EXPECT_EQ(everything(), before);
}

TEST_F(Repairs, CorvelCopiesTheSystemsFileToAUserWithoutOne) {
  put("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
  EXPECT_TRUE(RiparaCorvelTS(program_));
  EXPECT_THAT(lines(),
              ElementsAre(kCorvelBegun,
                          "Gestione ProdTrelv - Inizio copia da: c:\\windows\\lumow.ini a: "
                          "C:\\Users\\mario\\windows\\..\\..\\mario\\windows\\lumow.ini"));
  EXPECT_EQ(text(kUser + "\\lumow.ini"), "[Archivi]\r\nPath=S:\\Lumo\r\n");
}

TEST_F(Repairs, CorvelOverwritesAUsersFileThatNamesNoArchives) {
  put("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
  put(kUser + "\\lumow.ini", "[Archivi]\r\nPath=\r\n[Altro]\r\na=1\r\n");
  EXPECT_TRUE(RiparaCorvelTS(program_));
  EXPECT_EQ(text(kUser + "\\lumow.ini"), "[Archivi]\r\nPath=S:\\Lumo\r\n");
  EXPECT_FALSE(RiparaCorvelTS(program_));
}

TEST_F(Repairs, CorvelLeavesAUsersFileThatPointsElsewhere) {
  put("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
  put(kUser + "\\lumow.ini", "[archivi]\r\npath=Z:\\Altrove\r\n");
  EXPECT_FALSE(RiparaCorvelTS(program_));
  EXPECT_THAT(lines(), ElementsAre(kCorvelBegun));
  EXPECT_EQ(text(kUser + "\\lumow.ini"), "[archivi]\r\npath=Z:\\Altrove\r\n");
}

/// A user's lumow.ini, the system's, and what the repair makes of the user's: the system's text, or
/// the user's as it was.
struct CorvelRow {
  const char* user;
  const char* system;
  const char* after;
  bool copied;
};

constexpr const char* kNone = "-";
constexpr const char* kSystemText = "[Archivi]\r\nPath=S:\\Lumo\r\n";
constexpr std::array kCorvelRows{
    CorvelRow{kNone, kNone, kNone, false},
    CorvelRow{kNone, kSystemText, kSystemText, true},
    CorvelRow{kNone, "", "", true},
    CorvelRow{"", kNone, "", false},
    CorvelRow{"", kSystemText, kSystemText, true},
    CorvelRow{"[Archivi]\r\nPath=\r\n", kNone, "[Archivi]\r\nPath=\r\n", false},
    CorvelRow{"[Archivi]\r\nPath=\r\n", kSystemText, kSystemText, true},
    CorvelRow{"[Altro]\r\nPath=X:\\\r\n", kSystemText, kSystemText, true},
    CorvelRow{"[Archivi]\r\nPath=X:\\\r\n", kNone, "[Archivi]\r\nPath=X:\\\r\n", false},
    CorvelRow{"[Archivi]\r\nPath=X:\\\r\n", kSystemText, "[Archivi]\r\nPath=X:\\\r\n", false}};

/// The files of one row in the folder of the session's profile.
void playCorvel(const CorvelRow& row, const std::string& profileFolder) {
  SCOPED_TRACE(std::string("user: ") + row.user + ", system: " + row.system);
  FakeProgram program;
  program.sim.setEdition(sim::WindowsEdition::Win2000TerminalServer);
  program.state.startup.terminalServer = true;
  const bool withDomain = profileFolder == "mario.UFFICIO";
  program.sim.environment().put("USERDOMAIN", "UFFICIO");
  const std::string folder = "C:\\Users\\" + profileFolder + "\\windows";
  program.sim.makeFolders(folder);
  const std::string other =
      "C:\\Users\\" + std::string(withDomain ? "mario" : "mario.UFFICIO") + "\\windows\\lumow.ini";
  const auto put = [&program](const std::string& path, const char* text) {
    if (std::string(text) != kNone) program.sim.putFile(path, text);
  };
  const auto text = [&program](const std::string& path) {
    return program.sim.fileExists(path) ? program.sim.fileText(path) : std::string(kNone);
  };
  put(folder + "\\lumow.ini", row.user);
  put("C:\\WINDOWS\\lumow.ini", row.system);
  EXPECT_EQ(RiparaCorvelTS(program), row.copied);
  EXPECT_EQ(text(folder + "\\lumow.ini"), row.after);
  EXPECT_EQ(text("C:\\WINDOWS\\lumow.ini"), row.system);
  EXPECT_FALSE(program.sim.fileExists(other));
  EXPECT_TRUE(program.reports().empty());
}

TEST_F(Repairs, CorvelInEveryStandingOfBothFiles) {
  for (const CorvelRow& row : kCorvelRows) {
    playCorvel(row, "mario");
    playCorvel(row, "mario.UFFICIO");
  }
}

TEST_F(Repairs, CorvelLeavesAProtectedFileAndTellsIt) {
  put("C:\\WINDOWS\\lumow.ini", kSystemText);
  put(kUser + "\\lumow.ini", "[Archivi]\r\n");
  machine().diskOf("C:\\").setReadOnly(kUser + "\\lumow.ini");
  const std::string before = everything();
  EXPECT_FALSE(RiparaCorvelTS(program_));
  EXPECT_THAT(lines().back(), StartsWith("Gestione ProdTrelv - Gestione anomalia Corvel: "));
  EXPECT_EQ(everything(), before);
  // Some systems would replace it.
  EXPECT_EQ(machine().callLog().countOf("files.replaceFile"), 0U);
}

TEST_F(Repairs, CorvelWithoutAFileToCopyIsTold) {
  EXPECT_FALSE(RiparaCorvelTS(program_));
  ASSERT_EQ(lines().size(), 3U);
  EXPECT_THAT(lines()[1], StartsWith("Gestione ProdTrelv - Inizio copia da: "));
  EXPECT_THAT(lines()[2], StartsWith("Gestione ProdTrelv - Gestione anomalia Corvel: "));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// --- Nerio

constexpr const char* kNerioBegun = "Gestione ProdTrelv - Inizio Gestione Anomalia Nerio";
const std::string kNerioMaster = "S:\\Lumo\\mv\\nerio\\nerio.ini";

TEST_F(Repairs, NerioIsCopiedToTheUserOnAWorkstationToo) {
  useWorkstation();
  put(kNerioMaster, "m");
  RiparaNerioTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kNerioBegun, copyLine(kNerioMaster, "c:\\windows\\nerio.ini"),
                                   "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun "
                                   "intervento Anomalia Nerio"));
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "m");
}

TEST_F(Repairs, NerioThatIsThereStaysOnAWorkstation) {
  useWorkstation();
  put(kNerioMaster, "m");
  put("C:\\WINDOWS\\nerio.ini", "mio");
  RiparaNerioTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kNerioBegun,
                                   "Gestione ProdTrelv - Ambiente Terminal non "
                                   "rilevato. Nessun intervento Anomalia Nerio"));
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "mio");
}

TEST_F(Repairs, NerioThatIsNotInstalledYetHasItsLineAndNothingIsCopied) {
  useWorkstation();
  RiparaNerioTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kNerioBegun, copyLine(kNerioMaster, "c:\\windows\\nerio.ini"),
                                   "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun "
                                   "intervento Anomalia Nerio"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\nerio.ini"));
}

/// What an earlier start left behind is no hindrance, protected or not.
TEST_F(Repairs, CopyThatIsLeftOverFromAStartEndedByForceIsMadeAnew) {
  useWorkstation();
  put(kNerioMaster, "[NERIO]\r\n");
  for (const bool protectedCopy : {false, true}) {
    machine().removeTree("C:\\WINDOWS\\nerio.ini");
    put("C:\\WINDOWS\\nerio.ini.tmp", "[NER");
    machine().diskOf("C:\\").setReadOnly("C:\\WINDOWS\\nerio.ini.tmp", protectedCopy);
    RiparaNerioTS(program_, kRoot);
    EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "[NERIO]\r\n");
    EXPECT_FALSE(exists("C:\\WINDOWS\\nerio.ini.tmp"));
  }
}

TEST_F(Repairs, CopyThatCannotTakeItsPlaceLeavesNothing) {
  put(kNerioMaster, "m");
  machine().callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::FileReplace
               ? std::optional<SystemCode>(system_code::kAccessDenied)
               : std::nullopt;
  });
  const std::string before = everything();
  RiparaNerioTS(program_, kRoot);
  EXPECT_EQ(everything(), before);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia Nerio: Autorizzazione "
                                "negata: " +
                                kUser + "\\nerio.ini"));
}

TEST_F(Repairs, CopyThatAnotherSessionPutThereMeanwhileStays) {
  put(kNerioMaster, "m");
  machine().callLog().onCall("files.copy", [this] { put(kUser + "\\nerio.ini", "altrui"); });
  RiparaNerioTS(program_, kRoot);
  EXPECT_EQ(text(kUser + "\\nerio.ini"), "altrui");
  EXPECT_FALSE(exists(kUser + "\\nerio.ini.tmp"));
}

/// What stands before a repair, one bit each; the profile is another folder than the user's.
struct Standing {
  bool master;
  bool user;
  bool profile;
  bool system;
};

std::vector<Standing> everyStanding() {
  std::vector<Standing> all;
  for (unsigned bits = 0; bits < 16; ++bits) {
    all.push_back({(bits & 1U) != 0, (bits & 2U) != 0, (bits & 4U) != 0, (bits & 8U) != 0});
  }
  return all;
}

/// The paths of one ini file's copies where the profile carries the domain, so that the user's copy
/// is another file.
struct Paths {
  explicit Paths(const std::string& ini)
      : user(kUser + "\\" + ini),
        profile(kUser + "\\..\\..\\mario.UFFICIO\\windows\\" + ini),
        profileFile("C:\\Users\\mario.UFFICIO\\windows\\" + ini),
        system(kSystem + "\\" + ini) {}
  std::string user;
  std::string profile;
  std::string profileFile;
  std::string system;
};

class EveryStanding : public testing::TestWithParam<Standing> {
 protected:
  EveryStanding() {
    program_.sim.setEdition(sim::WindowsEdition::Win2008TerminalServer);
    program_.state.startup.terminalServer = true;
    program_.sim.mount("S:");
    program_.sim.environment().put("USERDOMAIN", "UFFICIO");
    program_.sim.makeFolders("C:\\Users\\mario.UFFICIO\\windows");
  }
  void arrange(const std::string& master, const Paths& paths) {
    if (GetParam().master) program_.sim.putFile(master, "master");
    if (GetParam().user) program_.sim.putFile(paths.user, "user");
    if (GetParam().profile) program_.sim.putFile(paths.profileFile, "profile");
    if (GetParam().system) program_.sim.putFile(paths.system, "system");
  }
  /// Text of a file, "-" where there is none.
  std::string text(const std::string& path) {
    return program_.sim.fileExists(path) ? program_.sim.fileText(path) : "-";
  }
  /// The copies that the session puts in place, and their lines.
  void expectCopies(const std::string& master, const Paths& paths,
                    std::vector<std::string>& expectedLines) {
    const Standing& s = GetParam();
    std::string profile = s.profile ? "profile" : "-";
    if (s.master && !s.profile) {
      expectedLines.push_back(copyLine(master, paths.profile));
      profile = "master";
    }
    std::string system = s.system ? "system" : "-";
    if (!s.system) {
      expectedLines.push_back(missingLine(paths.system));
      if (profile != "-") {
        expectedLines.push_back(copyLine(paths.profile, paths.system));
        system = profile;
      }
    }
    EXPECT_EQ(text(paths.profileFile), profile);
    EXPECT_EQ(text(paths.system), system);
  }
  /// A second run finds nothing to do.
  template <class Repair>
  void expectNoChangeBy(Repair&& repair) {
    const std::string before =
        program_.sim.diskOf("C:\\").tree() + program_.sim.diskOf("S:\\").tree();
    const std::size_t writes = program_.sim.openings("").writes;
    repair();
    EXPECT_EQ(program_.sim.diskOf("C:\\").tree() + program_.sim.diskOf("S:\\").tree(), before);
    EXPECT_EQ(program_.sim.openings("").writes, writes);
    EXPECT_THAT(program_.reports(), IsEmpty());
  }

  FakeProgram program_;
};

INSTANTIATE_TEST_SUITE_P(Of, EveryStanding, testing::ValuesIn(everyStanding()));

TEST_P(EveryStanding, NerioGetsWhatIsMissing) {
  const Paths paths("nerio.ini");
  arrange(kNerioMaster, paths);
  RiparaNerioTS(program_, kRoot);
  std::vector<std::string> expected{kNerioBegun};
  if (!GetParam().user) {
    expected.push_back(copyLine(kNerioMaster, paths.user));
  }
  const std::string user = GetParam().user ? "user" : GetParam().master ? "master" : "-";
  EXPECT_EQ(text(paths.user), user);
  expectCopies(kNerioMaster, paths, expected);
  EXPECT_EQ(program_.lines(), expected);
  EXPECT_EQ(text(kNerioMaster), GetParam().master ? "master" : "-");
  expectNoChangeBy([this] { RiparaNerioTS(program_, kRoot); });
}

TEST_P(EveryStanding, ZeltomodelliGetsWhatIsMissing) {
  const Paths paths("zeltomodelli.ini");
  const std::string master = "S:\\Lumo\\mv\\ZM\\zeltomodelli.ini";
  program_.sim.makeFolders("S:\\Lumo\\mv\\ZM");
  arrange(master, paths);
  RiparaZeltomodelliTS(program_, kRoot);
  std::vector<std::string> expected{"Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli"};
  if (!GetParam().user) {
    expected.push_back(createdLine(paths.user));
  }
  EXPECT_EQ(text(paths.user),
            GetParam().user ? "user" : "[Parametri]\r\nPathModelli=S:\\Lumo\\mv\\ZM\r\n");
  expected.push_back("Gestione ProdTrelv - Ricerca esistenza file: " + master);
  expectCopies(master, paths, expected);
  EXPECT_EQ(program_.lines(), expected);
  expectNoChangeBy([this] { RiparaZeltomodelliTS(program_, kRoot); });
}

TEST_P(EveryStanding, LudaGetsWhatIsMissing) {
  const Paths paths("luda.ini");
  const std::string master = "S:\\Lumo\\mv\\LUDA2003\\Luda.ini";
  program_.sim.makeFolders("S:\\Lumo\\mv\\LUDA2003");
  arrange(master, paths);
  RiparaLudaTS(program_, kRoot);
  std::vector<std::string> expected{"Gestione ProdTrelv - Inizio Gestione anomalia Luda"};
  if (!GetParam().user) {
    expected.push_back(createdLine(paths.user));
  }
  EXPECT_EQ(text(paths.user).substr(0, 8), GetParam().user ? "user" : "[PathNam");
  expectCopies(master, paths, expected);
  EXPECT_EQ(program_.lines(), expected);
  expectNoChangeBy([this] { RiparaLudaTS(program_, kRoot); });
}

/// The user's copy and the profile's are one file where the profile bears the user's name alone.
TEST_P(EveryStanding, NerioOfAUserWhoseProfileIsHisOwnGetsWhatIsMissing) {
  program_.sim.removeTree("C:\\Users\\mario.UFFICIO");
  const std::string user = kUser + "\\nerio.ini";
  const std::string profile = kProfile + "\\nerio.ini";
  const std::string system = kSystem + "\\nerio.ini";
  const Standing& s = GetParam();
  const bool userStands = s.user || s.profile;
  if (s.master) program_.sim.putFile(kNerioMaster, "master");
  if (userStands) program_.sim.putFile(user, "user");
  if (s.system) program_.sim.putFile(system, "system");
  RiparaNerioTS(program_, kRoot);
  std::vector<std::string> expected{kNerioBegun};
  if (!userStands) expected.push_back(copyLine(kNerioMaster, user));
  if (!s.system) expected.push_back(missingLine(system));
  if (!s.system && (userStands || s.master)) expected.push_back(copyLine(profile, system));
  EXPECT_EQ(program_.lines(), expected);
  const std::string users = userStands ? "user" : s.master ? "master" : "-";
  EXPECT_EQ(text(user), users);
  EXPECT_EQ(text(system), s.system ? "system" : users);
  expectNoChangeBy([this] { RiparaNerioTS(program_, kRoot); });
}

/// A profile that was never used by programs has no Windows folder: its copy fails and is told, the
/// system's comes from the product.
TEST_P(EveryStanding, NerioOfAProfileWithoutWindowsFolderGetsTheOthers) {
  program_.sim.removeTree("C:\\Users\\mario.UFFICIO\\windows");
  const Paths paths("nerio.ini");
  const Standing& s = GetParam();
  if (s.master) program_.sim.putFile(kNerioMaster, "master");
  if (s.user) program_.sim.putFile(paths.user, "user");
  if (s.system) program_.sim.putFile(paths.system, "system");
  RiparaNerioTS(program_, kRoot);
  std::vector<std::string> expected{kNerioBegun};
  if (!s.user) expected.push_back(copyLine(kNerioMaster, paths.user));
  if (s.master) {
    expected.push_back(copyLine(kNerioMaster, paths.profile));
    expected.push_back("Gestione ProdTrelv - Gestione anomalia Nerio: ");
  }
  if (!s.system) expected.push_back(missingLine(paths.system));
  if (!s.system && s.master) expected.push_back(copyLine(kNerioMaster, paths.system));
  ASSERT_EQ(program_.lines().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(program_.lines()[i].substr(0, expected[i].size()), expected[i]);
  }
  EXPECT_EQ(text(paths.user), s.user ? "user" : s.master ? "master" : "-");
  EXPECT_EQ(text(paths.system), s.system ? "system" : s.master ? "master" : "-");
  EXPECT_FALSE(program_.sim.folderExists("C:\\Users\\mario.UFFICIO\\windows"));
}

TEST_F(Repairs, NerioCopyThatFailsIsToldAndTheOthersAreDone) {
  put(kNerioMaster, "m");
  machine().diskOf("C:\\").denyWriting(kUser);
  RiparaNerioTS(program_, kRoot);
  EXPECT_THAT(lines(), Contains(StartsWith("Gestione ProdTrelv - Gestione anomalia Nerio: ")));
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "m");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(Repairs, TwoUsersOfOneServerGetTheirOwnCopies) {
  put(kNerioMaster, "m");
  RiparaNerioTS(program_, kRoot);
  machine().makeFolders("C:\\Users\\anna\\windows");
  machine().environment().put("USERPROFILE", "C:\\Users\\anna");
  machine().system().setUserName("anna");
  put(kUser + "\\nerio.ini", "di mario");
  put("C:\\WINDOWS\\nerio.ini", "di tutti");
  put("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
  FakeProgram second(machine());
  second.state.startup.terminalServer = true;
  RiparaNerioTS(second, kRoot);
  EXPECT_TRUE(RiparaCorvelTS(second));
  EXPECT_EQ(text("C:\\Users\\anna\\windows\\nerio.ini"), "m");
  EXPECT_EQ(text(kUser + "\\nerio.ini"), "di mario");
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "di tutti");
  EXPECT_TRUE(exists("C:\\Users\\anna\\windows\\lumow.ini"));
  EXPECT_FALSE(exists(kUser + "\\lumow.ini"));
}

void repairAll(FakeProgram& program) {
  RiparaCorvelTS(program);
  RiparaNerioTS(program, kRoot);
  RiparaZeltomodelliTS(program, kRoot);
  RiparaLudaTS(program, kRoot);
}

/// A Terminal Server whose products stand on the share, and on which two users have sessions.
class TwoUsers {
 public:
  TwoUsers() {
    machine_.setEdition(sim::WindowsEdition::Win2008TerminalServer);
    machine_.mount("S:");
    machine_.putFile(kNerioMaster, "[NERIO]\r\nVersione=03.20\r\n");
    machine_.makeFolders("S:\\Lumo\\mv\\ZM");
    machine_.putFile("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
    machine_.setFileVersion("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", {7, 10, 2, 1});
    machine_.putFile("C:\\WINDOWS\\lumow.ini", kSystemText);
    machine_.makeFolders("C:\\Users\\anna\\windows");
  }

  sim::SimMachine& machine() { return machine_; }

  /// The repairs in a user's session; the session that was there before goes on afterwards.
  void repairAs(const std::string& user) {
    const std::string profile = machine_.environment().value("USERPROFILE");
    enter(user, "C:\\Users\\" + user);
    FakeProgram program(machine_);
    program.state.startup.terminalServer = true;
    repairAll(program);
    enter("mario", profile);
    EXPECT_TRUE(program.reports().empty());
  }

  /// Everything below the folders of both users and of the system.
  std::string files() {
    std::string text;
    for (const char* const folder :
         {"C:\\Users\\mario\\windows", "C:\\Users\\anna\\windows", "C:\\WINDOWS"}) {
      for (const std::string& name : machine_.diskOf("C:\\").names(folder)) {
        const std::string file = std::string(folder) + "\\" + name;
        text += file + "\n" + (machine_.fileExists(file) ? machine_.fileText(file) : "") + "\n";
      }
    }
    return text;
  }

 private:
  void enter(const std::string& user, const std::string& profile) {
    machine_.system().setUserName(user);
    machine_.environment().put("USERPROFILE", profile);
  }

  sim::SimMachine machine_;
};

TEST(TerminalServer, TwoUsersAtOnceGetWhatOneAfterTheOtherGets) {
  TwoUsers expected;
  expected.repairAs("mario");
  expected.repairAs("anna");
  const std::string complete = expected.files();
  EXPECT_THAT(complete, HasSubstr("C:\\Users\\anna\\windows\\luda.ini\n[PathNames]"));
  EXPECT_THAT(complete, HasSubstr("C:\\WINDOWS\\zeltomodelli.ini\n[Parametri]"));
  for (std::size_t number = 1;; ++number) {
    TwoUsers both;
    bool met = false;
    both.machine().callLog().onCall(number, [&] {
      met = true;
      both.repairAs("anna");
    });
    both.repairAs("mario");
    if (!met) {
      EXPECT_GT(number, 60U);
      return;
    }
    // A copy that the other session put there meanwhile was refused; the next start has nothing
    // left to do.
    both.repairAs("mario");
    EXPECT_EQ(both.files(), complete) << "met at call " << number;
  }
}

// --- Zeltomodelli

constexpr const char* kModelsBegun = "Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli";

TEST_F(Repairs, ZeltomodelliDoesNothingOnAWorkstation) {
  useWorkstation();
  put("S:\\Lumo\\mv\\ZM\\Dovra2010.ini", "x");
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kModelsBegun,
                                   "Gestione ProdTrelv - Ambiente Terminal non "
                                   "rilevato. Nessun intervento Anomalia ZM"));
  EXPECT_TRUE(exists("S:\\Lumo\\mv\\ZM\\Dovra2010.ini"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
}

TEST_F(Repairs, ZeltomodelliThatIsNotInstalledIsNotRepaired) {
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kModelsBegun));
  EXPECT_FALSE(exists(kUser + "\\zeltomodelli.ini"));
}

TEST_F(Repairs, ZeltomodelliLosesItsObsoleteFile) {
  put("S:\\Lumo\\mv\\ZM\\Dovra2010.ini", "x");
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_FALSE(exists("S:\\Lumo\\mv\\ZM\\Dovra2010.ini"));
  EXPECT_THAT(
      lines(),
      ElementsAre(kModelsBegun, createdLine(kUser + "\\zeltomodelli.ini"),
                  "Cancellazione file: S:\\Lumo\\mv\\ZM\\Dovra2010.ini effettuata con "
                  "successo",
                  "Gestione ProdTrelv - Ricerca esistenza file: "
                  "S:\\Lumo\\mv\\ZM\\zeltomodelli.ini",
                  missingLine(kSystem + "\\zeltomodelli.ini"),
                  copyLine(kProfile + "\\zeltomodelli.ini", kSystem + "\\zeltomodelli.ini")));
}

TEST_F(Repairs, ZeltomodelliOfAnotherPlaceIsPointedAtThisOne) {
  const std::string ini = kUser + "\\zeltomodelli.ini";
  put(ini, "[Parametri]\r\nPathModelli=T:\\Vecchio\\mv\\zm\r\nAltro=1\r\n");
  machine().makeFolders("S:\\Lumo\\mv\\ZM");
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_EQ(value(ini, "Parametri", "PathModelli"), "S:\\Lumo\\mv\\ZM");
  EXPECT_EQ(value(ini, "Parametri", "Altro"), "1");
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("creazione"))));
}

TEST_F(Repairs, ZeltomodelliWithAModelsFolderOfTheUsersOwnStays) {
  const std::string ini = kUser + "\\zeltomodelli.ini";
  machine().makeFolders("S:\\Lumo\\mv\\ZM");
  for (const std::string content :
       {"[Parametri]\nPathModelli=D:\\Modelli\n", "[Parametri]\n PathModelli = s:\\LUMO\\mv\\zm\n",
        "[Altro]\nx=1\n"}) {
    put(ini, content);
    program_.configurationFiles.forget();
    RiparaZeltomodelliTS(program_, kRoot);
    EXPECT_EQ(text(ini), content);
  }
}

TEST_F(Repairs, ZeltomodelliIniThatCannotBeMadeIsTold) {
  machine().makeFolders("S:\\Lumo\\mv\\ZM");
  machine().diskOf("C:\\").denyWriting(kUser);
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia ZeltoModelli: Impossibile "
                                "scrivere il file: " +
                                kUser + "\\zeltomodelli.ini"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
}

TEST_F(Repairs, ZeltomodelliIniThatCannotBeMadeGetsNoOtherInItsPlace) {
  put("S:\\Lumo\\mv\\ZM\\zeltomodelli.ini", "[Altro]\r\n");
  std::size_t seen = 0;
  machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool first = call.kind == sim::CallKind::ProfileWrite && ++seen == 1;
    return first ? std::optional<SystemCode>(system_code::kDiskFull) : std::nullopt;
  });
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_FALSE(exists(kUser + "\\zeltomodelli.ini"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_EQ(value(kUser + "\\zeltomodelli.ini", "Parametri", "PathModelli"), "S:\\Lumo\\mv\\ZM");
}

/// Others may have it open, or the user no right to delete on the share: no form at every start.
TEST_F(Repairs, ZeltomodelliObsoleteFileThatCannotBeDeletedIsToldInALine) {
  const std::string obsolete = "S:\\Lumo\\mv\\ZM\\Dovra2010.ini";
  put(obsolete, "x");
  machine().diskOf("S:\\").setReadOnly(obsolete);
  RiparaZeltomodelliTS(program_, kRoot);
  EXPECT_TRUE(exists(obsolete));
  ASSERT_GT(lines().size(), 3U);
  EXPECT_EQ(
      lines()[2],
      "Gestione ProdTrelv - Gestione anomalia ZeltoModelli: Autorizzazione negata: " + obsolete);
  EXPECT_EQ(lines()[3],
            "Gestione ProdTrelv - Ricerca esistenza file: "
            "S:\\Lumo\\mv\\ZM\\zeltomodelli.ini");
  EXPECT_TRUE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// --- Luda

constexpr const char* kLudaBegun = "Gestione ProdTrelv - Inizio Gestione anomalia Luda";
constexpr const char* kLudaNoTerminal =
    "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda";
const std::string kLudaMaster = "S:\\Lumo\\mv\\LUDA2003\\Luda.ini";

class LudaRepair : public Repairs {
 protected:
  void install() {
    put("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
    machine().setFileVersion("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", {7, 10, 2, 1});
  }
};

TEST_F(LudaRepair, MakesTheUsersIniOnAWorkstationToo) {
  useWorkstation();
  install();
  RiparaLudaTS(program_, kRoot);
  EXPECT_THAT(lines(),
              ElementsAre(kLudaBegun, createdLine("c:\\windows\\luda.ini"), kLudaNoTerminal));
  EXPECT_EQ(text("C:\\WINDOWS\\luda.ini"),
            "[PathNames]\r\n"
            "Homedir=S:\\Lumo\\mv\\luda2003\r\n"
            "DataBase=S:\\Lumo\\mv\\luda2003\\database\r\n"
            "Exec=S:\\Lumo\\mv\\luda2003\r\n"
            "FileDir=S:\\Lumo\\mv\\luda2003\\AscFile\r\n"
            "CrittaDir=S:\\Lumo\\mv\\luda2003\\critta\r\n"
            "[LUDA]\r\n"
            "Versione=7.10.2.1\r\n"
            "Aggiornamento=7.10.2.1\r\n"
            "[Drive]\r\n"
            "Floppy=A:\r\n"
            "[ConfigViste]\r\n"
            "Vista=0\r\n");
}

TEST_F(LudaRepair, LeavesAnIniThatIsThere) {
  useWorkstation();
  install();
  put("C:\\WINDOWS\\luda.ini", "[PathNames]\nHomedir=X:\\\n");
  RiparaLudaTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kLudaBegun, kLudaNoTerminal));
  EXPECT_EQ(text("C:\\WINDOWS\\luda.ini"), "[PathNames]\nHomedir=X:\\\n");
}

TEST_F(LudaRepair, WithoutTheProductMakesNothing) {
  useWorkstation();
  RiparaLudaTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kLudaBegun, kLudaNoTerminal));
  EXPECT_FALSE(exists("C:\\WINDOWS\\luda.ini"));
}

TEST_F(LudaRepair, OfAProgramWithoutVersionLeavesItEmpty) {
  useWorkstation();
  put("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
  put(kLudaMaster, "[LUDA]\r\nVersione=07.00\r\n");
  RiparaLudaTS(program_, kRoot);
  EXPECT_THAT(text("C:\\WINDOWS\\luda.ini"),
              HasSubstr("[LUDA]\r\nVersione=\r\nAggiornamento=\r\n"));
  EXPECT_EQ(text(kLudaMaster), "[LUDA]\r\nVersione=07.00\r\n");
}

TEST_F(LudaRepair, KeepsTheVersionInTheProductsIni) {
  useWorkstation();
  install();
  put(kLudaMaster, "[LUDA]\r\nVersione=07.00\r\nNome=x\r\n");
  RiparaLudaTS(program_, kRoot);
  EXPECT_EQ(text(kLudaMaster), "[LUDA]\r\nVersione=7.10.2.1\r\nNome=x\r\n");
}

TEST_F(LudaRepair, WritesTheProductsIniOnlyWhereTheVersionDiffers) {
  useWorkstation();
  install();
  put(kLudaMaster, "[LUDA]\nVersione=7.10.2.1\n");
  put("C:\\WINDOWS\\luda.ini", "x");
  machine().callLog().clear();
  RiparaLudaTS(program_, kRoot);
  EXPECT_EQ(machine().openings("S:\\").files(), 1U);
  EXPECT_EQ(machine().openings("S:\\").reads, 1U);
  EXPECT_EQ(text(kLudaMaster), "[LUDA]\nVersione=7.10.2.1\n");
}

TEST_F(LudaRepair, DoesNotMakeTheProductsIni) {
  install();
  RiparaLudaTS(program_, kRoot);
  EXPECT_FALSE(exists(kLudaMaster));
}

TEST_F(LudaRepair, OnATerminalServerCopiesTheUsersIniOn) {
  install();
  RiparaLudaTS(program_, kRoot);
  EXPECT_THAT(lines(), ElementsAre(kLudaBegun, createdLine(kUser + "\\luda.ini"),
                                   missingLine(kSystem + "\\luda.ini"),
                                   copyLine(kProfile + "\\luda.ini", kSystem + "\\luda.ini")));
  EXPECT_EQ(text("C:\\WINDOWS\\luda.ini"), text(kUser + "\\luda.ini"));
}

TEST_F(LudaRepair, ThatCannotMakeTheUsersIniPutsNoOtherInItsPlace) {
  install();
  put(kLudaMaster, "[LUDA]\r\nVersione=7.10.2.1\r\n");
  std::size_t seen = 0;
  machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool first = call.kind == sim::CallKind::ProfileWrite && ++seen == 1;
    return first ? std::optional<SystemCode>(system_code::kDiskFull) : std::nullopt;
  });
  RiparaLudaTS(program_, kRoot);
  EXPECT_FALSE(exists(kUser + "\\luda.ini"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\luda.ini"));
  RiparaLudaTS(program_, kRoot);
  EXPECT_EQ(value(kUser + "\\luda.ini", "Drive", "Floppy"), "A:");
}

TEST_F(Repairs, WindowsFolderThatIsNotToldLeavesNoFileInTheRoot) {
  useWorkstation();
  put(kNerioMaster, "m");
  put("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
  machine().callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::WindowsFolderQuery
               ? std::optional<SystemCode>(system_code::kAccessDenied)
               : std::nullopt;
  });
  const std::string before = everything();
  RiparaNerioTS(program_, kRoot);
  RiparaLudaTS(program_, kRoot);
  EXPECT_EQ(everything(), before);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia Nerio: Cartella di Windows "
                                "non disponibile"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia Luda: Cartella di Windows "
                                "non disponibile"));
}

TEST_F(LudaRepair, LeavesNoHalfIniBehind) {
  useWorkstation();
  install();
  const std::size_t made = 9;
  for (std::size_t failed = 1; failed <= made; ++failed) {
    SCOPED_TRACE(failed);
    std::size_t seen = 0;
    machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
      const bool fails = call.kind == sim::CallKind::ProfileWrite && ++seen == failed;
      return fails ? std::optional<SystemCode>(system_code::kDiskFull) : std::nullopt;
    });
    RiparaLudaTS(program_, kRoot);
    EXPECT_FALSE(exists("C:\\WINDOWS\\luda.ini"));
    EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia Luda: Impossibile "
                                  "scrivere il file: c:\\windows\\luda.ini"));
  }
  machine().callLog().setInjector(nullptr);
  RiparaLudaTS(program_, kRoot);
  EXPECT_TRUE(exists("C:\\WINDOWS\\luda.ini"));
}

}  // namespace
}  // namespace trelv::tests
