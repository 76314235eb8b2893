// platform/shell.h: folders, the older deletion call, and COM with its file operation.

#include "platform/shell.h"

#include <algorithm>

#include "base/ascii.h"
#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::Disk;
using simulated::FaultOf;
using simulated::FileOperationObject;
using simulated::Found;
using simulated::InsideScope;
using simulated::LastLink;
using simulated::Living;
using simulated::Node;
using simulated::NodeKind;
using simulated::PathParts;
using simulated::SeamCall;
using simulated::ShellItemObject;
using simulated::State;

constexpr Error kBadPathName{161};
constexpr ComResult kComInvalidArgument = 0x80070057;
constexpr ComResult kComNotInitialized = 0x800401F0;
constexpr std::uint32_t kAllowUndo = 0x40;

// What SHFileOperationW has answered since before there were system errors for it.
constexpr std::int32_t kShellAccessDenied = 0x78;
constexpr std::int32_t kShellPathTooDeep = 0x79;
constexpr std::int32_t kShellInvalidFiles = 0x7C;

ComResult ComResultOf(Error error) {
  const auto number = static_cast<std::uint32_t>(error);
  return ComSucceeded(number) ? 0x80070000u | number : number;
}

// Makes the folder unless it is there; a missing parent is an error.
Error CreateOne(Disk& disk, const PathParts& parts, std::uint64_t now) {
  const simulated::Place place = disk.Locate(parts);
  if (place.error != Error::kNone) {
    return Error::kPathNotFound;
  }
  if (!simulated::IsPossibleName(place.name)) {
    return Error::kInvalidName;
  }
  if (place.node != nullptr) {
    return Error::kAlreadyExists;
  }
  if (place.folder->denial().opening) {
    return Error::kAccessDenied;
  }
  const simulated::NodePtr folder = disk.Add(place.folder, place.name, NodeKind::kFolder);
  folder->attributes = kAttributeDirectory;
  folder->last_write = now;
  return Error::kNone;
}

Error CreateTree(Disk& disk, TextView path, std::uint64_t now) {
  const bool absolute = path.size() >= 2 && (path[1] == Char{':'} || path[0] == Char{'\\'});
  if (!absolute) {
    return kBadPathName;
  }
  if (path.size() >= simulated::kFolderCreateLimit) {
    return Error::kFilenameTooLong;
  }
  const PathParts whole = disk.Parse(path, simulated::kFolderCreateLimit);
  if (whole.error != Error::kNone) {
    return whole.error;
  }
  if (whole.rest.empty()) {
    return Error::kAlreadyExists;
  }
  // The shell looks for parents at "\" alone; names joined by "/" are one step for it.
  for (std::size_t end = path.find(Char{'\\'}); end != TextView::npos;
       end = path.find(Char{'\\'}, end + 1)) {
    const PathParts parent = disk.Parse(path.substr(0, end), simulated::kFolderCreateLimit);
    if (parent.error != Error::kNone || parent.is_device || parent.rest.empty()) {
      continue;  // still within the root
    }
    const Error error = CreateOne(disk, parent, now);
    if (error != Error::kNone && error != Error::kAlreadyExists) {
      return error;
    }
  }
  return CreateOne(disk, whole, now);
}

// Why the shell cannot remove what is there, or kNone. Its confirmations being off, it removes
// what is read-only as well.
Error ObstacleForShell(const Node& node) {
  const Error obstacle = Disk::ObstacleToDeleting(node);
  const bool read_only = (node.attributes & kAttributeReadOnly) != 0;
  return obstacle == Error::kAccessDenied && read_only && !node.denial().deleting ? Error::kNone
                                                                                  : obstacle;
}

Error RemoveByShell(State& s, TextView path, std::uint32_t flags) QS_REQUIRES(s.mutex) {
  const Found found = s.disk.Open(path, LastLink::kItself);
  if (found.error != Error::kNone) {
    return found.error;
  }
  if (const Error obstacle = ObstacleForShell(*found.node); obstacle != Error::kNone) {
    return obstacle;
  }
  if ((flags & kAllowUndo) != 0) {
    s.recycled.push_back(s.disk.PathOf(*found.node));
  }
  s.disk.Unlink(*found.node);
  s.ForgetParent();
  return Error::kNone;
}

std::int32_t DeleteOne(State& s, TextView path, std::uint16_t flags) QS_REQUIRES(s.mutex) {
  if (StartsWithFolded(path, QS_TEXT("\\\\?\\"))) {
    return kShellInvalidFiles;
  }
  if (path.size() >= simulated::kPathLimit) {
    return kShellPathTooDeep;
  }
  if (!s.shell.delete_removes) {
    return 0;
  }
  const Error error = RemoveByShell(s, path, flags);
  return error == Error::kAccessDenied ? kShellAccessDenied : static_cast<std::int32_t>(error);
}

bool IsComReady(const State& s) QS_REQUIRES(s.mutex) {
  const auto depth = s.com_depth.find(simulated::ThreadKey());
  return s.shell.multithreaded || (depth != s.com_depth.end() && depth->second > 0);
}

}  // namespace

Error CreateFolderTree(const Char* path) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kCreateFolderTree, path);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  return call.Answer(CreateTree(s.disk, ViewOf(path), s.file_time.load()));
}

ShellOperationResult ShellDelete(const Char* paths, std::uint16_t flags) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kShellDelete, paths, flags);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(ShellOperationResult{static_cast<std::int32_t>(fault), false}, fault);
  }
  ShellOperationResult result{s.shell.delete_code, s.shell.delete_aborted};
  if (result.code == 0 && !result.aborted) {
    for (const Char* path = paths; *path != 0 && result.code == 0;
         path += ViewOf(path).size() + 1) {
      result.code = DeleteOne(s, path, flags);
    }
  }
  return call.AnswerValue(result, static_cast<Error>(result.code));
}

ComResult InitializeCom() noexcept {
  State& s = Living();
  SeamCall call(s, Call::kInitializeCom);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    const ComResult result = ComResultOf(fault);
    // COM is there, in the other kind of apartment.
    s.shell.multithreaded = s.shell.multithreaded || result == kComChangedMode;
    return call.AnswerValue(result, fault);
  }
  if (s.shell.multithreaded) {
    return call.AnswerValue(kComChangedMode, static_cast<Error>(kComChangedMode));
  }
  return ++s.com_depth[simulated::ThreadKey()] == 1 ? kComOk : kComAlreadyInitialized;
}

void UninitializeCom() noexcept {
  State& s = Living();
  SeamCall call(s, Call::kUninitializeCom);
  MutexLock lock(s.mutex);
  const auto depth = s.com_depth.find(simulated::ThreadKey());
  if (depth == s.com_depth.end()) {
    simulated::Die("COM was uninitialised on a thread that had not initialised it");
  }
  if (--depth->second == 0) {
    s.com_depth.erase(depth);
  }
}

void ComPolicy::Close(RawHandle raw) noexcept {
  const InsideScope inside;
  State& s = Living();
  MutexLock lock(s.mutex);
  if (!IsComReady(s)) {
    simulated::Die("a COM object was released after COM had been uninitialised on the thread");
  }
  s.ledger.CloseCom(raw);
}

ComResult CreateFileOperation(FileOperation& operation) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kCreateFileOperation);
  operation.Reset();
  RawHandle raw = 0;
  {
    MutexLock lock(s.mutex);
    if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
      return call.AnswerValue(ComResultOf(fault), fault);
    }
    if (!IsComReady(s)) {
      return call.AnswerValue(kComNotInitialized, static_cast<Error>(kComNotInitialized));
    }
    raw = s.ledger.Open(FileOperationObject{});
  }
  operation.Reset(raw);
  return kComOk;
}

ComResult CreateShellItem(const Char* path, ShellItem& item) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kCreateShellItem, path);
  item.Reset();
  RawHandle raw = 0;
  {
    MutexLock lock(s.mutex);
    if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
      return call.AnswerValue(ComResultOf(fault), fault);
    }
    const TextView given = ViewOf(path);
    // The parser of the shell knows neither the long-path prefix nor "/" nor relative paths, but
    // it is not bound to 260 code units.
    const bool absolute = given.size() >= 3 && (given[1] == Char{':'} || given[1] == Char{'\\'});
    if (!absolute || simulated::HasVerbatimPrefix(given) ||
        given.find(Char{'/'}) != TextView::npos) {
      return call.AnswerValue(kComInvalidArgument, static_cast<Error>(kComInvalidArgument));
    }
    const Found found =
        s.disk.Walk(s.disk.Parse(given, simulated::kLongPathLimit), LastLink::kItself);
    if (found.error != Error::kNone) {
      const ComResult result = ComResultOf(found.error);
      return call.AnswerValue(result, static_cast<Error>(result));
    }
    raw = s.ledger.Open(ShellItemObject{s.disk.PathOf(*found.node)});
  }
  item.Reset(raw);
  return kComOk;
}

ComResult SetOperationFlags(const FileOperation& operation, std::uint32_t flags) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kSetOperationFlags, nullptr, flags);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(ComResultOf(fault), fault);
  }
  s.ledger.Get<FileOperationObject>(operation.raw()).flags = flags;
  return kComOk;
}

ComResult MarkForDeletion(const FileOperation& operation, const ShellItem& item) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kMarkForDeletion);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(ComResultOf(fault), fault);
  }
  const Text path = s.ledger.Get<ShellItemObject>(item.raw()).path;
  s.ledger.Get<FileOperationObject>(operation.raw()).marked.push_back(path);
  return kComOk;
}

ComResult PerformOperations(const FileOperation& operation) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kPerformOperations);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(ComResultOf(fault), fault);
  }
  FileOperationObject& object = s.ledger.Get<FileOperationObject>(operation.raw());
  object.aborted = s.shell.aborts;
  if (s.shell.aborts || s.shell.ineffective) {
    return kComOk;
  }
  for (const Text& path : object.marked) {
    // The marked paths come from shell items and are not bound to 260 code units.
    Text long_path;
    if (path[0] == Char{'\\'}) {
      long_path = QS_TEXT("\\\\?\\UNC") + path.substr(1);
    } else {
      long_path = QS_TEXT("\\\\?\\") + path;
    }
    // Without dialogs, what cannot be removed counts as an operation that the user has aborted.
    object.aborted = RemoveByShell(s, long_path, object.flags) != Error::kNone || object.aborted;
  }
  object.marked.clear();
  return kComOk;
}

ComResult QueryOperationsAborted(const FileOperation& operation, bool& aborted) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kQueryOperationsAborted);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(ComResultOf(fault), fault);
  }
  aborted = s.ledger.Get<FileOperationObject>(operation.raw()).aborted;
  return kComOk;
}

}  // namespace quastel::platform
