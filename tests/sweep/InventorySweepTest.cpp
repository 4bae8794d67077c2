// Detection, report and repairs, again and again: each time one more call of the machine fails.
// Whatever fails, the procedure ends, what stood there stands as it was or as it is to become, and
// the failure is told, or it stands by name in the table.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "integrated/StandaloneDetection.h"
#include "integrated/TerminalServerRepairs.h"
#include "inventory/InstallationMode.h"
#include "inventory/ProductReport.h"
#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using machine::Hive;

struct Silent {
  /// How the call's text begins.
  const char* call;
  const char* why;
};

/// Failures that nobody is told of.
const std::vector<Silent> kSilent{
    {"system.driveType", "a drive without type counts as local"},
    {"system.connectionName", "the device is asked for instead"},
    {"system.deviceNames", "the rest of the path leads to no share of this computer"},
    {"system.computerName", "every share counts as one of this computer"},
    {"support.temporaryPath", "the system's temporary folder is taken instead"},
    {"registry.", "a key or value that cannot be read counts as missing"},
    {"profiles.readValue", "ini reading answers its default"},
    {"files.read", "the platform's functions are asked instead"},
    {"files.look", "counts as missing"},
    {"versions.read", "a program without version"},
    {"environment.get", "counts as not set"},
    {"system.userName", "a user without name has no profile folder"},
    {"configuration.getConfigPath", "has its own line"},
    {"configuration.getParameter", "reported by the store"}};

bool isSilent(const std::string& call) {
  return std::any_of(kSilent.begin(), kSilent.end(), [&call](const Silent& row) {
    return call.compare(0, std::string(row.call).size(), row.call) == 0;
  });
}

/// A session on a Terminal Server with remains of everything: Nerio in its folder, a Tarsena2 on
/// both sides, a Luda with an ini file of the product, a Zeltomodelli with an obsolete file.
class Session {
 public:
  Session() {
    sim::SimMachine& machine = program_.sim;
    machine.setEdition(sim::WindowsEdition::Win2008TerminalServer);
    program_.state.startup.terminalServer = true;
    machine.mount("S:");
    machine.system().connectDrive("S:", "\\\\SRV\\Dati");
    machine.putFile("S:\\Lumo\\mv\\nerio\\nerio.ini", "[NERIO]\r\nVersione=03.20\r\n");
    machine.registry().setText(Hive::LocalMachine, "Software\\Classes\\ClsID\\{1}\\InprocServer32",
                               "", "S:\\Lumo\\mv\\nerio\\setup\\korvatgestionepratiche.ocx");
    machine.putFile("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
    machine.putFile("S:\\Lumo\\mv\\q2\\mvq2.ini", "[AMBIENTE]\r\nVRINST=02.92\r\n");
    machine.putFile("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
    machine.setFileVersion("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", {7, 10, 0, 0});
    machine.putFile("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "[LUDA]\r\nVersione=07.00\r\nNome=x\r\n");
    machine.putFile("S:\\Lumo\\mv\\ZM\\Dovra2010.ini", "x");
    machine.putFile("S:\\Lumo\\mv\\ZM\\vers.ini", "06.50\r\n");
    machine.registry().setText(
        Hive::LocalMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe",
        "Path", "C:\\ZM");
  }

  FakeProgram& program() { return program_; }
  sim::SimMachine& machine() { return program_.sim; }

  bool told() const { return !program_.reports().empty() || hasFailureLine(); }

  /// What others own and nobody may change or take away.
  std::string foreign() {
    std::string text;
    for (const char* const file :
         {"S:\\Lumo\\mv\\nerio\\nerio.ini", "C:\\WINDOWS\\lumow.ini", "S:\\Lumo\\mv\\q2\\mvq2.ini",
          "S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "S:\\Lumo\\mv\\ZM\\vers.ini"}) {
      text += machine().fileText(file);
    }
    return text + machine().iniValue("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "LUDA", "Nome");
  }

 private:
  bool hasFailureLine() const {
    return std::any_of(
        program_.lines().begin(), program_.lines().end(), [](const std::string& line) {
          return line.find("Gestione anomalia Corvel: ") != std::string::npos ||
                 line.find("Gestione anomalia Nerio: ") != std::string::npos ||
                 line.find("Gestione anomalia ZeltoModelli: ") != std::string::npos ||
                 line.find("Gestione anomalia Luda: ") != std::string::npos ||
                 line.find("Errore in ") != std::string::npos ||
                 line.find("errore in ") != std::string::npos;
        });
  }

  FakeProgram program_;
};

using Work = std::function<void(FakeProgram&)>;

void detect(FakeProgram& program) {
  modProdTrelvInfo::CreateProductReport(program);
  std::string list;
  modProdTrelvManager::EsisteProdottoComplementareStandalone(program, "S:\\Lumo", list);
}

void repair(FakeProgram& program) {
  modProdTrelvManager::RiparaCorvelTS(program);
  modProdTrelvManager::RiparaNerioTS(program, "S:\\Lumo");
  modProdTrelvManager::RiparaZeltomodelliTS(program, "S:\\Lumo");
  modProdTrelvManager::RiparaLudaTS(program, "S:\\Lumo");
}

/// All files of the machine and the share, sorted.
std::vector<std::string> filesOf(sim::SimMachine& machine) {
  std::istringstream text(machine.diskOf("C:\\").tree() + machine.diskOf("S:\\").tree());
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

/// What only one of two sorted lists has: "-" the first, "+" the second.
std::string difference(const std::vector<std::string>& first,
                       const std::vector<std::string>& second) {
  std::string text;
  for (const std::string& line : first) {
    text += std::binary_search(second.begin(), second.end(), line) ? "" : "-" + line + "\n";
  }
  for (const std::string& line : second) {
    text += std::binary_search(first.begin(), first.end(), line) ? "" : "+" + line + "\n";
  }
  return text;
}

/// The machine's files as a run without failures leaves them.
std::vector<std::string> repaired() {
  Session session;
  repair(session.program());
  return filesOf(session.machine());
}

/// Fails one call; its text, empty when the work has fewer calls.
std::string failOnce(const Work& work, std::size_t number, std::size_t variant,
                     std::vector<std::string>* afterwards) {
  Session session;
  const std::string foreign = session.foreign();
  std::string call;
  {
    sim::FailingMachine failing(session.machine(), number, sim::FailureSpan::Once, variant);
    work(session.program());
    if (!failing.reached()) {
      return "";
    }
    call = failing.failedCall();
    SCOPED_TRACE("call " + std::to_string(number) + ", variant " + std::to_string(variant) +
                 " failed: " + failing.failedCall());
    EXPECT_TRUE(session.told() || isSilent(failing.failedCall())) << "nobody told it";
    EXPECT_EQ(session.foreign(), foreign);
  }
  // The next start.
  FakeProgram next(session.machine());
  next.state.startup.terminalServer = true;
  work(next);
  if (afterwards != nullptr) {
    *afterwards = filesOf(session.machine());
  }
  return call;
}

TEST(InventoryUnderFaults, DetectionTellsEachOrCountsItAsMissing) {
  std::size_t number = 1;
  for (; !failOnce(detect, number, number % 3, nullptr).empty(); ++number) {
  }
  EXPECT_GT(number, 60U);
}

/// Failures after which the ini files of Luda are other ones than without, and why.
const std::vector<Silent> kOtherLuda{
    {"versions.read", "the version stays empty"},
    {"system.userName", "without the user's name the product's own file becomes the system's"},
    {"environment.get USERPROFILE", "the same without the profile"}};

bool mayDiffer(const std::string& call) {
  return std::any_of(kOtherLuda.begin(), kOtherLuda.end(), [&call](const Silent& row) {
    return call.compare(0, std::string(row.call).size(), row.call) == 0;
  });
}

TEST(InventoryUnderFaults, RepairsTellEachAndTheNextStartCompletesThem) {
  const std::vector<std::string> complete = repaired();
  std::size_t number = 1;
  std::vector<std::string> afterwards;
  for (std::string call; !(call = failOnce(repair, number, number % 3, &afterwards)).empty();
       ++number) {
    EXPECT_TRUE(difference(complete, afterwards).empty() || mayDiffer(call))
        << "after a failure of " << call << ":\n"
        << difference(complete, afterwards);
  }
  EXPECT_GT(number, 40U);
}

TEST(InventoryUnderFaults, EverythingThatFailsFromACallOnLosesNothing) {
  for (const Work& work : {Work(detect), Work(repair)}) {
    for (std::size_t number = 1;; ++number) {
      SCOPED_TRACE(number);
      Session session;
      const std::string foreign = session.foreign();
      sim::FailingMachine failing(session.machine(), number, sim::FailureSpan::FromThenOn, number);
      work(session.program());
      EXPECT_EQ(session.foreign(), foreign);
      if (!failing.reached()) {
        EXPECT_GT(number, 40U);
        break;
      }
    }
  }
}

/// Ends the repairs by force at a call, then starts anew. False when they have fewer calls.
bool killOnce(std::size_t number, sim::Unfinished left, const std::vector<std::string>& complete) {
  Session session;
  std::string call;
  {
    const sim::KilledMachine killed(session.machine(), number, left);
    try {
      repair(session.program());
    } catch (const sim::Killed&) {
      call = killed.killedCall();
    }
  }
  FakeProgram next(session.machine());
  next.state.startup.terminalServer = true;
  repair(next);
  EXPECT_EQ(difference(complete, filesOf(session.machine())), "")
      << "ended by force at call " << number << ", " << call;
  return !call.empty();
}

TEST(RepairsEndedByForce, AtEachCallAreCompletedByTheNextStart) {
  const std::vector<std::string> complete = repaired();
  for (const sim::Unfinished left :
       {sim::Unfinished::NotBegun, sim::Unfinished::Empty, sim::Unfinished::Half}) {
    std::size_t number = 1;
    while (killOnce(number, left, complete)) {
      ++number;
    }
    EXPECT_GT(number, 40U);
  }
}

TEST(InventoryUnderFaults, FilesOfTheUserStayWhateverFails) {
  const std::vector<std::string> names{"nerio.ini", "luda.ini", "zeltomodelli.ini"};
  for (std::size_t number = 1;; ++number) {
    Session session;
    for (const std::string& name : names) {
      session.machine().putFile("C:\\WINDOWS\\" + name, "[x]\r\na=system\r\n");
      session.machine().putFile("C:\\Users\\mario\\windows\\" + name, "[x]\r\na=user\r\n");
    }
    const std::string lumow = "C:\\Users\\mario\\windows\\lumow.ini";
    session.machine().putFile(lumow, "[Archivi]\r\nPath=X:\\\r\n");
    sim::FailingMachine failing(session.machine(), number, sim::FailureSpan::Once, number);
    repair(session.program());
    if (!failing.reached()) {
      EXPECT_GT(number, 20U);
      return;
    }
    SCOPED_TRACE(failing.failedCall());
    for (const std::string& name : names) {
      EXPECT_EQ(session.machine().fileText("C:\\WINDOWS\\" + name), "[x]\r\na=system\r\n");
      EXPECT_EQ(session.machine().fileText("C:\\Users\\mario\\windows\\" + name),
                "[x]\r\na=user\r\n");
    }
    EXPECT_EQ(session.machine().fileText(lumow), "[Archivi]\r\nPath=X:\\\r\n");
  }
}

/// Only what decides whether a product stands on its own: the folder of Tarsena2's client.
TEST(InventoryUnderFaults, ReportThatFailsHidesNoProduct) {
  for (std::size_t number = 1;; ++number) {
    Session session;
    session.machine().registry().setText(Hive::LocalMachine, "Software\\Lumo\\Programmi",
                                         "PathLocale", "C:\\Client");
    session.machine().setIniValue("C:\\Client\\mv\\q2\\mvq2.ini", "AMBIENTE", "VRINST", "1");
    std::size_t appends = 0;
    session.machine().callLog().setInjector(
        [&](const sim::SimCall& call) -> std::optional<SystemCode> {
          const bool ours = call.text.find("ProdInfo.txt") != std::string::npos;
          return ours && ++appends == number ? std::optional<SystemCode>(system_code::kDiskFull)
                                             : std::nullopt;
        });
    modProdTrelvInfo::CreateProductReport(session.program());
    EXPECT_TRUE(modProdTrelvInfo::VerifyInstallationMode(session.program(), Product::Tarsena2))
        << number;
    if (appends < number) {
      EXPECT_GT(number, 10U);
      return;
    }
  }
}

}  // namespace
}  // namespace trelv::tests
