// Rows of a report as values, and reading them through the exports.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_REPORT_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/text.h"
#include "fuzz/input.h"
#include "quastel_core.h"

namespace quastel::fuzz::sequence {

struct Row {
  Text path;
  Text name;
  Text title;
  Text location;
  std::uint64_t item_id = QS_NO_ITEM_ID;
  std::uint64_t group_id = 0;
  std::uint64_t parent_group_id = 0;
  std::uint32_t kind = QS_ROW_GROUP;
  std::int64_t size = 0;
  std::uint64_t modified = 0;
  std::uint32_t preselect = 0;
  std::uint32_t large_class = QS_LARGE_OTHER;
  bool deleted = false;

  bool IsItem() const { return kind != QS_ROW_GROUP; }
  friend bool operator==(const Row&, const Row&) = default;
};

// Numbers the items from 0 on, as they come.
void NumberItems(std::vector<Row>& rows);

// The whole row; it must be there.
Row ReadRow(qs_product_scan* scan, std::uint64_t index);
std::vector<Row> ReadReport(qs_product_scan* scan);

// Reads the row with capacities of the input's choice and compares every answer with `expected`.
void ReadRowSomehow(qs_product_scan* scan, std::uint64_t index, const Row& expected, Input& input);

// What every report of the library looks like, whatever was scanned.
void DemandWellFormed(const std::vector<Row>& rows, std::uint32_t kind);

// `rows` are all of the expected ones, or the first of them. Shows both where they part.
void DemandRows(const std::vector<Row>& rows, const std::vector<Row>& expected, bool all);

// A capacity around what a text needs, or none at all.
std::size_t SomeCapacity(Input& input, std::size_t needed);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_REPORT_H_
