#include "saved_report.h"

#include <windows.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <utility>

#include "full_path.h"
#include "name_order.h"
#include "path_complaint.h"
#include "path_text.h"
#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

using nlohmann::json;

constexpr std::uint64_t kSchemaVersion = 1;
constexpr std::uint64_t kLargestSize = std::numeric_limits<std::int64_t>::max();

struct Malformed {
  std::string what;
};

const json& Member(const json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) {
    throw Malformed{std::string("\"") + name + "\" is missing"};
  }
  return *found;
}

std::uint64_t Number(const json& object, const char* name) {
  const json& value = Member(object, name);
  if (!value.is_number_unsigned()) {
    throw Malformed{std::string("\"") + name + "\" is not a whole number"};
  }
  return value.get<std::uint64_t>();
}

std::string String(const json& object, const char* name) {
  const json& value = Member(object, name);
  if (!value.is_string()) {
    throw Malformed{std::string("\"") + name + "\" is not a text"};
  }
  return value.get<std::string>();
}

// Four hexadecimal digits for each unit, for a name that is no Unicode text.
std::wstring FromHexUnits(const std::string& digits) {
  std::wstring text;
  for (std::size_t i = 0; i < digits.size(); i += 4) {
    unsigned unit = 0;
    const char* const begin = digits.data() + i;
    const char* const end = begin + 4;
    if (digits.size() - i < 4 || std::from_chars(begin, end, unit, 16).ptr != end || unit == 0) {
      throw Malformed{"\"path_utf16\" is not four hexadecimal digits for each unit"};
    }
    text.push_back(static_cast<wchar_t>(unit));
  }
  return text;
}

bool IsAbsolute(const std::wstring& path) {
  const bool drive = path.size() > 3 && path[1] == L':' && IsSeparator(path[2]);
  const bool network = path.size() > 3 && IsSeparator(path[0]) && IsSeparator(path[1]);
  return drive || network;
}

std::wstring Path(const json& row) {
  const std::string shown = String(row, "path");
  std::wstring path = FromUtf8(shown);
  if (row.contains("path_utf16")) {
    path = FromHexUnits(String(row, "path_utf16"));
    if (ToUtf8(path) != shown) {
      throw Malformed{"\"path\" and \"path_utf16\" are different paths"};
    }
  }
  if (!IsAbsolute(path) || path.find(L'\0') != std::wstring::npos) {
    throw Malformed{"\"path\" is not a full path"};
  }
  return path;
}

// JSON tools that keep numbers as floating point lose the last digits of a time, so the report has
// it as a text as well.
std::uint64_t Ticks(const json& row) {
  const json& number = Member(row, "modified_ticks");
  if (!number.is_number() || number < 0) {
    throw Malformed{"\"modified_ticks\" is not a number"};
  }
  if (!row.contains("modified_ticks_text")) {
    return Number(row, "modified_ticks");
  }
  const std::string digits = String(row, "modified_ticks_text");
  std::uint64_t ticks = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, ticks);
  if (digits.empty() || stop != end || error != std::errc()) {
    throw Malformed{"\"modified_ticks_text\" is not a whole number"};
  }
  const double difference = static_cast<double>(ticks) - number.get<double>();
  if (difference > 4096.0 || difference < -4096.0) {
    throw Malformed{"\"modified_ticks\" and \"modified_ticks_text\" are different times"};
  }
  return ticks;
}

CleanFile Row(const json& row, bool junk) {
  if (!row.is_object()) {
    throw Malformed{"it is not an object"};
  }
  CleanFile file;
  file.item_id = Number(row, "item_id");
  file.group_id = Number(row, "group_id");
  file.path = Path(row);
  const std::uint64_t size = Number(row, "size");
  if (size > kLargestSize) {
    throw Malformed{"\"size\" is too large"};
  }
  file.size = static_cast<std::int64_t>(size);
  file.modified = Ticks(row);
  if (junk) {
    const json& selected = Member(row, "selected");
    if (!selected.is_boolean()) {
      throw Malformed{"\"selected\" is neither true nor false"};
    }
    file.selected = selected.get<bool>();
    file.rule_folder = FromUtf8(String(row, "folder"));
  }
  return file;
}

// What holds for the rows together.
class RowChecks {
 public:
  RowChecks(const std::string& command, std::vector<std::wstring> roots)
      : duplicates_(command == "duplicates"), junk_(command == "junk"), roots_(std::move(roots)) {}

  void Take(const CleanFile& file) {
    if (!ids_.insert(file.item_id).second) {
      throw Malformed{"\"item_id\" is that of an earlier row"};
    }
    if (!junk_) {
      CheckRoot(file);
    }
    if (duplicates_) {
      CheckGroup(file);
    }
  }

 private:
  struct NameLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
      return CompareNames(a, b) < 0;
    }
  };

  void CheckRoot(const CleanFile& file) const {
    for (const std::wstring& root : roots_) {
      if (IsBelow(file.path, root)) {
        return;
      }
    }
    throw Malformed{"\"path\" lies below none of the report's roots"};
  }

  void CheckGroup(const CleanFile& file) {
    if (!paths_.insert(WithoutExtendedPrefix(file.path)).second) {
      throw Malformed{"\"path\" is that of an earlier row"};
    }
    if (sizes_.emplace(file.group_id, file.size).first->second != file.size) {
      throw Malformed{"\"size\" is not that of the other files of its group"};
    }
  }

  const bool duplicates_;
  const bool junk_;
  const std::vector<std::wstring> roots_;
  std::set<std::uint64_t> ids_;
  std::set<std::wstring, NameLess> paths_;
  std::map<std::uint64_t, std::int64_t> sizes_;
};

std::string Command(const json& report) {
  const std::uint64_t version = Number(report, "schema_version");
  if (version != kSchemaVersion) {
    throw Malformed{"it has schema version " + std::to_string(version) +
                    ", and this program reads " + std::to_string(kSchemaVersion)};
  }
  std::string command = String(report, "command");
  if (command != "large" && command != "duplicates" && command != "junk") {
    throw Malformed{"it is a report of \"" + command + "\", which lists no files to clean"};
  }
  const std::string status = String(report, "status");
  if (status != "ok" && status != "cancelled") {
    throw Malformed{"its scan failed"};
  }
  return command;
}

std::vector<std::wstring> Roots(const json& report) {
  std::vector<std::wstring> roots;
  const json& list = Member(report, "roots");
  if (!list.is_array()) {
    throw Malformed{"\"roots\" is not a list"};
  }
  for (const json& root : list) {
    if (!root.is_string() || root.get<std::string>().empty()) {
      throw Malformed{"\"roots\" holds what is no path"};
    }
    roots.push_back(FromUtf8(root.get<std::string>()));
  }
  return roots;
}

SavedReport FromJson(const json& report) {
  if (!report.is_object()) {
    throw Malformed{"it is not an object"};
  }
  SavedReport saved;
  saved.command = Command(report);
  const bool junk = saved.command == "junk";
  RowChecks checks(saved.command, junk ? std::vector<std::wstring>() : Roots(report));
  const json& rows = Member(report, "rows");
  if (!rows.is_array()) {
    throw Malformed{"\"rows\" is not a list"};
  }
  std::size_t number = 0;
  for (const json& row : rows) {
    ++number;
    try {
      saved.files.push_back(Row(row, junk));
      checks.Take(saved.files.back());
    } catch (const Malformed& malformed) {
      throw Malformed{"row " + std::to_string(number) + ": " + malformed.what};
    }
  }
  return saved;
}

std::optional<std::string> ReadWhole(const std::wstring& path, DWORD& error) {
  HANDLE file = CreateFileW(SystemForm(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                            OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    error = GetLastError();
    return std::nullopt;
  }
  std::string text;
  std::string block(std::size_t{1} << 20, '\0');
  DWORD count = 0;
  BOOL ok = FALSE;
  while ((ok = ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &count, nullptr)) !=
             FALSE &&
         count > 0) {
    text.append(block, 0, count);
  }
  error = GetLastError();
  CloseHandle(file);
  return ok != FALSE ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace

SavedReport ReadSavedReport(const std::wstring& path) {
  DWORD error = ERROR_SUCCESS;
  const std::optional<std::string> text = ReadWhole(path, error);
  if (!text) {
    const PathComplaint complaint = WhyNotFound(path, path, error, "the report");
    throw UserError(ExitCode::kError, complaint.message, complaint.hint);
  }
  return ParseSavedReport(*text, Quoted(path));
}

SavedReport ParseSavedReport(const std::string& text, const std::string& name) {
  const std::string nothing_touched = "nothing was touched; make a new report with --json";
  try {
    return FromJson(json::parse(text));
  } catch (const json::parse_error& error) {
    throw UserError(ExitCode::kError,
                    name + " is no whole JSON text (it breaks off, or has a mistake, at byte " +
                        std::to_string(error.byte) + ")",
                    nothing_touched);
  } catch (const Malformed& malformed) {
    throw UserError(ExitCode::kError, name + " is no report to clean by: " + malformed.what,
                    nothing_touched);
  }
}

}  // namespace quastel::client
