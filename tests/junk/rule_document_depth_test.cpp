// No document may exhaust the stack of whoever reads it.

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

std::size_t DepthOf(const junk::RuleNode& root) {
  std::size_t depth = 0;
  for (const junk::RuleNode* node = &root; node != nullptr;
       node = node->children.empty() ? nullptr : &node->children[0]) {
    ++depth;
  }
  return depth;
}

class RuleDocumentDepth : public ::testing::Test {
 protected:
  // On a small stack, the freeing of the tree included.
  qs_status Load(TextView document) {
    machine_.AddFile(kRulesPath, std::string(kUtf16Mark) + LittleEndian(document));
    qs_status status = QS_BUSY;
    RunOnStack(kSmallStack, [&] {
      junk::RuleNode root;
      status = junk::LoadRuleDocument(Text(kRulesPath), root);
      depth_ = status == QS_OK ? DepthOf(root) : 0;
    });
    return status;
  }

  SimulatedWindows machine_;
  std::size_t depth_ = 0;
};

TEST_F(RuleDocumentDepth, Of_256_elements_is_read) {
  EXPECT_EQ(Load(NestedElements(256)), QS_OK);
  EXPECT_EQ(depth_, 256u);
}

TEST_F(RuleDocumentDepth, Of_257_elements_is_refused) {
  EXPECT_EQ(Load(NestedElements(257)), QS_FAILED);
}

TEST_F(RuleDocumentDepth, Counts_an_empty_element_as_well) {
  const Text opened = u"<e>";
  const Text closed = u"</e>";
  const auto with_empty = [&](std::size_t around) {
    Text document;
    for (std::size_t i = 0; i < around; ++i) {
      document += opened;
    }
    document += u"<e/>";
    for (std::size_t i = 0; i < around; ++i) {
      document += closed;
    }
    return document;
  };
  EXPECT_EQ(Load(with_empty(255)), QS_OK);
  EXPECT_EQ(Load(with_empty(256)), QS_FAILED);
}

TEST_F(RuleDocumentDepth, Does_not_add_up_over_siblings) {
  Text document = u"<e>";
  for (int i = 0; i < 300; ++i) {
    document += NestedElements(255);
  }
  EXPECT_EQ(Load(document + u"</e>"), QS_OK);
  EXPECT_EQ(Load(document + NestedElements(256) + u"</e>"), QS_FAILED);
}

TEST_F(RuleDocumentDepth, Is_not_raised_by_comments_text_and_declarations) {
  Text document = u"<?x?><!--<e>-->";
  document += NestedElements(256).insert(256 * 3, u"<!--<e><e>-->text<!-- -->");
  EXPECT_EQ(Load(document), QS_OK);
}

TEST_F(RuleDocumentDepth, Of_a_million_elements_is_refused_and_not_followed) {
  EXPECT_EQ(Load(NestedElements(1'000'000)), QS_FAILED);
  Text opened;
  for (int i = 0; i < 1'000'000; ++i) {
    opened += u"<a b=''>";
  }
  EXPECT_EQ(Load(opened), QS_FAILED);
}

// 254 categories inside each other, with a rule in the innermost one.
std::string NestedCategories(std::size_t categories) {
  std::string content = "<Folder Path=\"C:\\t\"/>";
  for (std::size_t i = 0; i < categories; ++i) {
    content = Category("c", content);
  }
  return InRoot(content);
}

TEST_F(RuleDocumentDepth, Of_256_elements_is_scanned_on_a_small_stack) {
  machine_.AddFile(u"C:\\t\\a", "x");
  machine_.AddFile(kRulesPath, NestedCategories(254));
  ScanHandle scan;
  qs_status status = QS_BUSY;
  RunOnStack(kSmallScanStack, [&] { status = scan.Start(JunkRequest()); });
  EXPECT_EQ(status, QS_OK);
  const std::vector<Row> rows = scan_tests::ReadReport(scan);
  ASSERT_EQ(rows.size(), 256u);
  EXPECT_EQ(Outline(rows[253]), "[g252<g251] c");
  EXPECT_EQ(Outline(rows[254]), "[g253<g252] t = C:\\t");
  EXPECT_EQ(Outline(rows[255]), "g253<g252 t: C:\\t\\a");
}

TEST_F(RuleDocumentDepth, Of_257_elements_fails_the_scan_before_it_finds_anything) {
  machine_.AddFile(u"C:\\t\\a", "x");
  machine_.AddFile(kRulesPath, NestedCategories(255));
  ScanHandle scan;
  EXPECT_EQ(scan.Start(JunkRequest()), QS_FAILED);
  EXPECT_EQ(scan_tests::RowCountOf(scan), 0u);
}

}  // namespace
}  // namespace quastel::junk_tests
