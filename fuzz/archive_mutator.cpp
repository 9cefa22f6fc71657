// SPDX-License-Identifier: MIT
// Mutates archives where they have joints. Loading an input tells where each field of it lies, as
// far as the load came; the edits then change class names, counts, references and numbers as
// fields, and cut and splice between them. A third of all mutations stay the fuzzer's own.

#include "fuzz/archive_mutator.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "fuzz/target.h"
#include "vxfoundation/persistent.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using fuzz::Token;

// How an object by pointer begins.
enum Kind : std::uint8_t { kNull = 0, kNewClass = 1, kKnownClass = 2, kReference = 3 };

Bytes wordBytes(std::uint32_t word) {
  return {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8),
          static_cast<std::uint8_t>(word >> 16), static_cast<std::uint8_t>(word >> 24)};
}

Bytes numberBytes(double number) {
  Bytes bytes(sizeof(number));
  std::memcpy(bytes.data(), &number, sizeof(number));
  return bytes;
}

/// The joints of inputs, remembered because a load costs as much as a run: a fuzzer changes each
/// input of its corpus many times over, and what it has just changed several times.
class Joints {
 public:
  std::vector<Token> of(const std::uint8_t* data, std::size_t size) {
    if (std::equal(last_.begin(), last_.end(), data, data + size)) return lastTokens_;
    static constexpr std::size_t kMostInputs = 4096;
    if (known_.size() >= kMostInputs) known_.clear();
    const auto [entry, isNew] =
        known_.try_emplace(std::string(reinterpret_cast<const char*>(data), size));
    if (isNew) entry->second = fuzz::tokensOf(data, size);
    return entry->second;
  }

  /// What became of an input, with the joints that are left of it.
  void keepLast(const Bytes& bytes, const std::vector<Token>& tokens) {
    last_ = bytes;
    lastTokens_ = tokens;
  }

 private:
  std::unordered_map<std::string, std::vector<Token>> known_;
  Bytes last_;
  std::vector<Token> lastTokens_;
};

Joints& joints() {
  static Joints all;
  return all;
}

/// An input under change, with its joints.
class Draft {
 public:
  Draft(const std::uint8_t* data, std::size_t size, std::minstd_rand& random)
      : random_(random), bytes_(data, data + size), tokens_(joints().of(data, size)) {}

  const Bytes& bytes() const { return bytes_; }
  const std::vector<Token>& tokens() const { return tokens_; }
  bool hasTokens() const { return !tokens_.empty(); }

  void change() {
    using Edit = void (Draft::*)();
    static constexpr Edit kEdits[] = {
        &Draft::changeWord_,    &Draft::changeWord_,    &Draft::changeNumber_,
        &Draft::changeNumber_,  &Draft::changePointer_, &Draft::changePointer_,
        &Draft::changeByte_,    &Draft::insertPointer_, &Draft::copyRange_,
        &Draft::copyRange_,     &Draft::eraseRange_,    &Draft::repeatElement_,
        &Draft::repeatElement_, &Draft::changeHead_};
    (this->*kEdits[below(std::size(kEdits))])();
  }

  /// A piece between two joints.
  Bytes range() {
    const std::size_t begin = below(tokens_.size());
    const std::size_t end = begin + 1 + below(std::min<std::size_t>(tokens_.size() - begin, 24));
    return piece_(begin, end);
  }
  void insert(const Bytes& piece) { replace_(joint_(), 0, piece); }

  std::size_t below(std::size_t end) { return random_() % end; }

 private:
  std::size_t endOf_(std::size_t token) const {
    return tokens_[token].offset + tokens_[token].size;
  }
  std::size_t joint_() { return tokens_[below(tokens_.size())].offset; }
  Bytes piece_(std::size_t begin, std::size_t end) const {
    return {bytes_.begin() + static_cast<long>(tokens_[begin].offset),
            bytes_.begin() + static_cast<long>(endOf_(end - 1))};
  }

  // Joints behind the place move with what they begin, those in it go. They are guesses then, which
  // is enough to change the input once more.
  void replace_(std::size_t offset, std::size_t size, const Bytes& piece) {
    const auto at = bytes_.begin() + static_cast<long>(offset);
    if (piece.size() == size) {
      std::copy(piece.begin(), piece.end(), at);
      return;
    }
    bytes_.insert(bytes_.erase(at, at + static_cast<long>(size)), piece.begin(), piece.end());
    std::vector<Token> moved;
    moved.reserve(tokens_.size() + 1);
    for (Token token : tokens_) {
      if (token.offset >= offset + size) {
        token.offset += piece.size() - size;
      } else if (token.offset + token.size > offset) {
        continue;
      }
      moved.push_back(token);
    }
    if (!piece.empty()) {
      const auto next = std::find_if(moved.begin(), moved.end(), [offset](const Token& token) {
        return token.offset >= offset;
      });
      moved.insert(next, {offset, piece.size()});
    }
    tokens_ = std::move(moved);
  }

  /// A token for which `fits(i)`, the last ones more often; their number if there is none.
  template <class Fits>
  std::size_t find_(Fits fits) {
    std::size_t start = below(tokens_.size());
    if (below(4) == 0) start = tokens_.size() - 1 - below(std::min<std::size_t>(tokens_.size(), 8));
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      const std::size_t token = (start + i) % tokens_.size();
      if (fits(token)) return token;
    }
    return tokens_.size();
  }
  bool isSized_(std::size_t i, std::size_t size) const {
    return i < tokens_.size() && tokens_[i].size == size;
  }
  std::uint8_t byteAt_(std::size_t token) const { return bytes_[tokens_[token].offset]; }
  std::uint32_t wordAt_(std::size_t token) const {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i > 0; --i) word = word << 8 | bytes_[tokens_[token].offset + i - 1];
    return word;
  }

  // Whether an object by pointer may begin with the token.
  bool isPointer_(std::size_t i) const {
    return isSized_(i, 1) && byteAt_(i) <= kReference &&
           (byteAt_(i) == kNull || isSized_(i + 1, 4));
  }
  std::size_t pointerHeadSize_(std::size_t i) const {
    if (byteAt_(i) == kNull) return 1;
    const std::size_t name = byteAt_(i) == kNewClass ? wordAt_(i + 1) : 0;
    return 5 + (isSized_(i + 2, name) ? name : 0);
  }

  Bytes pointerHead_() {
    Bytes head{static_cast<std::uint8_t>(below(5))};
    if (head[0] > kReference) head[0] = kKnownClass;
    if (head[0] == kNewClass) {
      static const std::vector<std::string> names = vx_Instantiator::registeredNames();
      const std::string& name = names[below(names.size())];
      const Bytes size = wordBytes(static_cast<std::uint32_t>(name.size()));
      head.insert(head.end(), size.begin(), size.end());
      head.insert(head.end(), name.begin(), name.end());
    } else if (head[0] != kNull) {
      const Bytes number = wordBytes(static_cast<std::uint32_t>(below(8)));
      head.insert(head.end(), number.begin(), number.end());
    }
    return head;
  }

  void changePointer_() {
    const std::size_t i = find_([this](std::size_t token) { return isPointer_(token); });
    if (i == tokens_.size()) return;
    replace_(tokens_[i].offset, pointerHeadSize_(i), pointerHead_());
  }
  void insertPointer_() { replace_(joint_(), 0, pointerHead_()); }

  void changeWord_() {
    const std::size_t i = find_([this](std::size_t token) { return isSized_(token, 4); });
    if (i == tokens_.size()) return;
    const std::uint32_t word = wordAt_(i);
    const std::uint32_t words[] = {0,          1,          2,
                                   3,          word + 1,   word - 1,
                                   word * 2,   word ^ 1,   0xffffffffu,
                                   0x7fffffff, 0x80000000, static_cast<std::uint32_t>(below(300))};
    replace_(tokens_[i].offset, 4, wordBytes(words[below(std::size(words))]));
  }

  void changeNumber_() {
    const std::size_t i = find_([this](std::size_t token) {
      return tokens_[token].size >= 8 && tokens_[token].size % 8 == 0;
    });
    if (i == tokens_.size()) return;
    using Limits = std::numeric_limits<double>;
    static constexpr double kNumbers[] = {0.0,
                                          -0.0,
                                          1.0,
                                          -1.0,
                                          0.5,
                                          2.0,
                                          1e-300,
                                          1e308,
                                          -1e308,
                                          1e9,
                                          Limits::infinity(),
                                          -Limits::infinity(),
                                          Limits::quiet_NaN(),
                                          Limits::denorm_min(),
                                          Limits::epsilon()};
    const std::size_t offset = tokens_[i].offset + 8 * below(tokens_[i].size / 8);
    Bytes number = numberBytes(kNumbers[below(std::size(kNumbers))]);
    if (below(3) == 0) {
      double old;
      std::memcpy(&old, &bytes_[offset], sizeof(old));
      const double numbers[] = {-old, 1.0 / old, old + 1.0, old * 1e3};
      number = numberBytes(numbers[below(std::size(numbers))]);
    }
    replace_(offset, 8, number);
  }

  void changeByte_() {
    const std::size_t i = find_([this](std::size_t token) { return isSized_(token, 1); });
    if (i < tokens_.size()) bytes_[tokens_[i].offset] = static_cast<std::uint8_t>(below(5));
  }

  void copyRange_() { insert(range()); }

  void eraseRange_() {
    const std::size_t begin = below(tokens_.size());
    const std::size_t end = begin + 1 + below(std::min<std::size_t>(tokens_.size() - begin, 12));
    replace_(tokens_[begin].offset, endOf_(end - 1) - tokens_[begin].offset, {});
  }

  // One element more, and a count that says so.
  void repeatElement_() {
    const std::size_t count = find_([this](std::size_t token) {
      return token > 0 && isSized_(token - 1, 1) && isSized_(token, 4) &&
             token + 1 < tokens_.size();
    });
    if (count == tokens_.size()) return;
    const std::size_t first = count + 1;
    const std::size_t end = std::min(tokens_.size(), first + 1 + below(8));
    const Bytes element = piece_(first, end);
    const auto times = static_cast<std::uint32_t>(1 + (below(4) == 0 ? below(20) : 0));
    for (std::uint32_t i = 0; i < times; ++i) replace_(tokens_[first].offset, 0, element);
    replace_(tokens_[count].offset, 4, wordBytes(wordAt_(count) + times));
  }

  void changeHead_() { bytes_[0] = static_cast<std::uint8_t>(bytes_[0] ^ (1u << below(8))); }

  std::minstd_rand& random_;
  Bytes bytes_;
  std::vector<Token> tokens_;
};

std::size_t give(const Draft& draft, std::uint8_t* out, std::size_t maxSize) {
  const Bytes& bytes = draft.bytes();
  const std::size_t size = std::min(bytes.size(), maxSize);
  std::copy_n(bytes.begin(), size, out);
  if (size == bytes.size()) joints().keepLast(bytes, draft.tokens());
  return size;
}

}  // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned seed) {
  std::minstd_rand random(seed);
  random.discard(3);  // equal seeds differ little in the first
  if (random() % 3 == 0) return LLVMFuzzerMutate(data, size, maxSize);
  Draft draft(data, size, random);
  for (std::size_t edits = 1 + draft.below(2); edits > 0; --edits) {
    if (!draft.hasTokens()) return LLVMFuzzerMutate(data, size, maxSize);
    draft.change();
  }
  return give(draft, data, maxSize);
}

std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t firstSize,
                                      const std::uint8_t* second, std::size_t secondSize,
                                      std::uint8_t* out, std::size_t maxSize, unsigned seed) {
  std::minstd_rand random(seed);
  random.discard(3);
  Draft draft(first, firstSize, random);
  Draft other(second, secondSize, random);
  if (!draft.hasTokens() || !other.hasTokens()) return 0;
  draft.insert(other.range());
  return give(draft, out, maxSize);
}
