#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Codes.h"
#include "base/VersionRecord.h"

namespace trelv {

/// What start-up finds out once and every procedure reads.
struct StartupFacts {
  /// Where the suite's programs lie, as its store tells; empty when the store has no answer.
  std::string programsPath;
  /// Client folder of the workstation, once someone asked for it; empty when it cannot be had.
  std::optional<std::string> clientFolder;
  bool workstation = false;
  bool win9x = false;
  bool administrator = false;
  bool terminalServer = false;
  /// The command line as it was passed, after the program's own path and leading blanks.
  std::string rawCommandLine;
  std::uint8_t argumentCount = 0;
  /// Quotes removed; argument 1 is element 0.
  std::vector<std::string> arguments;
  RunMode runMode = RunMode::None;
  /// The server path: the host's root as the command line names it, without trailing backslash.
  std::string hostFolder;
  std::string integrationPath;
  std::int32_t programNumber = 0;
  /// All that follows the program code on the command line, a blank before each argument.
  std::string extraArguments;
  /// Product identifier and pack file name of a single installation.
  std::string productToInstall;
  std::string packFileName;
  PluginProduct pluginProduct = PluginProduct::Unasked;
  /// Host integration folder of a single installation.
  std::string hostIntegrationFolder;
};

/// What the run log and the error reporter remember for the whole process.
struct RunLogState {
  /// Temporary folder + "log", no trailing backslash; empty until someone needs it.
  std::string logFolder;
  /// Full path. The first line chooses it, where nobody named one before.
  std::string logFile;
  /// What the newest line says, behind its date.
  std::string lastLine;
  /// For maintenance: each line comes up in a box too. No code of ours ever sets it.
  bool debugSwitch = false;
  /// Answer of ErrorReporter::VisualizzaErrore.
  std::int16_t reporterChoice = 0;
};

/// Record and answer that one edition probe keeps.
struct EditionProbe {
  VersionRecord record;
  /// Success of the version query, kept for the extended form.
  bool querySucceeded = false;
  bool answer = false;
};

/// One record per probe of the Windows edition, and the terminal-suite answers.
struct PlatformProbes {
  EditionProbe win95;
  EditionProbe win98;
  EditionProbe winMe;
  EditionProbe win2000Server;
  EditionProbe win2000Professional;
  EditionProbe winXP;
  EditionProbe win2003Server;
  EditionProbe winVista;
  EditionProbe winSeven;
  EditionProbe winVistaServer;
  EditionProbe win2008Server;
  bool win2000TerminalServer = false;
  bool win2003TerminalServer = false;
  bool win2003SingleUser = false;
  bool win2008TerminalServer = false;
  bool win2008SingleUser = false;
};

/// What the last presence check found out about one product; each check overwrites it whole.
struct ProductInformation {
  /// Undefined before the first check.
  Product productCode = Product::Undefined;
  std::string productName;
  /// Versions found, empty when none.
  std::string serverVersion;
  std::string clientVersion;
  /// Setup: the product is not there yet. Update: it is.
  Operation kind{};
  Side side = Side::None;
  /// The product's folders, empty when not found.
  std::string serverFolder;
  std::string clientFolder;
};

/// A product that is to be set up directly.
struct SelectedProduct {
  /// Compared without regard to case with the identifiers of the catalogue.
  std::string identifier;
};

/// What the inventory remembers for the whole process.
struct InventoryState {
  ProductInformation product;
  /// Full path of the product report; empty until one was begun.
  std::string reportFile;
  /// Folder in which Nerio's component is registered, empty when in none; nothing until somebody
  /// searched for it, and again after a program ran that may have registered components.
  std::optional<std::string> componentFolder;
};

/// A zip pack that is still there and that this process does not open again: opening it failed, or
/// it was opened and could not be removed. A file of other size or time is another pack.
struct SettledPack {
  /// Full paths of the pack and of the folder it was opened into, upper case.
  std::string path;
  std::string target;
  std::uint64_t size = 0;
  /// As machine::FileFacts tells it.
  std::uint64_t modified = 0;

  bool operator==(const SettledPack&) const = default;
};

/// What the opening of packs remembers for the whole process: a start looks for packs once for each
/// product and side.
struct PackState {
  std::vector<SettledPack> settled;
};

/// All program-wide state of one process, passed explicitly.
struct ProgramState {
  StartupFacts startup;
  RunLogState runLog;
  PlatformProbes platform;
  InventoryState inventory;
  PackState packs;
  /// The products that the direct set-up runs.
  std::vector<SelectedProduct> selectedProducts;
};

}  // namespace trelv
