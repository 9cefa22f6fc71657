// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "archive.h"
#include "bindings.h"
#include "tool.h"

namespace vxpy {
namespace {

// A model file, the one of the command: an archive that begins with the tool, so that a C++ host
// loads that alone with `archive || tool`; then this tag, a version, the names of the measurements
// and those of the categories.
const wchar_t* const kTag = L"vxclss model";
constexpr unsigned char kVersion = 0;

using Names = std::vector<std::wstring>;

py::bytes modelBytes(const Tool& tool, const Names& measurements, const Names& categories) {
  const Tool kept = unchanging(tool);
  return storedBytes([&](vxArchive& archive) {
    std::wstring tag = kTag;
    unsigned char version = kVersion;
    Names measurementNames = measurements;
    Names categoryNames = categories;
    storeTool(archive, kept.get());
    archive || tag || version || measurementNames || categoryNames;
  });
}

py::tuple parsedModel(const py::object& data) {
  Tool tool;
  Names measurements, categories;
  loadBytes(data, [&](vxArchive& archive) {
    tool.replaceWith(vxClassifierTool(), [&](vxClassifierTool& fresh) {
      loadTool(archive, fresh);
      std::wstring tag;
      archive || tag;
      if (tag != kTag) throw vxArchive::Malformed(L"A tool, but no names behind it");
      unsigned char version = kVersion;
      archive || version;
      if (version != kVersion) throw vxArchive::UnknownVersion("vxclss model");
      archive || measurements || categories;
    });
  });
  return py::make_tuple(std::move(tool), std::move(measurements), std::move(categories));
}

}  // namespace

void addModels(py::module_& module) {
  module.def("model_bytes", &modelBytes, py::arg("tool"), py::arg("measurement_names"),
             py::arg("category_names"), "The bytes of a model file.");
  module.def("parsed_model", &parsedModel, py::arg("data"),
             "Tool, measurement names and category names of a model file's bytes.");
}

}  // namespace vxpy
