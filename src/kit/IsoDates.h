#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "kit/Moment.h"

namespace trelv::kit {

/// Stands between the archive library and the file of an image: puts one given time in the places
/// where the library writes the present one, so that the same medium gives the same image. These
/// are the volume's dates and the records of folders. What tells when, on which system and by what
/// the image was made is emptied: two texts of the volume, and a block.
class IsoDates {
 public:
  using Sink = std::function<void(std::string_view bytes)>;

  IsoDates(Moment moment, Sink sink) : moment_(moment), sink_(std::move(sink)) {}

  /// The image's next bytes, from its beginning on; in pieces of any length.
  void take(std::string_view bytes);
  /// Hands over what is left of it.
  void finish();

 private:
  void mend(std::string& sector);
  void mendVolume(std::string& sector);
  void mendFolder(std::string& sector);
  void putRecordDate(std::string& sector, std::size_t record);
  void noteFolder(const std::string& sector, std::size_t record);

  Moment moment_;
  Sink sink_;
  std::string waiting_;
  std::uint32_t number_ = 0;
  /// The sectors that hold records of folders. A folder's own stand behind those that name it.
  std::set<std::uint32_t> folders_;
  bool volumesEnded_ = false;
};

}  // namespace trelv::kit
