// SPDX-License-Identifier: MIT
#ifndef TESTS_TOOLS_SCRATCH_H_
#define TESTS_TOOLS_SCRATCH_H_

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "tools/commands.h"
#include "tools/error.h"

/// A directory of its own, removed with the object.
class Scratch {
 public:
  Scratch() {
    std::string name = (std::filesystem::temp_directory_path() / "vxclss-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch directory");
    directory_ = name;
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }

  std::string path(const std::string& name) const { return directory_ + "/" + name; }

  /// Writes a file and gives its path.
  std::string file(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }

  /// Names of everything in the directory, ascending.
  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
      result.push_back(entry.path().filename().string());
    }
    std::sort(result.begin(), result.end());
    return result;
  }

  /// The text with this directory's own path, wherever it stands, cut out.
  std::string withoutPath(std::string text) const {
    const std::string prefix = directory_ + "/";
    for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix)) {
      text.erase(at, prefix.size());
    }
    return text;
  }

 private:
  std::string directory_;
};

/// Lets no file grow beyond some bytes, as a full disk would.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : oldAction_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{bytes, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    signal(SIGXFSZ, oldAction_);
  }

 private:
  rlimit old_ = {};
  void (*oldAction_)(int);
};

inline std::string contentOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// What an operation refused, empty if it did not.
template <class Operation>
std::string refusal(Operation&& operation) {
  try {
    operation();
  } catch (const cli::InputError& error) {
    return error.what();
  }
  return {};
}

struct Outcome {
  int code;
  std::string out;
  std::string err;
};

/// Runs the command line `vxclss arguments...`.
inline Outcome vxclss(const std::vector<std::string>& arguments) {
  std::vector<const char*> argv{"vxclss"};
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  std::ostringstream out;
  std::ostringstream err;
  const int code =
      cli::runCommandLine(static_cast<int>(argv.size()), argv.data(), {out, err, false, false});
  return {code, out.str(), err.str()};
}

#endif  // TESTS_TOOLS_SCRATCH_H_
