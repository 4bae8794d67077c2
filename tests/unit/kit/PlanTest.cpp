#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/PackPrograms.h"
#include "support/StationTest.h"
#include "support/kit/Trelv.h"

namespace trelv::tests {
namespace {

using Json = nlohmann::ordered_json;
using Names = std::vector<std::string>;

/// The five products as they are delivered.
class PlanVerbs : public StationTest {
 protected:
  PlanVerbs() {
    putFiveProducts(installation_);
    installation_.putPrograms({"mv\\nerio\\nerio", "mv\\zb\\mvbil", "mv\\q2\\q2"});
    share().put("S:\\Lumo\\mv\\nerio\\nerio.ini", "[a]\r\nb=c\r\n");
    machine().putFile("C:\\WINDOWS\\nerio.ini", "x");
    installation_.putServerRecord(deliveredVersions());
    station_.putClientRecord(deliveredVersions());
  }

  /// Nothing is recorded yet, and a pack waits.
  void beNewWithAPack() {
    station_.forgetIntegration();
    installation_.putServerRecord("");
    station_.putClientRecord("");
    share().put("S:\\Lumo\\prg\\com\\setup\\aggdovra\\a.zip",
                packBytes({{"prg\\com\\setup\\aggdovra\\testo.txt", "x"}}));
  }

  int plan(Names arguments) {
    arguments.insert(arguments.begin(), {"plan", "--json"});
    const int code = trelv_.run(arguments);
    result_ =
        trelv_.console.output.empty() ? Json() : Json::parse(trelv_.console.output).at("result");
    return code;
  }

  Names texts(const char* kind, const char* field) {
    Names found;
    for (const Json& step : result_.at("steps")) {
      if (step.at("kind") == kind) {
        found.push_back(step.at(field));
      }
    }
    return found;
  }

  Json row(const std::string& product, const std::string& side) {
    for (const Json& one : result_.at("updates")) {
      if (one.at("product") == product && one.at("side") == side) {
        return one;
      }
    }
    return {};
  }

  Trelv trelv_{machine()};
  Json result_;
};

const Names kRun{"INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "NERIO"};

TEST_F(PlanVerbs, AnswerZeroWhenOnlyTheProgramIsLeftToBeStarted) {
  machine().removeTree("C:\\Users\\mario\\Temp\\log");
  EXPECT_EQ(plan(kRun), 0) << trelv_.console.output;
  EXPECT_EQ(result_.at("starts"), "S:\\Lumo\\mv\\nerio\\nerio.exe ");
  EXPECT_THAT(texts("command", "line"), ElementsAre("S:\\Lumo\\mv\\nerio\\nerio.exe "));
  EXPECT_THAT(texts("log", "text"), Contains("Gestione ProdTrelv - Inizio procedura"));
  EXPECT_EQ(row("NERIO", "Server").dump(),
            Json({{"product", "NERIO"},
                  {"side", "Server"},
                  {"recorded", "03.20.30.00"},
                  {"becomes", "03.20.30.00"},
                  {"because",
                   "Lato Server la versione: 03.20.30.00 è minore o uguale a quella "
                   "corrente: 03.20.30.00"}})
                .dump());
  EXPECT_EQ(result_.at("updates").size(), 10U);
}

TEST_F(PlanVerbs, TellWhatBecomesOfEachProductAndWhy) {
  installation_.putServerRecord("[NERIO]\r\nversion=01.00.00.00\r\n");
  EXPECT_EQ(plan(kRun), 1);
  EXPECT_EQ(row("NERIO", "Server").at("recorded"), "01.00.00.00");
  EXPECT_EQ(row("NERIO", "Server").at("becomes"), "03.20.30.00");
  EXPECT_EQ(row("NERIO", "Server").at("because"),
            "esecuzione effettuata: Tipo=Update - Oggetto=Server - "
            "Comando=S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio\\update.exe -S");
  EXPECT_EQ(row("LUDA", "Server").at("recorded"), "");
  EXPECT_EQ(row("LUDA", "Server").at("becomes"), "07.10.00.00");
  EXPECT_EQ(row("LUDA", "Client").at("becomes"), "07.10.00.00");
  EXPECT_EQ(installation_.serverRecord(), "[NERIO]\r\nversion=01.00.00.00\r\n");
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(PlanVerbs, LetAProgramFailAndAUserHaveFewRights) {
  installation_.putServerRecord("[NERIO]\r\nversion=01.00.00.00\r\n");
  EXPECT_EQ(plan({"--fails", "1", "INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "NERIO"}), 1);
  EXPECT_EQ(row("NERIO", "Server").at("becomes"), "01.00.00.00");
  EXPECT_THAT(row("NERIO", "Server").at("because").get<std::string>(),
              StartsWith("Esecuzione non effettuata di: "));
  EXPECT_EQ(row("LUDA", "Server").at("becomes"), "07.10.00.00");
  EXPECT_EQ(plan({"INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "NERIO", "--as-user"}), 1);
  EXPECT_EQ(row("LUDA", "Server").at("becomes"), "");
  EXPECT_THAT(texts("box", "title"), Contains("Errore"));
}

TEST_F(PlanVerbs, TakeTheirOptionsWhereverTheyStandUpToTwoHyphens) {
  installation_.putServerRecord("[NERIO]\r\nversion=01.00.00.00\r\n");
  for (const Names& number : {Names{"--fails", "1"}, Names{"--fails=1"}}) {
    Names arguments = number;
    arguments.insert(arguments.end(), kRun.begin(), kRun.end());
    arguments.emplace_back("--as-user");
    EXPECT_EQ(plan(arguments), 1) << trelv_.console.errors;
    EXPECT_EQ(row("LUDA", "Server").at("becomes"), "");
    EXPECT_THAT(texts("box", "title"), Contains("Errore"));
  }
  installation_.putServerRecord(deliveredVersions());
  Names behind{"--"};
  behind.insert(behind.end(), kRun.begin(), kRun.end());
  behind.emplace_back("--as-user");
  EXPECT_EQ(plan(behind), 0) << trelv_.console.errors;
  EXPECT_EQ(result_.at("starts"), "S:\\Lumo\\mv\\nerio\\nerio.exe --as-user");
  EXPECT_EQ(plan({"INTEGRATEDRUN", "--fails"}), 64);
}

TEST_F(PlanVerbs, SayWhyAProductWasNotReached) {
  share().put(Installation::kServerLock, "16/11/2026 09:30:00\r\n");
  installation_.putServerRecord("");
  EXPECT_EQ(plan(kRun), 1);
  EXPECT_THAT(row("NERIO", "Server").at("because").get<std::string>(),
              StartsWith("esecuzione non effettuata per presenza altre sessioni"));
  EXPECT_EQ(row("ZM", "Client").at("because"), row("NERIO", "Server").at("because"));
  machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                "T:\\Altro");
  EXPECT_EQ(plan(kRun), 1);
  EXPECT_EQ(row("ZM", "Client").at("because"),
            "Integrazione disponibile ma su altro server - Impossibile proseguire");
  share().removeTree("S:\\Lumo\\mv\\nerio\\nerio.exe");
  EXPECT_EQ(plan(kRun), 1);
  EXPECT_EQ(row("ZM", "Client").at("because"),
            "Integrazione disponibile ma su altro server - Impossibile proseguire");
}

TEST_F(PlanVerbs, SayThatASideHasNoCommands) {
  share().put("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini",
              "[Update01]\r\nversion=99.00.00.00\r\nServer01=%PATHSETUP%"
              "\\prg\\com\\setup\\aggdovra\\zb\\update.exe -S\r\n");
  plan(kRun);
  EXPECT_EQ(row("ZB", "Client").at("because").get<std::string>(), "nessun comando per questo lato");
  EXPECT_EQ(row("ZB", "Server").at("becomes").get<std::string>(), "99.00.00.00");
}

TEST_F(PlanVerbs, SayOfAStartThatUpdatesNothingThatItDoesNot) {
  for (const Names& start : {Names{"INTEGRATEDMAINTAIN", "S:\\Lumo", "S:\\Lumo"},
                             Names{"SINGLEINSTALL", "ZB", "manca.gz"}}) {
    EXPECT_EQ(plan(start), 1) << "a form or a box";
    EXPECT_EQ(row("ZB", "Client").at("because"), "questo avvio non aggiorna i prodotti");
    EXPECT_EQ(row("ZB", "Client").at("becomes"), row("ZB", "Client").at("recorded"));
    EXPECT_EQ(result_.at("starts"), nullptr);
  }
}

TEST_F(PlanVerbs, WriteAnEmptyArgumentAsTheManagerIsGivenIt) {
  plan({"INTEGRATEDRUN", "S:\\Lumo", "", "due parole", "NERIO"});
  EXPECT_THAT(texts("log", "text"),
              Contains("Gestione ProdTrelv - Linea di comando ArgV = INTEGRATEDRUN S:\\Lumo \"\" "
                       "\"due parole\" NERIO\t Numero parametri = 4"));
  plan({"INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "NERIO", "n#1"});
  EXPECT_THAT(
      texts("log", "text"),
      Contains("Gestione ProdTrelv - Linea di comando ArgV = INTEGRATEDRUN S:\\Lumo S:\\Lumo "
               "NERIO n#1\t Numero parametri = 5"));
}

/// The keys of the steps of a kind, in their order; "" where they differ from step to step.
std::string keysOf(const Json& steps, const char* kind) {
  std::string keys;
  for (const Json& step : steps) {
    if (step.at("kind") != kind) {
      continue;
    }
    std::string found;
    for (const auto& [key, value] : step.items()) {
      found += key + " ";
    }
    keys = keys.empty() || keys == found ? found : "different ones";
  }
  return keys;
}

TEST_F(PlanVerbs, NameTheKeysOfEachKindOfStepAsOtherProgramsReadThem) {
  const PackPrograms packPrograms(machine());
  beNewWithAPack();
  share().put("S:\\Lumo\\prg\\com\\setup\\aggdovra\\b.zip", "no pack");
  machine().removeTree("C:\\Users\\mario\\Temp\\log");
  EXPECT_EQ(plan({"INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "MVBIL"}), 1);
  const Json& steps = result_.at("steps");
  EXPECT_EQ(keysOf(steps, "command"), "kind line waits ");
  EXPECT_EQ(keysOf(steps, "ini"), "kind file section key value ");
  for (const char* const kind : {"write", "delete", "make"}) {
    EXPECT_EQ(keysOf(steps, kind), "kind path ") << kind;
  }
  EXPECT_EQ(keysOf(steps, "rename"), "kind path to ");
  EXPECT_EQ(keysOf(steps, "copy"), "kind path to ");
  EXPECT_EQ(keysOf(steps, "registry"), "kind key name value ");
  EXPECT_EQ(keysOf(steps, "store"), "kind value ");
  EXPECT_EQ(keysOf(steps, "environment"), "kind name value ");
  EXPECT_EQ(keysOf(steps, "box"), "kind title text icon buttons answer ");
  EXPECT_EQ(keysOf(steps, "form"), "kind name ");
  EXPECT_EQ(keysOf(steps, "log"), "kind text ");
  EXPECT_THAT(texts("log", "text"), Each(Not(HasSubstr(" -- "))));
}

TEST_F(PlanVerbs, PassOnWhatIsMeantForTheProgram) {
  EXPECT_EQ(plan({"INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "NERIO", "--vista", "-x", "due parole"}),
            0);
  EXPECT_EQ(result_.at("starts"), "S:\\Lumo\\mv\\nerio\\nerio.exe --vista -x due parole");
}

TEST_F(PlanVerbs, RefuseWhatIsNoNumberAndASystemThatIsNoWindows) {
  EXPECT_EQ(plan({"--fails", "zero", "INTEGRATEDRUN"}), 64);
  EXPECT_EQ(plan({"--fails", "0", "INTEGRATEDRUN"}), 64);
  EXPECT_EQ(plan({}), 64);
  machine().system().failVersionQuery();
  EXPECT_EQ(plan(kRun), 2);
  EXPECT_THAT(trelv_.console.errors, HasSubstr("soltanto su Windows"));
}

TEST_F(PlanVerbs, ShowPeopleStepsAndVersions) {
  installation_.putServerRecord("[NERIO]\r\nversion=01.00.00.00\r\n");
  EXPECT_EQ(trelv_.run({"plan", "INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "NERIO"}), 1);
  EXPECT_THAT(
      trelv_.console.output,
      AllOf(HasSubstr("  esegue      S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio\\update.exe "
                      "-S\n"),
            HasSubstr("  NERIO Server: 01.00.00.00 -> 03.20.30.00 (esecuzione effettuata: "),
            HasSubstr("\nVersioni registrate:\n"), HasSubstr("  NERIO Client: resta 03.20.30.00 ("),
            HasSubstr("Programma richiesto: S:\\Lumo\\mv\\nerio\\nerio.exe \n")));
}

TEST_F(PlanVerbs, ShowPeopleAFirstStart) {
  const PackPrograms packPrograms(machine());
  beNewWithAPack();
  EXPECT_EQ(trelv_.run({"plan", "INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "MVBIL"}), 1);
  EXPECT_THAT(
      trelv_.console.output,
      AllOf(
          HasSubstr("\n  registro    HKLM\\SOFTWARE\\LUMO\\Programmi (nuova chiave)\n  registro    "
                    "HKLM\\SOFTWARE\\LUMO\\Programmi: PathLocale="),
          HasSubstr(
              "\n  copia       C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\testo.txt in "
              "S:\\Lumo\\prg\\com\\setup\\aggdovra\\"),
          HasSubstr("\n  rinomina    S:\\Lumo\\prg\\com\\setup\\aggdovra\\"),
          HasSubstr(" in S:\\Lumo\\prg\\com\\setup\\aggdovra\\testo.txt\n"),
          HasSubstr("\nVersioni registrate:\n  NERIO Server: nessuna -> 03.20.30.00 (")));
}

TEST_F(PlanVerbs, ShowPeopleThatNoProgramIsStarted) {
  EXPECT_EQ(trelv_.run({"plan", "INTEGRATEDMAINTAIN", "S:\\Lumo", "S:\\Lumo"}), 1);
  EXPECT_THAT(trelv_.console.output, HasSubstr("\nProgramma richiesto: nessuno\n"));
}

}  // namespace
}  // namespace trelv::tests
