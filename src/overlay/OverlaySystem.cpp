#include "overlay/OverlaySystem.h"

#include <chrono>

#include "base/Text.h"

namespace trelv::overlay {
namespace {

/// Does whatever it is told.
class NotedWord : public machine::WordProcessor {
 public:
  machine::AutomationAnswer openDocument(const std::string& /*path*/) override { return {}; }
  machine::AutomationAnswer makeVisible() override { return {}; }
  machine::AutomationAnswer activate() override { return {}; }
  machine::AutomationAnswer goToBookmark(const std::string& /*name*/) override { return {}; }
  machine::AutomationAnswer quit() override { return {}; }
};

constexpr const char* kWord = "Word.Application";

}  // namespace

machine::LocalTime OverlayClock::now() {
  using namespace std::chrono;
  const machine::LocalTime time = below_.now();
  if (paused_ == 0) {
    return time;
  }
  const local_days day =
      local_days{year_month_day{year{time.year}, month{static_cast<unsigned>(time.month)},
                                std::chrono::day{static_cast<unsigned>(time.day)}}};
  const local_seconds moment = day + hours{time.hour} + minutes{time.minute} +
                               seconds{time.second} + duration_cast<seconds>(milliseconds{paused_});
  const local_days today = floor<days>(moment);
  const year_month_day date{today};
  const hh_mm_ss clock{moment - today};
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          static_cast<int>(clock.seconds().count())};
}

bool OverlayEnvironment::get(const std::string& name, std::string& value) {
  const auto found = set_.find(upperCase(name));
  if (found == set_.end()) {
    return below_.get(name, value);
  }
  value = found->second;
  return true;
}

bool OverlayEnvironment::set(const std::string& name, const std::string& value) {
  if (name.empty() || name.find('=') != std::string::npos) {
    return false;
  }
  const std::string kept = locale_.fromAnsi(locale_.toAnsi(value));
  set_[upperCase(name)] = kept;
  steps_.add({.kind = StepKind::Environment, .subject = name, .value = kept});
  return true;
}

SystemCode OverlaySystem::isAdministrator(bool& member) {
  if (!process_.asUser) {
    return below_.isAdministrator(member);
  }
  member = false;
  return system_code::kSuccess;
}

SystemCode OverlayVersions::read(const std::string& path, machine::FileVersion& version) {
  const Place place = tree_.find(path);
  if (!place.isThere()) {
    return place.code;
  }
  const bool onTopOnly = place.entry != nullptr && place.entry->source.empty();
  return onTopOnly ? system_code::kResourceDataNotFound
                   : below_.read(tree_.realPath(path), version);
}

machine::SupportAnswer OverlaySupport::isAdministrator() {
  const machine::SupportAnswer answer = below_.isAdministrator();
  return asUser_ && answer != machine::SupportAnswer::Absent ? machine::SupportAnswer::No : answer;
}

machine::AutomationAnswer OverlayAutomation::startWord(
    std::unique_ptr<machine::WordProcessor>& word) {
  std::unique_ptr<machine::RegistryKey> registered;
  if (registry_.openKey(machine::Hive::LocalMachine, std::string("SOFTWARE\\Classes\\") + kWord,
                        machine::key_access::kQueryValue, registered) != system_code::kSuccess) {
    return {machine::automation_code::kNotRegistered, "", ""};
  }
  steps_.add({.kind = StepKind::Command, .subject = kWord});
  word = std::make_unique<NotedWord>();
  return {};
}

}  // namespace trelv::overlay
