// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <iostream>

#include "tools/commands.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  return cli::runCommandLine(
      argc, argv, {std::cout, std::cerr, isatty(STDOUT_FILENO) == 1, isatty(STDERR_FILENO) == 1});
}
