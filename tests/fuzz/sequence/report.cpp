#include "fuzz/sequence/report.h"

#include <cstdio>
#include <map>
#include <optional>

#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "fuzz/path_model.h"
#include "support/text.h"

namespace quastel::fuzz::sequence {
namespace {

// One of the texts of a row, and the buffer that it is asked into.
struct Asked {
  Asked(const Text& text, Input& input)
      : expected(text), has_buffer(!input.OneIn(4)), wants_length(!input.OneIn(4)) {
    buffer.emplace(SomeCapacity(input, text.size() + 1));
  }

  Char* out() { return has_buffer ? buffer->data() : nullptr; }
  std::uint64_t capacity() const { return buffer->capacity(); }
  std::uint64_t* length() { return wants_length ? &needed : nullptr; }
  bool fits() const { return has_buffer && buffer->capacity() > expected.size(); }

  void DemandAnswered() const {
    Demand(needed == (wants_length ? expected.size() + 1 : 7), "the length of a text of a row");
    if (fits()) {
      buffer->DemandHolds(expected, "a text of a row that fits is copied");
    } else {
      buffer->DemandUntouched("a text of a row that does not fit is left out");
    }
  }

  const Text& expected;
  const bool has_buffer;
  const bool wants_length;
  std::optional<GuardedBuffer<Char>> buffer;
  std::uint64_t needed = 7;
};

Row RowOf(const qs_product_scan_row& numbers) {
  Demand(numbers.reserved == 0, "the reserved member of a row is 0");
  Demand(numbers.deletable == (numbers.kind == QS_ROW_GROUP ? 0u : 1u), "items can be cleaned");
  Demand(numbers.deleted <= 1, "a mark is 0 or 1");
  Row row;
  row.item_id = numbers.item_id;
  row.group_id = numbers.group_id;
  row.kind = numbers.kind;
  row.size = numbers.size;
  row.modified = numbers.modified;
  row.preselect = numbers.preselect;
  row.large_class = numbers.large_class;
  row.deleted = numbers.deleted != 0;
  return row;
}

}  // namespace

std::size_t SomeCapacity(Input& input, std::size_t needed) {
  switch (input.Below(6)) {
    case 0:
      return 0;
    case 1:
      return needed - 1;  // no text needs 0
    case 2:
      return needed / 2;
    case 3:
      return needed + 9;
    default:
      return needed;
  }
}

void NumberItems(std::vector<Row>& rows) {
  std::uint64_t next = 0;
  for (Row& row : rows) {
    row.item_id = row.IsItem() ? next++ : QS_NO_ITEM_ID;
  }
}

Row ReadRow(qs_product_scan* scan, std::uint64_t index) {
  std::uint64_t needed[4] = {};
  qs_product_scan_row numbers = {};
  Demand(qs_product_scan_report_row(scan, index, nullptr, 0, &needed[0], nullptr, 0, &needed[1],
                                    nullptr, 0, &needed[2], nullptr, 0, &needed[3],
                                    &numbers) == QS_BUFFER_TOO_SMALL,
         "a row without buffers");
  Row row = RowOf(numbers);
  Text* const texts[] = {&row.path, &row.name, &row.title, &row.location};
  for (int i = 0; i < 4; ++i) {
    texts[i]->resize(static_cast<std::size_t>(needed[i]));
  }
  Demand(qs_product_scan_report_row(scan, index, row.path.data(), row.path.size(), nullptr,
                                    row.name.data(), row.name.size(), nullptr, row.title.data(),
                                    row.title.size(), nullptr, row.location.data(),
                                    row.location.size(), nullptr, &numbers) == QS_OK,
         "a row with buffers of the lengths it gave");
  for (Text* text : texts) {
    Demand(text->back() == 0, "a text ends where its length says");
    text->pop_back();
  }
  Demand(qs_product_scan_report_row_parent_group_id(scan, index, &row.parent_group_id) == QS_OK,
         "a row has the id of the group around its own");
  return row;
}

std::vector<Row> ReadReport(qs_product_scan* scan) {
  std::uint64_t count = 0;
  Demand(qs_product_scan_report_count(scan, &count) == QS_OK, "the rows are counted");
  std::vector<Row> rows;
  for (std::uint64_t i = 0; i < count; ++i) {
    rows.push_back(ReadRow(scan, i));
  }
  return rows;
}

void ReadRowSomehow(qs_product_scan* scan, std::uint64_t index, const Row& expected, Input& input) {
  Asked path(expected.path, input);
  Asked name(expected.name, input);
  Asked title(expected.title, input);
  Asked location(expected.location, input);
  qs_product_scan_row numbers = {};
  const qs_status status = qs_product_scan_report_row(
      scan, index, path.out(), path.capacity(), path.length(), name.out(), name.capacity(),
      name.length(), title.out(), title.capacity(), title.length(), location.out(),
      location.capacity(), location.length(), &numbers);
  const bool all = path.fits() && name.fits() && title.fits() && location.fits();
  Demand(status == (all ? QS_OK : QS_BUFFER_TOO_SMALL), "one refused text is the answer for a row");
  for (const Asked* asked : {&path, &name, &title, &location}) {
    asked->DemandAnswered();
  }
  Row row = RowOf(numbers);
  row.path = expected.path;
  row.name = expected.name;
  row.title = expected.title;
  row.location = expected.location;
  Demand(qs_product_scan_report_row_parent_group_id(scan, index, &row.parent_group_id) == QS_OK,
         "the containing group of a row");
  Demand(row == expected, "a row stays as it is");
}

void DemandWellFormed(const std::vector<Row>& rows, std::uint32_t kind) {
  std::uint64_t next_id = 0;
  std::map<std::uint64_t, int> sizes;
  for (const Row& row : rows) {
    Demand(row.item_id == (row.IsItem() ? next_id : QS_NO_ITEM_ID), "items are numbered in order");
    next_id += row.IsItem() ? 1 : 0;
    Demand(row.IsItem() ? row.kind == kind : kind == QS_SCAN_KIND_JUNK_RULES,
           "rows are of the scan's kind");
    Demand(!row.deleted, "a scan deletes nothing");
    if (row.IsItem()) {
      Demand(row.size >= 0 && !row.path.empty() && row.name == model::Leaf(row.path),
             "an item is a file with its name");
      ++sizes[row.group_id];
    } else {
      Demand(row.size == 0 && row.modified == 0 && row.preselect == 0 && row.name.empty(),
             "a header has no numbers");
    }
  }
  if (kind == QS_SCAN_KIND_DUPLICATES) {
    for (const auto& [group, size] : sizes) {
      Demand(group >= 1 && group <= sizes.size(), "sets are numbered from 1 on");
    }
  }
}

void DemandRows(const std::vector<Row>& rows, const std::vector<Row>& expected, bool all) {
  const auto show = [](const char* who, const std::vector<Row>& of, std::size_t i) {
    if (i < of.size()) {
      const Row& row = of[i];
      std::fprintf(stderr, "%s: %s (%s, %s) group %llx below %llx, kind %u, %lld bytes, at %llu\n",
                   who, support::Utf8(row.path).c_str(), support::Utf8(row.title).c_str(),
                   support::Utf8(row.location).c_str(),
                   static_cast<unsigned long long>(row.group_id),
                   static_cast<unsigned long long>(row.parent_group_id), row.kind,
                   static_cast<long long>(row.size), static_cast<unsigned long long>(row.modified));
    }
  };
  std::size_t i = 0;
  while (i < rows.size() && i < expected.size() && rows[i] == expected[i]) {
    ++i;
  }
  if (i < rows.size() || (all && i < expected.size())) {
    std::fprintf(stderr, "row %zu of %zu, %zu expected\n", i, rows.size(), expected.size());
    show("is", rows, i);
    show("expected", expected, i);
  }
  Demand(i == rows.size() && (!all || i == expected.size()), "the rows of a scan");
}

}  // namespace quastel::fuzz::sequence
