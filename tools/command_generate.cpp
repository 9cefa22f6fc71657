// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxclss/vxclss.h>

#include <cmath>
#include <cstddef>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/commands.h"
#include "tools/error.h"
#include "tools/json_text.h"
#include "tools/number_options.h"
#include "tools/output_file.h"
#include "tools/stop.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kGenerateExamples = R"(
Examples:
  vxclss generate --category "good:10,1;5,0.5" --category "bad:12,2;5,1" --patterns 100 -o parts.csv
  vxclss generate --category "a:0,1" --category "b:3,1" --patterns 50 --columns width -o widths.csv
  vxclss evaluate parts.csv --label category --method bayes

Each category has a pair of mean and standard deviation for each measurement. The file holds N
patterns of every category, one category after the other, and the column "category" last.

The numbers are the same on every machine and in every run. Each category begins with the same
seed: categories of equal standard deviations get the same deviations and differ only by their
means.)";

const char* const kLabel = "category";
constexpr std::size_t kFlushBytes = 1 << 16;

struct Category {
  std::string name;
  std::vector<vxPair<double>> distributions;
};

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t end = 0; end != std::string_view::npos; start = end + 1) {
    end = text.find(separator, start);
    parts.emplace_back(trimmed(text.substr(start, end - start)));
  }
  return parts;
}

[[noreturn]] void refuse(const std::string& text, const std::string& what) {
  throw InputError(fmt::format("--category: {} {}", shown(text), what));
}

/// "NAME:mean,sd;mean,sd..."; the name may hold every character but none of what follows it may.
Category categoryOf(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos) refuse(text, "is not NAME:MEAN,SD;MEAN,SD...");
  const std::string_view whole = text;
  Category category{std::string(trimmed(whole.substr(0, colon))), {}};
  if (category.name.empty()) refuse(text, "has no name");
  if (!isUtf8(category.name)) refuse(text, "is not UTF-8 text");
  for (const std::string& pair : split(whole.substr(colon + 1), ';')) {
    const std::vector<std::string> parts = split(pair, ',');
    if (parts.size() != 2) refuse(text, fmt::format("has {} in place of MEAN,SD", shown(pair)));
    const std::optional<double> mean = parsedNumber(parts[0]);
    if (!mean || !std::isfinite(*mean)) {
      refuse(text, fmt::format("has a mean {} that is not a number", shown(parts[0])));
    }
    if (!positiveNumber(true)(parts[1]).empty()) {
      refuse(text, fmt::format("has a deviation {} that is not a number >= 0", shown(parts[1])));
    }
    category.distributions.emplace_back(*mean, numberOf(parts[1]));
  }
  return category;
}

class GenerateCommand {
 public:
  GenerateCommand(CLI::App& command, const Console& console) : console_(console) {
    command
        .add_option("--category", categories_,
                    "Category with mean and standard deviation of each measurement; may be "
                    "repeated")
        ->type_name("NAME:MEAN,SD;MEAN,SD...")
        ->allow_extra_args(false)
        ->required();
    command.add_option("--patterns", patterns_, "Number of patterns of each category")
        ->check(wholeNumber(1))
        ->type_name("N")
        ->required();
    command.add_option("--columns", columns_, "Names of the measurements (default x1,x2,...)")
        ->type_name("NAME,NAME...");
    command.add_option("-o,--output", output_, "File to write")->type_name("DATA.csv")->required();
    addJsonFlag(command, json_, "Print JSON instead of text");
    command.footer(kGenerateExamples);
  }

  void run() const {
    const std::vector<Category> categories = readCategories_();
    const std::vector<std::string> columns = columnNames_(categories[0].distributions.size());
    OutputFile file(output_);
    for (const std::string& name : columns) file.stream() << csvCell(name) << ',';
    file.stream() << kLabel << '\n';
    for (const Category& category : categories) write_(category, file.stream());
    file.commit();
    if (json_) {
      Json names = Json::array();
      for (const Category& category : categories) names.push_back(category.name);
      console_.out << jsonText({{"file", output_},
                                {"label", kLabel},
                                {"patterns_of_each", wholeOf(patterns_)},
                                {"measurements", columns},
                                {"categories", names}});
      return;
    }
    console_.out << fmt::format("{}: {} patterns of each of {} categories, {} measurements\n",
                                printable(output_), wholeOf(patterns_), categories.size(),
                                columns.size());
  }

 private:
  std::vector<Category> readCategories_() const {
    std::vector<Category> categories;
    std::set<std::string> known;
    for (const std::string& text : categories_) {
      categories.push_back(categoryOf(text));
      if (!known.insert(categories.back().name).second) {
        refuse(text, "names a category that there is already");
      }
      const std::size_t wanted = categories[0].distributions.size();
      if (categories.back().distributions.size() != wanted) {
        refuse(text, fmt::format("has {} measurements; the first category has {}",
                                 categories.back().distributions.size(), wanted));
      }
    }
    return categories;
  }

  std::vector<std::string> columnNames_(std::size_t count) const {
    std::vector<std::string> names;
    if (!columns_) {
      for (std::size_t i = 1; i <= count; ++i) names.push_back(fmt::format("x{}", i));
      return names;
    }
    names = split(*columns_, ',');
    if (names.size() != count) {
      throw InputError(fmt::format("--columns: {} names for {} measurements", names.size(), count));
    }
    std::set<std::string> known{kLabel};
    for (const std::string& name : names) {
      if (name.empty() || !isUtf8(name)) {
        throw InputError(fmt::format("--columns: {} is no name", shown(name)));
      }
      if (!known.insert(name).second) {
        throw InputError(fmt::format("--columns: two columns named {}", shown(name)));
      }
    }
    return names;
  }

  /// vx_TotalDataGenerator would hand out only as many patterns as a pattern has measurements.
  void write_(const Category& category, std::ostream& out) const {
    const vxClassifierDataProviderMemory data =
        vx_ClassDataGenerator(category.distributions, wholeOf(patterns_)).generateData();
    std::string text;
    for (long i = 0; i < data.numPatterns(); ++i) {
      throwIfStopped();
      for (const double value : data.featurePattern(i)->featureMeasurements(false)) {
        if (!std::isfinite(value)) {
          throw InputError(fmt::format("--category: the values of {} are too large for a double",
                                       shown(category.name)));
        }
        fmt::format_to(std::back_inserter(text), "{},", value);
      }
      text += csvCell(category.name) + '\n';
      if (text.size() < kFlushBytes) continue;
      out << text;
      text.clear();
    }
    out << text;
  }

  Console console_;
  std::vector<std::string> categories_;
  std::string patterns_;
  std::optional<std::string> columns_;
  std::string output_;
  bool json_ = false;
};

}  // namespace

void addGenerate(CLI::App& app, const Console& console) {
  CLI::App* command = app.add_subcommand("generate", "Make labelled patterns by random numbers");
  command->callback(
      [generate = std::make_shared<GenerateCommand>(*command, console)] { generate->run(); });
}

}  // namespace cli
