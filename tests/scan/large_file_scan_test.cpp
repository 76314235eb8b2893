#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

class LargeFileScan : public ::testing::Test {
 protected:
  std::vector<Row> Report(Request request, qs_status status = QS_OK) {
    EXPECT_EQ(scan_.Start(std::move(request)), status);
    EXPECT_EQ(machine_.open_handles(), 0u);
    return ReadReport(scan_);
  }
  std::vector<Text> Paths(Request request) { return PathsOf(Report(std::move(request))); }

  SimulatedWindows machine_;
  ScanHandle scan_;
};

Row LargeRow(TextView location, TextView name, std::uint32_t category, TextView title,
             std::uint64_t id = 0) {
  Row row;
  row.path = Text(location) + u"\\" + Text(name);
  row.name = name;
  row.title = title;
  row.location = location;
  row.numbers = {id,
                 category + 1,
                 QS_ROW_LARGE_FILE,
                 0,
                 static_cast<std::int64_t>(kLarge),
                 kDefaultModified,
                 1,
                 0,
                 0,
                 category};
  return row;
}

TEST_F(LargeFileScan, Fills_every_field_of_a_row_of_each_class) {
  machine_.AddSizedFile(u"C:\\data\\a.ZIP", kLarge);
  machine_.AddSizedFile(u"C:\\data\\b.pdf", kLarge);
  machine_.AddSizedFile(u"C:\\data\\c.jpeg", kLarge);
  machine_.AddSizedFile(u"C:\\data\\d.Mkv", kLarge);
  machine_.AddSizedFile(u"C:\\data\\e", kLarge);
  EXPECT_EQ(Report(Request::LargeFiles({u"C:\\data"})),
            (std::vector<Row>{LargeRow(u"C:\\data", u"a.ZIP", 0, u"Archives", 0),
                              LargeRow(u"C:\\data", u"b.pdf", 1, u"Documents", 1),
                              LargeRow(u"C:\\data", u"c.jpeg", 2, u"Images", 2),
                              LargeRow(u"C:\\data", u"d.Mkv", 3, u"Media files", 3),
                              LargeRow(u"C:\\data", u"e", 4, u"Other", 4)}));
  EXPECT_EQ(CurrentGroupOf(scan_), u"") << "only junk scans name a group";
  EXPECT_EQ(Poll(scan_).path_published, 0u);
}

TEST_F(LargeFileScan, Reports_strictly_more_than_10_mebibytes) {
  machine_.AddSizedFile(u"C:\\data\\at.bin", kNotLarge);
  machine_.AddSizedFile(u"C:\\data\\above.bin", kLarge);
  machine_.AddSizedFile(u"C:\\data\\huge.bin", std::uint64_t{5} << 40);
  const std::vector<Row> rows = Report(Request::LargeFiles({u"C:\\data"}));
  EXPECT_EQ(PathsOf(rows), (std::vector<Text>{u"C:\\data\\above.bin", u"C:\\data\\huge.bin"}));
  EXPECT_EQ(rows[1].numbers.size, std::int64_t{5} << 40);
  EXPECT_EQ(Poll(scan_).files_visited, 3u);
  EXPECT_EQ(Poll(scan_).bytes_visited, kNotLarge + kLarge + (std::uint64_t{5} << 40));
  EXPECT_EQ(Poll(scan_).total_bytes, kLarge + (std::uint64_t{5} << 40));
  EXPECT_EQ(Poll(scan_).item_count, 2u);
}

TEST_F(LargeFileScan, Reports_the_local_last_write_time_in_ticks) {
  machine_.SetTimeZoneOffset(-90);
  machine_.AddSizedFile(u"C:\\data\\a.bin", kLarge, 0,
                        {platform::kAttributeArchive, 132'000'000'000'000'007});
  const std::vector<Row> rows = Report(Request::LargeFiles({u"C:\\data"}));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].numbers.modified,
            132'000'000'000'000'007 - std::uint64_t{90} * 60 * 10'000'000 + kTicksAt1601);
}

TEST_F(LargeFileScan, Walks_a_folders_files_first_and_then_its_folders_last_found_first) {
  for (const TextView path :
       {u"C:\\data\\m\\1.bin", u"C:\\data\\a.bin", u"C:\\data\\n\\2.bin", u"C:\\data\\z.bin",
        u"C:\\data\\n\\x\\3.bin", u"C:\\data\\n\\y\\4.bin"}) {
    machine_.AddSizedFile(path, kLarge);
  }
  EXPECT_EQ(Paths(Request::LargeFiles({u"C:\\data"})),
            (std::vector<Text>{u"C:\\data\\a.bin", u"C:\\data\\z.bin", u"C:\\data\\n\\2.bin",
                               u"C:\\data\\n\\y\\4.bin", u"C:\\data\\n\\x\\3.bin",
                               u"C:\\data\\m\\1.bin"}));
}

TEST_F(LargeFileScan, Keeps_the_spelling_of_the_root_and_takes_the_location_from_the_path) {
  struct Case {
    const Char* root;
    Text path;
    Text location;
  };
  const Case cases[] = {
      {u"C:\\Data", u"C:\\Data\\Big.bin", u"C:\\Data"},
      {u"c:\\DATA", u"c:\\DATA\\Big.bin", u"c:\\DATA"},
      {u"C:/data", u"C:/data\\Big.bin", u"C:/data"},
      {u"C:\\data\\", u"C:\\data\\\\Big.bin", u"C:\\data\\"},
      {u"C:\\data/", u"C:\\data/\\Big.bin", u"C:\\data/"},
      {u"\\\\?\\C:\\data", u"\\\\?\\C:\\data\\Big.bin", u"\\\\?\\C:\\data"},
  };
  machine_.AddSizedFile(u"C:\\Data\\Big.bin", kLarge);
  for (const Case& c : cases) {
    const std::vector<Row> rows = Report(Request::LargeFiles({c.root}));
    ASSERT_EQ(rows.size(), 1u) << ::testing::PrintToString(Text(c.root));
    EXPECT_EQ(rows[0].path, c.path);
    EXPECT_EQ(rows[0].name, u"Big.bin");
    EXPECT_EQ(rows[0].location, c.location);
  }
}

TEST_F(LargeFileScan, Reports_the_root_of_a_drive_and_a_share) {
  machine_.AddDrive('D');
  machine_.AddSizedFile(u"D:\\big.bin", kLarge);
  machine_.AddShare(u"\\\\server\\share");
  machine_.AddSizedFile(u"\\\\server\\share\\f\\big.bin", kLarge);
  const std::vector<Row> rows = Report(Request::LargeFiles({u"D:\\", u"\\\\server\\share"}));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].path, u"D:\\\\big.bin");
  EXPECT_EQ(rows[0].location, u"D:\\");
  EXPECT_EQ(rows[1].path, u"\\\\server\\share\\f\\big.bin");
  EXPECT_EQ(rows[1].location, u"\\\\server\\share\\f");
}

TEST_F(LargeFileScan, Reports_long_paths_in_their_extended_form) {
  const Text folder = u"C:\\data\\" + Text(120, Char{'f'}) + u"\\" + Text(119, Char{'g'});
  ASSERT_EQ(folder.size(), 248u);
  machine_.AddSizedFile(folder + u"\\big.bin", kLarge);
  const std::vector<Row> rows = Report(Request::LargeFiles({u"C:\\data"}));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].path, u"\\\\?\\" + folder + u"\\big.bin");
  EXPECT_EQ(rows[0].location, u"\\\\?\\" + folder);
  EXPECT_EQ(rows[0].name, u"big.bin");
}

TEST_F(LargeFileScan, Never_reports_a_path_that_became_that_of_a_paging_file) {
  const Text folder = u"C:\\data\\" + Text(120, Char{'f'}) + u"\\" + Text(110, Char{'g'});
  machine_.AddSizedFile(u"\\\\?\\" + folder + u"\\pagefile.sys.", kLarge);
  EXPECT_EQ(Paths(Request::LargeFiles({u"C:\\data"})), std::vector<Text>{});
  EXPECT_EQ(Poll(scan_).files_visited, 1u);
}

TEST_F(LargeFileScan, Counts_paging_files_but_never_reports_them) {
  machine_.AddSizedFile(u"C:\\pagefile.sys", kLarge);
  machine_.AddSizedFile(u"C:\\SwapFile.sys", kLarge);
  machine_.AddSizedFile(u"C:\\deep\\down\\HIBERFIL.SYS", kLarge);
  machine_.AddSizedFile(u"C:\\pagefile.sys.bak", kLarge);
  EXPECT_EQ(Paths(Request::LargeFiles({u"C:\\"})), std::vector<Text>{u"C:\\\\pagefile.sys.bak"});
  EXPECT_EQ(Poll(scan_).files_visited, 4u);
  EXPECT_EQ(Poll(scan_).bytes_visited, 4 * kLarge);
  EXPECT_EQ(Poll(scan_).total_bytes, kLarge);
}

TEST_F(LargeFileScan, Keeps_out_of_the_protected_folders_when_asked_to) {
  for (const TextView folder :
       {u"C:\\Program Files", u"C:\\Program Files (x86)", u"C:\\Windows", u"C:\\ProgramData",
        u"C:\\$Recycle.Bin", u"C:\\Users\\u\\AppData"}) {
    machine_.AddSizedFile(Text(folder) + u"\\deep\\big.bin", kLarge);
    machine_.AddSizedFile(Text(folder) + u"\\big.bin", kLarge);
  }
  machine_.AddSizedFile(u"C:\\WindowsApps\\big.bin", kLarge);
  machine_.AddSizedFile(u"C:\\Users\\u\\Documents\\big.bin", kLarge);
  machine_.AddSizedFile(u"C:\\Users\\v\\AppData\\big.bin", kLarge);
  machine_.AddSizedFile(u"C:\\deep\\Windows\\big.bin", kLarge);
  EXPECT_EQ(
      Paths(Request::ProtectedLargeFiles({u"C:\\"})),
      (std::vector<Text>{u"C:\\\\WindowsApps\\big.bin", u"C:\\\\Users\\v\\AppData\\big.bin",
                         u"C:\\\\Users\\u\\Documents\\big.bin", u"C:\\\\deep\\Windows\\big.bin"}));
  EXPECT_EQ(Poll(scan_).files_visited, 4u) << "a protected folder is not even listed";
  EXPECT_EQ(Report(Request::LargeFiles({u"C:\\"})).size(), 16u);
}

TEST_F(LargeFileScan, Leaves_a_file_in_the_place_of_a_protected_folder_out) {
  machine_.AddSizedFile(u"C:\\ProgramData", kLarge);
  machine_.AddSizedFile(u"C:\\data\\ProgramData", kLarge);
  EXPECT_EQ(Paths(Request::ProtectedLargeFiles({u"C:\\"})),
            (std::vector<Text>{u"C:\\\\data\\ProgramData"}));
  EXPECT_EQ(Poll(scan_).files_visited, 2u);
  EXPECT_EQ(Paths(Request::LargeFiles({u"C:\\"})).size(), 2u);
}

TEST_F(LargeFileScan, Of_a_root_inside_a_protected_folder_finds_nothing) {
  machine_.AddSizedFile(u"C:\\Windows\\Temp\\big.bin", kLarge);
  EXPECT_EQ(Paths(Request::ProtectedLargeFiles({u"C:\\Windows\\Temp"})), std::vector<Text>{});
  EXPECT_EQ(Paths(Request::ProtectedLargeFiles({u"C:\\Windows"})), std::vector<Text>{});
  EXPECT_EQ(Poll(scan_).files_visited, 0u);
  EXPECT_EQ(Poll(scan_).state, QS_STATE_DONE);
}

TEST_F(LargeFileScan, Neither_reports_nor_enters_links) {
  machine_.AddSizedFile(u"C:\\target\\big.bin", kLarge);
  machine_.AddSizedFile(u"C:\\data\\own.bin", kLarge);
  machine_.AddLink(LinkKind::kJunction, u"C:\\data\\junction", u"C:\\target");
  machine_.AddLink(LinkKind::kFolderLink, u"C:\\data\\folder link", u"C:\\target");
  machine_.AddLink(LinkKind::kFileLink, u"C:\\data\\file link.bin", u"C:\\target\\big.bin");
  machine_.AddPlaceholder(u"C:\\data\\cloud.bin", kLarge);
  EXPECT_EQ(Paths(Request::LargeFiles({u"C:\\data"})), std::vector<Text>{u"C:\\data\\own.bin"});
  EXPECT_EQ(Poll(scan_).files_visited, 1u);
}

TEST_F(LargeFileScan, Of_a_root_that_cannot_be_walked_succeeds_without_rows) {
  machine_.AddSizedFile(u"C:\\file.bin", kLarge);
  machine_.AddSizedFile(u"C:\\target\\big.bin", kLarge);
  machine_.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\target");
  machine_.AddSizedFile(u"C:\\unlistable\\big.bin", kLarge);
  machine_.Deny(u"C:\\unlistable", {.listing = true});
  machine_.AddSizedFile(u"C:\\unqueryable\\big.bin", kLarge);
  machine_.Deny(u"C:\\unqueryable", {.querying = true});
  for (const Char* root : {u"C:\\missing", u"C:\\file.bin", u"C:\\junction", u"Z:\\",
                           u"C:\\unlistable", u"C:\\unqueryable", u"|", u"C:\\target\\*"}) {
    EXPECT_EQ(Paths(Request::LargeFiles({root})), std::vector<Text>{})
        << ::testing::PrintToString(Text(root));
    EXPECT_EQ(Poll(scan_).state, QS_STATE_DONE);
  }
}

TEST_F(LargeFileScan, Passes_over_folders_that_cannot_be_listed) {
  machine_.AddSizedFile(u"C:\\data\\a\\1.bin", kLarge);
  machine_.AddSizedFile(u"C:\\data\\b\\2.bin", kLarge);
  machine_.AddSizedFile(u"C:\\data\\c\\3.bin", kLarge);
  machine_.Deny(u"C:\\data\\b", {.listing = true});
  EXPECT_EQ(Paths(Request::LargeFiles({u"C:\\data"})),
            (std::vector<Text>{u"C:\\data\\c\\3.bin", u"C:\\data\\a\\1.bin"}));
}

TEST_F(LargeFileScan, Passes_over_a_folder_that_vanishes_before_it_is_listed) {
  machine_.AddSizedFile(u"C:\\data\\a\\1.bin", kLarge);
  machine_.AddSizedFile(u"C:\\data\\b\\2.bin", kLarge);
  InsideCall(machine_, Call::kFindFirstBasic, 2, [&] { machine_.Remove(u"C:\\data\\b"); });
  EXPECT_EQ(Paths(Request::LargeFiles({u"C:\\data"})), std::vector<Text>{u"C:\\data\\a\\1.bin"});
  machine_.SetHook(nullptr);
}

TEST_F(LargeFileScan, Reports_files_that_can_neither_be_opened_nor_queried) {
  machine_.AddSizedFile(u"C:\\data\\denied.bin", kLarge);
  machine_.Deny(u"C:\\data\\denied.bin", {.opening = true, .querying = true});
  machine_.AddSizedFile(u"C:\\data\\locked.bin", kLarge);
  machine_.Lock(u"C:\\data\\locked.bin");
  EXPECT_EQ(Report(Request::LargeFiles({u"C:\\data"})).size(), 2u);
  EXPECT_EQ(machine_.CallCount(Call::kOpenFile), 0u);
  EXPECT_EQ(machine_.CallCount(Call::kQueryFileFacts), 0u);
}

TEST_F(LargeFileScan, Lists_every_folder_once_and_asks_for_no_files_attributes) {
  machine_.SetRecording(true);
  machine_.AddSizedFile(u"C:\\data\\a\\1.bin", kLarge);
  machine_.AddSizedFile(u"C:\\data\\a\\2.bin", 1);
  machine_.AddFolder(u"C:\\data\\b");
  ASSERT_EQ(Report(Request::LargeFiles({u"C:\\data"})).size(), 1u);
  EXPECT_EQ(machine_.CallCount(Call::kFindFirstBasic), 3u);
  EXPECT_EQ(machine_.CallCountFor(Call::kFindFirstBasic, u"C:\\data\\*"), 1u);
  EXPECT_EQ(machine_.CallCountFor(Call::kFindFirstBasic, u"C:\\data\\a\\*"), 1u);
  EXPECT_EQ(machine_.CallCountFor(Call::kFindFirstBasic, u"C:\\data\\b\\*"), 1u);
  EXPECT_EQ(machine_.CallCount(Call::kFindFirst), 0u);
  EXPECT_EQ(machine_.CallCount(Call::kQueryAttributes), 1u);
  EXPECT_EQ(machine_.CallCount(Call::kFindClose), 3u);
  EXPECT_LE(machine_.most_open_searches(), 1u);
}

TEST_F(LargeFileScan, Leaves_the_disk_as_it_was) {
  machine_.AddSizedFile(u"C:\\data\\a\\1.bin", kLarge);
  const std::string before = machine_.Describe();
  ASSERT_EQ(Report(Request::LargeFiles({u"C:\\"})).size(), 1u);
  EXPECT_EQ(machine_.Describe(), before);
}

}  // namespace
}  // namespace quastel::scan_tests
