#pragma once

#include <string>
#include <vector>

// Runs a program and collects what it printed. POSIX only: the tools' tests run where they are built.
struct ProcessResult {
  int status = -1;  // exit status; 128 + signal when it was killed
  std::string out, err;
};

ProcessResult runProcess(const std::vector<std::string>& command, const std::string& input = {});
