// SPDX-License-Identifier: MIT
#include "archive.h"

#include <istream>
#include <map>
#include <optional>
#include <ostream>
#include <streambuf>
#include <utility>
#include <vector>

#include "interrupts.h"

namespace vxpy {
namespace {

// Shorter archives are not worth to wait for the GIL again, which may take 5 ms each time.
constexpr std::size_t kShort = 65536;

/// Goes on without the GIL when the text becomes long.
class StringSink : public std::streambuf {
 public:
  std::string text() && {
    release_.reset();
    return std::move(text_);
  }

 protected:
  int_type overflow(int_type byte) override {
    if (!traits_type::eq_int_type(byte, traits_type::eof())) {
      text_.push_back(traits_type::to_char_type(byte));
      grown_();
    }
    return traits_type::not_eof(byte);
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    text_.append(bytes, static_cast<std::size_t>(count));
    grown_();
    return count;
  }

 private:
  void grown_() {
    if (!release_ && text_.size() > kShort) release_.emplace();
  }

  std::string text_;
  std::optional<py::gil_scoped_release> release_;
};

class MemorySource : public std::streambuf {
 public:
  explicit MemorySource(const Py_buffer& bytes) {
    char* const begin = static_cast<char*>(bytes.buf);  // only read
    setg(begin, begin, begin + bytes.len);
  }
  bool isAtEnd() const { return gptr() == egptr(); }
};

struct HeldBuffer : Py_buffer {
  explicit HeldBuffer(const py::object& owner) {
    if (PyObject_GetBuffer(owner.ptr(), this, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  }
  HeldBuffer(const HeldBuffer&) = delete;
  HeldBuffer& operator=(const HeldBuffer&) = delete;
  ~HeldBuffer() { PyBuffer_Release(this); }
};

/// By class. Never freed, as the classes aren't.
std::map<const PyObject*, Loader>& loaders() {
  static auto* const all = new std::map<const PyObject*, Loader>;
  return *all;
}

py::tuple loadAll(const py::object& data, const py::tuple& classes, bool mayRemain) {
  std::vector<const Loader*> wanted;
  for (const py::handle cls : classes) {
    const auto found = loaders().find(cls.ptr());
    if (found == loaders().end()) {
      throw py::type_error(py::repr(cls).cast<std::string>() + " has no archive");
    }
    wanted.push_back(&found->second);
  }
  std::vector<std::function<py::object()>> loaded;
  loadBytes(
      data,
      [&](vxArchive& archive) {
        for (const Loader* loader : wanted) loaded.push_back((*loader)(archive));
      },
      mayRemain);
  py::tuple objects(loaded.size());
  for (std::size_t i = 0; i < loaded.size(); ++i) objects[i] = loaded[i]();
  return objects;
}

}  // namespace

void addLoader(const py::object& cls, Loader loader) { loaders()[cls.ptr()] = std::move(loader); }

void addArchives(py::module_& module) {
  module.def("load_all", &loadAll, py::arg("data"), py::arg("classes"), py::arg("rest"),
             "The objects of these classes that an archive begins with.");
}

py::bytes storedBytes(const std::function<void(vxArchive&)>& store) {
  const LibraryCall call;
  StringSink sink;
  {
    std::ostream stream(&sink);
    vxOutputArchive archive(stream);
    store(archive);
  }
  std::string text = std::move(sink).text();
  auto bytes = py::reinterpret_steal<py::bytes>(
      PyBytes_FromStringAndSize(nullptr, static_cast<py::ssize_t>(text.size())));
  if (!bytes) throw py::error_already_set();
  {
    std::optional<py::gil_scoped_release> release;
    if (text.size() > kShort) release.emplace();
    text.copy(PyBytes_AS_STRING(bytes.ptr()), text.size());
    text = std::string();
  }
  return bytes;
}

void loadBytes(const py::object& data, const std::function<void(vxArchive&)>& load,
               bool mayRemain) {
  if (PyObject_CheckBuffer(data.ptr()) == 0) {
    throw py::type_error("an archive is bytes or another object with a buffer, not " +
                         std::string(Py_TYPE(data.ptr())->tp_name));
  }
  const HeldBuffer bytes(data);
  const LibraryCall call;
  std::optional<py::gil_scoped_release> release;
  if (static_cast<std::size_t>(bytes.len) > kShort) release.emplace();
  MemorySource source(bytes);
  std::istream stream(&source);
  vxInputArchive archive(stream);
  load(archive);
  if (!mayRemain && !source.isAtEnd()) throw vxArchive::Malformed(L"Bytes after the end");
}

}  // namespace vxpy
