// Which files get a second look, against the heads written out.

#include "duplicate/shared_heads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace quastel::duplicate_tests {
namespace {

using duplicate::CandidateIndex;
using duplicate::CandidateList;
using duplicate::DigestText;
using duplicate::SampledFile;
using duplicate::SampledFiles;
using duplicate::SampledIndex;

// Files of one sample text each, in the order of their sizes.
struct Files {
  void Add(std::uint64_t size, const std::string& sample) {
    candidates.Add(u"C:\\f", u"f", size, 0);
    SampledFile& file = sampled.emplace_back();
    file.candidate = static_cast<CandidateIndex>(sampled.size() - 1);
    file.result = DigestText::Of(sample);
  }

  CandidateList candidates;
  SampledFiles sampled;
};

TEST(SharedHeads, Of_no_files_are_none) {
  const Files files;
  EXPECT_TRUE(FindSharedHeads(files.candidates, files.sampled).empty());
}

TEST(SharedHeads, A_head_that_a_small_file_has_is_left_out) {
  for (const std::string head : {"0123abcd", "no hash"}) {
    Files files;
    files.Add(150, head);
    files.Add(151, head);
    files.Add(151, head);
    EXPECT_TRUE(FindSharedHeads(files.candidates, files.sampled).empty()) << head;
  }
}

// With samples that are hashes, hashes of both ends, texts that are none, and none at all.
TEST(SharedHeads, Come_in_the_order_of_their_texts) {
  const std::vector<std::string> samples = {
      "",         "00000000",   "00000000|00000001", "ffffffff|00000000",
      "fffffffe", "abcdef01|x", "abc|abc",           "abc",
      "zzz",      "0000000",    "A0000000",          "80000000",
      "7fffffff", "|tail",      "00000000|",         std::string(300, '0')};
  std::mt19937 random(1);
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    std::vector<std::uint64_t> sizes(random() % 40);
    for (std::uint64_t& size : sizes) {
      size = random() % 8 == 0 ? 150 : 151 + random() % 4;
    }
    std::sort(sizes.begin(), sizes.end());
    Files files;
    std::map<std::string, std::vector<SampledIndex>> heads;
    for (const std::uint64_t size : sizes) {
      const std::string& sample = samples[random() % samples.size()];
      if (!sample.empty()) {
        heads[sample.substr(0, sample.find('|'))].push_back(
            static_cast<SampledIndex>(files.sampled.size()));
      }
      files.Add(size, sample);
    }
    std::vector<SampledIndex> expected;
    for (const auto& [head, sharing] : heads) {
      if (sharing.size() > 1 && sizes[sharing[0]] > 150) {
        expected.insert(expected.end(), sharing.begin(), sharing.end());
      }
    }
    EXPECT_EQ(FindSharedHeads(files.candidates, files.sampled), expected);
  }
}

}  // namespace
}  // namespace quastel::duplicate_tests
