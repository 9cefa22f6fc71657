// SPDX-License-Identifier: MIT
#include "tests/support/page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

const std::filesystem::path kTree = VXCLSS_SOURCE_TREE;

}  // namespace

std::string readSource(const std::string& path) {
  const std::ifstream file(kTree / path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<PageBlock> pageBlocks(const std::string& path) {
  std::vector<PageBlock> blocks;
  std::istringstream page(readSource(path));
  bool inside = false;
  for (std::string line; std::getline(page, line);) {
    const std::size_t fence = line.find("```");
    if (fence != std::string::npos && fence == line.find_first_not_of(' ')) {
      inside = !inside;
      if (inside) blocks.push_back({line.substr(fence + 3), ""});
    } else if (inside) {
      blocks.back().text += line + "\n";
    }
  }
  EXPECT_FALSE(inside) << path << ": a block is left open";
  return blocks;
}

std::string pageBlock(const std::string& path, const std::string& info) {
  std::vector<std::string> found;
  for (const PageBlock& block : pageBlocks(path)) {
    if (block.info == info) found.push_back(block.text);
  }
  EXPECT_EQ(found.size(), 1u) << path << ": blocks named " << info;
  return found.empty() ? "" : found.front();
}

std::vector<std::string> allPages() {
  std::vector<std::string> pages = {"README.md", "CHANGELOG.md"};
  for (const auto& entry : std::filesystem::directory_iterator(kTree / "docs")) {
    if (entry.path().extension() == ".md") {
      pages.push_back("docs/" + entry.path().filename().string());
    }
  }
  std::sort(pages.begin(), pages.end());
  return pages;
}
