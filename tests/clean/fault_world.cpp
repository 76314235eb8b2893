#include "clean/fault_world.h"

#include <gtest/gtest.h>

namespace quastel::clean_tests {
namespace {

Text LongFolder() {
  return support::NestedTo(280, u"C:\\t\\l");
}

}  // namespace

FaultWorld::FaultWorld(std::uint32_t kind) : kind_(kind) {
  machine.AddDrive('D');
  machine.SetTimeZoneOffset(60);  // a time that could not be converted is another one
  named_ = {u"C:\\t\\a",
            u"C:\\t\\a folder with a long name\\b",
            u"C:\\t\\s\\deeper\\c",
            u"C:\\t\\s\\d",
            Text(kReadOnlyFile),
            LongFolder() + u"\\e"};
  for (const Text& path : named_) {
    machine.AddSizedFile(path, file_size());
  }
  machine.SetAttributes(kReadOnlyFile, platform::kAttributeReadOnly);
  machine.AddSizedFile(u"C:\\t\\kept", file_size());
  machine.AddSizedFile(u"C:\\precious\\a", file_size());
  machine.AddLink(LinkKind::kJunction, u"C:\\t\\junction", u"C:\\precious");
  machine.AddFile(kRulesPath, FolderRules({Text(kTree)}));
  const Request request = kind == QS_SCAN_KIND_JUNK_RULES   ? JunkRequest()
                          : kind == QS_SCAN_KIND_DUPLICATES ? DuplicateRequest({Text(kTree)})
                                                            : Request::LargeFiles({Text(kTree)});
  EXPECT_EQ(scan.Start(request), QS_OK);
  for (const Row& row : scan_tests::ReadReport(scan)) {
    if (row.numbers.kind != QS_ROW_GROUP && row.name != u"kept") {
      ids.push_back(row.numbers.item_id);
    }
  }
  EXPECT_EQ(ids.size(), named_.size());
  before_ = LinesOfDisk();
  machine.ClearFaults();
}

Ids FaultWorld::IdsOfGone() {
  Ids gone;
  for (const Row& row : scan_tests::ReadReport(scan)) {
    if (row.numbers.kind != QS_ROW_GROUP && !machine.Exists(row.path)) {
      gone.push_back(row.numbers.item_id);
      EXPECT_NE(row.name, u"kept");
    }
  }
  return gone;
}

void FaultWorld::CheckDisk(bool with_folders) const {
  std::set<std::string> allowed;
  for (const Text& path : named_) {
    allowed.insert(Utf8(path));
    if (with_folders) {
      allowed.insert(Utf8(path.substr(0, path.rfind(u'\\'))));
    }
  }
  const std::set<std::string> now = LinesOfDisk();
  for (const std::string& line : before_) {
    const bool may_go = allowed.count(line.substr(0, line.find(" file "))) == 1 ||
                        allowed.count(line.substr(0, line.find(" folder size"))) == 1;
    EXPECT_TRUE(now.count(line) == 1 || may_go) << line;
  }
  for (const std::string& line : now) {
    EXPECT_EQ(before_.count(line), 1u) << line;
  }
  EXPECT_TRUE(machine.Exists(u"C:\\t\\kept"));
  EXPECT_TRUE(machine.Exists(u"C:\\precious\\a"));
}

std::set<std::string> FaultWorld::LinesOfDisk() const {
  std::set<std::string> lines;
  const std::string text = machine.Describe();
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    lines.insert(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

}  // namespace quastel::clean_tests
