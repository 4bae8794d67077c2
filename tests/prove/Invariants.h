#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "sim/SimMachine.h"
#include "sweep/Sweep.h"

namespace trelv::tests {

/// What holds of every run, whatever fails in it, whoever works beside it and however it ends. All
/// proofs judge by these; each has a name that a failing run prints.
enum class Invariant {
  /// The program that was asked for and is there is started, unless its own steps were hit.
  ProgramStarts,
  /// A program that an installation brings is there in the end.
  ProgramInstalled,
  /// A recorded version is the one before or what a started command brought; it never falls.
  VersionsTrue,
  /// A file that must be whole is the old one or the new one.
  NothingHalf,
  /// No lock of a run outlives it, unless the run was killed.
  LocksGo,
  /// Who takes a lock has looked, and found none.
  LocksRespected,
  /// Nothing is deleted outside the folders that the operation names.
  NothingElseDeleted,
  /// What other workstations and other programs wrote survives.
  OthersSurvive,
  /// Where something stays undone the log, a box or a form tells it.
  FailureTold,
  /// A failure is not told twice.
  ToldOnce,
  /// Nothing is told as a failure where none was.
  ToldForAReason,
  /// Nothing of the program stays on the screen.
  ScreenIsFree,
  /// After enough starts without faults the world is that of an undisturbed run.
  Heals,
  /// A run ends, and nothing is raised to whoever started it.
  Ends
};

const char* nameOf(Invariant invariant);
/// Notes `otherwise`, with the invariant's name, where it does not hold.
void expect(Findings& findings, Invariant invariant, bool holds, const std::string& otherwise);
/// An exception and what it is for, in one line.
std::string nameOf(Invariant invariant, const Exception& exception);

/// The calls behind whose failure an invariant need not hold, and why: what the system leaves
/// undone by design. Empty for most.
using Exceptions = const CallTable<Exception>& (*)(Invariant invariant);

/// Those of the start that the sweeps know call by call.
const CallTable<Exception>& exceptionsOfTheStart(Invariant invariant);

/// May the content of this file be on its way when the power fails? Why, or null where it must be
/// whole. Paths as pictures have them; the temporary folder without trailing backslash.
const char* whyNotWhole(const std::string& path, const std::string& temporaryFolder,
                        sim::Writing writing);

// --- What is looked at

/// What a machine and the disks that it uses hold, by path in upper case: bytes of files, nothing
/// for folders, whose paths end with a backslash. A link is a file with its target. Where nothing
/// is said otherwise dates are left out.
using Picture = std::map<std::string, std::string>;

/// `volumes` are mounted: "C:", "S:". Registry and integration record stand below names that no
/// file has. What tells the moment of a run (the run log, the date in locks and the environment
/// file) is left out.
Picture pictureOf(sim::SimMachine& machine, const std::vector<std::string>& volumes);

/// What a picture has of a file with these bytes.
std::string asInPictures(const std::string& path, const std::string& bytes);

/// The first difference of two pictures in words; empty where there is none.
std::string differenceOf(const Picture& expected, const Picture& found);

/// The values of an ini file, each with its section before it, in upper case and whatever their
/// order. An empty value reads like one that is missing.
using Values = std::set<std::string>;
Values valuesOf(const std::string& bytes);

/// The contents that files have at the moments of undisturbed runs: no file that must be whole ever
/// has another one.
class WholeFiles {
 public:
  void see(const Picture& moment);
  /// Has a file such contents, or is it an ini file that was not cut off? Those that are made
  /// beside their place have all their keys, the others are written value by value.
  bool has(const std::string& path, const std::string& bytes) const;

 private:
  std::set<std::string> contents_;
};

/// What other workstations and other programs have, by path: sections KXK, VICINO and ALTRI of ini
/// files, files ALTRI.TXT, registry keys that are called ALTRI.
using Foreign = std::map<std::string, Values>;
Foreign foreignOf(const Picture& picture);
Values foreignOf(const std::string& path, const std::string& bytes);

/// Without the files that need not be whole.
Picture wholeOf(Picture picture, const std::string& temporaryFolder);

/// What files held at one moment or another, by path.
using Known = std::map<std::string, std::set<std::string>>;
void addTo(Known& known, const Picture& picture);

/// Versions of one record by product.
using Versions = std::map<std::string, std::string>;

/// Where a recorded version may have come from.
enum class Origin {
  Nowhere,
  /// A command that was started: then it is higher than the one before.
  Command,
  /// A removal, or a correction that asks for no version before.
  Anew
};
using OriginOf = std::function<Origin(const std::string& id, const std::string& version)>;

/// Judges one run that met a fault.
class Judge {
 public:
  Judge(const Fault& fault, Findings& findings, Exceptions exceptions)
      : fault_(fault), findings_(findings), exceptions_(exceptions) {}

  const Fault& fault() const { return fault_; }

  /// Notes `otherwise`, with the invariant's name, where it does not hold and no exception names
  /// the fault.
  void demand(Invariant invariant, bool holds, const std::string& otherwise);

  /// Each version found in a record is the one before, or has an origin and does not fall.
  void versionsTrue(const std::string& record, const Versions& before, const Versions& found,
                    const OriginOf& originOf);
  /// No lock is there that was not there before.
  void locksGone(const Picture& before, const Picture& after);
  /// When the power failed no file that must be whole had its content on its way. Full paths, in
  /// any case.
  void nothingOnItsWay(const std::vector<sim::OnItsWay>& onTheirWay,
                       const std::string& temporaryFolder);
  /// Each file that must be whole and is known holds what it held at some moment.
  void nothingHalf(const Known& known, const Picture& found, const std::string& temporaryFolder);
  /// What is gone was allowed to go: one of the paths (see beginsLike) or below it.
  void nothingElseDeleted(const Picture& before, const Picture& after,
                          const std::vector<std::string>& mayGo);
  /// Each file is whole, but for those that may be half (see beginsLike).
  void nothingHalf(const WholeFiles& whole, const Picture& after,
                   const std::vector<std::string>& mayBeHalf);
  /// What others had is still there.
  void othersSurvive(const Foreign& before, const Picture& after);

 private:
  const Fault& fault_;
  Findings& findings_;
  Exceptions exceptions_;
};

/// Lines that a run told and the undisturbed one did not.
std::vector<std::string> toldBesides(const std::vector<std::string>& told,
                                     const std::vector<std::string>& undisturbed);

}  // namespace trelv::tests
