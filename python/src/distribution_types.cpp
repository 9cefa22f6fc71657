// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "archive.h"
#include "bindings.h"
#include "overrides.h"

namespace vxpy {
namespace {

using Types = vxClassifierDistributionTypes;
using Pair = std::pair<long, long>;

struct TypeFields {
  std::vector<long> categories, measurements;
  std::vector<unsigned long> types;
  std::vector<long> dependentCategories;
  std::vector<std::vector<long>> dependent;
};

TypeFields fieldsOf(const Types& types) {
  TypeFields fields;
  readArchived(types, [&](vxArchive& archive) {
    unsigned long standard = 0;
    archive || standard || fields.categories || fields.measurements || fields.types;
    archive || fields.dependentCategories || fields.dependent;
  });
  return fields;
}

py::dict overridesOf(const Types& types) {
  py::dict overrides;
  const TypeFields fields = fieldsOf(types);
  for (std::size_t i = 0; i < fields.types.size(); ++i) {
    overrides[py::make_tuple(fields.categories[i], fields.measurements[i])] =
        static_cast<Types::DistributionType>(fields.types[i]);
  }
  return overrides;
}

py::list dependentOf(const Types& types) {
  py::list sets;
  const TypeFields fields = fieldsOf(types);
  for (std::size_t i = 0; i < fields.dependent.size(); ++i) {
    sets.append(py::make_tuple(fields.dependentCategories[i], fields.dependent[i]));
  }
  return sets;
}

}  // namespace

void addDistributionTypes(py::module_& module) {
  py::enum_<Types::DistributionType>(module, "DistributionType",
                                     "How a measurement is distributed.")
      .value("NORMAL", Types::eNormal, "(multivariate) normal")
      .value("BINOMIAL", Types::eBinomial, "binomial, of one measurement")
      .value("POISSON", Types::ePoisson, "refused by training: not implemented")
      .value("UNIFORM", Types::eUniform, "refused by training: not implemented");

  py::class_<Types> cls(
      module, "DistributionTypes", py::is_final(),
      "Which distribution models each measurement of each category, and which measurements of a\n"
      "category depend on each other (vxClassifierDistributionTypes). Never changes.");
  cls.def(
      py::init([](Types::DistributionType standard, const py::object& overrides,
                  const std::vector<std::pair<long, std::vector<long>>>& dependent) {
        Types types(standard);
        for (const py::handle item : itemsOf(overrides)) {
          const auto [pair, type] = itemOf<Pair, Types::DistributionType>(
              item, "pairs of category and measurement to types");
          types.distributionTypeOverride(pair.first, pair.second, type);
        }
        for (const auto& [category, measurements] : dependent) {
          types.setDependent(category, measurements);
        }
        return types;
      }),
      py::arg("default") = Types::eNormal, py::arg("overrides") = py::none(),
      py::arg("dependent") = py::tuple(),
      "`overrides` maps (category, measurement) to a DistributionType; `dependent` lists pairs of\n"
      "a category and the measurements of it that are modelled together. Sets of one category\n"
      "that share a measurement become one.\n\n"
      "Raises BadLabel, BadIndex; BadParams for a set of different types.");
  cls.def_property_readonly("default",
                            py::overload_cast<>(&Types::defaultDistributionType, py::const_),
                            "DistributionType of every measurement without an override.");
  cls.def_property_readonly(
      "overrides", [](const Types& self) { return overridesOf(self); },
      "A new dict of (category, measurement) to DistributionType.");
  cls.def_property_readonly("dependent", &dependentOf,
                            "A new list of (category, measurements), one a dependency set.");
  cls.def("distribution_type", &Types::distributionType, py::arg("category"),
          py::arg("measurement"), "Raises BadLabel, BadIndex for what is below 0.");
  cls.def("is_dependent", &Types::isDependent, py::arg("category"), py::arg("measurements"),
          "Whether all listed measurements are in one dependency set of the category.");
  cls.def(
      "with_override",
      [](const Types& self, long category, long measurement, Types::DistributionType type) {
        Types changed = self;
        changed.distributionTypeOverride(category, measurement, type);
        return changed;
      },
      py::arg("category"), py::arg("measurement"), py::arg("type"),
      "New types, with one more pair. Raises BadParams for a measurement in a dependency set.");
  cls.def(
      "with_dependent",
      [](const Types& self, long category, const std::vector<long>& measurements) {
        Types changed = self;
        changed.setDependent(category, measurements);
        return changed;
      },
      py::arg("category"), py::arg("measurements"), "New types, with one more dependency set.");
  cls.def(
      "__eq__", [](const Types& a, const Types& b) { return a == b; }, py::is_operator());
  cls.def("__repr__", [](const Types& self) {
    std::string text = "DistributionTypes(" +
                       py::str(py::cast(self.defaultDistributionType())).cast<std::string>();
    std::string overrides;
    for (const auto& [pair, type] : overridesOf(self)) {
      overrides += (overrides.empty() ? "" : ", ") + py::str(pair).cast<std::string>() + ": " +
                   py::str(type).cast<std::string>();
    }
    if (!overrides.empty()) text += ", {" + overrides + "}";
    const py::list sets = dependentOf(self);
    if (!sets.empty()) text += ", dependent=" + shown(sets);
    return text + ")";
  });
  addValueArchive(cls);
}

}  // namespace vxpy
