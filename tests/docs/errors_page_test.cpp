// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/page.h"
#include "vxclss/errors.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/exception.h"
#include "vxfoundation/matrix.h"

namespace {

template <class... Error>
std::set<std::string> rowsOf(const Error&... errors) {
  const auto row = [](const vxException& error) {
    std::ostringstream text;
    text << "| `" << vfClassName(typeid(error)) << "` | 0x" << std::hex << std::setfill('0')
         << std::setw(8) << error.errorNumber() << " |";
    return text.str();
  };
  return {row(errors)...};
}

TEST(ErrorsPageTest, ListsEveryErrorWithItsNumber) {
  const std::set<std::string> expected = rowsOf(
      vxClassifierDefs::BadParams(), vxClassifierDefs::NotTrained(), vxClassifierDefs::BadIndex(),
      vxClassifierDefs::BadLabel(), vxClassifierDefs::BadMethod(),
      vxClassifierDefs::NotImplemented(), vxClassifierDefs::BadFeatures(),
      vxClassifierDefs::InsufficientTrainData(), vxBadPointer(), vxStopRequested(),
      vxStatusException(0), vxBadMatrix(), vxArchive::UnknownVersion(), vxArchive::Malformed(),
      vxArchive::Unstorable(), vxArchive::StreamFailure());

  std::istringstream page(readSource("docs/errors.md"));
  std::set<std::string> listed;
  for (std::string line; std::getline(page, line);) {
    const std::size_t number = line.find("| 0x");
    if (number != std::string::npos) listed.insert(line.substr(0, line.find('|', number + 1) + 1));
  }
  EXPECT_EQ(listed, expected);
}

}  // namespace
