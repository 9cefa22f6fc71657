// SPDX-License-Identifier: MIT
#ifndef TOOLS_JSON_TEXT_H_
#define TOOLS_JSON_TEXT_H_

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace CLI {
class App;
}

namespace cli {

/// What a command tells to programs. Keys keep the order in which they are set.
using Json = nlohmann::ordered_json;

/// Adds --json, which sets `json`.
void addJsonFlag(CLI::App& command, bool& json, const std::string& help);

/// The number; a text, "nan", "inf" or "-inf", where JSON has no number for it. Reading it back
/// gives the same double.
Json jsonNumber(double value);

/// The value on lines of its own, and on one line. Bytes that are not UTF-8 become U+FFFD. Equal
/// values give equal bytes, whatever the locale.
std::string jsonText(const Json& value);
std::string jsonLine(const Json& value);

}  // namespace cli

#endif  // TOOLS_JSON_TEXT_H_
