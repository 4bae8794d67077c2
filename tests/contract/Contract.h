#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "contract/ContractMachine.h"

/// Ends the test as skipped, with the reason, where this side cannot play it.
#define CONTRACT_NEEDS(ability, reason)             \
  do {                                              \
    if (!world().can(ability)) GTEST_SKIP_(reason); \
  } while (false)

namespace trelv::contract {

/// A test of the suite: one world, made for it alone.
class Contract : public testing::Test {
 protected:
  ContractMachine& world() { return *world_; }
  machine::Machine& machine() { return world_->machine(); }

  /// Full path of a name in this test's folder.
  std::string path(const std::string& name) { return world_->folder() + "\\" + name; }

  std::string putFile(const std::string& name, std::string_view bytes) {
    world_->putFile(path(name), bytes);
    return path(name);
  }

 private:
  std::unique_ptr<ContractMachine> world_ = makeContractMachine();
};

}  // namespace trelv::contract
