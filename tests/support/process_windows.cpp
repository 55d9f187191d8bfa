#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <array>
#include <stdexcept>

#include "support/process.h"

namespace {

std::wstring wide(const std::string& utf8) {
  return std::filesystem::path(reinterpret_cast<const char8_t*>(utf8.c_str())).wstring();
}

// One word as programs take a command line apart again.
std::wstring quoted(const std::wstring& word) {
  if (!word.empty() && word.find_first_of(L" \t\n\v\"") == word.npos) return word;
  std::wstring text = L"\"";
  size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') text.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text += c;
  }
  return text.append(backslashes, L'\\') + L'"';
}

std::wstring commandLine(const std::vector<std::string>& command) {
  std::wstring line;
  for (const std::string& word : command) line += (line.empty() ? L"" : L" ") + quoted(wide(word));
  return line;
}

// A file that children inherit and that is gone when it is closed.
class ScratchFile {
 public:
  ScratchFile() {
    std::array<wchar_t, MAX_PATH + 1> folder{}, name{};
    ::GetTempPathW(MAX_PATH, folder.data());
    ::GetTempFileNameW(folder.data(), L"run", 0, name.data());
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    handle_ = ::CreateFileW(name.data(), GENERIC_READ | GENERIC_WRITE, 0, &inherited, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle_ == INVALID_HANDLE_VALUE) throw std::runtime_error("no temporary file");
  }
  ~ScratchFile() { ::CloseHandle(handle_); }
  HANDLE handle() const { return handle_; }
  void put(const std::string& text) {
    DWORD put = 0;
    ::WriteFile(handle_, text.data(), static_cast<DWORD>(text.size()), &put, nullptr);
    ::SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
  }
  std::string content() {
    std::string text;
    ::SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
    char block[65536];
    for (DWORD got = 0; ::ReadFile(handle_, block, sizeof block, &got, nullptr) && got > 0;)
      text.append(block, got);
    return text;
  }

 private:
  HANDLE handle_;
};

// Null when there is no such program.
HANDLE start(const std::vector<std::string>& command, STARTUPINFOW& startup, const wchar_t* folder) {
  std::wstring line = commandLine(command);
  PROCESS_INFORMATION process = {};
  const BOOL inherits = (startup.dwFlags & STARTF_USESTDHANDLES) != 0;
  if (!::CreateProcessW(nullptr, line.data(), nullptr, nullptr, inherits, 0, nullptr, folder, &startup,
                        &process))
    return nullptr;
  ::CloseHandle(process.hThread);
  return process.hProcess;
}

// What is in it does not outlive a test that was killed.
HANDLE jobOfChildren() {
  static const HANDLE job = [] {
    const HANDLE made = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return made;
  }();
  return job;
}

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& command, const std::string& input) {
  ScratchFile in, out, err;
  in.put(input);
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = in.handle();
  startup.hStdOutput = out.handle();
  startup.hStdError = err.handle();
  const HANDLE process = start(command, startup, nullptr);
  if (!process) return {127, {}, {}};
  ::WaitForSingleObject(process, INFINITE);
  DWORD status = 0;
  ::GetExitCodeProcess(process, &status);
  ::CloseHandle(process);
  return {static_cast<int>(status), out.content(), err.content()};
}

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::filesystem::path& folder) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  const HANDLE process = start(command, startup, folder.c_str());
  if (!process) throw std::runtime_error("no process");
  ::AssignProcessToJobObject(jobOfChildren(), process);
  process_ = reinterpret_cast<intptr_t>(process);
}

void ChildProcess::kill() {
  if (process_ == 0) return;
  const auto process = reinterpret_cast<HANDLE>(std::exchange(process_, 0));
  ::TerminateProcess(process, 1);
  ::WaitForSingleObject(process, INFINITE);
  ::CloseHandle(process);
}

std::string ownProgram() {
  std::array<wchar_t, 4096> name{};
  ::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
  return std::filesystem::path(name.data()).string();
}

SharedMemory::SharedMemory(const std::filesystem::path& file, size_t size) : size_(size) {
  const HANDLE handle =
      ::CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  const HANDLE mapping =
      ::CreateFileMappingW(handle, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(size), nullptr);
  if (mapping) data_ = ::MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, size);
  ::CloseHandle(mapping);
  ::CloseHandle(handle);
  if (!data_) throw std::runtime_error("no shared memory");
}

SharedMemory::~SharedMemory() { ::UnmapViewOfFile(data_); }

#endif
