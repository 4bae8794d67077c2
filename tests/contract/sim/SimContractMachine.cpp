#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contract/ContractMachine.h"
#include "sim/SimFileUse.h"
#include "sim/SimMachine.h"

namespace trelv::contract {
namespace {

constexpr const char* kFolder = "C:\\Contract";
constexpr const char* kKey = "Software\\TrelvManagerContract";
constexpr sim::FileTicks kTicksPerSecond = 10000000;

sim::Sharing simulated(Sharing sharing) {
  const sim::Sharing read = sharing.read ? sim::Sharing::Read : sim::Sharing::None;
  const sim::Sharing write = sharing.write ? sim::Sharing::Write : sim::Sharing::None;
  return read | write | (sharing.remove ? sim::Sharing::Delete : sim::Sharing::None);
}

class SimHeldFile : public HeldFile {
 public:
  SimHeldFile(sim::SimDisk& disk, std::string path, Sharing sharing)
      : disk_(disk), path_(std::move(path)) {
    disk_.holdOpen(path_, simulated(sharing));
  }
  ~SimHeldFile() override { disk_.release(path_); }

 private:
  sim::SimDisk& disk_;
  std::string path_;
};

/// What putProgram promises of its programs.
std::uint32_t runProgram(sim::SimProcess& process) {
  const std::vector<std::string>& arguments = process.arguments();
  if (arguments.size() > 1) {
    std::string report = process.commandLine();
    if (arguments.size() > 2) report += "\n" + process.variable(arguments[2]);
    process.machine().putFile(arguments[1], report);
  }
  return arguments.empty()
             ? 0
             : static_cast<std::uint32_t>(std::strtoul(arguments.front().c_str(), nullptr, 10));
}

class SimRunningProgram : public RunningProgram {
 public:
  explicit SimRunningProgram(std::shared_ptr<void> token) : token_(std::move(token)) {}

 private:
  std::shared_ptr<void> token_;
};

sim::SimFormWindow& simulated(machine::FormWindow& window) {
  return dynamic_cast<sim::SimFormWindow&>(window);
}

class SimContractMachine : public ContractMachine {
 public:
  SimContractMachine() {
    simulated_.makeFolders(kFolder);
    simulated_.registry().makeKey(machine::Hive::CurrentUser, kKey);
    simulated_.desktop().declareForm(
        stage::kForm,
        {{stage::kButton, stage::kOtherButton, stage::kList, stage::kCombo, stage::kFirstOption,
          stage::kSecondOption, stage::kCheckBox, stage::kPicture},
         {},
         {{stage::kFirstOption, stage::kSecondOption}},
         {stage::kMultiList},
         {stage::kTabs}});
  }

  machine::Machine& machine() override { return simulated_.machine(); }
  machine::FileUse& fileUse() override { return fileUse_; }
  bool can(Ability) const override { return true; }

  std::string folder() override { return kFolder; }
  void putFile(const std::string& path, std::string_view bytes) override {
    simulated_.putFile(path, bytes);
  }
  std::string fileBytes(const std::string& path) override { return simulated_.fileText(path); }
  bool exists(const std::string& path) override {
    return simulated_.volumes().find(path, false).code == system_code::kSuccess;
  }
  void putFolder(const std::string& path) override { simulated_.makeFolders(path); }
  void putFolderLink(const std::string& link, const std::string& target) override {
    disk().putLink(link, target);
  }
  std::int64_t modifiedSeconds(const std::string& path) override {
    return simulated_.diskOf(path).modifiedTicks(path) / kTicksPerSecond;
  }
  void makeOld(const std::string& path) override {
    disk().setModified(path, {2009, 3, 5, 10, 5, 3});
  }
  void conceal(const std::string& path) override { disk().setConcealed(path); }
  void putRights(const std::string& path) override {
    disk().setRights(path, {{"mario", sim::Right::All}, {"*", sim::Right::Read}});
  }
  std::string rights(const std::string& path) override {
    std::string text;
    for (const auto& [user, right] : disk().rights(path)) {
      text += user + "=" + std::to_string(static_cast<unsigned>(right)) + " ";
    }
    return text;
  }
  std::unique_ptr<HeldFile> hold(const std::string& path, Sharing sharing) override {
    return std::make_unique<SimHeldFile>(disk(), path, sharing);
  }

  std::string otherVolumeFolder() override {
    simulated_.mount("D:");
    simulated_.makeFolders("D:\\Contract");
    return "D:\\Contract";
  }
  std::string connectedDrive() override {
    simulated_.mount("N:");
    simulated_.system().connectDrive("N:", connectedShare());
    return "N:";
  }
  std::string connectedShare() override { return "\\\\SRVLUMO\\Dati"; }
  void passASecond() override { simulated_.clock().advance(1); }

  std::string registryKey() override { return kKey; }
  void storeValue(const std::string& path, const std::string& name, std::uint32_t type,
                  std::string_view data) override {
    simulated_.registry().setStored(machine::Hive::CurrentUser, path, name, type,
                                    std::string(data));
  }

  void putProgram(const std::string& path) override {
    simulated_.programs().define(path, runProgram);
  }
  void enterFolder(const std::string& path) override {
    simulated_.volumes().setCurrentFolder(path);
  }
  std::unique_ptr<RunningProgram> keepRunning(const std::string& path) override {
    return std::make_unique<SimRunningProgram>(disk().run(path));
  }
  void putVersionedFile(const std::string& path, const machine::FileVersion& version) override {
    simulated_.putFile(path, "MZ");
    simulated_.setFileVersion(path, version);
  }
  void putUnversionedFile(const std::string& path) override { simulated_.putFile(path, "MZ"); }

  void makeControls(machine::FormWindow&) override {}
  void playUser(std::function<void(machine::FormWindow&)> play) override {
    simulated_.desktop().onForm(stage::kForm, [this, play](sim::SimFormWindow& window) {
      play(window);
      // A modal form lets messages run as long as it is open.
      while (window.isOpen() && clicksWait_) {
        clicksWait_ = false;
        simulated_.desktop().processEvents();
      }
    });
  }
  void click(machine::FormWindow& window, const std::string& control) override {
    simulated(window).click(control);
  }
  void choose(machine::FormWindow& window, const std::string& control, int index) override {
    simulated(window).choose(control, index);
  }
  void check(machine::FormWindow& window, const std::string& control) override {
    simulated(window).check(control, control != stage::kCheckBox || !window.checked(control));
  }
  void toggle(machine::FormWindow& window, const std::string& control, int index) override {
    simulated(window).toggle(control, index);
  }
  void doubleClick(machine::FormWindow& window, const std::string& control, int index) override {
    simulated(window).doubleClick(control, index);
  }
  void pressF10(machine::FormWindow& window, const std::string& control) override {
    simulated(window).press(control, machine::Key::F10);
  }
  void clickLater(machine::FormWindow& window, const std::string& control) override {
    clicksWait_ = true;
    simulated_.desktop().onEvents([&window, control] { simulated(window).click(control); });
  }
  bool hourglassOver(machine::FormWindow&) override { return simulated_.desktop().hourglass(); }

  void answerInput(std::optional<std::string> answer) override {
    simulated_.desktop().answerInput({std::move(answer)});
  }
  std::string inputTitle() override { return simulated_.desktop().inputs().back().title; }
  std::string inputPrompt() override { return simulated_.desktop().inputs().back().prompt; }

  void installWord(const std::vector<std::string>& bookmarks) override {
    simulated_.automation().installWord(bookmarks);
  }
  std::vector<std::string> wordHeard() override;

 private:
  sim::SimDisk& disk() { return simulated_.diskOf(kFolder); }

  sim::SimMachine simulated_;
  sim::SimFileUse fileUse_{simulated_.volumes(), simulated_.files(), simulated_.callLog()};
  bool clicksWait_ = false;
};

std::vector<std::string> SimContractMachine::wordHeard() {
  static const std::map<std::string, std::string> kInBasic{
      {"word.openDocument", "Documents.Open"},
      {"word.makeVisible", "Visible = True"},
      {"word.activate", "Activate"},
      {"word.goToBookmark", "Selection.GoTo -1"},
      {"word.quit", "Quit"}};
  std::vector<std::string> heard;
  for (const std::string& call : simulated_.calls()) {
    const auto found = kInBasic.find(call.substr(0, call.find(' ')));
    if (found != kInBasic.end()) {
      heard.push_back(found->second + call.substr(found->first.size()));
    }
  }
  return heard;
}

}  // namespace

std::unique_ptr<ContractMachine> makeContractMachine() {
  return std::make_unique<SimContractMachine>();
}

}  // namespace trelv::contract
