// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_ARCHIVE_H_
#define VXCLSS_PYTHON_ARCHIVE_H_

#include <functional>
#include <string>

#include "bindings.h"

namespace vxpy {

/// The bytes of one archive that `store` fills, the most of a long one without the GIL.
py::bytes storedBytes(const std::function<void(vxArchive&)>& store);

/// Gives `load` an archive over `data`, anything with a contiguous buffer; without the GIL if there
/// are many bytes. Throws vxArchive::Malformed if bytes remain.
void loadBytes(const py::object& data, const std::function<void(vxArchive&)>& load);

/// What to_bytes() reads without the GIL: an object that never changes, or a copy of one that other
/// threads may change meanwhile.
template <class Object>
const Object& unchanging(const Object& object) {
  return object;
}
inline vxClassifierDataProviderMemory unchanging(const vxClassifierDataProviderMemory& data) {
  return data;
}
inline vxClassifierRuleTable unchanging(const vxClassifierRuleTable& table) { return table; }

/// Adds to_bytes(), from_bytes() and pickling through them. `store` and `load` take an archive;
/// the bytes are those of `archive || object` in C++. Neither may touch anything of Python's.
template <class Class, class Store, class Load>
void addArchive(Class& cls, Store store, Load load) {
  using Object = typename Class::type;
  cls.def(
      "to_bytes",
      [store](const Object& self) {
        const auto& kept = unchanging(self);
        return storedBytes([&](vxArchive& archive) { store(archive, kept); });
      },
      "The archive of this object, as C++ stores it with ``archive || object``.");
  cls.def_static(
      "from_bytes",
      [load](const py::object& data) {
        decltype(load(std::declval<vxArchive&>())) loaded{};
        loadBytes(data, [&](vxArchive& archive) { loaded = load(archive); });
        return loaded;
      },
      py::arg("data"),
      "The object of an archive, bytes that need not be trusted.\n\n"
      "Raises ArchiveError for bytes that are no archive of this class from first to last.");
  cls.def("__reduce__", [cls](const py::object& self) {
    return py::make_tuple(py::module_::import("vxclss._pickle").attr("_unpickled"),
                          py::make_tuple(self.attr("__class__"), self.attr("to_bytes")()));
  });
}

/// The same for a value class with a transfer of its own, made from `arguments`.
template <class Class, class... Arguments>
void addValueArchive(Class& cls, const Arguments&... arguments) {
  using Object = typename Class::type;
  addArchive(
      cls,
      // A transfer runs both ways, so it takes what it stores as something it might change.
      [](vxArchive& archive, const Object& object) { archive || const_cast<Object&>(object); },
      [=](vxArchive& archive) {
        auto object = std::make_unique<Object>(arguments...);
        archive || *object;
        return object;
      });
}

/// The same for a class that is held by handle.
template <class Class, class... Arguments>
void addSharedArchive(Class& cls, const Arguments&... arguments) {
  using Object = typename Class::type;
  addArchive(
      cls, [](vxArchive& archive, const Object& object) { archive || const_cast<Object&>(object); },
      [=](vxArchive& archive) {
        const vxPtrHandle<Object> object(new Object(arguments...));
        archive || *object;
        return object;
      });
}

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_ARCHIVE_H_
