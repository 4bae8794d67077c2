// Detection, report and repairs, again and again: each time one more call of the machine fails, or
// everything from it on, or the program ends there by force. Whatever fails, the procedure ends,
// what stood there stands as it was or as it is to become, and the failure is told, or it stands by
// name in the table.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "integrated/StandaloneDetection.h"
#include "integrated/TerminalServerRepairs.h"
#include "inventory/InstallationMode.h"
#include "inventory/ProductReport.h"
#include "prove/Invariants.h"
#include "support/FakeProgram.h"
#include "sweep/ExpectSwept.h"

namespace trelv::tests {
namespace {

using machine::Hive;

/// Failures that nobody is told of.
const CallTable<Exception> kSilent{
    {"system.driveType", "a drive without type counts as local"},
    {"system.connectionName", "the device is asked for instead"},
    {"system.computerName", "every share counts as one of this computer"},
    {"registry.", "a key or value that cannot be read counts as missing"},
    {"profiles.readValue", "ini reading answers its default"},
    {"files.read", "the platform's functions are asked instead"},
    {"files.look", "counts as missing"},
    {"versions.read", "a program without version"},
    {"environment.get", "counts as not set"},
    {"configuration.getConfigPath", "has its own line"},
    {"exclusion.take", "the copy is made without a turn; one that somebody else has is told"}};

/// Failures after which the ini files of Luda are other ones than without.
const CallTable<Exception> kOtherLuda{
    {"versions.read", "the version stays empty"},
    {"environment.get USERPROFILE", "the same without the profile"}};

/// What runs, and on which machine.
enum class Work {
  Detection,
  /// The report and the question for Tarsena2, whose client is installed.
  Report,
  Repairs,
  /// Where the user and the system have ini files of their own.
  RepairsBesideFilesOfTheUser
};

using Lines = std::vector<std::string>;

/// What only one of two sorted lists has: "-" the first, "+" the second.
std::string difference(const Lines& first, const Lines& second) {
  std::string text;
  for (const std::string& line : first) {
    text += std::binary_search(second.begin(), second.end(), line) ? "" : "-" + line + "\n";
  }
  for (const std::string& line : second) {
    text += std::binary_search(first.begin(), first.end(), line) ? "" : "+" + line + "\n";
  }
  return text;
}

/// A session on a Terminal Server with remains of everything: Nerio in its folder, a Tarsena2 on
/// both sides, a Luda with an ini file of the product, a Zeltomodelli with an obsolete file.
class SweptSession : public SweptWorld {
 public:
  /// `repaired` holds the files that repairs without failures leave.
  explicit SweptSession(Work work, const Lines& repaired = {});

  sim::SimMachine& machine() override { return program_.sim; }
  void run() override { runWith(program_); }
  void judge(const Fault& fault, Findings& findings) override;
  /// All files of the machine and the share, sorted.
  Lines files();

 private:
  void putFilesOfTheUser();
  void runWith(FakeProgram& program);
  std::string foreign();
  bool told() const;

  const Work work_;
  const Lines repaired_;
  FakeProgram program_;
  bool productIsFound_ = false;
  /// Files of others; nobody may change them or take them away.
  Lines foreignFiles_{"S:\\Lumo\\mv\\nerio\\nerio.ini", "C:\\WINDOWS\\lumow.ini",
                      "S:\\Lumo\\mv\\q2\\mvq2.ini", "S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe",
                      "S:\\Lumo\\mv\\ZM\\vers.ini"};
  std::string foreignBefore_;
};

SweptSession::SweptSession(Work work, const Lines& repaired) : work_(work), repaired_(repaired) {
  machine().setEdition(sim::WindowsEdition::Win2008TerminalServer);
  program_.state.startup.terminalServer = true;
  machine().mount("S:");
  machine().system().connectDrive("S:", "\\\\SRV\\Dati");
  sim::SimRegistry& registry = machine().registry();
  machine().putFile("S:\\Lumo\\mv\\nerio\\nerio.ini", "[NERIO]\r\nVersione=03.20\r\n");
  registry.setText(Hive::LocalMachine, "Software\\Classes\\ClsID\\{1}\\InprocServer32", "",
                   "S:\\Lumo\\mv\\nerio\\setup\\korvatgestionepratiche.ocx");
  machine().putFile("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
  machine().putFile("S:\\Lumo\\mv\\q2\\mvq2.ini", "[AMBIENTE]\r\nVRINST=02.92\r\n");
  machine().putFile("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
  machine().setFileVersion("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", {7, 10, 0, 0});
  machine().putFile("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "[LUDA]\r\nVersione=07.00\r\nNome=x\r\n");
  machine().putFile("S:\\Lumo\\mv\\ZM\\Dovra2010.ini", "x");
  machine().putFile("S:\\Lumo\\mv\\ZM\\vers.ini", "06.50\r\n");
  registry.setText(Hive::LocalMachine,
                   "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe", "Path",
                   "C:\\ZM");
  if (work == Work::RepairsBesideFilesOfTheUser) {
    putFilesOfTheUser();
  } else if (work == Work::Report) {
    registry.setText(Hive::LocalMachine, "Software\\Lumo\\Programmi", "PathLocale", "C:\\Client");
    machine().setIniValue("C:\\Client\\mv\\q2\\mvq2.ini", "AMBIENTE", "VRINST", "1");
  }
  foreignBefore_ = foreign();
}

void SweptSession::putFilesOfTheUser() {
  for (const std::string name : {"nerio.ini", "luda.ini", "zeltomodelli.ini"}) {
    machine().putFile("C:\\WINDOWS\\" + name, "[x]\r\na=system\r\n");
    machine().putFile("C:\\Users\\mario\\windows\\" + name, "[x]\r\na=user\r\n");
    foreignFiles_.push_back("C:\\WINDOWS\\" + name);
    foreignFiles_.push_back("C:\\Users\\mario\\windows\\" + name);
  }
  foreignFiles_.emplace_back("C:\\Users\\mario\\windows\\lumow.ini");
  machine().putFile(foreignFiles_.back(), "[Archivi]\r\nPath=X:\\\r\n");
}

void SweptSession::runWith(FakeProgram& program) {
  using namespace modProdTrelvManager;
  if (work_ == Work::Detection || work_ == Work::Report) {
    modProdTrelvInfo::CreateProductReport(program);
  }
  if (work_ == Work::Detection) {
    std::string list;
    EsisteProdottoComplementareStandalone(program, list);
  } else if (work_ == Work::Report) {
    productIsFound_ = modProdTrelvInfo::VerifyInstallationMode(program, Product::Tarsena2);
  } else {
    RiparaCorvelTS(program);
    RiparaNerioTS(program, "S:\\Lumo");
    RiparaZeltomodelliTS(program, "S:\\Lumo");
    RiparaLudaTS(program, "S:\\Lumo");
  }
}

std::string SweptSession::foreign() {
  std::string text;
  for (const std::string& file : foreignFiles_) {
    text += machine().fileText(file);
  }
  return text + machine().iniValue("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "LUDA", "Nome");
}

bool SweptSession::told() const {
  return !program_.reports().empty() ||
         tellsOneOf(program_.lines(),
                    "Gestione anomalia Corvel: |Gestione anomalia Nerio: |"
                    "Gestione anomalia ZeltoModelli: |Gestione anomalia Luda: |"
                    "Errore in |errore in ");
}

Lines SweptSession::files() {
  std::istringstream text(machine().diskOf("C:\\").tree() + machine().diskOf("S:\\").tree());
  Lines lines;
  for (std::string line; std::getline(text, line);) {
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

void SweptSession::judge(const Fault& fault, Findings& findings) {
  expect(findings, Invariant::OthersSurvive, foreign() == foreignBefore_,
         "files of others changed");
  if (work_ == Work::Report) {
    expect(findings, Invariant::FailureTold,
           productIsFound_ || !tellsOneOf({fault.call}, "ProdInfo.txt"), "hides a product");
    return;
  }
  if (fault.trouble == Trouble::FailsOnce) {
    expect(findings, Invariant::FailureTold, told() || kSilent.holds(fault), "nobody told it");
  }
  // The next start.
  FakeProgram next(machine());
  next.state.startup.terminalServer = true;
  runWith(next);
  if (work_ == Work::Repairs && fault.trouble != Trouble::FailsFromThenOn) {
    const std::string left = difference(repaired_, files());
    expect(findings, Invariant::Heals, left.empty() || kOtherLuda.holds(fault),
           "the next start leaves:\n" + left);
  }
}

TEST(InventorySweep, FailuresAreToldOrCountAsMissingAndTheNextStartCompletesTheRepairs) {
  SweptSession complete(Work::Repairs);
  complete.run();
  expectSwept<SweptSession>({Trouble::FailsOnce, Trouble::FailsFromThenOn, Trouble::Killed}, 40,
                            Work::Repairs, complete.files());
  expectSwept<SweptSession>({Trouble::FailsOnce, Trouble::FailsFromThenOn}, 60, Work::Detection);
  expectEachRowMatched(kSilent);
  expectEachRowMatched(kOtherLuda);
}

TEST(InventorySweep, FilesOfTheUserStayWhateverFails) {
  expectSwept<SweptSession>({Trouble::FailsOnce}, 20, Work::RepairsBesideFilesOfTheUser);
}

TEST(InventorySweep, ReportThatFailsHidesNoProduct) {
  expectSwept<SweptSession>({Trouble::FailsOnce}, 20, Work::Report);
}

}  // namespace
}  // namespace trelv::tests
