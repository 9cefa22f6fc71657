// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_FIGURES_H_
#define TESTS_SUPPORT_FIGURES_H_

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

/// Puts a figure that a test reached into its report and on the screen.
inline void showFigure(const std::string& what, long long figure) {
  testing::Test::RecordProperty(what, std::to_string(figure));
  std::cout << "[  FIGURE  ] " << what << ": " << figure << '\n';
}

/// Whether the environment asks for the long forms.
inline bool isLongForm() {
  const char* form = std::getenv("VXCLSS_RELIABILITY");
  return form != nullptr && std::string(form) == "long";
}

#endif  // TESTS_SUPPORT_FIGURES_H_
