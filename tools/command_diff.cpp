// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/exit_code.h"
#include "tools/json_text.h"
#include "tools/library_error.h"
#include "tools/model_diff.h"
#include "tools/model_file.h"
#include "tools/table.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kDiffExamples = R"(
Examples:
  vxclss diff old.model new.model
  vxclss diff old.model new.model --json
  vxclss diff old.model new.model > /dev/null || echo "the model has changed"

Tells where two models differ: technique, names, parameters, and all that they have learnt. A line
names the place, then what A holds and what B holds; "nothing" stands where only the other has the
place. Models that differ in no line decide alike.

Exit codes: 0 equal, 1 different, 2 a file can't be read or is no model, or any other failure.)";

constexpr std::size_t kShownBytes = 60;

struct Side {
  std::string bytes;
  Model model;
};

Side readSide(const std::string& path) {
  Side side;
  side.bytes = fileContent(path);
  std::istringstream stream(side.bytes);
  side.model = readModel(stream, path);
  return side;
}

std::string valueText(const std::optional<Json>& value) {
  if (!value) return "nothing";
  if (value->is_string()) return printable(value->get_ref<const std::string&>());
  std::string text = value->dump(-1, ' ', false, Json::error_handler_t::replace);
  if (text.size() > kShownBytes) {
    std::size_t end = kShownBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    text = text.substr(0, end) + "...";
  }
  return text;
}

class DiffCommand {
 public:
  DiffCommand(CLI::App& command, const Console& console) : console_(console) {
    command.add_option("A.model", pathA_, "Model file, as train and tree write it")
        ->type_name("")
        ->required();
    command.add_option("B.model", pathB_, "Model file to compare it with")
        ->type_name("")
        ->required();
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kDiffExamples);
  }

  /// Gives the exit code.
  int run() const {
    const Side a = readSide(pathA_);
    const Side b = readSide(pathB_);
    const std::vector<JsonDifference> differences =
        explained(pathA_ + " and " + pathB_, a.model.names,
                  [&] { return modelDifferences(a.model, b.model); });
    const bool sameBytes = a.bytes == b.bytes;
    if (json_) {
      console_.out << jsonText(outcome_(differences, sameBytes));
    } else {
      printText_(differences, sameBytes);
    }
    return differences.empty() ? kExitDone : kExitDifferent;
  }

 private:
  void printText_(const std::vector<JsonDifference>& differences, bool sameBytes) const {
    const std::string both = printable(pathA_) + " and " + printable(pathB_);
    if (differences.empty()) {
      console_.out << both
                   << (sameBytes ? " are equal\n" : " are equal, though not byte for byte\n");
      return;
    }
    console_.out << both << " differ\n";
    for (const JsonDifference& difference : differences) {
      std::string path;
      for (const std::string& step : difference.path) {
        path += (path.empty() ? "" : " / ") + printable(step);
      }
      console_.out << fmt::format("  {}: {} -> {}\n", path, valueText(difference.a),
                                  valueText(difference.b));
    }
  }

  Json outcome_(const std::vector<JsonDifference>& differences, bool sameBytes) const {
    Json list = Json::array();
    for (const JsonDifference& difference : differences) {
      Json entry{{"path", difference.path}};
      if (difference.a) entry["a"] = *difference.a;
      if (difference.b) entry["b"] = *difference.b;
      list.push_back(entry);
    }
    return {{"a", pathA_},
            {"b", pathB_},
            {"equal", differences.empty()},
            {"same_bytes", sameBytes},
            {"differences", list}};
  }

  Console console_;
  std::string pathA_;
  std::string pathB_;
  bool json_ = false;
};

}  // namespace

void addDiff(CLI::App& app, const Console& console, int& exitCode) {
  CLI::App* command = app.add_subcommand("diff", "Tell where two models differ");
  command->callback([diff = std::make_shared<DiffCommand>(*command, console), &exitCode] {
    exitCode = diff->run();
  });
}

}  // namespace cli
