#pragma once

#include <filesystem>
#include <string>

// What Windows says and wants, for windows_env.cpp and its tests.
namespace jet::windows {

// `path` as the system's calls take it. One that is long when made absolute becomes absolute, with \\?\ or
// \\?\UNC\ before it, which lifts the limit of 260 characters.
std::wstring extendedPath(const std::filesystem::path& path);

// The Error for a system's error code: while a name is looked up, opened, removed or renamed; while an open
// file is read, written or synced; while a range is locked.
int nameErrorNumber(unsigned long code);
int workErrorNumber(unsigned long code);
int lockErrorNumber(unsigned long code);

// The server, the share, the drive or the medium in it is not there (any more).
bool isGone(unsigned long code);

// Somebody else's hold on a file or a range, which may end in a moment.
bool isHeldByOther(unsigned long code);

}  // namespace jet::windows
