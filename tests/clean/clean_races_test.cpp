// Another process that swaps what a clean is about to delete, between any two of its calls.
//
// Each swap is tried before every single call. What must not be lost may be lost in no place but
// the windows that are stated with the swap: between the last look at something and the removal
// there is nothing that could notice another thing in its place.

#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

// The findings that are named: two folders with one file each.
inline constexpr TextView kFirst = u"C:\\t\\d1\\f";
inline constexpr TextView kFirstFolder = u"C:\\t\\d1";
inline constexpr TextView kSecond = u"C:\\t\\d2\\g";

std::set<std::string> LinesOf(const SimulatedWindows& machine) {
  std::set<std::string> lines;
  const std::string text = machine.Describe();
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    lines.insert(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

std::set<std::string> Without(const std::set<std::string>& from,
                              const std::set<std::string>& what) {
  std::set<std::string> rest;
  for (const std::string& line : from) {
    if (what.count(line) == 0) {
      rest.insert(line);
    }
  }
  return rest;
}

// One machine with a scanned tree and everything that somebody could point the clean at.
class Scene {
 public:
  explicit Scene(std::uint32_t kind) {
    size_ = kind == QS_SCAN_KIND_LARGE_FILES ? kLarge : 9;
    machine.AddDrive('D');
    machine.AddFile(kRulesPath, FolderRules({Text(kTree)}));
    for (const TextView path : {kFirst, kSecond, TextView(u"C:\\t\\keep\\k")}) {
      machine.AddSizedFile(path, size_);
    }
    // The same names, sizes and times in another place.
    AddOther(u"C:\\precious\\f");
    AddOther(u"C:\\precious\\g");
    AddOther(u"C:\\precious tree\\d1\\f");
    AddOther(u"C:\\precious tree\\d2\\g");
    machine.AddFolder(u"C:\\empty tree\\d1");
    machine.AddFolder(u"C:\\empty tree\\d2");
    Request request = kind == QS_SCAN_KIND_JUNK_RULES   ? JunkRequest()
                      : kind == QS_SCAN_KIND_DUPLICATES ? DuplicateRequest({Text(kTree)})
                                                        : Request::LargeFiles({Text(kTree)});
    EXPECT_EQ(scan.Start(request), QS_OK);
    for (const TextView path : {kFirst, kSecond}) {
      for (const Row& row : scan_tests::ReadReport(scan)) {
        if (row.path == path) {
          ids.push_back(row.numbers.item_id);
        }
      }
    }
    EXPECT_EQ(ids.size(), 2u);
    for (const std::string& line : LinesOf(machine)) {
      for (const char* named : {"C:\\t\\d1", "C:\\t\\d1\\f", "C:\\t\\d2", "C:\\t\\d2\\g"}) {
        if (line.starts_with(std::string(named) + " ")) {
          named_.insert(line);
        }
      }
    }
    machine.ClearRecord();
    machine.SetRecording(true);
  }

  // Somebody's file of the size and time of the findings, with another content.
  void AddOther(TextView path) { machine.AddSizedFile(path, size_, 9); }
  void Replace(TextView path) {
    if (machine.Exists(path)) {
      machine.Remove(path);
    }
  }

  std::uint64_t size() const { return size_; }
  // What the clean was asked to remove, as it was.
  const std::set<std::string>& named() const { return named_; }

  SimulatedWindows machine;
  ScanHandle scan;
  Ids ids;

 private:
  std::uint64_t size_ = 0;
  std::set<std::string> named_;
};

// Where the calls about the first file stand in a clean that nobody disturbs; from 1 on.
struct Places {
  std::uint64_t facts = 0;
  std::uint64_t removal = 0;         // of the file
  std::uint64_t folder_removal = 0;  // junk only
  std::vector<CallRecord> calls;

  // The last look at the path before a call.
  std::uint64_t LookAt(TextView path, std::uint64_t before) const {
    for (std::uint64_t i = before - 1; i > 0; --i) {
      if (calls[i - 1].call == Call::kQueryAttributes && calls[i - 1].path == path) {
        return i;
      }
    }
    ADD_FAILURE() << "nothing looks at " << Utf8(path);
    return 0;
  }
};

// From the call behind `after` on, up to `last`.
struct Window {
  std::uint64_t after = 0;
  std::uint64_t last = 0;

  bool Holds(std::uint64_t call) const { return call > after && call <= last; }
};

struct Swap : support::NamedCase {
  void (*act)(Scene& scene);
  // Where something is lost by it, in calls before which it takes place.
  Window (*window)(const Places& places);
  bool of_folder = false;  // about the removal of the folder: junk only, behind that of the file
};

Window Never(const Places&) {
  return {};
}

const Swap kSwaps[] = {
    // ---- The folder of the file, or one further up, becomes a link to a folder with such a file.
    {{"The_folder_becomes_a_junction"},
     [](Scene& s) {
       s.Replace(kFirstFolder);
       s.machine.AddLink(LinkKind::kJunction, kFirstFolder, u"C:\\precious");
     },
     [](const Places& p) {
       return Window{p.LookAt(kFirstFolder, p.removal), p.removal};
     }},
    {{"The_folder_becomes_a_symbolic_link"},
     [](Scene& s) {
       s.Replace(kFirstFolder);
       s.machine.AddLink(LinkKind::kFolderLink, kFirstFolder, u"C:\\precious");
     },
     [](const Places& p) {
       return Window{p.LookAt(kFirstFolder, p.removal), p.removal};
     }},
    {{"The_tree_becomes_a_junction"},
     [](Scene& s) {
       s.Replace(kTree);
       s.machine.AddLink(LinkKind::kJunction, kTree, u"C:\\precious tree");
     },
     [](const Places& p) {
       return Window{p.LookAt(kTree, p.removal), p.removal};
     }},
    // ---- The file becomes something else.
    {{"The_file_becomes_a_link_to_a_file"},
     [](Scene& s) {
       s.Replace(kFirst);
       s.machine.AddLink(LinkKind::kFileLink, kFirst, u"C:\\precious\\f");
     },
     // The link itself goes; what it leads to stays.
     [](const Places& p) {
       return Window{p.LookAt(kFirst, p.removal), p.removal};
     }},
    {{"The_file_becomes_a_junction"},
     [](Scene& s) {
       s.Replace(kFirst);
       s.machine.AddLink(LinkKind::kJunction, kFirst, u"C:\\precious");
     },
     Never},
    {{"The_file_becomes_a_placeholder"},
     [](Scene& s) {
       s.Replace(kFirst);
       s.machine.AddPlaceholder(kFirst, s.size());
     },
     [](const Places& p) {
       return Window{p.LookAt(kFirst, p.removal), p.removal};
     }},
    {{"The_file_becomes_an_empty_folder"},
     [](Scene& s) {
       s.Replace(kFirst);
       s.machine.AddFolder(kFirst);
     },
     // A permanent deletion takes empty folders as well; that it was a file was asked before.
     [](const Places& p) {
       return Window{p.facts, p.LookAt(kFirst, p.removal)};
     }},
    {{"The_file_becomes_a_folder_with_something_in_it"},
     [](Scene& s) {
       s.Replace(kFirst);
       s.AddOther(Text(kFirst) + u"\\inside");
     },
     Never},
    {{"The_file_gets_another_size"},
     [](Scene& s) { s.machine.AddSizedFile(kFirst, s.size() + 1, 9); },
     [](const Places& p) {
       return Window{p.facts, p.removal};
     }},
    {{"The_file_is_written_at_another_time"},
     [](Scene& s) {
       s.machine.AddSizedFile(kFirst, s.size(), 9,
                              {platform::kAttributeArchive, kDefaultLastWrite + 1});
     },
     [](const Places& p) {
       return Window{p.facts, p.removal};
     }},
    {{"The_file_becomes_another_one_of_its_size_and_time"},
     [](Scene& s) { s.AddOther(kFirst); },
     // Size and time are all that is known of a file.
     [](const Places& p) {
       return Window{0, p.removal};
     }},
    {{"The_folder_becomes_another_one_with_such_a_file"},
     [](Scene& s) {
       s.Replace(kFirstFolder);
       s.AddOther(kFirst);
     },
     [](const Places& p) {
       return Window{0, p.removal};
     }},
    {{"The_file_goes"}, [](Scene& s) { s.Replace(kFirst); }, Never},
    {{"The_folder_goes"}, [](Scene& s) { s.Replace(kFirstFolder); }, Never},
    {{"The_tree_goes"}, [](Scene& s) { s.Replace(kTree); }, Never},
    {{"The_file_becomes_read_only"},
     [](Scene& s) {
       if (s.machine.Exists(kFirst)) {
         s.machine.SetAttributes(kFirst, platform::kAttributeReadOnly);
       }
     },
     Never},
    {{"The_file_is_opened"},
     [](Scene& s) {
       if (s.machine.Exists(kFirst)) {
         s.machine.SetAttributes(kFirst, platform::kAttributeHidden);
         s.machine.Lock(kFirst);
       }
     },
     Never},
    // ---- The folder, once its file is gone.
    {{"The_emptied_folder_becomes_a_junction"},
     [](Scene& s) {
       s.Replace(kFirstFolder);
       s.machine.AddLink(LinkKind::kJunction, kFirstFolder, u"C:\\precious");
     },
     // The junction itself goes; what it leads to stays.
     [](const Places& p) {
       return Window{p.LookAt(kFirstFolder, p.folder_removal), p.folder_removal};
     },
     true},
    {{"The_emptied_folder_becomes_a_file"},
     [](Scene& s) {
       s.Replace(kFirstFolder);
       s.AddOther(kFirstFolder);
     },
     // A permanent deletion takes files as well; that it was a folder was asked before.
     [](const Places& p) {
       const std::uint64_t look = p.LookAt(kFirstFolder, p.folder_removal);
       return Window{p.LookAt(kFirstFolder, look), look};
     },
     true},
    {{"The_emptied_folder_gets_a_file"},
     [](Scene& s) { s.AddOther(u"C:\\t\\d1\\new"); },
     Never,
     true},
    {{"The_emptied_folder_gets_a_folder"},
     [](Scene& s) { s.machine.AddFolder(u"C:\\t\\d1\\new"); },
     Never,
     true},
    {{"The_emptied_folder_gets_a_junction"},
     [](Scene& s) { s.machine.AddLink(LinkKind::kJunction, u"C:\\t\\d1\\new", u"C:\\precious"); },
     Never,
     true},
    {{"The_emptied_folder_becomes_another_empty_one"},
     [](Scene& s) {
       s.machine.AddFolder(kFirstFolder, {platform::kAttributeHidden, kDefaultLastWrite});
     },
     [](const Places& p) {
       return Window{p.removal, p.folder_removal};
     },
     true},
    {{"The_tree_of_the_emptied_folder_becomes_a_junction"},
     [](Scene& s) {
       s.Replace(kTree);
       s.machine.AddLink(LinkKind::kJunction, kTree, u"C:\\empty tree");
     },
     [](const Places& p) {
       return Window{p.LookAt(kTree, p.folder_removal), p.folder_removal};
     },
     true},
    {{"The_tree_of_the_emptied_folder_becomes_a_junction_to_files"},
     [](Scene& s) {
       s.Replace(kTree);
       s.machine.AddLink(LinkKind::kJunction, kTree, u"C:\\precious tree");
     },
     Never,
     true},
};

class CleanRace : public ::testing::TestWithParam<std::tuple<Swap, KindCase>> {
 protected:
  const Swap& swap() const { return std::get<0>(GetParam()); }
  std::uint32_t kind() const { return std::get<1>(GetParam()).kind; }

  Places Undisturbed() const {
    Scene scene(kind());
    EXPECT_EQ(Clean(scene.scan, scene.ids), QS_OK);
    Places places;
    places.calls = scene.machine.record();
    for (std::uint64_t i = 1; i <= places.calls.size(); ++i) {
      const CallRecord& call = places.calls[i - 1];
      const bool of_file = call.path == kFirst;
      if (of_file && call.call == Call::kQueryFileFacts) {
        places.facts = i;
      }
      if (of_file && call.call == Call::kRemoveFile) {
        places.removal = i;
      }
      if (call.path == kFirstFolder && call.call == Call::kRemoveFolder) {
        places.folder_removal = i;
      }
    }
    EXPECT_GT(places.facts, 0u);
    EXPECT_GT(places.removal, places.facts);
    EXPECT_EQ(places.folder_removal > places.removal, kind() == QS_SCAN_KIND_JUNK_RULES);
    return places;
  }
};

TEST_P(CleanRace, Loses_something_in_the_stated_windows_alone) {
  const Places places = Undisturbed();
  const Window window = swap().window(places);
  const std::uint64_t first = swap().of_folder ? places.removal + 1 : 1;
  const std::uint64_t last = swap().of_folder ? places.folder_removal : places.removal;
  ASSERT_LT(first, last);
  std::uint64_t losses = 0;
  for (std::uint64_t at = first; at <= last; ++at) {
    SCOPED_TRACE("before call " + std::to_string(at) + ", " + NameOf(places.calls[at - 1].call) +
                 " " + Utf8(places.calls[at - 1].path));
    auto scene = std::make_unique<Scene>(kind());
    std::set<std::string> then;
    std::uint64_t calls = 0;
    scene->machine.SetHook([&](const CallRecord&) {
      if (++calls == at) {
        swap().act(*scene);
        then = LinesOf(scene->machine);
      }
    });
    const qs_status status = Clean(scene->scan, scene->ids);
    scene->machine.SetHook(nullptr);
    EXPECT_TRUE(status == QS_OK || status == QS_FAILED) << status;
    const std::set<std::string> now = LinesOf(scene->machine);
    const std::set<std::string> lost = Without(Without(then, now), scene->named());
    EXPECT_EQ(lost.empty(), !window.Holds(at)) << ::testing::PrintToString(lost);
    EXPECT_LE(lost.size(), 1u) << "one at the most, that which took the place";
    EXPECT_EQ(Without(now, then), std::set<std::string>{}) << "a clean makes nothing";
    losses += lost.empty() ? 0 : 1;

    // What was counted is what was removed, and the handle goes on.
    const CleanBlock block = BlockOf(scene->scan);
    EXPECT_EQ(block.processed, 2u);
    EXPECT_EQ(MarksOf(scene->scan).size(), block.deleted);
    EXPECT_EQ(scene->machine.open_handles(), 0u);
    EXPECT_EQ(Clean(scene->scan, {}), QS_OK);
  }
  EXPECT_EQ(losses, window.last - window.after);
}

std::vector<std::tuple<Swap, KindCase>> Races() {
  std::vector<std::tuple<Swap, KindCase>> races;
  for (const Swap& swap : kSwaps) {
    for (const KindCase& kind : kKinds) {
      if (!swap.of_folder || kind.kind == QS_SCAN_KIND_JUNK_RULES) {
        races.emplace_back(swap, kind);
      }
    }
  }
  return races;
}

std::string NameOfRace(const ::testing::TestParamInfo<std::tuple<Swap, KindCase>>& info) {
  return std::string(std::get<1>(info.param).name) + "_" + std::get<0>(info.param).name;
}
INSTANTIATE_TEST_SUITE_P(Of, CleanRace, ::testing::ValuesIn(Races()), NameOfRace);

}  // namespace
}  // namespace quastel::clean_tests
