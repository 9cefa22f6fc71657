// SPDX-License-Identifier: MIT
#include "fuzz/corpus.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fuzz {

std::vector<std::string> readCorpus(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("no corpus " + path);
  const std::string all{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> inputs;
  const auto byteAt = [&all](std::size_t i) { return static_cast<unsigned char>(all.at(i)); };
  for (std::size_t i = 0; i < all.size();) {
    const std::size_t size = byteAt(i) + std::size_t{256} * byteAt(i + 1);
    i += 2;
    if (size > all.size() - i) throw std::runtime_error("a torn corpus " + path);
    inputs.push_back(all.substr(i, size));
    i += size;
  }
  return inputs;
}

void writeCorpus(const std::string& path, const std::vector<std::string>& inputs) {
  std::string all;
  for (const std::string& input : inputs) {
    if (input.size() > 0xffff) throw std::length_error("an input of more than 65535 bytes");
    all.push_back(static_cast<char>(input.size() & 0xff));
    all.push_back(static_cast<char>(input.size() >> 8));
    all += input;
  }
  std::ofstream file(path, std::ios::binary);
  if (!file.write(all.data(), static_cast<std::streamsize>(all.size())).flush()) {
    throw std::runtime_error("can't write " + path);
  }
}

}  // namespace fuzz
