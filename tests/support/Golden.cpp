#include "support/Golden.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace trelv::tests {

std::string golden(const std::string& name) {
  std::ifstream file(TRELV_PROJECT_FOLDER "/tests/golden/" + name, std::ios::binary);
  if (!file) {
    throw std::runtime_error("no golden file " + name);
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace trelv::tests
