// SPDX-License-Identifier: MIT
#include "tools/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/tools/scratch.h"

namespace {

namespace fs = std::filesystem;
using cli::OutputFile;
using Names = std::vector<std::string>;

void write(const std::string& path, const std::string& text) {
  OutputFile file(path);
  file.stream() << text;
  file.commit();
}

mode_t modeOf(const std::string& path) {
  struct stat status = {};
  stat(path.c_str(), &status);
  return status.st_mode & 07777;
}

TEST(OutputFileTest, AppearsWithItsCommit) {
  const Scratch scratch;
  OutputFile file(scratch.path("f"));
  file.stream() << "text";
  EXPECT_FALSE(fs::exists(scratch.path("f")));
  file.commit();
  EXPECT_EQ(contentOf(scratch.path("f")), "text");
  EXPECT_EQ(scratch.names(), Names{"f"});
}

TEST(OutputFileTest, WithoutACommitLeavesTheOldFileAndNothingElse) {
  const Scratch scratch;
  const std::string path = scratch.file("f", "old");
  { OutputFile(path).stream() << "new"; }
  EXPECT_EQ(contentOf(path), "old");
  EXPECT_EQ(scratch.names(), Names{"f"});
}

TEST(OutputFileTest, KeepsThePermissionsOfTheFileItReplaces) {
  const Scratch scratch;
  const std::string path = scratch.file("f", "old");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  write(path, "new");
  EXPECT_EQ(contentOf(path), "new");
  EXPECT_EQ(modeOf(path), 0640u);
}

TEST(OutputFileTest, GivesANewFileTheUsualPermissions) {
  const Scratch scratch;
  const mode_t old = umask(027);
  write(scratch.path("f"), "text");
  umask(old);
  EXPECT_EQ(modeOf(scratch.path("f")), 0640u);
}

TEST(OutputFileTest, ReplacesTheFileBehindALink) {
  const Scratch scratch;
  scratch.file("f", "old");
  fs::create_symlink("f", scratch.path("link"));
  write(scratch.path("link"), "new");
  EXPECT_TRUE(fs::is_symlink(scratch.path("link")));
  EXPECT_EQ(contentOf(scratch.path("f")), "new");
}

TEST(OutputFileTest, TwoAtOnceKeepApart) {
  const Scratch scratch;
  OutputFile first(scratch.path("f"));
  OutputFile second(scratch.path("f"));
  first.stream() << "first";
  second.stream() << "second";
  second.commit();
  first.commit();
  EXPECT_EQ(contentOf(scratch.path("f")), "first");
  EXPECT_EQ(scratch.names(), Names{"f"});
}

TEST(OutputFileTest, RefusesWhereNoFileCanBe) {
  const Scratch scratch;
  fs::create_directory(scratch.path("d"));
  scratch.file("f", "text");
  ASSERT_EQ(mkfifo(scratch.path("pipe").c_str(), 0600), 0);
  const struct {
    const char* name;
    const char* refusal;
  } table[] = {
      {"d", "d: is a directory"},
      {"pipe", "pipe: is not a regular file"},
      {"none/f", "none/f: No such file or directory"},
      {"f/g", "f/g: Not a directory"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(scratch.withoutPath(refusal([&] { OutputFile file(scratch.path(row.name)); })),
              row.refusal);
  }
  EXPECT_EQ(refusal([] { OutputFile file(""); }), "the output file has no name");
  EXPECT_EQ(scratch.names(), (Names{"d", "f", "pipe"}));
}

TEST(OutputFileTest, RefusesToCommitWhatWasCutShort) {
  const Scratch scratch;
  const std::string path = scratch.file("f", "old");
  for (const std::size_t size : {101u, 1000000u}) {  // found at the flush, and before it
    SCOPED_TRACE(size);
    const FileSizeLimit limit(100);
    EXPECT_EQ(scratch.withoutPath(refusal([&] { write(path, std::string(size, 'x')); })),
              "f: File too large");
    EXPECT_EQ(contentOf(path), "old");
    EXPECT_EQ(scratch.names(), Names{"f"});
  }
}

TEST(OutputFileTest, RefusesToCommitAStreamThatFailed) {
  const Scratch scratch;
  OutputFile file(scratch.path("f"));
  file.stream().setstate(std::ios::badbit);
  EXPECT_EQ(scratch.withoutPath(refusal([&] { file.commit(); })), "f: Input/output error");
  EXPECT_EQ(scratch.names(), Names{});
}

}  // namespace
