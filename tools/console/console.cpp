#include "console/console.h"

#include <iostream>

#include "jet/format/text.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// After windows.h.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <array>
#endif

std::filesystem::path toPath(const std::string& utf8) {
  return std::filesystem::path(reinterpret_cast<const char8_t*>(utf8.c_str()));
}

#ifdef _WIN32

namespace {

constexpr size_t kConsoleBlock = 8192;  // characters; much more at once and older consoles refuse

std::string narrow(std::wstring_view text) { return jet::toUtf8(std::u16string(text.begin(), text.end())); }

// A program with windows has no streams when it is started at a console: what it prints goes there.
void findStreams() {
  static const bool found = [] {
    if (::GetFileType(::GetStdHandle(STD_OUTPUT_HANDLE)) != FILE_TYPE_UNKNOWN) return true;
    if (!::AttachConsole(ATTACH_PARENT_PROCESS)) return false;
    return std::freopen("CONOUT$", "w", stdout) && std::freopen("CONOUT$", "w", stderr);
  }();
  static_cast<void>(found);
}

// Null when the stream is a file or a pipe.
HANDLE consoleOf(std::FILE* stream) {
  if (_fileno(stream) < 0) return nullptr;
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
  DWORD mode = 0;
  return ::GetConsoleMode(handle, &mode) ? handle : nullptr;
}

}  // namespace

std::vector<std::string> commandLine(int, char**) {
  int count = 0;
  wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  std::vector<std::string> all;
  for (int i = 1; i < count; ++i) all.push_back(narrow(words[i]));
  ::LocalFree(words);
  return all;
}

void print(std::string_view utf8, std::FILE* stream) {
  findStreams();
  if (_fileno(stream) < 0) return;  // nobody started it from a console
  const HANDLE console = consoleOf(stream);
  if (!console) {
    std::fflush(stream);
    const int before = _setmode(_fileno(stream), _O_BINARY);
    std::fwrite(utf8.data(), 1, utf8.size(), stream);
    std::fflush(stream);
    if (before != -1) _setmode(_fileno(stream), before);
    return;
  }
  const std::u16string text = jet::fromUtf8(utf8);
  for (size_t at = 0; at < text.size();) {
    const auto size = static_cast<DWORD>(std::min(text.size() - at, kConsoleBlock));
    DWORD written = 0;
    if (!::WriteConsoleW(console, text.data() + at, size, &written, nullptr) || written == 0) return;
    at += written;
  }
}

bool readLine(std::string& line) {
  const HANDLE console = consoleOf(stdin);
  if (!console) return static_cast<bool>(std::getline(std::cin, line));
  std::wstring text;
  std::array<wchar_t, 1024> block{};
  while (text.empty() || text.back() != L'\n') {
    DWORD got = 0;
    if (!::ReadConsoleW(console, block.data(), static_cast<DWORD>(block.size()), &got, nullptr) || got == 0)
      break;
    text.append(block.data(), got);
  }
  constexpr wchar_t kEnd = 26;  // Ctrl+Z
  if (text.empty() || text[0] == kEnd) return false;
  while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r')) text.pop_back();
  line = narrow(text);
  return true;
}

#else

std::vector<std::string> commandLine(int argc, char** argv) { return {argv + 1, argv + argc}; }

void print(std::string_view utf8, std::FILE* stream) { std::fwrite(utf8.data(), 1, utf8.size(), stream); }

bool readLine(std::string& line) { return static_cast<bool>(std::getline(std::cin, line)); }

#endif
