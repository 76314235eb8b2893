// platform/file.h on the simulated disks.

#include "platform/file.h"

#include <algorithm>

#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::Disk;
using simulated::FaultOf;
using simulated::FileObject;
using simulated::Found;
using simulated::LastLink;
using simulated::Living;
using simulated::Node;
using simulated::NodeExtras;
using simulated::NodeKind;
using simulated::NodePtr;
using simulated::OpenMode;
using simulated::PathParts;
using simulated::SeamCall;
using simulated::State;

constexpr Error kNegativeSeek{131};
constexpr Attributes kSettableAttributes = kAttributeReadOnly | kAttributeHidden | kAttributeSystem;

struct OpenRequest {
  std::uint32_t access;
  std::uint32_t share;
  Disposition disposition;
  std::uint32_t flags;
};

Error OpenDevice(Disk& disk, const PathParts& parts, FileObject& file) {
  const simulated::Volume* volume = disk.FindVolume(parts.root);
  if (volume == nullptr) {
    return Error::kFileNotFound;
  }
  file.seek_penalty = volume->options.seek_penalty;
  return Error::kNone;
}

Error Create(Disk& disk, const PathParts& parts, const OpenRequest& request, std::uint64_t now,
             FileObject& file) {
  const simulated::Place place = disk.Locate(parts);
  if (place.error != Error::kNone) {
    return place.error == Error::kDirectory ? Error::kPathNotFound : place.error;
  }
  if (!simulated::IsPossibleName(place.name) || parts.trailing_separator) {
    return Error::kInvalidName;
  }
  if (place.node != nullptr) {
    return Error::kFileNotFound;  // a link that leads nowhere
  }
  if (place.folder->denial().opening) {
    return Error::kAccessDenied;
  }
  file.node = disk.Add(place.folder, place.name, NodeKind::kFile);
  file.node->attributes = (request.flags & kSettableAttributes) | kAttributeArchive;
  file.node->last_write = now;
  return Error::kNone;
}

Error OpenExisting(const Found& found, const PathParts& parts, const OpenRequest& request,
                   std::uint64_t now) {
  Node& node = *found.node;
  if (request.disposition == Disposition::kCreateNew) {
    return Error::kFileExists;
  }
  if (IsDirectory(node.attributes)) {
    return parts.trailing_separator || parts.rest.empty() ? Error::kPathNotFound
                                                          : Error::kAccessDenied;
  }
  const bool writes = (request.access & kAccessWrite) != 0;
  const bool replaces = request.disposition == Disposition::kCreateAlways;
  const bool read_only = (node.attributes & kAttributeReadOnly) != 0;
  if (node.denial().opening || (read_only && (writes || replaces))) {
    return Error::kAccessDenied;
  }
  // Replacing the content is a kind of writing, whatever is done with the handle afterwards.
  if (!node.Admits(request.access | (replaces ? kAccessWrite : 0), request.share)) {
    return Error::kSharingViolation;
  }
  if (replaces) {
    const Attributes kept = node.attributes & (kAttributeHidden | kAttributeSystem);
    if ((kept & ~request.flags) != 0) {
      return Error::kAccessDenied;
    }
    node.Truncate();
    node.attributes = (request.flags & kSettableAttributes) | kAttributeArchive;
    node.last_write = now;
  }
  return Error::kNone;
}

Error Open(Disk& disk, TextView path, const OpenRequest& request, std::uint64_t now,
           FileObject& file) {
  const PathParts parts = disk.Parse(path);
  if (parts.error == Error::kNone && parts.is_device) {
    return OpenDevice(disk, parts, file);
  }
  const Found found = disk.Walk(parts, LastLink::kFollow);
  if (found.error == Error::kFileNotFound && request.disposition != Disposition::kOpenExisting) {
    return Create(disk, parts, request, now, file);
  }
  if (found.error != Error::kNone) {
    return found.error;
  }
  file.node = found.node;
  return OpenExisting(found, parts, request, now);
}

// The object behind a handle that can be read and written, or an error.
Error Usable(const FileHandle& handle, const FileObject* file, std::uint32_t access) {
  if (!handle.valid()) {
    return Error::kInvalidHandle;
  }
  if (file->node == nullptr) {
    return Error::kInvalidFunction;  // a device
  }
  return (file->access & access) == access ? Error::kNone : Error::kAccessDenied;
}

void CloseInLedger(State& s, RawHandle raw) QS_REQUIRES(s.mutex) {
  const FileObject file = s.ledger.Close<FileObject>(raw);
  if (file.node != nullptr) {
    std::vector<OpenMode>& modes = file.node->Extras().open_modes;
    modes.erase(std::find_if(modes.begin(), modes.end(),
                             [&](const OpenMode& mode) { return mode.owner == raw; }));
  }
}

}  // namespace

Result<FileHandle> OpenFile(const Char* path, std::uint32_t access, std::uint32_t share,
                            Disposition disposition, std::uint32_t flags) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kOpenFile, path, access);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  FileObject file;
  file.access = access;
  const Error error =
      Open(s.disk, ViewOf(path), {access, share, disposition, flags}, s.file_time.load(), file);
  if (error != Error::kNone) {
    return call.Answer(error);
  }
  const NodePtr node = file.node;
  const RawHandle raw = s.ledger.Open(std::move(file));
  if (node != nullptr) {
    node->Extras().open_modes.push_back({raw, access, share});
  }
  return FileHandle(raw);
}

Result<std::uint32_t> ReadFrom(const FileHandle& file, void* buffer, std::uint32_t size) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kReadFrom, nullptr, size);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  FileObject* object = file.valid() ? &s.ledger.Get<FileObject>(file.raw()) : nullptr;
  if (const Error error = Usable(file, object, kAccessRead); error != Error::kNone) {
    return call.Answer(error);
  }
  const std::uint32_t count = object->node->Read(object->offset, buffer, size);
  object->offset += count;
  return count;
}

Result<std::uint32_t> WriteTo(const FileHandle& file, const void* data,
                              std::uint32_t size) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kWriteTo, nullptr, size);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  FileObject* object = file.valid() ? &s.ledger.Get<FileObject>(file.raw()) : nullptr;
  if (const Error error = Usable(file, object, kAccessWrite); error != Error::kNone) {
    return call.Answer(error);
  }
  object->node->Write(object->offset, data, size);
  object->node->last_write = s.file_time.load();
  object->offset += size;
  return size;
}

Error SeekTo(const FileHandle& file, std::int64_t offset) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kSeekTo, nullptr, static_cast<std::uint64_t>(offset));
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  FileObject* object = file.valid() ? &s.ledger.Get<FileObject>(file.raw()) : nullptr;
  if (const Error error = Usable(file, object, 0); error != Error::kNone) {
    return call.Answer(error);
  }
  if (offset < 0) {
    return call.Answer(kNegativeSeek);
  }
  object->offset = static_cast<std::uint64_t>(offset);
  return call.Answer(Error::kNone);
}

Result<std::int64_t> QuerySize(const FileHandle& file) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kQuerySize);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const FileObject* object = file.valid() ? &s.ledger.Get<FileObject>(file.raw()) : nullptr;
  if (const Error error = Usable(file, object, 0); error != Error::kNone) {
    return call.Answer(error);
  }
  return static_cast<std::int64_t>(object->node->size);
}

Error FlushFile(const FileHandle& file) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kFlushFile);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const FileObject* object = file.valid() ? &s.ledger.Get<FileObject>(file.raw()) : nullptr;
  return call.Answer(Usable(file, object, kAccessWrite));
}

Error CloseFile(FileHandle file) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kCloseFile);
  MutexLock lock(s.mutex);
  const Error fault = FaultOf(s, call);
  if (!file.valid()) {
    return call.Answer(fault != Error::kNone ? fault : Error::kInvalidHandle);
  }
  // Also after a failure: nobody can close it a second time.
  CloseInLedger(s, file.Release());
  return call.Answer(fault);
}

void FilePolicy::Close(RawHandle raw) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kCloseFile);
  MutexLock lock(s.mutex);
  CloseInLedger(s, raw);
}

}  // namespace quastel::platform
