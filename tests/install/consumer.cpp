// SPDX-License-Identifier: MIT
// A host: trains, archives and runs a tool, with a class of its own that travels through archives.
#include <cmath>
#include <iostream>
#include <sstream>
#include <typeinfo>

#include "vxclss/vxclss.h"
#include "vxfoundation/vxfoundation.h"

namespace {

// The largest difference of any measurement.
class MaximumMetric : public vxPatternDistanceMetric {
 public:
  double distance(const vxFeaturePattern& a, const vxFeaturePattern& b) const override {
    double largest = 0.0;
    for (long i = 0; i < a.numMeasurements(); ++i) {
      largest = std::fmax(largest,
                          std::fabs(a.featureMeasurement(i, true) - b.featureMeasurement(i, true)));
    }
    return largest;
  }
  vxPtrHandle<vxPatternDistanceMetric> clone() const override {
    return vxPtrHandle<vxPatternDistanceMetric>(new MaximumMetric(*this));
  }
  bool isEquivalent(const vxPatternDistanceMetric& other) const override {
    return typeid(other) == typeid(MaximumMetric);
  }

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(MaximumMetric)}) {
      vxPatternDistanceMetric::dispatchSerialize(archive);
    }
  }

 private:
  static vxPersistent* make() { return new MaximumMetric; }
  static const vx_Instantiator sExemplar;
};

const vx_Instantiator MaximumMetric::sExemplar(typeid(MaximumMetric), &MaximumMetric::make);

bool check(bool holds, const char* what) {
  if (!holds) std::cerr << "consumer: " << what << "\n";
  return holds;
}

bool useLibrary() {
  vxClassifierDataProviderMemory data;
  for (long i = 0; i < 6; ++i) {
    const double x = static_cast<double>(i < 3 ? i : 10 * i);
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x, -x}, {})),
                 i < 3 ? 7 : 9);
  }
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsKNN(3, MaximumMetric(), vxClassifierCosts(1.0)));

  std::stringstream stream;
  vxOutputArchive output(stream);
  output || tool;
  vxClassifierTool loaded;
  vxInputArchive input(stream);
  input || loaded;

  vxClassifierResult result;
  loaded.run(vxFeaturePattern({45.0, -45.0}, {}), result);
  bool passed =
      check(loaded == tool, "a loaded tool differs from the stored one") &&
      check(result.categoryResults().at(0).categoryLabel() == 9, "the wrong category is cheapest");
  try {
    vxClassifierTrainParamsKNN(0);
    passed = check(false, "k = 0 was accepted");
  } catch (const vxClassifierDefs::BadParams& error) {
    passed = check(error.message() == L"K must be >= 1", "the wrong message") && passed;
  }
  return passed;
}

}  // namespace

int main() {
  try {
    if (!useLibrary()) return 1;
  } catch (const vxException& error) {
    std::cerr << "consumer: error " << std::hex << error.errorNumber() << "\n";
    return 1;
  }
  std::cout << VXCLSS_VERSION << "\n";
  return 0;
}
