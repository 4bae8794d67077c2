#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kit/ArchiveSurroundings.h"
#include "kit/Moment.h"

struct archive;

namespace trelv::kit {

/// A file of an archive: its name in UTF-8, "/" between the levels, and all its bytes.
struct ArchiveFile {
  std::string name;
  std::string content;
};

/// Takes the next bytes of an archive. May raise.
using ByteSink = std::function<void(std::string_view bytes)>;

// The bytes of an archive depend on names, contents and times alone. Each of these raises
// RuntimeError where the archive library refuses.

/// A zip archive of these files, in this order. Names beyond ASCII are marked as UTF-8.
std::string zipArchive(const std::vector<ArchiveFile>& files, Moment moment);

/// A tar archive of these files and the folders that lead to them, compressed with gzip.
std::string tarGzArchive(const std::vector<ArchiveFile>& files, Moment moment);

/// An image of a disk with the names of Joliet. The files themselves wait in the system's temporary
/// folder until the image is finished.
class IsoImage {
 public:
  /// `label` in capitals without accents; all folders have the time `moment`.
  IsoImage(const std::string& label, Moment moment, ByteSink sink);
  ~IsoImage();
  IsoImage(const IsoImage&) = delete;
  IsoImage& operator=(const IsoImage&) = delete;

  /// Can a file of this name stand in an image? The library knows eight levels, that of the files
  /// and the root included, and paths of a length.
  static bool takes(const std::string& name);

  /// Folders that lead to the file come by themselves.
  void add(const ArchiveFile& file, Moment moment);
  /// Hands over the image; nothing can be added behind.
  void finish();

 private:
  struct Content;
  std::unique_ptr<Content> content_;
};

}  // namespace trelv::kit
