// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/support/archive_helpers.h"
#include "tests/support/page.h"
#include "vxclss/data_provider.h"
#include "vxclss/feature_pattern.h"

namespace {

constexpr const char* kPage = "docs/archive.md";

/// The bytes of the page's block: on each line an offset, up to eight bytes, and their meaning.
std::string bytesOnPage() {
  constexpr std::size_t kBytesAt = 5;
  constexpr std::size_t kMeaningAt = 30;
  std::istringstream lines(pageBlock(kPage, "text bytes"));
  std::string bytes;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_EQ(static_cast<std::size_t>(std::stoul(line)), bytes.size()) << line;
    bytes += fromHex(line.substr(kBytesAt, kMeaningAt - kBytesAt));
  }
  return bytes;
}

vxPtrHandle<vxClassifierDataProviderMemory> providerOnPage() {
  const vxPtrHandle_const<vxFeaturePattern> nut(new vxFeaturePattern({6.5, 3.0}, {}));
  const vxPtrHandle_const<vxFeaturePattern> dirt(new vxFeaturePattern({-1.0, 0.0}, {1}));
  vxPtrHandle<vxClassifierDataProviderMemory> provider(new vxClassifierDataProviderMemory);
  provider->setName(L"nuts");
  provider->data({nut, dirt, nut}, {2, -1, 4});
  return provider;
}

TEST(ArchivePageTest, ShowsWhatTheLibraryWrites) {
  vxPtrHandle<vxClassifierDataProviderMemory> provider = providerOnPage();
  EXPECT_EQ(toHex(bytesOnPage()), storedHex(provider));
}

TEST(ArchivePageTest, ShowsBytesThatLoad) {
  vxPtrHandle<vxClassifierDataProviderMemory> provider;
  load(bytesOnPage(), provider);
  ASSERT_FALSE(provider.isNull());
  EXPECT_EQ(*provider, *providerOnPage());
  EXPECT_EQ(provider->featurePattern(0), provider->featurePattern(2));
}

TEST(ArchivePageTest, NamesEveryRegisteredClass) {
  const std::string page = readSource(kPage) + readSource("docs/errors.md");
  for (const std::string& name : vx_Instantiator::registeredNames()) {
    if (name.rfind("vx", 0) != 0) continue;  // a test's own class
    EXPECT_NE(page.find('`' + name + '`'), std::string::npos) << name;
  }
}

}  // namespace
