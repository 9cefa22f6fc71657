// SPDX-License-Identifier: MIT
#ifndef VXCLSS_PYTHON_OVERRIDES_H_
#define VXCLSS_PYTHON_OVERRIDES_H_

#include <sstream>
#include <string>
#include <utility>

#include "bindings.h"
#include "text.h"

// What the records of a default and overrides have in common.

namespace vxpy {

/// Gives `read` an archive with the fields of a record.
///
/// What a record holds can be asked for pair by pair, but not listed; its archive lists it.
template <class Record, class Read>
void readArchived(const Record& record, const Read& read) {
  std::stringstream stream;
  {
    vxOutputArchive archive(stream);
    archive || const_cast<Record&>(record);
  }
  vxInputArchive archive(stream);
  vfTransferVersion(archive);
  read(archive);
}

/// The items of a mapping, or of an iterable of pairs.
inline py::list itemsOf(const py::object& mapping) {
  if (mapping.is_none()) return py::list();
  return py::list(py::hasattr(mapping, "items") ? py::object(mapping.attr("items")()) : mapping);
}

/// What an item of a mapping holds; `form` says what it should.
template <class Key, class Value>
std::pair<Key, Value> itemOf(py::handle item, const char* form) {
  try {
    return item.cast<std::pair<Key, Value>>();
  } catch (const py::cast_error&) {
    throw py::type_error("overrides map " + std::string(form) + ", not " +
                         shown(py::reinterpret_borrow<py::object>(item)));
  }
}

}  // namespace vxpy

#endif  // VXCLSS_PYTHON_OVERRIDES_H_
