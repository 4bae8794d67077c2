// The same calls made to a machine and to an overlay over another one like it: both answer the
// same, show the same, and the machine below the overlay stays as it was.

#include <gtest/gtest.h>

#include <iostream>
#include <random>

#include "support/Matchers.h"
#include "unit/kit/RecordedRun.h"
#include "unit/overlay/OverlaidMachine.h"

namespace trelv::tests {
namespace {

constexpr unsigned kSeed = 20261122;
constexpr unsigned kWorlds = 100;
constexpr int kCalls = 120;

const std::vector<std::string> kVolumes{"C:", "S:"};

/// Files and folders of all kinds, under several names.
void furnish(sim::SimMachine& machine) {
  const auto share = machine.mount("S:");
  machine.mount("\\\\server\\share", share);
  share->put("S:\\a\\uno.txt", "uno");
  share->put("S:\\a\\due.txt", "due");
  share->put("S:\\a\\b\\tre.txt", "tre");
  share->put("S:\\a\\sola.txt", "sola lettura");
  share->setReadOnly("S:\\a\\sola.txt");
  share->put("S:\\a\\cela.txt", "nascosto");
  share->setConcealed("S:\\a\\cela.txt");
  share->put("S:\\a\\preso.txt", "in uso");
  share->holdOpen("S:\\a\\preso.txt", sim::Sharing::None);
  share->makeFolders("S:\\vuota");
  share->makeFolders("S:\\chiusa\\dentro");
  share->put("S:\\chiusa\\x.txt", "x");
  share->setRights("S:\\chiusa", {{"*", sim::Right::Read}});
  machine.putFile("C:\\c\\uno.txt", "altro disco");
  machine.diskOf("C:\\").putLink("C:\\legame", "S:\\a");
}

const std::vector<std::string> kFolders{
    "S:\\a",        "s:\\A",     "\\\\server\\share\\a", "\\\\?\\S:\\a", "C:\\legame",
    "S:\\a\\b",     "S:\\vuota", "S:\\vuota\\..\\a",     "S:\\chiusa",   "S:\\nuova",
    "S:\\a\\nuova", "C:\\c",     "S:\\a\\manca",         "S:/a",         "C:\\legame\\b"};
const std::vector<std::string> kNames{"uno.txt",  "DUE.TXT",   "tre.txt",   "sola.txt",
                                      "cela.txt", "preso.txt", "nuovo.txt", "b",
                                      "nuova",    "x.txt",     "dentro"};

/// Calls files by numbers; answers what came back, in words.
class Caller {
 public:
  Caller(machine::Files& files, unsigned seed) : files_(files), random_(seed) {}

  std::string call() {
    const std::string path = somePath();
    const std::string other = somePath();
    const auto kind = random_() % 13;
    const std::string bytes = "bytes " + std::to_string(random_() % 9);
    const bool flag = random_() % 2 == 0;
    const std::string told = std::to_string(kind) + " " + path + " " + other + ": ";
    switch (kind) {
      case 0:
        return told + std::to_string(files_.write(path, bytes));
      case 1:
        return told + std::to_string(files_.append(path, bytes));
      case 2:
        return told + std::to_string(files_.removeFile(path));
      case 3:
        return told + std::to_string(files_.setReadOnly(path, flag));
      case 4:
        return told + std::to_string(files_.makeFolder(path));
      case 5:
        return told + std::to_string(files_.removeFolder(path));
      case 6:
      case 7:
        return told + std::to_string(files_.copyFile(path, other));
      case 8:
      case 9:
        // Folders are never renamed by the program, and not by the overlay.
        if (isFolder(path)) {
          return told;
        }
        return told + rename(flag, path, other);
      case 10:
        return told + std::to_string(files_.mayAddFile(path));
      default:
        return told + look(path) + read(path) + list(path);
    }
  }

  /// What stands at all paths.
  std::string view() {
    std::string text;
    for (const std::string& folder : kFolders) {
      text += folder + look(folder) + list(folder) + "\n";
      for (const std::string& name : kNames) {
        text +=
            folder + "\\" + name + look(folder + "\\" + name) + read(folder + "\\" + name) + "\n";
      }
    }
    return text;
  }

 private:
  std::string somePath() {
    const std::string& folder = kFolders[random_() % kFolders.size()];
    return random_() % 6 == 0 ? folder : folder + "\\" + kNames[random_() % kNames.size()];
  }

  bool isFolder(const std::string& path) {
    machine::FileFacts facts;
    return files_.look(path, facts) == system_code::kSuccess && facts.folder;
  }

  std::string rename(bool replacing, const std::string& path, const std::string& other) {
    return std::to_string(replacing ? files_.replaceFile(path, other)
                                    : files_.moveFile(path, other));
  }

  std::string look(const std::string& path) {
    machine::FileFacts facts;
    const SystemCode code = files_.look(path, facts);
    return " look " + std::to_string(code) + (facts.folder ? " folder" : " file") +
           (facts.readOnly ? " r" : "") + (facts.hidden ? " h" : "") + (facts.system ? " s" : "") +
           " " + std::to_string(facts.size) + " " +
           (facts.folder ? "" : std::to_string(facts.modified));
  }

  std::string read(const std::string& path) {
    std::string content;
    const SystemCode code = files_.read(path, 7, content);
    std::string part;
    files_.readPart(path, 2, 3, part);
    return " read " + std::to_string(code) + " " + content + " " + part;
  }

  std::string list(const std::string& path) {
    std::vector<machine::FolderEntry> entries;
    std::string text = " list " + std::to_string(files_.list(path, "", entries));
    for (const machine::FolderEntry& entry : entries) {
      text += " " + entry.name + ":" + std::to_string(entry.facts.size);
    }
    files_.list(path, "Txt", entries);
    return text + " " + std::to_string(entries.size());
  }

  machine::Files& files_;
  std::mt19937 random_;
};

TEST(AnOverlaysFiles, AreThoseOfTheMachine) {
  std::cout << "seed " << kSeed << "\n";
  for (unsigned world = 0; world < kWorlds; ++world) {
    sim::SimMachine real;
    sim::SimMachine below;
    furnish(real);
    furnish(below);
    const std::string before = worldOf(below, kVolumes);
    {
      OverlaidMachine over(below);
      Caller first(real.files(), kSeed + world);
      Caller second(over.files(), kSeed + world);
      std::string last;
      for (int i = 0; i < kCalls; ++i) {
        const std::string planned = second.call();
        ASSERT_EQ(first.call(), planned) << "world " << world << ", behind " << last;
        last = planned;
      }
      ASSERT_EQ(first.view(), second.view()) << "world " << world;
    }
    ASSERT_EQ(worldOf(below, kVolumes), before) << "world " << world;
  }
}

// --- The registry

std::string registryCall(machine::Registry& registry, std::mt19937& random) {
  static const std::vector<std::string> kKeys{"SOFTWARE\\LUMO",
                                              "software\\lumo\\Nuova",
                                              "SOFTWARE\\LUMO\\Nuova\\Sotto",
                                              "SOFTWARE\\Chiusa",
                                              "SOFTWARE\\Chiusa\\Nuova",
                                              "\\SOFTWARE",
                                              "Altro"};
  const std::string& path = kKeys[random() % kKeys.size()];
  static const std::vector<std::uint32_t> kAccesses{
      machine::key_access::kAll, machine::key_access::kQueryValue, machine::key_access::kSetValue};
  const std::uint32_t access = kAccesses[random() % kAccesses.size()];
  const std::string name = random() % 2 == 0 ? "Path" : "";
  const std::string data = random() % 2 == 0 ? "uno" : std::string("due\0", 4);
  const bool create = random() % 3 == 0;
  std::unique_ptr<machine::RegistryKey> key;
  const auto hive = machine::Hive::LocalMachine;
  const SystemCode opened = create ? registry.createKey(hive, path, access, key)
                                   : registry.openKey(hive, path, access, key);
  std::string told = (create ? "create " : "open ") + path + " " + std::to_string(opened);
  const auto what = random() % 3;
  if (key == nullptr) {
    return told;
  }
  if (what == 0) {
    const std::uint32_t type =
        random() % 4 == 0 ? machine::value_type::kNumber : machine::value_type::kText;
    return told + " write " + std::to_string(key->writeValue(name, type, data));
  }
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  told += " describe " + std::to_string(key->describeValue(name, type, size)) + " " +
          std::to_string(type) + " " + std::to_string(size);
  std::string value(what == 1 ? size : 1, ' ');
  told += " read " + std::to_string(key->readValue(name, value)) + " " + value;
  std::string sub;
  for (std::uint32_t i = 0; key->subKeyName(i, 20, sub) == system_code::kSuccess; ++i) {
    told += " " + sub;
  }
  return told + " end " + std::to_string(key->subKeyName(0, 3, sub));
}

void furnishRegistry(sim::SimMachine& machine) {
  machine.registry().setText(machine::Hive::LocalMachine, "SOFTWARE\\LUMO", "Path", "S:\\Lumo");
  machine.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO\\Vecchia");
  machine.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\LUMO\\Zeta");
  machine.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\Chiusa");
  machine.registry().denyWriting(machine::Hive::LocalMachine, "SOFTWARE\\Chiusa");
}

TEST(AnOverlaysRegistry, IsThatOfTheMachine) {
  for (unsigned world = 0; world < kWorlds; ++world) {
    sim::SimMachine real;
    sim::SimMachine below;
    furnishRegistry(real);
    furnishRegistry(below);
    const std::string before = below.registry().dump();
    OverlaidMachine over(below);
    std::mt19937 first(kSeed + world);
    std::mt19937 second(kSeed + world);
    for (int i = 0; i < kCalls; ++i) {
      ASSERT_EQ(registryCall(real.registry(), first), registryCall(over.top().registry, second))
          << "world " << world;
    }
    ASSERT_EQ(below.registry().dump(), before);
  }
}

// --- Ini files

std::string iniCall(machine::Machine& machine, std::mt19937& random) {
  static const std::vector<std::string> kFiles{
      "S:\\a\\uno.ini",    "s:\\A\\UNO.INI",   "C:\\legame\\uno.ini", "nudo.ini",
      "S:\\chiusa\\x.ini", "S:\\manca\\x.ini", "S:\\a\\sola.ini"};
  const std::string& file = kFiles[random() % kFiles.size()];
  const std::string section = random() % 2 == 0 ? "Uno" : "due";
  const std::string key = random() % 2 == 0 ? "chiave" : "altra";
  const std::string value = "valore è " + std::to_string(random() % 3);
  switch (random() % 4) {
    case 0:
      return "write " + file + " " +
             std::to_string(machine.profiles.writeValue(section, key, value, file));
    case 1: {
      std::string bytes;
      const SystemCode code = machine.files.read(file, 1000, bytes);
      return "bytes " + std::to_string(code) + " " + bytes;
    }
    case 2:
      return "delete " + std::to_string(machine.files.removeFile(file));
    default:
      return "read " + file + " " + machine.profiles.readValue(section, key, "manca", 9, file);
  }
}

void furnishIni(sim::SimMachine& machine) {
  const auto share = machine.mount("S:");
  share->put("S:\\a\\uno.ini", "; nota\r\n[uno]\r\nchiave = 1\r\n\r\n");
  share->put("S:\\a\\sola.ini", "[uno]\r\nchiave=1\r\n");
  share->setReadOnly("S:\\a\\sola.ini");
  share->makeFolders("S:\\chiusa");
  share->setRights("S:\\chiusa", {{"*", sim::Right::Read}});
  machine.diskOf("C:\\").putLink("C:\\legame", "S:\\a");
}

TEST(AnOverlaysIniFiles, AreThoseOfTheMachine) {
  for (unsigned world = 0; world < kWorlds; ++world) {
    sim::SimMachine real;
    sim::SimMachine below;
    for (sim::SimMachine* const machine : {&real, &below}) {
      furnishIni(*machine);
      machine->setEdition(world % 2 == 0 ? sim::WindowsEdition::XP
                                         : sim::WindowsEdition::Win2003TerminalServer);
      if (world % 4 == 1) {
        machine->makeFolders("C:\\Users\\mario\\windows");
      }
    }
    const std::string before = worldOf(below, kVolumes);
    {
      OverlaidMachine over(below);
      std::mt19937 first(kSeed + world);
      std::mt19937 second(kSeed + world);
      for (int i = 0; i < kCalls; ++i) {
        ASSERT_EQ(iniCall(real.machine(), first), iniCall(over.top(), second)) << "world " << world;
      }
    }
    ASSERT_EQ(worldOf(below, kVolumes), before);
  }
}

}  // namespace
}  // namespace trelv::tests
