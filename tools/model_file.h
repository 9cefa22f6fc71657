// SPDX-License-Identifier: MIT
#ifndef TOOLS_MODEL_FILE_H_
#define TOOLS_MODEL_FILE_H_

#include <vxclss/vxclss.h>

#include <istream>
#include <ostream>
#include <string>

#include "tools/error.h"
#include "tools/output_file.h"
#include "tools/table.h"

namespace cli {

/// A trained tool, and what its measurements and labels are called.
struct Model {
  vxClassifierTool tool;
  Names names;
};

/// The version of the files that writeModel() writes.
constexpr unsigned char kModelFileVersion = 0;

/// What a file is that was taken for a model file.
enum class FileState {
  kSound,
  kDamaged,
  kNotAModel,
  kNewer,  // of a version that is not known here
};

/// Why a file can't be read as a model.
class ModelFileError : public InputError {
 public:
  ModelFileError(FileState state, const std::string& reason, const std::string& message)
      : InputError(message), state_(state), reason_(reason) {}

  FileState state() const { return state_; }

  /// The message without the file and without a judgement on it.
  const std::string& reason() const { return reason_; }

 private:
  FileState state_;
  std::string reason_;
};

/// Writes a model file: an archive that begins with the tool, so that a host loads that with
///
///     std::ifstream stream(path, std::ios::binary);
///     vxInputArchive archive(stream);
///     archive || tool;
///
/// and goes on with the wide string "vxclss model", a version byte 0, the measurement names and the
/// category names (vectors of wide strings). Throws what the archive throws.
void writeModel(Model& model, std::ostream& stream);

/// Writes a model file to `file` and commits it. Throws InputError if it can't be written, and
/// what the archive throws.
void saveModel(Model& model, OutputFile& file);

/// Reads a model file, ready to run. `name` stands for the stream in messages. Throws
/// ModelFileError unless the stream is one from its first byte to its last; InputError if it can't
/// be opened.
Model readModel(std::istream& stream, const std::string& name);
Model readModel(const std::string& path);

}  // namespace cli

#endif  // TOOLS_MODEL_FILE_H_
