// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/error.h"
#include "tools/json_text.h"
#include "tools/library_error.h"
#include "tools/method_options.h"
#include "tools/model_file.h"
#include "tools/row_output.h"
#include "tools/table.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kRunExamples = R"(
Examples:
  vxclss run iris.model new.csv
  vxclss run iris.model new.csv --all -o decisions.csv

The model's measurements are looked up by column name; other columns are ignored. The output is CSV:
  row             line of DATA.csv on which the pattern begins, from 1
  category        what was decided; with --all every category, the cheapest decision first
  class_score     posterior probability of the category
  match_score     how well the pattern matches the category
  expected_cost   what deciding for the category is expected to cost
With --json, each line is an object with these keys; with --all, the objects of all categories stand
under "categories".

Rows are read and written one by one, so a file may be of any size. With -o the output appears whole
or not at all; standard output holds the rows before an error.)";

class RunCommand {
 public:
  RunCommand(CLI::App& command, const Console& console) {
    command.add_option("MODEL", model_, "Model file, as train and tree write it")
        ->type_name("")
        ->required();
    rows_.emplace(command, console);
    command.add_flag("--all", all_, "Write every category of a pattern, not only the decision");
    command.footer(kRunExamples);
  }

  void run() {
    const Model model = readModel(model_);
    Table table(rows_->dataPath());
    std::vector<std::size_t> columns;
    for (const std::string& name : model.names.measurements) columns.push_back(table.column(name));
    const bool invalidAllowed = allowsInvalid(model.tool);
    rows_->write(table, "row,category,class_score,match_score,expected_cost\n",
                 [&](std::string& text) {
                   const vxClassifierResult result =
                       classify_(model, table, *table.pattern(columns, invalidAllowed));
                   if (rows_->json()) {
                     appendJson_(model.names, table.row(), result, text);
                   } else {
                     appendCsv_(model.names, table.row(), result, text);
                   }
                 });
  }

 private:
  vxClassifierResult classify_(const Model& model, const Table& table,
                               const vxFeaturePattern& pattern) const {
    vxClassifierResult result;
    try {
      model.tool.run(pattern, result);
    } catch (const vxClassifierDefs::Errors& error) {
      table.refuse(libraryText(error, model.names));
    }
    return result;
  }

  void appendCsv_(const Names& names, long row, const vxClassifierResult& result,
                  std::string& text) const {
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
      fmt::format_to(std::back_inserter(text), "{},{},{},{},{}\n", row,
                     csvCell(categoryName_(names, category)), category.classScore(),
                     category.matchScore(), category.expectedCost());
      if (!all_) break;
    }
  }

  void appendJson_(const Names& names, long row, const vxClassifierResult& result,
                   std::string& text) const {
    Json categories = Json::array();
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
      categories.push_back({{"category", categoryName_(names, category)},
                            {"class_score", jsonNumber(category.classScore())},
                            {"match_score", jsonNumber(category.matchScore())},
                            {"expected_cost", jsonNumber(category.expectedCost())}});
      if (!all_) break;
    }
    Json line{{"row", row}};
    if (all_) {
      line["categories"] = categories;
    } else if (categories.empty()) {
      line["category"] = nullptr;
    } else {
      line.update(categories[0]);
    }
    text += jsonLine(line);
  }

  const std::string& categoryName_(const Names& names,
                                   const vxClassifierCategoryResult& category) const {
    const auto label = static_cast<std::size_t>(category.categoryLabel());
    // Only a damaged file brings a label without a name.
    if (label < names.categories.size()) return names.categories[label];
    throw InputError(fmt::format("{}: no name for category {}", model_, label));
  }

  std::string model_;
  std::optional<RowOutput> rows_;  // added after MODEL, which stands first on the command line
  bool all_ = false;
};

}  // namespace

void addRun(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("run", "Classify patterns with a trained model");
  command->callback([run = std::make_shared<RunCommand>(*command, console)] { run->run(); });
}

}  // namespace cli
