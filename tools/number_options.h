// SPDX-License-Identifier: MIT
#ifndef TOOLS_NUMBER_OPTIONS_H_
#define TOOLS_NUMBER_OPTIONS_H_

#include <functional>
#include <string>

namespace cli {

/// A check for a CLI11 option of text: gives an empty text, or what is wrong. CLI11's own numbers
/// follow the locale and read "010" as 8.
using OptionCheck = std::function<std::string(const std::string&)>;

/// A whole number in [low, 2147483647], as archives hold them.
OptionCheck wholeNumber(long low);

/// A finite number > 0, or >= 0 if `zeroAllowed`.
OptionCheck positiveNumber(bool zeroAllowed);

/// A number in [0, 1].
OptionCheck share();

/// The number of a text that passed the check.
long wholeOf(const std::string& text);
double numberOf(const std::string& text);

}  // namespace cli

#endif  // TOOLS_NUMBER_OPTIONS_H_
