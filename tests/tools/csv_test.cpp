// SPDX-License-Identifier: MIT
#include "tools/csv.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/scratch.h"
#include "tools/error.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

struct Read {
  Rows rows;
  std::vector<long> lines;
};

Read read(const std::string& text) {
  std::istringstream stream(text);
  cli::CsvReader reader(stream, "f.csv");
  Read result;
  std::vector<std::string> cells;
  while (reader.next(cells)) {
    result.rows.push_back(cells);
    result.lines.push_back(reader.row());
  }
  return result;
}

TEST(CsvReaderTest, ReadsWhatRfc4180Describes) {
  const struct {
    const char* name;
    std::string text;
    Rows rows;
    std::vector<long> lines;
  } table[] = {
      {"nothing", "", {}, {}},
      {"one row", "a,b\n", {{"a", "b"}}, {1}},
      {"no line end", "a,b", {{"a", "b"}}, {1}},
      {"CRLF", "a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}, {1, 2}},
      {"mixed line ends", "a\r\nb\nc", {{"a"}, {"b"}, {"c"}}, {1, 2, 3}},
      {"empty cells", ",,\n", {{"", "", ""}}, {1}},
      {"a comma at the end", "a,", {{"a", ""}}, {1}},
      {"blank lines", "\n\r\na\n\n\nb\n\n", {{"a"}, {"b"}}, {3, 6}},
      {"only blank lines", "\n\n\r\n", {}, {}},
      {"a quoted empty cell is a row", "\"\"\n", {{""}}, {1}},
      {"blanks belong to the cell", " a , b\n", {{" a ", " b"}}, {1}},
      {"comma in quotes", "\"a,b\",c\n", {{"a,b", "c"}}, {1}},
      {"doubled quotes", "\"a\"\"b\"\"\",\"\"\"\"\n", {{"a\"b\"", "\""}}, {1}},
      {"line breaks in quotes", "\"a\nb\r\nc\",d\ne,f", {{"a\nb\r\nc", "d"}, {"e", "f"}}, {1, 4}},
      {"a quoted cell at the very end", "a,\"b\"", {{"a", "b"}}, {1}},
      {"rows of different lengths", "a\nb,c\n,d,\n", {{"a"}, {"b", "c"}, {"", "d", ""}}, {1, 2, 3}},
      {"byte-order mark",
       "\xEF\xBB\xBF"
       "a,b\n",
       {{"a", "b"}},
       {1}},
      {"byte-order mark before a quote", "\xEF\xBB\xBF\"a\"\n", {{"a"}}, {1}},
      {"nothing but a byte-order mark", "\xEF\xBB\xBF", {}, {}},
      {"a first character that begins like the mark",
       "\xEF\xBC\xA1,b\n",
       {{"\xEF\xBC\xA1", "b"}},
       {1}},
      {"a mark in the middle is text", "a,\xEF\xBB\xBF\n", {{"a", "\xEF\xBB\xBF"}}, {1}},
      {"bytes above 127", "\xC3\xA4\xFF\n", {{"\xC3\xA4\xFF"}}, {1}},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.name);
    const Read got = read(row.text);
    EXPECT_EQ(got.rows, row.rows);
    EXPECT_EQ(got.lines, row.lines);
  }
}

TEST(CsvReaderTest, RefusesWhatIsAmbiguous) {
  const struct {
    const char* name;
    std::string text;
    const char* refusal;
  } table[] = {
      {"a lone quote", "a\n\"\n", "f.csv, row 2: cell 1: a quote that is never closed"},
      {"never closed", "a,b\nc,\"d\ne\n", "f.csv, row 2: cell 2: a quote that is never closed"},
      {"doubled at the end", "\"a\"\"", "f.csv, row 1: cell 1: a quote that is never closed"},
      {"a quote inside", "a,b\"c\n",
       "f.csv, row 1: cell 2: a quote inside a cell that does not begin with one"},
      {"a blank before a quote", "a, \"b\"\n",
       "f.csv, row 1: cell 2: a quote inside a cell that does not begin with one"},
      {"text after a quote", "\"a\"b\n", "f.csv, row 1: cell 1: text after the closing quote"},
      {"a blank after a quote", "\"a\" ,b\n", "f.csv, row 1: cell 1: text after the closing quote"},
      {"carriage return alone", "a\nb\rc\n", "f.csv, row 2: a carriage return without a line feed"},
      {"carriage return at the end", "a\r", "f.csv, row 1: a carriage return without a line feed"},
      {"NUL", std::string("a,b\0c\n", 6), "f.csv, row 1: cell 2: a NUL byte"},
      {"NUL in quotes", std::string("\"\0\"\n", 4), "f.csv, row 1: cell 1: a NUL byte"},
      {"UTF-16",
       std::string("\xFF\xFE"
                   "a\0",
                   4),
       "f.csv, row 1: cell 1: a NUL byte"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(refusal([&] { read(row.text); }), row.refusal);
  }
}

TEST(CsvReaderTest, ReadsACellOfAMegabyte) {
  const std::string large(1 << 20, 'x');
  EXPECT_EQ(read(large + ",\"" + large + "\"\ny\n").rows, (Rows{{large, large}, {"y"}}));
}

TEST(CsvReaderTest, BoundsTheLengthOfARow) {
  const std::string longest(cli::CsvReader::kMaximumRow - 1, 'x');
  EXPECT_EQ(read(longest + "\na\n").rows.size(), 2u);
  const std::string refused = "f.csv, row 2: more than 4194304 bytes";
  EXPECT_EQ(refusal([&] { read("a\n" + longest + "x\n"); }), refused);
  EXPECT_EQ(refusal([&] { read("a\n\"" + longest + "x"); }), refused);
  EXPECT_EQ(refusal([&] { read("a\n" + std::string(longest.size() + 1, ',')); }), refused);
}

TEST(CsvReaderTest, KeepsItsPlaceAcrossBuffers) {
  std::string text;
  Rows rows;
  for (int i = 0; i < 20000; ++i) {
    const std::string number = std::to_string(i);
    text += number + ",\"" + number + "\n\"\"\"\r\n";
    rows.push_back({number, number + "\n\""});
  }
  const Read got = read(text);
  EXPECT_EQ(got.rows, rows);
  EXPECT_EQ(got.lines.back(), 2 * 19999 + 1);
}

TEST(CsvReaderTest, CountsTheBytesThatItTook) {
  std::istringstream stream(
      "\xEF\xBB\xBF"
      "a,b\nc,d\n");
  cli::CsvReader reader(stream, "f.csv");
  std::vector<std::string> cells;
  while (reader.next(cells)) {
  }
  EXPECT_EQ(reader.bytesRead(), 11.0);
}

}  // namespace
