#include "prove/Meetings.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "base/Text.h"
#include "packs/SelfUpdate.h"
#include "prove/Gathering.h"
#include "support/MediumStation.h"

namespace trelv::tests {
namespace {

/// Starts on computers of their own, while a pack waits.
class Updates : public Gathering {
 public:
  explicit Updates(std::size_t computers) {
    putWaitingPack();
    for (std::size_t i = 0; i < computers; ++i) {
      starts(addComputer(), kStartOfBilancio, kBilancio);
    }
  }

 protected:
  void judgeMore(Findings& findings) override {
    sim::SimDisk& share = installation_.share();
    for (const auto& [path, bytes] : packOf("ZB", kVersionOfPack)) {
      const std::string file = "S:\\Lumo\\" + path;
      expect(findings, Invariant::NothingHalf, share.exists(file) && share.text(file) == bytes,
             "the pack has not brought " + path);
    }
    expect(findings, Invariant::NothingHalf,
           !share.exists(std::string(kSetupFolder) + "\\zb-09.94.zip"), "the pack waits for ever");
  }
};

class UpdatesAndInstall : public Gathering {
 public:
  explicit UpdatesAndInstall(std::size_t updates) {
    installation_.putConfiguration("prg\\com\\setup\\aggdovra\\q2.ini", configurationText({}));
    for (std::size_t i = 0; i < updates; ++i) {
      starts(addComputer(), kStartOfBilancio, kBilancio);
    }
    installs(addComputer(), "LUDA");
  }

 protected:
  void judgeMore(Findings& findings) override { expectInstalled("luda", findings); }
};

/// The third one installs the same as the first.
class Installs : public Gathering {
 public:
  explicit Installs(std::size_t computers) {
    for (std::size_t i = 0; i < computers; ++i) {
      installs(addComputer(), i % 2 == 0 ? "LUDA" : "Q2");
    }
  }

 protected:
  void judgeMore(Findings& findings) override {
    expectInstalled("luda", findings);
    expectInstalled("q2", findings);
  }
};

/// One manager is newer than the other, both than the client copy. Who stands still too long is not
/// waited for.
class SelfUpdates : public Gathering {
 public:
  explicit SelfUpdates(std::size_t computers) {
    add("il nuovo", {2026, 11, 1, 12, 0, 0});
    add("il piu nuovo", {2026, 11, 5, 12, 0, 0});
    if (computers > 2) {
      add("quello di mezzo", {2026, 11, 3, 12, 0, 0});
    }
  }
  std::set<std::string> mayDiffer() override {
    return isTurnLost() ? std::set<std::string>{lowerCase(kClientCopy).substr(2)}
                        : std::set<std::string>();
  }

 protected:
  void judgeMore(Findings& findings) override {
    sim::SimDisk& share = installation_.share();
    expect(findings, Invariant::VersionsTrue,
           share.exists(kClientCopy) && (share.text(kClientCopy) == "il piu nuovo" || isTurnLost()),
           "the client copy is not the newest");
    expect(findings, Invariant::NothingHalf,
           share.exists(kEnvironmentFile) &&
               share.text(kEnvironmentFile).starts_with("AMB000116/11/26 "),
           "the environment file is not stamped");
  }

 private:
  /// Whoever waited for his turn has gone on without it.
  bool isTurnLost() {
    constexpr int kLongestWait = 10;
    return hasStoodStill(kLongestWait);
  }

  void add(const char* bytes, const machine::LocalTime& date) {
    Workplace& workplace = addComputer();
    const std::string own = workplace.machine().system().executablePath();
    sim::SimDisk& disk = workplace.machine().diskOf(own);
    disk.put(own, bytes);
    disk.setModified(own, date);
    does(workplace, [&workplace] {
      workplace.work([](RealProgram& program) {
        program.state().startup.paths.server = "S:\\Lumo";
        modProdTrelvManager::UpdateTrelvManager(program, "S:\\Lumo");
      });
    });
  }
};

/// Processes of one computer, each of which writes a setting of its own.
class StoreWriters : public Gathering {
 public:
  explicit StoreWriters(std::size_t processes) {
    Workplace& first = addComputer();
    writes(first, "Uno");
    for (std::size_t i = 1; i < processes; ++i) {
      writes(addProcess(first, "mario", 1), "Altro" + std::to_string(i));
    }
  }
  std::set<std::string> mayDiffer() override {
    return isRefused() ? std::set<std::string>{lowerCase(Workplace::kStoreFile).substr(2)}
                       : std::set<std::string>();
  }

 protected:
  void judgeMore(Findings& findings) override {
    for (const auto& [attribute, written] : codes_) {
      std::string buffer(100, '\0');
      const std::int32_t code = workplaces_.front().store().getParameter(
          "SYSTEM", "Complementary_Products", "Integration", attribute, "", 100, buffer);
      expect(findings, Invariant::OthersSurvive,
             written != 0 || (code == 0 && buffer.substr(0, buffer.find('\0')) == attribute),
             "the setting is lost: " + attribute);
      expect(findings, Invariant::ToldForAReason, written == 0 || isRefused(),
             "a write was refused");
    }
  }

 private:
  /// Whoever waited for the store has been refused.
  bool isRefused() {
    constexpr int kLongestWait = 3;
    return hasStoodStill(kLongestWait);
  }

  void writes(Workplace& workplace, const std::string& attribute) {
    does(workplace, [this, &workplace, attribute] {
      codes_[attribute] = workplace.store().setParameter("SYSTEM", "Complementary_Products",
                                                         "Integration", attribute, 1, attribute);
    });
  }

  /// By the attribute that was written.
  std::map<std::string, std::int32_t> codes_;
};

/// Bilancio is removed from the server while other workstations start Nerio.
class RemovalAndUpdates : public Gathering {
 public:
  explicit RemovalAndUpdates(std::size_t updates) {
    Workplace& removing = addComputer();
    does(removing, [&removing] { removing.removeProduct("ZB", Side::Server); });
    for (std::size_t i = 0; i < updates; ++i) {
      starts(addComputer(), kStartOfNerio, kNerio);
    }
  }

  /// What is in use cannot be removed, and is told.
  std::set<std::string> mayDiffer() override {
    std::set<std::string> paths = Gathering::mayDiffer();
    if (tellsOneOf(workplaces_.front().told(), kNotRemoved)) {
      paths.insert({"\\aggdovra\\zb\\", "\\zb\\server.exe", "\\zb\\client.exe", "\\zb\\togli.exe"});
    }
    return paths;
  }

 protected:
  /// Whoever found the product removed writes back what he read.
  bool mayStand(const std::string& id, const std::string& version) override {
    return id == "ZB" && (version.empty() || version == kVersionBefore);
  }
  /// A removal takes no lock: what it removes may be what the update is about to start.
  /// Nor does it know of an update that writes back what it read, or has begun to set up what is
  /// removed.
  std::optional<std::string> comparable(const std::string& path,
                                        const std::string& bytes) override {
    if (path.ends_with("\\mv\\zb\\dati.txt") || path.ends_with("\\lumo\\zb.txt")) {
      return std::nullopt;
    }
    std::optional<std::string> text = Gathering::comparable(path, bytes);
    if (text && path.ends_with("\\agdvver.ini")) {
      text->resize(std::min(text->find("[ZB]"), text->size()));
    }
    return text;
  }
  bool isRight(const std::string& text) override {
    return tellsOneOf({text}, std::string("aggdovra\\zb\\|aggdovra\\zb.ini|") + kNotRemoved) ||
           text == "frmError";
  }

 private:
  static constexpr const char* kNotRemoved = "Cartella server di setup non rimossa: ";
};

/// Two starts of one user on one computer: one work folder, one client lock, one log.
class TwoStartsOfOneUser : public Gathering {
 public:
  TwoStartsOfOneUser() {
    putWaitingPack();
    Workplace& first = addComputer();
    starts(first, kStartOfBilancio, kBilancio);
    starts(addProcess(first, "mario", 1), kStartOfNerio, kNerio);
  }
};

/// Two users on one Terminal Server.
class TwoSessions : public Gathering {
 public:
  TwoSessions() {
    putWaitingPack();
    Workplace& first = addComputer();
    starts(first, kStartOfBilancio, kBilancio);
    starts(addProcess(first, "lucia", 2), kStartOfBilancio, kBilancio);
    for (Workplace& workplace : workplaces_) {
      workplace.machine().setEdition(sim::WindowsEdition::Win2008TerminalServer);
      workplace.machine().system().setUserName(&workplace == &first ? "mario" : "lucia");
    }
  }
};

/// What a medium's user has before any base is made.
class WithMedium {
 protected:
  MediumStation medium_;
};

/// A start by the host while a user installs from a medium: on another computer into the server, or
/// on the same one without it.
class StartAndSession : private WithMedium, public Gathering {
 public:
  explicit StartAndSession(bool integrated);

 protected:
  void judgeMore(Findings& findings) override;
  /// A standard installation leaves what it unpacked: set-ups of before may still need it.
  bool mayStay(const std::string& path) override {
    return !integrated_ && path.ends_with("\\temp\\prg\\");
  }

 private:
  void putMedium();
  void session();

  const bool integrated_;
  PatientMachine patient_{medium_.machine().machine()};
  XmlStore store_{patient_.machine().files, patient_.machine().registry, patient_.machine().locale,
                  patient_.machine().system, patient_.machine().exclusion};
};

StartAndSession::StartAndSession(bool integrated)
    : Gathering(medium_.installation()), integrated_(integrated) {
  installation_.putConfiguration("prg\\com\\setup\\aggdovra\\q2.ini", configurationText({}));
  putMedium();
  putWaitingPack();
  if (integrated) {
    starts(addComputer(), kStartOfNerio, kNerio);
  } else {
    putStore(medium_.machine());
    medium_.machine().useConfigurationLibrary(store_);
    Workplace& beside =
        workplaces_.emplace_back(installation_, medium_.machine(), "mario", std::uint32_t{1});
    putClient(beside);
    starts(beside, kStartOfNerio, kNerio);
  }
  programs_.push_back({&medium_.machine(), [this] { session(); }});
}

/// Luda alone, as a medium brings it.
void StartAndSession::putMedium() {
  medium_.medium().removeTree("E:\\prodotti\\packs\\nerio\\nerio.zip");
  medium_.putMediumFile("prodotti\\packs\\nerio\\luda.zip",
                        packBytes({{"luda.gz", productPack("LUDA")}}));
  medium_.putMenu({"#PRIMA_LISTA#Prodotti", "#PRIMA_LISTA#Luda|prodotti\\packs\\nerio|LUDA"});
}

void StartAndSession::session() {
  medium_.select(integrated_ ? MediumStation::kIntegrated : MediumStation::kStandard);
  medium_.desktop().answerInput({"S:\\Lumo"});
  medium_.install(integrated_ ? "frmProdTrelvIntegrated" : "frmProdTrelvStandalone", {"Luda"});
  medium_.run();
}

void StartAndSession::judgeMore(Findings& findings) {
  for (const std::string& report : medium_.reports()) {
    expect(findings, Invariant::ToldForAReason, false, "told without a reason: " + report);
  }
  for (const std::string& text : medium_.desktop().boxTexts()) {
    expect(findings, Invariant::ToldForAReason,
           !tellsOneOf({text}, std::string(kFailures) + "|Attenzione") || isOfWorkFolderInUse(text),
           "told without a reason: " + text);
  }
}

template <class World, class... Arguments>
std::function<std::unique_ptr<WovenWorld>()> making(Arguments... arguments) {
  return [arguments...]() -> std::unique_ptr<WovenWorld> {
    return std::make_unique<World>(arguments...);
  };
}

}  // namespace

const std::array<Meeting, kMeetings>& meetings() {
  constexpr std::size_t kOne = 1;
  constexpr std::size_t kTwo = 2;
  constexpr std::size_t kThree = 3;
  static const std::array<Meeting, kMeetings> all{
      {{"update-update", making<Updates>(kTwo), {0, 1}},
       {"update-install", making<UpdatesAndInstall>(kOne)},
       {"install-install", making<Installs>(kTwo)},
       {"selfupdate-selfupdate", making<SelfUpdates>(kTwo)},
       {"store-store", making<StoreWriters>(kTwo), {0, 1}},
       {"removal-update", making<RemovalAndUpdates>(kOne)},
       {"starts-of-one-user", making<TwoStartsOfOneUser>()},
       {"terminal-server", making<TwoSessions>(), {0, 1}},
       {"start-session", making<StartAndSession>(true)},
       {"start-session-beside", making<StartAndSession>(false)},
       startsAndPublish("start-publish", kOne, {}),
       {"three-updates", making<Updates>(kThree), {0, 1, 2}},
       {"two-updates-install", making<UpdatesAndInstall>(kTwo), {0, 1}},
       {"three-installs", making<Installs>(kThree), {0, 2}},
       {"three-selfupdates", making<SelfUpdates>(kThree)},
       {"three-stores", making<StoreWriters>(kThree), {0, 1, 2}},
       {"removal-two-updates", making<RemovalAndUpdates>(kTwo), {1, 2}},
       startsAndPublish("two-starts-publish", kTwo, {0, 1})}};
  return all;
}

}  // namespace trelv::tests
