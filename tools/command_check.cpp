// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxclss/version.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/commands.h"
#include "tools/exit_code.h"
#include "tools/json_text.h"
#include "tools/model_check.h"
#include "tools/model_parts.h"
#include "tools/table.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kCheckExamples = R"(
Examples:
  vxclss check iris.model
  vxclss check iris.model --json
  vxclss check iris.model > /dev/null && vxclss run iris.model new.csv

Reads the file as a host would, looks through all that it holds, classifies typical patterns, and
compares what would be written again with what is there, byte for byte.

Exit codes:
  0   sound
  2   the file can't be read, or bad usage
  3   damaged: cut short, changed, or holding what no command writes
  4   not a model file at all
  5   of a newer version, or with parts that this vxclss doesn't know)";

struct Verdict {
  const char* text;
  int exitCode;
};

Verdict verdict(FileState state) {
  switch (state) {
    case FileState::kSound:
      return {"sound", kExitDone};
    case FileState::kDamaged:
      return {"damaged", kExitDamaged};
    case FileState::kNotAModel:
      return {"not a model", kExitNotAModel};
    case FileState::kNewer:
      return {"newer version", kExitNewer};
  }
  return {"", kExitInternal};
}

class CheckCommand {
 public:
  CheckCommand(CLI::App& command, const Console& console) : console_(console) {
    command.add_option("MODEL", model_, "Model file, as train and tree write it")
        ->type_name("")
        ->required();
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kCheckExamples);
  }

  /// Gives the exit code.
  int run() const {
    const std::string bytes = fileContent(model_);
    const ModelCheck check = checkModel(bytes);
    const Verdict found = verdict(check.state);
    if (json_) {
      console_.out << jsonText(outcome_(check, found, bytes.size()));
    } else {
      printText_(check, found, bytes.size());
    }
    return found.exitCode;
  }

 private:
  void printText_(const ModelCheck& check, const Verdict& found, std::size_t size) const {
    const std::string name = printable(model_);
    for (const std::string& fault : check.faults) {
      console_.out << fmt::format("{}: {}: {}\n", name, found.text, fault);
    }
    if (check.state != FileState::kSound) return;
    console_.out << fmt::format(
        "{}: sound\n"
        "  {} model of {} measurements and {} categories\n"
        "  model file of version {}, which vxclss " VXCLSS_VERSION " writes; {} bytes\n",
        name, methodName(check.model->tool), check.model->names.measurements.size(),
        check.model->names.categories.size(), kModelFileVersion, size);
  }

  Json outcome_(const ModelCheck& check, const Verdict& found, std::size_t size) const {
    Json json{{"file", model_}, {"state", found.text}, {"faults", check.faults}, {"bytes", size}};
    if (!check.model) return json;
    json["version"] = kModelFileVersion;
    json["method"] = methodName(check.model->tool);
    json["measurements"] = check.model->names.measurements.size();
    json["categories"] = check.model->names.categories.size();
    return json;
  }

  Console console_;
  std::string model_;
  bool json_ = false;
};

}  // namespace

void addCheck(CLI::App& app, const Console& console, int& exitCode) {
  CLI::App* command = app.add_subcommand("check", "Tell whether a model file is sound");
  command->callback([check = std::make_shared<CheckCommand>(*command, console), &exitCode] {
    exitCode = check->run();
  });
}

}  // namespace cli
