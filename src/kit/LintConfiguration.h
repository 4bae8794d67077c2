#pragma once

#include "kit/LintRule.h"

/// The traps of a product's configuration file.
namespace trelv::kit::lintConfiguration {

/// Does one of the product's programs stand on the share? Before its first set-up none does, nor
/// what removes it.
bool isInstalled(const Configuration& configuration);

void noVersion(const Configuration& configuration, Report& report);
void otherOrder(const Configuration& configuration, Report& report);
void notAVersion(const Configuration& configuration, Report& report);
void neverHigher(const Configuration& configuration, Report& report);
void commandGap(const Configuration& configuration, Report& report);
void secondCommand(const Configuration& configuration, Report& report);
void sectionNeverRead(const Configuration& configuration, Report& report);
void programNotOnShare(const Configuration& configuration, Report& report);
void unbalancedQuotes(const Configuration& configuration, Report& report);
void slashThatIsNoPath(const Configuration& configuration, Report& report);
void unknownPlaceholder(const Configuration& configuration, Report& report);
void emptyClientPath(const Configuration& configuration, Report& report);
void doublePercent(const Configuration& configuration, Report& report);
void unquotedBlanks(const Configuration& configuration, Report& report);
void updatesWithoutSetup(const Configuration& configuration, Report& report);
void differentEnds(const Configuration& configuration, Report& report);
void keptFolder(const Configuration& configuration, Report& report);
void removalsInOneFolder(const Configuration& configuration, Report& report);
void noRemoval(const Configuration& configuration, Report& report);
void programWithoutCommand(const Configuration& configuration, Report& report);
void programWithArguments(const Configuration& configuration, Report& report);
void programMissing(const Configuration& configuration, Report& report);
void cutByDirectSetup(const Configuration& configuration, Report& report);

}  // namespace trelv::kit::lintConfiguration
