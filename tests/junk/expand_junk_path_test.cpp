#include <algorithm>
#include <utility>

#include "junk/junk_fixture.h"
#include "junk/rule_paths.h"
#include "support/named_case.h"

namespace quastel::junk_tests {
namespace {

// With the two calls that a caller makes.
Text Expanded(const Text& rule_path, const Text& home, const Text& root) {
  std::uint64_t needed = 0;
  EXPECT_EQ(qs_expand_junk_path(rule_path.c_str(), home.c_str(), root.c_str(), nullptr, 0, &needed),
            QS_BUFFER_TOO_SMALL);
  Text out(needed, Char{'?'});
  EXPECT_EQ(qs_expand_junk_path(rule_path.c_str(), home.c_str(), root.c_str(), out.data(), needed,
                                nullptr),
            QS_OK);
  EXPECT_EQ(out.back(), 0);
  out.pop_back();
  return out;
}

struct Expansion : support::NamedCase {
  const Char* rule_path;
  const Char* home;
  const Char* root;
  const Char* expected;
};

class ExpandJunkPath : public ::testing::TestWithParam<Expansion> {};

TEST_P(ExpandJunkPath, Puts_the_texts_into_the_places) {
  const Expansion& c = GetParam();
  EXPECT_EQ(Utf8(Expanded(c.rule_path, c.home, c.root)), Utf8(c.expected));
  EXPECT_EQ(Utf8(junk::ExpandJunkPath(c.rule_path, c.home, c.root)), Utf8(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ExpandJunkPath,
    ::testing::ValuesIn(std::vector<Expansion>{
        {{"Profile"},
         u"{UserHome}\\AppData\\Local\\Temp",
         u"C:\\Users\\demo",
         u"C:\\",
         u"C:\\Users\\demo\\AppData\\Local\\Temp"},
        {{"Root"}, u"{Root}Windows\\Temp", u"C:\\Users\\demo", u"C:\\", u"C:\\Windows\\Temp"},
        {{"RootWithoutSeparator"}, u"{Root}Windows", u"h", u"C:", u"C:Windows"},
        {{"RootBeforeASeparator"}, u"{Root}\\Windows", u"h", u"C:\\", u"C:\\\\Windows"},
        {{"Neither"}, u"D:\\Data/x", u"h", u"r", u"D:\\Data/x"},
        {{"Empty"}, u"", u"h", u"r", u""},
        {{"EmptyHome"}, u"{UserHome}", u"", u"r", u""},
        {{"EmptyRoot"}, u"a{Root}b", u"h", u"", u"ab"},
        {{"LowerCaseHome"}, u"{userhome}\\a", u"h", u"r", u"{userhome}\\a"},
        {{"LowerCaseRoot"}, u"{root}\\a", u"h", u"r", u"{root}\\a"},
        {{"UpperCase"}, u"{USERHOME}{ROOT}", u"h", u"r", u"{USERHOME}{ROOT}"},
        {{"HomeWithoutItsBrace"}, u"{UserHome\\a", u"h", u"r", u"{UserHome\\a"},
        {{"RootWithoutItsBrace"}, u"{Root\\a", u"h", u"r", u"{Root\\a"},
        {{"HomeCutOff"}, u"a{UserHome", u"h", u"r", u"a{UserHome"},
        {{"RootCutOff"}, u"a{Root", u"h", u"r", u"a{Root"},
        {{"BlankInside"}, u"{ Root}{UserHome }", u"h", u"r", u"{ Root}{UserHome }"},
        {{"OtherName"}, u"{Temp}{UserHomes}", u"h", u"r", u"{Temp}{UserHomes}"},
        {{"BracesAround"}, u"{{UserHome}}{{Root}}", u"h", u"r", u"{h}{r}"},
        {{"SeveralTimes"}, u"{Root}{UserHome}{UserHome}{Root}", u"h", u"r", u"rhhr"},
        {{"AtTheEnd"}, u"a{UserHome}", u"h", u"r", u"ah"},
        {{"RootInsideHome"}, u"{UserHome}a", u"{Root}Users\\u\\", u"C:\\", u"C:\\Users\\u\\a"},
        {{"HomeInsideRoot"}, u"{Root}a", u"h", u"{UserHome}\\", u"{UserHome}\\a"},
        {{"HomeInsideHome"}, u"{UserHome}", u"{UserHome}x", u"r", u"{UserHome}x"},
        {{"RootInsideRoot"}, u"{Root}", u"h", u"{Root}x", u"{Root}x"},
        {{"RootMadeByTheFirstPass"}, u"{Ro{UserHome}}", u"ot", u"r", u"r"},
        {{"RootBegunByTheHome"}, u"{UserHome}oot}", u"{R", u"r", u"r"},
        {{"HomeMadeByTheSecondPass"}, u"{User{Root}}", u"h", u"Home", u"{UserHome}"},
        {{"HomeMadeByTheFirstPass"}, u"{User{UserHome}}", u"Home", u"r", u"{UserHome}"},
        {{"Separators"}, u"{UserHome}//a\\\\", u"C:\\u\\", u"r", u"C:\\u\\//a\\\\"},
        {{"BeyondAscii"},
         u"{UserHome}\\\u00E9\U0001F600",
         u"C:\\\u4E2D",
         u"r",
         u"C:\\\u4E2D\\\u00E9\U0001F600"},
    }),
    support::CaseName());

TEST(ExpandJunkPathExport, Refuses_null_texts_and_stores_nothing) {
  std::uint64_t needed = 77;
  Char out[4] = {'?', '?', '?', '?'};
  EXPECT_EQ(qs_expand_junk_path(nullptr, u"", u"", out, 4, &needed), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_expand_junk_path(u"", nullptr, u"", out, 4, &needed), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_expand_junk_path(u"", u"", nullptr, out, 4, &needed), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_expand_junk_path(nullptr, nullptr, nullptr, nullptr, 0, nullptr),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(needed, 77u);
  EXPECT_EQ(TextView(out, 4), u"????");
}

TEST(ExpandJunkPathExport, Copies_whole_texts_only) {
  const Text expected = u"C:\\Users\\u\\x";
  const std::uint64_t length = expected.size();
  for (std::uint64_t capacity = 0; capacity <= length + 2; ++capacity) {
    SCOPED_TRACE(capacity);
    Text out(length + 4, Char{'?'});
    std::uint64_t needed = 77;
    const qs_status status = qs_expand_junk_path(u"{UserHome}\\x", u"C:\\Users\\u", u"C:\\",
                                                 out.data(), capacity, &needed);
    EXPECT_EQ(needed, length + 1);
    if (capacity <= length) {
      EXPECT_EQ(status, QS_BUFFER_TOO_SMALL);
      EXPECT_EQ(out, Text(length + 4, Char{'?'}));
    } else {
      EXPECT_EQ(status, QS_OK);
      EXPECT_EQ(out, expected + Char{0} + u"???");
    }
  }
}

TEST(ExpandJunkPathExport, Without_a_buffer_tells_the_length_whatever_the_capacity) {
  for (const std::uint64_t capacity : {std::uint64_t{0}, std::uint64_t{100}, UINT64_MAX}) {
    std::uint64_t needed = 77;
    EXPECT_EQ(qs_expand_junk_path(u"{Root}a", u"h", u"C:\\", nullptr, capacity, &needed),
              QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(needed, 5u);
  }
}

TEST(ExpandJunkPathExport, Of_the_empty_text_needs_room_for_its_end) {
  std::uint64_t needed = 77;
  EXPECT_EQ(qs_expand_junk_path(u"", u"h", u"r", nullptr, 0, &needed), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(needed, 1u);
  Char out[2] = {'?', '?'};
  EXPECT_EQ(qs_expand_junk_path(u"", u"h", u"r", out, 0, &needed), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(out[0], '?');
  EXPECT_EQ(qs_expand_junk_path(u"", u"h", u"r", out, 1, &needed), QS_OK);
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[1], '?');
}

TEST(ExpandJunkPathExport, Does_without_the_needed_length) {
  Char out[8] = {};
  EXPECT_EQ(qs_expand_junk_path(u"{Root}a", u"h", u"C:\\", nullptr, 0, nullptr),
            QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(qs_expand_junk_path(u"{Root}a", u"h", u"C:\\", out, 8, nullptr), QS_OK);
  EXPECT_EQ(TextView(out), u"C:\\a");
}

TEST(ExpandJunkPathExport, Asks_the_system_nothing) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  EXPECT_EQ(Expanded(u"{UserHome}\\{Root}", Text(400, Char{'h'}), u"C:\\").size(), 404u);
  EXPECT_TRUE(machine.record().empty());
}

TEST(ExpandJunkPathExport, Takes_many_places_and_long_texts) {
  Text rule_path;
  Text expected;
  for (int i = 0; i < 20'000; ++i) {
    rule_path += u"{UserHome}-{Root}{";
    expected += u"C:\\Users\\u-C:\\{";
  }
  EXPECT_EQ(Expanded(rule_path, u"C:\\Users\\u", u"C:\\"), expected);
}

// A straightforward second writing of the two passes.
Text InPasses(Text text, const std::vector<std::pair<Text, Text>>& passes) {
  for (const auto& [place, replacement] : passes) {
    Text out;
    for (std::size_t i = 0; i < text.size();) {
      if (text.compare(i, place.size(), place) == 0) {
        out += replacement;
        i += place.size();
      } else {
        out += text[i++];
      }
    }
    text = std::move(out);
  }
  return text;
}

TEST(ExpandJunkPathModel, Random_texts_expand_as_two_passes_of_one_character_at_a_time_would) {
  const TextView pieces[] = {u"{UserHome}", u"{Root}", u"{",  u"}", u"{User",     u"Home}",
                             u"{Ro",        u"ot}",    u"\\", u"a", u"{userhome}"};
  std::uint32_t seed = 1;
  const auto random = [&](std::uint32_t below) {
    seed = seed * 1664525 + 1013904223;
    return (seed >> 8) % below;
  };
  const auto text = [&] {
    Text out;
    for (std::uint32_t n = random(6); n > 0; --n) {
      out += pieces[random(std::size(pieces))];
    }
    return out;
  };
  std::size_t changed = 0;
  for (int round = 0; round < 5000; ++round) {
    const Text rule_path = text();
    const Text home = text();
    const Text root = text();
    const Text expected = InPasses(rule_path, {{u"{UserHome}", home}, {u"{Root}", root}});
    ASSERT_EQ(Utf8(Expanded(rule_path, home, root)), Utf8(expected))
        << Utf8(rule_path) << " | " << Utf8(home) << " | " << Utf8(root);
    changed += expected != rule_path;
  }
  EXPECT_GT(changed, 1000u);
}

}  // namespace
}  // namespace quastel::junk_tests
