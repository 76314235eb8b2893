#ifndef QUASTEL_APPS_QUASTEL_SCAN_OPTIONS_H_
#define QUASTEL_APPS_QUASTEL_SCAN_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clean_options.h"
#include "command_options.h"
#include "rule_folders.h"

namespace quastel::client {

enum class SortKey { kSize, kPath, kModified, kCategory, kName, kReclaimable, kCount };

// What the junk scan may be told besides, as typed; empty where it was not.
struct JunkOptions {
  std::string rules;
  std::string category;
  RuleFolderOptions folders;
  bool list_files = false;
};

// What a scan command may be told.
struct ScanOptions {
  std::vector<std::wstring> roots;  // as typed
  bool json = false;
  std::wstring html;  // the page to make, absolute; empty for none
  bool protect = true;
  std::optional<std::uint64_t> top;
  std::optional<std::uint64_t> min_size;  // duplicates only
  JunkOptions junk;                       // junk only
  SortKey sort = SortKey::kSize;
  std::optional<CleanOptions> clean;  // what to do with what was found, if anything
};

// How a command sorts, what --top counts, and whether it is told where to scan.
struct ScanWords {
  std::vector<SortKey> keys;  // the first one is the default; none where the order is fixed
  std::string help;           // names the keys
  std::string things;         // "rows"
  bool takes_roots = true;
  bool protects = true;  // stays out of the protected folders unless told otherwise
};

// Lets `command` accept what all scan commands do; it must live until the arguments were parsed and
// read.
class ScanOptionParser {
 public:
  ScanOptionParser(CLI::App& command, const ScanWords& words);
  ScanOptions Read() const;

 private:
  std::optional<CommandOption> top_option_;
  std::optional<CommandOption> html_option_;
  std::vector<std::string> roots_;
  bool json_ = false;
  std::string html_;
  bool no_protect_ = false;
  std::uint64_t top_ = 0;
  std::string sort_;
};

const char* SortKeyName(SortKey key);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_OPTIONS_H_
