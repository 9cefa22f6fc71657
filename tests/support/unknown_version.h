// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_UNKNOWN_VERSION_H_
#define TESTS_SUPPORT_UNKNOWN_VERSION_H_

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "tests/support/error_matcher.h"
#include "vxfoundation/archive.h"

/// The name that value records give in an UnknownVersion; a line of that unit goes with it.
inline const std::string& recordUnit() {
  static const std::string unit = "clss/clastool/clastool";
  return unit;
}

/// `body()` throws exactly vxArchive::UnknownVersion with this name, and with the number 0 unless
/// the name is a source unit, which has a line.
template <class Body>
void expectUnknownVersion(Body&& body, const std::string& name, CallSite site = CallSite::here()) {
  const testing::ScopedTrace trace(site.file, site.line,
                                   "expecting UnknownVersion of '" + name + "'");
  try {
    body();
  } catch (const vxArchive::UnknownVersion& error) {
    EXPECT_EQ(vfClassName(typeid(error)), vfClassName(typeid(vxArchive::UnknownVersion)));
    EXPECT_EQ(error.name(), name);
    if (name == "clss/clastool/bayes") {
      EXPECT_EQ(error.number(), 262);
    } else if (name == recordUnit()) {
      EXPECT_GT(error.number(), 0);
    } else {
      EXPECT_EQ(error.number(), 0);
    }
    return;
  } catch (const vxArchive::Errors& error) {
    ADD_FAILURE() << "threw " << vfClassName(typeid(error)) << ": "
                  << testing::PrintToString(error.message());
    return;
  }
  ADD_FAILURE() << "threw nothing";
}

#endif  // TESTS_SUPPORT_UNKNOWN_VERSION_H_
