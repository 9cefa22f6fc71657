// SPDX-License-Identifier: MIT
// Ends long operations when the stop button is pressed.
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <atomic>
#include <iostream>
#include <thread>

std::atomic<bool> stop{false};  // raised by a signal handler, a button, another thread

bool stopIsRaised(void*) { return stop; }

int main() try {
  vxClassifierDataProviderMemory data;
  for (int i = 0; i < 1000; ++i) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({0.1 * i}, {})),
                 i < 500 ? 0 : 1);
  }
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsKNN(3));
  vxClassifierResult result;

  vfSetAttentionHandler(&stopIsRaised, nullptr);
  std::thread button([] { stop = true; });
  try {
    for (;;) tool.run(vxFeaturePattern({1.0}, {}), result);  // until the button is pressed
  } catch (const vxStopRequested&) {
    std::cout << "stopped\n";
  }
  button.join();
  vfSetAttentionHandler(nullptr, nullptr);

  tool.run(vxFeaturePattern({99.0}, {}), result);  // a stopped tool is as good as before
  std::cout << "category " << result.categoryResults().front().categoryLabel() << "\n";
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
