#include "prove/Meetings.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "packs/ProductRemoval.h"
#include "packs/SelfUpdate.h"
#include "prove/Gathering.h"
#include "support/MediumStation.h"

namespace trelv::tests {
namespace {

class NoProgress : public modProdTrelvManager::RemovalProgress {
 public:
  void begin(int /*max*/) override {}
  void advance() override {}
  void finish() override {}
};

/// Starts on computers of their own, while a pack waits.
class Updates : public Gathering {
 public:
  explicit Updates(std::size_t computers) {
    putWaitingPack();
    for (std::size_t i = 0; i < computers; ++i) {
      starts(addComputer(), kStartOfBilancio, kBilancio);
    }
  }
  bool mayEndOtherwise() override { return setUps_->met; }

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

class UpdateAndInstall : public Gathering {
 public:
  UpdateAndInstall() {
    installation_.putConfiguration("prg\\com\\setup\\aggdovra\\q2.ini", configurationText({}));
    starts(addComputer(), kStartOfBilancio, kBilancio);
    installs(addComputer(), "LUDA");
  }

 protected:
  void judgeMore(Findings& findings) override { expectInstalled("luda", findings); }
};

class TwoInstalls : public Gathering {
 public:
  TwoInstalls() {
    installs(addComputer(), "LUDA");
    installs(addComputer(), "Q2");
  }

 protected:
  void judgeMore(Findings& findings) override {
    expectInstalled("luda", findings);
    expectInstalled("q2", findings);
  }
};

/// One manager is newer than the other, both than the client copy. Who stands still too long is not
/// waited for.
class TwoSelfUpdates : public Gathering {
 public:
  TwoSelfUpdates() {
    add("il nuovo", {2026, 11, 1, 12, 0, 0});
    add("il piu nuovo", {2026, 11, 5, 12, 0, 0});
  }
  bool mayEndOtherwise() override { return hasStoodStill(); }

 protected:
  void judgeMore(Findings& findings) override {
    sim::SimDisk& share = installation_.share();
    expect(
        findings, Invariant::VersionsTrue,
        share.exists(kClientCopy) && (share.text(kClientCopy) == "il piu nuovo" || hasStoodStill()),
        "the client copy is not the newest");
    expect(findings, Invariant::NothingHalf,
           share.exists(kEnvironmentFile) &&
               share.text(kEnvironmentFile).starts_with("AMB000116/11/26 "),
           "the environment file is not stamped");
  }

 private:
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

/// Two processes of one computer, each of which writes a setting of its own.
class TwoStoreWriters : public Gathering {
 public:
  TwoStoreWriters() {
    Workplace& first = addComputer();
    writes(first, "Uno");
    writes(addProcess(first, "mario", 1), "Due");
  }
  bool mayEndOtherwise() override { return hasStoodStill(); }

 protected:
  void judgeMore(Findings& findings) override {
    for (const auto& [attribute, written] : codes_) {
      std::string buffer(100, '\0');
      const std::int32_t code = workplaces_.front().store().getParameter(
          "SYSTEM", "Complementary_Products", "Integration", attribute, "", 100, buffer);
      expect(findings, Invariant::OthersSurvive,
             written != 0 || (code == 0 && buffer.substr(0, buffer.find('\0')) == attribute),
             "the setting is lost: " + attribute);
      expect(findings, Invariant::ToldForAReason, written == 0 || hasStoodStill(),
             "a write was refused");
    }
  }

 private:
  void writes(Workplace& workplace, const std::string& attribute) {
    does(workplace, [this, &workplace, attribute] {
      codes_[attribute] = workplace.store().setParameter("SYSTEM", "Complementary_Products",
                                                         "Integration", attribute, 1, attribute);
    });
  }

  /// By the attribute that was written.
  std::map<std::string, std::int32_t> codes_;
};

/// Bilancio is removed from the server while another workstation starts Nerio.
class RemovalAndUpdate : public Gathering {
 public:
  RemovalAndUpdate() {
    Workplace& removing = addComputer();
    does(removing, [&removing] {
      removing.work([](RealProgram& program) {
        NoProgress progress;
        modProdTrelvManager::RemoveProduct(program, {"S:\\Lumo", "S:\\Lumo", "C:\\Lumo\\Client"},
                                           {"ZB", Side::Server}, progress);
      });
    });
    starts(addComputer(), kStartOfNerio, kNerio);
  }

 protected:
  bool mayStand(const std::string& id, const std::string& version) override {
    return id == "ZB" && version.empty();
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
    return tellsOneOf({text}, "aggdovra\\zb\\|aggdovra\\zb.ini") || text == "frmError";
  }
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
           !tellsOneOf({text}, std::string(kFailures) + "|Attenzione"),
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

const std::array<Meeting, 12>& meetings() {
  static const std::array<Meeting, 12> all{
      {{"update-update", making<Updates>(std::size_t{2}), true},
       {"update-install", making<UpdateAndInstall>()},
       {"install-install", making<TwoInstalls>()},
       {"selfupdate-selfupdate", making<TwoSelfUpdates>()},
       {"store-store", making<TwoStoreWriters>(), true},
       {"removal-update", making<RemovalAndUpdate>()},
       {"starts-of-one-user", making<TwoStartsOfOneUser>()},
       {"terminal-server", making<TwoSessions>(), true},
       {"start-session", making<StartAndSession>(true)},
       {"start-session-beside", making<StartAndSession>(false)},
       startAndPublish(),
       {"three-updates", making<Updates>(std::size_t{3}), true}}};
  return all;
}

}  // namespace trelv::tests
