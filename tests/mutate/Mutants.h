// For tools/mutate, which puts this into copies of the program's sources: they hold all mutants at
// once, and the environment variable TRELV_MUTANT names the one that acts.

#pragma once

#include <type_traits>

namespace mutants {

/// The number of the mutant that acts; 0: none.
unsigned acting();

/// Notes that the place of this mutant runs. Below 2^20, as all numbers here.
void note(unsigned number);

constexpr bool isActing(unsigned number) {
  return !std::is_constant_evaluated() && acting() == number;
}

constexpr void reached(unsigned number) {
  if (!std::is_constant_evaluated()) {
    note(number);
  }
}

}  // namespace mutants
