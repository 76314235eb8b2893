// Goes away with the day on which the last kind of scan is there.

#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

TEST(KindsNotBuilt, End_as_unsupported_and_failed_and_leave_the_handle_usable) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\data\\a.zip", kLarge);
  ScanHandle scan;
  for (const std::uint32_t kind : {QS_SCAN_KIND_JUNK_RULES}) {
    SCOPED_TRACE(kind);
    EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
    Request request = Request::LargeFiles({u"C:\\data"});
    request.kind = kind;
    EXPECT_EQ(scan.Start(request), QS_UNSUPPORTED);
    EXPECT_EQ(Poll(scan).state, QS_STATE_FAILED);
    EXPECT_EQ(Poll(scan).status, QS_UNSUPPORTED);
    EXPECT_EQ(RowCountOf(scan), 0u);
    EXPECT_EQ(PerformanceOf(scan).kind, kind);
    EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
    EXPECT_EQ(RowCountOf(scan), 1u);
  }
}

}  // namespace
}  // namespace quastel::scan_tests
