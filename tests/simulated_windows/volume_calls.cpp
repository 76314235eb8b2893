// platform/volume.h on the simulated volumes.

#include "platform/volume.h"

#include <algorithm>

#include "base/ascii.h"
#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::FaultOf;
using simulated::FileObject;
using simulated::Living;
using simulated::PathParts;
using simulated::SeamCall;
using simulated::SeekPenaltyAnswer;
using simulated::State;

}  // namespace

Error VolumePathName(const Char* path, Char* buffer, std::uint32_t capacity) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kVolumePathName, path, capacity);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const TextView given = ViewOf(path);
  if (given.empty()) {
    return call.Answer(Error::kInvalidName);
  }
  const PathParts parts = s.disk.Parse(given, simulated::kLongPathLimit);
  if (parts.error != Error::kNone) {
    return call.Answer(parts.error);
  }
  if (s.disk.FindVolume(parts.root) == nullptr) {
    return call.Answer(Error::kFileNotFound);
  }
  Text root = simulated::HasVerbatimPrefix(given) && parts.root[0] != Char{'\\'}
                  ? QS_TEXT("\\\\?\\")
                  : QS_TEXT("");
  root += parts.root;
  root += Char{'\\'};
  if (capacity <= root.size()) {
    return call.Answer(Error::kFilenameTooLong);
  }
  std::copy_n(root.c_str(), root.size() + 1, buffer);
  return call.Answer(Error::kNone);
}

std::uint32_t QueryDriveType(const Char* volume_root) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kQueryDriveType, volume_root);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(kDriveUnknown, fault);
  }
  Text given = volume_root == nullptr ? QS_TEXT("\\") : volume_root;
  if (given.size() == 2 && given[1] == Char{':'}) {
    given += Char{'\\'};  // the one place where the separator may be missing
  }
  if (given.empty() || !IsSeparator(given.back())) {
    return call.AnswerValue(kDriveNoRoot);
  }
  const PathParts parts = s.disk.Parse(given);
  if (parts.error != Error::kNone || !parts.rest.empty()) {
    return call.AnswerValue(kDriveNoRoot);
  }
  const simulated::Volume* volume = s.disk.FindVolume(parts.root);
  return call.AnswerValue(volume == nullptr ? kDriveNoRoot : volume->options.type);
}

Result<SeekPenalty> QuerySeekPenalty(const FileHandle& device) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kQuerySeekPenalty);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  if (!device.valid()) {
    return call.Answer(Error::kInvalidHandle);
  }
  const FileObject& file = s.ledger.Get<FileObject>(device.raw());
  if (file.node != nullptr || file.seek_penalty == SeekPenaltyAnswer::kFails) {
    return call.Answer(Error::kInvalidFunction);
  }
  SeekPenalty answer;
  answer.bytes_returned = file.seek_penalty == SeekPenaltyAnswer::kShort ? 8 : 12;
  answer.incurs_seek_penalty = file.seek_penalty == SeekPenaltyAnswer::kPenalty;
  return answer;
}

}  // namespace quastel::platform
