#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "integrated/TerminalServerRepairs.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"
#include "support/Refusals.h"
#include "support/Rows.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using namespace modProdTrelvManager;
using sim::CallKind;

constexpr const char* kRoot = "S:\\Lumo";
// Where the copies of a Terminal Server session lie, as the log names them.
const std::string kUser = "C:\\Users\\mario\\windows";
const std::string kProfile = "C:\\Users\\mario\\windows\\..\\..\\mario\\windows";
const std::string kSystem = "c:\\windows";
const std::string kNerioMaster = "S:\\Lumo\\mv\\nerio\\nerio.ini";
const std::string kModels = "S:\\Lumo\\mv\\ZM";
const std::string kModelsMaster = "S:\\Lumo\\mv\\ZM\\zeltomodelli.ini";
const std::string kLudaProgram = "S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe";
const std::string kLudaMaster = "S:\\Lumo\\mv\\LUDA2003\\Luda.ini";

constexpr const char* kCorvelBegun = "Gestione ProdTrelv - Inizio gestione anomalia Corvel";
constexpr const char* kNerioBegun = "Gestione ProdTrelv - Inizio Gestione Anomalia Nerio";
constexpr const char* kModelsBegun = "Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli";
constexpr const char* kLudaBegun = "Gestione ProdTrelv - Inizio Gestione anomalia Luda";
constexpr const char* kLudaNoTerminal =
    "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda";

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
 public:
  Repairs() {
    machine().setEdition(sim::WindowsEdition::Win2003TerminalServer);
    program_.state.startup.terminalServer = true;
    machine().mount("S:");
  }

  /// Takes the session off the Terminal Server: an ordinary workstation.
  void useWorkstation() {
    machine().setEdition(sim::WindowsEdition::XP);
    program_.state.startup.terminalServer = false;
    machine().removeTree(kUser);
  }
  /// Gives the session a profile folder that carries the domain, with a Windows folder of its own.
  void useProfileOfDomain() {
    machine().environment().put("USERDOMAIN", "UFFICIO");
    machine().environment().put("USERPROFILE", "C:\\Users\\mario.UFFICIO");
    machine().makeFolders("C:\\Users\\mario.UFFICIO\\windows");
  }
  void installLuda() {
    put(kLudaProgram, "MZ");
    machine().setFileVersion(kLudaProgram, {7, 10, 2, 1});
  }

  void repairNerio() { RiparaNerioTS(program_, kRoot); }
  void repairModels() { RiparaZeltomodelliTS(program_, kRoot); }
  void repairLuda() { RiparaLudaTS(program_, kRoot); }

  sim::SimMachine& machine() { return program_.sim; }
  sim::SimDisk& disk() { return machine().diskOf("C:\\"); }
  const std::vector<std::string>& lines() const { return program_.lines(); }
  void put(const std::string& path, const std::string& text) { machine().putFile(path, text); }
  bool exists(const std::string& path) { return machine().fileExists(path); }
  /// Text of a file, "-" where there is none.
  std::string text(const std::string& path) {
    return exists(path) ? machine().fileText(path) : "-";
  }
  std::string value(const std::string& file, const std::string& section, const std::string& key) {
    return machine().iniValue(file, section, key);
  }
  /// All files of the machine and the share.
  std::string everything() { return disk().tree() + machine().diskOf("S:\\").tree(); }

  FakeProgram program_;
};

// --- Corvel

constexpr const char* kNone = "-";
constexpr const char* kSystemText = "[Archivi]\r\nPath=S:\\Lumo\r\n";

TEST_F(Repairs, ProfileThatCarriesTheDomainIsTakenWhereItStands) {
  useProfileOfDomain();
  put("C:\\WINDOWS\\lumow.ini", "x");
  EXPECT_TRUE(RiparaCorvelTS(program_));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Inizio copia da: c:\\windows\\lumow.ini a: "
            "C:\\Users\\mario.UFFICIO\\windows\\..\\..\\mario.UFFICIO\\windows\\lumow.ini");
}

TEST_F(Repairs, ProfileIsTheLastPartOfTheSessionsOwnWhateverUserAndDomainAreCalled) {
  machine().environment().put("USERDOMAIN", "UFFICIO");
  machine().environment().put("USERPROFILE", "C:\\Profili\\mario.UFFICIO.000\\");
  machine().makeFolders("C:\\Profili\\mario.UFFICIO.000\\windows");
  machine().makeFolders("C:\\Profili\\mario.UFFICIO\\windows");
  put("C:\\WINDOWS\\lumow.ini", kSystemText);
  EXPECT_TRUE(RiparaCorvelTS(program_));
  EXPECT_EQ(text("C:\\Profili\\mario.UFFICIO.000\\windows\\lumow.ini"), kSystemText);
  EXPECT_FALSE(exists("C:\\Profili\\mario.UFFICIO\\windows\\lumow.ini"));
}

TEST_F(Repairs, ProfileOfAUserOfADomainIsThatOfTheNameWhereNoneCarriesTheDomain) {
  machine().environment().remove("USERPROFILE");
  machine().environment().put("USERDOMAIN", "UFFICIO");
  RiparaCorvelTS(program_);
  EXPECT_THAT(lines(),
              Contains(testing::EndsWith(" a: \\windows\\..\\..\\mario\\windows\\lumow.ini")));
}

// To the system both names are the same folder.
TEST_F(Repairs, ProfileOfAUserWithoutDomainIsNotThatOfANameWithAPoint) {
  machine().environment().remove("USERDOMAIN");
  machine().makeFolders("C:\\Users\\mario.");
  put("C:\\WINDOWS\\lumow.ini", kSystemText);
  EXPECT_TRUE(RiparaCorvelTS(program_));
  EXPECT_THAT(lines(),
              ElementsAre(kCorvelBegun,
                          "Gestione ProdTrelv - Inizio copia da: c:\\windows\\lumow.ini a: "
                          "C:\\Users\\mario\\windows\\..\\..\\mario\\windows\\lumow.ini"));
  EXPECT_EQ(text(kUser + "\\lumow.ini"), kSystemText);
}

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

/// A user's lumow.ini, the system's, and what the repair makes of the user's: the system's text, or
/// the user's as it was.
struct CorvelRow : Row {
  const char* user;
  const char* system;
  const char* after;
  bool copied;
};

const std::vector<CorvelRow> kCorvelRows{
    {"NoFile", kNone, kNone, kNone, false},
    {"SystemsOnly", kNone, kSystemText, kSystemText, true},
    {"EmptySystems", kNone, "", "", true},
    {"EmptyUsersOnly", "", kNone, "", false},
    {"EmptyUsers", "", kSystemText, kSystemText, true},
    {"UsersWithEmptyPathOnly", "[Archivi]\r\nPath=\r\n", kNone, "[Archivi]\r\nPath=\r\n", false},
    {"UsersThatNamesNoArchivesIsOverwritten", "[Archivi]\r\nPath=\r\n[Altro]\r\na=1\r\n",
     kSystemText, kSystemText, true},
    {"UsersWithAnotherSection", "[Altro]\r\nPath=X:\\\r\n", kSystemText, kSystemText, true},
    {"UsersThatPointsElsewhereOnly", "[archivi]\r\npath=X:\\\r\n", kNone,
     "[archivi]\r\npath=X:\\\r\n", false},
    {"UsersThatPointsElsewhere", "[archivi]\r\npath=X:\\\r\n", kSystemText,
     "[archivi]\r\npath=X:\\\r\n", false}};

class Corvel : public Repairs, public testing::WithParamInterface<CorvelRow> {
 public:
  /// Repairs the file in one of the two profile folders; the other stays without.
  void expectRepaired(const std::string& ini, const std::string& other) {
    const CorvelRow& row = GetParam();
    if (row.user != std::string(kNone)) put(ini, row.user);
    if (row.system != std::string(kNone)) put("C:\\WINDOWS\\lumow.ini", row.system);
    EXPECT_EQ(RiparaCorvelTS(program_), row.copied);
    EXPECT_EQ(text(ini), row.after);
    EXPECT_EQ(text("C:\\WINDOWS\\lumow.ini"), row.system);
    EXPECT_FALSE(exists(other));
    EXPECT_THAT(program_.reports(), IsEmpty());
  }
};

TEST_P(Corvel, OfTheUsersName) {
  machine().environment().put("USERDOMAIN", "UFFICIO");
  expectRepaired(kUser + "\\lumow.ini", "C:\\Users\\mario.UFFICIO\\windows\\lumow.ini");
}

TEST_P(Corvel, OfAProfileThatCarriesTheDomain) {
  useProfileOfDomain();
  expectRepaired("C:\\Users\\mario.UFFICIO\\windows\\lumow.ini", kUser + "\\lumow.ini");
}

INSTANTIATE_TEST_SUITE_P(In, Corvel, testing::ValuesIn(kCorvelRows), NameOfRow());

TEST_F(Repairs, CorvelLeavesAProtectedFileAndTellsIt) {
  put("C:\\WINDOWS\\lumow.ini", kSystemText);
  put(kUser + "\\lumow.ini", "[Archivi]\r\n");
  disk().setReadOnly(kUser + "\\lumow.ini");
  const std::string before = everything();
  EXPECT_FALSE(RiparaCorvelTS(program_));
  EXPECT_THAT(lines().back(), StartsWith("Gestione ProdTrelv - Gestione anomalia Corvel: "));
  EXPECT_EQ(everything(), before);
  // Some systems would replace it.
  EXPECT_EQ(machine().callLog().countOf("files.replaceFile"), 0U);
}

TEST_F(Repairs, CorvelWithoutAFileToCopyIsTold) {
  EXPECT_FALSE(RiparaCorvelTS(program_));
  EXPECT_THAT(lines(),
              ElementsAre(Eq(kCorvelBegun), StartsWith("Gestione ProdTrelv - Inizio copia da: "),
                          StartsWith("Gestione ProdTrelv - Gestione anomalia Corvel: ")));
}

// --- Nerio

TEST_F(Repairs, NerioIsCopiedToTheUserOnAWorkstationToo) {
  useWorkstation();
  put(kNerioMaster, "m");
  repairNerio();
  put("C:\\WINDOWS\\nerio.ini", "mio");
  repairNerio();
  constexpr const char* kNoTerminal =
      "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Nerio";
  EXPECT_THAT(lines(), ElementsAre(kNerioBegun, copyLine(kNerioMaster, "c:\\windows\\nerio.ini"),
                                   kNoTerminal, kNerioBegun, kNoTerminal));
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "mio");
}

TEST_F(Repairs, NerioThatIsNotInstalledYetHasItsLineAndNothingIsCopied) {
  useWorkstation();
  repairNerio();
  EXPECT_EQ(lines()[1], copyLine(kNerioMaster, "c:\\windows\\nerio.ini"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\nerio.ini"));
  put(kNerioMaster, "m");
  repairNerio();
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "m");
}

/// What an earlier start left behind is no hindrance, protected or not.
TEST_F(Repairs, CopyThatIsLeftOverFromAStartEndedByForceIsMadeAnew) {
  useWorkstation();
  put(kNerioMaster, "[NERIO]\r\n");
  for (const bool protectedCopy : {false, true}) {
    machine().removeTree("C:\\WINDOWS\\nerio.ini");
    put("C:\\WINDOWS\\nerio.ini.tmp", "[NER");
    disk().setReadOnly("C:\\WINDOWS\\nerio.ini.tmp", protectedCopy);
    repairNerio();
    EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "[NERIO]\r\n");
    EXPECT_FALSE(exists("C:\\WINDOWS\\nerio.ini.tmp"));
  }
}

TEST_F(Repairs, CopyThatCannotTakeItsPlaceLeavesNothing) {
  put(kNerioMaster, "m");
  machine().callLog().setInjector(refuse({CallKind::FileReplace}));
  const std::string before = everything();
  repairNerio();
  EXPECT_EQ(everything(), before);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia Nerio: Autorizzazione "
                                "negata: " +
                                kUser + "\\nerio.ini"));
}

TEST_F(Repairs, CopyThatAnotherSessionPutThereMeanwhileStays) {
  put(kNerioMaster, "m");
  machine().onCall("files.copy", [this] { put(kUser + "\\nerio.ini", "altrui"); });
  repairNerio();
  EXPECT_EQ(text(kUser + "\\nerio.ini"), "altrui");
  EXPECT_FALSE(exists(kUser + "\\nerio.ini.tmp"));
}

/// Else half of the other's copy could be put in the place of the file.
TEST_F(Repairs, CopyIsMadeByOneStartAtATime) {
  useWorkstation();
  put(kNerioMaster, "m");
  const std::string turn = "C:\\WINDOWS\\nerio.ini.lck";
  int asked = 0;
  for (const char* const call : {"files.copy", "files.replace"}) {
    machine().onCall(call, [&] {
      ++asked;
      EXPECT_TRUE(exists(turn));
    });
  }
  repairNerio();
  EXPECT_EQ(asked, 2);
  EXPECT_FALSE(exists(turn));
}

TEST_F(Repairs, CopyThatAnotherStartIsMakingIsLeftToIt) {
  useWorkstation();
  put(kNerioMaster, "m");
  put("C:\\WINDOWS\\nerio.ini.tmp", "[NER");
  const auto turn = machine().exclusion().takeForAnother("C:\\WINDOWS\\nerio.ini.lck", "");
  repairNerio();
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini.tmp"), "[NER");
  EXPECT_FALSE(exists("C:\\WINDOWS\\nerio.ini"));
  EXPECT_THAT(lines(),
              Contains(testing::AllOf(StartsWith("Gestione ProdTrelv - Gestione anomalia Nerio: "),
                                      testing::EndsWith("c:\\windows\\nerio.ini"))));
}

TEST_F(Repairs, NerioCopyThatFailsIsToldAndTheOthersAreDone) {
  put(kNerioMaster, "m");
  disk().denyWriting(kUser);
  repairNerio();
  EXPECT_THAT(lines(), Contains(StartsWith("Gestione ProdTrelv - Gestione anomalia Nerio: ")));
  EXPECT_EQ(text("C:\\WINDOWS\\nerio.ini"), "m");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// --- Every standing of the copies of one ini file

/// A product whose ini file is copied on, and what its repair does for the user's own.
struct Repaired {
  const char* ini;
  std::string master;
  const char* begun;
  void (Repairs::*repair)();
  /// The user's file when it is made: copied from the product, or made with this beginning.
  const char* made;
};

const std::vector<Repaired> kRepaired{
    {"nerio.ini", kNerioMaster, kNerioBegun, &Repairs::repairNerio, nullptr},
    {"zeltomodelli.ini", kModelsMaster, kModelsBegun, &Repairs::repairModels,
     "[Parametri]\r\nPathModelli=S:\\Lumo\\mv\\ZM\r\n"},
    {"luda.ini", kLudaMaster, kLudaBegun, &Repairs::repairLuda, "[PathNames]\r\nHomedir="}};

/// What stands before a repair, one bit each: the product's file, the user's, the system's. The
/// user's lies in the session's profile.
class EveryStanding : public Repairs, public testing::WithParamInterface<unsigned> {
 public:
  bool master() const { return (GetParam() & 1U) != 0; }
  bool user() const { return (GetParam() & 2U) != 0; }
  bool system() const { return (GetParam() & 4U) != 0; }

  void putIf(bool stands, const std::string& path, const std::string& content) {
    if (stands) put(path, content);
  }
  /// What a repair tells, line by line; `rows` says which line belongs to it and which does not.
  static std::vector<std::string> told(const std::vector<std::pair<bool, std::string>>& rows) {
    std::vector<std::string> expected;
    for (const auto& [belongs, line] : rows) {
      if (belongs) expected.push_back(line);
    }
    return expected;
  }
  /// A second run finds nothing to do.
  void expectNothingLeftFor(void (Repairs::*repair)()) {
    const std::string before = everything();
    const std::size_t writes = machine().openings("").writes;
    (this->*repair)();
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(machine().openings("").writes, writes);
    EXPECT_THAT(program_.reports(), IsEmpty());
  }
};

INSTANTIATE_TEST_SUITE_P(Of, EveryStanding, testing::Range(0U, 8U));

/// The profile carries the domain.
TEST_P(EveryStanding, GetsWhatIsMissing) {
  for (const Repaired& product : kRepaired) {
    SCOPED_TRACE(product.ini);
    program_.log.lines.clear();
    useProfileOfDomain();
    const std::string ini = product.ini;
    const std::string usersFile = "C:\\Users\\mario.UFFICIO\\windows\\" + ini;
    const std::string profilePath =
        "C:\\Users\\mario.UFFICIO\\windows\\..\\..\\mario.UFFICIO\\windows\\" + ini;
    const std::string systemFile = kSystem + "\\" + ini;
    machine().makeFolders(product.master.substr(0, product.master.rfind('\\')));
    putIf(master(), product.master, "master");
    putIf(user(), usersFile, "user");
    putIf(system(), systemFile, "system");
    (this->*product.repair)();
    const bool copied = product.made == nullptr;
    const bool there = user() || !copied || master();
    EXPECT_EQ(
        lines(),
        told({{true, product.begun},
              {!user(), copied ? copyLine(product.master, usersFile) : createdLine(usersFile)},
              {product.ini == std::string("zeltomodelli.ini"),
               "Gestione ProdTrelv - Ricerca esistenza file: " + product.master},
              {!system(), missingLine(systemFile)},
              {!system() && there, copyLine(profilePath, systemFile)}}));
    EXPECT_THAT(text(usersFile), StartsWith(user()     ? "user"
                                            : !copied  ? product.made
                                            : master() ? "master"
                                                       : "-"));
    EXPECT_EQ(text(systemFile), system() ? "system" : text(usersFile));
    EXPECT_EQ(text(product.master), master() ? "master" : "-");
    expectNothingLeftFor(product.repair);
  }
}

/// A profile that was never used by programs has no Windows folder: what belongs there fails and is
/// told, the system's comes from the product.
TEST_P(EveryStanding, OfAProfileWithoutWindowsFolderGetsTheOthers) {
  machine().removeTree(kUser);
  const std::string systemFile = kSystem + "\\nerio.ini";
  putIf(master(), kNerioMaster, "master");
  putIf(system(), systemFile, "system");
  repairNerio();
  std::vector<std::string> all = lines();
  for (std::string& line : all) {
    // What the system says of the folder is not this repair's.
    if (line.rfind("Gestione ProdTrelv - Gestione anomalia Nerio: ", 0) == 0) {
      line = "told";
    }
  }
  EXPECT_EQ(all, told({{true, kNerioBegun},
                       {true, copyLine(kNerioMaster, kUser + "\\nerio.ini")},
                       {master(), "told"},
                       {master(), copyLine(kNerioMaster, kProfile + "\\nerio.ini")},
                       {master(), "told"},
                       {!system(), missingLine(systemFile)},
                       {!system() && master(), copyLine(kNerioMaster, systemFile)}}));
  EXPECT_EQ(text(systemFile), system() ? "system" : master() ? "master" : "-");
  EXPECT_FALSE(machine().folderExists(kUser));
}

// --- Two users of one server

/// A Terminal Server whose products stand on the share, and on which two users have sessions.
class TwoUsers {
 public:
  TwoUsers() {
    machine_.setEdition(sim::WindowsEdition::Win2008TerminalServer);
    machine_.mount("S:");
    machine_.putFile(kNerioMaster, "[NERIO]\r\nVersione=03.20\r\n");
    machine_.makeFolders(kModels);
    machine_.putFile(kLudaProgram, "MZ");
    machine_.setFileVersion(kLudaProgram, {7, 10, 2, 1});
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
    RiparaCorvelTS(program);
    RiparaNerioTS(program, kRoot);
    RiparaZeltomodelliTS(program, kRoot);
    RiparaLudaTS(program, kRoot);
    enter("mario", profile);
    EXPECT_TRUE(program.reports().empty());
  }

  /// Everything below the folders of both users and of the system, by name.
  std::string files() {
    std::string text;
    for (const char* const folder :
         {"C:\\Users\\mario\\windows", "C:\\Users\\anna\\windows", "C:\\WINDOWS"}) {
      std::vector<std::string> names = machine_.diskOf("C:\\").names(folder);
      std::sort(names.begin(), names.end());
      for (const std::string& name : names) {
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

TEST(TerminalServer, EachUserGetsHisOwnCopies) {
  TwoUsers both;
  both.repairAs("mario");
  for (const char* const folder : {"C:\\Users\\mario\\windows\\", "C:\\WINDOWS\\"}) {
    both.machine().putFile(std::string(folder) + "nerio.ini", "as it was");
  }
  both.machine().removeTree(kUser + "\\lumow.ini");
  both.repairAs("anna");
  EXPECT_EQ(both.machine().fileText("C:\\Users\\anna\\windows\\nerio.ini"),
            "[NERIO]\r\nVersione=03.20\r\n");
  EXPECT_EQ(both.machine().fileText(kUser + "\\nerio.ini"), "as it was");
  EXPECT_EQ(both.machine().fileText("C:\\WINDOWS\\nerio.ini"), "as it was");
  EXPECT_TRUE(both.machine().fileExists("C:\\Users\\anna\\windows\\lumow.ini"));
  EXPECT_FALSE(both.machine().fileExists(kUser + "\\lumow.ini"));
}

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

TEST_F(Repairs, ZeltomodelliDoesNothingOnAWorkstationOrWhereItIsNotInstalled) {
  repairModels();
  EXPECT_FALSE(exists(kUser + "\\zeltomodelli.ini"));
  useWorkstation();
  put(kModels + "\\Dovra2010.ini", "x");
  repairModels();
  EXPECT_THAT(lines(), ElementsAre(kModelsBegun, kModelsBegun,
                                   "Gestione ProdTrelv - Ambiente Terminal non "
                                   "rilevato. Nessun intervento Anomalia ZM"));
  EXPECT_TRUE(exists(kModels + "\\Dovra2010.ini"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
}

TEST_F(Repairs, ZeltomodelliLosesItsObsoleteFile) {
  put(kModels + "\\Dovra2010.ini", "x");
  repairModels();
  EXPECT_FALSE(exists(kModels + "\\Dovra2010.ini"));
  EXPECT_EQ(lines()[2],
            "Cancellazione file: S:\\Lumo\\mv\\ZM\\Dovra2010.ini effettuata con successo");
}

/// Others may have it open, or the user no right to delete on the share: no form at every start.
TEST_F(Repairs, ZeltomodelliObsoleteFileThatCannotBeDeletedIsToldInALine) {
  const std::string obsolete = kModels + "\\Dovra2010.ini";
  put(obsolete, "x");
  machine().diskOf("S:\\").setReadOnly(obsolete);
  repairModels();
  EXPECT_TRUE(exists(obsolete));
  ASSERT_GT(lines().size(), 3U);
  EXPECT_EQ(
      lines()[2],
      "Gestione ProdTrelv - Gestione anomalia ZeltoModelli: Autorizzazione negata: " + obsolete);
  EXPECT_EQ(lines()[3], "Gestione ProdTrelv - Ricerca esistenza file: " + kModelsMaster);
  EXPECT_TRUE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(Repairs, ZeltomodelliOfAnotherPlaceIsPointedAtThisOneOneOfTheUsersOwnChoiceStays) {
  const std::string ini = kUser + "\\zeltomodelli.ini";
  machine().makeFolders(kModels);
  const auto repaired = [&](const std::string& content) {
    put(ini, content);
    program_.configurationFiles.forget();
    repairModels();
    return text(ini);
  };
  EXPECT_EQ(repaired("[Parametri]\r\nPathModelli=T:\\Vecchio\\mv\\zm\r\nAltro=1\r\n"),
            "[Parametri]\r\nPathModelli=S:\\Lumo\\mv\\ZM\r\nAltro=1\r\n");
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("Impossibile"))));
  for (const std::string content :
       {"[Parametri]\nPathModelli=D:\\Modelli\n", "[Parametri]\n PathModelli = s:\\LUMO\\mv\\zm\n",
        "[Altro]\nx=1\n"}) {
    EXPECT_EQ(repaired(content), content);
  }
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("creazione"))));
}

TEST_F(Repairs, ZeltomodelliIniThatCannotBePointedAtThisPlaceIsTold) {
  const std::string ini = kUser + "\\zeltomodelli.ini";
  machine().makeFolders(kModels);
  put(ini, "[Parametri]\r\nPathModelli=T:\\Vecchio\\mv\\zm\r\n");
  disk().setReadOnly(ini);
  repairModels();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia ZeltoModelli: Impossibile "
                                "scrivere il file: " +
                                ini));
}

TEST_F(Repairs, ZeltomodelliIniThatCannotBeMadeIsTold) {
  machine().makeFolders(kModels);
  disk().denyWriting(kUser);
  repairModels();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia ZeltoModelli: Impossibile "
                                "scrivere il file: " +
                                kUser + "\\zeltomodelli.ini"));
  EXPECT_FALSE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
}

TEST_F(Repairs, IniThatCannotBeMadeGetsNoOtherInItsPlaceAndIsMadeNextTime) {
  put(kModelsMaster, "[Altro]\r\n");
  installLuda();
  put(kLudaMaster, "[LUDA]\r\nVersione=7.10.2.1\r\n");
  const auto firstWriteFails = refuse(CallKind::ProfileWrite, 1, 1, system_code::kDiskFull);
  machine().callLog().setInjector(firstWriteFails);
  repairModels();
  machine().callLog().setInjector(firstWriteFails);
  repairLuda();
  for (const char* const ini : {"zeltomodelli.ini", "luda.ini"}) {
    EXPECT_FALSE(exists(kUser + "\\" + ini) || exists(kSystem + "\\" + ini)) << ini;
  }
  repairModels();
  repairLuda();
  EXPECT_EQ(value(kUser + "\\zeltomodelli.ini", "Parametri", "PathModelli"), kModels);
  EXPECT_EQ(value(kUser + "\\luda.ini", "Drive", "Floppy"), "A:");
}

/// The look that asks whether the product is there comes last, when the user's own was refused.
TEST_F(Repairs, ProductThatNobodyCanLookAtPutsNoOtherIniInThePlaceOfOneThatCannotBeMade) {
  put(kModelsMaster, "[Altro]\r\n");
  disk().denyWriting(kUser);
  const std::string asksForTheIni =
      "Gestione ProdTrelv - Ricerca esistenza file: " + std::string(kModelsMaster);
  machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
    const std::vector<std::string> told = lines();
    const bool isAsked = call.kind == CallKind::FileLook && call.path == kModels &&
                         std::count(told.begin(), told.end(), asksForTheIni) > 0;
    return isAsked ? std::optional<SystemCode>(system_code::kSharingViolation) : std::nullopt;
  });
  repairModels();
  machine().callLog().setInjector(nullptr);
  EXPECT_FALSE(exists("C:\\WINDOWS\\zeltomodelli.ini"));
}

// --- Luda

TEST_F(Repairs, LudaMakesTheUsersIniOnAWorkstationToo) {
  useWorkstation();
  installLuda();
  repairLuda();
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
  EXPECT_FALSE(exists(kLudaMaster)) << "the product's own is not made";
}

TEST_F(Repairs, LudaMakesNothingWithoutTheProductOrWhereAnIniIsThere) {
  useWorkstation();
  repairLuda();
  EXPECT_FALSE(exists("C:\\WINDOWS\\luda.ini"));
  installLuda();
  put("C:\\WINDOWS\\luda.ini", "[PathNames]\nHomedir=X:\\\n");
  repairLuda();
  EXPECT_EQ(text("C:\\WINDOWS\\luda.ini"), "[PathNames]\nHomedir=X:\\\n");
  EXPECT_THAT(lines(), ElementsAre(kLudaBegun, kLudaNoTerminal, kLudaBegun, kLudaNoTerminal));
}

TEST_F(Repairs, LudaKeepsTheProgramsVersionInTheProductsIni) {
  useWorkstation();
  put(kLudaProgram, "MZ");
  put(kLudaMaster, "[LUDA]\r\nVersione=07.00\r\nNome=x\r\n");
  repairLuda();
  // A program without version leaves it empty in the user's and as it is in the product's.
  EXPECT_THAT(text("C:\\WINDOWS\\luda.ini"),
              HasSubstr("[LUDA]\r\nVersione=\r\nAggiornamento=\r\n"));
  EXPECT_EQ(text(kLudaMaster), "[LUDA]\r\nVersione=07.00\r\nNome=x\r\n");
  installLuda();
  repairLuda();
  EXPECT_EQ(text(kLudaMaster), "[LUDA]\r\nVersione=7.10.2.1\r\nNome=x\r\n");
  // It is read, and written only where it differs.
  machine().callLog().clear();
  FakeProgram next(machine());
  RiparaLudaTS(next, kRoot);
  EXPECT_EQ(machine().openings("S:\\").files(), 1U);
  EXPECT_EQ(machine().openings("S:\\").reads, 1U);
}

TEST_F(Repairs, LudaOnATerminalServerCopiesTheUsersIniOn) {
  installLuda();
  repairLuda();
  EXPECT_THAT(lines(), ElementsAre(kLudaBegun, createdLine(kUser + "\\luda.ini"),
                                   missingLine(kSystem + "\\luda.ini"),
                                   copyLine(kProfile + "\\luda.ini", kSystem + "\\luda.ini")));
  EXPECT_EQ(text("C:\\WINDOWS\\luda.ini"), text(kUser + "\\luda.ini"));
}

TEST_F(Repairs, WindowsFolderThatIsNotToldLeavesNoFileInTheRoot) {
  useWorkstation();
  put(kNerioMaster, "m");
  put(kLudaProgram, "MZ");
  machine().callLog().setInjector(refuse({CallKind::WindowsFolderQuery}));
  const std::string before = everything();
  repairNerio();
  repairLuda();
  EXPECT_EQ(everything(), before);
  for (const std::string product : {"Nerio", "Luda"}) {
    EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia " + product +
                                  ": Cartella di Windows non disponibile"));
  }
}

TEST_F(Repairs, LudaLeavesNoHalfIniBehind) {
  useWorkstation();
  installLuda();
  constexpr std::size_t kValues = 9;
  for (std::size_t failed = 1; failed <= kValues; ++failed) {
    SCOPED_TRACE(failed);
    program_.log.lines.clear();
    // A write that fails is tried again: the disk stays full.
    machine().callLog().setInjector(refuse(CallKind::ProfileWrite, failed,
                                           std::numeric_limits<std::size_t>::max(),
                                           system_code::kDiskFull));
    repairLuda();
    EXPECT_FALSE(exists("C:\\WINDOWS\\luda.ini"));
    EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione anomalia Luda: Impossibile "
                                  "scrivere il file: c:\\windows\\luda.ini"));
  }
  machine().callLog().setInjector(nullptr);
  repairLuda();
  EXPECT_TRUE(exists("C:\\WINDOWS\\luda.ini"));
}

}  // namespace
}  // namespace trelv::tests
