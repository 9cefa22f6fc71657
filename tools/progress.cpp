// SPDX-License-Identifier: MIT
#include "tools/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace cli {
namespace {

constexpr double kPatience = 1.0;
constexpr double kRedraw = 0.1;
constexpr int kWidth = 30;

}  // namespace

double Progress::steadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

Progress::Progress(std::string what, double total, std::ostream* terminal, Clock clock)
    : what_(std::move(what)),
      total_(total),
      terminal_(total > 0.0 ? terminal : nullptr),
      clock_(std::move(clock)),
      nextDraw_(terminal_ != nullptr ? clock_() + kPatience : 0.0) {}

Progress::~Progress() {
  if (drawn_) *terminal_ << "\r\x1b[K" << std::flush;
}

void Progress::update(double done) {
  if (terminal_ == nullptr) return;
  const double now = clock_();
  if (now < nextDraw_) return;
  nextDraw_ = now + kRedraw;
  drawn_ = true;
  const double share = std::clamp(done / total_, 0.0, 1.0);
  const int full = static_cast<int>(share * kWidth);
  *terminal_ << fmt::format("\r{} [{:#<{}}{:.<{}}] {:3} %", what_, "", full, "", kWidth - full,
                            static_cast<int>(share * 100.0))
             << std::flush;
}

}  // namespace cli
