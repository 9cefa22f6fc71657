// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_PAIR_H_
#define VXFOUNDATION_PAIR_H_

/// Two values of one type.
template <class T>
struct vxPair {
  vxPair() = default;
  vxPair(const T& firstValue, const T& secondValue) : first(firstValue), second(secondValue) {}

  T first{};
  T second{};
};

#endif  // VXFOUNDATION_PAIR_H_
