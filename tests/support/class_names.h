// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_CLASS_NAMES_H_
#define TESTS_SUPPORT_CLASS_NAMES_H_

#include <algorithm>
#include <string>
#include <typeinfo>

#include "vxfoundation/persistent.h"

/// Names the cases of a typed suite for their classes; test names hold no colons.
struct ClassNames {
  template <class T>
  static std::string GetName(int) {
    std::string name = vfClassName(typeid(T));
    name.erase(std::remove(name.begin(), name.end(), ':'), name.end());
    return name;
  }
};

/// Numbers them.
struct CaseNumbers {
  template <class T>
  static std::string GetName(int i) {
    return std::to_string(i);
  }
};

#endif  // TESTS_SUPPORT_CLASS_NAMES_H_
