// The times that a file walk reports.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calendar.h"
#include "support/text.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FoundFile;
using support::RunWalk;

constexpr std::uint64_t k1601 = 504911232000000000;
constexpr std::uint64_t kTicksPerMinute = 600'000'000;

class EnumerationTimes : public ::testing::Test {
 protected:
  std::vector<std::uint64_t> Times(const qs_char* pattern = u"*") {
    const support::WalkResult result =
        RunWalk(FileWalk{.root = Text(u"C:\\t"), .pattern = Text(pattern)});
    EXPECT_EQ(result.status, QS_OK);
    std::vector<std::uint64_t> times;
    for (const FoundFile& file : result.files) {
      times.push_back(file.last_write);
    }
    return times;
  }
  using Ticks = std::vector<std::uint64_t>;

  SimulatedWindows windows_;
};

TEST_F(EnumerationTimes, The_start_of_1601_in_UTC_is_504911232000000000) {
  windows_.AddFile(u"C:\\t\\a", "", {.last_write = 0});
  EXPECT_EQ(Times(), Ticks{k1601});
}

TEST_F(EnumerationTimes, A_time_counts_from_the_first_day_of_the_first_year) {
  const auto ticks = static_cast<std::uint64_t>(support::TicksOf({2024, 2, 29, 12, 30, 15, 500}));
  windows_.AddFile(u"C:\\t\\a", "", {.last_write = ticks - k1601});
  EXPECT_EQ(Times(), Ticks{ticks});
}

TEST_F(EnumerationTimes, A_time_is_told_in_local_time) {
  constexpr std::uint64_t kUtc = 133'000'000'123'456'789;
  windows_.AddFile(u"C:\\t\\a", "", {.last_write = kUtc});
  windows_.SetTimeZoneOffset(330);
  EXPECT_EQ(Times(), Ticks{kUtc + 330 * kTicksPerMinute + k1601});
  EXPECT_EQ(Times(u"a"), Ticks{kUtc + 330 * kTicksPerMinute + k1601});
  windows_.SetTimeZoneOffset(-480);
  EXPECT_EQ(Times(), Ticks{kUtc - 480 * kTicksPerMinute + k1601});
}

TEST_F(EnumerationTimes, Both_halves_of_a_time_are_joined) {
  windows_.AddFile(u"C:\\t\\a", "", {.last_write = 0xFFFFFFFF});
  windows_.AddFile(u"C:\\t\\b", "", {.last_write = 0x100000000});
  windows_.AddFile(u"C:\\t\\c", "", {.last_write = 0x0123456789ABCDEF});
  EXPECT_EQ(Times(), (Ticks{k1601 + 0xFFFFFFFF, k1601 + 0x100000000, k1601 + 0x0123456789ABCDEF}));
}

TEST_F(EnumerationTimes, A_time_that_cannot_be_converted_stays_UTC_for_that_file_alone) {
  constexpr std::uint64_t kUtc = 133'000'000'000'000'000;
  for (const qs_char* name : {u"C:\\t\\a", u"C:\\t\\b", u"C:\\t\\c"}) {
    windows_.AddFile(name, "", {.last_write = kUtc});
  }
  windows_.SetTimeZoneOffset(60);
  windows_.FailCall(Call::kToLocalFileTime, 1);
  EXPECT_EQ(Times(), (Ticks{kUtc + k1601, kUtc + 60 * kTicksPerMinute + k1601,
                            kUtc + 60 * kTicksPerMinute + k1601}));
  windows_.ClearFaults();
  windows_.FailCall(Call::kToLocalFileTime, 1);
  EXPECT_EQ(Times(u"?").at(0), kUtc + k1601);
  EXPECT_EQ(Times(u"?").at(1), kUtc + 60 * kTicksPerMinute + k1601);
}

TEST_F(EnumerationTimes, A_time_that_local_time_would_carry_before_1601_stays_UTC) {
  windows_.AddFile(u"C:\\t\\a", "", {.last_write = 5});
  windows_.SetTimeZoneOffset(-60);
  EXPECT_EQ(Times(), Ticks{k1601 + 5});
}

TEST_F(EnumerationTimes, A_time_near_either_end_is_converted_by_itself) {
  constexpr std::uint64_t kUtc = 133'000'000'000'000'000;
  constexpr std::uint64_t kHour = 60 * kTicksPerMinute;
  constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63;
  windows_.AddFile(u"C:\\t\\a", "", {.last_write = kUtc});
  windows_.AddFile(u"C:\\t\\b", "", {.last_write = kTopBit - 1});
  windows_.AddFile(u"C:\\t\\c", "", {.last_write = kTopBit + 5});
  windows_.AddFile(u"C:\\t\\d", "", {.last_write = 7});
  windows_.AddFile(u"C:\\t\\e", "", {.last_write = kUtc + 1});
  windows_.SetTimeZoneOffset(60);
  EXPECT_EQ(Times(), (Ticks{kUtc + kHour + k1601, kTopBit - 1 + k1601, kTopBit + 5 + k1601,
                            7 + kHour + k1601, kUtc + 1 + kHour + k1601}));
  windows_.SetTimeZoneOffset(-60);
  EXPECT_EQ(Times(), (Ticks{kUtc - kHour + k1601, kTopBit - 1 - kHour + k1601,
                            kTopBit + 5 - kHour + k1601, 7 + k1601, kUtc + 1 - kHour + k1601}));
}

TEST_F(EnumerationTimes, A_change_of_the_time_zone_counts_from_the_next_folder_on) {
  constexpr std::uint64_t kUtc = 133'000'000'000'000'000;
  windows_.AddFile(u"C:\\t\\a", "", {.last_write = kUtc});
  windows_.AddFile(u"C:\\t\\sub\\b", "", {.last_write = kUtc});
  windows_.SetHook([this](const simulated::CallRecord& call) {
    if (call.call == Call::kFindClose) {
      windows_.SetTimeZoneOffset(120);
    }
  });
  EXPECT_EQ(Times(), (Ticks{kUtc + k1601, kUtc + 120 * kTicksPerMinute + k1601}));
}

TEST_F(EnumerationTimes, One_conversion_does_for_256_more_files_of_a_folder) {
  for (int i = 0; i < 600; ++i) {
    windows_.AddFile(support::Wide("C:\\t\\" + std::to_string(i)), "", {.last_write = 1ull << 60});
  }
  windows_.SetTimeZoneOffset(60);
  EXPECT_EQ(Times(), Ticks(600, (1ull << 60) + 60 * kTicksPerMinute + k1601));
  EXPECT_EQ(windows_.CallCount(Call::kToLocalFileTime), 3u);
}

TEST_F(EnumerationTimes, Only_reported_files_cost_a_conversion) {
  windows_.AddFile(u"C:\\t\\a.txt", "");
  windows_.AddFile(u"C:\\t\\b.log", "");
  windows_.AddFile(u"C:\\t\\sub\\c.txt", "");
  windows_.AddPlaceholder(u"C:\\t\\cloud.txt", 10);
  Times(u"*.txt");
  EXPECT_EQ(windows_.CallCount(Call::kToLocalFileTime), 2u);
}

}  // namespace
}  // namespace quastel
