#include "kit/Plan.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/Text.h"
#include "kit/Failure.h"
#include "kit/OnWindows.h"
#include "kit/PlanRun.h"
#include "kit/QuietProgram.h"
#include "platform/modLibrary.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;
using machine::BoxAnswer;
using machine::BoxButtons;
using machine::BoxIcon;
using overlay::Step;
using overlay::StepKind;

constexpr const char* kManagerFile = "\\TrelvManager.exe";

std::size_t numberOf(const std::string& text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number == 0) {
    throw WrongUsage("l'opzione --fails vuole un numero da 1 in su: " + text);
  }
  return number;
}

// --- The document

const char* iconName(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::Critical:
      return "critical";
    case BoxIcon::Question:
      return "question";
    case BoxIcon::Exclamation:
      return "exclamation";
    case BoxIcon::Information:
      return "information";
    case BoxIcon::None:
      break;
  }
  return "none";
}

const char* buttonsName(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::OkCancel:
      return "okcancel";
    case BoxButtons::YesNo:
      return "yesno";
    case BoxButtons::Ok:
      break;
  }
  return "ok";
}

const char* answerName(BoxAnswer answer) {
  switch (answer) {
    case BoxAnswer::Ok:
      return "ok";
    case BoxAnswer::Cancel:
      return "cancel";
    case BoxAnswer::Yes:
      return "yes";
    case BoxAnswer::No:
      return "no";
    case BoxAnswer::None:
      break;
  }
  return "none";
}

Json nullable(const std::optional<std::string>& text) { return text ? Json(*text) : Json(nullptr); }

Json onPath(const char* kind, const Step& step) { return {{"kind", kind}, {"path", step.subject}}; }

Json fromTo(const char* kind, const Step& step) {
  return {{"kind", kind}, {"path", step.subject}, {"to", step.target}};
}

Json stepJson(const Step& step) {
  switch (step.kind) {
    case StepKind::Command:
      return {{"kind", "command"}, {"line", step.subject}, {"waits", step.waits}};
    case StepKind::Ini:
      return {{"kind", "ini"},
              {"file", step.subject},
              {"section", step.section},
              {"key", nullable(step.name)},
              {"value", nullable(step.value)}};
    case StepKind::Write:
      return onPath("write", step);
    case StepKind::Append:
      return onPath("append", step);
    case StepKind::Delete:
      return onPath("delete", step);
    case StepKind::Make:
      return onPath("make", step);
    case StepKind::Rename:
      return fromTo("rename", step);
    case StepKind::Copy:
      return fromTo("copy", step);
    case StepKind::Registry:
      return {{"kind", "registry"},
              {"key", step.subject},
              {"name", nullable(step.name)},
              {"value", nullable(step.value)}};
    case StepKind::Store:
      return {{"kind", "store"}, {"value", nullable(step.value)}};
    case StepKind::Environment:
      return {{"kind", "environment"}, {"name", step.subject}, {"value", nullable(step.value)}};
    case StepKind::Box:
      return {{"kind", "box"},
              {"title", step.subject},
              {"text", nullable(step.value)},
              {"icon", iconName(step.icon)},
              {"buttons", buttonsName(step.buttons)},
              {"answer", answerName(step.answer)}};
    case StepKind::Form:
      return {{"kind", "form"}, {"name", step.subject}};
    case StepKind::Log:
      break;
  }
  return {{"kind", "log"}, {"text", nullable(step.value)}};
}

std::string sideName(Side side) { return modProdTrelvLibrary::ConvertClientServerToString(side); }

Json rowJson(const UpdateRow& row) {
  return {{"product", row.product},
          {"side", sideName(row.side)},
          {"recorded", row.recorded},
          {"becomes", row.becomes},
          {"because", row.because}};
}

Json planJson(const Plan& plan) {
  Json steps = Json::array();
  for (const Step& step : plan.steps) {
    steps.push_back(stepJson(step));
  }
  Json updates = Json::array();
  for (const UpdateRow& row : plan.updates) {
    updates.push_back(rowJson(row));
  }
  return {{"steps", steps}, {"starts", nullable(plan.starts)}, {"updates", updates}};
}

// --- The text

/// The lines of a box in one.
std::string oneLine(const std::string& text) {
  return replaceAll(replaceAll(text, std::string(kCrLf) + kCrLf, " / "), kCrLf, " ");
}

std::string line(std::string_view what, const std::string& text) {
  constexpr std::size_t kColumn = 12;
  return "  " + std::string(what) + std::string(kColumn - what.size(), ' ') + text + "\n";
}

std::string stepText(const Step& step) {
  const std::string value = step.value.value_or("");
  switch (step.kind) {
    case StepKind::Command:
      return line("esegue", step.subject + (step.waits ? "" : " (senza attendere)"));
    case StepKind::Ini:
      return line("ini",
                  step.subject + " [" + step.section + "] " + step.name.value_or("") + "=" + value);
    case StepKind::Write:
      return line("scrive", step.subject);
    case StepKind::Append:
      return line("aggiunge a", step.subject);
    case StepKind::Delete:
      return line("elimina", step.subject);
    case StepKind::Make:
      return line("crea", step.subject);
    case StepKind::Rename:
      return line("rinomina", step.subject + " in " + step.target);
    case StepKind::Copy:
      return line("copia", step.subject + " in " + step.target);
    case StepKind::Registry:
      return line("registro",
                  step.subject + (step.name ? ": " + *step.name + "=" + value : " (nuova chiave)"));
    case StepKind::Store:
      return line("archivio", value);
    case StepKind::Environment:
      return line("variabile", step.subject + "=" + value);
    case StepKind::Box:
      return line("messaggio", oneLine(value) + " -> " + answerName(step.answer));
    case StepKind::Form:
      return line("finestra", step.subject);
    case StepKind::Log:
      break;
  }
  return "";
}

std::string rowText(const UpdateRow& row) {
  const auto version = [](const std::string& text) -> std::string {
    return text.empty() ? "nessuna" : text;
  };
  const std::string becomes = row.recorded == row.becomes
                                  ? "resta " + version(row.becomes)
                                  : version(row.recorded) + " -> " + version(row.becomes);
  return "  " + row.product + " " + sideName(row.side) + ": " + becomes + " (" + row.because +
         ")\n";
}

std::string planText(const Plan& plan) {
  std::string text;
  std::size_t logged = 0;
  for (const Step& step : plan.steps) {
    logged += step.kind == StepKind::Log ? 1 : 0;
    text += stepText(step);
  }
  text = "Passi previsti (righe di log: " + std::to_string(logged) + "):\n" +
         (text.empty() ? "  nessuno\n" : text);
  if (!plan.updates.empty()) {
    text += "Versioni registrate:\n";
  }
  for (const UpdateRow& row : plan.updates) {
    text += rowText(row);
  }
  text += "Programma richiesto: " + plan.starts.value_or("nessuno") + "\n";
  const bool ran = std::any_of(plan.steps.begin(), plan.steps.end(), [](const Step& step) -> bool {
    return step.kind == StepKind::Command && step.waits;
  });
  return text + (ran ? "Ciò che cambiano i programmi eseguiti non è compreso.\n" : "");
}

void requireWindows(machine::SystemFacts& system) {
  if (!isWindows(system)) {
    throw Failure("plan", "un avvio si può prevedere soltanto su Windows");
  }
}

}  // namespace

void PlanVerb::declare(Syntax& syntax) {
  syntax.argument("MODO", "la modalità, come per TrelvManager.exe", mode_);
  syntax.rest("ARGOMENTO", "i suoi argomenti", 0, arguments_);
  syntax.value("fails", "N", "l'N-esimo programma non si avvia", fails_);
  syntax.flag("as-user", "senza diritti di amministratore", asUser_);
  syntax.argumentsEndOptions();
}

Answer PlanVerb::run(Workplace& workplace, Progress& progress) {
  const std::size_t fails = fails_.empty() ? 0 : numberOf(fails_);
  machine::SystemFacts& system = workplace.machine.system;
  requireWindows(system);
  std::vector<std::string> arguments = arguments_;
  arguments.insert(arguments.begin(), mode_);
  const Plan plan = planRun(
      workplace.machine, {.manager = modLibrary::ParentPath(system.executablePath()) + kManagerFile,
                          .arguments = arguments,
                          .fails = fails,
                          .asUser = asUser_,
                          .onStep = [&progress](const Step& step) -> void {
                            if (step.kind == StepKind::Log) {
                              progress.tell(oneLine(step.value.value_or("")));
                            }
                          }});
  Answer answer;
  answer.exitCode = plan.changesAnything() ? exit_code::kFindings : exit_code::kGood;
  answer.result = std::make_shared<Json>(planJson(plan));
  answer.text = planText(plan);
  return answer;
}

}  // namespace trelv::kit
