#ifndef QUASTEL_APPS_QUASTEL_JUNK_REPORT_H_
#define QUASTEL_APPS_QUASTEL_JUNK_REPORT_H_

#include <cstdint>
#include <string>

#include "report.h"

namespace quastel::client {

// Takes the headers out of the rows of a junk scan, makes them the groups, in their order, and
// sorts the files. What --category leaves out stands behind the rest, groups and files alike. --top
// counts files.
void ArrangeJunk(Report& report);

// The name of a group as people read it.
std::wstring GroupName(const ReportGroup& group);

struct FileSum {
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;
};

// Of all files, also of those that are not listed.
FileSum SelectedFiles(const Report& report);

FileSum ListedFiles(const Report& report);

// Those of the categories that --category leaves out.
FileSum FilesOfOtherCategories(const Report& report);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_JUNK_REPORT_H_
