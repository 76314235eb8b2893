// Callbacks that throw.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <new>
#include <stdexcept>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FolderWalk;
using support::RunWalk;

struct RaiseCase : support::NamedCase {
  void (*raise)();
};

const RaiseCase kRaiseCases[] = {
    {{"A_standard_exception"}, [] { throw std::runtime_error("callback"); }},
    {{"A_failed_allocation"}, [] { throw std::bad_alloc(); }},
    {{"A_number"}, [] { throw 7; }},
    {{"A_text"}, [] { throw "text"; }},
};

class ThrowingCallbackTest : public ::testing::TestWithParam<RaiseCase> {
 protected:
  ThrowingCallbackTest() {
    for (const qs_char* path : {u"C:\\t\\a\\1", u"C:\\t\\b", u"C:\\t\\c", u"C:\\t\\d\\2"}) {
      windows_.AddFile(path, "");
    }
  }

  void ExpectEverythingClosed() {
    EXPECT_EQ(windows_.open_handles(), 0u);
    EXPECT_EQ(windows_.CallCount(Call::kFindClose),
              windows_.CallCount(Call::kFindFirstBasic) + windows_.CallCount(Call::kFindFirst));
  }

  SimulatedWindows windows_;
};

TEST_P(ThrowingCallbackTest, A_file_walk_fails_and_calls_back_no_more) {
  for (const qs_char* pattern : {u"*", u"?"}) {
    for (std::size_t nth = 1; nth <= 4; ++nth) {
      const support::WalkResult result = RunWalk(FileWalk{
          .root = Text(u"C:\\t"), .pattern = Text(pattern), .after_file = [nth](std::size_t count) {
            if (count == nth) {
              GetParam().raise();
            }
          }});
      EXPECT_EQ(result.status, QS_FAILED);
      EXPECT_EQ(result.files.size(), nth);
      ExpectEverythingClosed();
    }
  }
}

TEST_P(ThrowingCallbackTest, A_listing_of_subfolders_fails_and_calls_back_no_more) {
  for (std::size_t nth = 1; nth <= 2; ++nth) {
    const support::FolderResult result =
        RunWalk(FolderWalk{.root = Text(u"C:\\t"), .after_folder = [nth](std::size_t count) {
                             if (count == nth) {
                               GetParam().raise();
                             }
                           }});
    EXPECT_EQ(result.status, QS_FAILED);
    EXPECT_EQ(result.paths.size(), nth);
    ExpectEverythingClosed();
  }
}

TEST_P(ThrowingCallbackTest, A_failure_counts_more_than_a_cancel_that_nobody_has_seen) {
  std::uint32_t flag = 0;
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"),
                             .cancel = &flag,
                             .after_file =
                                 [&flag](std::size_t) {
                                   flag = 1;
                                   GetParam().raise();
                                 }})
                .status,
            QS_FAILED);
}

TEST_P(ThrowingCallbackTest, The_next_walk_is_whole) {
  RunWalk(FileWalk{.root = Text(u"C:\\t"), .after_file = [](std::size_t) { GetParam().raise(); }});
  const support::WalkResult result = RunWalk(FileWalk{.root = Text(u"C:\\t")});
  EXPECT_EQ(result.status, QS_OK);
  EXPECT_EQ(result.files.size(), 4u);
}

INSTANTIATE_TEST_SUITE_P(EnumerationExceptions, ThrowingCallbackTest,
                         ::testing::ValuesIn(kRaiseCases), support::CaseName());

}  // namespace
}  // namespace quastel
