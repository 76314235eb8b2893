#include "fuzz/sequence/watch.h"

#include <utility>

#include "fuzz/demand.h"
#include "platform/file.h"

namespace quastel::fuzz::sequence {
namespace {

using simulated::Call;
using simulated::CallRecord;

thread_local int quiet_depth = 0;

// Calls that look at or change what is on the disks. The others are made under locks of the
// library, or by several threads in any order.
bool IsAboutDisks(Call call) {
  switch (call) {
    case Call::kQueryAttributes:
    case Call::kQueryFileFacts:
    case Call::kRemoveFile:
    case Call::kRemoveFolder:
    case Call::kRenameFile:
    case Call::kFindFirstBasic:
    case Call::kFindFirst:
    case Call::kFindNext:
    case Call::kOpenFile:
    case Call::kReadFrom:
    case Call::kWriteTo:
    case Call::kSeekTo:
    case Call::kSleepMilliseconds:
    case Call::kEnvironmentVariable:
    case Call::kCreateFolderTree:
    case Call::kShellDelete:
    case Call::kMarkForDeletion:
    case Call::kPerformOperations:
      return true;
    default:
      return false;
  }
}

Text TemporaryCacheFile() {
  return Text(kCacheFile) + u".tmp";
}

}  // namespace

Watch::Quiet::Quiet() {
  ++quiet_depth;
}
Watch::Quiet::~Quiet() {
  --quiet_depth;
}

Watch::Watch(World& world) : world_(world) {
  world_.machine().SetHook([this](const CallRecord& record) { OnCall(record); });
}

Watch::~Watch() {
  world_.machine().SetHook(nullptr);
}

void Watch::Begin(Permission permission) {
  const std::lock_guard lock(mutex_);
  permission_ = std::move(permission);
  looked_at_.clear();
  removed_.clear();
  calls_ = interrupt_at_ = 0;
  interruption_ = nullptr;
}

void Watch::InterruptAt(std::uint64_t nth, std::function<void()> interruption) {
  const std::lock_guard lock(mutex_);
  interrupt_at_ = nth;
  interruption_ = std::move(interruption);
}

void Watch::End() {
  Begin({});
}

void Watch::OnCall(const CallRecord& record) {
  if (!IsAboutDisks(record.call)) {
    return;
  }
  Demand(quiet_depth == 0, "what is refused or only asked for makes no call about the disks");
  const std::lock_guard lock(mutex_);
  if (++calls_ == interrupt_at_ && interruption_ != nullptr) {
    interruption_();
  }
  Check(record);
}

// A file is removed only if it looked like what was named when it was asked about last.
void Watch::DemandMatched(const Text& key) {
  if (permission_.paths.contains(key)) {
    return;
  }
  const auto looked = looked_at_.find(key);
  Demand(looked != looked_at_.end(), "a file is looked at before it is removed");
  bool matches = false;
  const auto [first, last] = permission_.files.equal_range(key);
  for (auto at = first; at != last; ++at) {
    matches |= at->second == looked->second;
  }
  Demand(matches, "only what was named and looked unchanged is removed");
}

void Watch::Check(const CallRecord& record) {
  const auto key = [&record] { return KeyOf(record.path); };
  switch (record.call) {
    case Call::kQueryFileFacts:
      if (permission_.files.contains(key())) {
        const Disk disk = world_.Look();
        const Node* const node = disk.Reach(key());
        looked_at_.erase(key());
        if (node != nullptr && node->IsPlainFile()) {
          looked_at_[key()] = {static_cast<std::int64_t>(node->size), disk.TicksOf(*node)};
        }
      }
      break;
    case Call::kRemoveFile:
      if (permission_.cache && key() == TemporaryCacheFile()) {
        break;
      }
      DemandMatched(key());
      removed_.insert(key());
      break;
    case Call::kMarkForDeletion:
    case Call::kPerformOperations:
    case Call::kShellDelete:
      Demand(permission_.recycles, "the Recycle Bin is used when it was asked for");
      break;
    case Call::kRemoveFolder: {
      bool is_parent = false;
      for (const Text& file : removed_) {
        is_parent |= permission_.parents && ParentKeyOf(file) == key();
      }
      Demand(is_parent || permission_.paths.contains(key()),
             "a folder is removed when it was named, or after a junk file in it");
      break;
    }
    case Call::kRenameFile:
      Demand(permission_.cache && key() == TemporaryCacheFile(), "only the cache is renamed");
      break;
    case Call::kOpenFile:
      Demand((record.number & platform::kAccessWrite) == 0 ||
                 (permission_.cache && key() == TemporaryCacheFile()),
             "only the cache is written");
      break;
    case Call::kCreateFolderTree:
      Demand(permission_.cache && key() == kCacheFolder, "only the folder of the cache is made");
      break;
    default:
      break;
  }
}

}  // namespace quastel::fuzz::sequence
