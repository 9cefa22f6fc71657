// SPDX-License-Identifier: MIT
#include "vxfoundation/text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include "tests/support/grouping_locale.h"

namespace {

std::wstring widened(const std::string& text) {
  std::wstring wide = L"what stood there before";
  vfConvertString(wide, text);
  return wide;
}

TEST(StrTest, GivesDecimalDigits) {
  const struct {
    long value;
    const wchar_t* text;
  } rows[] = {{0, L"0"},
              {7, L"7"},
              {-1, L"-1"},
              {10, L"10"},
              {-100, L"-100"},
              {2147483647, L"2147483647"},
              {-2147483647 - 1, L"-2147483648"}};
  for (const auto& row : rows) EXPECT_EQ(vfStr(row.value), row.text);
}

TEST(StrTest, GivesTheDigitsOfTheExtremes) {
  for (const long value : {std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
    EXPECT_EQ(vfStr(value), std::to_wstring(value));
  }
}

TEST(StrTest, IgnoresTheLocale) {
  const GroupingLocale locale;
  EXPECT_EQ(vfStr(1234567), L"1234567");
  EXPECT_EQ(vfStr(-1234567), L"-1234567");
}

TEST(ConvertStringTest, ReadsUtf8) {
  const struct {
    std::string name;
    std::string narrow;
    std::wstring wide;
  } rows[] = {
      {"nothing", "", L""},
      {"ASCII", "vx class!", L"vx class!"},
      {"the last of one byte", "\x7f", L"\x7f"},
      {"the first of two bytes", "\xc2\x80", L"\x80"},
      {"the last of two bytes", "\xdf\xbf", L"\x7ff"},
      {"the first of three bytes", "\xe0\xa0\x80", L"\x800"},
      {"before the surrogates", "\xed\x9f\xbf", L"\xd7ff"},
      {"after the surrogates", "\xee\x80\x80", L"\xe000"},
      {"the last of three bytes", "\xef\xbf\xbf", L"\xffff"},
      {"the first of four bytes", "\xf0\x90\x80\x80", L"\U00010000"},
      {"the last of four bytes", "\xf4\x8f\xbf\xbf", L"\U0010ffff"},
      {"a byte-order mark", "\xef\xbb\xbf", L"\xfeff"},
      {"a mixture", "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80z", L"a\u00e4\u20ac\U0001f600z"},
      {"a zero", std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(widened(row.narrow), row.wide) << row.name;
    EXPECT_EQ(vfNarrow(row.wide), row.narrow) << row.name;
  }
}

TEST(ConvertStringTest, PutsAReplacementWhereBytesAreBad) {
  const struct {
    std::string name;
    std::string narrow;
    std::wstring wide;
  } rows[] = {
      {"a continuation alone", "\x80", L"\ufffd"},
      {"two continuations alone", "a\xbf\x80z", L"a\ufffd\ufffdz"},
      {"bytes that UTF-8 never uses", "\xfe\xff\xf8", L"\ufffd\ufffd\ufffd"},
      {"an overlong of two bytes", "\xc0\x80", L"\ufffd\ufffd"},
      {"the longest overlong of two bytes", "\xc1\xbf", L"\ufffd\ufffd"},
      {"an overlong of three bytes", "\xe0\x9f\xbf", L"\ufffd\ufffd\ufffd"},
      {"an overlong of four bytes", "\xf0\x8f\xbf\xbf", L"\ufffd\ufffd\ufffd\ufffd"},
      {"the first surrogate", "\xed\xa0\x80", L"\ufffd\ufffd\ufffd"},
      {"the last surrogate", "\xed\xbf\xbf", L"\ufffd\ufffd\ufffd"},
      {"beyond the last character", "\xf4\x90\x80\x80", L"\ufffd\ufffd\ufffd\ufffd"},
      {"a lead byte too large", "\xf5\x80\x80\x80", L"\ufffd\ufffd\ufffd\ufffd"},
      {"two bytes cut short at the end", "\xc3", L"\ufffd"},
      {"three bytes cut short at the end", "a\xe2\x82", L"a\ufffd"},
      {"four bytes cut short at the end", "\xf0\x9f\x98", L"\ufffd"},
      {"two bytes cut short by text", "\xc3z", L"\ufffdz"},
      {"three bytes cut short by text", "\xe2\x82z", L"\ufffdz"},
      {"four bytes cut short by text", "\xf0\x9f\x98z", L"\ufffdz"},
      {"cut short by another lead byte", "\xe2\x82\xc3\xa4", L"\ufffd\u00e4"},
      {"the example of the Unicode standard", "a\xf1\x80\x80\xe1\x80\xc2\x62\x80\x63\x80\xbf\x64",
       L"a\ufffd\ufffd\ufffdb\ufffdc\ufffd\ufffd\x64"},
  };
  for (const auto& row : rows) EXPECT_EQ(widened(row.narrow), row.wide) << row.name;
}

TEST(ConvertStringTest, IgnoresTheLocale) {
  const GroupingLocale locale;
  EXPECT_EQ(widened("\xc3\xa4"), L"\u00e4");
}

TEST(ConvertStringTest, TakesAnyBytes) {
  std::mt19937 random(5);
  for (int round = 0; round < 20000; ++round) {
    std::string bytes(random() % 7, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() & 0xff);
    const std::wstring wide = widened(bytes);
    EXPECT_LE(wide.size(), bytes.size());
    // What was read is well-formed, so it goes to narrow text and back unchanged.
    EXPECT_EQ(widened(vfNarrow(wide)), wide);
  }
}

TEST(NarrowTest, GivesEveryCharacterBack) {
  for (std::uint32_t code = 0; code <= 0x10ffff; ++code) {
    if (code >= 0xd800 && code <= 0xdfff) continue;
    if (sizeof(wchar_t) == 2 && code > 0xffff) break;
    const std::wstring wide(1, static_cast<wchar_t>(code));
    ASSERT_EQ(widened(vfNarrow(wide)), wide) << code;
  }
}

TEST(NarrowTest, PutsAReplacementWhereThereIsNoCharacter) {
  const std::string replacement = "\xef\xbf\xbd";
  EXPECT_EQ(vfNarrow(L"\xd800"), replacement);
  EXPECT_EQ(vfNarrow(L"a\xdfff"), "a" + replacement);
  if (sizeof(wchar_t) == 4) {
    EXPECT_EQ(vfNarrow(std::wstring(1, static_cast<wchar_t>(0x110000))), replacement);
    EXPECT_EQ(vfNarrow(std::wstring(1, static_cast<wchar_t>(-1))), replacement);
    EXPECT_EQ(vfNarrow(L"\xd83d\xde00"), replacement + replacement);
  }
}

}  // namespace
