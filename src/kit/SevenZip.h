#pragma once

namespace trelv::kit {

/// Behind a command of 7-Zip: it writes nothing. The system lets programs of the console write
/// where this one does, which would be into the document.
constexpr const char* kSilentSevenZip = " -bso0 -bse0 -bsp0";

}  // namespace trelv::kit
