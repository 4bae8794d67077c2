#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "prove/Invariants.h"
#include "sweep/Sweep.h"

namespace trelv::tests {

/// What is done in a world.
enum class Work {
  /// The host starts a program of a product.
  IntegratedRun,
  /// The same, and the same user starts it a second time while the first start works.
  TwoStarts,
  /// One product from a pack, and the same user begins that, or a program, while it is installed.
  TwoInstalls,
  /// The maintenance form in the hands of a scripted user.
  Maintenance,
  /// The session from a medium in the hands of a scripted user.
  Session,
  /// One product from a pack.
  SingleInstall,
  /// A command line that is refused.
  Refusal
};

constexpr std::array kEveryWork{Work::IntegratedRun, Work::TwoStarts, Work::TwoInstalls,
                                Work::Maintenance,   Work::Session,   Work::SingleInstall,
                                Work::Refusal};

const char* nameOf(Work work);

/// A world before anything is done in it.
struct Beginning {
  Picture picture;
  Versions server;
  Versions client;
};

/// What an undisturbed run of a world does: what disturbed ones are measured by.
struct Undisturbed {
  /// The calls of the run.
  std::vector<sim::SimCall> calls;
  Beginning before;
  Picture after;
  /// What the world is when further starts change nothing any more.
  Picture healed;
  /// There is such a world.
  bool rests = false;
  /// What files have at any moment of it and of the further starts.
  WholeFiles whole;
  std::vector<std::string> told;
  /// Command lines of all programs that it started.
  std::vector<std::string> started;
  /// Calls of a time in which a pack is removed and not yet copied, or one record is being
  /// corrected for Dovra: what is broken off there is not taken up again.
  struct Window {
    std::size_t first;
    std::size_t last;
    /// From here on a power failure cannot lose the last of it any more.
    std::size_t durable;
  };
  std::vector<Window> windows;
  /// The command line of the program that was asked for, where it was started and was there before.
  std::string asked;
  /// Tells what each start tells, for a person.
  bool shown = false;
};

/// A workstation and its server made up from a number, and the work that is done there. The same
/// number gives the same world. Three of four worlds know their folders by odd names: by the share,
/// over a link, as a literal path, by a short name, in another case, with a blank or an accent,
/// long.
class World : public SweptWorld {
 public:
  /// `undisturbed` may be null where the run is the undisturbed one; it outlives the world.
  static std::unique_ptr<World> make(Work work, unsigned seed, const Undisturbed* undisturbed);

  /// What the run of a world did. To be asked for once, behind run().
  virtual Undisturbed takeUndisturbed() = 0;
  /// The folder names and arguments that it has, for a person.
  virtual std::string description() const = 0;
};

/// The undisturbed run of a world.
Undisturbed undisturbedRun(Work work, unsigned seed);

}  // namespace trelv::tests
