#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "interactive/PackInstallation.h"
#include "interactive/modProdTrelvInteractive.h"
#include "support/Refusals.h"
#include "support/Rows.h"
#include "support/Texts.h"
#include "unit/interactive/MediumTest.h"

namespace trelv::tests {
namespace {

using namespace std::string_literals;

constexpr const char* kDvd =
    "Il supporto DVD che si sta utilizzando non contiene alcuni file di sistema necessari per il "
    "proseguimento delle operazioni\r\n\r\nPremere Ok per interrompere l'esecuzione";
constexpr const char* kNotComplete =
    "Installazione non completata.\r\n\r\nNon è stato possibile aprire i seguenti pacchi:";
constexpr const char* kNext =
    "\r\n\r\nI prodotti verranno installati al prossimo avvio di uno di essi.";
constexpr const char* kTree = "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra";

std::string utf16(const std::string& text) {
  std::string bytes = "\xFF\xFE";
  for (const char c : text) {
    bytes += c;
    bytes += '\0';
  }
  return bytes;
}

class BadMedium : public MediumTest {
 protected:
  /// Installs these entries of the standard form.
  void installStandard(const std::vector<std::string>& captions) {
    station_.select(MediumStation::kStandard);
    station_.install(kStandalone, captions);
    run();
  }
  void installIntegrated(const std::vector<std::string>& captions) {
    station_.select(MediumStation::kIntegrated);
    station_.desktop().answerInput({"S:\\Lumo"});
    station_.install(kIntegratedForm, captions);
    run();
  }
  /// What is left in the temporary folder besides the log.
  std::vector<std::string> leftovers() {
    std::vector<std::string> names = station_.namesIn(MediumStation::kTemp);
    std::erase(names, "log");
    return names;
  }
  void expectWarning(const std::string& packs, const std::string& next = "") {
    EXPECT_THAT(station_.desktop().boxes(),
                Contains(isBox(BoxIcon::Exclamation, kNotComplete + packs + next)));
  }
};

// --- The files in the root

TEST_F(BadMedium, WithoutSetupOrVersionFileTheSessionEndsAtOnce) {
  for (const char* const missing : {"E:\\Setup.cmf", "E:\\Versione.ver"}) {
    MediumStation station;
    station.machine().removeTree(missing);
    station.run();
    EXPECT_THAT(station.desktop().boxes(), ElementsAre(isBox(BoxIcon::Critical, kDvd))) << missing;
    EXPECT_THAT(station.desktop().shownForms(), IsEmpty());
    EXPECT_EQ(station.program().logLines().back(),
              "Gestione ProdTrelv - Esecuzione in modalità interattiva");
  }
}

TEST_F(BadMedium, AFolderInThePlaceOfAFileIsNone) {
  machine().removeTree("E:\\Setup.cmf");
  machine().makeFolders("E:\\Setup.cmf");
  run();
  EXPECT_THAT(boxTexts(), ElementsAre(kDvd));
}

TEST_F(BadMedium, ThatCannotBeLookedAtIsReportedAndEndsTheSession) {
  station_.medium().deny("E:\\Versione.ver");
  run();
  ASSERT_EQ(station_.reports().size(), 1U);
  EXPECT_THAT(station_.reports()[0], HasSubstr("Errore in teset configurazione / "));
  EXPECT_THAT(station_.reports()[0], HasSubstr("Versione.ver"));
  EXPECT_THAT(boxTexts(), ElementsAre(kDvd));
  EXPECT_THAT(lines().back(), HasSubstr("Gestione ProdTrelv - Errore in teset configurazione"));
}

/// A file of the medium whose bytes are odd: what is reported (empty: nothing), and the title of
/// the first form (empty: the form's own).
struct OddFile : Row {
  const char* file;
  std::string bytes;
  const char* reported;
  const char* title;
};

constexpr const char* kVersionText = "Errore in reperimento versione / ";
constexpr const char* kProductsText = "Errore in Preparazione prodotti / ";
constexpr const char* kNoText = "Il file non è un testo nella codifica del sistema: ";
constexpr const char* kGoodTitle = "Prodotti complementari - versione 2026.2";
constexpr const char* kTitleWithoutVersion = "Prodotti complementari - versione ";

const std::vector<OddFile> kOddFiles{
    {"EmptyVersion", "Versione.ver", "", kVersionText, kTitleWithoutVersion},
    {"BinaryVersion", "Versione.ver", "\x01\x02\0\x03"s, kVersionText, kTitleWithoutVersion},
    {"VersionInUtf16", "Versione.ver", utf16("2026.2\r\n"), kVersionText, kTitleWithoutVersion},
    {"VersionInUtf8WithItsMark", "Versione.ver",
     "\xEF\xBB\xBF"
     "2026.2\r\n",
     kVersionText, kTitleWithoutVersion},
    {"VersionWithoutLineEnd", "Versione.ver", "2026.2", "", kGoodTitle},
    {"VersionThatIsALongText", "Versione.ver", std::string(10'000'000, 'v'), kVersionText,
     kTitleWithoutVersion},
    {"VersionWithMoreLines", "Versione.ver", "2026.2\naltro\n", "", kGoodTitle},
    {"EmptySetup", "Setup.cmf", "", kVersionText, ""},
    {"BinarySetup", "Setup.cmf", "MZ\x90\0\x03\0"s, kVersionText, ""},
    {"SetupInUtf16", "Setup.cmf", utf16("Prodotti\r\n\r\n#PRIMA_LISTA#N|n|NERIO\r\n"), kVersionText,
     ""},
    {"SetupInUtf8WithItsMark", "Setup.cmf", "\xEF\xBB\xBFProdotti\r\n\r\n", kVersionText, ""},
    {"SetupWithoutLineEnds", "Setup.cmf", "Prodotti %V%#PRIMA_LISTA#N|n|NERIO", kVersionText,
     "Prodotti 2026.2#PRIMA_LISTA#N|n|NERIO"},
    {"SetupWithOldMacLineEnds", "Setup.cmf", "Prodotti\r\r#PRIMA_LISTA#N|n|NERIO\r", kVersionText,
     ""},
    {"SetupWithALongHeader", "Setup.cmf", std::string(10'000'000, 'h') + "\r\n\r\n", kVersionText,
     ""},
    {"SetupWithALongEntry", "Setup.cmf",
     "Prodotti\r\n\r\n#PRIMA_LISTA#" + std::string(10'000'000, 'e') + "|n|NERIO\r\n", kVersionText,
     ""},
    {"SetupOfOneLine", "Setup.cmf", "Prodotti\r\n", kVersionText, "Prodotti"},
    {"SetupWithoutMenu", "Setup.cmf", "Prodotti %V%\r\n\r\n", "", "Prodotti 2026.2"},
    {"EmptyProducts", "Products.cmf", "", "", kGoodTitle},
    {"BinaryProducts", "Products.cmf", "\0\0\0"s, kProductsText, kGoodTitle},
    {"ProductsInUtf16", "Products.cmf", utf16("NERIO|Nerio\r\n"), kProductsText, kGoodTitle},
    {"ProductsInUtf8WithItsMark", "Products.cmf",
     "\xEF\xBB\xBF"
     "NERIO|Nerio\r\n",
     kProductsText, kGoodTitle},
    {"ProductsWithALongLine", "Products.cmf", "NERIO|" + std::string(10'000'000, 'd'),
     kProductsText, kGoodTitle},
    {"ProductsWithoutLineEnd", "Products.cmf", "NERIO|Nerio", "", kGoodTitle},
    {"ProductsThatAreNone", "Products.cmf", "nerio|Nerio\r\n", kProductsText, kGoodTitle},
    {"ProductsWithoutSeparator", "Products.cmf", "NERIO\r\n\r\n", "", kGoodTitle},
};

class OddFileOfAMedium : public testing::TestWithParam<OddFile> {};

TEST_P(OddFileOfAMedium, IsReportedOnceAndTheSessionGoesOn) {
  MediumStation station;
  station.putMediumFile(GetParam().file, GetParam().bytes);
  std::string title;
  station.onForm(kSelect, [&](SimFormWindow& form) {
    title = form.title();
    form.choose("ListAmb", 0);
    form.click("cmdExec");
  });
  station.onForm(kStandalone, [](SimFormWindow& form) { form.click("cmdExec"); });
  station.run();
  EXPECT_EQ(station.desktop().forcedCloses(), 0U);
  EXPECT_EQ(title, GetParam().title);
  const std::string reported = GetParam().reported;
  ASSERT_EQ(station.reports().size(), reported.empty() ? 0U : 1U);
  if (!reported.empty()) {
    EXPECT_THAT(station.reports()[0], HasSubstr(reported));
  }
  EXPECT_THAT(station.desktop().boxTexts(), Contains("Selezionare almeno una voce"))
      << "the product form can be worked in";
}

INSTANTIATE_TEST_SUITE_P(Of, OddFileOfAMedium, testing::ValuesIn(kOddFiles), NameOfRow());

TEST_F(BadMedium, AFileThatIsNoTextIsNamedInItsReport) {
  station_.putMediumFile("Setup.cmf", utf16("Prodotti"));
  run();
  EXPECT_THAT(station_.reports(), ElementsAre(std::string(kVersionText) + kNoText +
                                              MediumStation::kRoot + "Setup.cmf"));
}

TEST_F(BadMedium, ALineAsLongAsACommandLineCanBeIsRead) {
  const std::string entry = "#PRIMA_LISTA#Nerio|n|NERIO|";
  station_.putMenu({entry + std::string(32'767 - entry.size(), 'c')});
  run();
  EXPECT_THAT(station_.reports(), IsEmpty());
  EXPECT_EQ(station_.session().menu[0].entries.size(), 1U);
  station_.putMenu({entry + std::string(32'768 - entry.size(), 'c')});
  run();
  EXPECT_THAT(station_.reports(),
              ElementsAre(std::string(kVersionText) + "Il file ha una riga troppo lunga: " +
                          MediumStation::kRoot + "Setup.cmf"));
}

TEST_F(BadMedium, AThousandProductsAreAllLookedFor) {
  std::string text;
  for (int i = 0; i < 250; ++i) {
    text += "NERIO|Nerio\r\nLUDA|Luda\r\nKXK|Kappa\r\nVELTRA|Veltra\r\n";
  }
  station_.putMediumFile("Products.cmf", text);
  machine().putFile("C:\\WINDOWS\\LUDA.INI", "[LUDA]\r\nVersione=07\r\n");
  run();
  const std::vector<ListedProduct>& products = station_.session().products;
  ASSERT_EQ(products.size(), 1001U);
  EXPECT_EQ(products[0].identifier, "") << "the first entry stays empty";
  EXPECT_EQ(products[997].identifier, "NERIO");
  EXPECT_EQ(products[997].description, "Nerio");
  EXPECT_EQ(products[997].presence, 1) << "to be set up";
  EXPECT_EQ(products[998].presence, 2) << "to be updated";
  EXPECT_EQ(products[999].presence, 1) << "a product without a check of its own";
  EXPECT_EQ(products[1000].presence, 0) << "nothing is known of it";
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Verifica presenza su sistema dei prodotti letti"));
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Nessun prodotto da leggere")));
}

TEST_F(BadMedium, AThousandEntriesAreOffered) {
  std::vector<std::string> menu;
  for (int i = 0; i < 1000; ++i) {
    menu.push_back("#QUARTA_LISTA#Voce " + std::to_string(i) + "|packs\\p|NERIO");
  }
  station_.putMenu(menu);
  station_.select(MediumStation::kStandard);
  station_.onForm(kStandalone, [](SimFormWindow& form) {
    EXPECT_EQ(form.selected("labTab"), 3);
    EXPECT_EQ(form.itemCount("ListProd"), 1000);
    EXPECT_EQ(form.itemText("ListProd", 999), "Voce 999");
  });
  run();
}

// --- Packs

TEST_F(BadMedium, APackFolderThatIsMissingIsLoggedAndTold) {
  machine().removeTree("E:\\prodotti\\packs\\nerio");
  installStandard({"Nerio"});
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Errore in ordinamento cartella "
                       "E:\\prodotti\\manager\\..\\..\\prodotti\\packs\\nerio (Impossibile trovare "
                       "il percorso: E:\\prodotti\\manager\\..\\..\\prodotti\\packs\\nerio)"));
  EXPECT_THAT(lines(), Contains("Apro il/i pacchi in C:\\Users\\mario\\Temp"))
      << "also when nothing was opened";
  expectWarning("\r\nNerio: prodotti\\packs\\nerio");
  EXPECT_THAT(station_.setups(), IsEmpty());
  EXPECT_THAT(leftovers(), IsEmpty());
  EXPECT_EQ(forms().back(), kStandalone) << "the form comes back";
}

TEST_F(BadMedium, APackFolderThatLiesElsewhereIsNotOpened) {
  machine().putFile("C:\\packs\\nerio.zip", mediumPack("nerio", setupTree("NERIO", "1")));
  station_.putMenu({"#PRIMA_LISTA#Nerio|C:\\packs|NERIO", "#PRIMA_LISTA#Luda|..\\packs|LUDA"});
  installStandard({"Nerio", "Luda"});
  EXPECT_THAT(endsOf(lines(), "Ordino gli zip in  "), ElementsAre("C:\\packs", "..\\packs"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Errore in ordinamento cartella C:\\packs "
                                "(Cartella fuori dal supporto)"));
  EXPECT_EQ(machine().callLog().countOf("files.list C:\\packs"), 0U);
  EXPECT_THAT(machine().started(), IsEmpty());
  expectWarning("\r\nNerio: packs\r\nLuda: packs");
}

TEST_F(BadMedium, APackFolderThatIsAFileIsTold) {
  machine().removeTree("E:\\prodotti\\packs\\nerio");
  station_.putMediumFile("prodotti\\packs\\nerio", "x");
  installIntegrated({"Nerio"});
  EXPECT_THAT(lines(),
              Contains(HasSubstr("Gestione ProdTrelv - Errore in ordinamento cartella "
                                 "E:\\prodotti\\manager\\..\\..\\prodotti\\packs\\nerio (")));
  expectWarning("\r\nNerio: prodotti\\packs\\nerio", kNext);
}

TEST_F(BadMedium, APackFolderWithoutPacksIsTold) {
  machine().removeTree("E:\\prodotti\\packs\\nerio\\nerio.zip");
  station_.putMediumFile("prodotti\\packs\\nerio\\NERIO.ZIP", "x");
  installIntegrated({"Nerio"});
  expectWarning("\r\nNerio: prodotti\\packs\\nerio", kNext);
  EXPECT_EQ(station_.station().recordedIntegration(), "S:\\Lumo") << "as the order of steps says";
}

TEST_F(BadMedium, AnEntryOfCommandsAloneIsNoFailure) {
  station_.putMenu({"#PRIMA_LISTA#Leggimi||LEGGIMI|E:\\prodotti\\docs\\leggimi.exe"});
  installStandard({"Leggimi"});
  EXPECT_THAT(station_.setups(), ElementsAre("E:\\prodotti\\docs\\leggimi.exe"));
  EXPECT_THAT(boxTexts().back(), HasSubstr("Confermi l'avvio"));
}

TEST_F(BadMedium, APackThatIsNoZipIsToldAndTheOthersAreInstalled) {
  station_.putMediumFile("prodotti\\packs\\nerio\\nerio.zip", "no pack");
  installIntegrated({"Nerio", "Zeltomodelli"});
  EXPECT_THAT(boxTexts(), Contains(HasSubstr("Errore in esecuzione comando: ")));
  expectWarning("\r\nNerio: prodotti\\packs\\nerio\\nerio.zip", kNext);
  EXPECT_THAT(station_.namesIn("S:\\Lumo\\prg\\com\\setup\\aggdovra"),
              ElementsAre("agdvcomp.ini", "zm", "zm.ini"));
  EXPECT_EQ(station_.station().recordedIntegration(), "S:\\Lumo");
  EXPECT_THAT(leftovers(), ElementsAre("ambver"));
  EXPECT_TRUE(machine().fileExists("E:\\prodotti\\packs\\nerio\\nerio.zip"));
}

TEST_F(BadMedium, APackThatIsNoZipLeavesNothingToSetUp) {
  station_.putMediumFile("prodotti\\packs\\nerio\\nerio.zip", "no pack");
  installStandard({"Nerio"});
  EXPECT_THAT(station_.setups(), IsEmpty());
  expectWarning("\r\nNerio: prodotti\\packs\\nerio\\nerio.zip");
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(BadMedium, APackThatIsNoGzIsTold) {
  station_.putMediumFile("prodotti\\packs\\nerio\\nerio.zip", packBytes({{"nerio.gz", "no pack"}}));
  installIntegrated({"Nerio"});
  expectWarning("\r\nNerio: nerio.gz", kNext);
}

TEST_F(BadMedium, AZipWithoutGzPackIsTold) {
  station_.putMediumFile("prodotti\\packs\\nerio\\nerio.zip", packBytes({{"leggimi.txt", "x"}}));
  installIntegrated({"Nerio"});
  expectWarning("\r\nNerio: prodotti\\packs\\nerio", kNext);
}

TEST_F(BadMedium, AGzPackWithoutSetUpTreeIsReportedAndTold) {
  station_.putMediumFile("prodotti\\packs\\nerio\\nerio.zip",
                         packBytes({{"nerio.gz", packBytes({{"prg\\altro\\leggimi.txt", "x"}})}}));
  installIntegrated({"Nerio", "Zeltomodelli"});
  ASSERT_EQ(station_.reports().size(), 1U);
  EXPECT_THAT(station_.reports()[0], HasSubstr("Errore in Apertura Pacco  / "));
  expectWarning("\r\nNerio: nerio.gz", kNext);
  EXPECT_THAT(station_.namesIn("S:\\Lumo\\prg\\com\\setup\\aggdovra"),
              ElementsAre("agdvcomp.ini", "zm", "zm.ini"));
}

TEST_F(BadMedium, AZipPackInAGzPackThatIsNoneIsTold) {
  station_.putMediumFile(
      "prodotti\\packs\\nerio\\nerio.zip",
      packBytes(
          {{"nerio.gz", packBytes({{"prg\\com\\setup\\aggdovra\\nerio-1.zip", "no pack"}})}}));
  installIntegrated({"Nerio", "Zeltomodelli"});
  expectWarning("\r\nNerio: nerio-1.zip", kNext);
  EXPECT_THAT(station_.namesIn("S:\\Lumo\\prg\\com\\setup\\aggdovra"),
              ElementsAre("agdvcomp.ini", "zm", "zm.ini"));
}

TEST_F(BadMedium, OfManyPacksTheFirstTenAreNamed) {
  for (int i = 10; i < 23; ++i) {
    station_.putMediumFile("prodotti\\packs\\nerio\\p" + std::to_string(i) + ".zip", "no pack");
  }
  installIntegrated({"Nerio"});
  const std::string text = boxTexts().back();
  EXPECT_THAT(text, HasSubstr("\r\nNerio: prodotti\\packs\\nerio\\p19.zip\r\n... e altri 3"));
  EXPECT_THAT(text, Not(HasSubstr("p20.zip")));
}

// --- The medium itself, and the temporary folder

TEST_F(BadMedium, OnAReadOnlyMediumAllGoesAsOnAnyOther) {
  station_.medium().denyWriting("E:\\");
  const std::string before = station_.medium().tree();
  installStandard({"Nerio"});
  EXPECT_THAT(station_.setups(), ElementsAre(std::string(kTree) + "\\nerio\\setup.exe"));
  EXPECT_EQ(station_.medium().tree(), before);
  EXPECT_THAT(station_.reports(), IsEmpty());
}

TEST_F(BadMedium, ThatIsTakenOutInTheMiddleIsToldAndTheSessionGoesOn) {
  station_.desktop().onBox([this](const sim::SimBox& box) {
    if (box.text == "Confermi l'avvio della procedura \rNerio") {
      station_.medium().disconnect(system_code::kPathNotFound);
    }
  });
  installStandard({"Nerio"});
  expectWarning("\r\nNerio: prodotti\\packs\\nerio");
  EXPECT_THAT(station_.setups(), IsEmpty());
  EXPECT_THAT(leftovers(), IsEmpty());
  EXPECT_EQ(forms().back(), kStandalone);
}

TEST_F(BadMedium, ThatIsTakenOutBetweenTwoEntriesLeavesTheFirstWhole) {
  machine().onCall("desktop.showModeless frmwait",
                   [this] { station_.medium().disconnect(system_code::kPathNotFound); });
  installIntegrated({"Nerio", "Zeltomodelli"});
  expectWarning("\r\nZeltomodelli: prodotti\\packs\\modelli", kNext);
  EXPECT_THAT(station_.namesIn("S:\\Lumo\\prg\\com\\setup\\aggdovra"),
              ElementsAre("agdvcomp.ini", "nerio", "nerio.ini"));
  EXPECT_EQ(machine().fileText("S:\\Lumo\\prg\\etc\\ambver").substr(0, 7), "AMB0001");
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(BadMedium, APathOf200LettersIsNoTrouble) {
  const std::string deep = std::string(90, 'a') + "\\" + std::string(100, 'b');
  const std::string manager = "E:\\" + deep + "\\prodotti\\manager";
  MediumStation station;
  PackPrograms programs(station.machine(), manager);
  for (const char* const file :
       {"Setup.cmf", "Versione.ver", "prodotti\\packs\\nerio\\nerio.zip"}) {
    station.putMediumFile(deep + "\\" + file,
                          station.machine().fileText(std::string("E:\\") + file));
  }
  station.machine().setExecutable(manager + "\\TrelvManager.exe");
  station.select(MediumStation::kStandard);
  station.install(kStandalone, {"Nerio"});
  station.run();
  EXPECT_THAT(station.setups(), Contains(std::string(kTree) + "\\nerio\\setup.exe"));
}

TEST_F(BadMedium, InAFolderOfAnOddNameAllGoesAsInAnyOther) {
  const std::string root = "E:\\Š Œ Ž & 100% d'è";
  const std::string manager = root + "\\prodotti\\manager";
  MediumStation station;
  PackPrograms programs(station.machine(), manager);
  station.putMenu(
      {"#PRIMA_LISTA#Qualità & 50% Š|prodotti\\packs\\Š & 1%|NERIO|"
       "\"%MEDIUM%\\prodotti\\docs\\leggimi.exe\" %PATHSETUP%"});
  station.machine().putFile(root + "\\prodotti\\docs\\leggimi.exe", "MZ");
  station.machine().putFile(root + "\\prodotti\\packs\\Š & 1%\\un pacco Œ.zip",
                            mediumPack("Ž 1", setupTree("NERIO", "03.20.30.00")));
  for (const char* const file : {"Setup.cmf", "Versione.ver"}) {
    station.machine().putFile(root + "\\" + file,
                              station.machine().fileText(std::string("E:\\") + file));
  }
  station.machine().setExecutable(manager + "\\TrelvManager.exe");
  station.select(MediumStation::kStandard);
  station.install(kStandalone, {"Qualità & 50% Š"});
  station.run();
  EXPECT_THAT(station.desktop().boxTexts(),
              ElementsAre(HasSubstr("Installazione Standard"),
                          "Confermi l'avvio della procedura \rQualità & 50% Š"));
  EXPECT_EQ(station.machine().started().back().program, std::string(kTree) + "\\nerio\\setup.exe");
  EXPECT_THAT(endsOf(station.program().logLines(), "Esecuzione "),
              ElementsAre("1: \"" + manager + "\\..\\..\\prodotti\\docs\\leggimi.exe\" " +
                          MediumStation::kTemp));
}

TEST_F(BadMedium, WithoutRoomForTheWorkFolderNothingIsOpened) {
  machine().onCall("desktop.showModeless frmProdTrelvStandalone", [this] {
    machine().diskOf("C:\\").denyWriting(MediumStation::kTemp, system_code::kDiskFull);
  });
  installStandard({"Nerio"});
  EXPECT_THAT(machine().started(), IsEmpty());
  expectWarning(
      "\r\nNerio: cartella di lavoro non disponibile (Disco pieno: C:\\Users\\mario\\Temp)");
  EXPECT_EQ(forms().back(), kStandalone);
}

TEST_F(BadMedium, WithoutRoomForTheFolderOfAnEntrysPacksNoneIsOpened) {
  const std::string folder = "C:\\Users\\mario\\Temp\\~pacchi1.tmp";
  machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool makesIt = call.kind == sim::CallKind::FolderMake && call.path == folder;
    return makesIt ? std::optional<SystemCode>(system_code::kDiskFull) : std::nullopt;
  });
  installStandard({"Nerio"});
  EXPECT_THAT(machine().started(), IsEmpty());
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Cartella temporanea non creata (Disco pieno: " +
                       folder + ")"));
  expectWarning("\r\nNerio: prodotti\\packs\\nerio\\nerio.zip");
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(BadMedium, WithoutRoomForAPackSevenZipSaysSo) {
  station_.putMediumFile("prodotti\\packs\\nerio\\nerio.zip", packBytes({{"nerio.gz", "h"}}, 8));
  installStandard({"Nerio"});
  EXPECT_THAT(boxTexts(), Contains(HasSubstr("Errore in esecuzione comando: ")));
  expectWarning("\r\nNerio: prodotti\\packs\\nerio\\nerio.zip\r\nNerio: nerio.gz");
  EXPECT_THAT(station_.setups(), IsEmpty());
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(BadMedium, WithoutATemporaryFolderNothingIsOpenedOrSetUp) {
  machine().putFile("C:\\prg\\com\\setup\\aggdovra\\agdvcomp.ini",
                    "[prod01]\r\nid=NERIO\r\nconf=nerio.ini\r\n");
  machine().putFile("E:\\prg\\com\\setup\\aggdovra\\agdvcomp.ini",
                    "[prod01]\r\nid=NERIO\r\nconf=nerio.ini\r\n");
  machine().onCall("desktop.showModeless frmProdTrelvStandalone",
                   [this] { machine().support().setTemporaryPath(""); });
  installStandard({"Nerio"});
  EXPECT_THAT(machine().started(), IsEmpty());
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Path di scarico pacchi: "));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Cartella temporanea non creata (Cartella "
                                "temporanea non disponibile)"));
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Avvio lancio setup per prodotti "
                                    "complementari in modalità standalone")));
  expectWarning("\r\nNerio: prodotti\\packs\\nerio\\nerio.zip");
}

TEST_F(BadMedium, ATemporaryFolderThatCannotBeHadIsToldInItsPlace) {
  machine().onCall("desktop.showModeless frmProdTrelvStandalone", [this] {
    machine().callLog().setInjector(refuse({sim::CallKind::TemporaryFolderQuery}));
  });
  installStandard({"Nerio"});
  const std::vector<std::string> steps = lines();
  const auto first = std::find(steps.begin(), steps.end(), "Avvio apertura pacco.");
  ASSERT_LT(4, steps.end() - first);
  EXPECT_EQ(first[1], "Gestione ProdTrelv - Tipologia Installazione: Installazione Standard");
  EXPECT_THAT(first[2], HasSubstr("Gestione ProdTrelv - Errore in lettura cartella temporanea: "));
  EXPECT_EQ(first[3], "Gestione ProdTrelv - Path di scarico pacchi: ");
}

TEST_F(BadMedium, WhileAnotherSessionWorksInTheTemporaryFolderNothingIsInstalledThere) {
  const auto mark = machine().exclusion().takeForAnother("C:\\Users\\mario\\Temp\\TrelvManager.lck",
                                                         "mario, STAZIONE, sessione 2");
  machine().putFile("C:\\Users\\mario\\Temp\\prg\\a.txt", "of the other session");
  installStandard({"Nerio"});
  EXPECT_THAT(machine().started(), IsEmpty());
  EXPECT_EQ(machine().fileText("C:\\Users\\mario\\Temp\\prg\\a.txt"), "of the other session");
  expectWarning(
      "\r\nNerio: cartella di lavoro non disponibile (in uso da un'altra sessione: "
      "mario, STAZIONE, sessione 2)");
}

TEST_F(BadMedium, TheFolderOfAnotherSessionsPacksIsLeftAlone) {
  const auto mark =
      machine().exclusion().takeForAnother("C:\\Users\\mario\\Temp\\~pacchi1.lck", "");
  machine().putFile("C:\\Users\\mario\\Temp\\~pacchi1.tmp\\vecchio.gz", "x");
  installStandard({"Nerio"});
  EXPECT_THAT(endsOf(lines(), "Apro lo zip "), ElementsAre(HasSubstr("~pacchi2.tmp")));
  EXPECT_EQ(endsOf(lines(), "Gestione ProdTrelv - Apertura pacco :").size(), 1U);
  EXPECT_THAT(leftovers(), ElementsAre("prg", "~pacchi1.lck", "~pacchi1.tmp"));
}

TEST_F(BadMedium, WhatSessionsLeftThatWereEndedByForceIsRemovedAndItsNumberNotUsedAtOnce) {
  for (const char* const left : {"~pacchi1.tmp\\vecchio.gz", "~pacchi2.tmp\\a\\vecchio.gz"}) {
    machine().putFile(std::string("C:\\Users\\mario\\Temp\\") + left, "x");
  }
  installStandard({"Nerio"});
  EXPECT_THAT(endsOf(lines(), "Apro lo zip "), ElementsAre(HasSubstr("~pacchi3.tmp")));
  EXPECT_EQ(endsOf(lines(), "Gestione ProdTrelv - Apertura pacco :").size(), 1U);
  EXPECT_THAT(leftovers(), ElementsAre("prg"));
}

TEST_F(BadMedium, WhatWasLeftBehindAFreeNumberIsRemovedToo) {
  for (const char* const left : {"~pacchi2.tmp\\vecchio.gz", "~pacchi3.tmp\\a\\vecchio.gz"}) {
    machine().putFile(std::string("C:\\Users\\mario\\Temp\\") + left, "x");
  }
  installStandard({"Nerio"});
  EXPECT_THAT(endsOf(lines(), "Apro lo zip "), ElementsAre(HasSubstr("~pacchi1.tmp")));
  EXPECT_THAT(leftovers(), ElementsAre("prg"));
}

TEST_F(BadMedium, TheFolderOfAnotherSessionsPacksBehindAFreeNumberIsLeftAlone) {
  const auto mark =
      machine().exclusion().takeForAnother("C:\\Users\\mario\\Temp\\~pacchi2.lck", "");
  machine().putFile("C:\\Users\\mario\\Temp\\~pacchi2.tmp\\suo.gz", "x");
  installStandard({"Nerio"});
  EXPECT_THAT(leftovers(), ElementsAre("prg", "~pacchi2.lck", "~pacchi2.tmp"));
}

TEST_F(BadMedium, WhatWasLeftAndCannotBeRemovedKeepsNothingFromBeingInstalled) {
  machine().putFile("C:\\Users\\mario\\Temp\\~pacchi1.tmp\\vecchio.gz", "x");
  machine().diskOf("C:\\").denyWriting("C:\\Users\\mario\\Temp\\~pacchi1.tmp");
  installStandard({"Nerio"});
  EXPECT_THAT(endsOf(lines(), "Apro lo zip "), ElementsAre(HasSubstr("~pacchi2.tmp")));
  EXPECT_THAT(station_.setups(), ElementsAre(std::string(kTree) + "\\nerio\\setup.exe"));
}

TEST_F(BadMedium, AWorkFolderThatCannotBeRemovedIsTold) {
  machine().onCall("files.removeFolder C:\\Users\\mario\\Temp\\~pacchi1.tmp", [this] {
    machine().diskOf("C:\\").denyWriting("C:\\Users\\mario\\Temp\\~pacchi1.tmp");
  });
  installStandard({"Nerio"});
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Cartella temporanea non rimossa: "
                                "C:\\Users\\mario\\Temp\\~pacchi1.tmp (Autorizzazione negata: "
                                "C:\\Users\\mario\\Temp\\~pacchi1.tmp)"));
  EXPECT_THAT(station_.setups(), ElementsAre(std::string(kTree) + "\\nerio\\setup.exe"));
}

TEST_F(BadMedium, AShareThatIsGoneIsToldAndTheRecordIsWrittenAllTheSame) {
  station_.onForm(kIntegratedForm, [this](SimFormWindow& form) {
    form.toggle("ListProd", 0);
    station_.share().disconnect();
    form.click("cmdExec");
  });
  station_.select(MediumStation::kIntegrated);
  station_.desktop().answerInput({"S:\\Lumo"});
  run();
  expectWarning("\r\nNerio: nerio.gz", kNext);
  EXPECT_EQ(station_.station().recordedIntegration(), "S:\\Lumo");
  EXPECT_THAT(station_.reports(), Not(IsEmpty()));
}

// --- Who reports

/// A process that was started from a medium in drive E:.
class ReportOfASession : public testing::Test {
 protected:
  ReportOfASession() {
    program_.sim.mount("E:");
    program_.state.session.mediaRoot = "E:\\";
  }

  FakeProgram program_;
};

TEST_F(ReportOfASession, NamesTheLookAtTheMedium) {
  program_.sim.putFile("E:\\Setup.cmf", "x");
  program_.sim.diskOf("E:\\").deny("E:\\Setup.cmf");
  EXPECT_FALSE(modProdTrelvInteractive::TestFileSetup(program_));
  EXPECT_THAT(
      program_.reports(),
      ElementsAre(isReport("TestFileSetup", "Errore in teset configurazione", 70, "ModMain")));
}

TEST_F(ReportOfASession, NamesTheReadingOfAFileThatEndsTooSoonAndTheProgramAsItsSource) {
  program_.sim.putFile("E:\\Versione.ver", "");
  modProdTrelvInteractive::getVersione(program_);
  ASSERT_THAT(
      program_.reports(),
      ElementsAre(isReport("getVersione", "Errore in reperimento versione", 62, "modutils")));
  EXPECT_EQ(program_.reports()[0].failure.source(), "TrelvManager");
  EXPECT_EQ(program_.reports()[0].failure.description(), "Fine del file: E:\\Versione.ver");
}

TEST_F(ReportOfASession, NamesTheInstallationOfPacks) {
  program_.log.linesWithoutMemory = 1;
  modProdTrelvInteractive::InstallPacks(program_);
  EXPECT_THAT(program_.reports(),
              ElementsAre(isReport("InstallPacks", "Errore in installazione pacchi: ", 7,
                                   "ModProdTrelvInteractive")));
}

}  // namespace
}  // namespace trelv::tests
