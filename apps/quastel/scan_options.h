#ifndef QUASTEL_APPS_QUASTEL_SCAN_OPTIONS_H_
#define QUASTEL_APPS_QUASTEL_SCAN_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quastel::client {

enum class SortKey { kSize, kPath, kModified, kCategory, kName, kReclaimable, kCount };

// What a scan command may be told.
struct ScanOptions {
  std::vector<std::wstring> roots;  // as typed
  bool json = false;
  bool protect = true;
  std::optional<std::uint64_t> top;
  std::optional<std::uint64_t> min_size;  // duplicates only
  SortKey sort = SortKey::kSize;
};

// How a command sorts and what --top counts.
struct SortWords {
  std::vector<SortKey> keys;  // the first one is the default
  std::string help;           // names the keys
  std::string things;         // "rows"
};

// Lets `command` accept what all scan commands do; it must live until the arguments were parsed and
// read.
class ScanOptionParser {
 public:
  ScanOptionParser(CLI::App& command, const SortWords& words);
  ScanOptions Read() const;

 private:
  const CLI::Option* top_option_;
  std::vector<std::string> roots_;
  bool json_ = false;
  bool no_protect_ = false;
  std::uint64_t top_ = 0;
  std::string sort_;
};

const char* SortKeyName(SortKey key);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_OPTIONS_H_
