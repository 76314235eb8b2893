#include "platform/process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

#include "contract/machine.h"

namespace quastel::contract {
namespace {

using platform::DecodeUtf8;
using platform::EnvironmentVariable;
using platform::Error;
using platform::FoldWide;

TEST(EnvironmentContract, A_value_is_read_whatever_the_case_of_its_name) {
  Machine machine;
  machine.SetEnvironment(QS_TEXT("Quastel_Contract"), QS_TEXT("some value"));
  Char buffer[32] = {};
  EXPECT_EQ(EnvironmentVariable(QS_TEXT("QUASTEL_CONTRACT"), buffer, 32), 10u);
  EXPECT_EQ(Text(buffer), QS_TEXT("some value"));
}

TEST(EnvironmentContract, The_answer_is_the_length_when_it_fits_and_the_capacity_when_not) {
  Machine machine;
  machine.SetEnvironment(QS_TEXT("QUASTEL_CONTRACT"), QS_TEXT("12345"));
  Char buffer[8] = {};
  EXPECT_EQ(EnvironmentVariable(QS_TEXT("QUASTEL_CONTRACT"), buffer, 5), 6u);
  EXPECT_EQ(EnvironmentVariable(QS_TEXT("QUASTEL_CONTRACT"), nullptr, 0), 6u);
  EXPECT_EQ(EnvironmentVariable(QS_TEXT("QUASTEL_CONTRACT"), buffer, 6), 5u);
  EXPECT_EQ(Text(buffer), QS_TEXT("12345"));
}

TEST(EnvironmentContract, Absent_and_empty_read_as_zero) {
  Machine machine;
  Char buffer[8] = {};
  machine.SetEnvironment(QS_TEXT("QUASTEL_CONTRACT"), std::nullopt);
  EXPECT_EQ(EnvironmentVariable(QS_TEXT("QUASTEL_CONTRACT"), buffer, 8), 0u);
  machine.SetEnvironment(QS_TEXT("QUASTEL_CONTRACT"), Text());
  EXPECT_EQ(EnvironmentVariable(QS_TEXT("QUASTEL_CONTRACT"), buffer, 8), 0u);
}

TEST(ProcessContract, There_is_a_processor) {
  const Machine machine;
  EXPECT_GE(platform::ProcessorCount(), 1u);
}

TEST(FoldContract, Only_ASCII_letters_are_folded) {
  const Machine machine;
  int wrong = 0;
  for (std::uint32_t c = 1; c < 0x80; ++c) {
    const bool upper = c >= 'A' && c <= 'Z';
    wrong += FoldWide(static_cast<Char>(c)) == static_cast<Char>(upper ? c + 32 : c) ? 0 : 1;
  }
  EXPECT_EQ(wrong, 0);
}

Text Decoded(std::string_view bytes) {
  Char buffer[64];
  const auto count = DecodeUtf8(bytes.data(), static_cast<std::uint32_t>(bytes.size()), buffer, 64);
  EXPECT_TRUE(count.ok());
  return Text(buffer, count.value());
}

Error DecodeError(std::string_view bytes) {
  Char buffer[64];
  const auto size = static_cast<std::uint32_t>(bytes.size());
  EXPECT_EQ(DecodeUtf8(bytes.data(), size, nullptr, 0).error(),
            DecodeUtf8(bytes.data(), size, buffer, 64).error());
  return DecodeUtf8(bytes.data(), size, buffer, 64).error();
}

TEST(Utf8Contract, Every_length_of_sequence_is_decoded) {
  const Machine machine;
  EXPECT_EQ(Decoded("abc"), QS_TEXT("abc"));
  EXPECT_EQ(Decoded("\xC3\xA4"), (Text{Char{0xE4}}));
  EXPECT_EQ(Decoded("\xE2\x82\xAC"), (Text{Char{0x20AC}}));
  EXPECT_EQ(Decoded("\xF0\x9F\x98\x80"), (Text{Char{0xD83D}, Char{0xDE00}}));
  EXPECT_EQ(Decoded("\xEF\xBF\xBF"), (Text{Char{0xFFFF}}));
  EXPECT_EQ(Decoded("\xF4\x8F\xBF\xBF"), (Text{Char{0xDBFF}, Char{0xDFFF}}));
  EXPECT_EQ(Decoded(std::string_view("a\0b", 3)), (Text{Char{'a'}, Char{0}, Char{'b'}}));
  EXPECT_EQ(Decoded("\xEF\xBB\xBF"
                    "a"),
            (Text{Char{0xFEFF}, Char{'a'}}));
}

TEST(Utf8Contract, Whatever_is_not_the_shortest_form_of_a_character_is_refused) {
  const Machine machine;
  for (const std::string_view bytes :
       {"\x80", "a\xBF", "\xC3", "\xC3(", "\xE2\x82", "\xE2(\xAC", "\xF0\x9F\x98", "\xC0\xAF",
        "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFE", "\xFF"}) {
    EXPECT_EQ(DecodeError(bytes), Error::kNoUnicodeTranslation);
  }
}

TEST(Utf8Contract, The_needed_units_are_told_without_a_buffer) {
  const Machine machine;
  const std::string_view bytes = "a\xE2\x82\xAC\xF0\x9F\x98\x80";
  const auto size = static_cast<std::uint32_t>(bytes.size());
  EXPECT_EQ(DecodeUtf8(bytes.data(), size, nullptr, 0).value(), 4u);
  Char buffer[4];
  EXPECT_EQ(DecodeUtf8(bytes.data(), size, buffer, 4).value(), 4u);
  // Not with 3: there Wine 8 writes half of the last character.
  EXPECT_EQ(DecodeUtf8(bytes.data(), size, buffer, 1).error(), Error::kInsufficientBuffer);
}

TEST(Utf8Contract, Nothing_cannot_be_decoded) {
  const Machine machine;
  Char buffer[4];
  EXPECT_EQ(DecodeUtf8("", 0, buffer, 4).error(), Error::kInvalidParameter);
}

}  // namespace
}  // namespace quastel::contract
