#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Codes.h"
#include "platform/Program.h"

namespace trelv::kit {

/// What the machine tells of a product: how it is installed here.
enum class InstalledMode {
  Absent,
  /// Through the host, on server and workstation.
  Integrated,
  /// On its own.
  Standalone
};

/// How a side of a product stands.
enum class ProductState {
  /// The record has what the configuration leads to.
  Ok,
  /// Configured, neither recorded nor found.
  Missing,
  /// The record is below, above what the configuration leads to.
  Older,
  Newer,
  /// Found, and the record knows nothing of it.
  Unrecorded,
  /// On its own, where the record or this machine's integration knows nothing of it.
  Standalone,
  /// Neither configured nor recorded nor found.
  Absent
};

/// One product on one side. Versions are empty where there are none.
struct InstalledSide {
  std::string product;
  Side side = Side::Server;
  std::string recorded;
  std::string configured;
  /// Nothing where the system cannot be asked for products.
  std::optional<std::string> found;
  std::optional<InstalledMode> mode;
  ProductState state = ProductState::Absent;
};

/// The products of the host's catalogue in its order, then those of the five that it lacks; of each
/// the server side and, where this is a workstation, the client side. Nothing is written.
std::vector<InstalledSide> installedProducts(Program& program, const std::string& serverPath);

/// "ok", "missing", … as the JSON document has it; "absent", "integrated", "standalone".
std::string stateName(ProductState state);
std::string modeName(InstalledMode mode);

/// Is there nothing to do about this state?
bool isGood(ProductState state);

}  // namespace trelv::kit
