#include "scan_options.h"

#include <array>
#include <utility>

#include "full_path.h"
#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

constexpr std::array<std::pair<SortKey, const char*>, 7> kSortKeys = {{
    {SortKey::kSize, "size"},
    {SortKey::kPath, "path"},
    {SortKey::kModified, "modified"},
    {SortKey::kCategory, "category"},
    {SortKey::kName, "name"},
    {SortKey::kReclaimable, "reclaimable"},
    {SortKey::kCount, "count"},
}};

std::vector<std::string> SortKeyNames(const std::vector<SortKey>& keys) {
  std::vector<std::string> names;
  for (const SortKey key : keys) {
    names.emplace_back(SortKeyName(key));
  }
  return names;
}

// The parser by itself takes "-1" for the largest number there is.
std::string CheckCount(const std::string& text, const std::string& things) {
  const bool digits = !text.empty() && text.size() < 19 &&
                      text.find_first_not_of("0123456789") == std::string::npos;
  return digits ? std::string() : text + " is not a number of " + things;
}

}  // namespace

ScanOptionParser::ScanOptionParser(CLI::App& command, const ScanWords& words) {
  if (words.takes_roots) {
    AddOption(command, "ROOT", roots_, "",
              "Folders to scan, with all below them; junctions and links are not entered")
        .Required();
  }
  AddFlag(command, "--json", json_, "Write one JSON object instead of a table");
  html_option_ = AddOption(
      command, "--html", html_, "FILE",
      "Also make a page for a browser, with a map of the folders and a table to sort and filter: "
      "a new file, nothing is overwritten");
  const auto check = [things = words.things](const std::string& text) {
    return CheckCount(text, things);
  };
  top_option_ = AddOption(command, "--top", top_, "N",
                          "List only the first N " + words.things + " after sorting")
                    .Check(check);
  if (!words.keys.empty()) {
    sort_ = SortKeyName(words.keys.front());
    AddOption(command, "--sort", sort_, "KEY", "Order of the " + words.things + ": " + words.help)
        .OneOf(SortKeyNames(words.keys))
        .ShowDefault();
  }
  if (words.takes_roots && words.protects) {
    AddFlag(command, "--no-protect", no_protect_,
            "Scan the system's folders and the profile's AppData too");
  }
}

ScanOptions ScanOptionParser::Read() const {
  ScanOptions options;
  for (const std::string& root : roots_) {
    options.roots.push_back(FromUtf8(root));
  }
  options.json = json_;
  if (html_option_->WasGiven()) {
    if (html_.empty()) {
      throw UserError(ExitCode::kUsage, "the name of the page is empty",
                      "write --html and a file that is not there yet");
    }
    options.html = FullPath(FromUtf8(html_));
  }
  options.protect = !no_protect_;
  if (top_option_->WasGiven()) {
    options.top = top_;
  }
  for (const auto& [key, name] : kSortKeys) {
    if (sort_ == name) {
      options.sort = key;
    }
  }
  return options;
}

const char* SortKeyName(SortKey key) {
  for (const auto& [candidate, name] : kSortKeys) {
    if (candidate == key) {
      return name;
    }
  }
  return "";
}

}  // namespace quastel::client
