#include "fuzz/sequence/direct_calls.h"

#include <string>
#include <utility>
#include <vector>

#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "fuzz/sequence/comparison.h"
#include "fuzz/sequence/walk_model.h"
#include "quastel_core.h"

namespace quastel::fuzz::sequence {
namespace {

using simulated::LinkKind;

// ---- Removing.

void Delete(World& world, Watch& watch, Input& input, CallSequenceSeen& seen) {
  const Text path = world.SomePath(input);
  const Text key = KeyOf(path);
  world.ForgetTouched();
  Disk disk = world.Look();
  const Node* const node = disk.Reach(key);
  // Mostly the right snapshot, else one that is a little off.
  auto size = node == nullptr ? std::int64_t{0} : static_cast<std::int64_t>(node->size);
  auto ticks = node == nullptr ? std::int64_t{0} : static_cast<std::int64_t>(disk.TicksOf(*node));
  size = input.OneIn(6) ? (input.OneIn(2) ? -1 : size + 1) : size;
  ticks += input.OneIn(6) ? 1 : 0;
  const bool matches = disk.MatchesSnapshot(key, size, static_cast<std::uint64_t>(ticks));

  Permission permission;
  permission.paths.insert(key);
  std::int32_t answer = 0;
  bool goes = false;
  const std::size_t kind = input.Below(5);
  permission.recycles = kind == 1 || kind == 3;
  watch.Begin(std::move(permission));
  switch (kind) {
    case 0:
      goes = disk.CanDelete(key);
      answer = qs_delete_permanently(path.c_str());
      break;
    case 1:
      goes = disk.CanRecycle(key);
      answer = qs_move_to_recycle_bin(path.c_str());
      break;
    case 2:
      goes = matches && disk.CanDelete(key);
      answer = qs_delete_snapshot_permanently(path.c_str(), size, ticks);
      break;
    case 3:
      goes = matches && disk.CanRecycle(key);
      answer = qs_move_snapshot_to_recycle_bin(path.c_str(), size, ticks);
      break;
    default:
      Demand(qs_file_matches_snapshot(path.c_str(), size, ticks) == (matches ? 1 : 0),
             "whether a file is what was seen");
      break;
  }
  watch.End();
  Demand(answer == (goes ? 1 : 0), "whether something is removed");
  if (goes) {
    disk.Remove(key);
    ++seen.direct;
  }
  DemandDisk(world, disk, false);
}

// ---- Walking.

struct Collected {
  std::vector<FoundFile> files;
  std::vector<Text> folders;
  std::uint32_t cancel = 0;
  std::size_t cancel_after = 0;
};

void OnFile(void* user, const Char* path, std::uint64_t size, std::uint64_t last_write,
            const Char* name) {
  auto& collected = *static_cast<Collected*>(user);
  collected.files.push_back({path, name, KeyOf(path), size, last_write});
  collected.cancel = collected.files.size() == collected.cancel_after ? 7 : collected.cancel;
}

void OnFolder(void* user, const Char* path) {
  static_cast<Collected*>(user)->folders.emplace_back(path);
}

bool Same(const FoundFile& a, const FoundFile& b) {
  return a.path == b.path && a.name == b.name && a.size == b.size && a.modified == b.modified;
}

void Enumerate(World& world, Input& input) {
  static const Char* const kPatterns[] = {nullptr, u"", u"*", u"*.log", u"f0", u"F1"};
  const Text root = world.SomeFolder(input);
  const Char* const pattern = input.OneOf(kPatterns);
  const bool recursive = !input.OneIn(3);
  const bool protect = input.OneIn(3);
  const Disk disk = world.Look();
  const std::vector<FoundFile> expected =
      FilesOf(disk, {.root = root,
                     .pattern = pattern == nullptr ? Text() : Text(pattern),
                     .recursive = recursive,
                     .protect = protect});
  Collected collected;
  collected.cancel_after = input.OneIn(4) ? 1 + input.Below(4) : 0;
  const qs_status status = qs_enumerate_files_ex(
      root.c_str(), pattern, recursive ? 2 : 0, protect ? 1 : 0, protect ? kSystemRoot : nullptr,
      kUserHome, OnFile, &collected, input.OneIn(2) ? &collected.cancel : nullptr);
  const bool cut = status == QS_CANCELLED;
  Demand(cut ? collected.files.size() == collected.cancel_after
             : status == QS_OK && collected.files.size() == expected.size(),
         "a walk reports every file, or those before the cancel");
  Demand(!cut || collected.cancel == 7, "the cancel flag is never changed");
  for (std::size_t i = 0; i < collected.files.size(); ++i) {
    Demand(Same(collected.files[i], expected[i]), "a walk reports the files in order");
  }

  Demand(qs_enumerate_directories(root.c_str(), OnFolder, &collected, nullptr) == QS_OK &&
             collected.folders == FoldersOf(disk, root),
         "the subfolders of a folder");
  Demand(qs_directory_exists(root.c_str()) == (disk.WalkRoot(KeyOf(root)) != nullptr ? 1 : 0),
         "whether a folder can be entered");
  Demand(qs_empty_directory_eligible(root.c_str()) == (disk.IsOfferedAsEmpty(root) ? 1 : 0),
         "whether a folder may be offered as empty");
}

// ---- Reading.

void Read(World& world, Input& input) {
  const Text path = world.SomePath(input);
  const Text key = KeyOf(path);
  const Disk disk = world.Look();
  const Node* const node = disk.Reach(key);
  const bool readable = disk.CanRead(key);
  if (readable && node->size >= kSizedFile) {
    return;  // only slow
  }
  // What is reached through a link may be read.
  const bool certain = readable || (disk.Find(key) == nullptr) == (node == nullptr);
  GuardedBuffer<char> hash(input.OneIn(4) ? 8 : 9);
  std::uint32_t cancel = input.OneIn(6) ? 1 : 0;
  const qs_status status =
      qs_xxhash32_file_cancelable(path.c_str(), hash.data(), hash.capacity(), &cancel);
  if (hash.capacity() < 9) {
    Demand(status == QS_BUFFER_TOO_SMALL, "a hash needs 9 characters");
  } else if (readable) {
    const std::string content = world.machine().ContentOf(node->path).value();
    char expected[9] = {};
    Demand(qs_xxhash32_hex(content.data(), content.size(), expected, 9) == QS_OK, "hashing bytes");
    Demand(status == (cancel != 0 ? QS_CANCELLED : QS_OK), "a file that can be read has a hash");
    if (status == QS_OK) {
      hash.DemandHolds(expected, "the hash of a file is that of its bytes");
      Demand(qs_xxhash32_file(path.c_str(), hash.data(), 9) == QS_OK, "a hash without a flag");
      hash.DemandHolds(expected, "both ways of hashing agree");
    }
  } else if (certain && (node == nullptr || !node->is_link)) {
    Demand(status == QS_FAILED, "what cannot be read has no hash");
  }
  if (status != QS_OK) {
    hash.DemandUntouched("a refusal writes nothing");
  }
  GuardedBuffer<char> sample(input.OneIn(4) ? 300 : 301);
  const qs_status sampled = qs_duplicate_sample_hex(
      path.c_str(), node == nullptr ? 5 : static_cast<std::int64_t>(node->size), sample.data(),
      sample.capacity());
  Demand(sample.capacity() < 301 ? sampled == QS_BUFFER_TOO_SMALL
                                 : sampled == QS_OK || (sampled == QS_FAILED && !readable),
         "a file that can be read has a sample");
  if (sampled != QS_OK) {
    sample.DemandUntouched("a refusal writes nothing");
  }
}

}  // namespace

void CallDirectly(World& world, Watch& watch, Input& input, CallSequenceSeen& seen) {
  switch (input.Below(4)) {
    case 0:
    case 1:
      Delete(world, watch, input, seen);
      break;
    case 2:
      Enumerate(world, input);
      break;
    default:
      Read(world, input);
      break;
  }
  Demand(world.machine().open_handles() == 0, "nothing is left open");
}

}  // namespace quastel::fuzz::sequence
