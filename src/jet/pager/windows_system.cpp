#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include "jet/pager/windows_system.h"

#include <windows.h>

namespace jet::windows {

namespace {

// Folders may have 12 characters fewer than files, for a name of the old kind in them.
constexpr size_t kLongPath = MAX_PATH - 12;

std::wstring fullPath(const std::wstring& path) {
  std::wstring full(kLongPath, L'\0');
  for (;;) {
    const DWORD length =
        ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    const bool fits = length < full.size();
    full.resize(length);
    if (fits) return full;  // empty when it is no path
  }
}

// Not in every edition of the system's headers.
constexpr DWORD kVirusInfected = 225, kQuotaExceeded = 1295;

}  // namespace

std::wstring extendedPath(const std::filesystem::path& path) {
  const std::wstring& given = path.native();
  if (given.starts_with(L"\\\\?\\") || given.starts_with(L"\\\\.\\")) return given;
  const std::wstring full = fullPath(given);
  if (full.size() < kLongPath || full.starts_with(L"\\\\.\\")) return given;
  return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

bool isGone(unsigned long code) {
  switch (code) {
    case ERROR_NOT_READY:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_DEV_NOT_EXIST:
    case ERROR_BAD_UNIT:
    case ERROR_BAD_DEVICE:
    case ERROR_CONNECTION_UNAVAIL:
    case ERROR_NO_NET_OR_BAD_PATH:
    case ERROR_NO_NETWORK:
    case ERROR_NETWORK_UNREACHABLE:
    case ERROR_HOST_UNREACHABLE:
    case ERROR_HOST_DOWN:
    case ERROR_NOT_CONNECTED:
    case ERROR_NO_MEDIA_IN_DRIVE:
    case ERROR_DEVICE_NOT_CONNECTED:
    case ERROR_DEVICE_REMOVED:
    case ERROR_UNRECOGNIZED_VOLUME:
    case ERROR_WRONG_DISK:
      return true;
    default:
      return false;
  }
}

int nameErrorNumber(unsigned long code) {
  if (isGone(code)) return 3044;
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
      return 3024;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DIRECTORY:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_CANT_RESOLVE_FILENAME:
      return 3044;
    case ERROR_SHARING_VIOLATION:
    case ERROR_DELETE_PENDING:
      return 3045;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return 3204;
    case ERROR_ACCESS_DENIED:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_LOGON_FAILURE:
    case ERROR_WRITE_PROTECT:
    case kVirusInfected:
      return 3051;
    default:
      return workErrorNumber(code);
  }
}

int workErrorNumber(unsigned long code) {
  switch (code) {
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_FILE_TOO_LARGE:
    case kQuotaExceeded:
      return 3026;
    default:
      return 3043;
  }
}

int lockErrorNumber(unsigned long code) {
  const bool lost = isGone(code) || code == ERROR_NETNAME_DELETED || code == ERROR_UNEXP_NET_ERR ||
                    code == ERROR_SEM_TIMEOUT || code == ERROR_INVALID_HANDLE;
  return lost ? 3043 : 3050;
}

bool isHeldByOther(unsigned long code) {
  return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION || code == ERROR_DELETE_PENDING ||
         code == ERROR_USER_MAPPED_FILE;
}

}  // namespace jet::windows

#endif
