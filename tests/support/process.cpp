#include "support/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

// An unnamed file that is gone when it is closed.
class ScratchFile {
 public:
  ScratchFile() : file_(std::tmpfile()) {}
  ~ScratchFile() { std::fclose(file_); }
  int descriptor() const { return fileno(file_); }
  void put(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), file_);
    std::fflush(file_);
    std::rewind(file_);
    lseek(descriptor(), 0, SEEK_SET);
  }
  std::string content() {
    std::string text;
    lseek(descriptor(), 0, SEEK_SET);
    char block[65536];
    for (ssize_t n; (n = ::read(descriptor(), block, sizeof block)) > 0;) text.append(block, static_cast<size_t>(n));
    return text;
  }

 private:
  std::FILE* file_;
};

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& command, const std::string& input) {
  ScratchFile in, out, err;
  in.put(input);
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(in.descriptor(), 0);
    dup2(out.descriptor(), 1);
    dup2(err.descriptor(), 2);
    execvp(arguments[0], arguments.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), out.content(), err.content()};
}
