#include <gtest/gtest.h>

#include "overlay/ProgramSearch.h"
#include "support/Matchers.h"
#include "unit/overlay/OverlaidMachine.h"

namespace trelv::tests {
namespace {

using overlay::Step;
using overlay::StepKind;
using overlay::Unpacking;

std::unique_ptr<machine::RunningProcess> started(OverlaidMachine& over, const std::string& line,
                                                 SystemCode expected = 0) {
  std::unique_ptr<machine::RunningProcess> process;
  EXPECT_EQ(over.top().processes.start(line, true, process), expected) << line;
  return process;
}

/// What file it is, by whatever path.
std::string identified(machine::Files& files, const std::string& path) {
  machine::FileIdentity identity;
  const SystemCode code = files.identify(path, identity);
  return std::to_string(code) + " " + std::to_string(identity.volume) + " " +
         std::to_string(identity.number);
}

TEST(AnOverlaysPrograms, AreNotedInsteadOfStarted) {
  sim::SimMachine machine;
  machine.programs().define("C:\\Setup\\a.exe");
  OverlaidMachine over(machine);
  const auto process = started(over, "C:\\Setup\\a.exe -S");
  EXPECT_EQ(process->wait(), 0U);
  std::uint32_t code = 9;
  EXPECT_EQ(process->exitCode(code), 0U);
  EXPECT_EQ(code, 0U);
  started(over, "C:\\Setup\\a.exe ");
  EXPECT_THAT(
      over.steps(),
      ElementsAre(Step{.kind = StepKind::Command, .subject = "C:\\Setup\\a.exe -S", .waits = true},
                  Step{.kind = StepKind::Command, .subject = "C:\\Setup\\a.exe "}));
  EXPECT_THAT(machine.programs().startedCommandLines(), IsEmpty());
}

TEST(AnOverlaysPrograms, AreThoseThatTheMachineWouldFind) {
  sim::SimMachine machine;
  machine.programs().define("C:\\due parole\\a b.exe");
  machine.programs().define("C:\\WINDOWS\\system32\\solo.exe");
  machine.putFile("C:\\testo.exe", "no program");
  machine.putFile("C:\\comandi.bat", "rem");
  machine.putFile("C:\\due", "MZ");
  machine.makeFolders("C:\\cartella.exe");
  OverlaidMachine over(machine);
  overlay::ProgramSearch search(over.files(), machine.system(), machine.environment());
  for (const char* const line :
       {"C:\\due parole\\a b.exe x", "\"C:\\due parole\\a b.exe\" x", "C:\\due parole\\a b y",
        "solo.exe", "solo x", "\"solo\"", "C:\\testo.exe", "C:\\comandi.bat x", "C:\\manca.exe",
        "C:\\manca\\a.exe", "", " solo", "\"\"", "\"C:\\testo.exe", "C:\\cartella.exe", "Z:\\a.exe",
        "C:/WINDOWS/system32/solo.exe"}) {
    sim::SimProcesses::Found found;
    std::string program;
    const SystemCode code = machine.programs().resolve(line, found);
    EXPECT_EQ(search.find(line, program), code) << line;
    sim::SimProcesses::Found tool;
    EXPECT_EQ(search.findTool(line, program), machine.programs().resolveTool(line, tool)) << line;
  }
}

TEST(AnOverlaysPrograms, AreLookedForInTheFoldersOfTheMachine) {
  sim::SimMachine machine;
  const auto share = machine.mount("\\\\server\\condivisa");
  machine.makeFolders("C:\\lavoro\\relativa");
  machine.volumes().setCurrentFolder("C:\\lavoro");
  machine.environment().put("PATH",
                            ";relativa;C:\\locale;;\\\\server\\condivisa\\bin;\\radice;C:senza");
  share->put("\\\\server\\condivisa\\bin\\rete.exe", "MZ");
  share->put("\\\\server\\condivisa\\bin\\doppio.exe", "MZ");
  for (const char* const path :
       {"C:\\lavoro\\corrente.exe", "C:\\lavoro\\relativa\\relativo.exe", "C:\\locale\\locale.exe",
        "C:\\locale\\doppio.exe", "C:\\locale\\sistema.exe", "C:\\WINDOWS\\system32\\sistema.exe",
        "C:\\WINDOWS\\system\\vecchio.exe", "C:\\WINDOWS\\finestra.exe", "C:\\radice\\radicato.exe",
        "C:\\locale\\x.exe"}) {
    machine.putFile(path, "MZ");
  }
  OverlaidMachine over(machine);
  overlay::ProgramSearch search(over.files(), machine.system(), machine.environment());
  std::vector<std::string> tools;
  for (const char* const name : {"corrente", "relativo", "locale", "rete", "doppio", "sistema",
                                 "vecchio", "finestra", "radicato", "x"}) {
    const std::string line = std::string(name) + " y";
    sim::SimProcesses::Found found;
    std::string program;
    EXPECT_EQ(search.find(line, program), machine.programs().resolve(line, found)) << line;
    EXPECT_EQ(identified(machine.files(), program), identified(machine.files(), found.program))
        << line;
    const SystemCode code = search.findTool(line, program);
    EXPECT_EQ(code, machine.programs().resolveTool(line, found)) << line;
    if (code == system_code::kSuccess) {
      EXPECT_EQ(program, found.program) << line;
      tools.emplace_back(name);
    }
  }
  EXPECT_THAT(tools, ElementsAre("locale", "rete", "doppio", "sistema", "finestra", "x"));
}

TEST(AnOverlaysPrograms, HaveCommandLinesOfTheSystemsLength) {
  sim::SimMachine machine;
  machine.programs().define("C:\\a.exe");
  OverlaidMachine over(machine);
  const std::string program = "C:\\a.exe ";
  started(over, program + std::string(32767 - program.size(), 'x'));
  started(over, program + std::string(32768 - program.size(), 'x'), system_code::kInvalidParameter);
}

TEST(AnOverlaysPrograms, MayStandOnTopOnly) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  over.files().write("C:\\nuovo.exe", "MZ");
  started(over, "C:\\nuovo.exe");
  over.files().removeFile("C:\\nuovo.exe");
  started(over, "C:\\nuovo.exe", system_code::kFileNotFound);
}

TEST(AnOverlaysPrograms, FailWhenTold) {
  sim::SimMachine machine;
  machine.programs().define("C:\\a.exe");
  OverlaidMachine over(machine, {.fails = 2});
  started(over, "C:\\manca.exe", system_code::kFileNotFound);
  started(over, "C:\\a.exe 1");
  started(over, "C:\\a.exe 2", system_code::kFileNotFound);
  started(over, "C:\\a.exe 3");
  EXPECT_EQ(over.steps().size(), 2U);
}

/// "C:\apri.exe PACK OUTPUT" is what opens packs here.
std::optional<Unpacking> unpackingOf(const std::string& line) {
  const std::vector<std::string> words = sim::splitArguments(line);
  if (words.size() != 3 || words[0] != "C:\\apri.exe") {
    return std::nullopt;
  }
  return Unpacking{
      words[0], words[1], words[2],
      [](const std::string& program, const std::string& pack,
         const std::string& output) -> std::string { return program + " " + pack + " " + output; }};
}

TEST(AnOverlaysPrograms, OpenPacksForRealAndWhatTheyWriteIsMounted) {
  sim::SimMachine machine;
  machine.putFile("C:\\uscita\\c\\vecchio.txt", "vecchio");
  machine.putFile("C:\\pacco", "due");
  machine.programs().define("C:\\apri.exe", [](sim::SimProcess& process) -> std::uint32_t {
    const std::string text = process.machine().fileText(process.arguments()[0]);
    process.machine().putFile(process.arguments()[1] + "\\c\\vecchio.txt", "nuovo " + text);
    process.machine().putFile(process.arguments()[1] + "\\c\\d\\altro.txt", text);
    EXPECT_TRUE(process.arguments()[0].ends_with("-pacco")) << "it may go by the name";
    return 1;
  });
  OverlaidMachine over(machine, {.findUnpacking = unpackingOf});
  // A pack that is on top only.
  over.files().write("C:\\pacco", "bytes");
  const auto process = started(over, "C:\\apri.exe C:\\pacco C:\\uscita");
  process->wait();
  std::uint32_t code = 0;
  process->exitCode(code);
  EXPECT_EQ(code, 1U);
  std::string content;
  over.files().read("C:\\uscita\\c\\vecchio.txt", 100, content);
  EXPECT_EQ(content, "nuovo bytes");
  EXPECT_EQ(over.files().read("c:\\USCITA\\C\\d\\altro.txt", 100, content), 0U);
  EXPECT_EQ(machine.fileText("C:\\uscita\\c\\vecchio.txt"), "vecchio");
  EXPECT_FALSE(machine.folderExists("C:\\uscita\\c\\d"));
  EXPECT_EQ(over.steps().size(), 1U) << "the write; opening packs is no step";
}

TEST(AnOverlaysPrograms, OpenWholeCopiesOfPacks) {
  sim::SimMachine machine;
  std::string bytes(2'500'000, '-');
  for (std::size_t at = 0; at < bytes.size(); at += 1000) {
    bytes.replace(at, 6, std::to_string(100'000 + at / 1000));
  }
  machine.putFile("C:\\pacchi\\pacco.zip", bytes);
  machine.programs().define("C:\\apri.exe", [&](sim::SimProcess& process) -> std::uint32_t {
    const std::string pack = process.arguments()[0];
    EXPECT_TRUE(pack.starts_with("C:\\Users\\mario\\Temp\\trelv-")) << pack;
    EXPECT_TRUE(pack.ends_with("-pacco.zip")) << "it may go by the ending: " << pack;
    EXPECT_TRUE(process.machine().fileText(pack) == bytes);
    return 0;
  });
  OverlaidMachine over(machine, {.findUnpacking = unpackingOf});
  started(over, "C:\\apri.exe C:\\pacchi\\pacco.zip C:\\uscita")->wait();
  EXPECT_EQ(machine.started().size(), 1U);
}

TEST(AnOverlaysPrograms, OpenPacksIntoFoldersThatAreMadeForThem) {
  sim::SimMachine machine;
  machine.putFile("C:\\pacco", "due");
  machine.programs().define("C:\\apri.exe", [](sim::SimProcess& process) -> std::uint32_t {
    process.machine().putFile(process.arguments()[1] + "\\x.txt", "x");
    process.machine().makeFolders(process.arguments()[1] + "\\d");
    return 0;
  });
  OverlaidMachine over(machine, {.findUnpacking = unpackingOf});
  started(over, "C:\\apri.exe C:\\pacco C:\\nuova\\sotto")->wait();
  std::string content;
  EXPECT_EQ(over.files().read("C:\\nuova\\sotto\\x.txt", 100, content), 0U);
  started(over, "C:\\apri.exe C:\\pacco C:\\pacco\\sotto")->wait();
  EXPECT_EQ(over.files().read("C:\\pacco\\sotto\\x.txt", 100, content), 3U)
      << "a file stands in the folder's place";
  EXPECT_EQ(over.files().read("C:\\pacco", 100, content), 0U);
  EXPECT_FALSE(machine.folderExists("C:\\nuova"));
}

TEST(AnOverlaysPrivateFolder, IsNotSeenAndGoes) {
  sim::SimMachine machine;
  const std::string before = machine.diskOf("C:\\").tree();
  {
    OverlaidMachine over(machine);
    EXPECT_NE(machine.diskOf("C:\\").tree(), before);
    std::vector<machine::FolderEntry> entries;
    over.files().list("C:\\Users\\mario\\Temp", "", entries);
    EXPECT_THAT(entries, IsEmpty());
    over.top().profiles.writeValue("a", "b", "c", "C:\\x.ini");
  }
  EXPECT_EQ(machine.diskOf("C:\\").tree(), before);
}

constexpr const char* kTemporary = "C:\\Users\\mario\\Temp\\";

/// Folders that other plans have made, with something in each, that are there after one more plan.
std::vector<std::string> leftOf(sim::SimMachine& machine, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    machine.putFile(kTemporary + name + "\\1\\prg\\x.txt", "x");
  }
  const OverlaidMachine over(machine);
  std::vector<std::string> left;
  for (const std::string& name : names) {
    if (machine.fileExists(kTemporary + name + "\\1\\prg\\x.txt")) {
      left.push_back(name);
    }
  }
  return left;
}

TEST(AnOverlaysPrivateFolder, OfAnEndedProcessGoesWithTheNext) {
  sim::SimMachine machine;
  machine.programs().setRunning(77);
  EXPECT_THAT(leftOf(machine, {"trelv-STAZIONE-78-1", "trelv-stazione-78-12"}), IsEmpty());
  EXPECT_THAT(leftOf(machine, {"trelv-STAZIONE-77-1"}), ElementsAre("trelv-STAZIONE-77-1"))
      << "its process runs";
  EXPECT_THAT(leftOf(machine, {"trelv-ALTRA-78-1"}), ElementsAre("trelv-ALTRA-78-1"))
      << "of another computer";
}

TEST(AnOverlaysPrivateFolder, IsToldByItsWholeName) {
  sim::SimMachine machine;
  const std::vector<std::string> others{
      "trelv-STAZIONE-78",   "trelv-STAZIONE-78-", "trelv-STAZIONE-x-1", "trelv-STAZIONE-78-1.bak",
      "trelv-STAZIONE-78-x", "trelv-STAZIONE-",    "trelv-STAZIONE",     "Xtrelv-STAZIONE-78-1"};
  EXPECT_EQ(leftOf(machine, others), others);
  machine.putFile(std::string(kTemporary) + "trelv-STAZIONE-78-2", "a file");
  machine.putFile("C:\\altrove\\x.txt", "x");
  machine.diskOf("C:\\").putLink(std::string(kTemporary) + "trelv-STAZIONE-78-3", "C:\\altrove");
  EXPECT_THAT(leftOf(machine, {}), IsEmpty());
  EXPECT_TRUE(machine.fileExists(std::string(kTemporary) + "trelv-STAZIONE-78-2"));
  EXPECT_TRUE(machine.fileExists("C:\\altrove\\x.txt")) << "a link is not followed";
}

TEST(AnOverlaysPrivateFolder, GoesWithTheReadOnlyFilesInIt) {
  sim::SimMachine machine;
  const std::string left = std::string(kTemporary) + "trelv-STAZIONE-78-1";
  machine.putFile(left + "\\1\\sola.txt", "x");
  machine.diskOf("C:\\").setReadOnly(left + "\\1\\sola.txt");
  EXPECT_THAT(leftOf(machine, {}), IsEmpty());
  EXPECT_FALSE(machine.folderExists(left));
}

TEST(AnOverlaysPrivateFolder, GoesWithTheLinksInItAndWithoutWhatTheyLeadTo) {
  sim::SimMachine machine;
  machine.putFile("C:\\altrove\\x.txt", "x");
  const std::string left = std::string(kTemporary) + "trelv-STAZIONE-78-1";
  machine.makeFolders(left);
  machine.diskOf("C:\\").putLink(left + "\\legame", "C:\\altrove");
  EXPECT_THAT(leftOf(machine, {}), IsEmpty());
  EXPECT_FALSE(machine.folderExists(left));
  EXPECT_TRUE(machine.fileExists("C:\\altrove\\x.txt"));
}

}  // namespace
}  // namespace trelv::tests
