// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <vxclss/version.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <exception>
#include <new>
#include <string>

#include "tools/commands.h"
#include "tools/error.h"
#include "tools/exit_code.h"
#include "tools/stop.h"
#include "tools/text.h"

namespace cli {
namespace {

const char* const kFooter = R"(
Examples:
  vxclss compare iris.csv --label species
  vxclss evaluate iris.csv --label species
  vxclss train iris.csv --label species -o iris.model
  vxclss inspect iris.model
  vxclss run iris.model new.csv
  vxclss train --help

Data files are CSV in UTF-8. The first row names the columns, and columns are found by name. Numbers
have a decimal point, whatever the locale; an empty cell or "nan" is a measurement that could not be
taken; infinities are refused. Blanks around a cell don't count, lines without a character neither.

Exit codes:
  0     done; check: sound; diff: equal
  1     internal error; diff: different
  2     bad input or usage; diff: any error
  3     check: damaged
  4     check: not a model
  5     check: of a newer version
  130   stopped (Ctrl-C)
A failure is one line on standard error.)";

int fail(const Console& console, const std::string& text, int code) {
  console.err << "vxclss: " << printable(text) << std::endl;
  return code;
}

/// CLI11 gives help and version their own exceptions, and every kind of misuse an exit code.
int leave(const CLI::App& app, const CLI::ParseError& error, const Console& console) {
  if (error.get_exit_code() == 0) return app.exit(error, console.out, console.err);
  if (app.get_subcommands().empty() && !app.remaining().empty()) {
    return fail(console,
                fmt::format("no command {} (see vxclss --help)", shown(app.remaining().front())),
                kExitBadInput);
  }
  std::string command = "vxclss";
  for (const CLI::App* sub : app.get_subcommands()) command += " " + sub->get_name();
  return fail(console, fmt::format("{} (see {} --help)", error.what(), command), kExitBadInput);
}

int report(const vxException& error, const Console& console, int internalCode) {
  const auto* text = dynamic_cast<const vxExceptionWithString*>(&error);
  const bool refused = dynamic_cast<const vxClassifierDefs::Errors*>(&error) != nullptr;
  return fail(console,
              text != nullptr && !text->message().empty()
                  ? vfNarrow(text->message())
                  : fmt::format("internal error {:#x}", error.errorNumber()),
              refused ? kExitBadInput : internalCode);
}

/// What 1 means to whoever calls diff, an internal error must not mean.
int internalCode(const CLI::App& app) {
  return app.got_subcommand("diff") ? kExitBadInput : kExitInternal;
}

void addCommands(CLI::App& app, const Console& console, int& exitCode) {
  addTrain(app, console);
  addRun(app, console);
  addEvaluate(app, console);
  addCompare(app, console);
  addRetrain(app, console);
  addInspect(app, console);
  addCheck(app, console, exitCode);
  addDiff(app, console, exitCode);
  addTree(app, console);
  addRules(app, console);
  addGenerate(app, console);
  addCompletion(app, console);
  addManual(app, console);
}

void parse(CLI::App& app, int argc, const char* const* argv, const Console& console) {
  app.parse(argc, argv);
  if (!console.out.flush()) throw InputError("standard output: cannot be written");
}

}  // namespace

int runCommandLine(int argc, const char* const* argv, const Console& console) {
  CLI::App app("Classifies patterns: learns categories from labelled measurements, then decides.",
               "vxclss");
  app.set_version_flag("--version", "vxclss " VXCLSS_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);
  int exitCode = kExitDone;
  addCommands(app, console, exitCode);
  const StopSignals signals;
  try {
    parse(app, argc, argv, console);
  } catch (const CLI::ParseError& error) {
    return leave(app, error, console);
  } catch (const vxStopRequested&) {
    return fail(console, "stopped", kExitStopped);
  } catch (const vxException& error) {
    return report(error, console, internalCode(app));
  } catch (const InputError& error) {
    return fail(console, error.what(), kExitBadInput);
  } catch (const std::bad_alloc&) {
    return fail(console, "out of memory", internalCode(app));
  } catch (const std::exception& error) {
    return fail(console, error.what(), internalCode(app));
  }
  return exitCode;
}

}  // namespace cli
