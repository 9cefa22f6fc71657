// SPDX-License-Identifier: MIT
#include "tools/row_output.h"

#include <cstddef>

#include "tools/error.h"
#include "tools/json_text.h"
#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/stop.h"

namespace cli {
namespace {

constexpr std::size_t kFlushBytes = 1 << 16;

}  // namespace

RowOutput::RowOutput(CLI::App& command, const Console& console) : console_(console) {
  command.add_option("DATA.csv", data_, "Patterns, one a row, under a row of column names")
      ->type_name("")
      ->required();
  command.add_option("-o,--output", output_, "File to write instead of standard output")
      ->type_name("FILE");
  addJsonFlag(command, json_, "Write a JSON object a line instead of CSV");
}

void RowOutput::write(Table& table, const std::string& header,
                      const std::function<void(std::string&)>& append) const {
  if (!output_) {
    writeRows_(table, header, console_.out, append);
    return;
  }
  OutputFile file(*output_);
  writeRows_(table, header, file.stream(), append);
  file.commit();
}

void RowOutput::writeRows_(Table& table, const std::string& header, std::ostream& out,
                           const std::function<void(std::string&)>& append) const {
  // Lines that scroll past tell enough.
  const bool quiet = !output_ && console_.outIsTerminal;
  Progress progress("classifying", table.size(), quiet ? nullptr : console_.bar());
  std::string text = json_ ? "" : header;
  if (!table.next()) throw InputError(data_ + ": no rows after the column names");
  do {
    throwIfStopped();
    append(text);
    progress.update(table.bytesRead());
    if (text.size() >= kFlushBytes) {
      out << text;
      text.clear();
    }
  } while (out && table.next());
  out << text << std::flush;
}

}  // namespace cli
