#include "sim/SimCalls.h"

#include "base/Text.h"

namespace trelv::sim {
namespace {

bool beginsWith(const std::string& text, const std::string& beginning) {
  return upperCase(text).compare(0, beginning.size(), upperCase(beginning)) == 0;
}

// "S:\prg" holds "S:\prg" and "S:\prg\a", not "S:\prg2".
bool liesUnder(const std::string& path, std::string prefix) {
  while (!prefix.empty() && prefix.back() == '\\') {
    prefix.pop_back();
  }
  return beginsWith(path, prefix) && (path.size() == prefix.size() || path[prefix.size()] == '\\');
}

void countOpening(Openings& sums, CallKind kind) {
  switch (kind) {
    case CallKind::FileRead:
      ++sums.reads;
      break;
    case CallKind::FileWrite:
      ++sums.writes;
      break;
    case CallKind::FileAppend:
      ++sums.appends;
      break;
    case CallKind::ProfileRead:
      ++sums.profileReads;
      break;
    case CallKind::ProfileWrite:
      ++sums.profileWrites;
      break;
    case CallKind::FileCopy:
    case CallKind::FileReplace:
    case CallKind::FileMove:
      ++sums.copies;
      break;
    case CallKind::FolderList:
      ++sums.lists;
      break;
    case CallKind::FileLook:
      ++sums.looks;
      break;
    default:
      break;
  }
}

}  // namespace

std::optional<SystemCode> SimCalls::enter(CallKind kind, const std::string& method,
                                          const std::string& path, const std::string& target,
                                          const std::string& detail) {
  if (dead_) {
    return system_code::kAccessDenied;
  }
  const std::string text = method + (path.empty() ? "" : " " + path) +
                           (target.empty() ? "" : " -> " + target) +
                           (detail.empty() ? "" : " " + detail);
  const SimCall call{calls_.size() + 1, kind, text, path, target};
  calls_.push_back(call);
  if (turns_) {
    turns_(call);
  }
  runHooks(call);
  return injector_ ? injector_(call) : std::nullopt;
}

std::vector<std::string> SimCalls::texts() const {
  std::vector<std::string> result;
  for (const SimCall& call : calls_) {
    result.push_back(call.text);
  }
  return result;
}

std::size_t SimCalls::countOf(const std::string& beginning) const {
  std::size_t count = 0;
  for (const SimCall& call : calls_) {
    count += beginsWith(call.text, beginning) ? 1U : 0U;
  }
  return count;
}

Openings SimCalls::openings(const std::string& prefix) const {
  Openings sums;
  for (const SimCall& call : calls_) {
    if (liesUnder(call.path, prefix) || (!call.target.empty() && liesUnder(call.target, prefix))) {
      countOpening(sums, call.kind);
    }
  }
  return sums;
}

void SimCalls::onCall(std::size_t number, Hook hook) {
  numberHooks_.emplace(number, std::move(hook));
}

void SimCalls::onCall(const std::string& beginning, Hook hook) {
  textHooks_.emplace_back(beginning, std::move(hook));
}

void SimCalls::runHooks(const SimCall& call) {
  // Taken out before any runs: a hook may make calls and set hooks itself.
  std::vector<Hook> due;
  const auto [first, last] = numberHooks_.equal_range(call.number);
  for (auto hook = first; hook != last; ++hook) {
    due.push_back(hook->second);
  }
  numberHooks_.erase(first, last);
  std::erase_if(textHooks_, [&](const auto& hook) {
    const bool matches = beginsWith(call.text, hook.first);
    if (matches) {
      due.push_back(hook.second);
    }
    return matches;
  });
  for (const Hook& hook : due) {
    hook();
  }
}

}  // namespace trelv::sim
