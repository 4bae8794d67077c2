#pragma once

#include <string>
#include <vector>

#include "kit/ArchiveWriter.h"
#include "kit/Description.h"
#include "kit/Workplace.h"

/// The bytes of packs, and the proof that what lies on a disk is what was described.
namespace trelv::kit {

/// Bytes of a pack that brings a set-up tree to a share. These raise Failure where a source cannot
/// be read.
std::string zipPack(machine::Files& files, const ZipPart& part, Moment moment);
/// Bytes of a pack that the decoder opens.
std::string gzPack(machine::Files& files, const GzPart& part, Moment moment);
/// Bytes of a pack of a medium: the zip archive of its gz packs.
std::string mediumPack(machine::Files& files, const PackPlan& pack);

/// The whole of a file. Raises Failure.
std::string bytesOf(machine::Files& files, const Source& source);
/// Makes the folders above it and writes a file; gives it its time. Raises Failure.
void writeFile(Workplace& workplace, const Source& target, const std::string& bytes, Moment moment);

/// Opens packs again as a start does and compares what comes out with the sources: zip archives
/// with our reader and, on Windows, with the 7-Zip that lies beside this program; gz packs with the
/// decoder.
class PackProof {
 public:
  /// `folder` (full path) is made and removed for each archive. Raises Failure where there should
  /// be a 7-Zip and is none.
  PackProof(Workplace& workplace, std::string folder);

  // Each takes a file (full path) and how it is called towards the user; raises Failure where it is
  // not what the plan says.
  void zip(const std::string& path, const std::string& shown, const ZipPart& part);
  void gz(const std::string& path, const std::string& shown, const GzPart& part);
  void medium(const std::string& path, const std::string& shown, const PackPlan& pack);

 private:
  void zipHolds(const std::string& path, const std::string& shown,
                const std::vector<ArchiveFile>& expected);
  void sevenZipOpens(const std::string& path, const std::string& shown,
                     const std::vector<ArchiveFile>& expected);
  void gzHolds(const std::string& bytes, const std::string& shown, const GzPart& part);

  Workplace& workplace_;
  machine::Files& files_;
  std::string folder_;
  /// Full path; empty where there are no programs of Windows.
  std::string sevenZip_;
};

}  // namespace trelv::kit
