#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "kit/CommandLine.h"
#include "kit/Failure.h"
#include "kit/GivenPath.h"
#include "kit/ProgramVersion.h"
#include "support/kit/Trelv.h"

namespace trelv::tests {
namespace {

using Json = nlohmann::ordered_json;

/// Does what its argument says.
class ScriptedVerb : public kit::Verb {
 public:
  void declare(kit::Syntax& syntax) override {
    syntax.argument("WHAT", "che cosa", what_);
    syntax.value("number", "N", "un numero", number_);
    syntax.list("only", "CODE,…", "codici", codes_);
  }

  kit::Answer run(kit::Workplace& workplace, kit::Progress& progress) override {
    progress.tell("lavoro");
    if (what_ == "fail") {
      throw kit::Failure("S:\\Lumo", system_code::kPathNotFound);
    }
    if (what_ == "usage") {
      throw kit::WrongUsage("codice sconosciuto: TK999");
    }
    kit::Answer answer;
    if (what_ == "findings") {
      answer.exitCode = kit::exit_code::kFindings;
      answer.findings = {
          {"TK102", kit::Severity::Error, "S:\\Lumo\\a.ini", 7, "buco", "togliere"},
          {"TK401", kit::Severity::Note, "S:\\è", std::nullopt, "lock", "attendere"}};
    }
    answer.result =
        std::make_shared<Json>(Json{{"what", what_}, {"number", number_}, {"only", codes_}});
    answer.text = workplace.console.errorIsTerminal() ? "con terminale\n" : "senza terminale\n";
    return answer;
  }

 private:
  std::string what_;
  std::string number_;
  std::vector<std::string> codes_;
};

class CommandLine : public testing::Test {
 protected:
  int run(const std::vector<std::string>& arguments) { return trelv_.run(arguments, table_); }
  std::string output() const { return trelv_.console.output; }
  std::string errors() const { return trelv_.console.errors; }

  sim::SimMachine machine_;
  Trelv trelv_{machine_};
  std::vector<kit::VerbRow> table_{{"script", "per prova", []() -> std::unique_ptr<kit::Verb> {
                                      return std::make_unique<ScriptedVerb>();
                                    }}};
};

TEST_F(CommandLine, PrintsFindingsWithFileLineAndRemedy) {
  EXPECT_EQ(run({"script", "findings"}), 1);
  EXPECT_EQ(output(),
            "S:\\Lumo\\a.ini:7: errore TK102: buco\n"
            "    rimedio: togliere\n"
            "S:\\è: nota TK401: lock\n"
            "    rimedio: attendere\n"
            "senza terminale\n");
  EXPECT_EQ(errors(), "");
}

TEST_F(CommandLine, PrintsOneDocumentWhoseKeysHaveTheirOrder) {
  EXPECT_EQ(run({"script", "findings", "--number", "3", "--json"}), 1);
  const Json document = Json::parse(output());
  EXPECT_EQ(document.dump(),
            "{\"schema\":\"trelv/1\",\"verb\":\"script\",\"program\":\"" + kit::programVersion() +
                "\",\"findings\":["
                "{\"code\":\"TK102\",\"severity\":\"error\",\"file\":\"S:\\\\Lumo\\\\a.ini\","
                "\"line\":7,\"text\":\"buco\",\"remedy\":\"togliere\"},"
                "{\"code\":\"TK401\",\"severity\":\"note\",\"file\":\"S:\\\\è\",\"line\":null,"
                "\"text\":\"lock\",\"remedy\":\"attendere\"}],"
                "\"result\":{\"what\":\"findings\",\"number\":\"3\",\"only\":[]}}");
  EXPECT_EQ(errors(), "");
}

TEST_F(CommandLine, CommonOptionsStandBeforeOrBehindTheArguments) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"script", "--json", "good", "--number", "5"},
                                             {"script", "good", "--number=5", "--json"},
                                             {"--json", "script", "--number", "5", "good"}}) {
    EXPECT_EQ(run(arguments), 0);
    EXPECT_EQ(Json::parse(output())["result"]["what"], "good");
    EXPECT_EQ(Json::parse(output())["result"]["number"], "5");
  }
}

TEST_F(CommandLine, ListsArePartedAtCommasAndGathered) {
  EXPECT_EQ(run({"script", "good", "--only", "A,B", "--json", "--only", "C"}), 0);
  EXPECT_EQ(Json::parse(output())["result"]["only"], (std::vector<std::string>{"A", "B", "C"}));
}

TEST_F(CommandLine, BehindTwoHyphensThereAreNoOptions) {
  EXPECT_EQ(run({"script", "--json", "--", "--number"}), 0);
  EXPECT_EQ(Json::parse(output())["result"]["what"], "--number");
}

TEST_F(CommandLine, SaysInOneLineWhatCouldNotBeDone) {
  EXPECT_EQ(run({"script", "fail", "--json"}), 2);
  EXPECT_EQ(errors(), "trelv: S:\\Lumo: Impossibile trovare il percorso\n");
  EXPECT_EQ(output(), "");
}

TEST_F(CommandLine, WrongUsageAnswers64) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"--json"},
                                             {"nothing"},
                                             {"script"},
                                             {"script", "a", "b"},
                                             {"script", "a", "--strange"},
                                             {"script", "a", "-x"},
                                             {"script", "a", "--json=yes"},
                                             {"script", "a", "--number"},
                                             {"script", "a", "--numbe", "3"},
                                             {"script", "a", "--number", "3", "--on=A"},
                                             {"script", "a", "--js"},
                                             {"script", "a", "--hel"},
                                             {"script", "a", "--vers"},
                                             {"script", "usage"}}) {
    EXPECT_EQ(run(arguments), 64);
    EXPECT_EQ(output(), "");
    EXPECT_NE(errors(), "");
    EXPECT_EQ(std::count(trelv_.console.errors.begin(), trelv_.console.errors.end(), '\n'), 1)
        << errors();
  }
}

TEST_F(CommandLine, ValuesMayLookLikeOptions) {
  for (const char* const value : {"--json", "-x", "--number", "=", "a=b"}) {
    EXPECT_EQ(run({"script", "--number", value, "good", "--json"}), 0) << value;
    EXPECT_EQ(Json::parse(output())["result"]["number"], value);
  }
}

TEST_F(CommandLine, WhatStandsInALineOfItsOwnInAPathDoesNotInTheComplaint) {
  EXPECT_EQ(run({"verbo\nsu due righe\r\n"}), 64);
  EXPECT_EQ(errors(), "trelv: verbo sconosciuto: verbo su due righe   (trelv --help)\n");
}

TEST_F(CommandLine, AnswerThatNobodyGotIsNone) {
  trelv_.console.printCode = system_code::kDiskFull;
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"script", "good"},
                                             {"script", "findings", "--json"},
                                             {"script", "--help"},
                                             {"script", "--version"},
                                             {"--help"}}) {
    EXPECT_EQ(run(arguments), 2);
    EXPECT_EQ(errors(), "trelv: standard output: Disco pieno\n");
  }
}

TEST_F(CommandLine, HelpAndVersionAnswer0) {
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_NE(output().find("script"), std::string::npos);
  EXPECT_EQ(run({"script", "--help"}), 0);
  EXPECT_NE(output().find("--number"), std::string::npos);
  EXPECT_EQ(run({"--version"}), 0);
  EXPECT_EQ(output(), "trelv " + kit::programVersion() + "\n");
  EXPECT_EQ(run({"script", "--version"}), 0);
  EXPECT_EQ(output(), "trelv " + kit::programVersion() + "\n");
}

/// What all verbs have.
constexpr const char* kCommonHelp =
    "  --json                    scrive un documento JSON\n"
    "  --quiet                   non mostra l'avanzamento\n"
    "  --help                    mostra questo aiuto\n"
    "  --version                 mostra la versione\n";

TEST_F(CommandLine, HelpOfTheProgramListsItsVerbs) {
  const std::string head =
      "trelv: prepara, controlla e spiega le consegne di TrelvManager\n\n"
      "Uso: trelv VERBO [OPZIONI] ARGOMENTI\n\nVerbi:\n";
  const std::string foot = "\ntrelv VERBO --help mostra argomenti e opzioni di un verbo.\n";
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_EQ(output(), head + "  script    per prova\n" + foot);
  EXPECT_EQ(trelv_.run({"--help"}), 0);
  EXPECT_EQ(output(),
            head +
                "  lint      cerca errori in installazioni, supporti, pacchetti e configurazioni\n"
                "  plan      che cosa farebbe un avvio del gestore\n"
                "  pack      costruisce pacchi da una descrizione\n"
                "  medium    costruisce un supporto d'installazione da una descrizione\n"
                "  publish   pubblica pacchi sul server, li annulla, elenca le pubblicazioni\n"
                "  verify    confronta registrato, configurato e trovato di ogni prodotto\n"
                "  explain   dice che cosa ha fermato un prodotto, dal registro di un avvio\n"
                "  locks     mostra i blocchi di aggiornamento e chi li attende, li rimuove su "
                "richiesta\n" +
                foot);
}

TEST_F(CommandLine, HelpOfAVerbSaysWhatMustAndWhatMayStandThere) {
  EXPECT_EQ(run({"script", "--help"}), 0);
  EXPECT_EQ(output(),
            "script: per prova\n\nUso: trelv script [OPZIONI] WHAT\n\n"
            "Argomenti:\n  WHAT                      che cosa\n\n"
            "Opzioni:\n  --number N                un numero\n"
            "  --only CODE,…             codici\n" +
                std::string(kCommonHelp));
  EXPECT_EQ(trelv_.run({"lint", "--help"}), 0);
  EXPECT_EQ(output(),
            "lint: cerca errori in installazioni, supporti, pacchetti e configurazioni\n\n"
            "Uso: trelv lint [OPZIONI] PERCORSO…\n\n"
            "Argomenti:\n  PERCORSO                  cartelle di host, supporti, pacchetti, "
            "cataloghi, configurazioni\n\n"
            "Opzioni:\n  --only CODICE,…           cerca soltanto questi errori\n"
            "  --ignore CODICE,…         non cerca questi errori\n" +
                std::string(kCommonHelp));
  EXPECT_EQ(trelv_.run({"explain", "--help"}), 0);
  EXPECT_EQ(
      output(),
      "explain: dice che cosa ha fermato un prodotto, dal registro di un avvio\n\n"
      "Uso: trelv explain [OPZIONI] PRODUCT\n\n"
      "Argomenti:\n  PRODUCT                   identificativo del prodotto: NERIO, LUDA, ZB, "
      "Q2, ZM\n\n"
      "Opzioni:\n  --host HOST               cartella della suite sul server; altrimenti "
      "quella registrata\n"
      "  --log FILE                registro di TrelvManager; altrimenti quello dell'utente\n" +
          std::string(kCommonHelp));
  EXPECT_EQ(trelv_.run({"plan", "--help"}), 0);
  EXPECT_EQ(output().find("plan: che cosa farebbe un avvio del gestore\n\n"
                          "Uso: trelv plan [OPZIONI] MODO [ARGOMENTO…]\n\n"),
            0U)
      << output();
}

TEST(CommandLineHelp, OneBlankAtLeastStandsBehindAnOption) {
  bool place = false;
  kit::Syntax syntax;
  syntax.flag("lunga-ventitre-lettere", "corta", place);
  syntax.flag("lunga-ventiquattro-lette", "giusta", place);
  syntax.flag("lunga-venticinque-lettere", "lunga", place);
  const std::string help = syntax.help("prova", "");
  EXPECT_NE(help.find("\n  --lunga-ventitre-lettere  corta\n"), std::string::npos) << help;
  EXPECT_NE(help.find("\n  --lunga-ventiquattro-lette giusta\n"), std::string::npos) << help;
  EXPECT_NE(help.find("\n  --lunga-venticinque-lettere lunga\n"), std::string::npos) << help;
}

TEST_F(CommandLine, ProgressIsForPeopleOnly) {
  run({"script", "good"});
  EXPECT_EQ(errors(), "");
  trelv_.console.terminal = true;
  run({"script", "good"});
  EXPECT_EQ(errors(), "\rlavoro\r      \r");
  run({"script", "good", "--quiet"});
  EXPECT_EQ(errors(), "");
}

struct Shown {
  const char* given;
  const char* full;
  const char* shown;
};

TEST(GivenPath, ShowsPathsAsTheyWereGiven) {
  FakeGivenPaths paths;
  for (const Shown& row :
       std::vector<Shown>{{"S:\\Lumo", "S:\\Lumo\\prg\\etc", "S:\\Lumo\\prg\\etc"},
                          {"S:\\Lumo\\", "S:\\Lumo\\prg\\etc", "S:\\Lumo\\prg\\etc"},
                          {"S:\\Lumo", "s:\\LUMO\\prg\\etc", "S:\\Lumo\\prg\\etc"},
                          {"host", "C:\\Lavoro\\host\\prg", "host\\prg"},
                          {"\\\\srv\\dati", "\\\\srv\\dati\\a", "\\\\srv\\dati\\a"},
                          {"S:\\", "S:\\a.ini", "S:\\a.ini"},
                          {"host", "C:\\Lavoro\\hosts\\prg", "C:\\Lavoro\\hosts\\prg"},
                          {"host", "C:\\Lavoro\\host", "host"}}) {
    EXPECT_EQ(kit::GivenPath(paths, row.given).shown(row.full), row.shown);
  }
}

/// Those of a system that parts folders otherwise.
class SlashPaths : public FakeGivenPaths {
 public:
  char separator() const override { return '/'; }
};

TEST(GivenPath, ShowsTheSystemsOwnSeparator) {
  SlashPaths paths;
  const kit::GivenPath host(paths, "host/");
  EXPECT_EQ(host.given(), "host");
  EXPECT_EQ(host.shown("C:\\Lavoro\\host\\prg\\etc"), "host/prg/etc");
  EXPECT_EQ(kit::GivenPath(paths, "/").given(), "/") << "the root has no other name";
}

TEST(GivenPath, AnEmptyOneCannotBeUsed) {
  FakeGivenPaths paths;
  EXPECT_THROW(kit::GivenPath(paths, ""), kit::Failure);
}

}  // namespace
}  // namespace trelv::tests
