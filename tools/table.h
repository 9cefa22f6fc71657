// SPDX-License-Identifier: MIT
#ifndef TOOLS_TABLE_H_
#define TOOLS_TABLE_H_

#include <vxclss/vxclss.h>

#include <cstddef>
#include <functional>
#include <istream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/csv.h"

namespace cli {

/// Opens a file for reading. Throws InputError, for a directory too.
std::unique_ptr<std::istream> openInput(const std::string& path);

/// All bytes of a file. Throws InputError.
std::string fileContent(const std::string& path);

/// A CSV file whose first row names its columns, read row by row.
///
/// Blanks around a cell don't count. Names are UTF-8 and differ from each other; every row has as
/// many cells as there are names. All operations throw InputError.
class Table {
 public:
  explicit Table(const std::string& path);

  const std::string& path() const { return path_; }
  const std::vector<std::string>& columns() const { return columns_; }

  /// Index of the column of that name; an error if there is none.
  std::size_t column(const std::string& name) const;

  /// Reads the next row; false at the end.
  bool next();

  /// The line of the file on which the row begins, from 1.
  long row() const { return reader_.row(); }

  /// A cell of the row last read.
  std::string_view cell(std::size_t column) const;

  /// The row's measurements in the order of `columns`. A cell that is empty or "nan" is an invalid
  /// one, which is an error unless `allowInvalid`.
  vxPtrHandle_const<vxFeaturePattern> pattern(const std::vector<std::size_t>& columns,
                                              bool allowInvalid) const;

  /// Throws an error that names file, row and, if there is one, column.
  [[noreturn]] void refuse(const std::string& what) const;
  [[noreturn]] void refuse(std::size_t column, const std::string& what) const;

  /// Bytes read, and bytes in all: 0 if that is unknown.
  double bytesRead() const { return reader_.bytesRead(); }
  double size() const { return size_; }

 private:
  void readHeader_();

  std::string path_;
  std::unique_ptr<std::istream> stream_;
  CsvReader reader_;
  double size_;
  std::vector<std::string> columns_;
  std::vector<std::string> cells_;
};

/// What numbers stand for: measurement i is called measurements[i], label i categories[i].
struct Names {
  std::vector<std::string> measurements;
  std::vector<std::string> categories;
};

/// Labelled patterns.
struct Dataset {
  std::string path;
  Names names;  // categories ascending by their bytes, so that the order of the rows is no matter
  std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
  std::vector<long> labels;  // -1 where the category is unknown
  std::vector<long> rows;    // where each pattern stands in the file

  long numLabelled() const;

  /// The patterns of known category.
  vxClassifierDataProviderMemory labelled() const;
};

/// How to read a Dataset.
struct DatasetColumns {
  std::string label;
  std::vector<std::string> ignored;
};

/// Reads a whole file: every column but the label's and the ignored ones is a measurement, and an
/// empty label is an unknown category. Without `allowInvalid`, a pattern of a known category needs
/// every measurement. Calls `onRow` after each row.
///
/// Throws InputError, also if no row has a category.
Dataset readDataset(const std::string& path, const DatasetColumns& columns, bool allowInvalid,
                    const std::function<void(const Table&)>& onRow);

}  // namespace cli

#endif  // TOOLS_TABLE_H_
