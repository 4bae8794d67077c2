#pragma once

#include "kit/LintRule.h"

/// The traps of the server's version record and of the host's other folders and files.
namespace trelv::kit::lintShare {

void recordedAbove(const VersionRecords& records, Report& report);
void notInCatalogue(const VersionRecords& records, Report& report);
void notWritable(const VersionRecords& records, Report& report);
void otherFields(const VersionRecords& records, Report& report);

void lock(const Share& share, Report& report);
void folderAsLock(const Share& share, Report& report);
void temporaryFolder(const Share& share, Report& report);
void environmentFile(const Share& share, Report& report);
void noRelease(const Share& share, Report& report);
void clientCopy(const Share& share, Report& report);

}  // namespace trelv::kit::lintShare
