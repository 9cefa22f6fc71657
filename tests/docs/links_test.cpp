// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "tests/support/page.h"

namespace {

TEST(LinksTest, LeadToFilesThatExist) {
  const std::filesystem::path tree = VXCLSS_SOURCE_TREE;
  const std::regex link(R"(\]\(([A-Za-z0-9_./-]+)(#[a-z0-9-]*)?\))");
  for (const std::string& page : allPages()) {
    const std::string text = readSource(page);
    const std::filesystem::path folder = (tree / page).parent_path();
    for (std::sregex_iterator match(text.begin(), text.end(), link), end; match != end; ++match) {
      EXPECT_TRUE(std::filesystem::exists(folder / (*match)[1].str())) << page << match->str();
    }
  }
}

TEST(LinksTest, LeadToEveryPage) {
  const std::string index = readSource("docs/README.md");
  for (const std::string& page : allPages()) {
    const std::string name = std::filesystem::path(page).filename().string();
    if (page.rfind("docs/", 0) != 0 || name == "README.md") continue;
    EXPECT_NE(index.find("](" + name + ")"), std::string::npos) << page;
  }
}

}  // namespace
