#include "junk/junk_fixture.h"

#include <pthread.h>

#include <utility>

namespace quastel::junk_tests {
namespace {

void* RunAction(void* action) {
  (*static_cast<const std::function<void()>*>(action))();
  return nullptr;
}

std::string IdText(std::uint64_t id) {
  return id < kFirstGroup ? std::to_string(id) : "g" + std::to_string(id - kFirstGroup);
}

}  // namespace

std::string LittleEndian(TextView text) {
  std::string bytes;
  for (const Char c : text) {
    bytes += static_cast<char>(c & 0xFF);
    bytes += static_cast<char>(c >> 8);
  }
  return bytes;
}

std::string InRoot(const std::string& content) {
  return "<Root>" + content + "</Root>";
}

std::string Category(const std::string& name, const std::string& content) {
  return "<Category DisplayName=\"" + name + "\">" + content + "</Category>";
}

std::string InCategory(const std::string& content) {
  return InRoot(Category("c", content));
}

Text NestedElements(std::size_t depth) {
  Text document;
  for (std::size_t i = 0; i < depth; ++i) {
    document += u"<e>";
  }
  for (std::size_t i = 0; i < depth; ++i) {
    document += u"</e>";
  }
  return document;
}

std::string Print(const junk::RuleNode& node) {
  std::string out = Utf8(node.name);
  if (!node.attributes.empty()) {
    out += "{";
    for (const junk::RuleAttribute& attribute : node.attributes) {
      out += (out.back() == '{' ? "" : "|") + Utf8(attribute.name) + "=" + Utf8(attribute.value);
    }
    out += "}";
  }
  if (!node.children.empty()) {
    out += "(";
    for (const junk::RuleNode& child : node.children) {
      out += (out.back() == '(' ? "" : " ") + Print(child);
    }
    out += ")";
  }
  return out;
}

std::string Parsed(TextView document) {
  junk::RuleNode root;
  return junk::ParseRuleDocument(document, root) ? Print(root) : "refused";
}

void RunOnStack(std::size_t stack_size, const std::function<void()>& action) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stack_size), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, RunAction,
                           const_cast<void*>(static_cast<const void*>(&action))),
            0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
}

Request JunkRequest() {
  Request request;
  request.kind = QS_SCAN_KIND_JUNK_RULES;
  request.user_home = kHome;
  request.system_root = kSystemRoot;
  request.rules_path = kRulesPath;
  return request;
}

std::string Outline(const Row& row) {
  const std::string ids = IdText(row.numbers.group_id) + "<" + IdText(row.parent_group_id);
  if (row.numbers.kind == QS_ROW_GROUP) {
    return "[" + ids + "] " + Utf8(row.title) + (row.path.empty() ? "" : " = " + Utf8(row.path));
  }
  return ids + " " + Utf8(row.title) + ": " + Utf8(row.path) +
         (row.numbers.preselect == 1 ? "" : " (not selected)");
}

Lines Outline(const std::vector<Row>& rows) {
  Lines lines;
  for (const Row& row : rows) {
    lines.push_back(Outline(row));
  }
  return lines;
}

Row CategoryRow(std::uint64_t id, std::uint64_t parent, TextView title) {
  return FolderRow(id, parent, title, TextView());
}

Row FolderRow(std::uint64_t id, std::uint64_t parent, TextView title, TextView folder) {
  Row row;
  row.path = folder;
  row.title = title;
  row.location = folder;
  row.numbers = {.item_id = QS_NO_ITEM_ID,
                 .group_id = id,
                 .kind = QS_ROW_GROUP,
                 .reserved = 0,
                 .size = 0,
                 .modified = 0,
                 .deletable = 0,
                 .preselect = 0,
                 .deleted = 0,
                 .large_class = QS_LARGE_OTHER};
  row.parent_group_id = parent;
  return row;
}

Row FileRow(std::uint64_t item, std::uint64_t group, std::uint64_t parent, TextView title,
            TextView path, std::uint64_t size) {
  Row row;
  row.path = path;
  row.name = path.substr(path.rfind(u'\\') + 1);
  row.title = title;
  row.location = title;
  row.numbers = {.item_id = item,
                 .group_id = group,
                 .kind = QS_ROW_JUNK,
                 .reserved = 0,
                 .size = static_cast<std::int64_t>(size),
                 .modified = kDefaultModified,
                 .deletable = 1,
                 .preselect = 1,
                 .deleted = 0,
                 .large_class = QS_LARGE_OTHER};
  row.parent_group_id = parent;
  return row;
}

qs_status JunkScanTest::Scan(std::string_view document, Request request) {
  machine_.AddFile(kRulesPath, document);
  const qs_status status = scan_.Start(std::move(request));
  EXPECT_EQ(machine_.open_handles(), 0u);
  return status;
}

std::vector<Row> JunkScanTest::Report(std::string_view document, qs_status expected) {
  EXPECT_EQ(Scan(document), expected);
  return scan_tests::ReadReport(scan_);
}

Lines JunkScanTest::Scanned(std::string_view document, qs_status expected) {
  return Outline(Report(document, expected));
}

}  // namespace quastel::junk_tests
