// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_KNN_NEIGHBOUR_LIST_H_
#define CLSS_CLASTOOL_KNN_NEIGHBOUR_LIST_H_

#include <cstddef>
#include <limits>
#include <vector>

/// The k nearest patterns of those met so far, nearest first, in vectors of its user.
///
/// Of equal distances the later pattern ranks nearer, but one that equals the last place of a full
/// list is not admitted. A NaN stops the scan for its place at once, and so does a NaN that is
/// already in the list.
class vx_NeighbourList {
 public:
  /// With as many places as are ever needed: at least 1.
  vx_NeighbourList(std::size_t places, std::vector<long>& indices, std::vector<double>& distances)
      : indices_(indices), distances_(distances) {
    indices_.assign(places, 0);
    distances_.assign(places, std::numeric_limits<double>::infinity());
  }

  void admit(long index, double distance) {
    if (count_ == indices_.size() && distance >= distances_.back()) return;
    std::size_t place = 0;
    while (distance > distances_[place]) ++place;
    if (count_ < indices_.size()) ++count_;
    for (std::size_t last = count_ - 1; last > place; --last) {
      indices_[last] = indices_[last - 1];
      distances_[last] = distances_[last - 1];
    }
    indices_[place] = index;
    distances_[place] = distance;
  }

 private:
  std::vector<long>& indices_;
  std::vector<double>& distances_;
  std::size_t count_ = 0;
};

#endif  // CLSS_CLASTOOL_KNN_NEIGHBOUR_LIST_H_
