#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "kit/ArchiveReader.h"
#include "kit/LintSubjects.h"

namespace trelv::kit {

/// Is called for each entry of an archive; answers whether it wants what is in it.
using WantEntry = std::function<bool(const PackEntry& entry)>;
/// Gets the content of an entry that was wanted.
using TakeContent = std::function<void(const PackEntry& entry, std::string content)>;

/// Reads a zip archive to its end, the content of each entry included. Answers what is wrong with
/// it in words for the user; empty where it is good. What is encrypted is not read.
std::string readZip(const ByteSource& source, const WantEntry& want, const TakeContent& take);

/// The same for a gz pack, as the decoder reads one: names and links that it refuses are passed on.
std::string readGz(const ByteSource& source, const std::string& shown, const WantEntry& want,
                   const TakeContent& take);

/// Why the decoder refuses a gz pack: its own words; empty where it does not. Nothing is written.
std::string decoderRefusal(const ByteSource& source, const std::string& shown);

}  // namespace trelv::kit
