#include "kit/OnWindows.h"

#include "base/VersionRecord.h"

namespace trelv::kit {

bool isWindows(machine::SystemFacts& system) {
  VersionRecord record;
  record.size = kShortVersionRecord;
  return system.queryVersion(record);
}

}  // namespace trelv::kit
