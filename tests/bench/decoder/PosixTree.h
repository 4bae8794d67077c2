#pragma once

#include <string>

#include "decoder/OutputTree.h"

namespace trelv::decoder {

/// An output folder of this system, for benchmarks: the decoder's own work without Wine's.
class PosixTree : public OutputTree {
 public:
  /// `folder` must be there.
  explicit PosixTree(std::string folder) : folder_(std::move(folder)) {}

  std::string path(const std::string& name) const override { return folder_ + "/" + name; }
  std::size_t longestName() const override { return 200; }
  SystemCode look(const std::string& name, Standing& standing) override;
  SystemCode visit(const std::string& folder, const Visitor& visitor) override;
  SystemCode makeFolder(const std::string& name) override;
  SystemCode createFile(const std::string& name, std::unique_ptr<OutputFile>& file) override;
  SystemCode replaceFile(const std::string& from, const std::string& to) override;
  SystemCode moveFolder(const std::string& from, const std::string& to) override;
  SystemCode removeFile(const std::string& name) override;
  SystemCode removeFolder(const std::string& name) override;

 private:
  std::string folder_;
};

}  // namespace trelv::decoder
