#pragma once

#include <cstdint>
#include <string>

namespace trelv::machine {

/// How a question to the support library ended.
enum class SupportAnswer {
  /// No such library stands in its place: the caller uses its own means.
  Absent,
  /// The library is there but cannot be loaded, lacks the entry or failed.
  Failed,
  No,
  Yes
};

/// Settings of the suite's products, kept by `mviconf.dll` or by ours in its place. Texts are UTF-8
/// on this side and ANSI on the library's. Answers are numbers of the library, 0 where all went
/// well. Raises RuntimeError when the library cannot be called at all.
class ConfigurationLibrary {
 public:
  virtual ~ConfigurationLibrary() = default;

  /// Reads one setting into `buffer`, which comes with `size` NULs and goes back whole: the value,
  /// or `defaultValue` where the code says that there is none, ends at the first NUL. Never more
  /// than `size` ANSI characters are written.
  virtual std::int32_t getParameter(const std::string& product, const std::string& section,
                                    const std::string& key, const std::string& attribute,
                                    const std::string& defaultValue, std::int32_t size,
                                    std::string& buffer) = 0;

  /// Stores one setting. The library keeps `type` beside the value.
  virtual std::int32_t setParameter(const std::string& product, const std::string& section,
                                    const std::string& key, const std::string& attribute,
                                    std::int32_t type, const std::string& value) = 0;

  /// The folder that the store lies in, without trailing backslash. `buffer` as in getParameter,
  /// 1,000 characters long; of `kind` only 1 is in use.
  virtual std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) = 0;
};

/// What `tovrautil.dll` knows about user and folders, on machines where the suite put one.
class SupportLibrary {
 public:
  virtual ~SupportLibrary() = default;

  /// May the user change this machine?
  virtual SupportAnswer isAdministrator() = 0;

  /// Has the library write the suite's temporary folder into `buffer`, whose length (in ANSI
  /// characters) and filling are the caller's; the entry's other argument is left empty. Yes when
  /// the call was made, whatever it wrote.
  virtual SupportAnswer temporaryPath(std::string& buffer) = 0;
};

}  // namespace trelv::machine
