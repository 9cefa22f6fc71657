// SPDX-License-Identifier: MIT
// Catches everything that the libraries, a host's own classes and the C++ library throw.
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <exception>
#include <iostream>
#include <stdexcept>

class Unplugged : public vxException {
 public:
  long errorNumber() const override { return 7; }
  void suicideAndRethrow() override { vx_suicideAndRethrow(this); }
};

template <class Step>
void vfTry(const Step& step) try {
  step();
} catch (const vxExceptionWithString& error) {         // every error of the two libraries
  std::cout << vfNarrow(error.message(true)) << "\n";  // 0x10004200: K must be >= 1
} catch (const vxException& error) {                   // a host's own kind, without a text
  std::cout << "error " << error.errorNumber() << "\n";
} catch (const std::exception& error) {  // bad_alloc, and what a stream throws
  std::cout << error.what() << "\n";
}

int main() {
  vfTry([] { vxClassifierTrainParamsKNN(0); });
  vfTry([] { throw Unplugged(); });
  vfTry([] { throw std::runtime_error("no disk"); });
  return 0;
}
