// SPDX-License-Identifier: MIT
#ifndef TOOLS_LIBRARY_ERROR_H_
#define TOOLS_LIBRARY_ERROR_H_

#include <vxclss/vxclss.h>

#include <string>

#include "tools/error.h"
#include "tools/table.h"

namespace cli {

/// What the library refused, with the category's name where the text ends in its label.
std::string libraryText(const vxClassifierDefs::Errors& error, const Names& names);

/// Gives what `operation` gives. What the library refuses becomes an InputError that begins with
/// `path`.
template <class Operation>
auto explained(const std::string& path, const Names& names, Operation&& operation) {
  try {
    return operation();
  } catch (const vxClassifierDefs::Errors& error) {
    throw InputError(path + ": " + libraryText(error, names));
  }
}

}  // namespace cli

#endif  // TOOLS_LIBRARY_ERROR_H_
