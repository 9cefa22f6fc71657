// SPDX-License-Identifier: MIT
#ifndef TOOLS_FAULT_LIST_H_
#define TOOLS_FAULT_LIST_H_

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace cli {

/// Lines on what is wrong. A few tell what a thousand would, so the others are only counted.
class FaultList {
 public:
  void add(const std::string& fault) {
    ++count_;
    if (first_.size() < kMost) first_.push_back(fault);
  }
  void need(bool condition, const std::string& fault) {
    if (!condition) add(fault);
  }

  bool isEmpty() const { return count_ == 0; }

  std::vector<std::string> texts() const {
    std::vector<std::string> texts = first_;
    if (count_ > kMost) texts.push_back("and " + std::to_string(count_ - kMost) + " more");
    return texts;
  }

 private:
  static constexpr std::size_t kMost = 20;

  std::vector<std::string> first_;
  std::size_t count_ = 0;
};

inline bool isCost(double cost) { return std::isfinite(cost) && cost >= 0.0; }
inline bool isShare(double share) { return share >= 0.0 && share <= 1.0; }

inline bool isIndexOf(const std::vector<std::string>& names, long index) {
  return index >= 0 && index < static_cast<long>(names.size());
}

}  // namespace cli

#endif  // TOOLS_FAULT_LIST_H_
