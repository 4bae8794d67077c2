#include "interactive/modProdTrelvInteractive.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "integrated/frmProdTrelvIntegrated.h"
#include "interactive/PackInstallation.h"
#include "inventory/PresenceChecks.h"
#include "platform/modLibrary.h"
#include "records/MediumFiles.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"
#include "ui/frmProdTrelvStandalone.h"
#include "ui/frmSelectInstall.h"

namespace trelv::modProdTrelvInteractive {
namespace {

constexpr const char* kModule = "ModProdTrelvInteractive";
constexpr const char* kSetupFile = "Setup.cmf";
constexpr const char* kVersionFile = "Versione.ver";
constexpr const char* kProductsFile = "Products.cmf";

std::string onMedium(const Program& program, const char* file) {
  return program.state.session.mediaRoot + file;
}

void requireText(const std::string& line, const std::string& path) {
  if (!mediumFiles::isPlainLine(line)) {
    throw RuntimeError(runtime_number::kInvalidFormat, "TrelvManager",
                       "Il file non è un testo nella codifica del sistema: " + path);
  }
  if (line.size() > mediumFiles::kLongestLine) {
    throw RuntimeError(runtime_number::kInvalidFormat, "TrelvManager",
                       "Il file ha una riga troppo lunga: " + path);
  }
}

/// The lines of a text file of the medium. Raises when it cannot be read or is no text.
std::vector<std::string> readMediumFile(Program& program, const std::string& path) {
  std::vector<std::string> lines = program.fileSystem.readLines(path);
  for (std::string& line : lines) {
    requireText(line, path);
    line = program.machine.locale.fromAnsi(line);
  }
  return lines;
}

void requireLines(const std::vector<std::string>& lines, std::size_t count,
                  const std::string& path) {
  if (lines.size() < count) {
    throw RuntimeError(runtime_number::kPastEndOfFile, "TrelvManager", "Fine del file: " + path);
  }
}

/// Is the file there? Raises when the medium cannot be looked at.
bool isThere(Program& program, const std::string& path) {
  machine::FileFacts facts;
  const SystemCode code = program.machine.files.look(path, facts);
  if (code != system_code::kSuccess && !meansMissing(code)) {
    throw failureFromSystemCode(code, path);
  }
  return code == system_code::kSuccess && !facts.folder;
}

/// One of the files that getVersione reads; the other is read whatever became of it.
template <class Body>
void readingVersion(Program& program, Body&& body) {
  loggedTrap(program.log, program.errors, "modutils", "getVersione",
             "Errore in reperimento versione", false, [&]() -> bool {
               std::forward<Body>(body)();
               return true;
             });
}

void readVersion(Program& program) {
  const std::string path = onMedium(program, kVersionFile);
  if (modLibrary::FileExists(program, path)) {
    const std::vector<std::string> lines = readMediumFile(program, path);
    requireLines(lines, 1, path);
    program.state.session.mediaVersion = lines.front();
  }
}

void readSetup(Program& program) {
  const std::string path = onMedium(program, kSetupFile);
  if (!modLibrary::FileExists(program, path)) {
    return;
  }
  const std::vector<std::string> lines = readMediumFile(program, path);
  requireLines(lines, 1, path);
  SessionState& session = program.state.session;
  mediumFiles::SetupFile setup = mediumFiles::readSetup(lines);
  session.formHeader = replaceAll(setup.headerTemplate, "%V%", session.mediaVersion);
  // The second line means nothing, but a file without it has lost its line ends.
  requireLines(lines, 2, path);
  session.showIntegrationPath = setup.showIntegrationPath;
  session.menu = std::move(setup.menu);
}

// --- The session

/// The forms of one session; they keep what they are told between two times they are shown.
struct Forms {
  explicit Forms(Program& program)
      : help(program),
        selection(program, help),
        standalone(program, help),
        integrated(program, help) {}

  Help help;
  frmSelectInstall selection;
  frmProdTrelvStandalone standalone;
  frmProdTrelvIntegrated integrated;
};

/// What follows when the product forms have closed.
enum class Next { SelectAgain, End };

bool isStandard(const SessionState& session) {
  return session.installationType == frmSelectInstall::kStandard;
}

void select(Program& program, Forms& forms) {
  SessionState& session = program.state.session;
  forms.selection.showModal();
  if (!session.confirmed) {
    session.userAction = UserAction::Exit;
  }
  forms.standalone.setBackDisable(false);
  forms.standalone.setCurrentTab(0);
}

SessionForm& chooseProducts(Program& program, Forms& forms) {
  if (isStandard(program.state.session)) {
    forms.standalone.showModal();
    return forms.standalone;
  }
  forms.integrated.setBackDisable(false);
  forms.integrated.showModal();
  return forms.integrated;
}

void install(Program& program, SessionForm& form) {
  const SessionForm::Installing shown(form);
  InstallPacks(program);
}

/// The product form, again and again as long as products are installed on their own.
Next workWithProducts(Program& program, Forms& forms) {
  SessionState& session = program.state.session;
  while (session.userAction == UserAction::None) {
    SessionForm& form = chooseProducts(program, forms);
    if (session.userAction != UserAction::Execute) {
      return session.userAction == UserAction::Back ? Next::SelectAgain : Next::End;
    }
    install(program, form);
    if (!isStandard(session)) {
      return Next::End;
    }
    session.userAction = UserAction::None;
    forms.standalone.setBackDisable(true);
  }
  return Next::End;
}

void workWithForms(Program& program) {
  Forms forms(program);
  Next next = Next::SelectAgain;
  while (next == Next::SelectAgain) {
    select(program, forms);
    next = workWithProducts(program, forms);
  }
}

void readMedium(Program& program) {
  SessionState& session = program.state.session;
  session.integrationFound = modMain::VerifyConfig(program, session.integrationFolder);
  // A record without folder says no more than none: the user is asked.
  session.hostInstallations = {{"Installazione Integrata", session.integrationFolder}};
  getVersione(program);
  PrepareProducts(program);
  PrepareVoiceMenu(program);
}

}  // namespace

// The end of the process is the return to Main, which does nothing any more.
void StartInstall(Program& program) {
  program.state.session = {};
  program.state.session.mediaRoot =
      modLibrary::ParentPath(program.machine.system.executablePath()) + "\\..\\..\\";
  if (!TestFileSetup(program)) {
    program.machine.desktop.messageBox(
        TRELV_PRODUCT_NAME,
        std::string("Il supporto DVD che si sta utilizzando non contiene alcuni file di sistema "
                    "necessari per il proseguimento delle operazioni") +
            kCrLf + kCrLf + "Premere Ok per interrompere l'esecuzione",
        machine::BoxIcon::Critical, machine::BoxButtons::Ok);
    return;
  }
  readMedium(program);
  workWithForms(program);
}

bool TestFileSetup(Program& program) {
  return loggedTrap(program.log, program.errors, "ModMain", "TestFileSetup",
                    "Errore in teset configurazione", false, [&]() -> bool {
                      return isThere(program, onMedium(program, kSetupFile)) &&
                             isThere(program, onMedium(program, kVersionFile));
                    });
}

void getVersione(Program& program) {
  program.log.WriteLog("Gestione ProdTrelv - Lettura versione CD");
  program.state.session.mediaVersion.clear();
  readingVersion(program, [&]() -> void { readVersion(program); });
  program.log.WriteLog(
      "Gestione ProdTrelv - Lettura info intestazione form e visualizzazione path CD");
  readingVersion(program, [&]() -> void { readSetup(program); });
}

void PrepareProducts(Program& program) {
  loggedTrap(
      program.log, program.errors, kModule, "PrepareProducts", "Errore in Preparazione prodotti",
      false, [&]() -> bool {
        program.log.WriteLog("Gestione ProdTrelv - Lettura Prodotti da esaminare");
        std::vector<ListedProduct>& products = program.state.session.products;
        products.assign(1, {});
        const std::string path = onMedium(program, kProductsFile);
        if (modLibrary::FileExists(program, path)) {
          for (ListedProduct& product : mediumFiles::readProducts(readMediumFile(program, path))) {
            products.push_back(std::move(product));
          }
        }
        if (products.size() > 1) {
          program.log.WriteLog(
              "Gestione ProdTrelv - Verifica presenza su sistema dei prodotti letti");
          GetConfiguratedProducts(program);
        } else {
          program.log.WriteLog("Gestione ProdTrelv - Nessun prodotto da leggere");
        }
        return true;
      });
}

void GetConfiguratedProducts(Program& program) {
  std::vector<ListedProduct>& products = program.state.session.products;
  const ProductInformation& found = program.state.inventory.product;
  for (std::size_t i = 1; i < products.size(); ++i) {
    const Product code = modProdTrelvLibrary::ConvertProductToNumber(products[i].identifier);
    modProdTrelvInfo::CheckProduct(program, code);
    // A product without a check leaves the record as the check of another one filled it.
    if (code != Product::Undefined && found.productCode == code) {
      products[i].presence = static_cast<std::int32_t>(found.kind);
    }
  }
}

void PrepareVoiceMenu(Program& program) {
  SessionState& session = program.state.session;
  session.offeredProducts.clear();
  for (const MenuPage& page : session.menu) {
    for (const OfferedProduct& entry : page.entries) {
      if (!equalNoCase(entry.identifier, "Exit")) {
        session.offeredProducts.push_back(entry);
      }
    }
  }
}

}  // namespace trelv::modProdTrelvInteractive
