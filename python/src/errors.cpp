// SPDX-License-Identifier: MIT
#include "errors.h"

#include <string>

#include "bindings.h"

namespace vxpy {
namespace {

/// Sets Python's error to the one of vxclss.errors that belongs to the number.
void raise(const vxException& error, const std::wstring& text, const py::dict& details) {
  try {
    const py::object made =
        py::module_::import("vxclss.errors").attr("_made")(error.errorNumber(), text, **details);
    PyErr_SetObject(py::type::handle_of(made).ptr(), made.ptr());
  } catch (py::error_already_set& failed) {
    failed.restore();
  }
}

/// Sets Python's error if the pointer holds an error of the library; rethrows what it holds else.
void translate(const std::exception_ptr& pointer, py::dict details) {
  try {
    std::rethrow_exception(pointer);
  } catch (const vxArchive::UnknownVersion& error) {
    details["name"] = error.name();
    details["line"] = error.number();
    raise(error, error.message(), details);
  } catch (const vxStatusException& error) {
    details["status"] = error.status();
    raise(error, error.message(), details);
  } catch (const vxExceptionWithString& error) {
    raise(error, error.message(), details);
  } catch (const vxException& error) {
    raise(error, std::wstring(), details);
  }
}

}  // namespace

void throwFromRow(const std::exception_ptr& error, long row) {
  py::dict details;
  details["row"] = row;
  translate(error, details);
  throw py::error_already_set();
}

void addErrors(py::module_&) {
  py::register_exception_translator([](std::exception_ptr pointer) {
    if (pointer) translate(pointer, py::dict());
  });
}

}  // namespace vxpy
