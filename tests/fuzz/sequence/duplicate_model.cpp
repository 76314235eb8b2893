#include "fuzz/sequence/duplicate_model.h"

#include <map>
#include <set>
#include <string>
#include <tuple>

#include "fuzz/demand.h"
#include "fuzz/sequence/world.h"

namespace quastel::fuzz::sequence {
namespace {

constexpr std::size_t kSmall = 150;
constexpr std::size_t kBlock = 4096;

std::string HashOf(std::string_view bytes) {
  char text[9] = {};
  Demand(qs_xxhash32_hex(bytes.data(), bytes.size(), text, sizeof text) == QS_OK, "hashing bytes");
  return text;
}

std::string HexOf(std::string_view bytes) {
  std::string hex;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    hex += "0123456789abcdef"[value >> 4];
    hex += "0123456789abcdef"[value & 15];
  }
  return hex.append(300 - hex.size(), '0');
}

// The key that all files of this content have, with what groups are sorted by in front.
using Rank = std::tuple<bool, std::string, std::string>;

Rank RankOf(const std::string& content) {
  const std::string size = std::to_string(content.size());
  if (content.size() <= kSmall) {
    const std::string key = size + " " + HexOf(content);
    return {false, key, key};
  }
  const std::size_t tail = content.size() > kBlock ? content.size() - kBlock : 0;
  const std::string sample = size + " " + HashOf(std::string_view(content).substr(0, kBlock)) +
                             "|" + HashOf(std::string_view(content).substr(tail));
  return {true, sample, sample + " " + HashOf(content)};
}

}  // namespace

std::vector<Row> DuplicatesAmong(const simulated::SimulatedWindows& machine, const Disk& disk,
                                 const std::vector<FoundFile>& files, bool& all_readable,
                                 bool& all_different) {
  std::map<Rank, std::vector<const FoundFile*>> sets;
  std::set<Text> met;
  for (const FoundFile& file : files) {
    if (!met.insert(file.key).second) {
      all_different = false;
    }
    if (file.size >= kSizedFile) {
      continue;  // each has a content of its own
    }
    if (!disk.CanRead(file.key)) {
      all_readable = false;
      continue;
    }
    sets[RankOf(machine.ContentOf(disk.Find(file.key)->path).value())].push_back(&file);
  }
  std::vector<Row> rows;
  std::uint64_t group = 0;
  for (const auto& [rank, members] : sets) {
    if (members.size() < 2) {
      continue;
    }
    ++group;
    for (const FoundFile* file : members) {
      const std::string& key = std::get<2>(rank);
      Row row;
      row.path = file->path;
      row.name = file->name;
      row.title = members[0]->name;
      row.location = Text(key.begin(), key.end());
      row.group_id = group;
      row.kind = QS_ROW_DUPLICATE;
      row.size = static_cast<std::int64_t>(file->size);
      row.modified = file->modified;
      rows.push_back(row);
    }
  }
  NumberItems(rows);
  return rows;
}

void DemandEqualContents(const simulated::SimulatedWindows& machine, const std::vector<Row>& rows) {
  std::map<std::uint64_t, std::string> contents;
  for (const Row& row : rows) {
    const auto content = machine.ContentOf(Text(u"\\\\?\\") + KeyOf(row.path));
    Demand(content.has_value(), "a duplicate is a file");
    const auto [known, is_first] = contents.emplace(row.group_id, *content);
    Demand(is_first || known->second == *content, "the files of a set have the same content");
  }
}

}  // namespace quastel::fuzz::sequence
