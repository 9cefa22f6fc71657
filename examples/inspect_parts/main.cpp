// SPDX-License-Identifier: MIT
// Trains on pictures of parts on a belt, inspects others, and shows what came of it.
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "examples/inspect_parts/annotation.h"
#include "examples/inspect_parts/belt.h"
#include "examples/inspect_parts/inspection.h"
#include "examples/inspect_parts/measuring.h"
#include "examples/inspect_parts/parts_csv.h"
#include "examples/inspect_parts/sighting.h"
#include "examples/inspect_parts/tally.h"

namespace parts {
namespace {

constexpr BeltContent kTrainingBelt{16, 0, 1, 2};
constexpr BeltContent kInspectedBelt{17, 4, 2, 2};

const char* const kFooter = R"(
Files written to the folder:
  belt.png       the first inspected picture as the camera sees it
  inspected.png  the same, with what was decided
  training.csv   the measured parts of the training, for vxclss train and vxclss evaluate
  inspected.csv  those of the inspection, with the decisions

The same options give the same files. Exit codes: 0 done, 1 failed, 2 bad usage.)";

struct Options {
  long seed = 8;
  int numTraining = 20;
  int numInspected = 10;
  std::filesystem::path folder = ".";
};

/// The inspected pictures follow those of the training.
BeltPicture pictureOf(const Options& options, int number) {
  return renderBelt(number < options.numTraining ? kTrainingBelt : kInspectedBelt,
                    options.seed * 10000 + number);
}

vxClassifierDataProviderMemory trainingData(const Options& options) {
  vxClassifierDataProviderMemory data;
  PartsCsv csv(options.folder / "training.csv", false);
  for (int number = 0; number < options.numTraining; ++number) {
    for (const Sighting& sighting : lookAt(pictureOf(options, number))) {
      data.addData(sighting.blob.pattern, sighting.label());
      csv.add(number, sighting, nullptr);
    }
  }
  csv.write();
  return data;
}

void writePicture(const std::filesystem::path& path, const cv::Mat& picture) {
  if (!cv::imwrite(path.string(), picture, {cv::IMWRITE_PNG_COMPRESSION, 9})) {
    throw std::runtime_error(path.string() + ": cannot be written");
  }
}

Tally inspect(const Inspection& inspection, const Options& options) {
  Tally tally;
  PartsCsv csv(options.folder / "inspected.csv", true);
  for (int i = 0; i < options.numInspected; ++i) {
    const int number = options.numTraining + i;
    const BeltPicture belt = pictureOf(options, number);
    long numLost = 0;
    std::vector<Blob> blobs;
    std::vector<Decision> decisions;
    for (const Sighting& sighting : lookAt(belt, &numLost)) {
      blobs.push_back(sighting.blob);
      decisions.push_back(inspection.decide(*sighting.blob.pattern));
      tally.add(sighting, decisions.back());
      csv.add(number, sighting, &decisions.back());
    }
    tally.addLost(numLost);
    if (i > 0) continue;
    writePicture(options.folder / "belt.png", belt.grey);
    writePicture(options.folder / "inspected.png", annotated(belt.grey, blobs, decisions));
  }
  csv.write();
  return tally;
}

void run(const Options& options) {
  std::error_code error;
  std::filesystem::create_directories(options.folder, error);
  if (error) throw std::runtime_error(options.folder.string() + ": " + error.message());
  const Inspection inspection(trainingData(options));
  inspect(inspection, options).print(std::cout);
  std::cout << "\nwritten to " << options.folder.string()
            << ": inspected.png, belt.png, training.csv, inspected.csv" << std::endl;
  if (!std::cout) throw std::runtime_error("standard output: cannot be written");
}

int fail(const std::string& text, int code) {
  std::cerr << "inspect_parts: " << text << std::endl;
  return code;
}

}  // namespace
}  // namespace parts

int main(int argc, char** argv) try {
  parts::Options options;
  CLI::App app("Tells apart the parts that lie on a belt, and rejects what doesn't belong there.",
               "inspect_parts");
  app.add_option("-o,--output", options.folder, "folder for the files; made if there is none")
      ->capture_default_str();
  app.add_option("--seed", options.seed, "what the pictures follow from")
      ->check(CLI::Range(0L, 200000L))
      ->capture_default_str();
  app.add_option("--training", options.numTraining, "number of pictures to train on")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_option("--inspected", options.numInspected, "number of pictures to inspect")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.footer(parts::kFooter);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    return parts::fail(std::string(error.what()) + " (see inspect_parts --help)", 2);
  }
  parts::run(options);
  return 0;
} catch (const vxExceptionWithString& error) {
  return parts::fail(vfNarrow(error.message()), 1);
} catch (const std::exception& error) {
  return parts::fail(error.what(), 1);
}
