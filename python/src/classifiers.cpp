// SPDX-License-Identifier: MIT
#include "classifiers.h"

#include <pybind11/stl.h>

#include <string>
#include <utility>

#include "archive.h"
#include "batch.h"
#include "interrupts.h"
#include "patterns.h"
#include "row_work.h"

namespace vxpy {
namespace {

using Provider = vxClassifierDataProviderMemory;
using Params = vxClassifierTrainParams;

/// A classifier in Python's hands. It runs without the GIL, so nothing may change it meanwhile.
class Box {
 public:
  explicit Box(vxPtrHandle<vx_Classifier> classifier, std::shared_ptr<const void> owner = nullptr)
      : classifier_(std::move(classifier)), owner_(std::move(owner)) {}

  const vx_Classifier& get() const { return *classifier_; }
  const vxPtrHandle<vx_Classifier>& handle() const { return classifier_; }

  vx_Classifier& changeable() {
    if (owner_) {
      throw py::type_error(
          "this classifier belongs to a tool and can't be changed; copy.copy() gives one that can");
    }
    if (running_ != 0) throw std::runtime_error("this classifier is running");
    return *classifier_;
  }

  Slowness& slowness() const { return *slowness_; }

  class Run {
   public:
    explicit Run(const Box& box) : box_(box) { ++box_.running_; }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() { --box_.running_; }

   private:
    const Box& box_;
  };

 private:
  vxPtrHandle<vx_Classifier> classifier_;
  std::shared_ptr<const void> owner_;
  // Not part of the value, so a new box starts without.
  std::unique_ptr<Slowness> slowness_ = std::make_unique<Slowness>();
  mutable int running_ = 0;  // counted with the GIL held
};

template <class Technique>
class TypedBox : public Box {
 public:
  TypedBox() : TypedBox(vxPtrHandle<Technique>(new Technique)) {}
  explicit TypedBox(const vxPtrHandle<Technique>& classifier,
                    std::shared_ptr<const void> owner = nullptr)
      : Box(classifier, std::move(owner)) {}

  const Technique& technique() const { return static_cast<const Technique&>(get()); }
};

/// A box that can't be changed for as long as this lives.
template <class Technique>
struct Unchanging {
  explicit Unchanging(const TypedBox<Technique>& itsBox) : box(itsBox), run(itsBox) {}
  const vx_Classifier& get() const { return box.get(); }

  const TypedBox<Technique>& box;
  const Box::Run run;
};

template <class Technique>
Unchanging<Technique> unchanging(const TypedBox<Technique>& box) {
  return Unchanging<Technique>(box);
}

using Knn = TypedBox<vx_ClassifierKNN>;
using Bayesian = TypedBox<vx_ClassifierBayesian>;
using TreeBox = TypedBox<vx_ClassifierDecisionTree>;

py::object run(const Box& box, const py::object& X, const py::object& jobs) {
  const Box::Run running(box);
  if (!py::isinstance<vxFeaturePattern>(X)) {
    return runBatch(runnerOf(box.handle(), box.slowness()), X, jobs);
  }
  refuseJobs(jobs);
  const auto& pattern = X.cast<const vxFeaturePattern&>();
  vxClassifierResult result;
  runWatched(&box.slowness(), [&] { box.get().run(pattern, result); });
  return py::cast(std::move(result));
}

void addBase(py::module_& module) {
  py::class_<Box> base(
      module, "Classifier",
      "A classifier of some technique (vx_Classifier). What a tool holds can't be changed.");
  base.def(
      "train",
      [](Box& self, const Provider& data, const Params& params) {
        self.changeable().train(data, params);
      },
      py::arg("data"), py::arg("params"), "Forgets what there was and trains from all of `data`.");
  base.def(
      "train_start", [](Box& self, const Params& params) { self.changeable().trainStart(params); },
      py::arg("params"), "Prepares training pattern by pattern.");
  base.def(
      "train_incremental",
      [](Box& self, const py::object& pattern, long label) {
        self.changeable().trainIncremental(patternFrom(pattern), label);
      },
      py::arg("pattern"), py::arg("label"),
      "Adds one pattern to a trained classifier. Raises NotTrained, then what the technique\n"
      "says of pattern and label.");
  base.def(
      "retrain", [](Box& self, const Params& params) { self.changeable().retrain(params); },
      py::arg("params"), "Takes new parameters without the data. Raises NotTrained, BadMethod.");
  base.def(
      "untrain", [](Box& self) { self.changeable().untrain(); },
      "Forgets what was trained. Raises TypeError for the classifier of a tool.");
  base.def_property_readonly(
      "is_trained", [](const Box& self) { return self.get().isTrained(); },
      "Whether it was trained; it may still lack the data to run.");
  base.def_property_readonly(
      "train_params", [](const Box& self) { return wrapped(self.get().trainParams()); },
      "Parameters of the last training. Raises NotTrained; BadMethod without any.");
  base.def("run", &run, py::arg("X"), py::arg("n_jobs") = py::none(), "What Tool.run() does.");
  base.def(
      "__eq__", [](const Box& a, const Box& b) { return a.get().isEquivalent(b.get()); },
      py::is_operator());
}

template <class Class>
void addBoxArchive(Class& cls) {
  using Object = typename Class::type;
  addArchive(
      cls,
      [](vxArchive& archive, const auto& kept) {
        archive || const_cast<vx_Classifier&>(kept.get());
      },
      [](vxArchive& archive) {
        auto object = std::make_unique<Object>();
        archive || object->changeable();
        restoreParams(object->changeable());
        return object;
      });
}

void addTechniques(py::module_& module) {
  py::class_<Knn, Box> knn(
      module, "ClassifierKNN",
      "The k-nearest-neighbour technique (vx_ClassifierKNN).\n\n"
      "A copy made in Python has its own training set, where copies in C++ share it.");
  knn.def(py::init<>());
  knn.def_property_readonly(
      "data",
      [](const Knn& self) -> py::object {
        if (self.technique().data().isNull()) return py::none();
        return py::cast(vxPtrHandle<Provider>(new Provider(*self.technique().data())));
      },
      "A DataProvider of the stored patterns; None when untrained.");
  knn.def_property_readonly(
      "params", [](const Knn& self) { return self.technique().params().clone(); },
      "What the search runs with.");
  knn.def("__repr__", [](const Knn& self) -> std::string {
    if (!self.get().isTrained()) return "<ClassifierKNN, untrained>";
    return "<ClassifierKNN of " + std::to_string(self.technique().data()->numPatterns()) +
           " patterns, k=" + std::to_string(self.technique().params().k()) + ">";
  });
  addBoxArchive(knn);

  py::class_<Bayesian, Box> bayes(module, "ClassifierBayesian",
                                  "The Bayesian technique (vx_ClassifierBayesian).");
  bayes.def(py::init<>());
  bayes.def_property_readonly(
      "category_labels", [](const Bayesian& self) { return self.technique().categoryLabels(); },
      "Label of each model, in the order in which training met them.");
  bayes.def_property_readonly(
      "category_models",
      [](const Bayesian& self) {
        py::list models;
        for (const auto& model : self.technique().categoryModels()) models.append(wrapped(model));
        return models;
      },
      "A new list of a CategoryModelBayesian for each of category_labels; empty when untrained.");
  bayes.def("__repr__", [](const Bayesian& self) -> std::string {
    if (!self.get().isTrained()) return "<ClassifierBayesian, untrained>";
    return "<ClassifierBayesian of " + std::to_string(self.technique().categoryLabels().size()) +
           " categories>";
  });
  addBoxArchive(bayes);

  py::class_<TreeBox, Box> tree(module, "ClassifierDecisionTree",
                                "The decision-tree technique (vx_ClassifierDecisionTree).");
  tree.def(py::init<>());
  tree.def(
      "train_manual",
      [](TreeBox& self, const vxDecisionTree& given) {
        static_cast<vx_ClassifierDecisionTree&>(self.changeable()).trainManual(given);
      },
      py::arg("tree"), "Takes a tree, about which nothing is checked.");
  tree.def_property_readonly(
      "decision_tree", [](const TreeBox& self) { return wrapped(self.technique().decisionTree()); },
      "The tree; None when untrained.");
  tree.def("__repr__", [](const TreeBox& self) -> std::string {
    return self.get().isTrained() ? "<ClassifierDecisionTree>"
                                  : "<ClassifierDecisionTree, untrained>";
  });
  addBoxArchive(tree);
}

template <class Technique>
bool wrapAs(const vx_Classifier& classifier, const std::shared_ptr<const void>& owner,
            py::object& object) {
  const auto* technique = dynamic_cast<const Technique*>(&classifier);
  if (technique == nullptr) return false;
  object = py::cast(
      TypedBox<Technique>(vxPtrHandle<Technique>(const_cast<Technique*>(technique)), owner));
  return true;
}

}  // namespace

py::object classifierOf(const vxPtrHandle_const<vx_Classifier>& classifier,
                        std::shared_ptr<const void> owner) {
  py::object object = py::none();
  if (classifier.isNull() || wrapAs<vx_ClassifierKNN>(*classifier, owner, object) ||
      wrapAs<vx_ClassifierBayesian>(*classifier, owner, object) ||
      wrapAs<vx_ClassifierDecisionTree>(*classifier, owner, object)) {
    return object;
  }
  return py::cast(Box(vxPtrHandle<vx_Classifier>(const_cast<vx_Classifier*>(classifier.get())),
                      std::move(owner)));
}

void addClassifiers(py::module_& module) {
  addBase(module);
  addTechniques(module);
}

}  // namespace vxpy
