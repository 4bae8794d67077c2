#pragma once

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "machine/HostLibraries.h"
#include "sim/SimCalls.h"

namespace trelv::sim {

/// The host's configuration store, kept in memory. Names are compared without regard to case.
class SimConfigurationLibrary : public machine::ConfigurationLibrary {
 public:
  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override;
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override;
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override;

  /// Puts one setting.
  void put(const std::string& product, const std::string& section, const std::string& key,
           const std::string& attribute, const std::string& value);
  void remove(const std::string& product, const std::string& section, const std::string& key,
              const std::string& attribute);
  /// Value of a setting; empty when missing.
  std::string value(const std::string& product, const std::string& section, const std::string& key,
                    const std::string& attribute) const;
  /// Type that a setting was written with; -1 when missing.
  std::int32_t typeOf(const std::string& product, const std::string& section,
                      const std::string& key, const std::string& attribute) const;

  /// Codes of the next calls, in order; 0 lets a call work as usual.
  void answerNext(std::initializer_list<std::int32_t> codes);
  /// Code of every call for which none is left in the queue (0 = calls work).
  void answerAlways(std::int32_t code) { alwaysCode_ = code; }
  void setConfigPath(const std::string& path) { configPath_ = path; }
  /// The library cannot be called: every call raises.
  void setCallable(bool callable) { callable_ = callable; }
  /// How often each operation was called, refused calls included.
  std::size_t gets() const { return gets_; }
  std::size_t sets() const { return sets_; }
  std::size_t paths() const { return paths_; }

 private:
  struct Setting {
    std::string value;
    std::int32_t type = 1;
  };
  using Address = std::vector<std::string>;

  static Address addressOf(const std::string& product, const std::string& section,
                           const std::string& key, const std::string& attribute);
  std::int32_t nextCode();
  void demandCallable() const;
  std::int32_t missingCode(const Address& address) const;

  std::map<Address, Setting> settings_;
  std::deque<std::int32_t> codes_;
  std::int32_t alwaysCode_ = 0;
  std::string configPath_ = "C:\\Lumo\\Client";
  bool callable_ = true;
  std::size_t gets_ = 0;
  std::size_t sets_ = 0;
  std::size_t paths_ = 0;
};

/// The place of the configuration library in a machine: records each call and passes it on.
class ConfigurationSocket : public machine::ConfigurationLibrary {
 public:
  ConfigurationSocket(SimCalls& calls, machine::ConfigurationLibrary& library)
      : calls_(calls), library_(&library) {}
  void use(machine::ConfigurationLibrary& library) { library_ = &library; }

  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override;
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override;
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override;

 private:
  SimCalls& calls_;
  machine::ConfigurationLibrary* library_;
};

/// The host's support library: absent, and then no call at all, unless a test says what it answers.
class SimSupportLibrary : public machine::SupportLibrary {
 public:
  explicit SimSupportLibrary(SimCalls& calls) : calls_(calls) {}

  machine::SupportAnswer isAdministrator() override;
  machine::SupportAnswer temporaryPath(std::string& buffer) override;

  void setAdministratorAnswer(machine::SupportAnswer answer) { administrator_ = answer; }
  /// The entry answers Yes and writes `text` and a closing NUL into the buffer.
  void setTemporaryPath(const std::string& text);
  /// The entry answers this without touching the buffer.
  void setTemporaryAnswer(machine::SupportAnswer answer) { temporary_ = answer; }

 private:
  SimCalls& calls_;
  machine::SupportAnswer administrator_ = machine::SupportAnswer::Absent;
  machine::SupportAnswer temporary_ = machine::SupportAnswer::Absent;
  std::string temporaryPath_;
};

}  // namespace trelv::sim
