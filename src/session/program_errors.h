#pragma once

// The program's own error numbers, those of the database engine apart. Each has a description for the user in
// the section "Program" of Errormsg.txt.
namespace tandeko {

enum ProgramError : int {
  kUnexpected = 5,  // a failure that has no number of its own
  kNoMemory = 7,
  kNoFile = 53,
  kDiskFailure = 57,
  kDiskFull = 61,
  kNoAccess = 70,
  kNoFolder = 76,
  kFormRefused = 365,  // an open form does not let itself be closed
};

inline constexpr int kProgramErrors[] = {kUnexpected, kNoMemory, kNoFile,   kDiskFailure,
                                         kDiskFull,   kNoAccess, kNoFolder, kFormRefused};

}  // namespace tandeko
