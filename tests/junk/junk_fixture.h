// What the tests of the junk room share: documents as bytes, trees as text,
// requests, and reports in a form that can be read where an expectation fails.

#ifndef QUASTEL_TESTS_JUNK_JUNK_FIXTURE_H_
#define QUASTEL_TESTS_JUNK_JUNK_FIXTURE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "junk/rule_document.h"
#include "scan/scan_fixture.h"
#include "simulated_windows/simulated_windows.h"
#include "support/instrumented.h"
#include "support/text.h"

namespace quastel::junk_tests {

using scan_tests::kDefaultModified;
using scan_tests::Request;
using scan_tests::Row;
using scan_tests::ScanHandle;
using simulated::Call;
using simulated::CallRecord;
using simulated::LinkKind;
using simulated::SimulatedWindows;
using support::Utf8;
using Lines = std::vector<std::string>;

inline constexpr TextView kRulesPath = u"C:\\rules.xml";
inline constexpr TextView kHome = u"C:\\Users\\u";
inline constexpr TextView kSystemRoot = u"C:\\";

// The id of the first group that is no top-level category.
inline constexpr std::uint64_t kFirstGroup = std::uint64_t{1} << 60;

// The category whose files are never offered pre-selected.
inline constexpr const char* kDownloads = "Page_JunkFiles_Report_Category_Downloads";

// ---- Documents.

// UTF-16 little-endian without a mark.
std::string LittleEndian(TextView text);

inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
inline constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// `content` below a root, and below the category "c" of a root.
std::string InRoot(const std::string& content);
std::string InCategory(const std::string& content);
std::string Category(const std::string& name, const std::string& content);

// The element <e> inside itself, `depth` times.
Text NestedElements(std::size_t depth);

// ---- Trees: "name{attribute=value|attribute=value}(child child)", without
// empty parts.

std::string Print(const junk::RuleNode& node);

// What the reader makes of a document: its tree, or "refused".
std::string Parsed(TextView document);

// ---- Stacks.

// Runs it on a thread of its own whose stack has so many bytes.
void RunOnStack(std::size_t stack_size, const std::function<void()>& action);

inline constexpr std::size_t kSmallStack = 256 * 1024;

// The same for code whose frames the build has blown up, to watch them.
inline constexpr std::size_t kSmallScanStack = (support::kInstrumented ? 4 : 1) * kSmallStack;

// ---- Scans.

Request JunkRequest();

// One line for each row. A header is "[id<parent id] title", with " = folder"
// behind it when it has one; a file is "id<parent id title: path", with " (not
// selected)". The ids of groups that are no top-level category are counted from
// g0 on.
std::string Outline(const Row& row);
Lines Outline(const std::vector<Row>& rows);

// Whole rows.
Row CategoryRow(std::uint64_t id, std::uint64_t parent, TextView title);
Row FolderRow(std::uint64_t id, std::uint64_t parent, TextView title, TextView folder);
Row FileRow(std::uint64_t item, std::uint64_t group, std::uint64_t parent, TextView title,
            TextView path, std::uint64_t size);

class JunkScanTest : public ::testing::Test {
 protected:
  // Writes the document and scans with it.
  qs_status Scan(std::string_view document, Request request = JunkRequest());
  // The same, and the report.
  std::vector<Row> Report(std::string_view document, qs_status expected = QS_OK);
  Lines Scanned(std::string_view document, qs_status expected = QS_OK);

  SimulatedWindows machine_;
  ScanHandle scan_;
};

}  // namespace quastel::junk_tests

#endif  // QUASTEL_TESTS_JUNK_JUNK_FIXTURE_H_
