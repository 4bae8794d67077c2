#pragma once

#include <string>

#include "platform/Program.h"

/// Facts about the Windows edition and the session. Edition probes ask the system once and keep the
/// answer, except IsWinNt40. None raises: what cannot be found out is reported and counts as no.
namespace trelv::modPlatform {

bool IsWin95(Program& program);
bool IsWin98(Program& program);
bool IsWinMe(Program& program);
bool IsWinNt40(Program& program);
bool IsWin2000Server(Program& program);
bool IsWin2000Professional(Program& program);
bool IsWinXP(Program& program);
bool IsWin2003Server(Program& program);
bool IsWinVista(Program& program);
bool IsWinSeven(Program& program);
bool IsWinVistaServer(Program& program);
/// Writes a log line with its answer at every call.
bool IsWin2008Server(Program& program);

bool IsWinNT40TS(Program& program);
bool IsWin2000TS(Program& program);
bool IsWin2003TS(Program& program);
/// Writes a log line with its answer at every call.
bool IsWin2008TS(Program& program);

/// Who is logged on; "" if Windows does not say.
std::string UserName(Program& program);

}  // namespace trelv::modPlatform
