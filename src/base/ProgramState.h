#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Codes.h"
#include "base/InstallationPaths.h"
#include "base/SiteNames.h"
#include "base/VersionRecord.h"

namespace trelv {

/// What start-up finds out once and every procedure reads.
struct StartupFacts {
  /// Server and integration path as the command line names them, the programs path as the store had
  /// it at the start. The server path of a single installation is the recorded one.
  InstallationPaths paths;
  /// The programs path once more, asked for when somebody first needs the client's record or lock:
  /// this question reports a store that does not know it, that of the start does not.
  std::optional<std::string> reportedProgramsPath;
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
  std::int32_t programNumber = 0;
  /// All that follows the program code on the command line, a blank before each argument.
  std::string extraArguments;
  /// Product identifier and pack file name of a single installation.
  std::string productToInstall;
  std::string packFileName;
  PluginProduct pluginProduct = PluginProduct::Unasked;
};

/// What the run log and the error reporter remember for the whole process.
struct RunLogState {
  /// Temporary folder + "log", no trailing backslash; empty until someone needs it.
  std::string logFolder;
  /// Full path. The first line chooses it, where nobody named one before.
  std::string logFile;
  /// What the newest line says, behind its date.
  std::string lastLine;
  /// The user has seen that the temporary folder cannot be used.
  bool temporaryFolderReported = false;
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

/// A product that a medium offers, or that was selected. A single installation, which has no
/// medium, fills the identifier only.
struct OfferedProduct {
  /// Compared without regard to case with the identifiers of the catalogue.
  std::string identifier;
  /// What lists show.
  std::string caption = {};
  /// Folder of its packs relative to the medium's root, as the medium writes it.
  std::string packFolder = {};
  /// Run after its packs were opened, in order; placeholders not resolved.
  std::vector<std::string> commands = {};
  /// Chosen zip packs, full paths, in the place of all that lie in its folder; empty: all.
  std::vector<std::string> chosenPacks = {};
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
  /// What this process has written into the work folder's mark, in the system's code page; empty
  /// while the folder is not its own.
  std::string workFolderOwner;
  /// Searches for packs under way: a click while a line is logged may begin one within another.
  int searches = 0;
  /// The work folder could not be had. That was told; no later search of this process waits for it.
  bool workFolderRefused = false;
  /// The work folder is a folder of the host under another name. That was told.
  bool otherNameTold = false;
  /// Full paths of the packs that could not be opened; whoever wants to know empties it before.
  std::vector<std::string> unopened;
  /// Full paths of the locks of other sessions that could not be removed: each is told once.
  std::set<std::string> locksLeftAlone;
};

/// A product that a medium wants to be looked for on the machine.
struct ListedProduct {
  std::string identifier;
  std::string description;
  /// What the presence check found: 0 not looked for, else a value of Operation: Setup (the product
  /// is not there yet) or Update (it is).
  std::int32_t presence = 0;
};

/// Lists of a medium's menu, each a page of the standalone form.
constexpr std::size_t kMenuPages = 4;

/// One list of a medium's menu.
struct MenuPage {
  /// Empty where the medium names none.
  std::string caption;
  std::vector<OfferedProduct> entries;
};

/// A host installation that the selection form offers.
struct HostInstallation {
  std::string name;
  /// Its server path; empty when it is not known.
  std::string path;
};

/// What the user did to close a form of the session. The values are passed on as they stand.
enum class UserAction : std::int32_t { None = 0, Back = 1, Exit = 2, Execute = 3 };

/// A version that was picked in the version form: one field each of its catalogue entry.
struct ChosenVersion {
  /// Full path of the zip pack.
  std::string pack;
  std::string fileName;
};

/// The interactive session from a medium. Forms read and write it; the session looks at it when
/// they have closed.
struct SessionState {
  /// Folder of the program with "\..\..\" behind it.
  std::string mediaRoot;
  /// Empty when the medium does not tell it.
  std::string mediaVersion;
  std::string formHeader;
  /// The selection form shows the server path of an integrated installation.
  bool showIntegrationPath = false;
  std::array<MenuPage, kMenuPages> menu;
  /// Entry 0 stays empty, products begin at 1.
  std::vector<ListedProduct> products;
  /// This machine is integrated, with this server path; it may be recorded empty.
  bool integrationFound = false;
  std::string integrationFolder;
  std::vector<HostInstallation> hostInstallations;
  /// What the integrated form lists.
  std::vector<OfferedProduct> offeredProducts;
  /// Name of the chosen installation; empty until one is chosen.
  std::string installationType;
  /// Server path of an integrated installation; empty until it is given.
  std::string serverPath;
  /// The choice of the selection form was confirmed.
  bool confirmed = false;
  /// Products on their own do not keep anyone from an integrated installation.
  bool suppressStandaloneCheck = false;
  UserAction userAction = UserAction::None;
  /// Result of the version form.
  std::vector<ChosenVersion> chosenVersions;
};

/// All program-wide state of one process, passed explicitly.
struct ProgramState {
  StartupFacts startup;
  RunLogState runLog;
  PlatformProbes platform;
  InventoryState inventory;
  PackState packs;
  /// The products that the direct set-up runs.
  std::vector<OfferedProduct> selectedProducts;
  SessionState session;
  /// Nothing until somebody asks for one of them.
  std::optional<SiteNames> siteNames;
};

}  // namespace trelv
