// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/tools/command_line.h"

namespace {

/// What a command prints.
Outcome shell(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return {-1, {}, {}};
  std::string out;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) out.push_back(static_cast<char>(c));
  return {WEXITSTATUS(pclose(pipe)), out, {}};
}

bool isInstalled(const std::string& program) {
  return shell("command -v " + program + " >/dev/null 2>&1").code == 0;
}

class CompletionTest : public CommandLineTest {
 protected:
  CompletionTest() {
    EXPECT_EQ(run({"completion", "bash", "-o", "bash.out"}).err, "");
    EXPECT_EQ(run({"completion", "zsh", "-o", "zsh.out"}).err, "");
  }

  /// What bash offers for the last word of a command line, sorted.
  Names offered(const std::string& words) const {
    const std::string script = scratch_.file(
        "try.out", "cd '" + scratch_.path("") + "'\nsource ./bash.out\nCOMP_WORDS=(" + words +
                       ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_vxclss\n"
                       "printf '%s\\n' \"${COMPREPLY[@]}\"\n");
    const Outcome outcome = shell("bash --norc --noprofile -u " + script + " 2>&1");
    EXPECT_EQ(outcome.code, 0);
    Names names;
    std::istringstream stream(outcome.out);
    for (std::string line; std::getline(stream, line);) {
      if (!line.empty()) names.push_back(line);
    }
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(CompletionTest, BashOffersCommandsAndOptions) {
  if (!isInstalled("bash")) GTEST_SKIP() << "no bash";
  EXPECT_EQ(offered("vxclss tr"), (Names{"train", "tree"}));
  EXPECT_EQ(offered("vxclss --v"), Names{"--version"});
  EXPECT_EQ(offered("vxclss run --a"), Names{"--all"});
  EXPECT_EQ(offered("vxclss train d.csv --la"), Names{"--label"});
  EXPECT_EQ(offered("vxclss show m.model --"), (Names{"--help", "--json"}));
  EXPECT_EQ(offered("vxclss check m.model ''"), (Names{"--help", "--json"}));
  EXPECT_EQ(offered("vxclss nonsense ''"), Names());
}

TEST_F(CompletionTest, BashOffersValues) {
  if (!isInstalled("bash")) GTEST_SKIP() << "no bash";
  EXPECT_EQ(offered("vxclss train --method ''"), (Names{"bayes", "knn"}));
  EXPECT_EQ(offered("vxclss train --method = b"), Names{"bayes"});
  EXPECT_EQ(offered("vxclss train --method ="), (Names{"bayes", "knn"}));
  EXPECT_EQ(offered("vxclss completion z"), Names{"zsh"});
  EXPECT_EQ(offered("vxclss train --label ''"), Names());
}

TEST_F(CompletionTest, BashOffersTheFilesThatFitThePlace) {
  if (!isInstalled("bash")) GTEST_SKIP() << "no bash";
  scratch_.file("data one.csv", "");
  scratch_.file("data.json", "");
  scratch_.file("data.model", "");
  EXPECT_EQ(offered("vxclss train da"), Names{"data one.csv"});
  EXPECT_EQ(offered("vxclss rules da"), Names{"data.json"});
  EXPECT_EQ(offered("vxclss rules data.json da"), Names{"data one.csv"});
  EXPECT_EQ(offered("vxclss rules --threshold 0.5 data.json da"), Names{"data one.csv"});
  EXPECT_EQ(offered("vxclss run da"), (Names{"data one.csv", "data.json", "data.model"}));
  // Rather any file than none.
  EXPECT_EQ(offered("vxclss train data.j"), Names{"data.json"});
}

TEST_F(CompletionTest, CoversEveryCommandAndOption) {
  const std::string bash = contentOf(scratch_.path("bash.out"));
  const std::string zsh = contentOf(scratch_.path("zsh.out"));
  const std::string help = run({"--help"}).out;
  std::istringstream stream(help.substr(help.find("Subcommands:\n")));
  std::string line;
  std::getline(stream, line);
  int count = 0;
  for (; std::getline(stream, line) && !line.empty(); ++count) {
    const std::string command = line.substr(2, line.find_first_of(", ", 2) - 2);
    EXPECT_NE(bash.find("    " + command + ") options='--help"), std::string::npos) << command;
    EXPECT_NE(zsh.find("'" + command + ":"), std::string::npos) << command;
  }
  EXPECT_GE(count, 12);
}

TEST_F(CompletionTest, ZshReadsItsScript) {
  if (!isInstalled("zsh")) GTEST_SKIP() << "no zsh";
  const Outcome outcome =
      shell("zsh -f -c 'autoload -U compinit && compinit -D; source " +  // no file for later
            scratch_.path("zsh.out") + " && print -r -- $_comps[vxclss]' 2>&1");
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.out, "_vxclss\n");
}

TEST_F(CompletionTest, RefusesAnotherShell) {
  expectRefusals({
      {"no shell", {"completion"}, "bash|zsh is required (see vxclss completion --help)"},
      {"unknown shell",
       {"completion", "fish", "-o", "c.out"},
       "\"fish\" is no shell of ours; there are: bash, zsh"},
      {"nowhere to write",
       {"completion", "bash", "-o", "no/where.out"},
       "no/where.out: No such file or directory"},
  });
}

TEST_F(CompletionTest, TheManualHasNoWarnings) {
  if (!isInstalled("groff")) GTEST_SKIP() << "no groff";
  ASSERT_EQ(run({"manual", "-o", "vxclss.out"}).err, "");
  const Outcome outcome =
      shell("groff -man -Tascii -ww -z " + scratch_.path("vxclss.out") + " 2>&1");
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.out, "");
}

TEST_F(CompletionTest, TheManualTellsWhatTheHelpDoes) {
  if (!isInstalled("groff")) GTEST_SKIP() << "no groff";
  ASSERT_EQ(run({"manual", "-o", "vxclss.out"}).err, "");
  const std::string page =
      shell("groff -man -Tascii -P-cbou -rLL=200n " + scratch_.path("vxclss.out")).out;
  for (const char* text :
       {"vxclss - classifies patterns: ", "vxclss train [OPTIONS] DATA.csv",
        "--label COLUMN (required)", "-o, --output FILE", "vxclss run iris.model new.csv --all",
        "3     check: damaged", "Options of --method knn (k nearest neighbours):",
        "\"low\":  {\"x0\": 10, \"x1\": 8,  \"xc\": 8,  \"y0\": 1, \"y1\": 0},"}) {
    EXPECT_NE(page.find(text), std::string::npos) << text;
  }
  const std::string plain = run({"manual"}).out;
  EXPECT_EQ(plain, contentOf(scratch_.path("vxclss.out")));
  EXPECT_EQ(std::count_if(plain.begin(), plain.end(), [](char c) { return c < 0; }), 0);
}

}  // namespace
