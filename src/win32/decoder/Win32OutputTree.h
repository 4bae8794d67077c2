#pragma once

#include <memory>
#include <string>

#include "decoder/OutputTree.h"

namespace trelv::win32 {

class Win32OutputTree : public decoder::OutputTree {
 public:
  /// Makes the folder, with its parents, where it is missing; kDirectoryName when it is a file.
  static SystemCode open(const std::string& path, std::unique_ptr<decoder::OutputTree>& output);

  /// `full`: the folder's full path, without trailing backslash except for a root.
  explicit Win32OutputTree(std::wstring full);

  std::string path(const std::string& name) const override;
  std::size_t longestName() const override;
  SystemCode look(const std::string& name, decoder::Standing& standing) override;
  SystemCode visit(const std::string& folder, const Visitor& visitor) override;
  SystemCode makeFolder(const std::string& name) override;
  SystemCode createFile(const std::string& name,
                        std::unique_ptr<decoder::OutputFile>& file) override;
  SystemCode replaceFile(const std::string& from, const std::string& to) override;
  SystemCode moveFolder(const std::string& from, const std::string& to) override;
  SystemCode removeFile(const std::string& name) override;
  SystemCode removeFolder(const std::string& name) override;

 private:
  std::wstring literal(const std::string& name) const;

  std::wstring full_;
  /// The folder as Windows takes it literally, with a trailing backslash.
  std::wstring base_;
};

}  // namespace trelv::win32
