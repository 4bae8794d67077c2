#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <vector>

#include "sim/SimCalls.h"

namespace trelv::tests {

/// For SimCalls::setInjector: the machine refuses every call of these kinds.
inline sim::SimCalls::Injector refuse(std::initializer_list<sim::CallKind> kinds,
                                      SystemCode code = system_code::kAccessDenied) {
  return [kinds = std::vector<sim::CallKind>(kinds),
          code](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool refused = std::find(kinds.begin(), kinds.end(), call.kind) != kinds.end();
    return refused ? std::optional<SystemCode>(code) : std::nullopt;
  };
}

/// The machine refuses the calls of one kind from the first to the last of these numbers, counted
/// from 1; `target`, where it is given, is the only one whose calls count.
inline sim::SimCalls::Injector refuse(sim::CallKind kind, std::size_t first, std::size_t last,
                                      SystemCode code, const std::string& target = "") {
  return [=, seen = std::size_t{0}](const sim::SimCall& call) mutable -> std::optional<SystemCode> {
    if (call.kind != kind || (!target.empty() && call.target != target)) {
      return std::nullopt;
    }
    ++seen;
    return first <= seen && seen <= last ? std::optional<SystemCode>(code) : std::nullopt;
  };
}

}  // namespace trelv::tests
