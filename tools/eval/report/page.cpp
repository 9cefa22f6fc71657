// SPDX-License-Identifier: MIT
#include "tools/eval/report/page.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "tools/eval/report/html.h"
#include "tools/eval/report/mark.h"

namespace eval {
namespace {

/// The number that jsonNumber() told.
double numberOf(const nlohmann::ordered_json& value) {
  if (value.is_number()) return value.get<double>();
  const auto text = value.get<std::string>();
  if (text == "nan") return std::nan("");
  return text == "inf" ? HUGE_VAL : -HUGE_VAL;
}

}  // namespace

std::string Page::category(long label, std::size_t most) const {
  return escaped(clipped(input.data.categories.at(static_cast<std::size_t>(label)), most));
}

std::string Page::measurement(long index, std::size_t most) const {
  return escaped(clipped(input.data.measurements.at(static_cast<std::size_t>(index)), most));
}

std::string Page::rowOf(const Record& record) const {
  return fmt::format("{}", input.data.rows.at(record.pattern));
}

std::string Page::colour(long label) { return fmt::format("c{}", label % kColours); }

std::string Page::tag(long label, std::size_t most) const {
  return fmt::format("<span class=\"tag\">{} {}</span>", markPicture(label), category(label, most));
}

std::string Page::figure(const std::string& pointer,
                         const std::function<std::string(double)>& format) const {
  const nlohmann::ordered_json& value = json.at(nlohmann::ordered_json::json_pointer(pointer));
  const double number = numberOf(value);
  return fmt::format("<data data-path=\"{}\" value=\"{}\">{}</data>", pointer, number,
                     format(number));
}

std::string Page::count(const std::string& pointer) const {
  return figure(pointer, [](double value) { return fmt::format("{:.0f}", value); });
}

std::string section(const std::string& id, const std::string& title, const std::string& lead,
                    const std::string& body) {
  return fmt::format("<section id=\"{}\">\n<h2>{}</h2>\n<p class=\"lead\">{}</p>\n{}</section>\n",
                     id, title, lead, body);
}

std::string choiceButtons(const std::string& group, const std::vector<Choice>& choices) {
  std::string text;
  for (const Choice& choice : choices) {
    text += fmt::format("<input type=\"radio\" class=\"choice\" name=\"{}\" id=\"{}\"{}>\n", group,
                        choice.id, &choice == &choices.front() ? " checked" : "");
  }
  return text;
}

std::string choiceLabels(const std::vector<Choice>& choices) {
  std::string text = "<div class=\"choices\">";
  for (const Choice& choice : choices) {
    text += fmt::format("<label for=\"{}\">{}</label>\n", choice.id, choice.label);
  }
  return text + "</div>\n";
}

std::string choiceStyle(const std::vector<Choice>& choices) {
  std::string text = "<style>\n";
  for (const Choice& choice : choices) {
    text += fmt::format(
        "#{0}:not(:checked) ~ * {1} {{ display: none }}\n"
        "#{0}:checked ~ * label[for={0}] {{ background: var(--chosen); color: var(--on-chosen); border-color: var(--accent) }}\n"
        "#{0}:focus-visible ~ * label[for={0}] {{ outline: 2px solid var(--ink) }}\n",
        choice.id, choice.shows);
  }
  return text + "</style>\n";
}

}  // namespace eval
