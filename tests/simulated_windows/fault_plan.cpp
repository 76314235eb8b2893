#include "simulated_windows/fault_plan.h"

namespace quastel::simulated {

using platform::Error;

Error FaultPlan::Next(Call call) {
  const auto kind = static_cast<std::size_t>(call);
  ++counts_[kind];
  ++any_count_;
  const Rule& rule = rules_[kind];
  if (!crashed() && !any_.Hits(any_count_) && !rule.Hits(counts_[kind])) {
    return Error::kNone;
  }
  ++injected_;
  return rule.Hits(counts_[kind]) && rule.error ? *rule.error : UsualErrorOf(call);
}

void FaultPlan::FailCall(Call call, std::uint64_t nth, Repeat repeat, std::optional<Error> error) {
  const auto kind = static_cast<std::size_t>(call);
  rules_[kind] = {nth, repeat, error};
}

void FaultPlan::FailAnyCall(std::uint64_t nth, Repeat repeat) {
  any_ = {nth, repeat, std::nullopt};
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

}  // namespace quastel::simulated
