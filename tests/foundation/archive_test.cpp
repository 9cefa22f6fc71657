// SPDX-License-Identifier: MIT
#include "vxfoundation/archive.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "tests/support/archived_samples.h"

namespace {

template <class T, class = void>
constexpr bool kHasTransfer = false;
template <class T>
constexpr bool
    kHasTransfer<T, std::void_t<decltype(std::declval<vxArchive&>() || std::declval<T>())>> = true;

struct Unarchived {};

// The built-in || would take anything that converts to bool and write nothing.
static_assert(!std::is_convertible_v<vxArchive&, bool> &&
              !std::is_constructible_v<bool, vxArchive&>);
static_assert(!std::is_constructible_v<bool, vxInputArchive&>);
static_assert(!std::is_constructible_v<bool, vxOutputArchive&>);
static_assert(!kHasTransfer<int&> && !kHasTransfer<unsigned int&> && !kHasTransfer<short&>);
static_assert(!kHasTransfer<long long&> && !kHasTransfer<unsigned long long&>);
static_assert(!kHasTransfer<bool&> && !kHasTransfer<char&> && !kHasTransfer<float&>);
static_assert(!kHasTransfer<long> && !kHasTransfer<double> && !kHasTransfer<const long&>);
static_assert(!kHasTransfer<long*&> && !kHasTransfer<const char*> && !kHasTransfer<std::string&>);
static_assert(!kHasTransfer<vxPersistent*&> && !kHasTransfer<Unarchived&>);
static_assert(kHasTransfer<unsigned char&> && kHasTransfer<long&> && kHasTransfer<unsigned long&>);
static_assert(kHasTransfer<double&> && kHasTransfer<std::wstring&>);
static_assert(kHasTransfer<std::vector<bool>&> && kHasTransfer<vxNMMatrix&>);
static_assert(kHasTransfer<vxRange&> && kHasTransfer<vxPersistent&>);
static_assert(kHasTransfer<samples::Node&> && kHasTransfer<vxPtrHandle<samples::Node>&>);
static_assert(kHasTransfer<vxPtrHandle_const<samples::Node>&>);
static_assert(
    std::is_same_v<decltype(std::declval<vxArchive&>() || std::declval<long&>()), vxArchive&>);
static_assert(!std::is_copy_constructible_v<vxOutputArchive> &&
              !std::is_copy_assignable_v<vxInputArchive>);

TEST(ArchiveTest, TellsItsDirection) {
  std::stringstream stream;
  const vxOutputArchive output(stream);
  const vxInputArchive input(stream);
  EXPECT_TRUE(output.isStoring());
  EXPECT_FALSE(output.isLoading());
  EXPECT_FALSE(input.isStoring());
  EXPECT_TRUE(input.isLoading());
  EXPECT_EQ(stream.str(), "") << "nothing stands before the first transfer";
}

TEST(ArchiveTest, WritesOneByteForAnUnsignedChar) {
  EXPECT_EQ(storedHex<unsigned char>(0), "00");
  EXPECT_EQ(storedHex<unsigned char>(0xa5), "a5");
  EXPECT_EQ(loaded<unsigned char>("\xff"), 0xff);
}

TEST(ArchiveTest, WritesFourBytesForALong) {
  const struct {
    long value;
    const char* bytes;
  } rows[] = {{0, "00000000"},          {1, "01000000"},          {-1, "ffffffff"},
              {0x12345678, "78563412"}, {2147483647, "ffffff7f"}, {-2147483647 - 1, "00000080"}};
  for (const auto& row : rows) {
    EXPECT_EQ(storedHex(long{row.value}), row.bytes);
    EXPECT_EQ(loaded<long>(fromHex(row.bytes)), row.value);
  }
}

TEST(ArchiveTest, WritesFourBytesForAnUnsignedLong) {
  const std::pair<unsigned long, const char*> rows[] = {
      {0, "00000000"}, {0x80000000, "00000080"}, {0xfffffffe, "feffffff"}};
  for (const auto& [value, bytes] : rows) {
    unsigned long copy = value;
    EXPECT_EQ(storedHex(copy), bytes);
    EXPECT_EQ(loaded<unsigned long>(fromHex(bytes)), value);
  }
}

TEST(ArchiveTest, RefusesANumberThatDoesNotFit32BitsAndWritesNothing) {
  if (sizeof(long) == 4) GTEST_SKIP() << "every long fits";
  const auto tooLarge = static_cast<long>(0x80000000LL);
  for (long value : {tooLarge, -tooLarge - 1, std::numeric_limits<long>::min()}) {
    const long before = value;
    std::ostringstream stream;
    vxOutputArchive archive(stream);
    EXPECT_THROW(archive || value, vxArchive::Unstorable) << value;
    EXPECT_EQ(value, before);
    EXPECT_EQ(stream.str(), "");
  }
  unsigned long word = 0xffffffff;
  EXPECT_EQ(storedHex(word), "ffffffff");
  ++word;
  EXPECT_THROW(stored(word), vxArchive::Unstorable);
}

TEST(ArchiveTest, WritesEightBytesForADouble) {
  const std::pair<double, const char*> rows[] = {
      {0.0, "0000000000000000"},
      {-0.0, "0000000000000080"},
      {1.0, "000000000000f03f"},
      {0x1.23456789abcdep+5, "debc9a7856344240"},
      {std::numeric_limits<double>::infinity(), "000000000000f07f"},
      {std::numeric_limits<double>::denorm_min(), "0100000000000000"}};
  for (const auto& [value, bytes] : rows) {
    double copy = value;
    EXPECT_EQ(storedHex(copy), bytes);
    copy = loaded<double>(fromHex(bytes));
    EXPECT_EQ(copy, value);
    EXPECT_EQ(std::signbit(copy), std::signbit(value));
  }
}

TEST(ArchiveTest, KeepsEveryBitOfANaN) {
  // Quiet and signalling ones, both signs, with payloads.
  for (const char* bytes : {"000000000000f87f", "000000000000f8ff", "efbeadde0000f87f",
                            "010000000000f07f", "010000000000f0ff", "ffffffffffffffff"}) {
    // In place: where a double is returned in an x87 register, a signalling one turns quiet.
    double value = 0.0;
    load(fromHex(bytes), value);
    EXPECT_EQ(storedHex(value), bytes);
    const std::string vector = std::string("0001000000") + bytes;
    EXPECT_EQ(storedHex(loaded<std::vector<double>>(fromHex(vector))), vector);
  }
}

TEST(ArchiveTest, WritesAWideStringAsCountAndFourBytesACharacter) {
  EXPECT_EQ(storedHex(std::wstring()), "00000000");
  const std::wstring text(L"a\0\u20ac", 3);
  std::wstring copy = text;
  EXPECT_EQ(storedHex(copy), packedHex("03000000 61000000 00000000 ac200000"));
  EXPECT_EQ(loaded<std::wstring>(stored(copy)), text);
  if (sizeof(wchar_t) == 4) {
    copy = L"\U0001f600";
    EXPECT_EQ(storedHex(copy), packedHex("01000000 00f60100"));
    EXPECT_EQ(loaded<std::wstring>(fromHex("01000000 ffffffff"))[0], static_cast<wchar_t>(-1));
  }
}

TEST(ArchiveTest, WritesAVectorAsVersionCountAndElements) {
  EXPECT_EQ(storedHex(std::vector<double>()), packedHex("00 00000000"));
  std::vector<double> reals = {1.0, -2.0};
  EXPECT_EQ(storedHex(reals), packedHex("00 02000000 000000000000f03f 00000000000000c0"));
  std::vector<long> numbers = {-1, 2};
  EXPECT_EQ(storedHex(numbers), packedHex("00 02000000 ffffffff 02000000"));
  std::vector<std::vector<long>> nested = {{}, {7}};
  EXPECT_EQ(storedHex(nested), packedHex("00 02000000 00 00000000 00 01000000 07000000"));
  std::vector<unsigned char> bytes = {1, 2, 3};
  EXPECT_EQ(storedHex(bytes), packedHex("00 03000000 010203"));
}

TEST(ArchiveTest, WritesOneByteForEachFlagOfABoolVector) {
  std::vector<bool> flags = {true, false, true};
  EXPECT_EQ(storedHex(flags), packedHex("00 03000000 01 00 01"));
  EXPECT_EQ(loaded<std::vector<bool>>(stored(flags)), flags);
  EXPECT_EQ(storedHex(std::vector<bool>()), packedHex("00 00000000"));
}

TEST(ArchiveTest, ReplacesWhatAVectorHeld) {
  std::vector<long> numbers = {1, 2, 3};
  load(fromHex("00 01000000 09000000"), numbers);
  EXPECT_EQ(numbers, std::vector<long>{9});
  std::vector<bool> flags(100, true);
  load(fromHex("00 01000000 00"), flags);
  EXPECT_EQ(flags, std::vector<bool>{false});
  std::vector<double> reals(100, 1.0);
  load(fromHex("00 00000000"), reals);
  EXPECT_TRUE(reals.empty());
}

TEST(ArchiveTest, RefusesAnotherVersionOfAVectorWithoutAClassName) {
  const std::string bytes = fromHex("01 00000000");
  const auto check = [&bytes](auto vector) {
    const auto before = vector;
    try {
      load(bytes, vector);
      ADD_FAILURE();
    } catch (const vxArchive::UnknownVersion& error) {
      EXPECT_EQ(error.name(), "");
      EXPECT_EQ(error.number(), 0);
    }
    EXPECT_EQ(vector, before);
  };
  check(std::vector<bool>{true});
  check(std::vector<double>{1.0});
  check(std::vector<long>{1});
  check(std::vector<std::wstring>{L"a"});
}

TEST(ArchiveTest, CarriesVectorsLargerThanAnyBuffer) {
  std::vector<double> reals(50001);
  for (std::size_t i = 0; i < reals.size(); ++i) reals[i] = static_cast<double>(i) * 0.1;
  EXPECT_EQ(loaded<std::vector<double>>(stored(reals)), reals);
  std::vector<bool> flags(100003);
  for (std::size_t i = 0; i < flags.size(); i += 3) flags[i] = true;
  EXPECT_EQ(loaded<std::vector<bool>>(stored(flags)), flags);
  std::wstring text(70001, L'x');
  text.back() = L'y';
  EXPECT_EQ(loaded<std::wstring>(stored(text)), text);
}

TEST(ArchiveTest, LeavesItsTargetAsItWasWhenALoadFails) {
  unsigned char byte = 7;
  long number = 7;
  unsigned long word = 7;
  double real = 7.0;
  std::wstring text = L"seven";
  std::vector<std::wstring> texts = {L"seven"};
  EXPECT_THROW(load("", byte), vxArchive::Malformed);
  EXPECT_THROW(load("abc", number), vxArchive::Malformed);
  EXPECT_THROW(load("abc", word), vxArchive::Malformed);
  EXPECT_THROW(load("abcdefg", real), vxArchive::Malformed);
  EXPECT_THROW(load(fromHex("02000000 61000000 610000"), text), vxArchive::Malformed);
  EXPECT_THROW(load(fromHex("00 02000000 00000000 01000000"), texts), vxArchive::Malformed);
  EXPECT_EQ(byte, 7);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(word, 7u);
  EXPECT_EQ(real, 7.0);
  EXPECT_EQ(text, L"seven");
  EXPECT_EQ(texts, std::vector<std::wstring>{L"seven"});
}

TEST(ArchiveTest, ChainsTransfersInOrder) {
  std::ostringstream out;
  vxOutputArchive output(out);
  unsigned char byte = 1;
  long number = 2;
  vxArchive& archive = output;
  EXPECT_EQ(&(archive || byte || number || byte), &archive);
  EXPECT_EQ(toHex(out.str()), packedHex("01 02000000 01"));
}

TEST(ArchiveTest, TransfersAnObjectInPlaceWithoutItsClassName) {
  samples::Node node(5);
  // Version, label, no next one.
  EXPECT_EQ(storedHex(node), packedHex("00 05000000 00"));
  EXPECT_EQ(storedHex(node, node), packedHex("00 05000000 00  00 05000000 00"));
  samples::Node target(9, samples::Node::list(1));
  load(stored(node), target);
  EXPECT_EQ(target.label(), 5);
  EXPECT_TRUE(target.next().isNull());
}

TEST(ArchiveTest, BringsEveryFieldBack) {
  const vxPtrHandle<samples::Everything> source = samples::Everything::filled();
  samples::Everything target;
  load(stored(*source), target);
  EXPECT_EQ(target.byte, source->byte);
  EXPECT_EQ(target.number, source->number);
  EXPECT_EQ(target.word, source->word);
  EXPECT_EQ(target.real, source->real);
  EXPECT_EQ(target.text, source->text);
  EXPECT_EQ(target.flags, source->flags);
  EXPECT_EQ(target.reals, source->reals);
  EXPECT_EQ(target.texts, source->texts);
  EXPECT_TRUE(target.matrix == source->matrix);
  EXPECT_TRUE(target.range == source->range);
  EXPECT_EQ(target.inPlace.label(), 6);
  EXPECT_EQ(target.constant->label(), 7);
  ASSERT_EQ(target.nodes.size(), 4u);
  EXPECT_TRUE(target.nodes[0] == target.constant && target.nodes[3] == target.constant);
  EXPECT_TRUE(target.nodes[1].isNull());
  EXPECT_TRUE(target.nodes[2]->next() == target.constant);
  EXPECT_EQ(target.diamond->bottom, 4);
  EXPECT_EQ(storedHex(target), storedHex(*source));
}

}  // namespace
