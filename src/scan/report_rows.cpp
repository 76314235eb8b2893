#include "scan/report_rows.h"

#include "base/common_prefix.h"

namespace quastel {

// Most texts stand in another one already: a name ends its path, a parent folder begins it, and the
// rows of one group share a title and often a location.
void ReportRows::Append(const ReportRow& row, std::uint64_t item_id) {
  const RowNumbers& numbers = row;
  StoredRow stored = {numbers, {}, {}, {}, {}};
  stored.item_id = item_id;
  stored.path = texts_.Keep(TextView(row.path));
  stored.name = EndsInText(stored.path, row.name)
                    ? stored.path.substr(stored.path.size() - row.name.size())
                    : texts_.Keep(TextView(row.name));
  const StoredRow* const last = rows_.empty() ? nullptr : &rows_.back();
  if (IsSameText(row.title, row.name)) {
    stored.title = stored.name;
  } else if (last != nullptr && IsSameText(last->title, row.title)) {
    stored.title = last->title;
  } else {
    stored.title = texts_.Keep(TextView(row.title));
  }
  if (stored.path.starts_with(row.location)) {
    stored.location = stored.path.substr(0, row.location.size());
  } else if (last != nullptr && IsSameText(last->location, row.location)) {
    stored.location = last->location;
  } else {
    stored.location = texts_.Keep(TextView(row.location));
  }
  rows_.push_back(stored);
}

}  // namespace quastel
