// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/error.h"
#include "tools/method_options.h"
#include "tools/model_file.h"
#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/stop.h"
#include "tools/table.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kExamples = R"(
Examples:
  vxclss run iris.model new.csv
  vxclss run iris.model new.csv --all -o decisions.csv

The model's measurements are looked up by column name; other columns are ignored. The output is CSV:
  row             line of DATA.csv on which the pattern begins, from 1
  category        what was decided; with --all every category, the cheapest decision first
  class_score     posterior probability of the category
  match_score     how well the pattern matches the category
  expected_cost   what deciding for the category is expected to cost
Rows are read and written one by one, so a file may be of any size. With -o the output appears whole
or not at all; standard output holds the rows before an error.)";

constexpr std::size_t kFlushBytes = 1 << 16;

class RunCommand {
 public:
  RunCommand(CLI::App& command, const Console& console) : console_(console) {
    command.add_option("MODEL", model_, "Model file, as train writes it")
        ->type_name("")
        ->required();
    command.add_option("DATA.csv", data_, "Patterns, one a row, under a row of column names")
        ->type_name("")
        ->required();
    command.add_flag("--all", all_, "Write every category of a pattern, not only the decision");
    command.add_option("-o,--output", output_, "File to write instead of standard output")
        ->type_name("FILE");
    command.footer(kExamples);
  }

  void run() {
    const Model model = readModel(model_);
    Table table(data_);
    std::optional<OutputFile> file;
    if (output_) file.emplace(*output_);
    classifyRows_(model, table, file ? file->stream() : console_.out);
    if (file) file->commit();
  }

 private:
  void classifyRows_(const Model& model, Table& table, std::ostream& out) const {
    std::vector<std::size_t> columns;
    for (const std::string& name : model.names.measurements) columns.push_back(table.column(name));
    const bool invalidAllowed = allowsInvalid(model.tool);
    // Lines that scroll past tell enough.
    const bool quiet = !output_ && console_.outIsTerminal;
    Progress progress("classifying", table.size(), quiet ? nullptr : console_.bar());

    std::string text = "row,category,class_score,match_score,expected_cost\n";
    if (!table.next()) throw InputError(data_ + ": no rows after the column names");
    do {
      throwIfStopped();
      append_(model.names, table.row(),
              classify_(model, table, *table.pattern(columns, invalidAllowed)), text);
      progress.update(table.bytesRead());
      if (text.size() >= kFlushBytes) {
        out << text;
        text.clear();
      }
    } while (out && table.next());
    out << text << std::flush;
  }

  vxClassifierResult classify_(const Model& model, const Table& table,
                               const vxFeaturePattern& pattern) const {
    vxClassifierResult result;
    try {
      model.tool.run(pattern, result);
    } catch (const vxClassifierDefs::Errors& error) {
      table.refuse(vfNarrow(error.message()));
    }
    return result;
  }

  void append_(const Names& names, long row, const vxClassifierResult& result,
               std::string& text) const {
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
      const auto label = static_cast<std::size_t>(category.categoryLabel());
      // Only a damaged file brings a label without a name.
      if (label >= names.categories.size()) {
        throw InputError(fmt::format("{}: no name for category {}", model_, label));
      }
      fmt::format_to(std::back_inserter(text), "{},{},{},{},{}\n", row,
                     csvCell(names.categories[label]), category.classScore(), category.matchScore(),
                     category.expectedCost());
      if (!all_) break;
    }
  }

  Console console_;
  std::string model_;
  std::string data_;
  bool all_ = false;
  std::optional<std::string> output_;
};

}  // namespace

void addRun(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("run", "Classify patterns with a trained model");
  command->callback([run = std::make_shared<RunCommand>(*command, console)] { run->run(); });
}

}  // namespace cli
