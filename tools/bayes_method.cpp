// SPDX-License-Identifier: MIT
#include "tools/bayes_method.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <algorithm>
#include <set>

#include "tools/error.h"
#include "tools/name_options.h"
#include "tools/number_options.h"
#include "tools/text.h"

namespace cli {
namespace {

using Types = vxClassifierDistributionTypes;

/// The type of each measurement of each category. What a text says of one category counts there
/// whatever others say of every category; the library's overrides know no such order.
using TypeTable = std::vector<std::vector<Types::DistributionType>>;

std::string isDistribution(const std::string& text) {
  if (text == "normal" || text == "binomial") return {};
  return shown(text) + " is no distribution; there are: normal, binomial";
}

TypeTable typeTable(const std::vector<std::string>& texts, const Names& names) {
  TypeTable table(names.categories.size(), {names.measurements.size(), Types::eNormal});
  for (const bool forEvery : {true, false}) {
    for (const std::string& text : texts) {
      const Assignment given =
          assignment("--distribution", text, "[CATEGORY:]COLUMN=normal|binomial", isDistribution);
      const Selection selection = selectedColumn("--distribution", text, names, given.names);
      if (forEvery != (selection.category < 0)) continue;
      for (std::size_t category = 0; category < table.size(); ++category) {
        if (!forEvery && static_cast<long>(category) != selection.category) continue;
        table[category][static_cast<std::size_t>(selection.measurements[0])] =
            given.value == "normal" ? Types::eNormal : Types::eBinomial;
      }
    }
  }
  return table;
}

void append(std::string& text, const std::string& option, const std::vector<std::string>& values) {
  for (const std::string& value : values) {
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", option, printable(value));
  }
}

}  // namespace

void BayesMethod::addOptions(CLI::App& command) {
  const char* group = "Options of --method bayes (Bayesian classification)";
  const auto add = [&](const char* name, std::vector<std::string>& texts, const char* help,
                       const char* type) {
    command.add_option(name, texts, help)->type_name(type)->allow_extra_args(false)->group(group);
  };
  add("--distribution", distributions_,
      "How the values of a column scatter, in every category or in one (default normal); may be "
      "repeated",
      "[CATEGORY:]COLUMN=normal|binomial");
  add("--maximum", maximumTexts_,
      "Largest value that a binomial column may take (default 1); may be repeated", "COLUMN=VALUE");
  add("--dependent", dependents_,
      "Columns that depend on each other, in every category or in one; may be repeated",
      "[CATEGORY:]COLUMN,COLUMN,...");
  frequencies_.add(command, group);
}

std::string BayesMethod::summary() const {
  std::string text;
  append(text, "distribution", distributions_);
  append(text, "maximum", maximumTexts_);
  append(text, "dependent", dependents_);
  append(text, "frequency", frequencies_.texts());
  return text.empty() ? "normal, independent" : text;
}

vxPtrHandle<vxClassifierTrainParams> BayesMethod::params(const Names& names,
                                                         const vxClassifierCosts& costs) const {
  const Types types = distributionTypes_(names);
  vxClassifierFrequencies frequencies(1.0);
  frequencies_.apply(frequencies, names, "data");
  return vxPtrHandle<vxClassifierTrainParams>(
      new vxClassifierTrainParamsBayesian(types, frequencies, costs, maximums_(names, types)));
}

bool BayesMethod::made(const vx_Classifier& classifier) const {
  return dynamic_cast<const vx_ClassifierBayesian*>(&classifier) != nullptr;
}

vxClassifierDistributionTypes BayesMethod::distributionTypes_(const Names& names) const {
  const TypeTable table = typeTable(distributions_, names);
  const auto numCategories = static_cast<long>(names.categories.size());
  Types types(Types::eNormal);
  for (long category = 0; category < numCategories; ++category) {
    const auto& row = table[static_cast<std::size_t>(category)];
    for (std::size_t i = 0; i < row.size(); ++i) {
      types.distributionTypeOverride(category, static_cast<long>(i), row[i]);
    }
  }
  for (const std::string& text : dependents_) {
    const Selection selection = selectedColumns("--dependent", text, names);
    const auto& columns = selection.measurements;
    if (std::set<long>(columns.begin(), columns.end()).size() < 2) {
      throw InputError(fmt::format("--dependent: {} names fewer than two columns", shown(text)));
    }
    for (long category = 0; category < numCategories; ++category) {
      if (selection.category >= 0 && selection.category != category) continue;
      try {
        types.setDependent(category, columns);
      } catch (const vxClassifierDefs::BadParams& error) {
        throw InputError(
            fmt::format("--dependent: {}: {}", shown(text), vfNarrow(error.message())));
      }
    }
  }
  return types;
}

vxFeaturePattern BayesMethod::maximums_(const Names& names, const Types& types) const {
  std::vector<double> values(names.measurements.size(), 0.0);
  std::set<long> unset;
  for (std::size_t i = 0; i < values.size(); ++i) unset.insert(static_cast<long>(i));
  for (const std::string& text : maximumTexts_) {
    const Assignment given = assignment("--maximum", text, "COLUMN=VALUE", positiveNumber(false));
    const long column = positionOf(names.measurements, given.names);
    if (column < 0) {
      throw InputError(fmt::format("--maximum: {} does not name a column of the data: {}",
                                   shown(text), fmt::join(names.measurements, ", ")));
    }
    bool used = false;
    for (std::size_t category = 0; category < names.categories.size(); ++category) {
      used |= types.distributionType(static_cast<long>(category), column) == Types::eBinomial;
    }
    if (!used) {
      throw InputError(
          fmt::format("--maximum: {} names a column that is binomial in no category", shown(text)));
    }
    values[static_cast<std::size_t>(column)] = numberOf(given.value);
    unset.erase(column);
  }
  return vxFeaturePattern(values, std::vector<long>(unset.begin(), unset.end()));
}

}  // namespace cli
