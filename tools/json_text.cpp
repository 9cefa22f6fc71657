// SPDX-License-Identifier: MIT
#include "tools/json_text.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <nlohmann/json.hpp>

namespace cli {
namespace {

std::string dumped(const Json& value, int indent) {
  return value.dump(indent, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace

void addJsonFlag(CLI::App& command, bool& json, const std::string& help) {
  command.add_flag("--json", json, help);
}

Json jsonNumber(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0.0 ? "inf" : "-inf";
  return value;
}

std::string jsonText(const Json& value) { return dumped(value, 2); }

std::string jsonLine(const Json& value) { return dumped(value, -1); }

}  // namespace cli
