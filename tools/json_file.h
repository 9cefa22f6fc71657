// SPDX-License-Identifier: MIT
#ifndef TOOLS_JSON_FILE_H_
#define TOOLS_JSON_FILE_H_

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// A value in a JSON file, which knows where it stands. What it is asked for and isn't, it refuses
/// with an InputError that names file and place, as in "tree.json: /tree/if: ...".
///
/// Refers to the file's content; the JsonFile must outlive it.
class JsonValue {
 public:
  JsonValue(const nlohmann::json& value, const std::string& file, std::string path);

  bool isText() const;
  bool isArray() const;

  std::string text() const;
  double number() const;
  std::vector<JsonValue> elements() const;

  /// A text without the blanks around it, which is not empty.
  std::string name() const;

  /// A list of at least one name; none stands there twice.
  std::vector<std::string> names() const;

  /// Position of this name in `all`; `kind` says what they are: "measurement", "category".
  long positionIn(const std::vector<std::string>& all, const std::string& kind) const;

  /// False for what is no object, too.
  bool has(const char* key) const;
  JsonValue member(const std::string& key) const;
  std::vector<std::string> keys() const;

  /// Refuses an object with another key, and what is no object.
  void allowOnly(std::initializer_list<const char*> keys) const;

  [[noreturn]] void refuse(const std::string& what) const;

 private:
  void need_(bool condition, const char* what) const;

  const nlohmann::json* value_;
  const std::string* file_;
  std::string path_;  // a JSON pointer, RFC 6901
};

/// The content of a JSON file (RFC 8259), in which no object has a key twice.
class JsonFile {
 public:
  /// Throws InputError.
  explicit JsonFile(const std::string& path);

  JsonValue root() const;

 private:
  std::string path_;
  std::shared_ptr<const nlohmann::json> root_;
};

}  // namespace cli

#endif  // TOOLS_JSON_FILE_H_
