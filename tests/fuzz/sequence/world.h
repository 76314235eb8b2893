// The machine of one run: a small tree in which everything happens, and the changes that other
// processes make to it.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_WORLD_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_WORLD_H_

#include <cstdint>
#include <map>
#include <set>

#include "base/text.h"
#include "fuzz/input.h"
#include "fuzz/sequence/disk.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz::sequence {

inline constexpr const Char* kUserHome = u"C:\\Users\\u";
inline constexpr const Char* kSystemRoot = u"C:\\";
inline constexpr const Char* kRulesPath = u"D:\\rules.xml";
// The folder of the hash cache and the file, as keys.
inline constexpr const Char* kCacheFolder =
    u"c:\\users\\u\\appdata\\local\\vantrelloc\\ferrowynd\\cache";
inline constexpr const Char* kCacheFile =
    u"c:\\users\\u\\appdata\\local\\vantrelloc\\ferrowynd\\cache\\duplicate-hashes-v1.bin";

// Files of this size and more have contents of their own: nobody reads them to the end.
inline constexpr std::uint64_t kSizedFile = 10'485'760;

class World {
 public:
  World();

  simulated::SimulatedWindows& machine() { return machine_; }

  // The disks now.
  Disk Look();

  // A path of the tree, which need not exist, in one of its spellings.
  Text SomePath(Input& input);
  Text SomeFolder(Input& input);

  // One change by somebody else. What it touched is remembered, with everything below.
  void Change(Input& input);
  void WriteRules(const std::string& document);

  bool IsTouched(const Text& key) const;
  void ForgetTouched() { touched_.clear(); }
  // Goes up with every change that a running scan or clean can notice.
  std::uint64_t changes() const { return changes_; }

  // Other contents of a file never have its earlier time.
  std::uint64_t NextTime() { return last_time_ += 10'000'000; }

 private:
  Text FilePath(Input& input);
  void WriteFile(const Text& path, Input& input);
  void ChangeFile(const Text& path, const Text& key, Input& input);
  void ReplaceByLink(const Text& path, const Text& key, Input& input);
  void Forget(const Text& key);

  simulated::SimulatedWindows machine_;
  std::map<Text, Hindrance> hindrances_;
  std::set<Text> touched_;
  std::uint64_t last_time_ = 133'000'000'000'000'000;
  std::int64_t zone_minutes_ = 0;
  std::uint64_t changes_ = 0;
};

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_WORLD_H_
