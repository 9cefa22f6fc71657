// SPDX-License-Identifier: MIT
#include "vxfoundation/matrix.h"

#include <utility>

#include "error_numbers.h"
#include "vxfoundation/archive.h"

namespace {

bool isPossibleSize(long rows, long columns) {
  if (rows < 0 || columns < 0) return false;
  const std::size_t most = std::vector<double>().max_size();
  return columns == 0 || static_cast<std::size_t>(rows) <= most / static_cast<std::size_t>(columns);
}

std::size_t numElements(long rows, long columns) {
  if (!isPossibleSize(rows, columns)) {
    throw vxBadMatrix(L"A matrix size must be >= 0 and must not overflow");
  }
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
}

}  // namespace

vxBadMatrix::vxBadMatrix(const std::wstring& message) : vxExceptionWithString(message) {}
long vxBadMatrix::errorNumber() const { return vx_ErrorNumbers::kBadMatrix; }
void vxBadMatrix::suicideAndRethrow() { vx_suicideAndRethrow(this); }

vxNMMatrix::vxNMMatrix(long rows, long columns)
    : rows_(rows), columns_(columns), elements_(numElements(rows, columns)) {}

vxNMMatrix::vxNMMatrix(vxNMMatrix&& other) noexcept { swap_(other); }

vxNMMatrix& vxNMMatrix::operator=(const vxNMMatrix& other) { return *this = vxNMMatrix(other); }

vxNMMatrix& vxNMMatrix::operator=(vxNMMatrix&& other) noexcept {
  vxNMMatrix(std::move(other)).swap_(*this);
  return *this;
}

bool vxNMMatrix::operator==(const vxNMMatrix& other) const {
  return rows_ == other.rows_ && columns_ == other.columns_ && elements_ == other.elements_;
}

void vxNMMatrix::swap_(vxNMMatrix& other) noexcept {
  std::swap(rows_, other.rows_);
  std::swap(columns_, other.columns_);
  elements_.swap(other.elements_);
}

std::size_t vxNMMatrix::index_(long row, long column) const {
  if (row < 0 || row >= rows_ || column < 0 || column >= columns_) {
    throw vxBadMatrix(L"A matrix index must be >= 0 and less than the number of rows or columns");
  }
  return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
         static_cast<std::size_t>(column);
}

vxArchive& operator||(vxArchive& archive, vxNMMatrix& matrix) {
  vx_Transfer transfer(archive);
  vfTransferStaged(archive, matrix, [&archive](vxNMMatrix& target) {
    archive || target.rows_ || target.columns_;
    if (!isPossibleSize(target.rows_, target.columns_)) {
      throw vxArchive::Malformed(L"A matrix of an impossible size");
    }
    vfTransferElements(archive, target.elements_, numElements(target.rows_, target.columns_));
  });
  transfer.complete();
  return archive;
}
