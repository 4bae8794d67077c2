#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/SimMachine.h"

namespace trelv::tests {

/// The places that each of several programs touched: tells which calls somebody else could mind.
/// A place is the same whatever drive or share leads to its disk, and for each world of the same
/// making.
class TouchedPlaces {
 public:
  /// For so many programs.
  explicit TouchedPlaces(std::size_t programs) : touched_(programs) {}

 private:
  friend class PlacesOfWorld;

  /// A set of accesses, one bit each.
  using Accesses = std::uint8_t;
  using Places = std::map<std::string, Accesses>;

  bool isMinded(std::size_t program, const std::string& place, Accesses access) const;

  std::vector<Places> touched_;
};

/// The machines of one world, whose programs touch places.
class PlacesOfWorld {
 public:
  /// Machines in the order of their programs.
  explicit PlacesOfWorld(std::vector<sim::SimMachine*> machines);

  /// Notes what a call of a program is about to touch.
  void note(std::size_t program, const sim::SimCall& call, TouchedPlaces& table);
  /// Does the call meet a place where its order beside calls of others could matter?
  bool isShared(std::size_t program, const sim::SimCall& call, const TouchedPlaces& table);

 private:
  struct Touch {
    std::string place;
    TouchedPlaces::Accesses access = 0;
  };

  std::vector<Touch> touchesOf(std::size_t program, const sim::SimCall& call);
  void touchFile(std::size_t program, const std::string& path, TouchedPlaces::Accesses access,
                 std::vector<Touch>& touches);
  void touchCommand(std::size_t program, const std::string& line, std::vector<Touch>& touches);
  bool isThere(std::size_t program, const std::string& path) const;
  const std::string& placeOf(std::size_t program, const std::string& path);
  std::string keyPlaceOf(std::size_t program, const std::string& key) const;

  std::vector<sim::SimMachine*> machines_;
  std::map<const sim::SimDisk*, std::size_t> disks_;
  /// By program: what paths lead to.
  std::vector<std::unordered_map<std::string, std::string>> places_;
  std::vector<std::unordered_map<std::string, bool>> shared_;
};

}  // namespace trelv::tests
