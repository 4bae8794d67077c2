#include "kit/ProgramVersion.h"

namespace trelv::kit {

std::string programVersion() { return TRELV_VERSION_TEXT; }

}  // namespace trelv::kit
