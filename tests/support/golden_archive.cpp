// SPDX-License-Identifier: MIT
#include "tests/support/golden_archive.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/support/archive_helpers.h"

namespace {

// "vxClassifierDefs::BadIndex" is in vxClassifierDefs-BadIndex.hex.
std::string pathOf(std::string className) {
  const std::size_t colons = className.find("::");
  if (colons != std::string::npos) className.replace(colons, 2, "-");
  return std::string(VXCLSS_TEST_DATA) + "/archives/" + className + ".hex";
}

std::vector<std::string> linesOf(const std::string& className) {
  std::ifstream file(pathOf(className));
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

bool isHead(const std::string& line) { return !line.empty() && line.front() == '['; }
std::string head(const std::string& sample) { return "[" + sample + "]"; }

/// The bytes of a line, and its note.
std::string bytesOf(const std::string& line) { return fromHex(line.substr(0, line.find('#'))); }
std::string noteOf(const std::string& line) {
  const std::size_t mark = line.find("# ");
  return mark == std::string::npos ? std::string() : line.substr(mark + 2);
}

}  // namespace

std::vector<GoldenArchive> goldenArchives(const std::string& className) {
  const std::string reportedAs = "reported as ";
  std::vector<GoldenArchive> archives;
  for (const std::string& line : linesOf(className)) {
    if (isHead(line)) {
      archives.push_back({line.substr(1, line.size() - 2), {}, {}});
    } else if (!archives.empty()) {
      GoldenArchive& archive = archives.back();
      const std::string note = noteOf(line);
      if (note.rfind("version", 0) == 0) {
        const std::size_t name = note.find(reportedAs);
        archive.versions.push_back(
            {archive.bytes.size(),
             name == std::string::npos ? std::string() : note.substr(name + reportedAs.size())});
      }
      archive.bytes += bytesOf(line);
    }
  }
  return archives;
}

GoldenArchive goldenArchive(const std::string& className, const std::string& sample) {
  for (const GoldenArchive& archive : goldenArchives(className)) {
    if (archive.sample == sample) return archive;
  }
  ADD_FAILURE() << "no " << head(sample) << " in " << pathOf(className);
  return {};
}

void updateGoldenArchive(const std::string& className, const std::string& sample,
                         const std::string& bytes) {
  if (std::getenv("VXCLSS_UPDATE_ARCHIVES") == nullptr) return;

  std::vector<std::string> lines = linesOf(className);
  auto line = std::find(lines.begin(), lines.end(), head(sample));
  if (line == lines.end()) {
    lines.push_back(head(sample));
    line = lines.end() - 1;
  }
  std::size_t done = 0;
  for (++line; line != lines.end() && !isHead(*line); ++line) {
    const std::string before = bytesOf(*line);
    const std::string piece = bytes.substr(std::min(done, bytes.size()), before.size());
    done += before.size();
    if (piece == before) continue;
    const std::size_t note = line->find('#');
    *line = toHex(piece) + (note == std::string::npos ? "" : "  " + line->substr(note));
  }
  constexpr std::size_t kLineBytes = 16;
  for (; done < bytes.size(); done += kLineBytes) {
    line = lines.insert(line, toHex(bytes.substr(done, kLineBytes))) + 1;
  }

  std::ofstream file(pathOf(className), std::ios::trunc);
  for (const std::string& text : lines) file << text << '\n';
}
