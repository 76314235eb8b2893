#include <cstring>
#include <functional>
#include <string>

#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

struct RequestCase {
  const char* name;
  std::function<void(Request&)> change;
};
void PrintTo(const RequestCase& c, std::ostream* out) {
  *out << c.name;
}

// A handle that holds a report, so that a refusal has something to spoil.
class ScanRequest : public ::testing::TestWithParam<RequestCase> {
 protected:
  ScanRequest() {
    machine_.AddSizedFile(u"C:\\data\\a.zip", kLarge);
    machine_.AddSizedFile(u"C:\\data\\b.pdf", kLarge + 1);
    EXPECT_EQ(scan_.Start(Valid()), QS_OK);
    EXPECT_EQ(RowCountOf(scan_), 2u);
  }

  static Request Valid() { return Request::LargeFiles({u"C:\\data"}); }

  SimulatedWindows machine_;
  ScanHandle scan_;
};

class RefusedRequest : public ScanRequest {};

TEST_P(RefusedRequest, Is_an_invalid_argument_and_changes_nothing) {
  Request request = Valid();
  GetParam().change(request);
  const std::string before = EverythingOf(scan_);
  EXPECT_EQ(scan_.Start(request), QS_INVALID_ARGUMENT);
  EXPECT_EQ(EverythingOf(scan_), before);
  EXPECT_EQ(scan_.Start(Valid()), QS_OK) << "the busy flag must be cleared";
}

void Protect(Request& r) {
  r.protect_system = 1;
  r.system_root = u"C:\\";
  r.user_home = u"C:\\Users\\u";
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedRequest,
    ::testing::Values(RequestCase{"size_0", [](Request& r) { r.size = 0; }},
                      RequestCase{"size_55", [](Request& r) { r.size = 55; }},
                      RequestCase{"kind_3", [](Request& r) { r.kind = 3; }},
                      RequestCase{"kind_all_ones", [](Request& r) { r.kind = UINT32_MAX; }},
                      RequestCase{"large_files_without_roots", [](Request& r) { r.roots.clear(); }},
                      RequestCase{"duplicates_without_roots",
                                  [](Request& r) {
                                    r.roots.clear();
                                    r.kind = QS_SCAN_KIND_DUPLICATES;
                                  }},
                      RequestCase{"empty_root", [](Request& r) { r.roots = {u""}; }},
                      RequestCase{"empty_last_root",
                                  [](Request& r) {
                                    r.roots = {u"C:\\a", u"C:\\b", u""};
                                  }},
                      RequestCase{"empty_root_of_a_junk_scan",
                                  [](Request& r) {
                                    r.roots = {u""};
                                    r.kind = QS_SCAN_KIND_JUNK_RULES;
                                  }},
                      RequestCase{"protection_without_home_and_root",
                                  [](Request& r) { r.protect_system = 1; }},
                      RequestCase{"protection_without_home",
                                  [](Request& r) {
                                    Protect(r);
                                    r.user_home.reset();
                                  }},
                      RequestCase{"protection_with_an_empty_home",
                                  [](Request& r) {
                                    Protect(r);
                                    r.user_home = u"";
                                  }},
                      RequestCase{"protection_without_root",
                                  [](Request& r) {
                                    Protect(r);
                                    r.system_root.reset();
                                  }},
                      RequestCase{"protection_with_an_empty_root",
                                  [](Request& r) {
                                    Protect(r);
                                    r.system_root = u"";
                                  }},
                      RequestCase{"protection_of_any_bit_without_home",
                                  [](Request& r) {
                                    Protect(r);
                                    r.protect_system = 0x80000000;
                                    r.user_home.reset();
                                  }},
                      RequestCase{"protection_of_a_junk_scan_without_home",
                                  [](Request& r) {
                                    Protect(r);
                                    r.kind = QS_SCAN_KIND_JUNK_RULES;
                                    r.user_home.reset();
                                  }}),
    support::CaseName());

class AcceptedRequest : public ScanRequest {};

TEST_P(AcceptedRequest, Scans) {
  Request request = Valid();
  GetParam().change(request);
  EXPECT_EQ(scan_.Start(request), QS_OK);
  EXPECT_EQ(RowCountOf(scan_), 2u);
}

INSTANTIATE_TEST_SUITE_P(All, AcceptedRequest,
                         ::testing::Values(RequestCase{"plain", [](Request&) {}},
                                           RequestCase{"reserved_field_set",
                                                       [](Request& r) { r.reserved = 0xFFFFFFFF; }},
                                           RequestCase{"texts_of_other_kinds_set",
                                                       [](Request& r) {
                                                         r.rules_path = u"C:\\rules.xml";
                                                         r.user_home = u"C:\\Users\\u";
                                                         r.system_root = u"C:\\";
                                                       }},
                                           RequestCase{"texts_of_other_kinds_empty",
                                                       [](Request& r) {
                                                         r.rules_path = u"";
                                                         r.user_home = u"";
                                                         r.system_root = u"";
                                                       }},
                                           RequestCase{"protection", Protect},
                                           RequestCase{"protection_of_any_bit",
                                                       [](Request& r) {
                                                         Protect(r);
                                                         r.protect_system = 0x80000000;
                                                       }}),
                         support::CaseName());

TEST_F(ScanRequest, A_null_request_is_an_invalid_argument_and_changes_nothing) {
  const std::string before = EverythingOf(scan_);
  EXPECT_EQ(qs_product_scan_start(scan_, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(EverythingOf(scan_), before);
  EXPECT_EQ(scan_.Start(Valid()), QS_OK);
}

TEST_F(ScanRequest, A_count_of_roots_without_the_array_is_refused_for_every_kind) {
  for (std::uint32_t kind = 0; kind <= 2; ++kind) {
    SCOPED_TRACE(kind);
    qs_product_scan_request request = *Valid().Get();
    request.kind = kind;
    request.roots = nullptr;
    request.root_count = 1;
    const std::string before = EverythingOf(scan_);
    EXPECT_EQ(qs_product_scan_start(scan_, &request), QS_INVALID_ARGUMENT);
    EXPECT_EQ(EverythingOf(scan_), before);
  }
}

TEST_F(ScanRequest, A_null_root_is_refused_wherever_it_stands) {
  for (std::uint32_t kind = 0; kind <= 2; ++kind) {
    for (std::size_t at = 0; at < 3; ++at) {
      SCOPED_TRACE(kind);
      SCOPED_TRACE(at);
      const Char* roots[3] = {u"C:\\data", u"C:\\data", u"C:\\data"};
      roots[at] = nullptr;
      qs_product_scan_request request = {};
      request.size = sizeof(request);
      request.kind = kind;
      request.roots = roots;
      request.root_count = 3;
      const std::string before = EverythingOf(scan_);
      EXPECT_EQ(qs_product_scan_start(scan_, &request), QS_INVALID_ARGUMENT);
      EXPECT_EQ(EverythingOf(scan_), before);
    }
  }
}

TEST_F(ScanRequest, An_array_of_no_roots_is_refused) {
  const Char* const roots[1] = {u"C:\\data"};
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = roots;
  request.root_count = 0;
  EXPECT_EQ(qs_product_scan_start(scan_, &request), QS_INVALID_ARGUMENT);
}

TEST_F(ScanRequest, A_longer_record_is_accepted_and_read_only_as_far_as_it_is_known) {
  alignas(qs_product_scan_request) unsigned char larger[500];
  std::memset(larger, 0xEE, sizeof(larger));
  Request request = Valid();
  request.size = sizeof(larger);
  std::memcpy(larger, request.Get(), sizeof(qs_product_scan_request));
  EXPECT_EQ(qs_product_scan_start(scan_, reinterpret_cast<const qs_product_scan_request*>(larger)),
            QS_OK);
  EXPECT_EQ(RowCountOf(scan_), 2u);
}

TEST_F(ScanRequest, A_junk_request_without_profile_root_and_document_gets_as_far_as_its_scan) {
  Request request;
  request.kind = QS_SCAN_KIND_JUNK_RULES;
  EXPECT_NE(scan_.Start(request), QS_OK);
  EXPECT_EQ(Poll(scan_).state, QS_STATE_FAILED);
  EXPECT_EQ(RowCountOf(scan_), 0u);
  EXPECT_EQ(PerformanceOf(scan_).kind, QS_SCAN_KIND_JUNK_RULES);
}

TEST_F(ScanRequest, Nothing_of_the_callers_memory_is_kept) {
  machine_.AddSizedFile(u"C:\\Windows\\w.zip", kLarge);
  Text root = u"C:\\";
  Text home = u"C:\\Users\\u";
  Text system_root = u"C:\\";
  std::vector<const Char*> roots = {root.c_str()};
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = roots.data();
  request.root_count = 1;
  request.user_home = home.c_str();
  request.system_root = system_root.c_str();
  request.protect_system = 1;
  // The hold comes right after the request was taken over.
  InsideCall(machine_, Call::kEnvironmentVariable, 1, [&] {
    root.assign(root.size(), Char{'x'});
    home.assign(home.size(), Char{'x'});
    system_root.assign(system_root.size(), Char{'x'});
    roots.assign(1, nullptr);
    std::memset(&request, 0xEE, sizeof(request));
  });
  EXPECT_EQ(qs_product_scan_start(scan_, &request), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(PathsOf(ReadReport(scan_)),
            (std::vector<Text>{u"C:\\\\data\\a.zip", u"C:\\\\data\\b.pdf"}));
}

TEST(OwnedRequestCopy, Hands_the_scan_what_the_caller_said_with_nothing_in_place_of_null) {
  SimulatedWindows machine;
  OwnKindScan own;
  Request request = Request::LargeFiles({u"C:\\one", u"D:\\two\\"});
  request.protect_system = 7;
  request.user_home = u"C:\\Users\\u";
  request.system_root = u"C:\\";
  int runs = 0;
  EXPECT_EQ(own.Run(request,
                    [&](ProductScan&, const OwnedRequest& owned) {
                      ++runs;
                      EXPECT_EQ(owned.kind, ScanKind::kLargeFiles);
                      EXPECT_EQ(owned.roots, (std::vector<Text>{u"C:\\one", u"D:\\two\\"}));
                      EXPECT_EQ(owned.user_home, u"C:\\Users\\u");
                      EXPECT_EQ(owned.system_root, u"C:\\");
                      EXPECT_TRUE(owned.protect_system);
                      EXPECT_EQ(owned.rules_path, u"");
                      return QS_OK;
                    }),
            QS_OK);
  Request junk;
  junk.kind = QS_SCAN_KIND_JUNK_RULES;
  junk.rules_path = u"C:\\rules.xml";
  EXPECT_EQ(own.Run(junk,
                    [&](ProductScan&, const OwnedRequest& owned) {
                      ++runs;
                      EXPECT_EQ(owned.kind, ScanKind::kJunkRules);
                      EXPECT_TRUE(owned.roots.empty());
                      EXPECT_EQ(owned.user_home, u"");
                      EXPECT_EQ(owned.system_root, u"");
                      EXPECT_FALSE(owned.protect_system);
                      EXPECT_EQ(owned.rules_path, u"C:\\rules.xml");
                      return QS_OK;
                    }),
            QS_OK);
  EXPECT_EQ(runs, 2);
}

}  // namespace
}  // namespace quastel::scan_tests
