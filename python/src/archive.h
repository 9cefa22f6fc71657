// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_ARCHIVE_H_
#define VXCLSS_PYTHON_ARCHIVE_H_

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "bindings.h"

namespace vxpy {

/// The bytes of one archive that `store` fills, the most of a long one without the GIL.
py::bytes storedBytes(const std::function<void(vxArchive&)>& store);

/// Gives `load` an archive over `data`, anything with a contiguous buffer; without the GIL if there
/// are many bytes. Throws vxArchive::Malformed if bytes remain, unless they may.
void loadBytes(const py::object& data, const std::function<void(vxArchive&)>& load,
               bool mayRemain = false);

/// Loads an object, perhaps without the GIL, and gives what hands it to Python.
using Loader = std::function<std::function<py::object()>(vxArchive&)>;

/// Lets load_all() find the class.
void addLoader(const py::object& cls, Loader loader);

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
  const auto bytesOf = [store](const Object& self) {
    const auto& kept = unchanging(self);
    return storedBytes([&](vxArchive& archive) { store(archive, kept); });
  };
  const auto objectOf = [load](const py::object& data) {
    decltype(load(std::declval<vxArchive&>())) loaded{};
    loadBytes(data, [&](vxArchive& archive) { loaded = load(archive); });
    return loaded;
  };
  cls.def("to_bytes", bytesOf,
          "The archive of this object, as C++ stores it with ``archive || object``.");
  cls.def_static(
      "from_bytes", objectOf, py::arg("data"),
      "The object of an archive, bytes that need not be trusted.\n\n"
      "Raises ArchiveError for bytes that are no archive of this class from first to last.");
  addLoader(cls, [load](vxArchive& archive) -> std::function<py::object()> {
    using Loaded = decltype(load(archive));
    const auto loaded = std::make_shared<Loaded>(load(archive));
    return [loaded] { return py::cast(std::move(*loaded)); };
  });
  cls.def("__reduce__", [bytesOf](const py::object& self) -> py::object {
    const py::module_ pickling = py::module_::import("vxclss._pickle");
    const py::type type = py::type::of(self);
    if (!type.is(py::type::of<Object>())) return pickling.attr("_reduced")(self);
    return py::make_tuple(pickling.attr("_unpickled"),
                          py::make_tuple(type, bytesOf(self.cast<const Object&>())));
  });
  if (PyType_HasFeature(reinterpret_cast<PyTypeObject*>(cls.ptr()), Py_TPFLAGS_BASETYPE) == 0) {
    return;
  }
  // What a class that is derived in Python is copied and pickled with.
  cls.def(py::pickle(
      [bytesOf](const py::object& self) {
        return py::make_tuple(bytesOf(self.cast<const Object&>()),
                              py::getattr(self, "__dict__", py::dict()).attr("copy")());
      },
      [objectOf](const py::tuple& state) {
        if (state.size() != 2) throw py::value_error("not the state of an object");
        return std::make_pair(objectOf(state[0]), state[1].cast<py::dict>());
      }));
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
