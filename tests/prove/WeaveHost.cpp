#include "prove/WeaveHost.h"

#include <algorithm>

#include "base/Text.h"
#include "packs/ProductRemoval.h"
#include "support/SessionForms.h"

namespace trelv::tests {
namespace {

constexpr auto kHive = machine::Hive::LocalMachine;
constexpr const char* kStoreKey = "SOFTWARE\\LUMO\\Configurazione";
constexpr const char* kSchemaFile = "C:\\Lumo\\Client\\schema.xsd";
/// A product that nobody touches: whatever happens, it stays in each record.
constexpr const char* kForeign = "[KXK]\r\nversion=01.02.03.04\r\n";
constexpr machine::LocalTime kOldCopy{2026, 10, 1, 12, 0, 0};

class NoProgress : public modProdTrelvManager::RemovalProgress {
 public:
  void begin(int /*max*/) override {}
  void advance() override {}
  void finish() override {}
};

std::string setupPath(const std::string& path) { return std::string(kSetupFolder) + "\\" + path; }

/// A set-up that writes a file, half of it first: what a command line says behind the program is
/// what it brings.
sim::ProgramScript settingUp(const std::string& file, const std::shared_ptr<SetUps>& setUps) {
  return [file, setUps](sim::SimProcess& process) -> std::uint32_t {
    const std::string version = process.arguments().empty() ? "" : process.arguments().front();
    const sim::SimDisk& disk = process.machine().diskOf(file);
    setUps->begins(disk, file, version);
    machine::Files& files = process.machine().machine().files;
    const std::string whole = "versione " + version;
    files.write(file, whole.substr(0, whole.size() / 2));
    files.write(file, whole);
    setUps->ends(disk, file);
    return 0;
  };
}

std::string configurationOf(const std::string& folder, const std::string& version) {
  const std::string program = folder == "zb" ? "MVBIL=%PATHWORK%\\mv\\zb\\mvbil.exe"
                                             : "NERIO=%PATHWORK%\\mv\\nerio\\nerio.exe";
  const std::string commands = "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\" + folder;
  return configurationText({{"Setup01",
                             version,
                             {commands + "\\server.exe " + version},
                             {commands + "\\client.exe " + version}},
                            {"Update01",
                             version,
                             {commands + "\\server.exe " + version},
                             {commands + "\\client.exe " + version}},
                            {"Remove", "", {commands + "\\togli.exe"}, {}}},
                           {program});
}

std::string records() {
  return kForeign + ("[ZB]\r\nversion=" + std::string(kVersionBefore)) +
         "\r\n[NERIO]\r\nversion=03.20.00.00\r\n";
}

std::vector<ProductEntry> wholeCatalogue() {
  const std::string setups = "prg\\com\\setup\\aggdovra\\";
  return {{"ZB", "Bilancio", setups + "zb.ini"},
          {"NERIO", "Nerio", setups + "nerio.ini"},
          {"LUDA", "Luda", setups + "luda.ini"},
          {"Q2", "Tarsena2", setups + "q2.ini"}};
}

}  // namespace

Workplace::Workplace(Installation& installation, const std::string& computer)
    : station_(installation) {
  machine().environment().put("COMPUTERNAME", computer);
  machine().system().setComputerName(computer);
  putStore(machine());
  machine().useConfigurationLibrary(store_);
  openPacksStepwise();
}

Workplace::Workplace(Installation& installation, sim::SimMachine& other, const std::string& user,
                     std::uint32_t session)
    : station_(installation), beside_(&other) {
  machine().mount("C:", other.volumes().diskOf("C:\\"));
  machine().registry().shareKeysOf(other.registry());
  machine().system().setComputerName(other.environment().value("COMPUTERNAME"));
  machine().environment().put("COMPUTERNAME", other.environment().value("COMPUTERNAME"));
  machine().system().setSessionId(session);
  machine().system().setProcessId(other.system().processId() + 400);
  machine().useConfigurationLibrary(store_);
  if (user != "mario") {
    const std::string profile = "C:\\Users\\" + user;
    temp_ = profile + "\\Temp";
    machine().makeFolders(temp_ + "\\log");
    machine().makeFolders(profile + "\\windows");
    for (const auto& [name, value] : std::vector<std::pair<std::string, std::string>>{
             {"USERPROFILE", profile}, {"USERNAME", user}, {"TEMP", temp_}, {"TMP", temp_}}) {
      machine().environment().put(name, value);
    }
    machine().system().setUserName(user);
    machine().volumes().setUser(user);
  }
  machine().programs().setRunning(other.system().processId());
  other.programs().setRunning(machine().system().processId());
  openPacksStepwise();
}

/// Somebody else may have his turn behind each file that is unpacked.
void Workplace::openPacksStepwise() {
  packPrograms_ = std::make_unique<PackPrograms>(machine());
  packPrograms_->onFileOf = [](sim::SimMachine& machine, const std::string& path) {
    machine.callLog().enter(sim::CallKind::FileWrite, "unpacked", path);
  };
}

void Workplace::start(const std::string& arguments) {
  work([&arguments](RealProgram& program) { program.run(arguments); });
}

void Workplace::work(const std::function<void(RealProgram&)>& procedure) {
  RealProgram program(machine());
  procedure(program);
  log_ = program.logLines();
  if (beside_ != nullptr) {
    beside_->programs().setRunning(machine().system().processId(), false);
  }
}

void Workplace::removeProduct(const std::string& id, Side side) {
  work([&](RealProgram& program) {
    NoProgress progress;
    modProdTrelvManager::RemoveProduct(program, {"S:\\Lumo", "S:\\Lumo", "C:\\Lumo\\Client"},
                                       {id, side}, progress);
  });
}

void Workplace::nextProcess() {
  machine().startSession();
  if (beside_ != nullptr) {
    beside_->programs().setRunning(machine().system().processId());
  }
}

std::vector<std::string> Workplace::told() {
  std::vector<std::string> told = log_;
  const std::vector<std::string> boxes = machine().desktop().boxTexts();
  const std::vector<std::string>& forms = machine().desktop().shownForms();
  told.insert(told.end(), boxes.begin() + static_cast<std::ptrdiff_t>(boxesBefore_), boxes.end());
  told.insert(told.end(), forms.begin() + static_cast<std::ptrdiff_t>(formsBefore_), forms.end());
  return told;
}

void Workplace::forgetTold() {
  log_.clear();
  boxesBefore_ = machine().boxes().size();
  formsBefore_ = machine().desktop().shownForms().size();
  machine().removeTree(temp_ + "\\log");
  machine().makeFolders(temp_ + "\\log");
}

bool Workplace::sharesWorkFolderWith(Workplace& other) {
  return &machine().diskOf("C:\\") == &other.machine().diskOf("C:\\") && temp_ == other.temp_;
}

std::size_t Workplace::countOfStarted(const std::string& beginning) {
  const std::vector<std::string> lines = commands();
  return static_cast<std::size_t>(
      std::count_if(lines.begin(), lines.end(),
                    [&](const std::string& line) { return line.starts_with(beginning); }));
}

void SetUps::begins(const sim::SimDisk& disk, const std::string& file, const std::string& version) {
  Target& target = targets_[{&disk, file}];
  if (++target.writers > 1 || version < target.newest) {
    disputed_.insert(lowerCase(file.substr(2)));
  }
  target.newest = std::max(target.newest, version);
}

void SetUps::ends(const sim::SimDisk& disk, const std::string& file) {
  --targets_[{&disk, file}].writers;
}

void putStore(sim::SimMachine& machine) {
  machine.registry().setText(kHive, kStoreKey, "Schema", kSchemaFile);
  machine.registry().setText(kHive, kStoreKey, "Config", Workplace::kStoreFile);
  machine.putFile(kSchemaFile, "<schema/>");
  machine.putFile(Workplace::kStoreFile,
                  "<configuration><product name=\"SYSTEM\"><section "
                  "name=\"Complementary_Products\"><key name=\"Integration\"><attribute "
                  "name=\"Path\" type=\"1\">S:\\Lumo</attribute></key></section></product>"
                  "</configuration>");
}

std::shared_ptr<SetUps> putServer(Installation& installation) {
  auto setUps = std::make_shared<SetUps>();
  sim::SimDisk& share = installation.share();
  std::vector<ProductEntry> entries = wholeCatalogue();
  entries.resize(2);
  installation.putCatalogue(entries);
  share.put(setupPath("zb.ini"), configurationOf("zb", kVersionThere));
  share.put(setupPath("nerio.ini"), configurationOf("nerio", kNerioVersion));
  for (const std::string& product : {std::string("zb"), std::string("nerio")}) {
    share.putProgram(setupPath(product + "\\server.exe"),
                     settingUp("S:\\Lumo\\mv\\" + product + "\\dati.txt", setUps));
    share.putProgram(setupPath(product + "\\client.exe"),
                     settingUp("C:\\Lumo\\" + product + ".txt", setUps));
    share.putProgram(setupPath(product + "\\togli.exe"));
  }
  share.putProgram(kBilancio);
  share.putProgram(kNerio);
  installation.putServerRecord(records());
  share.put(kClientCopy, "il vecchio");
  share.setModified(kClientCopy, kOldCopy);
  share.put(kEnvironmentFile, "AMB0001 01/02/08 10:11\r\n");
  share.put("S:\\Lumo\\prg\\etc\\dvrel", "11.20.00\r\n");
  share.makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
  return setUps;
}

void putClient(Workplace& workplace) { workplace.station().putClientRecord(records()); }

PackContent packOf(const std::string& id, const std::string& version) {
  const std::string tree = "prg\\com\\setup\\aggdovra\\" + lowerCase(id);
  return {{tree + ".ini", configurationOf(lowerCase(id), version)},
          {tree + "\\novita.txt", "novita " + version}};
}

std::string productPack(const std::string& id) {
  const std::string tree = "prg\\com\\setup\\aggdovra\\";
  const std::string name = lowerCase(id);
  const std::string zip = packBytes({{tree + name + "\\leggimi.txt", "leggimi " + id},
                                     {tree + name + ".ini", configurationText({})},
                                     {tree + "agdvcomp.ini", catalogueText(wholeCatalogue())}});
  return packBytes({{tree + name + ".zip", zip}});
}

}  // namespace trelv::tests
