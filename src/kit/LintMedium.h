#pragma once

#include "kit/LintRule.h"

/// The traps of an installation medium.
namespace trelv::kit::lintMedium {

void setupFile(const Medium& medium, Report& report);
void versionFile(const Medium& medium, Report& report);
void productsFile(const Medium& medium, Report& report);
void entryWithoutPacks(const Medium& medium, Report& report);
void otherFiles(const Medium& medium, Report& report);
void otherOrder(const Medium& medium, Report& report);
void noPicture(const Medium& medium, Report& report);
void noManual(const Medium& medium, Report& report);
void misplacedProgram(const Medium& medium, Report& report);
void noMenuLine(const Medium& medium, Report& report);
void unknownEntry(const Medium& medium, Report& report);
void withoutNerio(const Medium& medium, Report& report);
void folderOutside(const Medium& medium, Report& report);

}  // namespace trelv::kit::lintMedium
