// SPDX-License-Identifier: MIT
#include "bench/peers/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace peers {

namespace {

std::string timeText(double seconds) {
  if (seconds < 1e-6) return fmt::format("{:.3g} ns", seconds * 1e9);
  if (seconds < 1e-3) return fmt::format("{:.3g} us", seconds * 1e6);
  return fmt::format("{:.3g} ms", seconds * 1e3);
}

std::string timesText(const Times& times) {
  std::string text;
  for (const auto& [name, seconds] : times) {
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, timeText(seconds));
  }
  return text;
}

std::string goalText(const Goal& goal) {
  if (goal.side == Goal::kNone) return "";
  const char* sign = goal.side == Goal::kAtMost ? "<=" : ">=";
  if (goal.wide == goal.plain) return fmt::format("{} {:g}", sign, goal.wide);
  return fmt::format("{} {:g} ({:g})", sign, goal.wide, goal.plain);
}

}  // namespace

bool Report::hasWideRegisters() {
#ifdef VXCLSS_NO_SIMD
  return false;
#else
  return true;
#endif
}

void Report::fact(const std::string& name, const std::string& value) {
  facts_.emplace_back(name, value);
}

void Report::times(const std::string& work, const Times& times) {
  std::cerr << work << ": " << timesText(times) << std::endl;
  times_.emplace_back(work, times);
}

void Report::figure(const std::string& group, const std::string& what, double value,
                    const std::string& unit, const Goal& goal) {
  figures_.push_back({group, what, unit, value, goal});
}

void Report::point(const std::string& plot, double x, const Times& times) {
  std::cerr << plot << ", " << x << ": " << timesText(times) << std::endl;
  points_.push_back({plot, x, times});
}

void Report::answers(const std::string& who, long compared, long different) {
  const auto known = std::find_if(answers_.begin(), answers_.end(),
                                  [&](const Answers& answers) { return answers.who == who; });
  if (known == answers_.end()) {
    answers_.push_back({who, compared, different});
  } else {
    known->compared += compared;
    known->different += different;
  }
}

void Report::wrong(const std::string& what) {
  std::cerr << "WRONG: " << what << std::endl;
  wrong_.push_back(what);
}

void Report::print(std::ostream& out) const {
  for (const auto& [name, value] : facts_) out << fmt::format("{}: {}\n", name, value);
  std::string group;
  for (const Figure& figure : figures_) {
    if (figure.group != group) out << fmt::format("\n{}\n", figure.group);
    group = figure.group;
    const std::string value =
        fmt::format("{:.3g}{}{}", figure.value, figure.unit.empty() ? "" : " ", figure.unit);
    out << fmt::format("  {:<68} {:>12}  {:<14} {}\n", figure.what, value, goalText(figure.goal),
                       state_(figure));
  }
  out << "\nanswers that differ from the definition's\n";
  long equal = 0;
  for (const Answers& answers : answers_) {
    if (answers.different == 0 && answers.who.find("vxclss") == std::string::npos) {
      equal += answers.compared;
      continue;
    }
    out << fmt::format("  {:<68} {:>6} of {}\n", answers.who, answers.different, answers.compared);
  }
  out << fmt::format("  {:<68} {:>6} of {}\n", "the others, everything else", 0, equal);
  for (const std::string& what : wrong_) out << "wrong: " << what << "\n";
}

void Report::writeJson(const std::string& path) const {
  using Json = nlohmann::ordered_json;
  Json json;
  json["wide"] = hasWideRegisters();
  for (const auto& [name, value] : facts_) json["facts"][name] = value;
  for (const auto& [work, times] : times_) json["times"][work] = times;
  for (const Figure& figure : figures_) {
    Json line = {{"group", figure.group}, {"what", figure.what}, {"value", figure.value}};
    line["unit"] = figure.unit;
    line["goal"] = goalText(figure.goal);
    line["state"] = state_(figure);
    json["figures"].push_back(line);
  }
  for (const Point& point : points_) {
    json["plots"][point.plot].push_back({{"x", point.x}, {"times", point.times}});
  }
  for (const Answers& answers : answers_) {
    json["answers"].push_back(
        {{"who", answers.who}, {"compared", answers.compared}, {"different", answers.different}});
  }
  json["wrong"] = wrong_;
  std::ofstream file(path);
  file << json.dump(1) << "\n";
  if (!file.flush()) throw std::runtime_error("can't write " + path);
}

double Report::bound_(const Goal& goal) { return hasWideRegisters() ? goal.wide : goal.plain; }

std::string Report::state_(const Figure& figure) {
  const double bound = bound_(figure.goal);
  if (figure.goal.side == Goal::kNone) return "";
  const bool isReached =
      figure.goal.side == Goal::kAtMost ? figure.value <= bound : figure.value >= bound;
  return isReached ? "reached" : "not reached";
}

}  // namespace peers
