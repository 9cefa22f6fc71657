// SPDX-License-Identifier: MIT
#include "tools/manual.h"

#include <fmt/format.h>

#include <cctype>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tools/command_words.h"

namespace cli {
namespace {

/// A line of text as roff takes it literally: hyphens stay hyphens that can be copied.
std::string literal(const std::string& text) {
  std::string out;
  if (!text.empty() && (text[0] == '.' || text[0] == '\'')) out = "\\&";
  for (const char c : text) {
    switch (c) {
      case '\\':
        out += "\\e";
        break;
      case '-':
        out += "\\-";
        break;
      case '\'':
        out += "\\(aq";
        break;
      case '^':
        out += "\\(ha";
        break;
      case '~':
        out += "\\(ti";
        break;
      case '`':
        out += "\\(ga";
        break;
      default:
        out += c;
    }
  }
  return out;
}

/// As an argument of a macro.
std::string argument(const std::string& text) {
  std::string out = "\"";
  for (const char c : literal(text)) out += c == '"' ? std::string("\\(dq") : std::string(1, c);
  return out + "\"";
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// The text of a help footer: lines that begin with blanks keep their layout, others are filled.
std::string body(const std::vector<std::string>& lines) {
  std::string text;
  bool laidOut = false;
  bool newParagraph = true;
  for (const std::string& line : lines) {
    if (line.empty()) {
      newParagraph = true;
      continue;
    }
    const bool indented = line[0] == ' ';
    if (laidOut && !indented) text += ".EE\n";
    if (newParagraph || (laidOut && !indented)) text += ".PP\n";
    if (indented && (!laidOut || newParagraph)) {
      if (laidOut) text += ".EE\n";
      text += ".EX\n";
    }
    laidOut = indented;
    newParagraph = false;
    text += literal(line) + "\n";
  }
  return laidOut ? text + ".EE\n" : text;
}

/// The same right under a heading, where a paragraph needs no beginning.
std::string firstBody(const std::vector<std::string>& lines) {
  const std::string text = body(lines);
  const std::string paragraph = ".PP\n";
  return text.compare(0, paragraph.size(), paragraph) == 0 ? text.substr(paragraph.size()) : text;
}

std::string optionEntry(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : typedNames(option))
    names.push_back("\\fB" + literal(name) + "\\fR");
  std::string head = option.get_positional() ? "\\fI" + literal(option.get_single_name()) + "\\fR"
                                             : fmt::format("{}", fmt::join(names, ", "));
  if (!option.get_positional() && valueWords(option).kind != ValueWords::kNone) {
    head += " \\fI" + literal(option.get_type_name()) + "\\fR";
  }
  if (option.get_required() && !option.get_positional()) head += " (required)";
  return ".TP\n" + head + "\n" + literal(option.get_description()) + "\n";
}

std::string optionList(const CLI::App& command) {
  std::string text;
  for (const CLI::Option* positional : positionalsOf(command)) text += optionEntry(*positional);
  for (const std::string& group : command.get_groups()) {
    std::string entries;
    for (const CLI::Option* option : optionsOf(command)) {
      if (option->get_group() == group && option != command.get_help_ptr()) {
        entries += optionEntry(*option);
      }
    }
    if (entries.empty() || group.empty()) continue;
    text += ".PP\n" + literal(group) + ":\n" + entries;
  }
  return text;
}

std::string commandSection(const CLI::App& command) {
  std::string text = ".SS " + argument("vxclss " + synopsisOf(command)) + "\n";
  text += literal(command.get_description()) + ".\n";
  if (!command.get_aliases().empty()) {
    text += literal(fmt::format("Also: {}.", fmt::join(command.get_aliases(), ", "))) + "\n";
  }
  return text + optionList(command) + body(linesOf(command.get_footer()));
}

/// Paragraphs of the main footer: those that begin with a title of their own, and the others.
struct Footer {
  std::vector<std::string> examples;
  std::vector<std::string> exitCodes;
  std::vector<std::string> others;

  explicit Footer(const std::string& text) {
    std::vector<std::string>* target = &others;
    for (const std::string& line : linesOf(text)) {
      if (line.empty()) target = &others;
      if (line == "Examples:") {
        target = &examples;
      } else if (line == "Exit codes:") {
        target = &exitCodes;
      } else {
        target->push_back(line);
      }
    }
  }
};

/// "classifies patterns: ...", as a line under NAME begins.
std::string nameLine(std::string description) {
  if (!description.empty() && description.back() == '.') description.pop_back();
  if (!description.empty()) {
    description[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(description[0])));
  }
  return "vxclss \\- " + literal(description) + "\n";
}

}  // namespace

std::string manualPage(const CLI::App& app, const std::string& version) {
  const Footer footer(app.get_footer());
  std::string commands;
  std::string list;
  for (const CLI::App* command : commandsOf(app)) {
    list += fmt::format(".TP\n\\fB{}\\fR\n{}\n", literal(command->get_name()),
                        literal(command->get_description()));
    commands += commandSection(*command);
  }
  return fmt::format(
      ".TH VXCLSS 1 \"\" {} \"User Commands\"\n"
      ".SH NAME\n{}"
      ".SH SYNOPSIS\n\\fBvxclss\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR] \\fIARGUMENTS\\fR\n.PP\n"
      "\\fBvxclss\\fR \\fICOMMAND\\fR \\fB\\-\\-help\\fR\n.PP\n"
      "\\fBvxclss\\fR \\fB\\-\\-version\\fR\n"
      ".SH DESCRIPTION\n{}\n{}.SH COMMANDS\n{}.SH \"COMMANDS IN DETAIL\"\n{}"
      ".SH \"EXIT STATUS\"\n{}.SH EXAMPLES\n{}",
      argument(version), nameLine(app.get_description()), literal(app.get_description()),
      body(footer.others), list, commands, firstBody(footer.exitCodes), firstBody(footer.examples));
}

}  // namespace cli
