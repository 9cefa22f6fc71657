// SPDX-License-Identifier: MIT
#ifndef TOOLS_TEXT_H_
#define TOOLS_TEXT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

/// Without the blanks (spaces and tabs) around it.
std::string_view trimmed(std::string_view text);

/// On one line and safe on a terminal: control characters and what is not UTF-8 become "\x1b".
std::string printable(std::string_view text);

/// Printable, in double quotes, cut after about 40 bytes: how a message shows what it refuses.
std::string shown(std::string_view text);

/// Number of characters of a UTF-8 text.
std::size_t lengthOf(std::string_view text);

bool isUtf8(const std::string& text);
std::wstring widened(const std::string& text);

/// A decimal number, infinity or NaN in any case, whatever the locale; one leading '+' is allowed.
/// Nothing if the text as a whole is none, or is too large for a double. A number too small for
/// one is 0.
std::optional<double> parsedNumber(std::string_view text);

/// The text as a CSV cell, in quotes where it needs them.
std::string csvCell(const std::string& text);

}  // namespace cli

#endif  // TOOLS_TEXT_H_
