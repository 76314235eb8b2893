#include "frame/status.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>

#include "quastel_core.h"

namespace quastel {
namespace {

static_assert(sizeof(qs_status) == 4);
static_assert(static_cast<qs_status>(-1) > 0, "statuses are unsigned");

struct Named {
  qs_status status;
  qs_status number;
  const char* name;
};

constexpr Named kAll[] = {
    {QS_OK, 0, "QS_OK"},
    {QS_INVALID_ARGUMENT, 1, "QS_INVALID_ARGUMENT"},
    {QS_BUFFER_TOO_SMALL, 2, "QS_BUFFER_TOO_SMALL"},
    {QS_FAILED, 3, "QS_FAILED"},
    {QS_NOT_FOUND, 4, "QS_NOT_FOUND"},
    {QS_CANCELLED, 5, "QS_CANCELLED"},
    {QS_UNSUPPORTED, 6, "QS_UNSUPPORTED"},
    {QS_BUSY, 7, "QS_BUSY"},
};

TEST(Status, Each_status_has_its_number) {
  for (const Named& row : kAll) {
    EXPECT_EQ(row.status, row.number) << row.name;
  }
}

TEST(Status, The_table_has_every_status_with_its_name_at_its_number) {
  ASSERT_EQ(kStatuses.size(), std::size(kAll));
  for (const Named& row : kAll) {
    const StatusInfo& info = kStatuses.at(row.number);
    EXPECT_EQ(info.number, row.number);
    EXPECT_STREQ(info.name, row.name);
  }
}

TEST(Status, Every_status_has_a_text_of_its_own) {
  std::set<std::string> texts;
  for (const StatusInfo& info : kStatuses) {
    EXPECT_STRNE(info.text, "");
    texts.insert(info.text);
  }
  EXPECT_EQ(texts.size(), kStatuses.size());
}

}  // namespace
}  // namespace quastel
