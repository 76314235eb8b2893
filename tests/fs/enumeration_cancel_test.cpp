// When a walk looks at its cancel flag: before each folder and before each entry, nowhere else.
//
// The flag is set before each system call of a walk in turn, and in each callback in turn. What
// must come of it follows from the record of the undisturbed walk.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/search.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/walk.h"

namespace quastel {
namespace {

using platform::Error;
using simulated::Call;
using simulated::CallRecord;
using simulated::LinkKind;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FolderResult;
using support::FolderWalk;
using support::RunWalk;
using support::WalkResult;

std::unique_ptr<SimulatedWindows> Machine() {
  auto windows = std::make_unique<SimulatedWindows>();
  for (const qs_char* path :
       {u"C:\\t\\a.txt", u"C:\\t\\b.log", u"C:\\t\\mid\\c.txt", u"C:\\t\\mid\\deep\\d.txt",
        u"C:\\t\\denied\\e.txt", u"C:\\t\\Windows\\f.txt", u"C:\\t\\zz.txt"}) {
    windows->AddFile(path, "x");
  }
  windows->AddFolder(u"C:\\t\\hollow");
  windows->AddLink(LinkKind::kJunction, u"C:\\t\\link", u"C:\\t\\mid");
  windows->AddPlaceholder(u"C:\\t\\cloud.txt", 5);
  windows->Deny(u"C:\\t\\denied", {.listing = true});
  return windows;
}

bool FoundAnEntry(const CallRecord& call) {
  return (call.call == Call::kFindFirstBasic || call.call == Call::kFindFirst ||
          call.call == Call::kFindNext) &&
         call.result == Error::kNone;
}

// The search with which a folder's turn begins; the search for its subfolders has another number.
bool BeginsAFolder(const CallRecord& call) {
  return call.call == Call::kFindFirstBasic &&
         call.number == static_cast<std::uint64_t>(platform::SearchOperation::kNameMatch);
}

struct CancelCase : support::NamedCase {
  const qs_char* pattern;
  std::uint32_t recursive;
  bool protect;
  std::uint64_t failing_search;  // of FindFirstBasic, 0: none
};

constexpr CancelCase kCancelCases[] = {
    {{"Single_pass"}, u"*", 1, false, 0},
    {{"Single_pass_of_one_folder"}, u"*", 0, false, 0},
    {{"Patterned"}, u"*.txt", 1, false, 0},
    {{"Patterned_in_one_folder"}, u"*.txt", 0, false, 0},
    {{"Patterned_without_a_match"}, u"*.nothing", 1, false, 0},
    {{"Patterned_with_everything"}, u"*.*", 1, false, 0},
    {{"Single_pass_with_protection"}, u"*", 1, true, 0},
    {{"Patterned_with_protection"}, u"*.txt", 1, true, 0},
    {{"Folders_searched_in_the_plain_way"}, u"*.txt", 1, false, 2},
    {{"A_root_that_cannot_be_listed"}, u"*", 1, false, 1},
};

class CancelTest : public ::testing::TestWithParam<CancelCase> {
 protected:
  // One run on a machine of its own. `before_call` gets the number of the call and the files
  // reported so far; `after_file` the number of files.
  struct Trial {
    WalkResult result;
    std::vector<CallRecord> calls;
    std::uint32_t flag_at_the_end = 0;
  };
  using Moment = std::function<bool(std::size_t)>;

  Trial RunTrial(const Moment& before_call, const Moment& after_file,
                 std::vector<std::size_t>* files_before_call = nullptr) {
    const std::unique_ptr<SimulatedWindows> windows = Machine();
    if (GetParam().failing_search != 0) {
      windows->FailCall(Call::kFindFirstBasic, GetParam().failing_search);
    }
    std::uint32_t flag = 0;
    std::size_t calls = 0;
    std::size_t files = 0;
    windows->SetHook([&](const CallRecord&) {
      if (files_before_call != nullptr) {
        files_before_call->push_back(files);
      }
      if (before_call(calls++)) {
        flag = 1;
      }
    });
    windows->SetRecording(true);
    Trial trial;
    trial.result = RunWalk(FileWalk{.root = Text(u"C:\\t"),
                                    .pattern = Text(GetParam().pattern),
                                    .recursive = GetParam().recursive,
                                    .protect_system = GetParam().protect ? 1u : 0u,
                                    .system_root = Text(u"C:\\t"),
                                    .user_home = Text(u"C:\\u"),
                                    .cancel = &flag,
                                    .after_file = [&](std::size_t count) {
                                      files = count;
                                      if (after_file(count)) {
                                        flag = 1;
                                      }
                                    }});
    trial.calls = windows->record();
    trial.flag_at_the_end = flag;
    EXPECT_EQ(windows->open_handles(), 0u);
    EXPECT_EQ(windows->most_open_searches() > 1, false);
    return trial;
  }

  static bool Never(std::size_t) { return false; }

  // The status when the flag is set before call `at` of the undisturbed walk.
  static qs_status StatusFrom(const std::vector<CallRecord>& calls, std::size_t at) {
    for (std::size_t i = at; i < calls.size(); ++i) {
      if (FoundAnEntry(calls[i])) {
        return QS_CANCELLED;
      }
      // The look at the flag comes before the question whether the folder is protected.
      std::size_t look = i;
      while (look > 0 && calls[look - 1].call == Call::kFullPathName) {
        --look;
      }
      if (BeginsAFolder(calls[i]) && at < look) {
        return QS_CANCELLED;
      }
    }
    return QS_OK;
  }

  static WalkResult Expected(const Trial& whole, std::size_t files, qs_status status) {
    WalkResult expected = whole.result;
    expected.status = status;
    expected.files.resize(files);
    return expected;
  }
};

TEST_P(CancelTest, The_flag_is_seen_before_the_next_entry_or_folder_and_nowhere_else) {
  std::vector<std::size_t> files_before;
  const Trial whole = RunTrial(Never, Never, &files_before);
  ASSERT_EQ(whole.result.status, QS_OK);
  ASSERT_EQ(files_before.size(), whole.calls.size()) << "every call is announced and recorded";

  for (std::size_t at = 0; at < whole.calls.size(); ++at) {
    const Trial trial = RunTrial([at](std::size_t call) { return call == at; }, Never);
    // The time is converted between the look at the flag and the report of the file.
    const bool in_a_report = whole.calls[at].call == Call::kToLocalFileTime;
    EXPECT_EQ(trial.result, Expected(whole, files_before[at] + (in_a_report ? 1 : 0),
                                     StatusFrom(whole.calls, at)))
        << "set before call " << at << ", " << simulated::NameOf(whole.calls[at].call) << ' '
        << support::Utf8(whole.calls[at].path);
    EXPECT_EQ(trial.flag_at_the_end, 1u);
  }
}

TEST_P(CancelTest, A_callback_that_sets_the_flag_is_the_last_one) {
  std::vector<std::size_t> files_before;
  const Trial whole = RunTrial(Never, Never, &files_before);
  for (std::size_t file = 1; file <= whole.result.files.size(); ++file) {
    const Trial trial = RunTrial(Never, [file](std::size_t count) { return count == file; });
    std::size_t next_call = 0;
    while (files_before[next_call] < file) {
      ++next_call;
    }
    EXPECT_EQ(trial.result, Expected(whole, file, StatusFrom(whole.calls, next_call)))
        << "set by the report of file " << file;
  }
}

INSTANTIATE_TEST_SUITE_P(EnumerationCancel, CancelTest, ::testing::ValuesIn(kCancelCases),
                         support::CaseName());

TEST(EnumerationCancel, After_the_last_entry_of_the_last_folder_nothing_looks_any_more) {
  SimulatedWindows windows;
  windows.AddFile(u"C:\\t\\a", "");
  windows.AddFile(u"C:\\t\\b", "");
  for (const qs_char* pattern : {u"*", u"?"}) {
    std::uint32_t flag = 0;
    const WalkResult result =
        RunWalk(FileWalk{.root = Text(u"C:\\t"),
                         .pattern = Text(pattern),
                         .recursive = 0,
                         .cancel = &flag,
                         .after_file = [&flag](std::size_t count) { flag = count == 2 ? 1 : 0; }});
    EXPECT_EQ(result.status, QS_OK);
    EXPECT_EQ(result.files.size(), 2u);
  }
}

TEST(EnumerationCancel, The_entries_of_a_file_pass_are_each_preceded_by_a_look) {
  SimulatedWindows windows;
  for (const qs_char* path : {u"C:\\t\\a.x", u"C:\\t\\b.x", u"C:\\t\\c.x"}) {
    windows.AddFile(path, "");
  }
  std::uint32_t flag = 0;
  const WalkResult result = RunWalk(FileWalk{.root = Text(u"C:\\t"),
                                             .pattern = Text(u"*.x"),
                                             .recursive = 0,
                                             .cancel = &flag,
                                             .after_file = [&flag](std::size_t) { flag = 1; }});
  EXPECT_EQ(result.status, QS_CANCELLED);
  EXPECT_EQ(result.files.size(), 1u);
}

TEST(EnumerationCancel, A_cancelled_walk_closes_its_search) {
  SimulatedWindows windows;
  windows.AddFile(u"C:\\t\\a", "");
  windows.AddFile(u"C:\\t\\b", "");
  std::uint32_t flag = 0;
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"),
                             .cancel = &flag,
                             .after_file = [&flag](std::size_t) { flag = 1; }})
                .status,
            QS_CANCELLED);
  EXPECT_EQ(windows.open_handles(), 0u);
  EXPECT_EQ(windows.CallCount(Call::kFindClose), 1u);
}

// ---- The listing of subfolders looks before each entry only.

struct FolderTrial {
  FolderResult result;
  std::vector<CallRecord> calls;
};

FolderTrial RunFolders(const std::function<bool(std::size_t)>& before_call,
                       const std::function<bool(std::size_t)>& after_folder,
                       std::vector<std::size_t>* folders_before_call = nullptr) {
  const std::unique_ptr<SimulatedWindows> windows = Machine();
  std::uint32_t flag = 0;
  std::size_t calls = 0;
  std::size_t folders = 0;
  windows->SetHook([&](const CallRecord&) {
    if (folders_before_call != nullptr) {
      folders_before_call->push_back(folders);
    }
    if (before_call(calls++)) {
      flag = 1;
    }
  });
  windows->SetRecording(true);
  FolderTrial trial;
  trial.result = RunWalk(
      FolderWalk{.root = Text(u"C:\\t"), .cancel = &flag, .after_folder = [&](std::size_t count) {
                   folders = count;
                   if (after_folder(count)) {
                     flag = 1;
                   }
                 }});
  trial.calls = windows->record();
  EXPECT_EQ(windows->open_handles(), 0u);
  return trial;
}

TEST(EnumerateDirectoriesCancel, The_flag_is_seen_before_the_next_entry) {
  const auto never = [](std::size_t) { return false; };
  std::vector<std::size_t> folders_before;
  const FolderTrial whole = RunFolders(never, never, &folders_before);
  ASSERT_EQ(whole.result.status, QS_OK);
  ASSERT_EQ(whole.result.paths.size(), 4u);
  ASSERT_EQ(folders_before.size(), whole.calls.size());
  const auto expected = [&whole](std::size_t folders, std::size_t at) {
    FolderResult result = whole.result;
    result.paths.resize(folders);
    for (std::size_t i = at; i < whole.calls.size(); ++i) {
      result.status = FoundAnEntry(whole.calls[i]) ? QS_CANCELLED : result.status;
    }
    return result;
  };
  for (std::size_t at = 0; at < whole.calls.size(); ++at) {
    EXPECT_EQ(RunFolders([at](std::size_t call) { return call == at; }, never).result,
              expected(folders_before[at], at))
        << "set before call " << at;
  }
  for (std::size_t folder = 1; folder <= whole.result.paths.size(); ++folder) {
    std::size_t next_call = 0;
    while (folders_before[next_call] < folder) {
      ++next_call;
    }
    EXPECT_EQ(RunFolders(never, [folder](std::size_t count) { return count == folder; }).result,
              expected(folder, next_call))
        << "set by the report of folder " << folder;
  }
}

TEST(EnumerateDirectoriesCancel, A_listing_that_cannot_be_opened_ends_before_any_look) {
  SimulatedWindows windows;
  windows.AddFolder(u"C:\\t\\a");
  windows.Deny(u"C:\\t", {.listing = true});
  std::uint32_t flag = 1;
  EXPECT_EQ(RunWalk(FolderWalk{.root = Text(u"C:\\t"), .cancel = &flag}),
            (FolderResult{QS_OK, {}}));
}

}  // namespace
}  // namespace quastel
