#include "sim/FailingMachine.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace trelv::sim {
namespace {

using namespace system_code;

constexpr std::array kFileCodes{kAccessDenied, kSharingViolation, kDiskFull};
constexpr std::array kRemoveCodes{kAccessDenied, kSharingViolation, kNetNameDeleted};
constexpr std::array kReadCodes{kSharingViolation, kAccessDenied, kNetNameDeleted};
constexpr std::array kStartCodes{kFileNotFound, kAccessDenied, kElevationRequired};
// -3000 and -9999 as they travel in an unsigned code.
constexpr std::array kStoreCodes{static_cast<SystemCode>(-3000), static_cast<SystemCode>(-9999)};
constexpr std::array kAutomationCodes{machine::automation_code::kNotRegistered,
                                      machine::automation_code::kServerGone};
constexpr SystemCode kWaitFailed = 6;
constexpr SystemCode kNoNetwork = 1222;
/// For interfaces that tell of a failure in another way: nobody looks at it.
constexpr SystemCode kWithoutCode = kAccessDenied;

/// The code that such a call fails with. There is no default: who adds a kind of call has to say
/// here how it fails, the compiler asks for it.
SystemCode codeFor(CallKind kind, std::size_t variant) {
  switch (kind) {
    case CallKind::FileLook:
    case CallKind::FileRead:
    case CallKind::FolderList:
      return kReadCodes.at(variant % kReadCodes.size());
    case CallKind::FileWrite:
    case CallKind::FileAppend:
    case CallKind::FolderMake:
    case CallKind::FileCopy:
    case CallKind::FileReplace:
    case CallKind::MarkTake:
    case CallKind::FileMove:
      return kFileCodes.at(variant % kFileCodes.size());
    case CallKind::FileRemove:
    case CallKind::FileSetReadOnly:
    case CallKind::FolderRemove:
    case CallKind::FileRights:
    case CallKind::FileStreamRemove:
    case CallKind::FolderProbe:
      return kRemoveCodes.at(variant % kRemoveCodes.size());
    case CallKind::ProcessStart:
      return kStartCodes.at(variant % kStartCodes.size());
    case CallKind::ProcessWait:
    case CallKind::ProcessReady:
    case CallKind::ProcessExitCode:
      return kWaitFailed;
    case CallKind::ConfigurationGet:
    case CallKind::ConfigurationSet:
    case CallKind::ConfigurationPath:
      return kStoreCodes.at(variant % kStoreCodes.size());
    case CallKind::AutomationCall:
      return kAutomationCodes.at(variant % kAutomationCodes.size());
    case CallKind::FileVersionRead:
      return kResourceDataNotFound;
    case CallKind::ConnectionNameQuery:
      return kNoNetwork;
    case CallKind::RegistryOpen:
    case CallKind::RegistryCreate:
    case CallKind::RegistryDescribe:
    case CallKind::RegistryRead:
    case CallKind::RegistryWrite:
    case CallKind::RegistryEnumerate:
    case CallKind::AdministratorQuery:
    case CallKind::UserNameQuery:
    case CallKind::WindowsFolderQuery:
    case CallKind::ShellFolderQuery:
    case CallKind::TemporaryFolderQuery:
    case CallKind::DeviceNamesQuery:
    case CallKind::ComputerNameQuery:
      return kAccessDenied;
    case CallKind::ProfileRead:
    case CallKind::ProfileWrite:
    case CallKind::EnvironmentGet:
    case CallKind::EnvironmentSet:
    case CallKind::VersionQuery:
    case CallKind::SuiteTest:
    case CallKind::KernelFunctionQuery:
    case CallKind::Wow64Query:
    case CallKind::DriveTypeQuery:
    case CallKind::SupportAdministrator:
    case CallKind::SupportTemporaryPath:
    case CallKind::BoxShow:
    case CallKind::FormShow:
    case CallKind::PictureShow:
    case CallKind::InputShow:
    case CallKind::ProcessLookUp:
      return kWithoutCode;
  }
  throw std::logic_error("a call of no kind");
}

constexpr SystemCode kWriteProtected = 19;
constexpr SystemCode kLockViolation = 33;
constexpr SystemCode kUnexpectedNetworkError = 59;
constexpr SystemCode kKeyDeleted = 1018;
constexpr SystemCode kIoError = 1117;
constexpr SystemCode kNoSystemResources = 1450;
constexpr SystemCode kServerUnavailable = 1722;

/// What such a call fails with besides, on networks and worn disks.
std::vector<SystemCode> rareCodes(CallKind kind) {
  switch (kind) {
    case CallKind::FileLook:
    case CallKind::FileRead:
    case CallKind::FolderList:
      return {kBadNetPath, kReadFault, kLockViolation, kUnexpectedNetworkError, kNoSystemResources};
    case CallKind::FileWrite:
    case CallKind::FileAppend:
    case CallKind::FolderMake:
    case CallKind::FileCopy:
    case CallKind::FileReplace:
    case CallKind::FileMove:
      return {kNetNameDeleted, kBadNetPath, kWriteFault, kWriteProtected, kUnexpectedNetworkError};
    case CallKind::FileRemove:
    case CallKind::FileSetReadOnly:
    case CallKind::FolderRemove:
      return {kBadNetPath, kWriteProtected, kIoError};
    case CallKind::ProcessStart:
      return {kPathNotFound,   kOutOfMemory,      kSharingViolation, kBadNetPath,
              kNetNameDeleted, kInvalidParameter, kBadExeFormat,     kNoSystemResources};
    case CallKind::ConfigurationGet:
    case CallKind::ConfigurationSet:
    case CallKind::ConfigurationPath:
      return {static_cast<SystemCode>(-1000)};
    case CallKind::RegistryOpen:
    case CallKind::RegistryCreate:
    case CallKind::RegistryRead:
    case CallKind::RegistryWrite:
      return {kKeyDeleted, kNoSystemResources};
    case CallKind::AdministratorQuery:
    case CallKind::UserNameQuery:
    case CallKind::ComputerNameQuery:
      return {kServerUnavailable};
    default:
      return {};
  }
}

/// Is it a call that is made again where it failed so?
bool isTried(CallKind kind, SystemCode code) {
  if (kind == CallKind::FileLook || kind == CallKind::FolderList) {
    return code == kNetNameDeleted;
  }
  if (kind == CallKind::FileRead || kind == CallKind::FileWrite || kind == CallKind::FileAppend) {
    return code == kSharingViolation || code == kNetNameDeleted;
  }
  return kind == CallKind::ProfileWrite || kind == CallKind::FileRemove ||
         kind == CallKind::FolderMake || kind == CallKind::FolderRemove ||
         kind == CallKind::FileCopy || kind == CallKind::FileReplace ||
         kind == CallKind::FileMove || kind == CallKind::FileStreamRemove;
}

}  // namespace

FailingMachine::FailingMachine(SimMachine& simMachine, std::size_t number, FailureSpan span,
                               std::size_t variant)
    : machine_(simMachine), before_(simMachine.callLog().count()), span_(span), failure_{number,
                                                                                         variant,
                                                                                         kSuccess,
                                                                                         "",
                                                                                         false,
                                                                                         kSuccess} {
  machine_.callLog().setInjector([this](const SimCall& call) { return look(call); });
}

FailingMachine::~FailingMachine() { machine_.callLog().setInjector(nullptr); }

std::size_t FailingMachine::variants(CallKind kind) {
  std::size_t count = 1;
  while (codeFor(kind, count) != codeFor(kind, 0)) {
    ++count;
  }
  return count;
}

void FailingMachine::failAlso(std::size_t number, SystemCode code) {
  second_ = {number, code, code, "", false, kSuccess};
}

std::vector<SystemCode> FailingMachine::codes(CallKind kind) {
  std::vector<SystemCode> codes;
  for (std::size_t variant = 0; variant < variants(kind); ++variant) {
    codes.push_back(codeFor(kind, variant));
  }
  const std::vector<SystemCode> rare = rareCodes(kind);
  codes.insert(codes.end(), rare.begin(), rare.end());
  return codes;
}

std::optional<SystemCode> FailingMachine::look(const SimCall& call) {
  // Not how many were looked at: a call in whose place others are made first comes behind them.
  seen_ = std::max(seen_, call.number - before_);
  const std::optional<SystemCode> code = lookFor(failure_, call);
  return code || second_.number == 0 ? code : lookFor(second_, call);
}

std::optional<SystemCode> FailingMachine::lookFor(Failure& failure, const SimCall& call) const {
  const bool fails = span_ == FailureSpan::Once
                         ? call.number - before_ == failure.number || isTriedAgain(failure, call)
                         : call.number - before_ >= failure.number;
  if (!fails) {
    return std::nullopt;
  }
  if (failure.call.empty()) {
    failure.call = call.text;
    failure.answered = codeOf(failure, call.kind);
    failure.stillTried = isTried(call.kind, failure.answered);
  }
  return codeOf(failure, call.kind);
}

/// A second failure names its code before anybody knows what call it meets.
SystemCode FailingMachine::codeOf(const Failure& failure, CallKind kind) {
  const std::vector<SystemCode> known = codes(kind);
  const bool fits = std::find(known.begin(), known.end(), failure.code) != known.end();
  return fits ? failure.code : codeFor(kind, failure.variant);
}

bool FailingMachine::isTriedAgain(Failure& failure, const SimCall& call) {
  const bool again = failure.stillTried && call.text == failure.call;
  const bool question = call.kind == CallKind::FileLook || call.kind == CallKind::FolderProbe;
  failure.stillTried = again || (failure.stillTried && question);
  return again;
}

}  // namespace trelv::sim
