// SPDX-License-Identifier: MIT
#ifndef FUZZ_TARGET_H_
#define FUZZ_TARGET_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace fuzz {

using Target = void (*)(const std::uint8_t* data, std::size_t size);

/// Ends the program unless `condition` holds, so that the input is kept as a finding.
inline void demand(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "fuzz: not so: %s\n", what);
  std::abort();
}

/// A piece of an input that an archive took in one transfer.
struct Token {
  std::size_t offset;
  std::size_t size;
};

using Tokenizer = std::vector<Token> (*)(const std::uint8_t* data, std::size_t size);

/// The tokens of an input of the program's own target, for its mutator.
std::vector<Token> tokensOf(const std::uint8_t* data, std::size_t size);

/// The targets of a program that replays many of them.
inline std::map<std::string, Target>& targets() {
  static std::map<std::string, Target> all;
  return all;
}

/// Those of the targets of archives.
inline std::map<std::string, Tokenizer>& tokenizers() {
  static std::map<std::string, Tokenizer> all;
  return all;
}

/// The names of either.
template <class Of>
std::vector<std::string> namesOf(const std::map<std::string, Of>& all) {
  std::vector<std::string> names;
  for (const auto& [name, target] : all) names.push_back(name);
  return names;
}

struct Registration {
  Registration(const char* name, Target target) { targets()[name] = target; }
  Registration(const char* name, Tokenizer tokenizer) { tokenizers()[name] = tokenizer; }
};

}  // namespace fuzz

// What follows VX_FUZZ_TARGET(name) is the body of a target. A fuzzer has one a program, the test
// that replays the corpus has several.
#ifdef VXCLSS_FUZZ_REPLAY
#define VX_FUZZ_TARGET(name)                                                \
  static void name##Target(const std::uint8_t* data, std::size_t size);     \
  static const fuzz::Registration name##Registration(#name, &name##Target); \
  static void name##Target(const std::uint8_t* data, std::size_t size)
#define VX_FUZZ_TOKENS(name, expression)                                                     \
  static std::vector<fuzz::Token> name##Tokens(const std::uint8_t* data, std::size_t size) { \
    return expression;                                                                       \
  }                                                                                          \
  static const fuzz::Registration name##TokensRegistration(#name, &name##Tokens);
#else
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
#define VX_FUZZ_TARGET(name)                                                          \
  static void name##Target(const std::uint8_t* data, std::size_t size);               \
  extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
    name##Target(data, size);                                                         \
    return 0;                                                                         \
  }                                                                                   \
  static void name##Target(const std::uint8_t* data, std::size_t size)
#define VX_FUZZ_TOKENS(name, expression)                                                \
  std::vector<fuzz::Token> fuzz::tokensOf(const std::uint8_t* data, std::size_t size) { \
    return expression;                                                                  \
  }
#endif

/// A target of archived classes: `family` is a fuzz::Family.
#define VX_FUZZ_FAMILY(name, family)                 \
  VX_FUZZ_TOKENS(name, (family::tokens(data, size))) \
  VX_FUZZ_TARGET(name) { family::exercise(data, size); }

#endif  // FUZZ_TARGET_H_
