#include "decoder/Decoder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench/decoder/PosixTree.h"

namespace trelv::decoder {
namespace {

class PosixPack : public PackInput {
 public:
  explicit PosixPack(const std::string& path) : path_(path), file_(open(path.c_str(), O_RDONLY)) {}
  ~PosixPack() override { close(file_); }
  PosixPack(const PosixPack&) = delete;
  PosixPack& operator=(const PosixPack&) = delete;

  std::string path() const override { return path_; }
  SystemCode read(char* buffer, std::size_t size, std::size_t& count) override {
    const ssize_t got = ::read(file_, buffer, size);
    count = got < 0 ? 0 : static_cast<std::size_t>(got);
    return got < 0 ? system_code::kReadFault : system_code::kSuccess;
  }

 private:
  std::string path_;
  int file_;
};

class PosixMachine : public DecoderMachine {
 public:
  SystemCode openPack(const std::string& path, std::unique_ptr<PackInput>& pack) override {
    pack = std::make_unique<PosixPack>(path);
    return system_code::kSuccess;
  }
  SystemCode openOutput(const std::string& path, std::unique_ptr<OutputTree>& output) override {
    mkdir(path.c_str(), 0777);
    output = std::make_unique<PosixTree>(path);
    return system_code::kSuccess;
  }
};

}  // namespace
}  // namespace trelv::decoder

// The decoder on this system's own files: tools/bench-decoder compares it with tar.
int main(int count, char** arguments) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
  trelv::decoder::PosixMachine machine;
  const trelv::decoder::DecoderResult result =
      trelv::decoder::decode(std::vector<std::string>(arguments + 1, arguments + count), machine);
  if (!result.line.empty()) {
    std::fprintf(stderr, "%s\n", result.line.c_str());
  }
  return result.exitCode;
}
