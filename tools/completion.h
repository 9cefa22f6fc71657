// SPDX-License-Identifier: MIT
#ifndef TOOLS_COMPLETION_H_
#define TOOLS_COMPLETION_H_

#include <CLI/CLI.hpp>
#include <string>

namespace cli {

/// Scripts by which a shell completes commands, options and their values.
std::string bashCompletion(const CLI::App& app);
std::string zshCompletion(const CLI::App& app);

}  // namespace cli

#endif  // TOOLS_COMPLETION_H_
