// How often a start that finds nothing to do opens files on the share: on a busy network each
// opening costs more than everything else.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/Installation.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

std::string numbered(const std::string& name, int index) {
  return name + (index < 10 ? "0" : "") + std::to_string(index);
}

/// `products` products with `sections` update sections each, all at the recorded versions, on a
/// Dovra host.
class UpToDateInstallation : public Installation {
 public:
  UpToDateInstallation(int products, int sections) {
    std::vector<ProductEntry> entries{{"NERIO", "Nerio", configurationOf(1)}};
    for (int i = 2; i <= products; ++i) {
      entries.push_back({numbered("P", i), numbered("Prodotto", i), configurationOf(i)});
    }
    putCatalogue(entries);
    std::vector<Section> all;
    for (int i = 1; i <= sections; ++i) {
      all.push_back({numbered("Update", i), "01.00", {"S:\\Lumo\\a.exe"}, {"S:\\Lumo\\a.exe"}});
    }
    for (int i = 1; i <= products; ++i) {
      putConfiguration(configurationOf(i), configurationText(all, {"NERIO=%PATHSETUP%\\n.exe"}));
      record_ += "[" + entries[static_cast<std::size_t>(i - 1)].id + "]\r\nversion=01.00\r\n";
    }
    putServerRecord(record_);
    share().putProgram("S:\\Lumo\\n.exe");
    share().makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
    share().put("S:\\Lumo\\prg\\etc\\dvrel", "11.00.00\r\n");
  }

  static std::string configurationOf(int product) { return numbered("conf\\p", product) + ".ini"; }
  const std::string& record() const { return record_; }

 private:
  std::string record_;
};

void start(Station& station) {
  station.machine().callLog().clear();
  RealProgram program(station.machine());
  program.run("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
}

sim::SimMachine& startOnce(Station& station, const UpToDateInstallation& installation) {
  station.putClientRecord(installation.record());
  start(station);
  EXPECT_EQ(station.commandLines().size(), 1U);
  return station.machine();
}

void expectFewOpenings(int products, int sections) {
  UpToDateInstallation installation(products, sections);
  Station station(installation);
  sim::SimMachine& machine = startOnce(station, installation);
  const auto budget = static_cast<std::size_t>(products);
  const sim::Openings share = machine.openings("S:\\");
  EXPECT_LE(share.files(), 2 * budget + 6);
  EXPECT_LE(share.lists, 2 * budget + 3);
  // Catalogue, version record, release of Dovra and the configuration files, each once; the record
  // once more for each product, whose version may have been raised meanwhile.
  EXPECT_EQ(share.reads, 2 * budget + 3);
  EXPECT_EQ(share.profileReads, 0U);
  EXPECT_EQ(share.profileWrites, 0U);
  for (int i = 1; i <= products; ++i) {
    const std::string conf = "S:\\Lumo\\" + UpToDateInstallation::configurationOf(i);
    EXPECT_EQ(machine.openings(conf).files(), 1U) << conf;
  }
}

TEST(ShareOpenings, AreFewHoweverManyProductsAndSectionsThereAre) {
  expectFewOpenings(5, 20);
  expectFewOpenings(3, 100);
  expectFewOpenings(20, 5);
}

TEST(ShareOpenings, AreFewWhereTheServerHasNothingToInstall) {
  constexpr std::size_t kProducts = 8;
  UpToDateInstallation installation(kProducts, 0);
  installation.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  Station station(installation);
  startOnce(station, installation);
  const std::string record = installation.serverRecord();
  EXPECT_NE(record.find("[NERIO]\r\nversion=\r\n"), std::string::npos) << record;
  start(station);
  EXPECT_LE(station.machine().openings("S:\\").files(), 2 * kProducts + 6);
  EXPECT_EQ(installation.serverRecord(), record);
}

/// Ini files, programs and folders of the products that the repairs look after, on the share.
class EquippedInstallation : public UpToDateInstallation {
 public:
  EquippedInstallation() : UpToDateInstallation(kProducts, 20) {
    share().put("S:\\Lumo\\mv\\nerio\\nerio.ini", "[NERIO]\r\nVersione=01.00\r\n");
    share().put("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "[LUDA]\r\nVersione=01.00\r\n");
    share().putProgram("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe");
    share().put("S:\\Lumo\\mv\\ZM\\zeltomodelli.ini", "[Parametri]\r\nPathModelli=S:\\Lumo\r\n");
  }

  static constexpr std::size_t kProducts = 5;
};

/// All files of workstation and share with their sizes, the run log left out.
std::string filesOf(Station& station, Installation& installation) {
  std::istringstream tree(station.disk().tree() + installation.share().tree());
  std::string files;
  for (std::string line; std::getline(tree, line);) {
    if (line.find("TrelvManager.log") == std::string::npos) {
      files += line + "\n";
    }
  }
  return files;
}

void expectFewOpeningsOn(sim::WindowsEdition edition) {
  EquippedInstallation installation;
  Station station(installation);
  sim::SimMachine& machine = station.machine();
  machine.setEdition(edition);
  machine.setFileVersion("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", {7, 10, 0, 0});
  machine.putFile("C:\\WINDOWS\\lumow.ini", "[Archivi]\r\nPath=S:\\Lumo\r\n");
  station.putClientRecord(installation.record());
  start(station);
  EXPECT_EQ(machine.iniValue("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "LUDA", "Versione"), "7.10.0.0");
  const std::string before = filesOf(station, installation);
  start(station);
  const sim::Openings share = machine.openings("S:\\");
  // The system opens a program twice to find its version.
  const std::size_t versions = 2 * machine.callLog().countOf("versions.read S:");
  EXPECT_EQ(versions, 2U);
  EXPECT_LE(share.files() + versions, 2 * EquippedInstallation::kProducts + 6);
  EXPECT_LE(share.lists, 2 * EquippedInstallation::kProducts + 3);
  EXPECT_EQ(share.files(), share.reads);
  EXPECT_EQ(machine.callLog().countOf("registry.openKey HKLM\\Software\\Classes\\ClsID"), 0U);
  EXPECT_EQ(filesOf(station, installation), before) << "something but the log changed";
}

TEST(ShareOpenings, AreFewWithIniFilesOfTheProductsOnTheShareAlsoOnATerminalServer) {
  expectFewOpeningsOn(sim::WindowsEdition::XP);
  expectFewOpeningsOn(sim::WindowsEdition::Win2008TerminalServer);
}

/// Searches of the class registrations in a start that prepares Nerio on both sides; without the
/// configuration store it looks for products on their own before.
std::size_t searchesOfAStart(bool withStore, const std::string& registered) {
  UpToDateInstallation installation(1, 0);
  installation.putServerRecord("");
  Station station(installation);
  sim::SimMachine& machine = station.machine();
  machine.system().connectDrive("S:", "\\\\SRV\\Dati");
  if (!withStore) {
    machine.configuration().answerAlways(-4001);
  }
  if (!registered.empty()) {
    machine.registry().setText(machine::Hive::LocalMachine,
                               "Software\\Classes\\ClsID\\{1}\\InprocServer32", "",
                               registered + "\\setup\\korvatgestionepratiche.ocx");
    machine.putFile(registered + "\\setup\\korvatgestionepratiche.ocx", "MZ");
  }
  start(station);
  const std::vector<std::string> calls = machine.calls();
  EXPECT_EQ(machine.callLog().countOf("processes.start regsrv32") > 0, !registered.empty());
  return static_cast<std::size_t>(
      std::count(calls.begin(), calls.end(), "registry.openKey HKLM\\Software\\Classes\\ClsID"));
}

TEST(ShareOpenings, ComeWithOneSearchOfTheClassRegistrations) {
  for (const char* const registered : {"", "S:\\Altro\\mv\\nerio"}) {
    EXPECT_EQ(searchesOfAStart(true, registered), 1U) << registered;
    EXPECT_EQ(searchesOfAStart(false, registered), 1U) << registered;
  }
}

TEST(ShareOpenings, DoNotGrowWithTheSections) {
  UpToDateInstallation small(4, 1);
  UpToDateInstallation large(4, 100);
  Station first(small);
  Station second(large);
  EXPECT_EQ(startOnce(first, small).openings("S:\\").files(),
            startOnce(second, large).openings("S:\\").files());
}

}  // namespace
}  // namespace trelv::tests
