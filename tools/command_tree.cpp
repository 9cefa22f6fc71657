// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/commands.h"
#include "tools/error.h"
#include "tools/json_text.h"
#include "tools/model_file.h"
#include "tools/output_file.h"
#include "tools/text.h"
#include "tools/tree_json.h"

namespace cli {
namespace {

const char* const kTreeExamples = R"(
Examples:
  vxclss tree parts.json -o parts.model
  vxclss inspect parts.model
  vxclss run parts.model new.csv

The file holds the names and the tree:
  {
    "measurements": ["width", "height", "holes"],
    "categories": ["nut", "bolt", "unsure"],
    "tree": {
      "if": {"valid": ["width", "height"]},
      "true": {
        "if": {"compare": ["height", ">", "width"]},
        "true": "bolt",
        "false": {
          "if": {"range": {"of": "holes", "from": 1, "to": 1}},
          "true": "nut",
          "false": {"results": [
            {"category": "nut", "match_score": 1, "class_score": 0.7, "expected_cost": 0.3},
            {"category": "bolt", "match_score": 0.4, "class_score": 0.3, "expected_cost": 0.7}]}
        }
      },
      "false": "unsure"
    }
  }

A node asks one question:
  compare   whether one measurement is greater (">") or less ("<") than another
  range     whether each measurement lies between "from" and "to", ends included; one end may be
            left out
  valid     whether each measurement could be taken
The answer to the first two is no where a measurement could not be taken. A leaf is the name of a
category, or the results that a pattern gets there: class scores are scaled to a sum of 1, and the
cheapest decision stands first.)";

class TreeCommand {
 public:
  TreeCommand(CLI::App& command, const Console& console) : console_(console) {
    command.add_option("TREE.json", tree_, "Names and tree")->type_name("")->required();
    command.add_option("-o,--output", output_, "Model file to write")
        ->type_name("MODEL")
        ->required();
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kTreeExamples);
  }

  void run() const {
    Model model = readTree(tree_);
    OutputFile file(output_);
    try {
      saveModel(model, file);
    } catch (const vxArchive::Unstorable& error) {
      throw InputError(fmt::format("{}: /tree: {}", tree_, vfNarrow(error.message())));
    }
    if (json_) {
      console_.out << jsonText({{"model", output_},
                                {"method", "tree"},
                                {"measurements", model.names.measurements},
                                {"categories", model.names.categories}});
      return;
    }
    console_.out << fmt::format("{}: a tree of {} measurements and {} categories\n",
                                printable(output_), model.names.measurements.size(),
                                model.names.categories.size());
  }

 private:
  Console console_;
  std::string tree_;
  std::string output_;
  bool json_ = false;
};

}  // namespace

void addTree(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("tree", "Make a model of a decision tree");
  command->callback([tree = std::make_shared<TreeCommand>(*command, console)] { tree->run(); });
}

}  // namespace cli
