// SPDX-License-Identifier: MIT
// Classifies on four threads with one tool, and changes the model while they run.
#include <vxclss/vxclss.h>

#include <atomic>
#include <iostream>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using Tool = std::shared_ptr<const vxClassifierTool>;

Tool vfTrained(double limit) {
  vxClassifierDataProviderMemory data;
  for (const double x : {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0}) {
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x}, {})),
                 x < limit ? 0 : 1);
  }
  const auto tool = std::make_shared<vxClassifierTool>();
  tool->train(data, vxClassifierTrainParamsKNN(1));
  return tool;
}

/// The model in service. Whoever holds a tool keeps it alive, so a change waits for nobody.
class Service {
 public:
  explicit Service(Tool tool) : tool_(std::move(tool)) {}
  Tool tool() const {
    const std::lock_guard lock(mutex_);
    return tool_;
  }
  void change(Tool tool) {
    const std::lock_guard lock(mutex_);
    tool_.swap(tool);
  }

 private:
  mutable std::mutex mutex_;
  Tool tool_;
};

int main() try {
  Service service(vfTrained(4.5));
  std::atomic<int> refused{0};
  const auto classify = [&](double x, long& label) {
    try {  // an error that leaves a thread's function would end the program
      for (int part = 0; part < 1000; ++part) {
        vxClassifierResult result;  // each thread needs its own
        service.tool()->run(vxFeaturePattern({x}, {}), result);
        label = result.categoryResults().front().categoryLabel();
      }
    } catch (const vxException&) {
      ++refused;
    }
  };
  std::vector<long> labels(4, -1);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] { classify(2.0 * i + 1.2, labels[static_cast<std::size_t>(i)]); });
  }
  service.change(vfTrained(4.0));
  for (std::thread& thread : threads) thread.join();
  for (const long label : labels) std::cout << "category " << label << "\n";
  std::cout << refused << " refused\n";
  return 0;
} catch (const vxExceptionWithString& error) {
  std::wcerr << error.message() << "\n";
  return 1;
}
