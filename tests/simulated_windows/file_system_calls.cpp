// platform/file_system.h on the simulated disks.

#include "platform/file_system.h"

#include <algorithm>

#include "simulated_windows/state.h"

namespace quastel::platform {

using simulated::Call;
using simulated::Disk;
using simulated::FaultOf;
using simulated::Found;
using simulated::LastLink;
using simulated::Living;
using simulated::Node;
using simulated::NodeKind;
using simulated::NodePtr;
using simulated::Place;
using simulated::SeamCall;
using simulated::State;

std::uint32_t FullPathName(const Char* path, std::uint32_t capacity, Char* buffer) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kFullPathName, path, capacity);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(0u, fault);
  }
  const Text full = simulated::FullPathOf(ViewOf(path), s.disk.current_folder());
  if (full.empty()) {
    return call.AnswerValue(0u, Error::kInvalidName);
  }
  if (full.size() > simulated::kLongPathLimit) {
    return call.AnswerValue(0u, Error::kFilenameTooLong);
  }
  const auto length = static_cast<std::uint32_t>(full.size());
  if (buffer == nullptr || capacity <= length) {
    return call.AnswerValue(length + 1);
  }
  std::copy_n(full.c_str(), full.size() + 1, buffer);
  return call.AnswerValue(length);
}

Result<Attributes> QueryAttributes(const Char* path) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kQueryAttributes, path);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const Found found = s.disk.Open(ViewOf(path), LastLink::kItself);
  if (found.error != Error::kNone) {
    return call.Answer(found.error);
  }
  if (found.node->denial().querying) {
    return call.Answer(Error::kAccessDenied);
  }
  return found.node->shown_attributes();
}

Result<FileFacts> QueryFileFacts(const Char* path) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kQueryFileFacts, path);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const Found found = s.disk.Open(ViewOf(path), LastLink::kItself);
  if (found.error != Error::kNone) {
    return call.Answer(found.error);
  }
  const Node& node = *found.node;
  if (node.denial().querying) {
    return call.Answer(Error::kAccessDenied);
  }
  return FileFacts{node.shown_attributes(), node.size, node.last_write};
}

Error RemoveFile(const Char* path) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kRemoveFile, path);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const Found found = s.disk.Open(ViewOf(path), LastLink::kItself);
  if (found.error != Error::kNone) {
    return call.Answer(found.error);
  }
  if (IsDirectory(found.node->attributes)) {
    return call.Answer(Error::kAccessDenied);
  }
  if (const Error obstacle = Disk::ObstacleToDeleting(*found.node); obstacle != Error::kNone) {
    return call.Answer(obstacle);
  }
  s.disk.Unlink(*found.node);
  return call.Answer(Error::kNone);
}

Error RemoveFolder(const Char* path) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kRemoveFolder, path);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const Found found = s.disk.Open(ViewOf(path), LastLink::kItself);
  if (found.error != Error::kNone) {
    return call.Answer(found.error);
  }
  Node& node = *found.node;
  if (!IsDirectory(node.attributes)) {
    return call.Answer(Error::kDirectory);
  }
  if (const Error obstacle = Disk::ObstacleToDeleting(node); obstacle != Error::kNone) {
    return call.Answer(obstacle);
  }
  // The current folder is held open by the process itself.
  if (s.disk.Open(s.disk.current_folder(), LastLink::kFollow).node == found.node) {
    return call.Answer(Error::kSharingViolation);
  }
  if (node.is_folder() && !node.children->empty()) {
    return call.Answer(Error::kDirectoryNotEmpty);
  }
  s.disk.Unlink(node);
  s.ForgetParent();
  return call.Answer(Error::kNone);
}

namespace {

// Why `from` cannot take the place of what stands at `to`, or kNone.
Error ObstacleToReplacing(const Node& from, const Node& to, std::uint32_t flags) {
  if (&from == &to) {
    return Error::kNone;  // only the spelling changes
  }
  if ((flags & kMoveReplaceExisting) == 0) {
    return Error::kAlreadyExists;
  }
  const bool replaceable = !IsDirectory(from.attributes) && !IsDirectory(to.attributes) &&
                           Disk::ObstacleToDeleting(to) == Error::kNone && to.open_modes().empty();
  return replaceable ? Error::kNone : Error::kAccessDenied;
}

bool IsInside(const Node* node, const Node& folder) {
  while (node != nullptr && node != &folder) {
    node = node->parent;
  }
  return node != nullptr;
}

const Node& RootOf(const Node& node) {
  return node.parent == nullptr ? node : RootOf(*node.parent);
}

Error Rename(Disk& disk, TextView from, TextView to, std::uint32_t flags) {
  constexpr Error kNotSameDevice{17};
  const Found source = disk.Open(from, LastLink::kItself);
  if (source.error != Error::kNone) {
    return source.error;
  }
  Node& node = *source.node;
  if (node.denial().deleting || node.parent == nullptr) {
    return Error::kAccessDenied;
  }
  if (!node.Admits(simulated::kAccessDelete, kShareAll)) {
    return Error::kSharingViolation;
  }
  const Place place = disk.Locate(disk.Parse(to));
  if (place.error != Error::kNone) {
    return place.error == Error::kDirectory ? Error::kPathNotFound : place.error;
  }
  if (!simulated::IsPossibleName(place.name)) {
    return Error::kInvalidName;
  }
  if (&RootOf(node) != &RootOf(*place.folder)) {
    return kNotSameDevice;
  }
  if (IsInside(place.folder.get(), node)) {
    return Error::kSharingViolation;
  }
  if (place.node != nullptr) {
    const Error obstacle = ObstacleToReplacing(node, *place.node, flags);
    if (obstacle != Error::kNone) {
      return obstacle;
    }
    if (place.node != source.node) {
      disk.Unlink(*place.node);
    }
  }
  disk.Move(source.node, place.folder, place.name);
  return Error::kNone;
}

}  // namespace

Error RenameFile(const Char* from, const Char* to, std::uint32_t flags) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kRenameFile, from, flags);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  s.ForgetParent();
  return call.Answer(Rename(s.disk, ViewOf(from), ViewOf(to), flags));
}

}  // namespace quastel::platform
