// The real registry, current user's branch.

#include <QtGlobal>

#ifdef Q_OS_WIN

#include <windows.h>

#include <algorithm>
#include <vector>

#include "platform/registry.h"

namespace tandeko {

namespace {

constexpr DWORD kLongestKeyName = 255, kLongestValueName = 16383;  // characters

const wchar_t* wide(const QString& text) { return reinterpret_cast<const wchar_t*>(text.utf16()); }

// The names of a path without empty ones among them.
QString plain(const QString& key) { return key.split(u'\\', Qt::SkipEmptyParts).join(u'\\'); }

class Key {
 public:
  Key(const QString& path, REGSAM access) {
    if (RegOpenKeyExW(HKEY_CURRENT_USER, wide(plain(path)), 0, access, &handle_) != ERROR_SUCCESS)
      handle_ = nullptr;
  }
  ~Key() {
    if (handle_) RegCloseKey(handle_);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  explicit operator bool() const { return handle_ != nullptr; }
  HKEY handle() const { return handle_; }

 private:
  HKEY handle_ = nullptr;
};

// "%USERPROFILE%\Bazy" and the like with the user's folders in it.
QString expanded(const QString& text) {
  std::vector<wchar_t> buffer(256);
  for (;;) {
    const DWORD size =
        ExpandEnvironmentStringsW(wide(text), buffer.data(), static_cast<DWORD>(buffer.size()));
    if (size == 0) return text;
    if (size <= buffer.size()) return QString::fromWCharArray(buffer.data());
    buffer.resize(size);
  }
}

// Calls `next(index, buffer, size)` until there are no more names. Another copy may delete keys meanwhile.
template <typename Next>
QStringList names(DWORD longest, Next&& next) {
  QStringList all;
  std::vector<wchar_t> buffer(longest + 1);
  for (DWORD index = 0;; ++index) {
    DWORD size = longest + 1;
    if (next(index, buffer.data(), &size) != ERROR_SUCCESS) break;
    all += QString::fromWCharArray(buffer.data(), static_cast<qsizetype>(size));
  }
  std::sort(all.begin(), all.end(), [](const QString& a, const QString& b) {
    return QString::localeAwareCompare(a.toLower(), b.toLower()) < 0;
  });
  return all;
}

class WindowsRegistry : public Registry {
 public:
  bool createKey(const QString& key) override {
    HKEY handle = nullptr;
    const LONG status = RegCreateKeyExW(HKEY_CURRENT_USER, wide(plain(key)), 0, nullptr,
                                        REG_OPTION_NON_VOLATILE, KEY_READ, nullptr, &handle, nullptr);
    if (status == ERROR_SUCCESS) RegCloseKey(handle);
    return status == ERROR_SUCCESS;
  }

  bool write(const QString& key, const QString& name, const QString& value) override {
    if (!createKey(key)) return false;
    const Key open(key, KEY_SET_VALUE);
    const auto bytes = static_cast<DWORD>((value.size() + 1) * static_cast<qsizetype>(sizeof(wchar_t)));
    return open && RegSetValueExW(open.handle(), wide(name), 0, REG_SZ,
                                  reinterpret_cast<const BYTE*>(value.utf16()), bytes) == ERROR_SUCCESS;
  }

  bool removeValue(const QString& key, const QString& name) override {
    const Key open(key, KEY_SET_VALUE);
    return open && RegDeleteValueW(open.handle(), wide(name)) == ERROR_SUCCESS;
  }

  // The system takes an empty name for the whole branch.
  bool removeKey(const QString& key) override {
    const QString path = plain(key);
    return !path.isEmpty() && RegDeleteTreeW(HKEY_CURRENT_USER, wide(path)) == ERROR_SUCCESS;
  }

  bool hasKey(const QString& key) const override { return bool(Key(key, KEY_READ)); }

  QString read(const QString& key, const QString& name, const QString& fallback) const override {
    const Key open(key, KEY_QUERY_VALUE);
    if (!open) return fallback;
    // A value need not end with a NUL, and another copy may make it longer between two calls.
    std::vector<wchar_t> buffer(128);
    DWORD type = REG_NONE, bytes = 0;
    LONG status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
      buffer.resize(std::max<size_t>(buffer.size(), bytes / sizeof(wchar_t) + 1));
      bytes = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
      status = RegQueryValueExW(open.handle(), wide(name), nullptr, &type,
                                reinterpret_cast<BYTE*>(buffer.data()), &bytes);
    }
    if (status != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) return fallback;
    const auto end = buffer.begin() + static_cast<std::ptrdiff_t>(bytes / sizeof(wchar_t));
    const auto size = std::find(buffer.begin(), end, L'\0') - buffer.begin();
    const QString value = QString::fromWCharArray(buffer.data(), size);
    return type == REG_EXPAND_SZ ? expanded(value) : value;
  }

  QStringList subkeys(const QString& key) const override {
    const Key open(key, KEY_ENUMERATE_SUB_KEYS);
    if (!open) return {};
    return names(kLongestKeyName, [&](DWORD index, wchar_t* name, DWORD* size) {
      return RegEnumKeyExW(open.handle(), index, name, size, nullptr, nullptr, nullptr, nullptr);
    });
  }

  QStringList valueNames(const QString& key) const override {
    const Key open(key, KEY_QUERY_VALUE);
    if (!open) return {};
    return names(kLongestValueName, [&](DWORD index, wchar_t* name, DWORD* size) {
      return RegEnumValueW(open.handle(), index, name, size, nullptr, nullptr, nullptr, nullptr);
    });
  }
};

}  // namespace

std::unique_ptr<Registry> systemRegistry() { return std::make_unique<WindowsRegistry>(); }

}  // namespace tandeko

#endif
