#include <random>

#include "base/Text.h"
#include "kit/GeneralDateText.h"
#include "packs/ProductUpdateRun.h"
#include "support/RealProgram.h"
#include "support/kit/HostTest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace trelv::tests {
namespace {

constexpr const char* kNerio = "prg\\com\\setup\\aggdovra\\nerio.ini";
constexpr const char* kZb = "prg\\com\\setup\\aggdovra\\zb.ini";
constexpr const char* kZm = "prg\\com\\setup\\aggdovra\\zm.ini";

class Locks : public HostTest {
 protected:
  Locks() {
    installation_.putCatalogue(
        {{"NERIO", "Nerio", kNerio}, {"ZB", "Bilancio", kZb}, {"ZM", "Zeltomodelli", kZm}});
    for (const char* const conf : {kNerio, kZb, kZm}) {
      installation_.putConfiguration(
          conf, configurationText({{"Setup01", "02.00", {"a.exe"}, {"b.exe"}},
                                   {"Update01", "02.00", {"a.exe"}, {"b.exe"}}}));
    }
    record("01.00", "02.00", "01.00");
    share().put(Installation::kServerLock, "16/11/2026 07:30:00\r\n");
  }

  static std::string recordText(const std::string& nerio, const std::string& zb,
                                const std::string& zm) {
    return "[NERIO]\r\nversion=" + nerio + "\r\n[ZB]\r\nversion=" + zb +
           "\r\n[ZM]\r\nversion=" + zm + "\r\n";
  }
  /// The same versions on both sides.
  void record(const std::string& nerio, const std::string& zb, const std::string& zm) {
    installation_.putServerRecord(recordText(nerio, zb, zm));
    station_.putClientRecord(recordText(nerio, zb, zm));
  }
  Json locks(const std::string& host = "S:\\Lumo") { return result({"locks", host})["locks"]; }
  std::vector<std::string> waiting() {
    return locks().at(0)["waiting"].get<std::vector<std::string>>();
  }
};

TEST_F(Locks, OfTheServerIsToldWithItsKeysInTheirOrder) {
  EXPECT_EQ(locks().dump(),
            "[{\"path\":\"S:\\\\Lumo\\\\prg\\\\tempterm\\\\agdv.lck\",\"side\":\"Server\","
            "\"written\":\"16/11/2026 07:30:00\",\"age\":7200,\"owner\":null,\"open\":false,"
            "\"waiting\":[\"NERIO\",\"ZM\"]}]");
  EXPECT_EQ(exitCode, 1);
}

TEST_F(Locks, NoneIsNothingToDo) {
  share().removeTree(Installation::kServerLock);
  EXPECT_EQ(result({"locks", "S:\\Lumo"}).dump(), "{\"locks\":[]}");
  EXPECT_EQ(exitCode, 0);
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo"}), 0);
  EXPECT_EQ(output(), "Nessun blocco.\n");
}

TEST_F(Locks, OfTheWorkstationLiesBesideTheProgramsFolder) {
  share().removeTree(Installation::kServerLock);
  machine().putFile(Station::kClientLock, "16/11/2026 09:29:00\r\n");
  EXPECT_EQ(locks().dump(),
            "[{\"path\":\"C:\\\\Lumo\\\\Clientagdv.lck\",\"side\":\"Client\",\"written\":\"16/11/"
            "2026 09:29:00\",\"age\":60,\"owner\":null,\"open\":false,\"waiting\":[\"NERIO\","
            "\"ZM\"]}]");
}

TEST_F(Locks, OfTheWorkstationIsNotLookedForWithoutTheStore) {
  machine().putFile(Station::kClientLock, "16/11/2026 09:29:00\r\n");
  machine().configuration().answerAlways(-4002);
  EXPECT_EQ(locks().size(), 1U);
}

TEST_F(Locks, PathIsToldAsTheHostWasGiven) {
  EXPECT_EQ(locks("s:\\lumo\\")[0]["path"], "s:\\lumo\\prg\\tempterm\\agdv.lck");
  EXPECT_EQ(locks("S:/Lumo")[0]["path"], "S:/Lumo\\prg\\tempterm\\agdv.lck");
}

TEST_F(Locks, AgeOfATextThatIsNoDateIsTheFiles) {
  share().setModified(Installation::kServerLock, {2026, 11, 15, 9, 30, 0});
  for (const char* const text : {"", "in uso\r\n", "99/99/2026 01:02:03\r\n"}) {
    share().put(Installation::kServerLock, text);
    share().setModified(Installation::kServerLock, {2026, 11, 15, 9, 30, 0});
    EXPECT_EQ(locks()[0]["age"], 86400) << text;
  }
}

TEST_F(Locks, AgeIsToldInTheLargestUnitThatItFills) {
  struct Row {
    const char* written;
    const char* told;
  };
  for (const Row& row :
       {Row{"16/11/2026 09:29:59", "1 secondo"}, Row{"16/11/2026 09:29:01", "59 secondi"},
        Row{"16/11/2026 09:29:00", "1 minuto"}, Row{"16/11/2026 09:28:00", "2 minuti"},
        Row{"16/11/2026 08:30:01", "59 minuti"}, Row{"16/11/2026 08:30:00", "1 ora"},
        Row{"15/11/2026 09:30:01", "23 ore"}, Row{"15/11/2026 09:30:00", "1 giorno"},
        Row{"14/11/2026 09:30:00", "2 giorni"}}) {
    share().put(Installation::kServerLock, std::string(row.written) + "\r\n");
    trelv_.run({"locks", "S:\\Lumo"});
    EXPECT_THAT(output(),
                HasSubstr("preso: " + std::string(row.written) + " (" + row.told + " fa)\n"));
  }
}

TEST_F(Locks, AgeIsNeverNegative) {
  share().put(Installation::kServerLock, "17/11/2026 09:30:00\r\n");
  EXPECT_EQ(locks()[0]["age"], 0);
}

TEST_F(Locks, OwnerAndOpenerAreToldWhereTheSystemKnowsThem) {
  share().find("Lumo\\prg\\tempterm\\agdv.lck")->owner = "STAZIONE\\anna";
  EXPECT_EQ(locks()[0]["owner"], "STAZIONE\\anna");
  share().holdOpen(Installation::kServerLock, sim::Sharing::All);
  EXPECT_EQ(locks()[0]["open"], true);
  trelv_.fileUse.hideOpeners();
  EXPECT_TRUE(locks()[0]["open"].is_null());
}

TEST_F(Locks, ThatNobodyMayReadIsOpen) {
  trelv_.fileUse.hideOpeners();
  share().holdOpen(Installation::kServerLock, sim::Sharing::None);
  const Json lock = locks()[0];
  EXPECT_EQ(lock["open"], true);
  EXPECT_EQ(lock["written"], "");
}

TEST_F(Locks, FolderInTheirPlaceIsNoneButTold) {
  share().removeTree(Installation::kServerLock);
  share().makeFolders(Installation::kServerLock);
  EXPECT_THAT(locks("s:\\lumo\\"), IsEmpty());
  EXPECT_EQ(exitCode, 1);
  const Json finding = Json::parse(output())["findings"].at(0);
  EXPECT_EQ(finding["code"], "TK402");
  EXPECT_EQ(finding["file"], "s:\\lumo\\prg\\tempterm\\agdv.lck");
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove", "--yes"}), 1);
  EXPECT_TRUE(share().exists(Installation::kServerLock));
}

// --- What waits

TEST_F(Locks, NothingWaitsWhereTheFirstProductHasNoWorkAndFreesIt) {
  record("02.00", "01.00", "01.00");
  EXPECT_THAT(waiting(), IsEmpty());
}

TEST_F(Locks, ProductsWaitWhereTheStartCannotFreeIt) {
  record("02.00", "01.00", "01.00");
  share().holdOpen(Installation::kServerLock, sim::Sharing::Read);
  EXPECT_THAT(waiting(), ElementsAre("ZB", "ZM"));
}

TEST_F(Locks, ProductWithoutConfigurationFileFreesNothing) {
  share().removeTree("S:\\Lumo\\" + std::string(kNerio));
  record("01.00", "01.00", "02.00");
  EXPECT_THAT(waiting(), ElementsAre("ZB"));
}

TEST_F(Locks, WorkOfTheOtherSideWaitsBehindTheFirstProduct) {
  installation_.putServerRecord(recordText("01.00", "02.00", "02.00"));
  station_.putClientRecord(recordText("02.00", "02.00", "01.00"));
  EXPECT_THAT(waiting(), ElementsAre("NERIO", "ZM"));
}

/// Versions recorded after a start of the real program.
std::vector<std::string> updatedBy(HostTest& test, bool locked, bool client) {
  Installation installation;
  for (const char* const file : {Installation::kCatalogue, Installation::kServerRecord}) {
    installation.share().put(file, test.share().text(file));
  }
  Station station(installation);
  station.putClientRecord(test.machine().fileText(Station::kClientRecord));
  std::vector<std::string> ids;
  std::vector<std::string> before;
  for (const char* const id : {"NERIO", "ZB", "ZM"}) {
    ids.emplace_back(id);
    const std::string conf = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\" + lowerCase(id) + ".ini";
    if (test.share().fileExists(conf)) {
      installation.share().put(conf, test.share().text(conf));
    }
    before.push_back(station.serverVersion(id) + "/" + station.clientVersion(id));
  }
  installation.putPrograms({"a", "b"});
  if (locked) {
    station.machine().putFile(client ? Station::kClientLock : Installation::kServerLock, "x");
  }
  RealProgram(station.machine()).run("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
  std::vector<std::string> updated;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (station.serverVersion(ids[i]) + "/" + station.clientVersion(ids[i]) != before[i]) {
      updated.push_back(ids[i] + " " + station.serverVersion(ids[i]) + "/" +
                        station.clientVersion(ids[i]));
    }
  }
  return updated;
}

TEST_F(Locks, WhatWaitsIsWhatARealStartLeavesBecauseOfThem) {
  std::mt19937 random(20261122);
  const auto version = [&random]() -> std::string {
    return std::vector<std::string>{"", "01.00", "02.00", "03.00"}.at(random() % 4);
  };
  std::size_t someWait = 0;
  for (int world = 0; world < 300; ++world) {
    SCOPED_TRACE(world);
    for (const char* const conf : {kNerio, kZb, kZm}) {
      std::string text = configurationText({{"Setup01", "02.00", {"S:\\Lumo\\a.exe"}, {}},
                                            {"Update01", "02.00", {"S:\\Lumo\\a.exe"}, {}}});
      if (random() % 2 == 0) {
        text = configurationText({{"Setup01", "02.00", {"S:\\Lumo\\a.exe"}, {"S:\\Lumo\\b.exe"}},
                                  {"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {"S:\\Lumo\\b.exe"}},
                                  {"Update02", "02.00", {"S:\\Lumo\\a.exe"}, {"S:\\Lumo\\b.exe"}}});
      }
      share().put("S:\\Lumo\\" + std::string(conf), text);
      if (random() % 8 == 0) {
        share().removeTree("S:\\Lumo\\" + std::string(conf));
      }
    }
    installation_.putServerRecord(recordText(version(), version(), version()));
    station_.putClientRecord(recordText(version(), version(), version()));
    const bool client = random() % 2 == 0;
    share().removeTree(Installation::kServerLock);
    machine().removeTree(Station::kClientLock);
    machine().putFile(client ? Station::kClientLock : Installation::kServerLock, "x");
    const std::vector<std::string> free = updatedBy(*this, false, client);
    const std::vector<std::string> kept = updatedBy(*this, true, client);
    std::vector<std::string> left;
    for (const std::string& product : free) {
      if (std::find(kept.begin(), kept.end(), product) == kept.end()) {
        left.push_back(product.substr(0, product.find(' ')));
      }
    }
    ASSERT_EQ(waiting(), left);
    someWait += left.empty() ? 0U : 1U;
  }
  EXPECT_GT(someWait, 50U);
}

// --- Removing

TEST_F(Locks, AreRemovedWithYes) {
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove", "--yes"}), 0);
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_THAT(output(), HasSubstr("rimosso"));
}

TEST_F(Locks, AreNotRemovedWithoutYesWhereNobodyCanConfirm) {
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove"}), 2);
  EXPECT_TRUE(installation_.serverLockExists());
  EXPECT_EQ(errors(),
            "trelv: S:\\Lumo: nessun blocco rimosso: manca --yes e nessuno può confermare\n");
}

TEST_F(Locks, AreRemovedWhenAPersonConfirms) {
  trelv_.console.terminal = true;
  for (const char* const answer : {"", "n", "forse"}) {
    trelv_.console.input = {answer};
    EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove"}), 1);
    EXPECT_TRUE(installation_.serverLockExists());
  }
  trelv_.console.input = {};
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove"}), 1);
  EXPECT_TRUE(installation_.serverLockExists());
  for (const char* const answer : {"s", "S", " si ", "sì"}) {
    share().put(Installation::kServerLock, "16/11/2026 07:30:00\r\n");
    trelv_.console.input = {answer};
    EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove"}), 0) << answer;
    EXPECT_THAT(errors(), HasSubstr("\rRicerca dei blocchi"));
    EXPECT_THAT(errors(),
                HasSubstr("Rimuovere S:\\Lumo\\prg\\tempterm\\agdv.lck (preso 2 ore fa)?"));
    EXPECT_FALSE(installation_.serverLockExists()) << answer;
  }
}

TEST_F(Locks, HeldOpenInWhateverWayStays) {
  for (const sim::Sharing sharing :
       {sim::Sharing::None, sim::Sharing::Read, sim::Sharing::ReadWrite, sim::Sharing::All}) {
    share().holdOpen(Installation::kServerLock, sharing);
    EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove", "--yes"}), 2);
    EXPECT_TRUE(installation_.serverLockExists());
    share().release(Installation::kServerLock);
  }
  EXPECT_EQ(errors(),
            "trelv: S:\\Lumo\\prg\\tempterm\\agdv.lck: aperto da un altro programma, non "
            "rimosso\n");
  EXPECT_EQ(machine().clock().paused(), 0U);
}

TEST_F(Locks, TakenAnewSinceItWasToldStays) {
  trelv_.console.terminal = true;
  trelv_.console.input = {"s"};
  machine().onCall("fileUse.removeUnused", [this]() -> void {
    machine().clock().advance(60);
    share().put(Installation::kServerLock, "16/11/2026 09:31:00\r\n");
    share().setModified(Installation::kServerLock, {2026, 11, 16, 9, 31, 0});
  });
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove"}), 2);
  EXPECT_THAT(errors(), HasSubstr("agdv.lck: preso nel frattempo da un'altra sessione"));
  EXPECT_TRUE(installation_.serverLockExists());
}

TEST_F(Locks, ThatMayNotBeRemovedStays) {
  share().setReadOnly(Installation::kServerLock);
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove", "--yes"}), 2);
  EXPECT_TRUE(installation_.serverLockExists());
}

TEST_F(Locks, ThatWentMeanwhileIsNoFailure) {
  machine().onCall("fileUse.removeUnused",
                   [this]() -> void { share().removeTree(Installation::kServerLock); });
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove", "--yes"}), 0);
}

TEST_F(Locks, YesWithoutRemoveIsWrongUsage) {
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--yes"}), 64);
  EXPECT_EQ(trelv_.run({"locks"}), 64);
}

TEST_F(Locks, HostThatIsNotThereCannotBeAsked) {
  EXPECT_EQ(trelv_.run({"locks", "S:\\Altro"}), 2);
  EXPECT_EQ(errors(), "trelv: S:\\Altro: Impossibile trovare il percorso\n");
}

TEST_F(Locks, AreReadWithoutChangeAndByUsersWhoMayOnlyRead) {
  record("02.00", "01.00", "01.00");
  const std::string all = locks().dump();
  EXPECT_THAT(changingCalls(machine()), IsEmpty());
  EXPECT_EQ(machine().callLog().countOf("files.mayAddFile"), 0U);
  share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  EXPECT_EQ(locks().dump(), all);
  EXPECT_EQ(exitCode, 1);
  EXPECT_EQ(trelv_.run({"locks", "S:\\Lumo", "--remove", "--yes"}), 2);
  EXPECT_TRUE(installation_.serverLockExists());
}

// --- Dates

TEST(GeneralDateText, IsReadInTheOrderOfTheUsersSystem) {
  sim::SimLocale locale;
  const machine::LocalTime evening{2026, 3, 4, 21, 5, 9};
  for (const sim::Language language : {sim::Language::Italian, sim::Language::English}) {
    locale.setLanguage(language);
    for (const machine::LocalTime& time :
         {evening, machine::LocalTime{2026, 12, 31, 0, 0, 1},
          machine::LocalTime{2026, 1, 2, 12, 0, 0}, machine::LocalTime{2026, 1, 2, 11, 59, 59}}) {
      EXPECT_EQ(kit::readGeneralDate(locale, locale.shortDate(time) + " " + locale.longTime(time)),
                time);
    }
    const machine::LocalTime midnight{2026, 3, 4, 0, 0, 0};
    EXPECT_EQ(kit::readGeneralDate(locale, locale.shortDate(midnight)), midnight);
  }
  EXPECT_EQ(kit::readGeneralDate(locale, "16/11/2026 07:30:00"),
            (machine::LocalTime{2026, 11, 16, 7, 30, 0}));
  EXPECT_FALSE(kit::readGeneralDate(locale, "4711"));
}

TEST(GeneralDateText, AfternoonOfAnotherSystemIsOne) {
  sim::SimLocale locale;
  locale.setLanguage(sim::Language::Italian);
  EXPECT_EQ(kit::readGeneralDate(locale, "22/11/2026 7:30:00 PM"),
            (machine::LocalTime{2026, 11, 22, 19, 30, 0}));
}

TEST(GeneralDateText, WhatNoClockShowsIsNoDate) {
  sim::SimLocale locale;
  for (const char* const text :
       {"22/11/2026 24:00:00", "22/11/2026 07:60:00", "22/11/2026 07:30:60", "32/11/2026 07:30:00",
        "22/13/2026 07:30:00", "00/11/2026", "22/11/1979"}) {
    EXPECT_FALSE(kit::readGeneralDate(locale, text)) << text;
  }
}

TEST(GeneralDateText, SecondsPassOverMonthsAndLeapYears) {
  EXPECT_EQ(kit::secondsBetween({2024, 2, 28, 23, 59, 59}, {2024, 3, 1, 0, 0, 0}), 86401);
  EXPECT_EQ(kit::secondsBetween({2025, 12, 31, 0, 0, 0}, {2026, 1, 1, 0, 0, 0}), 86400);
  // The turn of a century: a leap year in every fourth only.
  EXPECT_EQ(kit::secondsBetween({2000, 2, 28, 0, 0, 0}, {2000, 3, 1, 0, 0, 0}), 2 * 86400);
  EXPECT_EQ(kit::secondsBetween({2100, 2, 28, 0, 0, 0}, {2100, 3, 1, 0, 0, 0}), 86400);
  EXPECT_EQ(kit::secondsBetween({2000, 1, 1, 0, 0, 0}, {2400, 1, 1, 0, 0, 0}), 146097LL * 86400);
  EXPECT_EQ(kit::secondsBetween({2026, 1, 1, 0, 0, 1}, {2026, 1, 1, 0, 0, 0}), 0);
}

}  // namespace
}  // namespace trelv::tests
