// The order of the groups, against the keys written out.

#include "duplicate/sample_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "duplicate/sample.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::CandidateIndex;
using duplicate::CandidateList;
using duplicate::DecimalOrder;
using duplicate::DigestText;
using duplicate::SampledFile;
using duplicate::SampledFiles;
using duplicate::SampledIndex;

TEST(DecimalOrder, Is_that_of_the_digits_with_a_space_behind_them) {
  std::vector<std::int64_t> numbers = {std::numeric_limits<std::int64_t>::max(),
                                       std::numeric_limits<std::int64_t>::min()};
  for (std::int64_t number = 1; number < 1'000'000'000'000'000'000; number *= 10) {
    for (const std::int64_t near : {number - 1, number, number + 1, 2 * number, 9 * number}) {
      numbers.push_back(near);
      numbers.push_back(-near);
    }
  }
  const auto text = [](std::int64_t number) { return std::to_string(number) + ' '; };
  for (const std::int64_t a : numbers) {
    for (const std::int64_t b : numbers) {
      ASSERT_EQ(DecimalOrder(a) < DecimalOrder(b), text(a) < text(b)) << a << " and " << b;
      ASSERT_EQ(DecimalOrder(a) == DecimalOrder(b), a == b) << a << " and " << b;
    }
  }
}

TEST(SampleOrder, Is_that_of_the_keys_and_keeps_the_order_of_equal_ones) {
  std::mt19937 random(1);
  const std::vector<std::string> samples = {"00000000|00000000", "00000000|00000001",
                                            "ffffffff|00000000", "abc|abc",
                                            "00000000|",         std::string(300, '0')};
  CandidateList candidates;
  std::vector<std::uint64_t> sizes(500);
  for (std::uint64_t& size : sizes) {
    size = std::uint64_t{1} << random() % 64;
  }
  std::sort(sizes.begin(), sizes.end());
  SampledFiles sampled;
  for (CandidateIndex i = 0; i < sizes.size(); ++i) {
    candidates.Add(u"C:\\f", u"f", sizes[i], 0);
    SampledFile& file = sampled.emplace_back();
    file.candidate = i;
    file.result = DigestText::Of(samples[random() % samples.size()]);
  }
  std::vector<SampledIndex> files;
  for (SampledIndex i = 0; i < sampled.size(); ++i) {
    if (random() % 2 == 0) {
      files.push_back(i);
    }
  }
  std::vector<SampledIndex> expected = files;
  const auto key = [&](SampledIndex file) {
    return duplicate::SampleGroupKey(candidates[sampled[file].candidate].signed_size(),
                                     sampled[file].result.Get());
  };
  std::stable_sort(expected.begin(), expected.end(),
                   [&](SampledIndex a, SampledIndex b) { return key(a) < key(b); });
  PutInSampleOrder(candidates, sampled, files);
  EXPECT_EQ(files, expected);
}

}  // namespace
}  // namespace quastel::duplicate_tests
