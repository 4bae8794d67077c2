// What lint does with what nobody meant to give it: it ends with a clear line, or with what is
// right.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "sim/FailingMachine.h"
#include "support/kit/LintWorld.h"

namespace trelv::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

const std::string kHost = LintWorld::kHost;
const std::string kSetups = LintWorld::kSetups;
const std::string kCatalogue = LintWorld::kCatalogue;
const std::string kZb = LintWorld::kConfiguration;
const std::string kRecord = LintWorld::kRecord;
const std::string kTree = LintWorld::kTree;
const std::string kBilancio = "D:\\prodotti\\packs\\bilancio";

/// Exit code 2: nothing but one line with path and reason.
void expectRefusal(LintWorld& world, const std::string& path) {
  EXPECT_EQ(world.exitCode, 2);
  EXPECT_EQ(world.trelv.console.output, "");
  EXPECT_EQ(std::count(world.trelv.console.errors.begin(), world.trelv.console.errors.end(), '\n'),
            1);
  EXPECT_TRUE(world.trelv.console.errors.starts_with("trelv: " + path + ": "))
      << world.trelv.console.errors;
}

// --- What cannot be read

TEST(LintOddInput, AnyCallThatFailsEndsInAnAnswerOrAClearLine) {
  for (std::size_t number = 1;; number += 3) {
    LintWorld world;
    world.put(kSetups + "nuovo.zip", zipBytes(LintWorld::tree()));
    const auto span = number % 2 == 0 ? sim::FailureSpan::Once : sim::FailureSpan::FromThenOn;
    const sim::FailingMachine failing(world.machine, number, span, number % 5);
    world.lint({kHost, "D:\\"});
    if (!failing.reached()) {
      EXPECT_GT(number, 100U);
      return;
    }
    if (world.exitCode == 2) {
      EXPECT_EQ(world.trelv.console.output, "") << failing.failedCall();
      EXPECT_THAT(world.trelv.console.errors, MatchesRegex("trelv: [SD]:\\\\[^\n]*: [^\n]+\n"))
          << failing.failedCall();
    } else {
      EXPECT_LE(world.exitCode, 1) << failing.failedCall();
      EXPECT_EQ(world.trelv.console.errors, "") << failing.failedCall();
    }
  }
}

TEST(LintOddInput, AHostThatVanishesMeanwhileIsNotTakenForAnEmptyOne) {
  LintWorld counted;
  counted.machine.callLog().clear();
  counted.lint({kHost});
  const std::size_t calls = counted.machine.callCount();
  for (std::size_t number = 1; number <= calls; number += 5) {
    LintWorld world;
    world.machine.callLog().clear();
    world.machine.onCall(number, [&]() -> void { world.remove(kHost); });
    world.lint({kHost});
    expectRefusal(world, kHost);
  }
}

TEST(LintOddInput, AMediumThatIsTakenOutIsNotTakenForAnEmptyOne) {
  LintWorld world;
  world.share().makeFolders("S:\\supporto\\prodotti");
  world.put("S:\\supporto\\Setup.cmf", "x");
  world.machine.onCall("files.read S:\\supporto\\Products.cmf",
                       [&]() -> void { world.remove("S:\\supporto"); });
  world.lint({"S:\\supporto"});
  expectRefusal(world, "S:\\supporto");
}

TEST(LintOddInput, APackThatAStartOpensMeanwhileIsLeftOut) {
  for (const char* const moment : {"files.look ", "files.readPart "}) {
    LintWorld world;
    const std::string pack = kSetups + "nuovo.zip";
    world.put(pack, "testo");
    world.machine.onCall(moment + pack, [&]() -> void { world.remove(pack); });
    EXPECT_THAT(world.lint({kHost}), IsEmpty());
    EXPECT_EQ(world.exitCode, 0) << world.trelv.console.errors;
  }
}

TEST(LintOddInput, APackThatCannotBeReadIsNotCalledDamaged) {
  LintWorld world;
  const std::string pack = kSetups + "nuovo.zip";
  world.put(pack, zipBytes(LintWorld::tree()));
  world.share().deny(pack);
  world.lint({kHost});
  expectRefusal(world, pack);
  world.lint({pack});
  expectRefusal(world, pack);
}

TEST(LintOddInput, FilesAndFoldersThatCannotBeReadAreNamed) {
  for (const std::string& path : {kZb, kRecord, kBilancio}) {
    LintWorld world;
    world.disk(path).deny(path);
    const bool medium = path.starts_with("D");
    world.lint({medium ? "D:\\" : kHost});
    expectRefusal(world, path);
  }
}

// --- Sizes

TEST(LintOddInput, FilesOfNoBytes) {
  LintWorld world;
  world.put(kCatalogue, "");
  EXPECT_THAT(world.lint({kHost}), ElementsAre(Found{"TK101", kCatalogue, 0}));
  EXPECT_THAT(world.lint({kCatalogue}), ElementsAre(Found{"TK101", kCatalogue, 0}));
  world.put("S:\\a.zip", "");
  EXPECT_THAT(world.lint({"S:\\a.zip"}), ElementsAre(Found{"TK502", "S:\\a.zip", 0}));
  world.put("S:\\a.gz", "");
  EXPECT_THAT(world.lint({"S:\\a.gz"}), ElementsAre(Found{"TK513", "S:\\a.gz", 0}));
  world.put("S:\\a.ini", "");
  world.lint({"S:\\a.ini"});
  expectRefusal(world, "S:\\a.ini");
}

TEST(LintOddInput, ABinaryFileInAConfigurationsPlaceHasNoRemoval) {
  LintWorld world;
  std::string bytes;
  for (int i = 0; i < 5000; ++i) {
    bytes += static_cast<char>(i * 7 % 256);
  }
  world.put(kZb, bytes);
  const std::vector<Found> found = world.lint({kHost, "--only", "TK219"});
  EXPECT_THAT(found, ElementsAre(Found{"TK219", kZb, 0}));
}

TEST(LintOddInput, AFileOnALineOfTenMegabytes) {
  LintWorld world;
  world.put("S:\\a.ini", std::string(10U << 20U, 'a'));
  world.lint({"S:\\a.ini"});
  expectRefusal(world, "S:\\a.ini");
  world.put(kZb, LintWorld::configurationText() + "Client02=" + std::string(10U << 20U, 'a'));
  EXPECT_THAT(world.lint({kHost}), ElementsAre(Found{"TK112", kZb, 22}));
}

TEST(LintOddInput, AZipPackThatEndsAnywhereIsDamaged) {
  LintWorld world;
  const std::string whole = zipBytes(LintWorld::tree());
  constexpr std::size_t kPlaces = 200;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    const std::size_t size = whole.size() * place / kPlaces;
    world.put("S:\\a.zip", whole.substr(0, size));
    EXPECT_THAT(world.lint({"S:\\a.zip"}), ElementsAre(Found{"TK502", "S:\\a.zip", 0})) << size;
  }
}

TEST(LintOddInput, AGzPackThatEndsAnywhereIsRefused) {
  LintWorld world;
  const std::string whole = LintWorld::gzBytes({{kTree + "zb.zip", zipBytes(LintWorld::tree())}});
  constexpr std::size_t kPlaces = 200;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    const std::size_t size = whole.size() * place / kPlaces;
    world.put("S:\\a.gz", whole.substr(0, size));
    EXPECT_THAT(world.lint({"S:\\a.gz", "--only", "TK502,TK503,TK504,TK513"}),
                ElementsAre(Found{"TK513", "S:\\a.gz", 0}))
        << size;
  }
}

// --- Arguments

TEST(LintOddInput, APathGivenTwiceIsLintedOnce) {
  LintWorld world;
  world.edit(kCatalogue, "id=Q2", "id=q2");
  EXPECT_THAT(world.lint({kHost, "S:\\Lumo\\", "s:\\LUMO"}),
              ElementsAre(Found{"TK108", kCatalogue, 11}));
}

TEST(LintOddInput, TheHostMayStandBehindThePack) {
  LintWorld world;
  world.put("S:\\zb.zip", zipBytes(LintWorld::tree("09.93.50.00")));
  world.remove(kHost + "\\mv\\bilancio\\icad.exe");
  const std::vector<Found> before = world.lint({kHost, "S:\\zb.zip"});
  EXPECT_THAT(before, testing::SizeIs(2));
  EXPECT_EQ(world.lint({"S:\\zb.zip", kHost}), before);
}

TEST(LintOddInput, EachOfSeveralHostsIsLintedWithItsOwnPacks) {
  LintWorld world;
  for (const char* const name : {"\\agdvcomp.ini", "\\zb.ini", "\\q2.ini", "\\nerio.ini"}) {
    world.put("S:\\Altro\\prg\\com\\setup\\aggdovra" + std::string(name),
              world.text("S:\\Lumo\\prg\\com\\setup\\aggdovra" + std::string(name)));
  }
  world.put("S:\\Altro\\prg\\com\\setup\\aggdovra\\a.zip", zipBytes(LintWorld::tree()));
  // There the pack brings what the set-ups of Bilancio start; nobody brings those of the others.
  const std::vector<Found> found = world.lint({kHost, "S:\\Altro", "--only", "TK208"});
  const std::string other = "S:\\Altro\\prg\\com\\setup\\aggdovra\\";
  EXPECT_THAT(found, testing::Each(testing::Field(
                         &Found::file, testing::AnyOf(other + "nerio.ini", other + "q2.ini"))));
  EXPECT_THAT(found, testing::SizeIs(6));
}

TEST(LintOddInput, ListsOfCodesMayHaveBlanksAndStandTogether) {
  LintWorld world;
  world.edit(kCatalogue, "id=Q2", "id=q2");
  world.edit(kCatalogue, "name=Tarsena2", "name=");
  EXPECT_THAT(world.lint({"--only", " TK108 , TK111", "--ignore=TK108", kHost}),
              ElementsAre(Found{"TK111", kCatalogue, 12}));
  for (const char* const codes : {"TK108,", "", "tk108", "TK108 TK111"}) {
    world.lint({"--only", codes, kHost});
    EXPECT_EQ(world.exitCode, 64) << codes;
  }
  world.lint({"--ignore", "TK999", "S:\\manca"});
  EXPECT_EQ(world.exitCode, 64);
}

TEST(LintOddInput, TheDocumentHasItsKeysInTheirOrder) {
  LintWorld world;
  world.remove(kCatalogue);
  world.put(kHost + "\\prg\\tempterm\\agdv.lck", "");
  world.lint({"S:\\Lumo\\", "--only", "TK101"});
  EXPECT_EQ(world.trelv.console.output,
            "{\n  \"schema\": \"trelv/1\",\n  \"verb\": \"lint\",\n  \"program\": \"1.0.0.0\",\n"
            "  \"findings\": [\n    {\n      \"code\": \"TK101\",\n"
            "      \"severity\": \"error\",\n"
            "      \"file\": \"S:\\\\Lumo\\\\prg\\\\com\\\\setup\\\\aggdovra\\\\agdvcomp.ini\",\n"
            "      \"line\": null,\n"
            "      \"text\": \"il catalogo non si può usare e nessun prodotto viene aggiornato: "
            "manca\",\n"
            "      \"remedy\": \"ripristinare agdvcomp.ini\"\n    }\n  ],\n  \"result\": {}\n}\n");
}

}  // namespace
}  // namespace trelv::tests
