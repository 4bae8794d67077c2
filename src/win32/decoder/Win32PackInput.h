#pragma once

#include <memory>
#include <string>

#include "decoder/PackInput.h"
#include "win32/Owned.h"

namespace trelv::win32 {

class Win32PackInput : public decoder::PackInput {
 public:
  static SystemCode open(const std::string& path, std::unique_ptr<decoder::PackInput>& pack);

  Win32PackInput(std::string path, OwnedFile file)
      : path_(std::move(path)), file_(std::move(file)) {}

  std::string path() const override { return path_; }
  SystemCode read(char* buffer, std::size_t size, std::size_t& count) override;

 private:
  std::string path_;
  OwnedFile file_;
};

}  // namespace trelv::win32
