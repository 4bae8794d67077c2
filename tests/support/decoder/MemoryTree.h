#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "decoder/OutputTree.h"

namespace trelv::decoder {

/// An output folder in memory that compares names as Windows does: without regard to case. Any of
/// its calls can be made to fail.
class MemoryTree : public OutputTree {
 public:
  struct Node {
    /// In the spelling of the one who made it.
    std::string name;
    Standing standing = Standing::kFile;
    std::string content;
    std::uint64_t modified = 0;
    bool readOnly = false;
    bool open = false;
  };

  /// Lays out what stands there before the pack; its folders must be there.
  void put(const std::string& name, const std::string& content, bool readOnly = false);
  void putFolder(const std::string& name);
  void putLink(const std::string& name);

  /// The call of this number (from 1), counted from now on, changes nothing and answers this code.
  void failAt(int number, SystemCode code);
  /// From the call of this number on, each call of the operation answers this code.
  void failAlways(const std::string& operation, SystemCode code);
  /// What somebody else does right before the next call of the operation.
  void before(const std::string& operation, std::function<void()> act);
  int calls() const { return calls_; }
  /// The operation that failAt made fail; empty while none was.
  const std::string& failed() const { return failed_; }

  bool stands(const std::string& name) const;
  /// A file's node; a test failure and an empty one when there is none.
  const Node& at(const std::string& name) const;
  /// Names of all that stands there, sorted; folders end with "/", links with "@".
  std::vector<std::string> names() const;

  std::size_t longest = 200;

  std::string path(const std::string& name) const override;
  std::size_t longestName() const override { return longest; }
  SystemCode look(const std::string& name, Standing& standing) override;
  SystemCode visit(const std::string& folder, const Visitor& visitor) override;
  SystemCode makeFolder(const std::string& name) override;
  SystemCode createFile(const std::string& name, std::unique_ptr<OutputFile>& file) override;
  SystemCode replaceFile(const std::string& from, const std::string& to) override;
  SystemCode moveFolder(const std::string& from, const std::string& to) override;
  SystemCode removeFile(const std::string& name) override;
  SystemCode removeFolder(const std::string& name) override;

 private:
  class File;

  SystemCode call(const std::string& operation);
  Node* find(const std::string& name);
  /// Whether something new may get this name: success, or what Windows answers.
  SystemCode placeForNew(const std::string& name);
  bool isEmpty(const std::string& folder) const;

  // By upper-cased name.
  std::map<std::string, Node> nodes_;
  int calls_ = 0;
  int failing_ = 0;
  SystemCode code_ = 0;
  std::string failed_;
  std::map<std::string, SystemCode> always_;
  std::map<std::string, std::function<void()>> before_;
};

}  // namespace trelv::decoder
