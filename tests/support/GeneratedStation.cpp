#include "support/GeneratedStation.h"

#include <array>

namespace trelv::tests {
namespace {

using sim::WindowsEdition;

constexpr const char* kSetups = "S:\\Lumo\\prg\\com\\setup\\aggdovra";
constexpr const char* kTemp = "C:\\Users\\mario\\Temp";
constexpr const char* kManager = "C:\\Lumo\\Programmi";

const std::vector<std::string> kIds{"NERIO", "LUDA", "ZB", "Q2", "ZM", "RR", "nerio", "ALTRO", ""};
const std::vector<std::string> kConfs{"nerio.ini", "luda.ini", "zb.ini", "q2.ini", "manca.ini"};

constexpr std::array kEditions{WindowsEdition::Win98,
                               WindowsEdition::NT4TerminalServer,
                               WindowsEdition::Win2000Pro,
                               WindowsEdition::Win2000TerminalServer,
                               WindowsEdition::XP,
                               WindowsEdition::XP,
                               WindowsEdition::XP,
                               WindowsEdition::Win2003,
                               WindowsEdition::Win2003TerminalServer,
                               WindowsEdition::Vista,
                               WindowsEdition::Seven,
                               WindowsEdition::Win2008R2TerminalServer,
                               WindowsEdition::Win10};

}  // namespace

GeneratedStation::GeneratedStation(unsigned seed) : random_(seed) {
  putSystem();
  putHost();
  putCatalogue();
  putRecords();
  putLocks();
  putPacks();
  putClientCopy();
  putOdds();
  breakFiles();
  takeRights();
  chooseArguments();
  fails_ = oneIn(4) ? 1 + below(3) : 0;
  asUser_ = oneIn(10);
  machine().desktop().setDefaultAnswer(machine::BoxButtons::YesNo, machine::BoxAnswer::Yes);
}

void GeneratedStation::putSystem() {
  sim::SimMachine& machine = station_.machine();
  machine.setEdition(kEditions[below(kEditions.size())]);
  if (oneIn(2)) {
    machine.makeFolders("C:\\Users\\mario\\windows");
  }
  machine.locale().setLanguage(oneIn(4) ? sim::Language::English : sim::Language::Italian);
  machine.system().setWow64(oneIn(4));
  machine.system().setAdministrator(!oneIn(6));
  if (oneIn(8)) {
    machine.support().setAdministratorAnswer(oneIn(2) ? machine::SupportAnswer::Yes
                                                      : machine::SupportAnswer::No);
  }
  if (oneIn(4)) {
    station_.forgetIntegration();
  } else if (oneIn(5)) {
    machine.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                oneIn(2) ? "s:\\lumo" : "T:\\Altro");
  }
  if (oneIn(15)) {
    machine.configuration().answerAlways(oneIn(2) ? -4001 : -3000);
  }
  if (oneIn(2)) {
    machine.removeTree("C:\\Users\\mario\\Temp\\log");
  }
}

void GeneratedStation::putHost() {
  sim::SimDisk& share = installation_.share();
  if (oneIn(3)) {
    share.makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
    share.put("S:\\Lumo\\prg\\etc\\dvrel", oneIn(2) ? "10.70.00\r\n" : "11.20.00\r\n");
  }
  if (oneIn(6)) {
    share.removeTree("S:\\Lumo\\prg\\tempterm");
  }
  if (!oneIn(4)) {
    share.put("S:\\Lumo\\prg\\etc\\ambver", oneIn(5) ? "" : "AMB0001 01/02/08 10:11\r\n");
  }
  for (const char* const program : {"setup", "update", "client", "due parole"}) {
    share.putProgram(std::string(kSetups) + "\\" + program + ".exe");
  }
  share.put(std::string(kSetups) + "\\testo.exe", "no program");
  installation_.putPrograms({"mv\\nerio\\nerio", "mv\\zb\\mvbil"});
  if (oneIn(3)) {
    share.put("S:\\Lumo\\mv\\nerio\\nerio.ini", "[Pathnames]\r\nHomedir=S:\\Lumo\\mv\\nerio\r\n");
  }
  if (oneIn(4)) {
    share.makeFolders("S:\\Lumo\\mv\\ZM");
    share.put("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", "MZ");
    share.setVersion("S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe", {7, 1, 0, 2});
    share.put("S:\\Lumo\\mv\\LUDA2003\\Luda.ini", "[LUDA]\r\nVersione=1\r\n");
  }
}

std::string GeneratedStation::version() {
  static const std::vector<std::string> kVersions{
      "01.00", "02.00.00.00", "03.20.30.00", "09.93.00.00", "3.x", "", "99.00.00.00"};
  return oneOf(kVersions);
}

std::string GeneratedStation::command() {
  static const std::vector<std::string> kCommands{
      "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\setup.exe -S",
      "%PATHWORK%\\prg\\com\\setup\\aggdovra\\update.exe",
      "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\client.exe /q",
      "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\due parole.exe x",
      "\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\due parole.exe\" /s",
      "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\setup -S",
      "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\manca.exe",
      "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\testo.exe",
      "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\portato.exe",
      "setup.exe %PATHCLIENT%",
      "C:\\WINDOWS\\notepad.exe x"};
  return oneOf(kCommands);
}

void GeneratedStation::putConfiguration(const std::string& path) {
  std::vector<Section> sections;
  for (const char* const kind : {"Setup", "Update", "Remove"}) {
    const std::size_t count = below(3);
    for (std::size_t i = 1; i <= count; ++i) {
      Section section{kind + ("0" + std::to_string(i)), version(), {}, {}};
      for (std::size_t k = below(3); k > 0; --k) {
        section.server.push_back(command());
      }
      for (std::size_t k = below(2); k > 0; --k) {
        section.client.push_back(command());
      }
      sections.push_back(section);
    }
  }
  installation_.share().put(path,
                            configurationText(sections, {"NERIO=%PATHWORK%\\mv\\nerio\\nerio.exe",
                                                         "MVBIL=%PATHWORK%\\mv\\zb\\mvbil.exe",
                                                         "Q2=%PATHWORK%\\mv\\q2\\q2.exe"}));
}

void GeneratedStation::putCatalogue() {
  std::vector<ProductEntry> entries;
  for (std::size_t i = below(5); i > 0; --i) {
    const std::string conf = oneIn(12) ? "" : "prg\\com\\setup\\aggdovra\\" + oneOf(kConfs);
    entries.push_back({oneOf(kIds), "Prodotto", conf});
  }
  if (!oneIn(12)) {
    installation_.putCatalogue(entries);
  }
  for (const char* const conf : {"nerio.ini", "luda.ini", "zb.ini", "q2.ini"}) {
    if (!oneIn(8)) {
      putConfiguration(std::string(kSetups) + "\\" + conf);
    }
  }
}

void GeneratedStation::putRecords() {
  for (const bool server : {true, false}) {
    std::string text;
    for (const std::string& id : kIds) {
      if (!id.empty() && oneIn(2)) {
        text += "[" + id + "]\r\nversion=" + version() + "\r\n";
      }
    }
    if (oneIn(10)) {
      continue;
    }
    server ? installation_.putServerRecord(text) : station_.putClientRecord(text);
  }
}

void GeneratedStation::putLocks() {
  if (oneIn(6)) {
    installation_.share().put(Installation::kServerLock, "16/11/2026 09:30:00\r\n");
    installation_.share().setReadOnly(Installation::kServerLock, oneIn(3));
  } else if (oneIn(20)) {
    installation_.share().makeFolders(Installation::kServerLock);
  }
  if (oneIn(8)) {
    machine().putFile(Station::kClientLock, "");
  }
}

PackContent GeneratedStation::packContent() {
  const std::string tree = "prg\\com\\setup\\aggdovra\\";
  PackContent content{{tree + "portato.exe", "MZ"}};
  if (oneIn(2)) {
    content.emplace_back(tree + oneOf(kConfs),
                         configurationText({{"Setup01", "77.00", {command()}, {command()}},
                                            {"Update01", "77.00", {command()}, {command()}}}));
  }
  if (oneIn(3)) {
    content.emplace_back(tree + "agdvcomp.ini",
                         catalogueText({{"NERIO", "N", "prg\\com\\setup\\aggdovra\\nerio.ini"},
                                        {"ZB", "Z", "prg\\com\\setup\\aggdovra\\zb.ini"}}));
  }
  if (oneIn(3)) {
    content.emplace_back(tree + "sotto\\cartella\\dati.txt", "dati");
  }
  if (oneIn(4)) {
    content.emplace_back(tree + "altro.zip", packBytes({{tree + "secondo.txt", "x"}}));
  }
  if (oneIn(5)) {
    content.emplace_back("leggimi.txt", "x");
  }
  return content;
}

void GeneratedStation::putPacks() {
  for (const char* const name : {"a.zip", "b.zip", "C.ZIP"}) {
    if (oneIn(3)) {
      const std::uint32_t exitCode = oneIn(4) ? 2 : 0;
      const bool broken = oneIn(8);
      installation_.share().put(std::string(kSetups) + "\\" + name,
                                broken ? "no pack" : packBytes(packContent(), exitCode));
    }
  }
  const std::string zip = packBytes(packContent());
  machine().putFile(
      std::string(kManager) + "\\nerio.gz",
      oneIn(8) ? "no pack" : packBytes({{"prg\\com\\setup\\aggdovra\\nerio.zip", zip}}));
  if (oneIn(10)) {
    machine().removeTree(PackPrograms::kSevenZip);
  }
  if (oneIn(5)) {
    machine().putFile(std::string(kTemp) + "\\prg\\com\\setup\\aggdovra\\vecchio.txt", "x");
  }
  if (oneIn(15)) {
    mark_ = machine().exclusion().takeForAnother(std::string(kTemp) + "\\TrelvManager.lck",
                                                 "anna, ALTRA");
  }
}

void GeneratedStation::putClientCopy() {
  sim::SimDisk& share = installation_.share();
  const std::string folder = "S:\\Lumo\\prg\\com\\bin\\cpy\\client";
  if (oneIn(6)) {
    return;
  }
  share.makeFolders(folder);
  if (!oneIn(3)) {
    share.put(folder + "\\TrelvManager.exe", "MZ old");
    share.setModified(folder + "\\TrelvManager.exe", oneIn(2)
                                                         ? machine::LocalTime{2001, 1, 1, 0, 0, 0}
                                                         : machine::LocalTime{2030, 1, 1, 0, 0, 0});
    share.setReadOnly(folder + "\\TrelvManager.exe", oneIn(6));
  }
  if (oneIn(5)) {
    share.put(folder + "\\TrelvManager-STAZIONE-1-77.tmp", "x");
    share.put("S:\\Lumo\\prg\\tempterm\\ambver-STAZIONE-1-78.tmp", "x");
  }
}

void GeneratedStation::putOdds() {
  sim::SimMachine& machine = station_.machine();
  machine.putFile("C:\\WINDOWS\\notepad.exe", "MZ");
  if (oneIn(8)) {
    machine.setIniValue("C:\\WINDOWS\\NERIO.INI", "Pathnames", "Homedir", "C:\\Nerio");
  }
  if (oneIn(15)) {
    machine.registry().setText(machine::Hive::LocalMachine, "Software\\FerPrg", "sistema", "0");
  }
  if (oneIn(4)) {
    machine.registry().setText(machine::Hive::LocalMachine, "SOFTWARE\\LUMO\\Programmi",
                               "PathLocale", "C:\\Lumo\\Client\\dovra\\bilancio");
  }
  if (oneIn(8)) {
    machine.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO");
    machine.registry().denyWriting(machine::Hive::LocalMachine, "SOFTWARE\\LUMO");
  }
  if (oneIn(3)) {
    machine.setIniValue("C:\\WINDOWS\\lumow.ini", "Archivi", "Path",
                        oneIn(2) ? "S:\\Lumo" : "T:\\Altro");
  }
  if (oneIn(10)) {
    machine.mount("\\\\server\\lumo", installation_.sharedDisk());
    machine.system().connectDrive("S:", "\\\\server\\lumo");
  }
}

void GeneratedStation::breakFiles() {
  sim::SimDisk& share = installation_.share();
  for (const std::string& path :
       {std::string(Installation::kCatalogue), std::string(Installation::kServerRecord),
        std::string(kSetups) + "\\nerio.ini", std::string(kSetups) + "\\zb.ini",
        std::string(kSetups) + "\\a.zip"}) {
    if (!share.fileExists(path) || !oneIn(15)) {
      continue;
    }
    switch (below(5)) {
      case 0:
        share.holdOpen(path, sim::Sharing::None);
        break;
      case 1:
        share.setReadOnly(path);
        break;
      case 2:
        share.put(path, std::string("\0\1[prod01]\r\nconf", 16));
        break;
      case 3:
        share.put(path, "\xEF\xBB\xBF" + share.text(path));
        break;
      default:
        share.put(path, "");
    }
  }
  if (oneIn(20)) {
    machine().putFile(Station::kClientRecord, "[NERIO]\r\nversion=01.00\r\n");
    machine().diskOf("C:\\").setReadOnly(Station::kClientRecord);
  }
}

void GeneratedStation::takeRights() {
  sim::SimDisk& share = installation_.share();
  static const std::vector<std::string> kFolders{"S:\\Lumo", "S:\\Lumo\\prg\\etc",
                                                 "S:\\Lumo\\prg\\com", "S:\\Lumo\\prg\\tempterm",
                                                 "S:\\Lumo\\mv"};
  if (oneIn(6)) {
    const std::string& folder = oneOf(kFolders);
    if (share.folderExists(folder)) {
      share.setRights(folder, {{"*", sim::Right::Read}});
    }
  } else if (oneIn(15)) {
    // The whole share can only be read.
    share.denyWriting("S:\\");
  }
  static const std::vector<std::string> kOwn{"C:\\Lumo", "C:\\WINDOWS", "C:\\Users\\mario\\windows",
                                             "C:\\Users\\mario\\Temp\\log"};
  const std::string& own = oneOf(kOwn);
  // Rights are those of a folder that is there.
  if (oneIn(8) && machine().folderExists(own)) {
    machine().diskOf("C:\\").denyWriting(own);
  }
}

void GeneratedStation::chooseArguments() {
  static const std::vector<std::string> kServers{"S:\\Lumo",   "S:\\Lumo",  "S:\\Lumo", "s:\\lumo",
                                                 "S:\\Lumo\\", "S:\\Manca", "T:\\Altro"};
  static const std::vector<std::string> kPrograms{"NERIO", "MVBIL", "Q2", "UNDEFINED", "FALSO"};
  const std::string server = oneOf(kServers);
  switch (below(10)) {
    case 0:
      arguments_ = {"SINGLEINSTALL", oneOf(kIds), "nerio.gz"};
      break;
    case 1:
      arguments_ = {"INTEGRATEDMAINTAIN"};
      break;
    case 2:
      arguments_ = {oneOf({"STANDALONEINSTALL", "INTERACTIVE", "ALTRO", "INTEGRATEDRUN"})};
      break;
    default:
      arguments_ = {"INTEGRATEDRUN",  server,        oneIn(6) ? oneOf(kServers) : server,
                    oneOf(kPrograms), "azienda uno", "12"};
      arguments_.resize(arguments_.size() - below(3));
  }
}

}  // namespace trelv::tests
