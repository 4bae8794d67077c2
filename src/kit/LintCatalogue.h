#pragma once

#include <string>
#include <vector>

#include "kit/LintRule.h"

/// The traps of a product catalogue, and those of any ini file that is only read.
namespace trelv::kit::lintCatalogue {

/// Is this an identifier that a host passes, letter by letter?
bool isProductId(const std::string& id);
/// Does a catalogue's `conf` name a place outside the host folder? Told from the text.
bool leadsOutside(const std::string& conf);
/// "kind" with a number that is written in another way than those that are read, or without one:
/// "prod1", "Update", "Setup_02".
bool looksNumbered(const std::string& section, const std::string& kind);

void unreadable(const Catalogue& catalogue, Report& report);
void gap(const Catalogue& catalogue, Report& report);
void sectionNeverRead(const Catalogue& catalogue, Report& report);
void confWithoutFile(const Catalogue& catalogue, Report& report);
void confOutside(const Catalogue& catalogue, Report& report);
void noId(const Catalogue& catalogue, Report& report);
void unknownId(const Catalogue& catalogue, Report& report);
void idInOtherCase(const Catalogue& catalogue, Report& report);
void idTwice(const Catalogue& catalogue, Report& report);
void confTwice(const Catalogue& catalogue, Report& report);
void noName(const Catalogue& catalogue, Report& report);

void cutValue(const IniFile& file, Report& report);
void wrongEncoding(const IniFile& file, Report& report);
void sectionTwice(const IniFile& file, Report& report);
void keyTwice(const IniFile& file, Report& report);

}  // namespace trelv::kit::lintCatalogue
