// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_TOOL_H_
#define VXCLSS_PYTHON_TOOL_H_

#include <memory>
#include <optional>

#include "batch.h"
#include "bindings.h"

namespace vxpy {

/// A tool in Python's hands. What it holds is never changed but replaced, so that runs without the
/// GIL go on with what they have begun with.
class Tool {
 public:
  Tool() : state_(std::make_shared<State>()) {}
  explicit Tool(const vxClassifierTool& tool) : state_(std::make_shared<State>(tool)) {}

  const vxClassifierTool& get() const { return state_->tool; }

  /// Takes what `change` makes of the tool, or of a copy of it; keeps what there was if it throws.
  template <class Change>
  void replaceWith(const vxClassifierTool& begin, const Change& change) {
    auto fresh = std::make_shared<State>(begin);
    change(fresh->tool);
    state_ = std::move(fresh);
  }

  /// For batches; it keeps what it needs. Throws NotTrained.
  const BatchRunner& runner() const;

  Slowness& slowness() const { return state_->slowness; }

  /// Keeps the tool as it is now while it runs.
  std::shared_ptr<const void> keep() const { return state_; }

 private:
  struct State {
    State() = default;
    explicit State(const vxClassifierTool& source) : tool(source) {}

    vxClassifierTool tool;
    Slowness slowness;
    std::optional<BatchRunner> runner;  // made when it is first asked for, with the GIL held
  };

  std::shared_ptr<State> state_;
};

/// The tool as it is now, which training replaces.
inline Tool unchanging(const Tool& tool) { return tool; }

/// Transfers a tool as C++ does, and puts its parameters in force when loading.
void storeTool(vxArchive& archive, const vxClassifierTool& tool);
void loadTool(vxArchive& archive, vxClassifierTool& tool);

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_TOOL_H_
