#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/FileUse.h"
#include "machine/Machine.h"

/// One suite over the interfaces of machine/, played on the simulated machine and on Windows.
namespace trelv::contract {

/// What one side cannot play. Everything not named here both sides play.
enum class Ability {
  /// A read-only file refuses writing (not so for a Unix superuser's files).
  ReadOnlyRefusesWriting,
  /// Links to folders can be made.
  FolderLinks,
  /// The folder's file system and the process allow a file to be held against others.
  HoldFiles,
  /// There is a folder on another volume.
  OtherVolume,
  /// A copy has the hidden and system attributes of its source, as Windows gives them (not so under
  /// Wine 10).
  CopiesStayHidden,
};

/// Which accesses of others a held file lets pass.
struct Sharing {
  bool read = false;
  bool write = false;
  bool remove = false;
};

/// A file that is held open as another program would; let go when destroyed.
class HeldFile {
 public:
  virtual ~HeldFile() = default;
};

/// A program that runs, until it is destroyed.
class RunningProgram {
 public:
  virtual ~RunningProgram() = default;
};

/// The form that the suite shows, and the controls that makeControls() gives it.
namespace stage {
constexpr const char* kForm = "frmwait";
// The names are those of another form; what control bears which name makes no difference.
constexpr const char* kButton = "btnOk";
constexpr const char* kOtherButton = "cmdDettagli";
constexpr const char* kList = "txtErrLabel";
constexpr const char* kCombo = "txtProgetto";
/// Two options of a group.
constexpr const char* kFirstOption = "txtModulo";
constexpr const char* kSecondOption = "txtProcedura";
constexpr const char* kCheckBox = "txtErrSource";
/// Has twice the width of its height.
constexpr const char* kPicture = "picError";
/// A list of several choices, and a tab control.
constexpr const char* kMultiList = "txtErrCodice";
constexpr const char* kTabs = "txtErrDescrizione";
constexpr const char* kMissing = "txtErrTrace";
}  // namespace stage

/// One side of the suite: a machine and the means to arrange and inspect its world without the
/// interfaces under test. Made anew for each test. A means that fails throws std::runtime_error.
/// Paths are UTF-8, full, with backslashes, without trailing one.
class ContractMachine {
 public:
  virtual ~ContractMachine() = default;

  virtual machine::Machine& machine() = 0;
  virtual machine::FileUse& fileUse() = 0;
  virtual bool can(Ability ability) const = 0;

  /// An empty folder of this test alone; the same one for the whole test, removed with its
  /// contents at the end. No blanks in its path.
  virtual std::string folder() = 0;

  /// Makes or replaces a file with these bytes (its folder exists).
  virtual void putFile(const std::string& path, std::string_view bytes) = 0;
  /// The bytes of a file.
  virtual std::string fileBytes(const std::string& path) = 0;
  virtual bool exists(const std::string& path) = 0;
  /// Makes one folder; its parent exists.
  virtual void putFolder(const std::string& path) = 0;
  /// Puts a link to an existing folder at `link` (Ability::FolderLinks).
  virtual void putFolderLink(const std::string& link, const std::string& target) = 0;
  /// Last-modified time in whole seconds from any fixed start; to compare only. And setting it to
  /// some day in the past.
  virtual std::int64_t modifiedSeconds(const std::string& path) = 0;
  virtual void makeOld(const std::string& path) = 0;
  /// Makes a file hidden and one of the system's.
  virtual void conceal(const std::string& path) = 0;
  /// Gives a file a rights list of its own, unlike that of new files, in which this user may still
  /// do everything. And its rights list, in any form; to compare only.
  virtual void putRights(const std::string& path) = 0;
  virtual std::string rights(const std::string& path) = 0;
  /// Opens a file for reading as another program would, sharing only what is said
  /// (Ability::HoldFiles).
  virtual std::unique_ptr<HeldFile> hold(const std::string& path, Sharing sharing) = 0;

  /// An empty folder of this test alone on another volume than folder() (Ability::OtherVolume).
  virtual std::string otherVolumeFolder() = 0;
  /// A network drive ("N:"), and the share ("\\\\server\\share") that it is connected to.
  virtual std::string connectedDrive() = 0;
  virtual std::string connectedShare() = 0;
  /// Lets a little more than a second pass.
  virtual void passASecond() = 0;

  /// Path of a key of this test alone below HKEY_CURRENT_USER, existing and empty; without leading
  /// or trailing backslash. Removed with its sub-keys at the end.
  virtual std::string registryKey() = 0;
  /// Stores a value as it would be on disk: `data` are the raw bytes, UTF-16LE for texts, `name`
  /// UTF-8. `path` below HKEY_CURRENT_USER, made when missing.
  virtual void storeValue(const std::string& path, const std::string& name, std::uint32_t type,
                          std::string_view data) = 0;

  /// Puts a program at `path` (any name). Its first argument is its exit code ("7"; none is 0).
  /// Where there is a second one, it writes its whole command line to that path; with a third, a
  /// line feed and the value of the environment variable of that name follow.
  virtual void putProgram(const std::string& path) = 0;
  /// Makes a folder the current one of this process, for this test.
  virtual void enterFolder(const std::string& path) = 0;
  /// Starts the program at `path` (one that putProgram put) and keeps it running.
  virtual std::unique_ptr<RunningProgram> keepRunning(const std::string& path) = 0;

  /// Puts a program file with this fixed file version at `path`; and one without version resource.
  virtual void putVersionedFile(const std::string& path, const machine::FileVersion& version) = 0;
  virtual void putUnversionedFile(const std::string& path) = 0;

  /// Gives a form of the name stage::kForm its controls; to be called while it is loaded.
  virtual void makeControls(machine::FormWindow& window) = 0;
  /// What the user does in the next modal form, once it is shown.
  virtual void playUser(std::function<void(machine::FormWindow&)> play) = 0;
  /// The user presses a button, picks an item of the list or combo or a page, picks an option or
  /// check box.
  virtual void click(machine::FormWindow& window, const std::string& control) = 0;
  virtual void choose(machine::FormWindow& window, const std::string& control, int index) = 0;
  virtual void check(machine::FormWindow& window, const std::string& control) = 0;
  /// The user clicks an item of the list of several choices; double-clicks an item of the list, or
  /// the free room below its items (-1).
  virtual void toggle(machine::FormWindow& window, const std::string& control, int index) = 0;
  virtual void doubleClick(machine::FormWindow& window, const std::string& control, int index) = 0;
  /// The user goes to a control and presses F10, which the form must deal with.
  virtual void pressF10(machine::FormWindow& window, const std::string& control) = 0;
  /// The same press of a button, as it waits among the messages for its turn.
  virtual void clickLater(machine::FormWindow& window, const std::string& control) = 0;
  /// Is the hourglass shown where the pointer is moved over this form?
  virtual bool hourglassOver(machine::FormWindow& window) = 0;

  /// What the user does in the next input box: a text and OK, or nothing for Cancel. It is empty
  /// when it opens.
  virtual void answerInput(std::optional<std::string> answer) = 0;
  /// Title and prompt of the last input box.
  virtual std::string inputTitle() = 0;
  virtual std::string inputPrompt() = 0;

  /// Installs a word processor whose documents have these bookmarks; without it none is there.
  virtual void installWord(const std::vector<std::string>& bookmarks) = 0;
  /// What all word processors that were started heard, in order, in Basic's words: "Documents.Open
  /// PATH", "Visible = True", "Activate", "Selection.GoTo -1 NAME", "Quit".
  virtual std::vector<std::string> wordHeard() = 0;
};

/// Made by the side that the suite is linked with.
std::unique_ptr<ContractMachine> makeContractMachine();

}  // namespace trelv::contract
