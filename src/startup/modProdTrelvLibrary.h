#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/Codes.h"
#include "base/InstallationPaths.h"
#include "platform/Program.h"

/// Small tools of all procedures: numbers and names of codes, a product's entry in the catalogue,
/// the placeholders, the making of a file-system object, the progress display. Only the conversions
/// raise: a RuntimeError -1 for a number that nothing has (its source says so, its description is
/// empty), -99 for such a name.
namespace trelv::modProdTrelvLibrary {

/// The enumerator's name.
std::string ConvertClientServerToString(Side value);
/// The enumerator's name.
std::string ConvertSetupUpdateToString(Operation value);

/// Numbers and names of programs ("MVBIL" is 31) and products ("ZB" is 30), letter by letter: "zb"
/// is none.
std::int16_t ConvertProgramToNumber(const std::string& code);
Product ConvertProductToNumber(const std::string& code);
std::string ConvertNumberToProgram(std::int16_t number);
std::string ConvertNumberToProduct(Product number);
/// Which product a program is of: 12 gives 10. It is the ten next to the number, of two equally
/// near ones (15) the even one (20). Raises the runtime's overflow above 16 bits.
Product ProgramToProduct(std::int32_t programNumber);

/// Entries of the product catalogue; what follows is not read, but by the direct set-up.
constexpr int kMostCatalogueEntries = 100;
/// Name of the catalogue section with this index (from 1): "prod01" … "prod99", "prod100".
std::string CatalogueSection(int index);
/// What the catalogue (full path) has as "conf" and as "name" in a product's section, which is the
/// first of 100 with this "id", letter by letter. "" if there is no such key, or no catalogue.
std::string GetCatalogueProductConf(Program& program, const std::string& iniPath,
                                    const std::string& productId);
std::string GetCatalogueProductName(Program& program, const std::string& iniPath,
                                    const std::string& productId);

/// Puts paths in the place of the "%…%" that a configuration file has in a command or path; `text`
/// changes, and is the answer too. "%PATHSETUP%" is the server path, "%PATHWORK%" the integration
/// path, "%PATHCLIENT%" the programs path. Nobody adds to the paths or takes from them, so slashes
/// in them stay. Where the registry lacks a folder nothing takes the placeholder's place.
std::string ReplacePlaceholders(Program& program, std::string& text,
                                const InstallationPaths& paths);

/// Tells a log line to the form in front: its bar goes one step on. A form without the progress
/// controls is left alone, trouble of any kind is not told. For the run log only. Clicks that wait
/// are served in here, so the form may be gone afterwards.
void ShowProgress(machine::Desktop& desktop, const std::string& text);

/// Makes a file-system object with `make`. False where that raises; the user is told each time.
/// The one that all procedures share is a part of the program and needs no making.
bool AllocateFSObjects(ErrorReporter& errors, const std::function<void()>& make);

}  // namespace trelv::modProdTrelvLibrary
