// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_LABEL_PLACES_H_
#define CLSS_CLASTOOL_CLASTOOL_LABEL_PLACES_H_

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class vxClassifierCategoryResult;

/// Where each label stands among the categories of a result.
///
/// A few categories are searched one by one. Labels of many mostly lie close together and index a
/// table; where they don't, they are sorted.
class vx_LabelPlaces {
 public:
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
  static constexpr std::size_t kFew = 16;

  /// Looks at `count` categories, which outlive this or the next call, and says whether their
  /// labels differ. Until it was true, nothing is to be found.
  bool assign(const vxClassifierCategoryResult* categories, std::size_t count);

  /// To be called once between assign() and find().
  void prepare();
  /// The place of the category of this label, or kNowhere.
  std::size_t find(long label) const {
    return (bits_ & bitOf_(label)) != 0 ? search_(label) : kNowhere;
  }

 private:
  static std::uint64_t bitOf_(long label) {
    return std::uint64_t{1} << (static_cast<unsigned long>(label) % 64);
  }

  std::size_t search_(long label) const;
  bool isAscending_() const;
  bool differPairwise_() const;
  /// False where two labels are equal.
  bool fillTable_();
  bool fillSorted_();

  const vxClassifierCategoryResult* categories_ = nullptr;
  std::size_t count_ = 0;
  bool isPrepared_ = false;
  std::uint64_t bits_ = 0;  // of a few, one for each label
  long smallest_ = 0;
  std::vector<std::size_t> table_;  // by label - smallest_, or empty
  std::vector<std::pair<long, std::size_t>> sorted_;
};

#endif  // CLSS_CLASTOOL_CLASTOOL_LABEL_PLACES_H_
