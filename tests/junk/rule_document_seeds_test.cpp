// The seeds of the fuzzing, as an ordinary test. A seed's name says what the
// reader makes of it.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/rule_document_check.h"
#include "junk/junk_fixture.h"
#include "support/instrumented.h"

namespace quastel::junk_tests {
namespace {

struct Seed {
  std::string name;
  std::string bytes;
};

std::vector<Seed> AllSeeds() {
  std::vector<Seed> seeds;
  for (const auto& entry :
       std::filesystem::directory_iterator(QUASTEL_FUZZ_CORPUS "/rule_document")) {
    std::ifstream in(entry.path(), std::ios::binary);
    seeds.push_back(
        {entry.path().filename().string(), std::string(std::istreambuf_iterator<char>(in), {})});
  }
  std::sort(seeds.begin(), seeds.end(),
            [](const Seed& a, const Seed& b) { return a.name < b.name; });
  return seeds;
}

TEST(RuleDocumentSeeds, Are_read_or_refused_as_their_names_say) {
  const std::vector<Seed> seeds = AllSeeds();
  EXPECT_GE(seeds.size(), 20u);
  for (const Seed& seed : seeds) {
    SCOPED_TRACE(seed.name);
    const bool good = seed.name.starts_with("good_");
    EXPECT_TRUE(good || seed.name.starts_with("bad_"));
    EXPECT_EQ(fuzz::CheckRuleDocument(seed.bytes), good);
  }
}

// An instrumented build cuts off at each place too, and tries one byte there, another one each
// time.
TEST(RuleDocumentSeeds, Cut_off_or_with_a_byte_changed_break_nothing) {
  std::uint64_t changes = 0;
  for (const Seed& seed : AllSeeds()) {
    SCOPED_TRACE(seed.name);
    for (std::size_t at = 0; at < seed.bytes.size(); ++at) {
      fuzz::CheckRuleDocument(std::string_view(seed.bytes).substr(0, at));
      for (const char c : {'<', '>', '&', '"', '\0', '\xFF'}) {
        if (!support::IsDone(++changes, 7)) {
          continue;
        }
        std::string changed = seed.bytes;
        changed[at] = c;
        fuzz::CheckRuleDocument(changed);
      }
    }
  }
}

}  // namespace
}  // namespace quastel::junk_tests
