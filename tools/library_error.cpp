// SPDX-License-Identifier: MIT
#include "tools/library_error.h"

#include <vxfoundation/vxfoundation.h>

#include <charconv>

#include "tools/text.h"

namespace cli {

std::string libraryText(const vxClassifierDefs::Errors& error, const Names& names) {
  std::string text = vfNarrow(error.message());
  const std::string before = " for category ";
  const std::size_t at = text.rfind(before);
  if (at == std::string::npos) return text;
  std::size_t label = 0;
  const char* const end = text.data() + text.size();
  const auto [last, wrong] = std::from_chars(text.data() + at + before.size(), end, label);
  if (wrong != std::errc() || last != end || label >= names.categories.size()) return text;
  return text.substr(0, at + before.size()) + shown(names.categories[label]);
}

}  // namespace cli
