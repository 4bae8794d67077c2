#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sim/SimMachine.h"

namespace trelv::sim {

/// How a file got the content that is on its way.
enum class Writing {
  /// Written or copied as a whole, or appended to.
  Anew,
  /// By the profile functions alone, value by value; they have made it.
  ByValues,
  /// The same in a file that was there.
  InPlace
};

/// A file whose content is on its way to the disk.
struct OnItsWay {
  /// Full.
  std::string path;
  Writing writing = Writing::Anew;

  friend bool operator==(const OnItsWay&, const OnItsWay&) = default;
};

/// Ends the program that runs on a machine at one of its calls, as sim::KilledMachine does, because
/// the power fails; cut() then leaves the disks as a power failure does. What the program writes,
/// by the profile functions too, is on its way to the disk until a rename, which flushes the file
/// that it renames, and nothing else does. Changes of folders (entries made, renamed, removed) are
/// on their way too and get there in their order, as a journal of the file system keeps them,
/// before the contents of files or behind: a flush has all of them before it on the disk. What
/// others write, programs that were started included, is there at once: whether they flush is
/// theirs. Not together with a FailingMachine.
class PowerLoss {
 public:
  /// `volumes` ("C:", "S:") are the machine's disks that lose what is on its way; `number` counts
  /// calls from 1, `left` is how far a writing call had come.
  PowerLoss(SimMachine& simMachine, std::vector<std::string> volumes, std::size_t number,
            Unfinished left = Unfinished::NotBegun);
  ~PowerLoss();
  PowerLoss(const PowerLoss&) = delete;
  PowerLoss& operator=(const PowerLoss&) = delete;

  bool reached() const { return !deadlyCall_.empty(); }
  /// Text of the call that was met; empty when none was.
  const std::string& deadlyCall() const { return deadlyCall_; }

  /// May what is on its way be something else behind such a call than before? Between two of them
  /// one moment is as good as another.
  static bool matters(CallKind kind);

  /// Answers a number below `count`.
  using Choose = std::function<std::size_t(std::size_t count)>;
  /// To be called once, when the program has ended: `choose` says how many of the last changes of
  /// folders are lost, and of each content on its way whether it is there, is lost, is zeros, or in
  /// part either. Gives the files whose content was on its way, sorted by path.
  std::vector<OnItsWay> cut(const Choose& choose);

 private:
  /// A file's content on its way.
  struct Content {
    /// What the disk has of it meanwhile, and what it will have.
    std::string before;
    std::string after;
    /// The file was emptied for what is on its way; otherwise it is written over in place.
    bool emptied = false;
    Writing writing = Writing::InPlace;
  };
  struct Disk {
    std::string volume;
    SimDisk* disk;
    /// As it was after each change of folders that is on its way, oldest first.
    std::vector<std::unique_ptr<SimNode>> states;
    /// By the numbers of the files.
    std::map<std::uint64_t, Content> onTheirWay;
  };
  /// What the last call is about to write to, as it stands before.
  struct Written {
    Disk* disk = nullptr;
    /// 0: nothing stands there yet.
    std::uint64_t number = 0;
    std::string bytes;
    FileTicks modified = 0;
  };

  void look(const SimCall& call);
  void takeIn();
  Disk* diskOf(const SimVolumes::Place& place);
  void lookAtWritten();
  void noteWritten();
  void noteRename();
  void noteOthers(Disk& disk);
  static void lose(Disk& disk, const Choose& choose);

  SimMachine& machine_;
  /// Among all calls of the machine.
  const std::size_t number_;
  const Unfinished left_;
  std::vector<Disk> disks_;
  /// The call whose effect is not looked at yet.
  SimCall last_{};
  Written written_;
  std::string deadlyCall_;
};

}  // namespace trelv::sim
