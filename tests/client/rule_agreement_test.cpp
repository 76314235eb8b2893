// The client reads rule documents by itself to tell where they are wrong. Its verdict has to be
// that of the library, which shows in the status of a junk scan.

#include <gtest/gtest.h>
#include <quastel_core.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "rule_document.h"
#include "temporary_folder.h"

namespace quastel::client {
namespace {

struct Document {
  std::string name;
  std::string bytes;
};

std::vector<Document> DocumentsOf(const char* folder) {
  std::vector<Document> documents;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream in(entry.path(), std::ios::binary);
    documents.push_back(
        {entry.path().filename().string(), std::string(std::istreambuf_iterator<char>(in), {})});
  }
  std::sort(documents.begin(), documents.end(),
            [](const Document& a, const Document& b) { return a.name < b.name; });
  return documents;
}

class RuleAgreement : public ::testing::Test {
 protected:
  RuleAgreement() {
    EXPECT_EQ(QS_OK, qs_product_scan_create(&scan_));
    folder_.AddFile(L"home\\AppData\\Local\\Temp\\x.tmp", "x");
    folder_.AddFile(L"home\\Downloads\\sub\\y", "y");
  }
  ~RuleAgreement() override { EXPECT_EQ(QS_OK, qs_product_scan_destroy(scan_)); }

  qs_status ScanWith(const std::string& bytes) {
    folder_.AddFile(L"rules.xml", bytes);
    const std::wstring home = folder_.Path(L"home");
    const std::wstring root = folder_.Path(L"drive\\");
    const std::wstring rules = folder_.Path(L"rules.xml");
    qs_product_scan_request request = {};
    request.size = sizeof request;
    request.kind = QS_SCAN_KIND_JUNK_RULES;
    request.user_home = home.c_str();
    request.system_root = root.c_str();
    request.rules_path = rules.c_str();
    return qs_product_scan_start(scan_, &request);
  }

  // Answers whether the document is good.
  bool Compare(const std::string& bytes) {
    const qs_status status = ScanWith(bytes);
    const RuleDocument document = LoadRuleDocument(folder_.Path(L"rules.xml"));
    EXPECT_TRUE(status == QS_OK || status == QS_FAILED || status == QS_INVALID_ARGUMENT) << status;
    EXPECT_EQ(status == QS_OK, !document.problem)
        << (document.problem ? document.problem->message : "no problem") << "\n"
        << bytes;
    return status == QS_OK;
  }

  TemporaryFolder folder_;
  qs_product_scan* scan_ = nullptr;
};

const char* const kMeanings[] = {
    "<Root/>",
    "<root/>",
    "<Root><Category/></Root>",
    "<Root><Category DisplayName=''/></Root>",
    "<Root><Category displayName='a'/></Root>",
    "<Root><Category DisplayName='a'/><Category/></Root>",
    "<Root><Other><Category/></Other></Root>",
    "<Root><Folder/></Root>",
    "<Root><Category DisplayName='a'><Category/></Category></Root>",
    "<Root><Category DisplayName='a'><Category DisplayName='b'/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder Path=''/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder Path='' Path='x'/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder Path='{UserHome}' Pattern=''/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder Path='{UserHome}' Pattern='*.t'/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder Path='{UserHome}' Pattern='a\\b'/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder Path='?*|'/></Category></Root>",
    "<Root><Category DisplayName='a'><Folder Path='{Root}'><Folder/></Folder></Category></Root>",
    "<Root><Category DisplayName='a'><Other><Folder/></Other></Category></Root>",
    "<Root><Category DisplayName='a'><FolderList StartPath='{UserHome}'/></Category></Root>",
    "<Root><Category DisplayName='a'><FolderList EndPath='x'/></Category></Root>",
    "<Root><Category DisplayName='a'><FolderList StartPath='' EndPath='x'/></Category></Root>",
    "<Root><Category DisplayName='a'><FolderList StartPath='{UserHome}' EndPath=''/></Category>"
    "</Root>",
    "<Root><Category DisplayName='a'><FolderList StartPath='{UserHome}' EndPath='sub' "
    "ContainsPath=''/></Category></Root>",
    "<Root><Category DisplayName='a'><ChildrenList/></Category></Root>",
    "<Root><Category DisplayName='a'><ChildrenList StartPath=''/></Category></Root>",
    "<Root><Category DisplayName='a'><ChildrenList StartPath='{UserHome}'/></Category></Root>",
};

TEST_F(RuleAgreement, Holds_for_what_documents_mean) {
  std::size_t good = 0;
  for (const char* bytes : kMeanings) {
    good += Compare(bytes) ? 1U : 0U;
  }
  EXPECT_GE(good, 8U);
  EXPECT_GE(std::size(kMeanings) - good, 8U);
}

TEST_F(RuleAgreement, Holds_for_the_shipped_documents) {
  const std::vector<Document> documents = DocumentsOf(QUASTEL_RULES_FOLDER);
  EXPECT_GE(documents.size(), 2U);
  for (const Document& document : documents) {
    SCOPED_TRACE(document.name);
    EXPECT_TRUE(Compare(document.bytes));
    folder_.AddFile(L"rules.xml", document.bytes);
    for (const RuleProblem& warning : LoadRuleDocument(folder_.Path(L"rules.xml")).warnings) {
      ADD_FAILURE() << PositionText(warning.position) << ": " << warning.message;
    }
  }
}

TEST_F(RuleAgreement, Holds_for_the_seeds_of_the_reader) {
  const std::vector<Document> seeds = DocumentsOf(QUASTEL_RULE_SEEDS);
  EXPECT_GE(seeds.size(), 20U);
  for (const Document& seed : seeds) {
    SCOPED_TRACE(seed.name);
    Compare(seed.bytes);
  }
}

// Each small enough to be tried at every place.
TEST_F(RuleAgreement, Holds_for_documents_cut_off_or_with_a_byte_changed) {
  const std::string document =
      "<?xml version='1.0'?>\n<!-- a -->\n<Root>\n"
      "<Category DisplayName=\"\xC3\xBC\">\n t <!-- b -->"
      "<Folder Path='{UserHome}\\Downloads' Pattern=\"&amp;*\"/>\r\n"
      "<FolderList StartPath = '{UserHome}' EndPath='sub'></FolderList >\n"
      "<ChildrenList StartPath='{UserHome}'/></Category></Root>\n";
  ASSERT_TRUE(Compare(document));
  std::size_t good = 0;
  for (std::size_t at = 0; at < document.size(); ++at) {
    if (at > 0) {
      Compare(document.substr(0, at));
    }
    for (const char c : {'<', '>', '/', '"', '\'', '=', ' ', 'x', '\0', '\xFF', '\xC3'}) {
      std::string changed = document;
      changed[at] = c;
      good += Compare(changed) ? 1U : 0U;
    }
    std::string without = document;
    without.erase(at, 1);
    good += Compare(without) ? 1U : 0U;
  }
  // Both verdicts are common among them.
  EXPECT_GE(good, document.size());
  EXPECT_LE(good, 8 * document.size());
}

TEST_F(RuleAgreement, A_document_that_is_not_there_is_an_error_of_its_own) {
  EXPECT_THROW(LoadRuleDocument(folder_.Path(L"none.xml")), UserError);
  EXPECT_THROW(LoadRuleDocument(folder_.Path(L"home")), UserError);
}

}  // namespace
}  // namespace quastel::client
