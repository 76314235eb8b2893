#include "duplicate/hash_cache.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "base/ascii.h"
#include "base/common_prefix.h"
#include "duplicate/hash_cache_format.h"
#include "duplicate/xxhash32.h"
#include "fs/path_rules.h"

namespace quastel::duplicate {
namespace {

constexpr std::size_t kSmallestTable = 64;

// A search of the order costs as much as putting so many entries into a table.
constexpr std::size_t kEntriesPerSearch = 16;

}  // namespace

HashCache::Index HashCache::Find(TextView key) {
  if (next_ < entries_.size() && IsSameText(entries_[next_].key, key)) {
    return next_++;
  }
  const Index found = FindAnywhere(key);
  if (found != kNone) {
    next_ = found + 1;
  }
  return found;
}

HashCache::Index HashCache::FindAnywhere(TextView key) {
  if (is_in_key_order_ && table_.empty() && searches_ * kEntriesPerSearch < entries_.size()) {
    ++searches_;
    return SearchInOrder(key);
  }
  if (table_.size() < entries_.size() * 2) {
    BuildTable(entries_.size());
  }
  return table_.empty() ? kNone : table_[PlaceOf(key)];
}

HashCache::Index HashCache::SearchInOrder(TextView key) const {
  Index begin = 0;
  auto end = static_cast<Index>(entries_.size());
  while (begin < end) {
    const Index middle = begin + (end - begin) / 2;
    if (ComesBefore(entries_[middle].key, key)) {
      begin = middle + 1;
    } else {
      end = middle;
    }
  }
  return begin < entries_.size() && IsSameText(entries_[begin].key, key) ? begin : kNone;
}

HashCache::Index HashCache::FindOrAdd(TextView key) {
  // A file is read in key order, where every key is a new one and no table is needed.
  if (entries_.empty() || (is_in_key_order_ && ComesBefore(entries_.back().key, key))) {
    return Add(key);
  }
  const Index found = Find(key);
  if (found != kNone) {
    return found;
  }
  is_in_key_order_ = false;
  return Add(key);
}

HashCache::Index HashCache::Add(TextView key) {
  const auto index = static_cast<Index>(entries_.size());
  if (!table_.empty() && table_.size() < (entries_.size() + 1) * 2) {
    BuildTable(entries_.size() + 1);
  }
  CacheEntry entry;
  entry.key = texts_.Keep(key);
  entries_.push_back(entry);
  if (!table_.empty()) {
    table_[PlaceOf(key)] = index;
  }
  return index;
}

// Where the key stands in the table, or where it would have to.
std::size_t HashCache::PlaceOf(TextView key) const {
  const std::size_t mask = table_.size() - 1;
  std::size_t place = HashBytes(key.data(), key.size() * sizeof(Char)) & mask;
  while (table_[place] != kNone && !IsSameText(entries_[table_[place]].key, key)) {
    place = (place + 1) & mask;
  }
  return place;
}

// Twice the room that is needed at least, so that few keys meet.
void HashCache::BuildTable(std::size_t size) {
  std::vector<Index> table(std::bit_ceil(std::max(size * 3, kSmallestTable)), kNone);
  table_.swap(table);
  for (Index i = 0; i < entries_.size(); ++i) {
    table_[PlaceOf(entries_[i].key)] = i;
  }
}

DigestText HashCache::Keep(std::string_view text) {
  const DigestText packed = DigestText::Of(text);
  return packed.refers() ? DigestText::Of(texts_.Keep(text)) : packed;
}

std::vector<HashCache::Index> HashCache::InKeyOrder() const {
  std::vector<Index> order(entries_.size());
  std::iota(order.begin(), order.end(), Index{0});
  if (!is_in_key_order_) {
    std::sort(order.begin(), order.end(),
              [this](Index a, Index b) { return ComesBefore(entries_[a].key, entries_[b].key); });
  }
  return order;
}

Text CacheLocationOf(TextView user_home) {
  const bool has_drive = user_home.size() >= 3 && IsAsciiLetter(user_home[0]) &&
                         user_home[1] == Char{':'} && IsSeparator(user_home[2]);
  const bool is_unc =
      user_home.size() >= 2 && IsSeparator(user_home[0]) && IsSeparator(user_home[1]);
  return has_drive || is_unc ? JoinPath(user_home, kCachePath) : Text();
}

}  // namespace quastel::duplicate
