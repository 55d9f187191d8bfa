#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// How the console tools speak to whoever started them: UTF-8 everywhere, on Windows also where its console
// and its command line know only the system's own characters.

// The words behind the program's name.
std::vector<std::string> commandLine(int argc, char** argv);

// A word of the command line as a path.
std::filesystem::path toPath(const std::string& utf8);

// Bytes as they are to stdout or stderr; on a console the characters that they spell. Also for programs with
// windows, which print to the console that they were started at, if any.
void print(std::string_view utf8, std::FILE* stream = stdout);

// The next line of standard input without its end; false when there is none.
bool readLine(std::string& line);
