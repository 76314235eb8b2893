// qs_file_matches_snapshot, and what the two guarded deletions make of it.

#include <cstdint>
#include <limits>
#include <string>

#include "fs/deletion_fixture.h"
#include "support/calendar.h"
#include "support/walk.h"

namespace quastel::deletion_tests {
namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kTicksPerMinute = 600'000'000;

// The three exports that compare first.
using Snapshots = EachDeletion;

INSTANTIATE_TEST_SUITE_P(All, Snapshots,
                         ::testing::Values(kFileMatchesSnapshot, kDeleteSnapshotPermanently,
                                           kMoveSnapshotToRecycleBin),
                         support::CaseName());

TEST_P(Snapshots, A_file_of_exactly_this_size_and_time_matches) {
  AddFile(u"C:\\d\\f");
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {5, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, A_size_off_by_one_does_not_match) {
  AddFile(u"C:\\d\\f");
  ExpectRefused(u"C:\\d\\f", {4, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {6, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {0, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {kMost, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, A_time_off_by_one_tick_does_not_match) {
  AddFile(u"C:\\d\\f");
  for (const std::int64_t off : {-1, 1, -10'000'000, 10'000'000}) {
    ExpectRefused(u"C:\\d\\f", {5, TicksFor(kUsualTime) + off});
  }
  ExpectRefused(u"C:\\d\\f", {5, static_cast<std::int64_t>(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {5, 0});
  ExpectRefused(u"C:\\d\\f", {5, -TicksFor(kUsualTime)});
}

TEST_P(Snapshots, An_empty_file_matches_the_size_zero) {
  windows_.AddFile(u"C:\\d\\f", "");
  ExpectRefused(u"C:\\d\\f", {1, TicksFor(kUsualTime)});
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {0, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, A_negative_size_is_refused_without_a_single_call) {
  AddFile(u"C:\\d\\f");
  for (const std::int64_t size : {std::int64_t{-1}, std::int64_t{-5}, kLeast}) {
    EXPECT_EQ(CallsOf(GetParam(), u"C:\\d\\f", {size, TicksFor(kUsualTime)}), Lines{});
    ExpectRefused(u"C:\\d\\f", {size, TicksFor(kUsualTime)});
  }
}

TEST_P(Snapshots, A_size_that_no_signed_number_holds_never_matches) {
  windows_.AddSizedFile(u"C:\\d\\f", 0xFFFFFFFFFFFFFFFF);
  ExpectRefused(u"C:\\d\\f", {-1, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {kMost, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, Both_halves_of_a_size_are_compared) {
  constexpr std::int64_t kSize = (std::int64_t{3} << 32) + 7;
  windows_.AddSizedFile(u"C:\\d\\f", static_cast<std::uint64_t>(kSize));
  ExpectRefused(u"C:\\d\\f", {7, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {std::int64_t{3} << 32, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {(std::int64_t{4} << 32) + 7, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\f", {(std::int64_t{7} << 32) + 3, TicksFor(kUsualTime)});
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {kSize, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, Sizes_around_four_gibibytes_are_told_apart) {
  constexpr std::int64_t kFourGiB = std::int64_t{1} << 32;
  for (const std::int64_t size : {kFourGiB - 1, kFourGiB, kFourGiB + 1, kMost}) {
    windows_.AddSizedFile(u"C:\\d\\f", static_cast<std::uint64_t>(size));
    ExpectRefused(u"C:\\d\\f", {size - 1, TicksFor(kUsualTime)});
    ExpectRefused(u"C:\\d\\f", {size & 0xFFFFFFFF, TicksFor(kUsualTime) + 1});
    ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {size, TicksFor(kUsualTime)});
  }
}

TEST_P(Snapshots, The_time_is_local_time_since_the_first_day_of_the_first_year) {
  const std::int64_t local = support::TicksOf({2024, 2, 29, 12, 30, 15, 500}) + 1;
  windows_.SetTimeZoneOffset(330);
  windows_.AddFile(
      u"C:\\d\\f", "hello",
      {.last_write = static_cast<std::uint64_t>(local) - kTicksOf1601 - 330 * kTicksPerMinute});
  ExpectRefused(u"C:\\d\\f", {5, local - static_cast<std::int64_t>(330 * kTicksPerMinute)});
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {5, local});
}

TEST_P(Snapshots, A_change_of_the_time_zone_makes_a_snapshot_stale) {
  AddFile(u"C:\\d\\f");
  windows_.SetTimeZoneOffset(60);
  ExpectRefused(u"C:\\d\\f");
  windows_.SetTimeZoneOffset(0);
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f");
}

TEST_P(Snapshots, A_time_that_cannot_be_converted_is_compared_as_UTC) {
  AddFile(u"C:\\d\\f");
  windows_.SetTimeZoneOffset(60);
  windows_.FailCall(Call::kToLocalFileTime, 1, Repeat::kFromThenOn);
  ExpectRefused(u"C:\\d\\f", {5, TicksFor(kUsualTime + 60 * kTicksPerMinute)});
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {5, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, A_time_before_1601_in_local_time_is_compared_as_UTC) {
  windows_.AddFile(u"C:\\d\\f", "hello", {.last_write = 5});
  windows_.SetTimeZoneOffset(-60);
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {5, static_cast<std::int64_t>(kTicksOf1601) + 5});
}

TEST_P(Snapshots, Both_halves_of_a_time_are_compared) {
  constexpr std::uint64_t kTime = 0x0123456789ABCDEF;
  windows_.AddFile(u"C:\\d\\f", "hello", {.last_write = kTime});
  ExpectRefused(u"C:\\d\\f", {5, TicksFor(kTime - (std::uint64_t{1} << 32))});
  ExpectRefused(u"C:\\d\\f", {5, TicksFor(kTime & 0xFFFFFFFF)});
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {5, TicksFor(kTime)});
}

TEST_P(Snapshots, Times_at_the_ends_of_the_range_match) {
  for (const std::uint64_t time :
       {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{0xFFFFFFFF}, std::uint64_t{1} << 32,
        std::uint64_t{0x7FFFFFFFFFFFFFFF}, std::uint64_t{1} << 63, ~std::uint64_t{0}}) {
    windows_.AddFile(u"C:\\d\\f", "hello", {.last_write = time});
    ExpectRefused(u"C:\\d\\f", {5, TicksFor(time + 1)});
    ExpectDone(u"C:\\d\\f", u"C:\\d\\f", {5, TicksFor(time)});
  }
}

TEST_P(Snapshots, What_a_walk_reports_matches) {
  windows_.SetTimeZoneOffset(-480);
  windows_.AddSizedFile(u"C:\\d\\1", 5'000'000'123, 0, {.last_write = 5});
  windows_.AddSizedFile(u"C:\\d\\2", 0, 0, {.last_write = 131'234'567'891'234'567});
  windows_.AddSizedFile(support::NestedTo(300, u"C:\\d"), 17, 0, {.last_write = 1ull << 63});
  const support::WalkResult walk =
      support::RunWalk({.root = Text(u"C:\\d"), .pattern = Text(u"*")});
  ASSERT_EQ(walk.files.size(), 3u);
  for (const support::FoundFile& file : walk.files) {
    const Snapshot snapshot{static_cast<std::int64_t>(file.size),
                            static_cast<std::int64_t>(file.last_write)};
    EXPECT_EQ(Run(GetParam(), support::Wide(file.path), snapshot), 1) << file.path;
  }
  const std::size_t left =
      support::RunWalk({.root = Text(u"C:\\d"), .pattern = Text(u"*")}).files.size();
  EXPECT_EQ(left, GetParam().removes ? 0u : 3u);
}

TEST_P(Snapshots, A_folder_never_matches) {
  windows_.AddFolder(u"C:\\d\\empty");
  ExpectRefused(u"C:\\d\\empty", {0, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\empty\\", {0, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, A_link_never_matches_neither_with_its_own_facts_nor_with_its_target_s) {
  AddFile(u"C:\\d\\f");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\d\\link", u"C:\\d\\f");
  ExpectRefused(u"C:\\d\\link", {0, TicksFor(kUsualTime)});
  ExpectRefused(u"C:\\d\\link", {5, TicksFor(kUsualTime)});
}

TEST_P(Snapshots, A_file_replaced_by_another_of_the_same_size_does_not_match) {
  AddFile(u"C:\\d\\f");
  windows_.AddFile(u"C:\\d\\f", "other", {.last_write = kUsualTime + 1});
  ExpectRefused(u"C:\\d\\f");
}

// Content is not part of a snapshot: size and time are all that the caller has.
TEST_P(Snapshots, A_file_rewritten_with_its_old_size_and_time_matches) {
  AddFile(u"C:\\d\\f");
  windows_.SetContent(u"C:\\d\\f", "world");
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f");
}

TEST_P(Snapshots, Facts_that_cannot_be_had_do_not_match) {
  AddFile(u"C:\\d\\f");
  windows_.FailCall(Call::kQueryFileFacts, 1);
  ExpectRefused(u"C:\\d\\f");
  EXPECT_EQ(windows_.CallCount(Call::kToLocalFileTime), 0u);
}

TEST_P(Snapshots, Attributes_make_no_difference_to_the_comparison) {
  windows_.AddFile(u"C:\\d\\f", "hello",
                   {.attributes = platform::kAttributeHidden | platform::kAttributeSystem |
                                  platform::kAttributeOffline});
  ExpectDone(u"C:\\d\\f", u"C:\\d\\f");
}

// ---- Which calls are made, and which are not

TEST_P(Snapshots, The_comparison_asks_the_folders_then_the_facts_then_the_time) {
  AddFile(u"C:\\d\\f");
  Lines calls = CallsOf(GetParam(), u"C:\\d\\f");
  ASSERT_GE(calls.size(), 5u);
  calls.resize(5);
  EXPECT_EQ(calls, (Lines{"FullPathName C:\\d\\f", "QueryAttributes C:\\d", "QueryAttributes C:\\",
                          "QueryFileFacts C:\\d\\f", "ToLocalFileTime"}));
}

TEST_P(Snapshots, A_comparison_that_fails_is_followed_by_nothing) {
  AddFile(u"C:\\d\\f");
  windows_.AddFolder(u"C:\\d\\sub");
  const Lines facts = {"FullPathName C:\\d\\f", "QueryAttributes C:\\d", "QueryAttributes C:\\",
                       "QueryFileFacts C:\\d\\f"};
  Lines with_time = facts;
  with_time.push_back("ToLocalFileTime");
  EXPECT_EQ(CallsOf(GetParam(), u"C:\\d\\f", {4, TicksFor(kUsualTime)}), facts);
  EXPECT_EQ(CallsOf(GetParam(), u"C:\\d\\f", {5, TicksFor(kUsualTime) - 1}), with_time);
  EXPECT_EQ(CallsOf(GetParam(), u"C:\\d\\sub", {0, TicksFor(kUsualTime)}).size(), 4u);
}

class FileMatchesSnapshot : public DeletionTest {};

TEST_F(FileMatchesSnapshot, It_neither_opens_nor_changes_the_file) {
  AddFile(u"C:\\d\\f");
  windows_.Lock(u"C:\\d\\f", 0);
  windows_.Deny(u"C:\\d\\f", {.opening = true, .deleting = true});
  EXPECT_EQ(CallsOf(kFileMatchesSnapshot, u"C:\\d\\f"),
            (Lines{"FullPathName C:\\d\\f", "QueryAttributes C:\\d", "QueryAttributes C:\\",
                   "QueryFileFacts C:\\d\\f", "ToLocalFileTime"}));
  ExpectDone(kFileMatchesSnapshot, u"C:\\d\\f", u"C:\\d\\f");
}

TEST_F(FileMatchesSnapshot, A_read_only_file_matches) {
  windows_.AddFile(u"C:\\d\\f", "hello", {.attributes = platform::kAttributeReadOnly});
  ExpectDone(kFileMatchesSnapshot, u"C:\\d\\f", u"C:\\d\\f");
}

// The two steps of a guarded deletion are each a whole one: the folders are looked at twice.
TEST_F(FileMatchesSnapshot, A_guarded_deletion_is_the_comparison_and_then_the_deletion) {
  for (const Text& path : {Text(u"C:\\d\\e\\f"), support::NestedTo(300, u"C:")}) {
    for (const auto& [guarded, plain] : {std::pair(kDeleteSnapshotPermanently, kDeletePermanently),
                                         std::pair(kMoveSnapshotToRecycleBin, kMoveToRecycleBin)}) {
      AddFile(path);
      Lines expected = CallsOf(kFileMatchesSnapshot, path);
      const Lines removal = CallsOf(plain, path);
      expected.insert(expected.end(), removal.begin(), removal.end());
      AddFile(path);
      EXPECT_EQ(CallsOf(guarded, path), expected) << guarded.name;
      EXPECT_FALSE(windows_.Exists(path));
    }
  }
}

TEST_F(FileMatchesSnapshot, A_guarded_deletion_answers_for_the_deletion_when_the_file_matches) {
  windows_.AddFile(u"C:\\d\\f", "hello", {.attributes = platform::kAttributeReadOnly});
  EXPECT_EQ(Run(kFileMatchesSnapshot, u"C:\\d\\f"), 1);
  ExpectRefused(kDeleteSnapshotPermanently, u"C:\\d\\f");
  windows_.SetAttributes(u"C:\\d\\f", 0);
  windows_.Lock(u"C:\\d\\f", 0);
  ExpectRefused(kDeleteSnapshotPermanently, u"C:\\d\\f");
  ExpectRefused(kMoveSnapshotToRecycleBin, u"C:\\d\\f");
}

}  // namespace
}  // namespace quastel::deletion_tests
