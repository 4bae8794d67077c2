#pragma once

#include <memory>
#include <string>

#include "base/Patience.h"
#include "decoder/OutputTree.h"

namespace trelv::decoder {

/// An output folder, with patience in all that makes folders, moves, puts in place or deletes: who
/// else has a file in hand for a moment does not make a pack fail. The one place of the decoder
/// that tries again.
class PatientTree : public OutputTree {
 public:
  PatientTree(OutputTree& output, Patience::Pause pause);

  std::string path(const std::string& name) const override;
  std::size_t longestName() const override;
  SystemCode look(const std::string& name, Standing& standing) override;
  SystemCode visit(const std::string& folder, const Visitor& visitor) override;
  SystemCode makeFolder(const std::string& name) override;
  SystemCode createFile(const std::string& name, std::unique_ptr<OutputFile>& file) override;
  SystemCode replaceFile(const std::string& from, const std::string& to) override;
  SystemCode moveFolder(const std::string& from, const std::string& to) override;
  SystemCode removeFile(const std::string& name) override;
  SystemCode removeFolder(const std::string& name) override;

 private:
  bool isFolder(const std::string& name);

  OutputTree& output_;
  Patience patience_;
};

}  // namespace trelv::decoder
