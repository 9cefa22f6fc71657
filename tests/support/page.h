// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_PAGE_H_
#define TESTS_SUPPORT_PAGE_H_

#include <string>
#include <vector>

/// A fenced block of a page: what stands behind its opening backticks, and its lines.
struct PageBlock {
  std::string info;
  std::string text;
};

/// Paths are relative to the source tree.
std::string readSource(const std::string& path);
std::vector<PageBlock> pageBlocks(const std::string& path);

/// The text of the one block whose info is `info`.
std::string pageBlock(const std::string& path, const std::string& info);

/// README.md, CHANGELOG.md and every page under docs/.
std::vector<std::string> allPages();

#endif  // TESTS_SUPPORT_PAGE_H_
