#include "integrated/Help.h"

#include <cstdint>
#include <utility>
#include <variant>

#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "platform/modRegistry.h"

namespace trelv::modProdTrelvInteractive {
namespace {

using machine::BoxButtons;
using machine::BoxIcon;

/// Raises where the word processor did not do what it was told.
void require(const machine::AutomationAnswer& answer) {
  if (answer.code != system_code::kSuccess) {
    const std::string description =
        answer.description.empty() ? "Automazione di Word non riuscita" : answer.description;
    throw RuntimeError(static_cast<std::int32_t>(answer.code), answer.source, description);
  }
}

std::string findReader(Program& program) {
  std::string reader = GetAppPath(program, "Acrobat.exe");
  return reader.empty() ? GetAppPath(program, "AcroRd32.exe") : reader;
}

}  // namespace

void Help::ShowHelp(const std::string& topic) {
  loggedTrap(program_.log, program_.errors, "ModProdTrelvInteractive", "ShowHelp",
             "Errore in visualizzazione help: ", false, [&]() -> bool {
               const std::string folder = program_.state.session.mediaRoot + "prodotti\\docs\\";
               const std::string pdf = folder + "kodamuri.pdf";
               const std::string document = folder + "UserManual.doc";
               if (modLibrary::FileExists(program_, pdf)) {
                 ShowPdf(program_, pdf);
               } else if (modLibrary::FileExists(program_, document)) {
                 showWordManual(document, topic);
               } else {
                 program_.machine.desktop.messageBox("Errore",
                                                     "File di help: " + document + " non trovato",
                                                     BoxIcon::Exclamation, BoxButtons::Ok);
               }
               return true;
             });
}

// Kept: each call starts a word processor of its own, the one before is told to quit.
void Help::showWordManual(const std::string& document, const std::string& topic) {
  letGoOfWord();
  require(program_.machine.automation.startWord(word_));
  const machine::AutomationAnswer opened = word_->openDocument(document);
  const machine::AutomationAnswer shown =
      opened.code == system_code::kSuccess ? word_->makeVisible() : opened;
  if (shown.code != system_code::kSuccess) {
    // Nobody could close one that cannot be seen.
    letGoOfWord();
  }
  require(shown);
  require(word_->activate());
  if (!topic.empty()) {
    require(word_->goToBookmark(topic));
  }
}

// One that the user closed meanwhile has nothing to be told any more.
void Help::letGoOfWord() {
  if (word_ != nullptr) {
    word_->quit();
    word_.reset();
  }
}

void ShowPdf(Program& program, const std::string& file) {
  const std::string reader = findReader(program);
  if (reader.empty()) {
    program.machine.desktop.messageBox(TRELV_PRODUCT_NAME,
                                       "Help non visualizzabile! Installare Acrobat Reader",
                                       BoxIcon::Critical, BoxButtons::Ok);
    return;
  }
  modLibrary::Execute(program, reader + " \"" + file + "\"", false);
}

std::string GetAppPath(Program& program, const std::string& executable) {
  modRegistry::Variant value;
  const bool found = modRegistry::QueryValue(
      program, machine::Hive::LocalMachine,
      "software\\microsoft\\windows\\currentversion\\App Paths\\" + executable, "", value);
  const std::string* const path = std::get_if<std::string>(&value);
  return found && path != nullptr ? trim(*path) : std::string();
}

}  // namespace trelv::modProdTrelvInteractive
