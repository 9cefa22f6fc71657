// SPDX-License-Identifier: MIT
//
// libcsv is no help here: it drops blank lines and counts none, so no message could name a row, and
// of a misplaced quote it tells only that there is one.
#include "tools/csv.h"

#include <fmt/format.h>

#include <cstdio>
#include <utility>

#include "tools/error.h"

namespace cli {

CsvReader::CsvReader(std::istream& stream, std::string name)
    : stream_(stream), name_(std::move(name)) {
  skipMark_();
}

bool CsvReader::next(std::vector<std::string>& cells) {
  while (endOfLine_()) {
  }
  if (peek_() == EOF) return false;
  row_ = line_;
  rowBytes_ = 0;
  column_ = 0;
  do {
    count_();
    if (column_ == cells.size()) cells.emplace_back();
    std::string& cell = cells[column_++];
    cell.clear();
    readCell_(cell);
  } while (peek_() == ',' && take_() == ',');
  cells.resize(column_);
  endOfLine_();
  return true;
}

int CsvReader::peek_() {
  if (position_ == buffer_.size()) {
    position_ = 0;
    buffer_.clear();
    // What is there already, so that rows from a pipe are answered as they come.
    if (stream_.peek() != std::istream::traits_type::eof()) {
      buffer_.resize(std::size_t{1} << 16);
      const auto size = static_cast<std::streamsize>(buffer_.size());
      buffer_.resize(static_cast<std::size_t>(stream_.readsome(buffer_.data(), size)));
    }
    if (stream_.bad()) throw InputError(name_ + ": cannot be read");
    if (buffer_.empty()) return EOF;
    bytesRead_ += static_cast<double>(buffer_.size());
  }
  return static_cast<unsigned char>(buffer_[position_]);
}

int CsvReader::take_() {
  const int byte = peek_();
  if (byte == EOF) return EOF;
  ++position_;
  if (byte == '\n') ++line_;
  return byte;
}

void CsvReader::skipMark_() {
  buffer_.resize(3);
  stream_.read(buffer_.data(), 3);
  buffer_.resize(static_cast<std::size_t>(stream_.gcount()));
  stream_.clear(stream_.rdstate() & std::ios::badbit);
  bytesRead_ = static_cast<double>(buffer_.size());
  if (buffer_ == "\xEF\xBB\xBF") buffer_.clear();
}

bool CsvReader::endOfLine_() {
  if (peek_() == '\r') {
    take_();
    if (peek_() != '\n') {
      row_ = line_;
      refuse_("a carriage return without a line feed");
    }
  }
  if (peek_() != '\n') return false;
  take_();
  return true;
}

void CsvReader::readCell_(std::string& cell) {
  if (peek_() == '"') {
    readQuoted_(cell);
    const int byte = peek_();
    if (byte != ',' && byte != '\n' && byte != '\r' && byte != EOF) {
      refuse_(fmt::format("cell {}: text after the closing quote", column_));
    }
    return;
  }
  for (int byte = peek_(); byte != ',' && byte != '\n' && byte != '\r' && byte != EOF;
       byte = peek_()) {
    if (byte == '"') {
      refuse_(fmt::format("cell {}: a quote inside a cell that does not begin with one", column_));
    }
    append_(cell, take_());
  }
}

void CsvReader::readQuoted_(std::string& cell) {
  take_();
  for (int byte = take_(); byte != EOF; byte = take_()) {
    if (byte == '"') {
      if (peek_() != '"') return;
      take_();
    }
    append_(cell, byte);
  }
  refuse_(fmt::format("cell {}: a quote that is never closed", column_));
}

void CsvReader::append_(std::string& cell, int byte) {
  if (byte == 0) refuse_(fmt::format("cell {}: a NUL byte", column_));
  count_();
  cell.push_back(static_cast<char>(byte));
}

void CsvReader::count_() {
  if (++rowBytes_ > kMaximumRow) refuse_(fmt::format("more than {} bytes", kMaximumRow));
}

void CsvReader::refuse_(const std::string& what) const {
  throw InputError(fmt::format("{}, row {}: {}", name_, row_, what));
}

}  // namespace cli
