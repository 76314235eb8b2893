// What a duplicate scan reports: groups, their numbers and order, every field of a row.

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include "duplicate/duplicate_fixture.h"
#include "duplicate/duplicate_scan.h"
#include "scan/product_scan.h"

namespace quastel::duplicate_tests {
namespace {

using Paths = std::vector<std::string>;

// The size in front of each group's key, in order.
std::vector<std::string> SizesOf(const std::vector<Row>& rows) {
  std::vector<std::string> sizes;
  std::uint64_t group = 0;
  for (const Row& row : rows) {
    if (row.numbers.group_id != group) {
      group = row.numbers.group_id;
      const std::string key = Utf8(row.location);
      sizes.push_back(key.substr(0, key.find(' ')));
    }
  }
  return sizes;
}

void AddPair(SimulatedWindows& machine, std::string_view name, std::string_view content) {
  machine.AddFile(u"C:\\data\\" + Wide(name) + u" 1", content);
  machine.AddFile(u"C:\\data\\" + Wide(name) + u" 2", content);
}

TEST(DuplicateReport, Two_equal_files_of_different_names_in_different_roots_are_one_group) {
  SimulatedWindows machine;
  const std::string content = Bytes(5000);
  machine.AddDrive('D');
  machine.AddFile(u"C:\\data\\First.bin", content);
  simulated::FileOptions later;
  later.last_write += 7;
  machine.AddFile(u"D:\\more\\second.txt", content, later);
  const Outcome scan = Scan(DuplicateRequest({u"C:\\data", u"D:\\more"}));

  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(scan.poll.state, QS_STATE_DONE);
  EXPECT_EQ(scan.rows,
            (std::vector<Row>{
                DuplicateRow(0, 1, u"C:\\data\\First.bin", u"First.bin", GroupKeyOf(content), 5000),
                DuplicateRow(1, 1, u"D:\\more\\second.txt", u"First.bin", GroupKeyOf(content), 5000,
                             kDefaultModified + 7),
            }));
}

TEST(DuplicateReport, Small_files_form_a_group_without_being_hashed) {
  SimulatedWindows machine;
  const std::string content = Bytes(100);
  machine.AddFile(u"C:\\data\\a", content);
  machine.AddFile(u"C:\\data\\b", content);
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.rows, (std::vector<Row>{
                           DuplicateRow(0, 1, u"C:\\data\\a", u"a", "100 " + HexOf(content), 100),
                           DuplicateRow(1, 1, u"C:\\data\\b", u"a", "100 " + HexOf(content), 100),
                       }));
  EXPECT_EQ(scan.performance.hashed_items, 0u);
  EXPECT_EQ(scan.performance.unhashed_groups, 1u);
  EXPECT_EQ(scan.performance.sampled_items, 2u);
}

struct MiddleCase {
  std::size_t size;
  std::size_t position;
};
void PrintTo(const MiddleCase& c, std::ostream* out) {
  *out << c.size << " bytes, another byte at " << c.position;
}

class DifferenceInTheMiddle : public ::testing::TestWithParam<MiddleCase> {};

TEST_P(DifferenceInTheMiddle, Is_found_by_the_full_hash_alone) {
  const std::string content = Bytes(GetParam().size);
  const std::string other = ChangedAt(content, GetParam().position);
  ASSERT_EQ(SampleOf(content), SampleOf(other));
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", content);
  machine.AddFile(u"C:\\data\\b", other);
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(scan.rows, std::vector<Row>());
  EXPECT_EQ(scan.performance.hashed_items, 2u);
  EXPECT_EQ(scan.performance.sampled_items, 2u);
}

// At 8,192 bytes head and tail meet; with one more there is a byte that neither covers.
INSTANTIATE_TEST_SUITE_P(All, DifferenceInTheMiddle,
                         ::testing::Values(MiddleCase{8193, 4096}, MiddleCase{8194, 4096},
                                           MiddleCase{8194, 4097}, MiddleCase{20'000, 10'000},
                                           MiddleCase{2'000'000, 1'048'576}));

TEST(DuplicateReport, Files_of_5000_bytes_with_equal_heads_and_tails_are_equal) {
  SimulatedWindows machine;
  const std::string content = Bytes(5000);
  AddPair(machine, "equal", content);
  // The two blocks overlap: any other byte shows in one of them.
  for (const std::size_t position :
       std::initializer_list<std::size_t>{0, 903, 904, 2500, 4095, 4096, 4999}) {
    machine.AddFile(u"C:\\data\\other " + Wide(std::to_string(position)),
                    ChangedAt(content, position));
  }
  const Outcome scan = ScanData();
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\equal 1", "C:\\data\\equal 2"}}));
  EXPECT_EQ(scan.performance.hashed_items, 2u);
}

TEST(DuplicateReport, The_sample_of_files_within_one_block_is_their_hash_twice) {
  SimulatedWindows machine;
  const std::string content = Bytes(2000);
  AddPair(machine, "a", content);
  const std::string hash = HashOf(content);
  const std::string key = "2000 " + hash + "|" + hash + " " + hash;
  EXPECT_EQ(ScanData().rows,
            (std::vector<Row>{DuplicateRow(0, 1, u"C:\\data\\a 1", u"a 1", key, 2000),
                              DuplicateRow(1, 1, u"C:\\data\\a 2", u"a 1", key, 2000)}));
}

TEST(DuplicateReport, Of_a_single_file_is_empty) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\alone", Bytes(5000));
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(scan.poll.state, QS_STATE_DONE);
  EXPECT_EQ(scan.rows.size(), 0u);
  EXPECT_EQ(scan.performance.candidates, 1u);
  EXPECT_EQ(scan.performance.sampled_items, 0u);
}

TEST(DuplicateReport, Of_an_empty_folder_and_of_a_missing_one_is_empty) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\data");
  for (const TextView root : {TextView(u"C:\\data"), TextView(u"C:\\missing")}) {
    const Outcome scan = Scan(DuplicateRequest({Text(root)}));
    EXPECT_EQ(scan.status, QS_OK);
    EXPECT_EQ(scan.rows.size(), 0u);
    EXPECT_EQ(scan.performance.candidates, 0u);
  }
}

TEST(DuplicateReport, Three_and_more_equal_files_are_one_group) {
  SimulatedWindows machine;
  for (const char* name : {"a", "b", "c", "d"}) {
    machine.AddFile(u"C:\\data\\" + Wide(name), Bytes(9000));
  }
  EXPECT_EQ(GroupsOf(ScanData().rows),
            (Groups{{"C:\\data\\a", "C:\\data\\b", "C:\\data\\c", "C:\\data\\d"}}));
}

TEST(DuplicateReport, Empty_files_are_duplicates_of_each_other) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", "");
  machine.AddFile(u"C:\\data\\b", "");
  const Outcome scan = ScanData();
  const std::string key = "0 " + std::string(300, '0');
  EXPECT_EQ(scan.rows, (std::vector<Row>{DuplicateRow(0, 1, u"C:\\data\\a", u"a", key, 0),
                                         DuplicateRow(1, 1, u"C:\\data\\b", u"a", key, 0)}));
  EXPECT_EQ(scan.poll.total_bytes, 0u);
  EXPECT_EQ(scan.poll.bytes_visited, 0u);
  EXPECT_EQ(scan.poll.files_visited, 2u);
  EXPECT_EQ(scan.performance.unhashed_groups, 1u);
}

TEST(DuplicateReport, Equal_files_of_150_bytes_are_grouped_by_content_and_of_151_by_hash) {
  SimulatedWindows machine;
  const std::string small = Bytes(150);
  const std::string large = Bytes(151);
  AddPair(machine, "small", small);
  AddPair(machine, "large", large);
  const Outcome scan = ScanData();
  const std::string hash = HashOf(large);
  EXPECT_EQ(scan.rows,
            (std::vector<Row>{
                DuplicateRow(0, 1, u"C:\\data\\small 1", u"small 1", "150 " + HexOf(small), 150),
                DuplicateRow(1, 1, u"C:\\data\\small 2", u"small 1", "150 " + HexOf(small), 150),
                DuplicateRow(2, 2, u"C:\\data\\large 1", u"large 1",
                             "151 " + hash + "|" + hash + " " + hash, 151),
                DuplicateRow(3, 2, u"C:\\data\\large 2", u"large 1",
                             "151 " + hash + "|" + hash + " " + hash, 151),
            }));
  EXPECT_EQ(scan.performance.unhashed_groups, 1u);
  EXPECT_EQ(scan.performance.hashed_items, 2u);
}

TEST(DuplicateReport, A_difference_in_the_last_byte_of_150_separates) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(150));
  machine.AddFile(u"C:\\data\\b", ChangedAt(Bytes(150), 149));
  EXPECT_EQ(ScanData().rows.size(), 0u);
}

TEST(DuplicateReport, The_tail_of_4096_bytes_is_the_head_and_of_4097_the_last_4096) {
  SimulatedWindows machine;
  const std::string whole = Bytes(4096);
  const std::string more = Bytes(4097);
  AddPair(machine, "one block", whole);
  AddPair(machine, "one more", more);
  const std::string hash = HashOf(whole);
  ASSERT_EQ(HeadOf(more), hash) << "both begin alike";
  const std::vector<Row> rows = ScanData().rows;
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(Utf8(rows[0].location), "4096 " + hash + "|" + hash + " " + hash);
  EXPECT_EQ(Utf8(rows[2].location),
            "4097 " + hash + "|" + HashOf(more.substr(1)) + " " + HashOf(more));
}

TEST(DuplicateReport, A_difference_in_the_last_byte_shows_in_the_tail_at_every_size) {
  SimulatedWindows machine;
  for (const std::size_t size :
       std::initializer_list<std::size_t>{151, 4095, 4096, 4097, 8192, 8193}) {
    const std::string content = Bytes(size);
    machine.AddFile(u"C:\\data\\a " + Wide(std::to_string(size)), content);
    machine.AddFile(u"C:\\data\\b " + Wide(std::to_string(size)), ChangedAt(content, size - 1));
  }
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.rows.size(), 0u);
  EXPECT_EQ(scan.performance.hashed_items, 0u);
}

// ---- Order

TEST(DuplicateOrder, Of_groups_is_the_byte_order_of_their_keys) {
  SimulatedWindows machine;
  for (const std::size_t size :
       std::initializer_list<std::size_t>{200, 10'000, 1000, 3000, 155, 20'000}) {
    AddPair(machine, std::to_string(size), Bytes(size));
  }
  EXPECT_EQ(SizesOf(ScanData().rows),
            (std::vector<std::string>{"1000", "10000", "155", "200", "20000", "3000"}));
}

TEST(DuplicateOrder, Puts_the_groups_of_small_files_first) {
  SimulatedWindows machine;
  for (const std::size_t size :
       std::initializer_list<std::size_t>{10'000, 150, 9, 151, 10, 100, 0}) {
    AddPair(machine, std::to_string(size), Bytes(size));
  }
  EXPECT_EQ(SizesOf(ScanData().rows),
            (std::vector<std::string>{"0", "10", "100", "150", "9", "10000", "151"}));
}

TEST(DuplicateOrder, Of_groups_of_one_size_is_that_of_sample_and_hash) {
  SimulatedWindows machine;
  std::vector<std::string> contents;
  for (std::uint32_t seed = 0; seed < 5; ++seed) {
    contents.push_back(Bytes(40, seed));
    contents.push_back(Bytes(10'000, seed));
    // The same sample and another hash.
    contents.push_back(ChangedAt(Bytes(10'000, seed), 5000));
    contents.push_back(ChangedAt(Bytes(10'000, seed), 5001));
  }
  std::vector<std::string> small_keys;
  std::vector<std::pair<std::string, std::string>> hashed_keys;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    AddPair(machine, std::to_string(i), contents[i]);
    if (contents[i].size() == 40) {
      small_keys.push_back(SampleKeyOf(contents[i]));
    } else {
      hashed_keys.emplace_back(SampleKeyOf(contents[i]), GroupKeyOf(contents[i]));
    }
  }
  std::sort(small_keys.begin(), small_keys.end());
  std::sort(hashed_keys.begin(), hashed_keys.end());
  std::vector<std::string> expected = small_keys;
  for (const auto& [sample_key, key] : hashed_keys) {
    expected.push_back(key);
  }
  std::vector<std::string> keys;
  const std::vector<Row> rows = ScanData().rows;
  ASSERT_EQ(rows.size(), 2 * contents.size());
  for (std::size_t i = 0; i < rows.size(); i += 2) {
    keys.push_back(Utf8(rows[i].location));
  }
  EXPECT_EQ(keys, expected);
  EXPECT_EQ(GroupsOf(rows).size(), contents.size());
}

TEST(DuplicateOrder, Within_a_group_is_that_of_the_walk) {
  SimulatedWindows machine;
  const std::string content = Bytes(6000);
  // All files of a folder, then its subfolders, the last one first.
  for (const char16_t* path : {u"C:\\data\\m\\deep\\z", u"C:\\data\\m\\b", u"C:\\data\\z",
                               u"C:\\data\\a", u"C:\\data\\n\\c", u"C:\\data\\m\\a"}) {
    machine.AddFile(path, content);
  }
  EXPECT_EQ(GroupsOf(ScanData().rows),
            (Groups{{"C:\\data\\a", "C:\\data\\z", "C:\\data\\n\\c", "C:\\data\\m\\a",
                     "C:\\data\\m\\b", "C:\\data\\m\\deep\\z"}}));
}

TEST(DuplicateOrder, Within_small_groups_is_that_of_the_walk_too) {
  SimulatedWindows machine;
  for (const char16_t* path : {u"C:\\data\\s\\a", u"C:\\data\\z", u"C:\\data\\b"}) {
    machine.AddFile(path, "same");
  }
  EXPECT_EQ(GroupsOf(ScanData().rows), (Groups{{"C:\\data\\b", "C:\\data\\z", "C:\\data\\s\\a"}}));
}

TEST(DuplicateOrder, Follows_the_filtered_roots_shortest_first) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\longest\\a", Bytes(6000));
  machine.AddFile(u"C:\\short\\b", Bytes(6000));
  machine.AddFile(u"C:\\middle\\c", Bytes(6000));
  const Outcome scan = Scan(DuplicateRequest({u"C:\\longest", u"C:\\short", u"C:\\middle"}));
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\short\\b", "C:\\middle\\c", "C:\\longest\\a"}}));
}

// ---- Keys span no sizes, heads do

TEST(DuplicateGroups, Never_join_files_of_different_sizes) {
  SimulatedWindows machine;
  // Filled up with zeros they are all alike.
  for (const std::size_t size :
       std::initializer_list<std::size_t>{0, 1, 100, 149, 150, 151, 4096, 9000, 9001}) {
    AddPair(machine, std::to_string(size), std::string(size, '\0'));
  }
  const std::vector<Row> rows = ScanData().rows;
  EXPECT_EQ(GroupsOf(rows).size(), 9u);
  EXPECT_EQ(SizesOf(rows), (std::vector<std::string>{"0", "1", "100", "149", "150", "151", "4096",
                                                     "9000", "9001"}));
}

TEST(DuplicateGroups, Give_a_second_look_to_a_head_that_another_size_shares) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  const std::string a = Bytes(5000, 1);
  const std::string c = Bytes(6000, 1);
  ASSERT_EQ(HeadOf(a), HeadOf(c));
  machine.AddFile(u"C:\\data\\a", a);
  machine.AddFile(u"C:\\data\\b", Bytes(5000, 2));
  machine.AddFile(u"C:\\data\\c", c);
  machine.AddFile(u"C:\\data\\d", Bytes(6000, 3));
  EXPECT_EQ(ScanData().rows.size(), 0u);
  EXPECT_EQ(OpensOf(machine),
            (std::map<std::string, int>{
                {"C:\\data\\a", 2}, {"C:\\data\\b", 1}, {"C:\\data\\c", 2}, {"C:\\data\\d", 1}}));
  const CacheRecords cache = CacheOf(machine);
  ASSERT_EQ(cache.size(), 4u);
  EXPECT_EQ(cache[0].sample, SampleOf(a));
  EXPECT_EQ(cache[1].sample, HeadOf(Bytes(5000, 2)));
  EXPECT_EQ(cache[2].sample, SampleOf(c));
  EXPECT_EQ(cache[3].sample, HeadOf(Bytes(6000, 3)));
}

// ---- Fields and counters

TEST(DuplicateRows, Carry_the_name_as_the_folder_spells_it_and_the_first_one_as_title) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\Data\\Sub\\\u00DCber A.TXT", Bytes(300));
  machine.AddFile(u"C:\\Data\\Zulu.Doc", Bytes(300));
  const std::vector<Row> rows = ScanData().rows;
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0],
            DuplicateRow(0, 1, u"C:\\data\\Zulu.Doc", u"Zulu.Doc", GroupKeyOf(Bytes(300)), 300));
  EXPECT_EQ(rows[1], DuplicateRow(1, 1, u"C:\\data\\Sub\\\u00DCber A.TXT", u"Zulu.Doc",
                                  GroupKeyOf(Bytes(300)), 300));
}

TEST(DuplicateRows, Count_into_items_bytes_and_rows_without_any_header) {
  SimulatedWindows machine;
  AddPair(machine, "a", Bytes(100));
  AddPair(machine, "b", Bytes(7000));
  machine.AddFile(u"C:\\data\\c", Bytes(77));
  const Outcome scan = ScanData();
  ASSERT_EQ(scan.rows.size(), 4u);
  for (const Row& row : scan.rows) {
    EXPECT_EQ(row.numbers.kind, QS_ROW_DUPLICATE);
  }
  EXPECT_EQ(scan.poll.item_count, 4u);
  EXPECT_EQ(scan.poll.total_bytes, 2u * 100 + 2u * 7000);
  EXPECT_EQ(scan.poll.bytes_visited, 2u * 100 + 2u * 7000 + 77);
  EXPECT_EQ(scan.poll.files_visited, 5u);
  EXPECT_EQ(scan.performance.row_count, 4u);
  EXPECT_EQ(scan.performance.item_count, 4u);
}

TEST(DuplicateRows, Report_a_time_in_the_zone_of_the_machine) {
  SimulatedWindows machine;
  machine.SetTimeZoneOffset(90);
  AddPair(machine, "a", Bytes(100));
  const std::vector<Row> rows = ScanData().rows;
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].numbers.modified, kDefaultModified + 90ull * 600'000'000);
}

TEST(DuplicateGroupCounter, Holds_the_number_of_groups_and_starts_anew) {
  SimulatedWindows machine;
  AddPair(machine, "small", Bytes(100));
  AddPair(machine, "large", Bytes(7000));
  AddPair(machine, "larger", Bytes(8000));
  machine.AddFolder(u"C:\\empty");
  ProductScan scan(ScanRunners{nullptr, nullptr, duplicate::RunDuplicateScan});
  EXPECT_EQ(scan.group_count(), 0u);
  Request request = DuplicateRequest({u"C:\\data"});
  EXPECT_EQ(scan.Start(request.Get()), QS_OK);
  EXPECT_EQ(scan.group_count(), 3u);
  request.roots = {u"C:\\empty"};
  EXPECT_EQ(scan.Start(request.Get()), QS_OK);
  EXPECT_EQ(scan.group_count(), 0u);
}

TEST(DuplicateReport, Of_the_next_scan_begins_anew) {
  SimulatedWindows machine;
  AddPair(machine, "a", Bytes(100));
  AddPair(machine, "b", Bytes(7000));
  ScanHandle scan;
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  const std::vector<Row> first = ReadReport(scan);
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  EXPECT_EQ(ReadReport(scan), first);
  EXPECT_EQ(GroupsOf(first).size(), 2u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
