// SPDX-License-Identifier: MIT
#ifndef TOOLS_MANUAL_H_
#define TOOLS_MANUAL_H_

#include <CLI/CLI.hpp>
#include <string>

namespace cli {

/// The manual page vxclss(1), in the macros of man(7). `version` is what --version prints.
std::string manualPage(const CLI::App& app, const std::string& version);

}  // namespace cli

#endif  // TOOLS_MANUAL_H_
