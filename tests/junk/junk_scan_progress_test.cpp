// What others see of a junk scan while it runs, and what it has measured.

#include <atomic>
#include <thread>

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

using JunkScanProgress = JunkScanTest;

TEST_F(JunkScanProgress, Names_the_top_level_category_that_is_walked) {
  for (const TextView file : {u"C:\\1\\a", u"C:\\2\\a", u"C:\\3\\a", u"C:\\4\\a"}) {
    machine_.AddFile(file, "x");
  }
  Lines seen;
  machine_.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kFindFirstBasic || record.call == Call::kOpenFile) {
      seen.push_back(Utf8(record.path) + " in " + Utf8(scan_tests::CurrentGroupOf(scan_)));
    }
  });
  const std::string document =
      InRoot(Category("A", "<Folder Path='C:\\1'/>" + Category("N", "<Folder Path='C:\\2'/>") +
                               "<Folder Path='C:\\3'/>") +
             Category("B", "<Folder Path='C:\\4' DisplayName='n'/>"));
  EXPECT_EQ(Scan(document), QS_OK);
  EXPECT_EQ(seen, (Lines{"C:\\rules.xml in ", "C:\\1\\* in A", "C:\\2\\* in A", "C:\\3\\* in A",
                         "C:\\4\\* in B"}));
  EXPECT_EQ(Utf8(scan_tests::CurrentGroupOf(scan_)), "B") << "it stays when the scan is over";
  seen.clear();
  EXPECT_EQ(Scan(document), QS_OK);
  ASSERT_FALSE(seen.empty());
  EXPECT_EQ(seen[0], "C:\\rules.xml in ") << "a new scan begins without one";
  machine_.SetHook(nullptr);
}

TEST_F(JunkScanProgress, Names_a_category_that_has_no_rules) {
  EXPECT_EQ(Scan(InRoot(Category("A", "") + Category("B", "<Other/>"))), QS_OK);
  EXPECT_EQ(Utf8(scan_tests::CurrentGroupOf(scan_)), "B");
}

TEST_F(JunkScanProgress, Counts_files_and_bytes) {
  machine_.AddFile(u"C:\\d\\1\\a", "123");
  machine_.AddFile(u"C:\\d\\1\\b", "");
  machine_.AddFile(u"C:\\d\\loose", "12345");
  EXPECT_EQ(Scan(InCategory("<ChildrenList StartPath='C:\\d'/><Folder Path='C:\\d\\1'/>")), QS_OK);
  const qs_product_scan_status status = scan_tests::Poll(scan_);
  EXPECT_EQ(status.state, QS_STATE_DONE);
  EXPECT_EQ(status.status, QS_OK);
  EXPECT_EQ(status.path_published, 0u);
  EXPECT_EQ(status.files_visited, 5u);
  EXPECT_EQ(status.bytes_visited, 11u);
  EXPECT_EQ(status.total_bytes, 11u);
  EXPECT_EQ(status.item_count, 5u);
  const qs_product_scan_performance performance = scan_tests::PerformanceOf(scan_);
  EXPECT_EQ(performance.kind, QS_SCAN_KIND_JUNK_RULES);
  EXPECT_EQ(performance.files_visited, 5u);
  EXPECT_EQ(performance.bytes_visited, 11u);
  EXPECT_EQ(performance.item_count, 5u);
  EXPECT_EQ(performance.row_count, 8u);
  EXPECT_EQ(performance.status, QS_OK);
}

TEST_F(JunkScanProgress, Counts_no_file_that_no_rule_names) {
  machine_.AddFile(u"C:\\t\\a.txt", "x");
  machine_.AddFile(u"C:\\t\\b.log", "xy");
  machine_.AddFile(u"C:\\u\\c.log", "xyz");
  EXPECT_EQ(Scan(InCategory("<Folder Path='C:\\t' Pattern='*.log'/>")), QS_OK);
  EXPECT_EQ(scan_tests::Poll(scan_).files_visited, 1u);
  EXPECT_EQ(scan_tests::Poll(scan_).bytes_visited, 2u);
}

TEST_F(JunkScanProgress, Shows_a_path_at_most_every_20_milliseconds) {
  for (const TextView file : {u"C:\\1\\a", u"C:\\1\\b", u"C:\\2\\c", u"C:\\2\\d", u"C:\\3\\e"}) {
    machine_.AddFile(file, "x");
  }
  Lines seen;
  std::uint64_t folders = 0;
  machine_.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kFindFirstBasic) {
      ++folders;
      seen.push_back(Utf8(scan_tests::CurrentPathOf(scan_)));
      machine_.AdvanceClock(folders == 2 ? 20 : 0);
    }
  });
  EXPECT_EQ(Scan(InCategory("<Folder Path='C:\\1'/><Folder "
                            "Path='C:\\2'/><Folder Path='C:\\3'/>")),
            QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(seen, (Lines{"", "C:\\1\\a", "C:\\2\\c"}));
}

TEST_F(JunkScanProgress, Yields_after_each_256_files) {
  for (int i = 0; i < 600; ++i) {
    machine_.AddFile(u"C:\\t\\" + support::Wide(std::to_string(i)), "");
  }
  EXPECT_EQ(Scan(InCategory("<Folder Path='C:\\t'/>")), QS_OK);
  EXPECT_EQ(machine_.sleeps(), (std::vector<std::uint32_t>{0, 0}));
}

TEST_F(JunkScanProgress, Measures_the_reading_and_the_walk_apart) {
  machine_.AddFile(u"C:\\t\\sub\\a", "x");
  machine_.SetHook([&](const CallRecord& record) {
    machine_.AdvanceClock(record.call == Call::kReadFrom         ? 7
                          : record.call == Call::kFindFirstBasic ? 100
                                                                 : 0);
  });
  EXPECT_EQ(Scan(InCategory("<Folder Path='C:\\t'/>")), QS_OK);
  qs_product_scan_performance performance = scan_tests::PerformanceOf(scan_);
  EXPECT_EQ(performance.load_rules_us, 7'000u);
  EXPECT_EQ(performance.walk_us, 200'000u);
  EXPECT_EQ(performance.elapsed_us, 207'000u);
  EXPECT_EQ(performance.filter_roots_us, 0u);
  EXPECT_EQ(performance.group_by_size_us, 0u);
  EXPECT_EQ(performance.sample_us, 0u);
  EXPECT_EQ(performance.sample_keys_us, 0u);
  EXPECT_EQ(performance.plan_hashes_us, 0u);
  EXPECT_EQ(performance.hash_us, 0u);
  EXPECT_EQ(performance.group_by_hash_us, 0u);
  EXPECT_EQ(performance.candidates, 0u);
  EXPECT_EQ(performance.sampled_items, 0u);
  EXPECT_EQ(performance.hashed_items, 0u);
  EXPECT_EQ(performance.unhashed_groups, 0u);

  // Also when either fails.
  EXPECT_EQ(Scan(InCategory("<Folder Path='C:\\t'/><Folder/>")), QS_INVALID_ARGUMENT);
  performance = scan_tests::PerformanceOf(scan_);
  EXPECT_EQ(performance.load_rules_us, 7'000u);
  EXPECT_EQ(performance.walk_us, 200'000u);
  EXPECT_EQ(Scan("<Root"), QS_FAILED);
  machine_.SetHook(nullptr);
  performance = scan_tests::PerformanceOf(scan_);
  EXPECT_EQ(performance.load_rules_us, 7'000u);
  EXPECT_EQ(performance.walk_us, 0u);
}

TEST_F(JunkScanProgress, Rows_are_readable_while_the_scan_runs) {
  machine_.AddFile(u"C:\\1\\a", "x");
  machine_.AddFile(u"C:\\2\\b", "x");
  Lines early;
  scan_tests::InsideCall(machine_, Call::kFindFirstBasic, 2, [&] {
    early = Outline(scan_tests::ReadReport(scan_));
    EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_RUNNING);
    EXPECT_EQ(scan_tests::Poll(scan_).item_count, 1u);
  });
  EXPECT_EQ(Scan(InCategory("<Folder Path='C:\\1'/><Folder Path='C:\\2'/>")), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(early, (Lines{"[1<0] c", "[g0<1] 1 = C:\\1", "g0<1 1: C:\\1\\a"}));
}

TEST_F(JunkScanProgress, Other_threads_may_ask_and_read_all_the_time) {
  for (int i = 0; i < 300; ++i) {
    machine_.AddFile(u"C:\\t\\" + support::Wide(std::to_string(i)), "x");
  }
  machine_.AddFile(kRulesPath, InRoot(Category("A", "<Folder Path='C:\\t'/>") +
                                      Category("B", "<ChildrenList StartPath='C:\\t'/>")));
  std::atomic<bool> over{false};
  std::atomic<std::uint64_t> asked{0};
  std::thread asker([&] {
    while (!over) {
      const Text group = scan_tests::CurrentGroupOf(scan_);
      EXPECT_TRUE(group.empty() || group == u"A" || group == u"B") << Utf8(group);
      const std::uint64_t count = scan_tests::RowCountOf(scan_);
      if (count > 0) {
        const Row row = scan_tests::ReadRow(scan_, count - 1);
        EXPECT_EQ(row.numbers.large_class, QS_LARGE_OTHER);
      }
      scan_tests::CurrentPathOf(scan_);
      scan_tests::PerformanceOf(scan_);
      ++asked;
    }
  });
  while (asked == 0) {
    std::this_thread::yield();
  }
  EXPECT_EQ(scan_.Start(JunkRequest()), QS_OK);
  over = true;
  asker.join();
  EXPECT_EQ(scan_tests::RowCountOf(scan_), 603u);
}

}  // namespace
}  // namespace quastel::junk_tests
