#include "nearest_word.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace quastel::client {
namespace {

// Insertions, deletions and replacements that turn one word into the other.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row[b.size()];
}

}  // namespace

std::string NearestWord(std::string_view word, const std::vector<std::string>& candidates) {
  std::string nearest;
  // A third of the letters wrong is still a typing mistake; more is another word.
  std::size_t best = std::max<std::size_t>(word.size() / 3, 1) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t distance = candidate.starts_with(word) && word.size() >= 2
                                     ? std::size_t{1}
                                     : EditDistance(word, candidate);
    if (distance < best) {
      best = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace quastel::client
