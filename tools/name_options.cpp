// SPDX-License-Identifier: MIT
#include "tools/name_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

#include "tools/error.h"
#include "tools/text.h"

namespace cli {
namespace {

using Lists = std::vector<std::vector<long>>;

[[noreturn]] void refuse(const std::string& option, const std::string& text,
                         const std::string& what) {
  throw InputError(fmt::format("{}: {} {}", option, shown(text), what));
}

/// Reads a text as one column.
Lists oneColumn(const Names& names, std::string_view text) {
  const long position = positionOf(names.measurements, text);
  return position < 0 ? Lists{} : Lists{{position}};
}

/// Reads a text as columns with commas between them: two readings at most, found from the end, so
/// that the time stays quadratic in the number of commas.
Lists columnLists(const Names& names, std::string_view text) {
  std::vector<std::size_t> starts{0};
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ',') starts.push_back(i + 1);
  }
  starts.push_back(text.size() + 1);
  std::vector<Lists> from(starts.size());  // reversed lists of what begins at each start
  from.back() = {{}};
  for (std::size_t first = starts.size() - 1; first-- > 0;) {
    for (std::size_t next = first + 1; next < starts.size() && from[first].size() < 2; ++next) {
      if (from[next].empty()) continue;
      const std::size_t length = starts[next] - starts[first] - 1;
      const long position = positionOf(names.measurements, text.substr(starts[first], length));
      if (position < 0) continue;
      for (std::vector<long> list : from[next]) {
        list.push_back(position);
        from[first].push_back(list);
      }
    }
  }
  for (std::vector<long>& list : from[0]) std::reverse(list.begin(), list.end());
  return from[0];
}

/// The only reading of "[CATEGORY:]..."; `form` shows what it should look like.
Selection onlyReading(const std::string& option, const std::string& text, const Names& names,
                      std::string_view selection, const std::string& form,
                      const std::function<Lists(const Names&, std::string_view)>& read) {
  std::vector<Selection> readings;
  for (const std::vector<long>& list : read(names, selection)) readings.push_back({-1, list});
  for (std::size_t colon = selection.find(':'); colon != std::string_view::npos;
       colon = selection.find(':', colon + 1)) {
    const long category = positionOf(names.categories, selection.substr(0, colon));
    if (category < 0) continue;
    for (const std::vector<long>& list : read(names, selection.substr(colon + 1))) {
      readings.push_back({category, list});
    }
  }
  if (readings.empty()) {
    refuse(option, text,
           fmt::format("does not name {} of the data; columns: {}; categories: {}", form,
                       fmt::join(names.measurements, ", "), fmt::join(names.categories, ", ")));
  }
  if (readings.size() > 1) refuse(option, text, "can be read in more than one way");
  return readings[0];
}

}  // namespace

Assignment assignment(const std::string& option, const std::string& text, const std::string& form,
                      const OptionCheck& check) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos) refuse(option, text, "is not " + form);
  const std::string_view whole = text;
  const Assignment result{whole.substr(0, equals), std::string(trimmed(whole.substr(equals + 1)))};
  const std::string wrong = check(result.value);
  if (!wrong.empty()) throw InputError(option + ": " + wrong);
  return result;
}

long positionOf(const std::vector<std::string>& names, std::string_view name) {
  const auto found = std::find(names.begin(), names.end(), trimmed(name));
  return found == names.end() ? -1 : static_cast<long>(found - names.begin());
}

long labelNamed(const std::string& option, const std::string& text, const Names& names,
                std::string_view category, const std::string& owner) {
  const long label = positionOf(names.categories, category);
  if (label < 0) {
    refuse(option, text,
           fmt::format("does not name a category of the {}: {}", owner,
                       fmt::join(names.categories, ", ")));
  }
  return label;
}

std::pair<long, long> labelPair(const std::string& option, const std::string& text,
                                const Names& names, std::string_view pair,
                                const std::string& owner) {
  std::vector<std::pair<long, long>> readings;
  for (std::size_t comma = pair.find(','); comma != std::string_view::npos;
       comma = pair.find(',', comma + 1)) {
    const long first = positionOf(names.categories, pair.substr(0, comma));
    const long second = positionOf(names.categories, pair.substr(comma + 1));
    if (first >= 0 && second >= 0) readings.emplace_back(first, second);
  }
  if (readings.size() != 1) {
    refuse(option, text,
           fmt::format("does not name two categories of the {}: {}", owner,
                       fmt::join(names.categories, ", ")));
  }
  if (readings[0].first == readings[0].second) {
    refuse(option, text, "names one category twice; a correct decision is free");
  }
  return readings[0];
}

Selection selectedColumn(const std::string& option, const std::string& text, const Names& names,
                         std::string_view selection) {
  return onlyReading(option, text, names, selection, "[CATEGORY:]COLUMN", oneColumn);
}

Selection selectedColumns(const std::string& option, const std::string& text, const Names& names) {
  return onlyReading(option, text, names, text, "[CATEGORY:]COLUMN,COLUMN,...", columnLists);
}

}  // namespace cli
