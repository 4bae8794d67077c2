#pragma once

#include "kit/LintRule.h"

/// The traps of packs.
namespace trelv::kit::lintPacks {

/// Does it lie in the set-up folder itself, not below it?
bool isInSetupFolder(const PackEntry& entry);

void neverOpened(const Pack& pack, Report& report);
void damaged(const Pack& pack, Report& report);
void encrypted(const Pack& pack, Report& report);
void noTree(const Pack& pack, Report& report);
void outsideTree(const Pack& pack, Report& report);
void impossibleName(const Pack& pack, Report& report);
void namesOfOtherCase(const Pack& pack, Report& report);
void longPath(const Pack& pack, Report& report);
void gzWhereZip(const Pack& pack, Report& report);
void zipInTree(const Pack& pack, Report& report);
void link(const Pack& pack, Report& report);
void tooLarge(const Pack& pack, Report& report);
void refused(const Pack& pack, Report& report);
void olderThanShare(const Pack& pack, Report& report);

}  // namespace trelv::kit::lintPacks
