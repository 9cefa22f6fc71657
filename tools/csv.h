// SPDX-License-Identifier: MIT
#ifndef TOOLS_CSV_H_
#define TOOLS_CSV_H_

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

namespace cli {

/// Reads comma-separated values row by row, holding one row at a time.
///
/// The format is that of RFC 4180: a cell in double quotes may hold commas, line breaks and doubled
/// quotes; lines end with LF or CRLF, the last one perhaps with neither. A UTF-8 byte-order mark in
/// front is skipped, and so is every line without a character. Blanks belong to their cell.
///
/// What is ambiguous is refused: a quote inside a cell that did not begin with one, text after a
/// closing quote, a quote never closed, a carriage return on its own, a NUL byte, a row of more
/// than kMaximumRow bytes.
class CsvReader {
 public:
  static constexpr std::size_t kMaximumRow = std::size_t{1} << 22;

  /// `name` stands for the stream in messages; the stream must outlive the reader.
  CsvReader(std::istream& stream, std::string name);

  /// Reads the next row; false at the end. Throws InputError.
  bool next(std::vector<std::string>& cells);

  /// The line of the file on which the row last read begins, from 1.
  long row() const { return row_; }

  /// Bytes taken from the stream so far.
  double bytesRead() const { return bytesRead_; }

 private:
  int peek_();
  int take_();
  void skipMark_();
  bool endOfLine_();  // takes a line end, if one is next
  void readCell_(std::string& cell);
  void readQuoted_(std::string& cell);
  void append_(std::string& cell, int byte);
  void count_();
  [[noreturn]] void refuse_(const std::string& what) const;

  std::istream& stream_;
  std::string name_;
  std::string buffer_;
  std::size_t position_ = 0;
  double bytesRead_ = 0.0;
  long line_ = 1;
  long row_ = 0;
  std::size_t rowBytes_ = 0;
  std::size_t column_ = 0;
};

}  // namespace cli

#endif  // TOOLS_CSV_H_
