// SPDX-License-Identifier: MIT
#ifndef TOOLS_METHOD_OPTIONS_H_
#define TOOLS_METHOD_OPTIONS_H_

#include <vxclss/vxclss.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/decision_options.h"
#include "tools/table.h"

namespace cli {

/// A technique that the command line offers, with its options.
class Method {
 public:
  virtual ~Method() = default;

  /// What stands after --method.
  virtual std::string name() const = 0;

  virtual void addOptions(CLI::App& command) = 0;

  /// The options in words ("k 5, order 2"), once the command line was read.
  virtual std::string summary() const = 0;

  /// What the library trains with. Throws InputError.
  virtual vxPtrHandle<vxClassifierTrainParams> params(const Names& names,
                                                      const vxClassifierCosts& costs) const = 0;

  /// Whether a classifier is of this technique.
  virtual bool made(const vx_Classifier& classifier) const = 0;

  virtual bool allowsInvalid() const = 0;
};

/// Every technique; a new one is one more entry.
std::vector<std::unique_ptr<Method>> allMethods();

/// Whether a trained tool takes patterns with invalid measurements.
bool allowsInvalid(const vxClassifierTool& tool);

/// --method, the options of every technique, and those that all have in common.
class MethodOptions {
 public:
  explicit MethodOptions(CLI::App& command);

  /// The technique asked for. Throws InputError if there is none of that name, or if an option of
  /// another one was given.
  const Method& chosen() const;

  /// Its parameters for data of these names. Throws InputError for an option that names what the
  /// data doesn't have.
  vxPtrHandle<vxClassifierTrainParams> params(const Names& names) const;

 private:
  std::vector<std::unique_ptr<Method>> methods_;
  std::vector<std::vector<CLI::Option*>> options_;  // of each technique
  std::string method_ = "knn";
  std::optional<CostOptions> costs_;  // added last, so that its group stands last in the help
};

}  // namespace cli

#endif  // TOOLS_METHOD_OPTIONS_H_
