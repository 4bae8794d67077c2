#include "contract/win32/Gallery.h"

#include <map>
#include <vector>

#include "base/Text.h"
#include "contract/win32/TestForm.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using Texts = std::vector<std::string>;

/// By the form in capitals, as the resource compiler keeps its name.
const std::map<std::string, Texts> kProducts{
    {"FRMPRODTRELVSINGLEPACK",
     {"bilancio-09.92.00.00.zip", "bilancio-09.93.00.00.zip", "bilancio-09.94.00.00.zip"}},
    {"FRMPRODTRELVSTANDALONE", {"Nerio", "Bilancio", "Tarsena2"}},
    {"FRMPRODTRELVINTEGRATED",
     {"Nerio", "Bilancio", "Tarsena2", "Luda", "Zeltomodelli",
      "Aggiornamento delle tabelle e dei modelli di dichiarazione per il periodo d'imposta in "
      "corso"}}};

const std::map<std::string, std::string> kTexts{
    {"lblHeading", "Bilancio. Selezionare le versioni da installare"},
    {"txtProgress",
     "Gestione ProdTrelv - Lettura file zip della cartella: "
     "\"D:\\prodotti\\packs\\bilancio\""},
    {"lblProgress", "030%"},
    {"lblinfo_0", "TrelvManager.exe"},
    {"lblinfo_1", "21/11/2026"},
    {"lblinfo_2", "1.0.0.0"},
    {"lblPrompt", "Indicare il path di localizzazione del server"},
    {"txtInput", "\\\\SRVLUMO\\Dati\\Lumo"},
    {"lblServerPath", "\\\\SRVLUMO\\Dati\\Lumo"},
    {"lblClientVersion", "versione registrata: 09.93.00.00"},
    {"lblServerVersion", "nessuna versione registrata"},
    {"lblRemove",
     "Esegue i comandi di rimozione Client di ZB e azzera la versione registrata su "
     "questa stazione."},
    {"lblRepair", "Nessuna versione selezionata."},
    {"lblOutcome", "Pronto."},
    {"txtErrLabel", "Si \u00E8 verificato un errore imprevisto."},
    {"txtProgetto", "TrelvManager"},
    {"txtErrDescrizione", "Impossibile trovare il file specificato: S:\\Lumo\\manca.exe"}};

const std::string kLongName =
    "Aggiornamento delle tabelle e dei modelli di dichiarazione per il periodo d'imposta in corso";

/// In the place of those above.
const std::map<std::string, std::string> kLongTexts{
    {"lblHeading", kLongName + ". Selezionare le versioni da installare"},
    {"lblServerPath", "\\\\SERVER-DELLO-STUDIO\\" + std::string(170, 'c') + "\\Lumo"},
    {"txtProgress", "Apro lo zip D:\\" + std::string(200, 'c') +
                        "\\bilancio-09.94.00.00.zip in  C:\\" + std::string(200, 'd') +
                        "\\~pacchi1.tmp"},
    {"txtErrLabel",
     "Si \u00E8 verificato un errore imprevisto. " + kLongName + ". " + kLongName + "."},
    {"txtErrDescrizione", "Impossibile trovare il file specificato: \\\\?\\UNC\\" +
                              std::string(400, 'c') + "\\manca.exe"},
    {"lblClientVersion", "versione registrata non leggibile"},
    {"lblServerVersion", "versione registrata: 09.93.00.00.00.00"},
    {"lblRemove",
     "Esegue i comandi di rimozione Server di ZELTOMODELLIREDDITI, elimina le cartelle di setup e "
     "il file di configurazione, azzera la versione registrata sul server."},
    {"lblRepair",
     "Riesegue i comandi ClientServer della sezione Update100 di ZELTOMODELLIREDDITI. Le versioni "
     "registrate non cambiano."},
    {"lblOutcome",
     "Ripristino di ZELTOMODELLIREDDITI - 09.94.00.00 - Client: nessun comando eseguito."}};

void add(machine::FormWindow& window, const std::string& control, const Texts& items) {
  for (const std::string& item : items) {
    window.addItem(control, item);
  }
}

void fillLists(machine::FormWindow& window, const std::string& form) {
  add(window, "ListAmb",
      {"Installazione Standard", "Installazione Integrata ( \\\\SRVLUMO\\Dati\\Lumo )"});
  window.select("ListAmb", 1);
  add(window, "labTab", {"Contabilit\u00E0", "Modelli", "Strumenti & guide", "Pagina 4"});
  window.setItemEnabled("labTab", 3, false);
  if (const auto products = kProducts.find(upperCase(form)); products != kProducts.end()) {
    add(window, "ListProd", products->second);
  }
  add(window, "cmbProduct", {"NERIO - Nerio", "ZB - Bilancio"});
  window.select("cmbProduct", 1);
  add(window, "lstVersion", {"09.94.00.00   (Setup01)"});
  window.setChecked("optClient", true);
  window.setChecked("optSetup", true);
  window.setItemSelected("ListProd", 0, true);
  window.setItemSelected("ListProd", 1, true);
}

BOOL CALLBACK noteDialog(HMODULE, LPCWSTR, LPWSTR name, LONG_PTR names) {
  if (!IS_INTRESOURCE(name)) {
    reinterpret_cast<Texts*>(names)->push_back(utf8(name));
  }
  return TRUE;
}

}  // namespace

Texts dialogs() {
  Texts names;
  EnumResourceNamesW(nullptr, RT_DIALOG, noteDialog, reinterpret_cast<LONG_PTR>(&names));
  return names;
}

void fillGallery(machine::FormWindow& window, const std::string& form, const std::string& picture,
                 Contents contents) {
  fillLists(window, form);
  for (const auto& [control, text] : kTexts) {
    window.setText(control, text);
  }
  if (contents == Contents::Long) {
    for (const auto& [control, text] : kLongTexts) {
      window.setText(control, text);
    }
    window.addItem("ListAmb", "Installazione Integrata ( " + kLongTexts.at("lblServerPath") + " )");
    window.addItem("ListProd", kLongName);
  }
  window.setProgress("prgProgress", {1, 10, 3});
  for (const char* const place : {"picSetup", "picProduct"}) {
    window.setPicture(place, picture);
  }
  for (const char* const list : {"ListAmb", "ListProd"}) {
    window.setFocus(list);
  }
}

bool showGallery(const std::string& form, const std::string& picture, Contents contents) {
  Win32Desktop desktop;
  TestForm shown(form);
  shown.onLoaded = [&](machine::FormWindow& window) {
    fillGallery(window, form, picture, contents);
  };
  return desktop.showModal(shown);
}

}  // namespace trelv::win32
