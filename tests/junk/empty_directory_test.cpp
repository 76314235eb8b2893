#include <algorithm>

#include "faults/allocation_faults.h"
#include "junk/junk_fixture.h"
#include "support/instrumented.h"
#include "support/named_case.h"

namespace quastel::junk_tests {
namespace {

std::int32_t Eligible(const Text& path) {
  return qs_empty_directory_eligible(path.c_str());
}

struct Candidate : support::NamedCase {
  void (*furnish)(SimulatedWindows& machine);
  const Char* path;
  std::int32_t eligible;
};

void Nothing(SimulatedWindows&) {}

class EmptyDirectory : public ::testing::TestWithParam<Candidate> {};

TEST_P(EmptyDirectory, Is_eligible_or_not) {
  SimulatedWindows machine;
  GetParam().furnish(machine);
  const std::string before = machine.Describe();
  EXPECT_EQ(Eligible(GetParam().path), GetParam().eligible) << Utf8(GetParam().path);
  EXPECT_EQ(machine.open_handles(), 0u);
  EXPECT_LE(machine.most_open_searches(), 1u);
  EXPECT_EQ(machine.Describe(), before);
}

// A structural type for folder names in the table below.
template <std::size_t kSize>
struct Name {
  constexpr Name(const Char (&text)[kSize]) { std::copy(text, text + kSize, units); }
  operator TextView() const { return TextView(units, kSize - 1); }
  Char units[kSize] = {};
};

template <Name kPath>
void AFolder(SimulatedWindows& machine) {
  machine.AddFolder(kPath);
}

template <Name kPath>
void AFile(SimulatedWindows& machine) {
  machine.AddFile(kPath, "");
}

INSTANTIATE_TEST_SUITE_P(
    Content, EmptyDirectory,
    ::testing::ValuesIn(std::vector<Candidate>{
        {{"Empty"}, AFolder<u"C:\\e">, u"C:\\e", 1},
        {{"EmptySubfolders"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\e\\1\\2\\3");
           m.AddFolder(u"C:\\e\\4");
         },
         u"C:\\e",
         1},
        {{"FileInside"}, AFile<u"C:\\e\\f">, u"C:\\e", 0},
        {{"FileThreeLevelsDown"}, AFile<u"C:\\e\\1\\2\\f">, u"C:\\e", 0},
        {{"FileBehindManyEmptyFolders"},
         [](SimulatedWindows& m) {
           for (Char c = 'a'; c < 'z'; ++c) {
             m.AddFolder(Text(u"C:\\e\\") + c + u"\\sub");
           }
           m.AddFile(u"C:\\e\\m\\sub\\f", "");
         },
         u"C:\\e",
         0},
        {{"HiddenFile"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\e\\desktop.ini", "x",
                     {platform::kAttributeHidden | platform::kAttributeSystem, 0});
         },
         u"C:\\e",
         0},
        {{"FileLikeADot"}, AFile<u"C:\\e\\...">, u"C:\\e", 0},
        {{"FolderLikeADot"}, AFolder<u"C:\\e\\...">, u"C:\\e", 1},
        {{"FileInAFolderLikeADot"}, AFile<u"\\\\?\\C:\\e\\...\\f">, u"C:\\e", 0},
        {{"FileInAFolderThatLeadsToAnEmptyNeighbour"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\e\\a");
           m.AddFile(u"\\\\?\\C:\\e\\a.\\f", "x");
         },
         u"C:\\e",
         0},
        {{"FileInAFolderWhoseNameEndsInABlank"}, AFile<u"\\\\?\\C:\\e\\a \\f">, u"C:\\e", 0},
        {{"EmptyFolderBesideAJunctionOfNearlyTheSameName"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\full\\f", "x");
           m.AddLink(LinkKind::kJunction, u"C:\\e\\a", u"C:\\full");
           m.AddFolder(u"\\\\?\\C:\\e\\a.");
         },
         u"C:\\e",
         1},
        {{"JunctionInside"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\full\\f", "x");
           m.AddLink(LinkKind::kJunction, u"C:\\e\\1\\junction", u"C:\\full");
         },
         u"C:\\e",
         1},
        {{"FolderLinkInside"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\full\\f", "x");
           m.AddLink(LinkKind::kFolderLink, u"C:\\e\\link", u"C:\\full");
         },
         u"C:\\e",
         1},
        {{"JunctionToItself"},
         [](SimulatedWindows& m) { m.AddLink(LinkKind::kJunction, u"C:\\e\\around", u"C:\\e"); },
         u"C:\\e",
         1},
        {{"FileLinkInside"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\f", "x");
           m.AddLink(LinkKind::kFileLink, u"C:\\e\\link", u"C:\\f");
         },
         u"C:\\e",
         0},
        {{"CloudFileInside"},
         [](SimulatedWindows& m) { m.AddPlaceholder(u"C:\\e\\1\\cloud", 5); },
         u"C:\\e",
         0},
        {{"UnlistableSubfolder"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\e\\1\\f", "x");
           m.Deny(u"C:\\e\\1", {.listing = true});
         },
         u"C:\\e",
         1},
        {{"FileBesideAnUnlistableSubfolder"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\e\\1");
           m.Deny(u"C:\\e\\1", {.listing = true});
           m.AddFile(u"C:\\e\\0\\f", "x");
         },
         u"C:\\e",
         0},
        {{"Unlistable"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\e\\f", "x");
           m.Deny(u"C:\\e", {.listing = true});
         },
         u"C:\\e",
         1},
        {{"UnqueryableSubfolder"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\e\\1");
           m.Deny(u"C:\\e\\1", {.querying = true});
         },
         u"C:\\e",
         1},
        {{"DownloadsInside"}, AFolder<u"C:\\e\\Downloads">, u"C:\\e", 1},
    }),
    support::CaseName());

INSTANTIATE_TEST_SUITE_P(
    Paths, EmptyDirectory,
    ::testing::ValuesIn(std::vector<Candidate>{
        {{"EmptyText"}, Nothing, u"", 0},
        {{"AFolderThatWouldNotBeTheOneThatIsListed"}, AFile<u"C:\\e\\f">, u"C:\\e ", 0},
        {{"ABlankThatIsMeant"}, AFolder<u"\\\\?\\C:\\e ">, u"\\\\?\\C:\\e ", 1},
        {{"Missing"}, Nothing, u"C:\\missing", 0},
        {{"MissingDrive"}, Nothing, u"Z:\\", 0},
        {{"NoPath"}, Nothing, u"|", 0},
        {{"SeparatorsAlone"}, Nothing, u"\\\\", 0},
        {{"AFile"}, AFile<u"C:\\f">, u"C:\\f", 0},
        {{"AJunction"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\empty");
           m.AddLink(LinkKind::kJunction, u"C:\\e", u"C:\\empty");
         },
         u"C:\\e",
         0},
        {{"AFolderLink"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\empty");
           m.AddLink(LinkKind::kFolderLink, u"C:\\e", u"C:\\empty");
         },
         u"C:\\e",
         0},
        {{"AFileLink"},
         [](SimulatedWindows& m) { m.AddLink(LinkKind::kFileLink, u"C:\\e", u"C:\\f"); },
         u"C:\\e",
         0},
        {{"Unqueryable"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\e");
           m.Deny(u"C:\\e", {.querying = true});
         },
         u"C:\\e",
         0},
        {{"OtherSpelling"}, AFolder<u"C:\\Folder\\Empty">, u"c:/FOLDER/empty", 1},
        {{"TrailingBackslash"}, AFolder<u"C:\\e">, u"C:\\e\\", 1},
        {{"TrailingSlash"}, AFolder<u"C:\\e">, u"C:\\e/", 1},
        {{"TrailingSeparatorAndAFile"}, AFile<u"C:\\e\\f">, u"C:\\e\\", 0},
        {{"TrailingSeparatorAndAFileBelow"}, AFile<u"C:\\e\\1\\f">, u"C:\\e\\", 0},
        {{"ExtendedForm"}, AFolder<u"C:\\e\\1">, u"\\\\?\\C:\\e", 1},
        {{"ExtendedFormAndAFile"}, AFile<u"C:\\e\\f">, u"\\\\?\\C:\\e", 0},
        {{"ExtendedFormWithSeparatorAndAFile"}, AFile<u"C:\\e\\f">, u"\\\\?\\C:\\e\\", 0},
        {{"ExtendedFormWithSeparatorAndAFileBelow"}, AFile<u"C:\\e\\1\\f">, u"\\\\?\\C:\\e\\", 0},
        {{"DriveRoot"}, [](SimulatedWindows& m) { m.AddDrive('D'); }, u"D:\\", 1},
        {{"DriveRootWithAFile"},
         [](SimulatedWindows& m) {
           m.AddDrive('D');
           m.AddFile(u"D:\\f", "");
         },
         u"D:\\",
         0},
        {{"DriveRootBesideAnEmptyCurrentFolder"},
         [](SimulatedWindows& m) {
           m.AddFile(u"C:\\f", "");
           m.AddFolder(u"C:\\empty");
           m.SetCurrentFolder(u"C:\\empty");
         },
         u"C:\\",
         0},
        {{"RelativePath"},
         [](SimulatedWindows& m) {
           m.AddFolder(u"C:\\w\\e");
           m.SetCurrentFolder(u"C:\\w");
         },
         u"e",
         1},
        {{"Share"},
         [](SimulatedWindows& m) {
           m.AddShare(u"\\\\server\\share");
           m.AddFolder(u"\\\\server\\share\\e\\1");
         },
         u"\\\\server\\share\\e",
         1},
    }),
    support::CaseName());

INSTANTIATE_TEST_SUITE_P(
    Downloads, EmptyDirectory,
    ::testing::ValuesIn(std::vector<Candidate>{
        {{"Exact"}, AFolder<u"C:\\u\\Downloads">, u"C:\\u\\Downloads", 0},
        {{"LowerCase"}, AFolder<u"C:\\u\\downloads">, u"C:\\u\\downloads", 0},
        {{"UpperCase"}, AFolder<u"C:\\u\\Downloads">, u"C:\\u\\DOWNLOADS", 0},
        {{"TrailingBackslash"}, AFolder<u"C:\\u\\downloads">, u"C:\\u\\downloads\\", 0},
        {{"TrailingSeparators"}, AFolder<u"C:\\u\\Downloads">, u"C:\\u\\Downloads\\/\\/", 0},
        {{"BehindASlash"}, AFolder<u"C:\\u\\Downloads">, u"C:/u/dOWNLOADS/", 0},
        {{"OnADrive"}, AFolder<u"C:\\Downloads">, u"C:\\Downloads", 0},
        {{"ExtendedForm"}, AFolder<u"C:\\Downloads">, u"\\\\?\\C:\\Downloads", 0},
        {{"Relative"}, AFolder<u"C:\\Downloads">, u"Downloads", 0},
        {{"RelativeInAnotherCase"}, AFolder<u"C:\\Downloads">, u"DownLoads", 0},
        {{"RelativeWithSeparator"}, AFolder<u"C:\\Downloads">, u"Downloads\\", 0},
        {{"FolderInside"}, AFolder<u"C:\\Downloads\\e">, u"C:\\Downloads\\e", 1},
        {{"LongerName"}, AFolder<u"C:\\Downloads2">, u"C:\\Downloads2", 1},
        {{"LongerInFront"}, AFolder<u"C:\\My Downloads">, u"C:\\My Downloads", 1},
        {{"ShorterName"}, AFolder<u"C:\\Download">, u"C:\\Download", 1},
        {{"WithAnExtension"}, AFolder<u"C:\\Downloads.old">, u"C:\\Downloads.old", 1},
        // The long s folds to an s elsewhere, but is no letter of ASCII.
        {{"OtherLetter"}, AFolder<u"C:\\Download\u017F">, u"C:\\Download\u017F", 1},
    }),
    support::CaseName());

TEST(EmptyDirectoryExport, Of_null_is_not_eligible) {
  EXPECT_EQ(qs_empty_directory_eligible(nullptr), 0);
}

TEST(EmptyDirectoryExport, Does_not_look_at_a_folder_called_downloads) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\Downloads");
  machine.SetRecording(true);
  EXPECT_EQ(Eligible(u"C:\\Downloads\\"), 0);
  EXPECT_EQ(Eligible(u""), 0);
  EXPECT_TRUE(machine.record().empty());
}

TEST(EmptyDirectoryExport, Reaches_long_paths) {
  for (const std::size_t length : {247u, 248u, 259u, 260u, 300u, 2000u}) {
    SCOPED_TRACE(length);
    const Text folder = support::NestedTo(length, u"C:");
    SimulatedWindows machine;
    machine.AddFolder(folder);
    EXPECT_EQ(Eligible(folder), 1);
    EXPECT_EQ(Eligible(folder + u"\\"), 1);
    EXPECT_EQ(Eligible(u"C:\\" + folder.substr(3, 60)), 1);
    machine.AddFile(folder + u"\\f", "");
    EXPECT_EQ(Eligible(folder), 0);
    EXPECT_EQ(Eligible(folder + u"\\"), 0) << "with a separator at the end";
    EXPECT_EQ(Eligible(folder + u"/"), 0) << "with a slash at the end";
    EXPECT_EQ(Eligible(folder + u"\\\\"), 0) << "with two separators at the end";
    EXPECT_EQ(Eligible(u"C:\\" + folder.substr(3, 60)), 0) << "far below";
    machine.Remove(folder + u"\\f");
    machine.AddFile(folder + u"\\sub\\f", "");
    EXPECT_EQ(Eligible(folder + u"\\"), 0) << "one level below a separator at the end";
  }
  SimulatedWindows machine;
  const Text downloads = support::NestedTo(300, u"C:") + u"\\Downloads";
  machine.AddFolder(downloads);
  EXPECT_EQ(Eligible(downloads + u"\\"), 0);
}

TEST(EmptyDirectoryExport, Looks_into_the_folder_found_last_first_and_stops_at_a_file) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\e\\1");
  machine.AddFile(u"C:\\e\\2\\a\\f", "");
  machine.AddFolder(u"C:\\e\\2\\b\\c");
  machine.AddFolder(u"C:\\e\\3\\d");
  machine.SetRecording(true);
  EXPECT_EQ(Eligible(u"C:\\e"), 0);
  Lines searches;
  for (const CallRecord& record : machine.record()) {
    if (record.call == Call::kFindFirst || record.call == Call::kFindFirstBasic) {
      searches.push_back(Utf8(record.path));
    }
  }
  EXPECT_EQ(searches, (Lines{"C:\\e\\*", "C:\\e\\3\\*", "C:\\e\\3\\d\\*", "C:\\e\\2\\*",
                             "C:\\e\\2\\b\\*", "C:\\e\\2\\b\\c\\*", "C:\\e\\2\\a\\*"}));
  EXPECT_EQ(machine.CallCount(Call::kQueryAttributes), 1u) << "the listings say what an entry is";
}

TEST(EmptyDirectoryExport, Stops_at_the_first_file_of_a_large_folder) {
  SimulatedWindows machine;
  for (int i = 0; i < 10'000; ++i) {
    machine.AddFile(u"C:\\e\\" + support::Wide(std::to_string(i)), "");
  }
  EXPECT_EQ(Eligible(u"C:\\e"), 0);
  EXPECT_LE(machine.CallCount(Call::kFindNext), 3u);
}

TEST(EmptyDirectoryExport, Of_a_very_deep_tree_needs_no_stack) {
  SimulatedWindows machine;
  Text folder = u"C:";
  // What watches the code makes its frames larger: fewer of them fill the stack.
  for (int i = 0; i < support::Rounds(4'000, 1'500); ++i) {
    folder += u"\\n";
  }
  machine.AddFolder(folder);
  std::int32_t empty = -1;
  RunOnStack(kSmallStack, [&] { empty = Eligible(u"C:\\n"); });
  EXPECT_EQ(empty, 1);
  machine.AddFile(folder + u"\\f", "");
  std::int32_t full = -1;
  RunOnStack(kSmallStack, [&] { full = Eligible(u"C:\\n"); });
  EXPECT_EQ(full, 0);
}

TEST(EmptyDirectoryExport, Without_memory_never_takes_a_full_folder_for_an_empty_one) {
  SimulatedWindows machine;
  const Text folder = support::NestedTo(260, u"C:");
  machine.AddFile(folder + u"\\sub\\deep\\f", "");
  machine.AddFolder(folder + u"\\tub\\deep");
  for (const Text& path : {folder, folder + u"\\", Text(u"C:\\") + folder.substr(3, 60)}) {
    for (std::uint64_t nth = 1;; ++nth) {
      ASSERT_LT(nth, 1'000u);
      std::int32_t eligible = -1;
      std::uint64_t injected = 0;
      {
        faults::AllocationFaults faults(nth, simulated::Repeat::kOnce);
        eligible = qs_empty_directory_eligible(path.c_str());
        injected = faults.injected();
      }
      ASSERT_EQ(eligible, 0) << nth;
      ASSERT_EQ(machine.open_handles(), 0u);
      if (injected == 0) {
        EXPECT_GT(nth, 3u);
        break;
      }
    }
  }
}

}  // namespace
}  // namespace quastel::junk_tests
