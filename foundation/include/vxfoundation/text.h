// SPDX-License-Identifier: MIT
#ifndef VXFOUNDATION_TEXT_H_
#define VXFOUNDATION_TEXT_H_

#include <string>

#include "vxfoundation/export.h"

/// Decimal text of a number, whatever the locale.
VXFOUNDATION_EXPORT std::wstring vfStr(long value);

/// Narrow text (UTF-8) to wide text. Each ill-formed sequence becomes one U+FFFD, cut as Unicode
/// recommends (a truncated sequence is one, every stray byte is one of its own).
VXFOUNDATION_EXPORT void vfConvertString(std::wstring& out, const std::string& in);

/// Wide text to UTF-8; what is not a character becomes U+FFFD.
VXFOUNDATION_EXPORT std::string vfNarrow(const std::wstring& text);

#endif  // VXFOUNDATION_TEXT_H_
