// SPDX-License-Identifier: MIT
#include "bench/peers/sklearn_peer.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace peers {

namespace {

/// A temporary file of the rows' doubles, removed in the end.
class RowsFile {
 public:
  explicit RowsFile(const Rows& rows) {
    char path[] = "/tmp/vxclss_peers_XXXXXX";
    const int descriptor = mkstemp(path);
    if (descriptor < 0) throw std::runtime_error("can't make a temporary file");
    close(descriptor);
    path_ = path;
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(rows.values.data()),
               static_cast<std::streamsize>(rows.values.size() * sizeof(double)));
  }
  RowsFile(const RowsFile&) = delete;
  RowsFile& operator=(const RowsFile&) = delete;
  ~RowsFile() { std::filesystem::remove(path_); }

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace

std::unique_ptr<SklearnPeer> SklearnPeer::start(Report& report) {
  std::signal(SIGPIPE, SIG_IGN);  // a child that is gone is noticed when it gives no answer
  int questions[2], answers[2];
  if (pipe2(questions, O_CLOEXEC) != 0 || pipe2(answers, O_CLOEXEC) != 0) return nullptr;
  std::unique_ptr<SklearnPeer> peer(new SklearnPeer);
  peer->child_ = fork();
  if (peer->child_ < 0) throw std::runtime_error("can't start another process");
  if (peer->child_ == 0) {
    dup2(questions[0], STDIN_FILENO);
    dup2(answers[1], STDOUT_FILENO);
    execlp(PEERS_PYTHON, PEERS_PYTHON, PEERS_SOURCE_DIR "/sklearn_peer.py", nullptr);
    _exit(127);
  }
  close(questions[0]);
  close(answers[1]);
  peer->questions_ = fdopen(questions[1], "w");
  peer->answers_ = fdopen(answers[0], "r");
  try {
    report.fact("scikit-learn", peer->ask_({{"do", "version"}}));
  } catch (const std::runtime_error&) {
    return nullptr;  // the child said why
  }
  return peer;
}

SklearnPeer::~SklearnPeer() {
  std::fclose(questions_);  // which ends the child
  std::fclose(answers_);
  waitpid(child_, nullptr, 0);
}

void SklearnPeer::fit(const Rows& rows, std::size_t numCategories, const Rows& queries) {
  const RowsFile training(rows), asked(queries);
  ask_({{"do", "fit"},
        {"rows", training.path()},
        {"queries", asked.path()},
        {"d", rows.d},
        {"categories", numCategories}});
}

std::vector<long> SklearnPeer::labels() { return ask_({{"do", "labels"}}); }

Contestant SklearnPeer::oneRow() { return contestant_("GaussianNB, one row", {{"do", "row"}}); }

Contestant SklearnPeer::perRowOf(long batch) {
  return contestant_("GaussianNB, a row of " + std::to_string(batch),
                     {{"do", "batch"}, {"rows", batch}});
}

Contestant SklearnPeer::training() { return contestant_("GaussianNB", {{"do", "training"}}); }

Contestant SklearnPeer::contestant_(const std::string& name, const nlohmann::json& question) {
  return {name, [this, question](long repeats) -> double {
            nlohmann::json repeated = question;
            repeated["repeats"] = repeats;
            return ask_(repeated);
          }};
}

nlohmann::json SklearnPeer::ask_(const nlohmann::json& question) {
  std::fputs((question.dump() + "\n").c_str(), questions_);
  std::fflush(questions_);
  char* line = nullptr;
  std::size_t size = 0;
  const ssize_t length = getline(&line, &size, answers_);
  const std::string answer = length > 0 ? line : "";
  std::free(line);
  if (answer.empty()) throw std::runtime_error("scikit-learn's process ended");
  return nlohmann::json::parse(answer);
}

}  // namespace peers
