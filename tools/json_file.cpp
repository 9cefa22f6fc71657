// SPDX-License-Identifier: MIT
#include "tools/json_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "tools/error.h"
#include "tools/name_options.h"
#include "tools/stop.h"
#include "tools/table.h"
#include "tools/text.h"

namespace cli {
namespace {

using nlohmann::json;

constexpr std::size_t kLongestPath = 200;

std::string stepTo(std::string_view key) {
  std::string step = "/";
  for (const char c : key) {
    if (c == '~') {
      step += "~0";
    } else if (c == '/') {
      step += "~1";
    } else {
      step += c;
    }
  }
  return step;
}

/// A path of a thousand steps says no more than its ends do.
std::string shortened(const std::string& path) {
  if (path.size() <= kLongestPath) return path;
  const std::size_t head = path.rfind('/', kLongestPath / 2);
  const std::size_t tail = path.find('/', path.size() - kLongestPath / 2);
  if (head == std::string::npos || tail == std::string::npos) return path;
  return path.substr(0, head) + "/..." + path.substr(tail);
}

[[noreturn]] void refuseAt(const std::string& file, const std::string& path,
                           const std::string& what) {
  throw InputError(
      fmt::format("{}: {}{}{}", file, shortened(path), path.empty() ? "" : ": ", what));
}

/// Follows the parser, which would let the last of two equal keys win.
class KeyWatch {
 public:
  explicit KeyWatch(std::string file) : file_(std::move(file)) {}

  bool operator()(json::parse_event_t event, const json& parsed) {
    throwIfStopped();
    switch (event) {
      case json::parse_event_t::object_start:
      case json::parse_event_t::array_start:
        beginValue_();
        levels_.push_back({event == json::parse_event_t::array_start, {}, {}, 0});
        break;
      case json::parse_event_t::object_end:
      case json::parse_event_t::array_end:
        levels_.pop_back();
        break;
      case json::parse_event_t::key:
        levels_.back().key = parsed.get_ref<const std::string&>();
        if (!levels_.back().keys.insert(levels_.back().key).second) {
          refuseAt(file_, path_(), "stands there twice");
        }
        break;
      case json::parse_event_t::value:
        beginValue_();
        break;
    }
    return true;
  }

 private:
  struct Level {
    bool isArray;
    std::set<std::string> keys;
    std::string key;
    std::size_t count;  // of the elements begun
  };

  void beginValue_() {
    if (!levels_.empty()) ++levels_.back().count;
  }

  std::string path_() const {
    std::string path;
    for (const Level& level : levels_) {
      path += level.isArray ? fmt::format("/{}", level.count - 1) : stepTo(level.key);
    }
    return path;
  }

  std::string file_;
  std::vector<Level> levels_;
};

}  // namespace

JsonValue::JsonValue(const json& value, const std::string& file, std::string path)
    : value_(&value), file_(&file), path_(std::move(path)) {}

bool JsonValue::isText() const { return value_->is_string(); }
bool JsonValue::isArray() const { return value_->is_array(); }

std::string JsonValue::text() const {
  need_(isText(), "a text");
  return value_->get<std::string>();
}

double JsonValue::number() const {
  need_(value_->is_number(), "a number");
  const auto number = value_->get<double>();
  need_(std::isfinite(number), "a finite number");
  return number;
}

std::vector<JsonValue> JsonValue::elements() const {
  need_(isArray(), "a list");
  std::vector<JsonValue> elements;
  for (std::size_t i = 0; i < value_->size(); ++i) {
    elements.emplace_back((*value_)[i], *file_, fmt::format("{}/{}", path_, i));
  }
  return elements;
}

std::string JsonValue::name() const {
  std::string name(trimmed(text()));
  if (name.empty()) refuse("an empty name");
  return name;
}

std::vector<std::string> JsonValue::names() const {
  std::vector<std::string> names;
  std::set<std::string> known;
  for (const JsonValue& element : elements()) {
    names.push_back(element.name());
    if (!known.insert(names.back()).second) element.refuse(shown(names.back()) + " a second time");
  }
  if (names.empty()) refuse("an empty list");
  return names;
}

long JsonValue::positionIn(const std::vector<std::string>& all, const std::string& kind) const {
  const long position = positionOf(all, text());
  if (position < 0) {
    refuse(fmt::format("no {} {}; there are: {}", kind, shown(text()), fmt::join(all, ", ")));
  }
  return position;
}

bool JsonValue::has(const char* key) const { return value_->is_object() && value_->contains(key); }

JsonValue JsonValue::member(const std::string& key) const {
  need_(value_->is_object(), "an object");
  const auto found = value_->find(key);
  if (found == value_->end()) refuse(fmt::format("no {}", shown(key)));
  return JsonValue(*found, *file_, path_ + stepTo(key));
}

std::vector<std::string> JsonValue::keys() const {
  need_(value_->is_object(), "an object");
  std::vector<std::string> keys;
  for (const auto& [key, value] : value_->items()) keys.push_back(key);
  return keys;
}

void JsonValue::allowOnly(std::initializer_list<const char*> allowed) const {
  for (const std::string& key : keys()) {
    if (std::find(allowed.begin(), allowed.end(), key) != allowed.end()) continue;
    refuse(fmt::format("unknown key {}; there are: {}", shown(key), fmt::join(allowed, ", ")));
  }
}

void JsonValue::refuse(const std::string& what) const { refuseAt(*file_, path_, what); }

void JsonValue::need_(bool condition, const char* what) const {
  if (!condition) refuse(fmt::format("not {}", what));
}

JsonFile::JsonFile(const std::string& path) : path_(path) {
  const auto stream = openInput(path);
  KeyWatch watch(path);
  try {
    root_ = std::make_shared<const json>(
        json::parse(*stream, [&watch](int /*depth*/, json::parse_event_t event, json& parsed) {
          return watch(event, parsed);
        }));
  } catch (const json::exception& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: ..."
    const std::string text = error.what();
    throw InputError(path + ": " + text.substr(text.find(' ') + 1));
  }
}

JsonValue JsonFile::root() const { return JsonValue(*root_, path_, ""); }

}  // namespace cli
