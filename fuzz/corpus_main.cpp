// SPDX-License-Identifier: MIT
// What the fuzzers start from: unpacks and packs the committed corpus, and makes seeds and the
// dictionary of class names.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/corpus.h"
#include "fuzz/seeds.h"
#include "vxfoundation/persistent.h"

namespace {

namespace fs = std::filesystem;

std::string read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void writeAll(const fs::path& directory, const std::string& stem,
              const std::vector<std::string>& inputs) {
  fs::create_directories(directory);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    write(directory / (stem + std::to_string(i)), inputs[i]);
  }
}

/// Short ones first, and the same file whatever order the directory has.
void pack(const fs::path& directory, const std::string& corpus) {
  std::vector<std::string> inputs;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.is_regular_file()) inputs.push_back(read(entry.path()));
  }
  std::sort(inputs.begin(), inputs.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  fuzz::writeCorpus(corpus, inputs);
  std::cout << corpus << ": " << inputs.size() << " inputs, " << fs::file_size(corpus)
            << " bytes\n";
}

std::string escaped(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    if (value > 0x20 && value < 0x7f && byte != '"' && byte != '\\') {
      text += byte;
    } else {
      text += "\\x";
      text += "0123456789abcdef"[value >> 4];
      text += "0123456789abcdef"[value & 15];
    }
  }
  return text;
}

/// A class as an archive names it, and what begins an object otherwise.
void dictionary(std::ostream& out) {
  for (const std::string& name : vx_Instantiator::registeredNames()) {
    const std::string size(1, static_cast<char>(name.size()));
    out << '"' << escaped("\x01" + size + std::string(3, '\0') + name) << "\"\n";
  }
  for (char kind = 2; kind <= 3; ++kind) {
    for (char number = 0; number < 4; ++number) {
      out << '"' << escaped(std::string{kind, number, 0, 0, 0}) << "\"\n";
    }
  }
}

int usage() {
  std::cerr << "usage: vxclss_fuzz_corpus unpack CORPUS DIRECTORY\n"
               "       vxclss_fuzz_corpus pack DIRECTORY CORPUS\n"
               "       vxclss_fuzz_corpus seeds TARGET DIRECTORY\n"
               "       vxclss_fuzz_corpus dictionary\n";
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  try {
    if (arguments == std::vector<std::string>{"dictionary"}) {
      dictionary(std::cout);
    } else if (arguments.size() == 3 && arguments[0] == "unpack") {
      writeAll(arguments[2], fs::path(arguments[1]).filename().string() + '-',
               fuzz::readCorpus(arguments[1]));
    } else if (arguments.size() == 3 && arguments[0] == "pack") {
      pack(arguments[1], arguments[2]);
    } else if (arguments.size() == 3 && arguments[0] == "seeds") {
      writeAll(arguments[2], "seed-", fuzz::seedsOf(arguments[1]));
    } else {
      return usage();
    }
  } catch (const std::exception& error) {
    std::cerr << "vxclss_fuzz_corpus: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
