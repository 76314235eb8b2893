#include "duplicate/duplicate_fixture.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "duplicate/textbook_xxh32.h"

namespace quastel::duplicate_tests {

namespace {

constexpr std::size_t kSmall = 150;
constexpr std::size_t kBlock = 4096;

std::string Hex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 15];
  }
  return text;
}

template <typename T>
void Store(std::string& out, T value, std::size_t width = sizeof(T)) {
  for (std::size_t i = 0; i < width; ++i) {
    out += static_cast<char>(value >> (8 * i) & 0xFF);
  }
}

// Takes from the front of bytes; remembers when there were too few.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {}

  std::string_view Take(std::uint64_t count) {
    if (count > rest_.size()) {
      ok_ = false;
      rest_ = {};
      return {};
    }
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }
  std::uint64_t Number(std::size_t width) {
    std::uint64_t value = 0;
    const std::string_view bytes = Take(width);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    return value;
  }
  bool ok() const { return ok_; }
  bool at_end() const { return rest_.empty(); }

 private:
  std::string_view rest_;
  bool ok_ = true;
};

}  // namespace

Request DuplicateRequest(std::vector<Text> roots) {
  Request request;
  request.kind = QS_SCAN_KIND_DUPLICATES;
  request.roots = std::move(roots);
  request.user_home = Text(kHome);
  return request;
}

std::string Bytes(std::size_t size, std::uint32_t seed) {
  std::string content(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    content[i] = static_cast<char>(SimulatedWindows::PatternByte(seed, i));
  }
  return content;
}

std::string ChangedAt(std::string content, std::size_t position) {
  content.at(position) = static_cast<char>(content.at(position) ^ 1);
  return content;
}

std::string HashOf(std::string_view content) {
  return TextbookText(content);
}

std::string HexOf(std::string_view content) {
  std::string whole(content.substr(0, kSmall));
  whole.resize(kSmall, '\0');
  return Hex(whole);
}

std::string HeadOf(std::string_view content) {
  return HashOf(content.substr(0, kBlock));
}

std::string SampleOf(std::string_view content) {
  if (content.size() <= kSmall) {
    return HexOf(content);
  }
  const std::size_t start = content.size() > kBlock ? content.size() - kBlock : 0;
  return HeadOf(content) + "|" + HashOf(content.substr(start));
}

std::string SampleKeyOf(std::string_view content) {
  return std::to_string(content.size()) + " " + SampleOf(content);
}

std::string GroupKeyOf(std::string_view content) {
  return content.size() <= kSmall ? SampleKeyOf(content)
                                  : SampleKeyOf(content) + " " + HashOf(content);
}

Outcome OutcomeOf(qs_product_scan* scan, qs_status status) {
  return {status, ReadReport(scan), Poll(scan), PerformanceOf(scan)};
}

Outcome Scan(Request request) {
  ScanHandle scan;
  const qs_status status = scan.Start(std::move(request));
  return OutcomeOf(scan, status);
}

Outcome ScanData() {
  return Scan(DuplicateRequest({u"C:\\data"}));
}

Row DuplicateRow(std::uint64_t item_id, std::uint64_t group_id, TextView path, TextView title,
                 std::string_view location, std::uint64_t size, std::uint64_t modified) {
  Row row;
  row.path = path;
  row.name = path.substr(path.find_last_of(Char{'\\'}) + 1);
  row.title = title;
  row.location = Wide(location);
  row.numbers.item_id = item_id;
  row.numbers.group_id = group_id;
  row.numbers.kind = QS_ROW_DUPLICATE;
  row.numbers.size = static_cast<std::int64_t>(size);
  row.numbers.modified = modified;
  row.numbers.deletable = 1;
  row.numbers.large_class = QS_LARGE_OTHER;
  return row;
}

Groups GroupsOf(const std::vector<Row>& rows) {
  Groups groups;
  const Row* first = nullptr;
  for (const Row& row : rows) {
    if (first == nullptr || row.numbers.group_id != first->numbers.group_id) {
      groups.emplace_back();
      first = &row;
    }
    EXPECT_EQ(row.numbers.item_id, static_cast<std::uint64_t>(&row - rows.data()));
    EXPECT_EQ(row.numbers.group_id, groups.size());
    EXPECT_EQ(Utf8(row.title), Utf8(first->name));
    EXPECT_EQ(Utf8(row.location), Utf8(first->location));
    EXPECT_EQ(row.numbers.size, first->numbers.size);
    groups.back().push_back(Utf8(row.path));
  }
  for (const std::vector<std::string>& group : groups) {
    EXPECT_GE(group.size(), 2u) << group.front();
  }
  return groups;
}

void PrintTo(const CacheRecord& record, std::ostream* out) {
  *out << Utf8(record.key) << ", " << record.size << " bytes, written " << record.last_write
       << ", confirmed " << record.confirmed << ", sample " << record.sample << ", hash "
       << record.hash;
}

std::string CacheBytes(const CacheRecords& records) {
  std::string bytes = "FWDCACH3";
  Store(bytes, static_cast<std::uint32_t>(records.size()));
  for (const CacheRecord& record : records) {
    Store(bytes, static_cast<std::uint32_t>(record.key.size()));
    for (const Char unit : record.key) {
      Store(bytes, static_cast<std::uint32_t>(unit), 2);
    }
    Store(bytes, record.size);
    Store(bytes, record.last_write);
    Store(bytes, record.confirmed);
    Store(bytes, static_cast<std::uint32_t>(record.sample.size()));
    bytes += record.sample;
    Store(bytes, static_cast<std::uint32_t>(record.hash.size()));
    bytes += record.hash;
  }
  return bytes;
}

std::optional<CacheRecords> ParseCache(std::string_view bytes) {
  Reader in(bytes);
  if (in.Take(8) != "FWDCACH3") {
    return std::nullopt;
  }
  CacheRecords records;
  for (std::uint64_t left = in.Number(4); left > 0 && in.ok(); --left) {
    CacheRecord record;
    for (std::uint64_t units = in.Number(4); units > 0 && in.ok(); --units) {
      record.key += static_cast<Char>(in.Number(2));
    }
    record.size = in.Number(8);
    record.last_write = in.Number(8);
    record.confirmed = in.Number(8);
    record.sample = in.Take(in.Number(4));
    record.hash = in.Take(in.Number(4));
    records.push_back(std::move(record));
  }
  if (!in.ok() || !in.at_end()) {
    return std::nullopt;
  }
  return records;
}

void AddCache(SimulatedWindows& machine, const CacheRecords& records) {
  machine.AddFile(kCacheFile, CacheBytes(records));
}

CacheRecords CacheOf(const SimulatedWindows& machine) {
  const std::optional<std::string> bytes = machine.ContentOf(kCacheFile);
  EXPECT_TRUE(bytes.has_value()) << "there is no cache file";
  std::optional<CacheRecords> records = ParseCache(bytes.value_or(""));
  EXPECT_TRUE(records.has_value()) << "the cache file is not whole";
  return std::move(records).value_or(CacheRecords{});
}

bool IsCachePath(TextView path) {
  return path.find(u"\\Vantrelloc\\") != TextView::npos;
}

bool OpensCandidate(const CallRecord& call) {
  return call.call == Call::kOpenFile && !call.path.starts_with(u"\\\\.\\") &&
         !IsCachePath(call.path);
}

std::map<std::string, int> OpensOf(const SimulatedWindows& machine) {
  std::map<std::string, int> opens;
  for (const CallRecord& call : machine.record()) {
    if (OpensCandidate(call)) {
      ++opens[Utf8(call.path)];
    }
  }
  return opens;
}

int OpenCount(const SimulatedWindows& machine) {
  int count = 0;
  for (const auto& [path, opens] : OpensOf(machine)) {
    count += opens;
  }
  return count;
}

}  // namespace quastel::duplicate_tests
