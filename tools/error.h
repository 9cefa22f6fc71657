// SPDX-License-Identifier: MIT
#ifndef TOOLS_ERROR_H_
#define TOOLS_ERROR_H_

#include <stdexcept>

namespace cli {

/// Bad input or bad usage, told in one line that names file, row and column where there are any.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace cli

#endif  // TOOLS_ERROR_H_
