// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_MAKE_ROOM_H_
#define CLSS_CLASTOOL_CLASTOOL_MAKE_ROOM_H_

#include <vector>

/// Makes room for one more element in each of several parallel vectors, so that appending to all
/// of them can't fail half-way.
template <class... T>
void vx_makeRoom(std::vector<T>&... vectors) {
  const auto grow = [](auto& vector) {
    if (vector.size() == vector.capacity()) vector.reserve(2 * vector.size() + 1);
  };
  (grow(vectors), ...);
}

#endif  // CLSS_CLASTOOL_CLASTOOL_MAKE_ROOM_H_
