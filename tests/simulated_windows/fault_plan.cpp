#include "simulated_windows/fault_plan.h"

#include <initializer_list>

namespace quastel::simulated {

using platform::Error;

Error FaultPlan::Next(Call call) {
  const auto kind = static_cast<std::size_t>(call);
  ++counts_[kind];
  ++any_count_;
  const Rule& rule = rules_[kind];
  const bool rule_hits = rule.Hits(counts_[kind]);
  const bool any_hits = any_.Hits(any_count_);
  if (!crashed() && !any_hits && !rule_hits) {
    return Error::kNone;
  }
  ++injected_;
  first_injected_ = first_injected_.value_or(call);
  if (rule_hits && rule.error) {
    return *rule.error;
  }
  return any_hits && any_.error ? *any_.error : UsualErrorOf(call);
}

void FaultPlan::FailCall(Call call, std::uint64_t nth, Repeat repeat, std::optional<Error> error) {
  const auto kind = static_cast<std::size_t>(call);
  rules_[kind] = {nth, repeat, error};
}

void FaultPlan::FailAnyCall(std::uint64_t nth, Repeat repeat, std::optional<Error> error) {
  any_ = {nth, repeat, error};
}

Error UsualErrorOf(Call call) {
  switch (call) {
    case Call::kFullPathName:
    case Call::kSeekTo:
    case Call::kToLocalFileTime:
    case Call::kToCalendarTime:
    case Call::kToFileTime:
      return Error::kInvalidParameter;
    case Call::kFindNext:
    case Call::kReadFrom:
      return Error::kCrc;
    case Call::kWriteTo:
    case Call::kFlushFile:
    case Call::kCloseFile:
      return Error::kDiskFull;
    case Call::kQuerySize:
      return Error::kInvalidHandle;
    case Call::kEnvironmentVariable:
      return Error::kEnvironmentVariableNotFound;
    case Call::kDecodeUtf8:
      return Error::kNoUnicodeTranslation;
    case Call::kStartThread:
    case Call::kAllocateFiberSlot:
    case Call::kSetFiberValue:
      return Error::kNotEnoughMemory;
    case Call::kQuerySeekPenalty:
      return Error::kInvalidFunction;
    case Call::kInitializeCom:
    case Call::kCreateFileOperation:
    case Call::kCreateShellItem:
    case Call::kSetOperationFlags:
    case Call::kMarkForDeletion:
    case Call::kPerformOperations:
    case Call::kQueryOperationsAborted:
      return Error{0x80004005};  // E_FAIL
    default:
      return Error::kAccessDenied;
  }
}

namespace {

// What a call may fail with besides its usual error. Nothing for a call whose error nobody can see,
// because it answers by value.
std::initializer_list<Error> OtherErrorsOf(Call call) {
  static constexpr std::initializer_list<Error> kOfAName = {
      Error::kAccessDenied, Error::kSharingViolation, Error::kFileNotFound,
      Error::kPathNotFound, Error::kNotReady,         Error::kCrc};
  static constexpr std::initializer_list<Error> kOfReading = {
      Error::kCrc, Error::kAccessDenied, Error::kNotReady, Error::kBadNetworkPath};
  static constexpr std::initializer_list<Error> kOfWriting = {
      Error::kDiskFull, Error::kAccessDenied, Error::kWriteProtect, Error::kNotReady};
  static constexpr std::initializer_list<Error> kOfCom = {
      Error{0x8007000E},   // E_OUTOFMEMORY
      Error{0x80070005},   // E_ACCESSDENIED
      Error{0x80070002},   // the file is not there
      Error{0x80070020},   // it is in use
      Error{0x80070015}};  // the device is not ready
  switch (call) {
    case Call::kQueryAttributes:
    case Call::kQueryFileFacts:
    case Call::kRemoveFile:
    case Call::kRenameFile:
    case Call::kFindFirstBasic:
    case Call::kFindFirst:
    case Call::kOpenFile:
    case Call::kCreateFolderTree:
    case Call::kShellDelete:
    case Call::kVolumePathName:
      return kOfAName;
    case Call::kRemoveFolder: {
      static constexpr std::initializer_list<Error> kOfAFolder = {
          Error::kDirectoryNotEmpty, Error::kSharingViolation, Error::kFileNotFound,
          Error::kPathNotFound,      Error::kNotReady,         Error::kCrc};
      return kOfAFolder;
    }
    case Call::kFindNext:
    case Call::kReadFrom:
    case Call::kSeekTo:
    case Call::kQuerySize:
    case Call::kQuerySeekPenalty:
      return kOfReading;
    case Call::kWriteTo:
    case Call::kFlushFile:
    case Call::kCloseFile:
      return kOfWriting;
    case Call::kInitializeCom:
    case Call::kCreateFileOperation:
    case Call::kCreateShellItem:
    case Call::kSetOperationFlags:
    case Call::kMarkForDeletion:
    case Call::kPerformOperations:
    case Call::kQueryOperationsAborted:
      return kOfCom;
    default:
      return {};
  }
}

}  // namespace

std::vector<Error> ErrorsOf(Call call) {
  std::vector<Error> errors = {UsualErrorOf(call)};
  for (const Error error : OtherErrorsOf(call)) {
    if (error != errors.front()) {
      errors.push_back(error);
    }
  }
  return errors;
}

}  // namespace quastel::simulated
