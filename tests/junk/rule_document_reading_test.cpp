// How the file of the document is opened and read, and what happens when it
// cannot be.

#include "duplicate/open_record.h"
#include "junk/junk_fixture.h"
#include "junk/large_blocks.h"

namespace quastel::junk_tests {
namespace {

using duplicate_tests::OpenCall;
using duplicate_tests::OpenRecord;
using platform::Error;

class RuleDocumentReading : public ::testing::Test {
 protected:
  qs_status Load(const Text& path = Text(kRulesPath)) {
    tree_ = junk::RuleNode{u"untouched", {}, {}};
    const qs_status status = junk::LoadRuleDocument(path, tree_);
    EXPECT_EQ(machine_.open_handles(), 0u);
    if (status != QS_OK) {
      EXPECT_EQ(Print(tree_), "untouched") << "a half of a tree is nobody's";
    }
    return status;
  }

  SimulatedWindows machine_;
  junk::RuleNode tree_;
};

TEST_F(RuleDocumentReading, Opens_for_reading_and_shares_everything) {
  machine_.AddFile(kRulesPath, "<a/>");
  OpenRecord record;
  EXPECT_EQ(Load(), QS_OK);
  ASSERT_EQ(record.calls().size(), 1u);
  const OpenCall& call = record.calls()[0];
  EXPECT_EQ(call.path, "C:\\rules.xml");
  EXPECT_EQ(call.access, platform::kAccessRead);
  EXPECT_EQ(call.share, platform::kShareAll);
  EXPECT_EQ(call.disposition, platform::Disposition::kOpenExisting);
}

TEST_F(RuleDocumentReading, Takes_the_size_once_and_reads_all_of_it_at_once) {
  const std::string document = "<a>" + std::string(3'000'000, 'x') + "</a>";
  machine_.AddFile(kRulesPath, document);
  machine_.SetRecording(true);
  EXPECT_EQ(Load(), QS_OK);
  EXPECT_EQ(machine_.CallCount(Call::kQuerySize), 1u);
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 1u);
  for (const CallRecord& record : machine_.record()) {
    if (record.call == Call::kReadFrom) {
      EXPECT_EQ(record.number, document.size());
    }
  }
}

TEST_F(RuleDocumentReading, Of_a_missing_file_says_so) {
  EXPECT_EQ(Load(), QS_NOT_FOUND);
  machine_.AddFolder(u"C:\\folder");
  EXPECT_EQ(Load(u"C:\\folder\\rules.xml"), QS_NOT_FOUND);
}

TEST_F(RuleDocumentReading, Of_a_missing_folder_fails) {
  EXPECT_EQ(Load(u"C:\\missing\\rules.xml"), QS_FAILED);
  EXPECT_EQ(Load(u"Z:\\rules.xml"), QS_FAILED);
  machine_.AddFile(u"C:\\file", "x");
  EXPECT_EQ(Load(u"C:\\file\\rules.xml"), QS_FAILED);
}

TEST_F(RuleDocumentReading, Of_what_is_no_readable_file_fails) {
  machine_.AddFolder(u"C:\\folder");
  EXPECT_EQ(Load(u"C:\\folder"), QS_FAILED);
  EXPECT_EQ(Load(u"C:\\"), QS_FAILED);
  EXPECT_EQ(Load(u"C:\\rules?.xml"), QS_FAILED) << "no file can have this name";
  machine_.AddFile(u"C:\\denied.xml", "<a/>");
  machine_.Deny(u"C:\\denied.xml", {.opening = true});
  EXPECT_EQ(Load(u"C:\\denied.xml"), QS_FAILED);
  machine_.AddFile(u"C:\\locked.xml", "<a/>");
  machine_.Lock(u"C:\\locked.xml");
  EXPECT_EQ(Load(u"C:\\locked.xml"), QS_FAILED);
}

TEST_F(RuleDocumentReading, Tells_a_missing_file_from_every_other_error) {
  machine_.AddFile(kRulesPath, "<a/>");
  struct Case {
    Error error;
    qs_status status;
  };
  for (const Case& c :
       {Case{Error::kFileNotFound, QS_NOT_FOUND}, Case{Error::kPathNotFound, QS_FAILED},
        Case{Error::kAccessDenied, QS_FAILED}, Case{Error::kSharingViolation, QS_FAILED},
        Case{Error::kInvalidName, QS_FAILED}, Case{Error::kBadNetworkPath, QS_FAILED},
        Case{Error::kNotReady, QS_FAILED}, Case{Error::kNotEnoughMemory, QS_FAILED},
        Case{Error{1}, QS_FAILED}, Case{Error{4390}, QS_FAILED}}) {
    machine_.ClearFaults();
    machine_.FailCall(Call::kOpenFile, 1, simulated::Repeat::kOnce, c.error);
    EXPECT_EQ(Load(), c.status) << static_cast<std::uint32_t>(c.error);
  }
}

TEST_F(RuleDocumentReading, Follows_a_link_as_the_system_does) {
  machine_.AddFile(u"C:\\target.xml", "<a/>");
  machine_.AddLink(LinkKind::kFileLink, kRulesPath, u"C:\\target.xml");
  EXPECT_EQ(Load(), QS_OK);
}

TEST_F(RuleDocumentReading, Reaches_a_file_with_a_long_path) {
  const Text path = support::NestedTo(300, u"C:") + u"\\rules.xml";
  machine_.AddFile(path, "<a/>");
  EXPECT_EQ(Load(path), QS_OK);
  EXPECT_EQ(Load(support::NestedTo(300, u"C:") + u"\\other.xml"), QS_NOT_FOUND);
}

TEST_F(RuleDocumentReading, Is_possible_beside_a_reader_who_shares_reading) {
  machine_.AddFile(kRulesPath, "<a/>");
  machine_.Lock(kRulesPath, platform::kShareRead);
  EXPECT_EQ(Load(), QS_OK);
  machine_.Unlock(kRulesPath);
}

TEST_F(RuleDocumentReading, Fails_with_each_call_that_fails) {
  machine_.AddFile(kRulesPath, "<a/>");
  for (const Call call : {Call::kQuerySize, Call::kReadFrom, Call::kDecodeUtf8}) {
    SCOPED_TRACE(simulated::NameOf(call));
    machine_.ClearFaults();
    machine_.FailCall(call, 1);
    EXPECT_EQ(Load(), QS_FAILED);
    EXPECT_EQ(machine_.faults_injected(), 1u);
    // Not even this makes it a missing document.
    machine_.ClearFaults();
    machine_.FailCall(call, 1, simulated::Repeat::kFromThenOn, Error::kFileNotFound);
    EXPECT_EQ(Load(), QS_FAILED);
    machine_.ClearFaults();
    EXPECT_EQ(Load(), QS_OK);
  }
}

TEST_F(RuleDocumentReading, Of_a_file_that_shrinks_meanwhile_fails) {
  machine_.AddFile(kRulesPath, "<a/>  ");
  scan_tests::InsideCall(machine_, Call::kReadFrom, 1,
                         [&] { machine_.SetContent(kRulesPath, "<a/> "); });
  EXPECT_EQ(Load(), QS_FAILED) << "what was read is a document, but a short one";
  machine_.SetHook(nullptr);
  EXPECT_EQ(Load(), QS_OK);
}

TEST_F(RuleDocumentReading, Of_a_file_that_grows_meanwhile_takes_what_was_there) {
  machine_.AddFile(kRulesPath, "<a/>");
  scan_tests::InsideCall(machine_, Call::kReadFrom, 1,
                         [&] { machine_.SetContent(kRulesPath, "<a/><b/>"); });
  EXPECT_EQ(Load(), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(Print(tree_), "a");
  EXPECT_EQ(Load(), QS_FAILED);
}

TEST_F(RuleDocumentReading, Of_an_empty_file_fails_without_a_read) {
  machine_.AddFile(kRulesPath, "");
  EXPECT_EQ(Load(), QS_FAILED);
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 0u);
}

// Through the scan: what a lack of memory becomes is the boundary's affair.
TEST_F(RuleDocumentReading, Of_2147483648_bytes_is_not_even_tried) {
  machine_.AddSizedFile(kRulesPath, 2'147'483'648);
  ScanHandle scan;
  const NoLargeBlocks guard;
  EXPECT_EQ(scan.Start(JunkRequest()), QS_FAILED);
  EXPECT_EQ(machine_.CallCount(Call::kQuerySize), 1u);
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 0u);
  EXPECT_EQ(guard.largest(), 0u);
}

TEST_F(RuleDocumentReading, Of_2147483647_bytes_is_tried) {
  machine_.AddSizedFile(kRulesPath, 2'147'483'647);
  ScanHandle scan;
  const NoLargeBlocks guard;
  EXPECT_EQ(scan.Start(JunkRequest()), QS_FAILED) << "there is no room for it here";
  EXPECT_GE(guard.largest(), 2'147'483'647u);
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 0u);
}

TEST_F(RuleDocumentReading, Of_an_enormous_file_is_not_even_tried) {
  for (const std::uint64_t size :
       {std::uint64_t{1} << 32, (std::uint64_t{1} << 32) + 4, std::uint64_t{1} << 40}) {
    machine_.AddSizedFile(kRulesPath, size);
    EXPECT_EQ(Load(), QS_FAILED) << size;
  }
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 0u);
}

}  // namespace
}  // namespace quastel::junk_tests
