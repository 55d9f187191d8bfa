#include "support/process.h"

#include <cstdlib>

std::string partnerProgram() {
  const char* partner = std::getenv("TANDEKO_PARTNER");
  return partner ? partner : ownProgram();
}

#ifndef _WIN32

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

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
    for (ssize_t n; (n = ::read(descriptor(), block, sizeof block)) > 0;)
      text.append(block, static_cast<size_t>(n));
    return text;
  }

 private:
  std::FILE* file_;
};

std::vector<char*> argumentsOf(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  return arguments;
}

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& command, const std::string& input) {
  ScratchFile in, out, err;
  in.put(input);
  const std::vector<char*> arguments = argumentsOf(command);
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

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::filesystem::path& folder) {
  const std::vector<char*> arguments = argumentsOf(command);
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // it does not outlive a test that was killed
    if (chdir(folder.c_str()) == 0) execv(arguments[0], arguments.data());
    _exit(127);
  }
  if (child < 0) throw std::runtime_error("no process");
  process_ = child;
}

void ChildProcess::kill() {
  if (process_ == 0) return;
  const auto child = static_cast<pid_t>(std::exchange(process_, 0));
  ::kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

std::string ownProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

SharedMemory::SharedMemory(const std::filesystem::path& file, size_t size) : size_(size) {
  const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  const bool sized = descriptor >= 0 && ftruncate(descriptor, static_cast<off_t>(size)) == 0;
  data_ = sized ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0) : MAP_FAILED;
  if (descriptor >= 0) ::close(descriptor);
  if (data_ == MAP_FAILED) throw std::runtime_error("no shared memory");
}

SharedMemory::~SharedMemory() { munmap(data_, size_); }

#endif
