#include "startup/modProdTrelvLibrary.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <variant>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "platform/modRegistry.h"

namespace trelv::modProdTrelvLibrary {
namespace {

struct Code {
  const char* text;
  std::int16_t number;
};

constexpr std::array<Code, 4> kSides{{
    {"None", 0},
    {"Client", 1},
    {"Server", 2},
    {"ClientServer", 3},
}};

constexpr std::array<Code, 4> kOperations{{
    {"Setup", 1},
    {"Update", 2},
    {"Remove", 3},
    {"Exec", 4},
}};

constexpr std::array<Code, 13> kPrograms{{
    {"UNDEFINED", 0},
    {"VIRADO", 11},
    {"NERIO", 12},
    {"LUDA", 21},
    {"MVBIL", 31},
    {"MVCON", 32},
    {"MVICAD", 33},
    {"MVPERS", 34},
    {"Q2", 41},
    {"ZM", 51},
    {"KXK", 61},
    {"RR", 71},
    {"VELTRA", 81},
}};

constexpr std::array<Code, 9> kProducts{{
    {"UNDEFINED", 0},
    {"NERIO", 10},
    {"LUDA", 20},
    {"ZB", 30},
    {"Q2", 40},
    {"ZM", 50},
    {"KXK", 60},
    {"RR", 70},
    {"VELTRA", 80},
}};

constexpr std::int32_t kUnknownNumber = -1;
constexpr std::int32_t kUnknownText = -99;
constexpr const char* kNotKnown = " non riconosciuto";

// The text of an unknown number stands in the failure's source and its description is empty: what
// is shown and logged of it is empty brackets. Callers count on the number alone.
template <std::size_t N>
std::string textOf(const std::array<Code, N>& codes, std::int16_t number, const char* subject) {
  const auto found = std::find_if(codes.begin(), codes.end(),
                                  [number](const Code& code) { return code.number == number; });
  if (found == codes.end()) {
    throw RuntimeError(kUnknownNumber, subject + signedText(number) + kNotKnown, "");
  }
  return found->text;
}

template <std::size_t N>
std::int16_t numberOf(const std::array<Code, N>& codes, const std::string& text,
                      const char* procedure, const char* subject) {
  const auto found = std::find_if(codes.begin(), codes.end(),
                                  [&text](const Code& code) { return code.text == text; });
  if (found == codes.end()) {
    throw RuntimeError(kUnknownText, procedure, subject + ("\"" + text + "\"") + kNotKnown);
  }
  return found->number;
}

// Where no section has the identifier, the search has run out at index 101 and the caller reads
// section "prod101", which gives empty text unless somebody wrote such a section. Kept: a product
// that is not in the catalogue is told by its empty value, not by a case of its own.
int catalogueIndex(Program& program, const std::string& iniPath, const std::string& productId) {
  int index = 1;
  while (index <= kMostCatalogueEntries &&
         modLibrary::ReadSetting(program, {iniPath, CatalogueSection(index), "id"}) != productId) {
    ++index;
  }
  return index;
}

std::string catalogueValue(Program& program, const std::string& iniPath,
                           const std::string& productId, const char* key) {
  const int index = catalogueIndex(program, iniPath, productId);
  return modLibrary::ReadSetting(program, {iniPath, CatalogueSection(index), key});
}

/// A placeholder that stands for a machine-wide registry value.
struct RegistryPlaceholder {
  const char* placeholder;
  const char* keyPath;
  const char* valueName;
};

constexpr std::array<RegistryPlaceholder, 5> kRegistryPlaceholders{{
    {"%RRAPPDIR%", "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath"},
    {"%BNAPPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Brundel", "Path"},
    {"%OLV2007APPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar2007",
     "InstallLocation"},
    {"%OLV2008APPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar2008",
     "InstallLocation"},
    {"%KXKAPPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Kexora.exe", "Path"},
}};

std::string machineValue(Program& program, const RegistryPlaceholder& wanted) {
  modRegistry::Variant value;
  if (!modRegistry::QueryValue(program, machine::Hive::LocalMachine, wanted.keyPath,
                               wanted.valueName, value)) {
    return "";
  }
  const std::string* const text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : std::to_string(std::get<std::int32_t>(value));
}

/// Replaces a placeholder by what `value` gives, which is asked only when the placeholder is there:
/// most commands have none, and a registry read is dear.
template <class Value>
void replaceWhenPresent(std::string& text, const char* placeholder, Value&& value) {
  if (text.find(placeholder) != std::string::npos) {
    text = replaceAll(std::move(text), placeholder, std::forward<Value>(value)());
  }
}

constexpr const char* kBar = "prgProgress";
constexpr const char* kLine = "txtProgress";
constexpr const char* kPercentage = "lblProgress";

/// A bar with this maximum has not been used yet.
constexpr int kFreshMaximum = 1;
constexpr int kMostPercent = 99;

/// How far the bar is, "050%" at its middle, rounded with a half away from zero. One step before
/// its end a long bar would round to 100 %; it never shows that.
std::string percentageText(const machine::ProgressNumbers& numbers) {
  const std::int64_t max = numbers.max;
  const std::int64_t rounded = (std::int64_t{200} * numbers.value + max) / (2 * max);
  return "0" + twoDigits(static_cast<int>(std::min<std::int64_t>(rounded, kMostPercent))) + "%";
}

/// Makes a fresh bar ready. Value 0 lies below the bar's own minimum of 1 and is kept as a number:
/// the first line then shows 1 of 3.
bool startBar(machine::FormWindow& form, machine::ProgressNumbers& numbers) {
  numbers = {.min = 1, .max = 2, .value = 0};
  if (!form.setProgress(kBar, numbers) || !form.hasControl(kLine)) {
    return false;
  }
  form.setText(kLine, "");
  return true;
}

/// Raises the bar's end before its value, so that it never reaches its end.
bool advanceBar(machine::FormWindow& form, machine::ProgressNumbers& numbers) {
  ++numbers.max;
  ++numbers.value;
  return numbers.max > 0 && numbers.value >= 0 && form.setProgress(kBar, numbers);
}

bool showOnForm(machine::FormWindow& form, const std::string& text) {
  machine::ProgressNumbers numbers;
  if (!form.progress(kBar, numbers) || (numbers.max == kFreshMaximum && !startBar(form, numbers)) ||
      !advanceBar(form, numbers) || !form.hasControl(kLine)) {
    return false;
  }
  form.setText(kLine, text);
  if (!form.hasControl(kPercentage)) {
    return false;
  }
  form.setText(kPercentage, percentageText(numbers));
  return true;
}

}  // namespace

std::string ConvertClientServerToString(Side value) {
  return textOf(kSides, static_cast<std::int16_t>(value), "ClientServer mode ");
}

std::string ConvertSetupUpdateToString(Operation value) {
  return textOf(kOperations, static_cast<std::int16_t>(value), "SetupUpdate mode ");
}

std::int16_t ConvertProgramToNumber(const std::string& code) {
  return numberOf(kPrograms, code, "ConvertProgramToNumber", "Programma ");
}

Product ConvertProductToNumber(const std::string& code) {
  return Product{numberOf(kProducts, code, "ConvertProductToNumber", "Prodotto ")};
}

std::string ConvertNumberToProgram(std::int16_t number) {
  return textOf(kPrograms, number, "Programma ");
}

std::string ConvertNumberToProduct(Product number) {
  return textOf(kProducts, static_cast<std::int16_t>(number), "Prodotto ");
}

Product ProgramToProduct(std::int32_t programNumber) {
  constexpr std::int32_t kTen = 10;
  constexpr std::int32_t kHalf = 5;
  const std::int32_t units = programNumber % kTen;
  const std::int32_t away = programNumber < 0 ? -1 : 1;
  std::int32_t tens = programNumber / kTen;
  const std::int32_t distance = units * away;
  if (distance > kHalf || (distance == kHalf && tens % 2 != 0)) {
    tens += away;
  }
  const std::int64_t product = std::int64_t{tens} * kTen;
  if (product < std::numeric_limits<std::int16_t>::min() ||
      product > std::numeric_limits<std::int16_t>::max()) {
    throw RuntimeError(runtime_number::kOverflow, "ProgramToProduct", "Numero troppo grande");
  }
  return Product{static_cast<std::int16_t>(product)};
}

std::string CatalogueSection(int index) { return "prod" + twoDigits(index); }

std::string GetCatalogueProductConf(Program& program, const std::string& iniPath,
                                    const std::string& productId) {
  return catalogueValue(program, iniPath, productId, "conf");
}

std::string GetCatalogueProductName(Program& program, const std::string& iniPath,
                                    const std::string& productId) {
  return catalogueValue(program, iniPath, productId, "name");
}

// The order counts: each step sees what the steps before it inserted. Slashes of the command
// itself, those of its switches included, become backslashes first; slashes of inserted values
// stay.
std::string ReplacePlaceholders(Program& program, std::string& text,
                                const InstallationPaths& paths) {
  text = replaceAll(std::move(text), "/", "\\");
  text = replaceAll(std::move(text), "%PATHSETUP%", paths.server);
  text = replaceAll(std::move(text), "%PATHWORK%", paths.integration);
  text = replaceAll(std::move(text), "%PATHCLIENT%", paths.programs);
  replaceWhenPresent(text, "%PROGRAMFILES%",
                     [&] { return modLibrary::ProgramFilesFolder(program); });
  text = replaceAll(std::move(text), "%INSTALLTYPE%", "rete");
  for (const RegistryPlaceholder& wanted : kRegistryPlaceholders) {
    replaceWhenPresent(text, wanted.placeholder, [&] { return machineValue(program, wanted); });
  }
  // Kept: last of all, so that "%%" is lost from the paths above too. Hosts lie in no such folder.
  text = replaceAll(std::move(text), "%%", "");
  return text;
}

void ShowProgress(machine::Desktop& desktop, const std::string& text) {
  resumeNext(
      [&] {
        machine::FormWindow* const form = desktop.activeForm();
        if (form != nullptr && showOnForm(*form, text)) {
          desktop.processEvents();
        }
      },
      [](const RuntimeError&) {});
}

bool AllocateFSObjects(ErrorReporter& errors, const std::function<void()>& make) {
  return trap(
      [&]() -> bool {
        make();
        return true;
      },
      [&](const RuntimeError&) -> bool {
        errors.VisualizzaErrore(
            "modUtility", "AllocateFSObjects",
            "Impossibile allocare l'oggetto FileSystemObject.\r\nVerificare la presenza del "
            "componente \"scrrun.dll\" nel percorso system32 di windows",
            ReportKind::ProgramError, RuntimeError());
        return false;
      });
}

}  // namespace trelv::modProdTrelvLibrary
