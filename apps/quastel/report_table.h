#ifndef QUASTEL_APPS_QUASTEL_REPORT_TABLE_H_
#define QUASTEL_APPS_QUASTEL_REPORT_TABLE_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "console.h"
#include "report.h"

namespace quastel::client {

// How a command tells people what it found.
struct TableParts {
  std::string nothing_found;  // a sentence
  void (*write_findings)(const Report& report, OutputStream& out);
};

// The report for people. Scripts read the JSON: the table may change from version to version.
void WriteTable(const Report& report, const TableParts& parts, OutputStream& out);

// For the commands' own parts.
// Columns that most tables have, and what stands between two.
inline constexpr std::size_t kSizeWidth = 10;
inline constexpr std::size_t kTimeWidth = 16;
inline constexpr std::string_view kGap = "  ";
// The last line of a scan that did not get to its end.
void WriteEarlyEnd(qs_status status, OutputStream& out);
std::string ShownPath(const std::wstring& path);
// The path behind `used` columns of a row. At a terminal it loses its middle rather than break the
// row; a file or a pipe gets all of it.
std::string FittedPath(const std::wstring& path, std::size_t used, const OutputStream& out);
// The line above the columns of a table.
void WriteHeading(std::string_view line, OutputStream& out);
// Says how much is left out, if anything is: "Showing 3 of 5 rows."
void WriteShownCount(std::size_t listed, std::size_t all, std::string_view things,
                     OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_REPORT_TABLE_H_
