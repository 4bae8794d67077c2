#include "integrated/TerminalServerRepairs.h"

// Not built yet

namespace trelv::modProdTrelvManager {

bool RiparaCorvelTS(Program& /*program*/) { return false; }

void RiparaNerioTS(Program& /*program*/, const std::string& /*integrationPath*/) {}

void RiparaZeltomodelliTS(Program& /*program*/, const std::string& /*integrationPath*/) {}

void RiparaLudaTS(Program& /*program*/, const std::string& /*integrationPath*/) {}

}  // namespace trelv::modProdTrelvManager
