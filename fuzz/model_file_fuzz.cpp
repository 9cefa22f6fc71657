// SPDX-License-Identifier: MIT
// The command's model files: an InputError, or a model that runs and is written as it was read.

#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "fuzz/byte_streams.h"
#include "fuzz/runs.h"
#include "fuzz/target.h"
#include "tests/support/allocation_meter.h"
#include "tools/error.h"
#include "tools/model_file.h"
#include "tools/model_text.h"

namespace {

std::vector<fuzz::Token> tokensOfModel(const std::uint8_t* data, std::size_t size) {
  fuzz::TracedSource source(data, size);
  std::istream stream(&source);
  try {
    cli::readModel(stream, "input");
  } catch (const cli::InputError&) {
  }
  return source.tokens();
}

std::string written(cli::Model& model) {
  fuzz::ByteSink sink;
  std::ostream stream(&sink);
  cli::writeModel(model, stream);
  return std::move(sink.bytes);
}

}  // namespace

VX_FUZZ_TOKENS(model_file, tokensOfModel(data, size))

VX_FUZZ_TARGET(model_file) {
  fuzz::ByteSource source(data, size);
  std::istream stream(&source);
  const AllocationMeter meter;
  try {
    cli::Model model = cli::readModel(stream, "input");
    fuzz::demand(meter.bytes() <= 64 * size + 65536, "a model file allocates in proportion");
    fuzz::demand(source.consumed() == size, "a model file is read to its end");
    const std::string runs = fuzz::runs(model.tool, fuzz::Numbers(nullptr, 0));

    try {
      cli::modelText(model);
    } catch (const vxException&) {
      // Of a damaged model, which has nothing to tell; the command says so.
    }

    const std::string bytes = written(model);
    fuzz::ByteSource again(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::istream stored(&again);
    cli::Model copy = cli::readModel(stored, "copy");
    fuzz::demand(written(copy) == bytes, "a model is written as it was read");
    fuzz::demand(fuzz::runs(copy.tool, fuzz::Numbers(nullptr, 0)) == runs, "and runs as it did");
  } catch (const cli::InputError&) {
  }
}
