// SPDX-License-Identifier: MIT
#include "tools/model_file.h"

#include <fmt/format.h>
#include <vxfoundation/vxfoundation.h>

#include <vector>

#include "tools/text.h"

namespace cli {
namespace {

const wchar_t* const kTag = L"vxclss model";

std::vector<std::wstring> wideNames(const std::vector<std::string>& names) {
  std::vector<std::wstring> wide;
  wide.reserve(names.size());
  for (const std::string& name : names) wide.push_back(widened(name));
  return wide;
}

std::vector<std::string> readNames(vxArchive& archive) {
  std::vector<std::wstring> wide;
  archive || wide;
  std::vector<std::string> names;
  names.reserve(wide.size());
  for (const std::wstring& name : wide) names.push_back(vfNarrow(name));
  return names;
}

/// False where anything but the tag stands behind the tool.
bool readFields(vxArchive& archive, std::istream& stream, Model& model, unsigned char& version) {
  archive || model.tool;
  if (stream.peek() == std::istream::traits_type::eof()) return false;
  std::wstring tag;
  archive || tag;
  if (tag != kTag) return false;
  archive || version;
  if (version != kModelFileVersion) return true;
  model.names.measurements = readNames(archive);
  model.names.categories = readNames(archive);
  return true;
}

/// An archive does not hold everything that a classifier runs with (a nearest-neighbour one comes
/// back with k = 1), but it holds the parameters, and retraining with them brings the rest back.
void restoreParameters(vxClassifierTool& tool) {
  vxPtrHandle_const<vxClassifierTrainParams> params;
  try {
    params = tool.trainParams();
  } catch (const vxClassifierDefs::BadMethod&) {
    return;  // trained without parameters, so that there is nothing to restore
  }
  tool.retrain(*params, nullptr, 0);
}

[[noreturn]] void refuse(FileState state, const std::string& name, const std::string& reason) {
  throw ModelFileError(state, reason, fmt::format("{}: not a vxclss model file: {}", name, reason));
}

}  // namespace

void writeModel(Model& model, std::ostream& stream) {
  std::wstring tag = kTag;
  unsigned char version = kModelFileVersion;
  std::vector<std::wstring> measurements = wideNames(model.names.measurements);
  std::vector<std::wstring> categories = wideNames(model.names.categories);
  vxOutputArchive archive(stream);
  archive || model.tool || tag || version || measurements || categories;
}

void saveModel(Model& model, OutputFile& file) {
  try {
    writeModel(model, file.stream());
  } catch (const vxArchive::StreamFailure&) {
    // commit() says why.
  }
  file.commit();
}

Model readModel(const std::string& path) { return readModel(*openInput(path), path); }

Model readModel(std::istream& stream, const std::string& name) {
  Model model;
  unsigned char version = kModelFileVersion;
  try {
    vxInputArchive archive(stream);
    if (!readFields(archive, stream, model, version)) {
      refuse(FileState::kNotAModel, name, "a tool, but no names behind it");
    }
    if (version != kModelFileVersion) {
      const std::string reason = fmt::format("a model file of version {}; only version {} is known",
                                             version, kModelFileVersion);
      throw ModelFileError(FileState::kNewer, reason, name + ": " + reason);
    }
    if (!model.tool.isTrained()) refuse(FileState::kNotAModel, name, "its tool is not trained");
    restoreParameters(model.tool);
  } catch (const vxStopRequested&) {
    throw;
  } catch (const vxArchive::UnknownVersion&) {
    refuse(FileState::kNewer, name, "unknown version of a part of it");
  } catch (const vxExceptionWithString& error) {
    refuse(FileState::kDamaged, name, vfNarrow(error.message()));
  } catch (const vxException&) {
    refuse(FileState::kDamaged, name, "its parts don't fit each other");
  }
  if (stream.peek() != std::istream::traits_type::eof()) {
    refuse(FileState::kDamaged, name, "bytes after its end");
  }
  return model;
}

}  // namespace cli
