// SPDX-License-Identifier: MIT
#include "tools/model_check.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <istream>
#include <ostream>
#include <streambuf>
#include <string_view>

#include "tools/model_faults.h"
#include "tools/text.h"

namespace cli {
namespace {

constexpr std::array<std::string_view, 3> kClassifiers{"vx_ClassifierKNN", "vx_ClassifierBayesian",
                                                       "vx_ClassifierDecisionTree"};

/// Reads a text in place.
class TextBuffer : public std::streambuf {
 public:
  explicit TextBuffer(const std::string& text) {
    char* const start = const_cast<char*>(text.data());  // which nobody writes to
    setg(start, start, start + text.size());
  }
};

/// Takes bytes for as long as they are those of a text.
class ComparingBuffer : public std::streambuf {
 public:
  explicit ComparingBuffer(std::string_view expected) : left_(expected) {}

  bool isEqual() const { return equal_ && left_.empty(); }

 protected:
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    const std::string_view written(bytes, static_cast<std::size_t>(count));
    equal_ = equal_ && left_.substr(0, written.size()) == written;
    left_.remove_prefix(std::min(left_.size(), written.size()));
    return count;
  }
  int_type overflow(int_type byte) override {
    const char c = traits_type::to_char_type(byte);
    xsputn(&c, 1);
    return traits_type::not_eof(byte);
  }

 private:
  std::string_view left_;
  bool equal_ = true;
};

/// What an archive of a tool begins with: version 0, pointer kind 1, length and letters of a class
/// name. See docs/archive.md.
std::string headOf(std::string_view classifier) {
  std::string head{'\0', '\1', static_cast<char>(classifier.size()), '\0', '\0', '\0'};
  head += classifier;
  return head;
}

/// Whether a file of these bytes may once have been a model file.
bool looksLikeModel(std::string_view bytes) {
  return std::any_of(kClassifiers.begin(), kClassifiers.end(), [&](std::string_view classifier) {
    const std::string head = headOf(classifier);
    // A file that ends within the class name is one cut short; one of a byte or two may be
    // anything.
    const std::size_t compared = std::min(bytes.size(), head.size());
    return compared >= 6 && bytes.substr(1, compared - 1) == head.substr(1, compared - 1);
  });
}

/// The name of a class that stands where that of the classifier does; empty for none.
std::string classNamed(std::string_view bytes) {
  constexpr std::size_t kStart = 6;
  if (bytes.size() < kStart || bytes[1] != 1) return {};
  std::size_t length = 0;
  for (std::size_t i = kStart; i-- > 2;) {
    length = length << 8 | static_cast<unsigned char>(bytes[i]);
  }
  if (length == 0 || length > 1024 || bytes.size() - kStart < length) return {};
  const std::string name(bytes.substr(kStart, length));
  const bool isName = std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == ':' || c == '<' || c == '>' || c == ',' || c == ' ';
  });
  return isName ? name : std::string();
}

bool isWrittenAgain(Model& model, const std::string& bytes) {
  ComparingBuffer buffer(bytes);
  std::ostream stream(&buffer);
  writeModel(model, stream);
  return buffer.isEqual();
}

ModelCheck found(FileState state, const std::string& fault) { return {state, {fault}, {}}; }

ModelCheck notRead(const std::string& bytes, const ModelFileError& error) {
  const std::string reason = printable(error.reason());
  if (looksLikeModel(bytes)) {
    if (error.state() != FileState::kNewer || bytes.size() < 2) return found(error.state(), reason);
    return found(error.state(), reason + "; a newer vxclss wrote it, or it is damaged");
  }
  const std::string name = classNamed(bytes);
  if (name.empty()) return found(FileState::kNotAModel, "it does not begin as one");
  return found(FileState::kNewer,
               fmt::format("its classifier is a {}, which is not known here; a newer vxclss or a "
                           "host wrote it, or it is damaged",
                           shown(name)));
}

}  // namespace

ModelCheck checkModel(const std::string& bytes) {
  if (bytes.empty()) return found(FileState::kNotAModel, "it is empty");
  ModelCheck check;
  try {
    TextBuffer buffer(bytes);
    std::istream stream(&buffer);
    check.model = readModel(stream, "");
  } catch (const ModelFileError& error) {
    return notRead(bytes, error);
  }
  check.faults = modelFaults(*check.model);
  if (!isWrittenAgain(*check.model, bytes)) {
    check.faults.emplace_back("written again, it would have other bytes");
  }
  if (!check.faults.empty()) check.state = FileState::kDamaged;
  return check;
}

}  // namespace cli
