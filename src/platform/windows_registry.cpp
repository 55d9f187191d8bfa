// The real registry, current user's branch.

#include <QtGlobal>

#ifdef Q_OS_WIN

#include <windows.h>

#include <algorithm>
#include <vector>

#include "platform/registry.h"

namespace tandeko {

namespace {

const wchar_t* wide(const QString& text) { return reinterpret_cast<const wchar_t*>(text.utf16()); }

class Key {
 public:
  Key(const QString& path, REGSAM access) {
    if (RegOpenKeyExW(HKEY_CURRENT_USER, wide(path), 0, access, &handle_) != ERROR_SUCCESS) handle_ = nullptr;
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

class WindowsRegistry : public Registry {
 public:
  bool createKey(const QString& key) override {
    HKEY handle = nullptr;
    const LONG status = RegCreateKeyExW(HKEY_CURRENT_USER, wide(key), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                        KEY_READ | KEY_WRITE, nullptr, &handle, nullptr);
    if (status == ERROR_SUCCESS) RegCloseKey(handle);
    return status == ERROR_SUCCESS;
  }

  bool write(const QString& key, const QString& name, const QString& value) override {
    if (!createKey(key)) return false;
    const Key open(key, KEY_SET_VALUE);
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return open && RegSetValueExW(open.handle(), wide(name), 0, REG_SZ,
                                  reinterpret_cast<const BYTE*>(value.utf16()), bytes) == ERROR_SUCCESS;
  }

  bool removeValue(const QString& key, const QString& name) override {
    const Key open(key, KEY_SET_VALUE);
    return open && RegDeleteValueW(open.handle(), wide(name)) == ERROR_SUCCESS;
  }

  bool removeKey(const QString& key) override {
    return RegDeleteTreeW(HKEY_CURRENT_USER, wide(key)) == ERROR_SUCCESS;
  }

  bool hasKey(const QString& key) const override { return bool(Key(key, KEY_READ)); }

  QString read(const QString& key, const QString& name, const QString& fallback) const override {
    const Key open(key, KEY_QUERY_VALUE);
    DWORD bytes = 0, type = 0;
    if (!open ||
        RegQueryValueExW(open.handle(), wide(name), nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ))
      return fallback;
    std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 1, L'\0');
    if (RegQueryValueExW(open.handle(), wide(name), nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()),
                         &bytes) != ERROR_SUCCESS)
      return fallback;
    return QString::fromWCharArray(buffer.data());
  }

  QStringList subkeys(const QString& key) const override {
    QStringList names;
    const Key open(key, KEY_ENUMERATE_SUB_KEYS);
    wchar_t name[256];
    for (DWORD i = 0, size = 256; open && RegEnumKeyExW(open.handle(), i, name, &size, nullptr, nullptr,
                                                        nullptr, nullptr) == ERROR_SUCCESS;
         ++i, size = 256)
      names += QString::fromWCharArray(name, static_cast<int>(size));
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
      return QString::localeAwareCompare(a.toLower(), b.toLower()) < 0;
    });
    return names;
  }

  QStringList valueNames(const QString& key) const override {
    QStringList names;
    const Key open(key, KEY_QUERY_VALUE);
    std::vector<wchar_t> name(16384);
    DWORD size = 16384;
    for (DWORD i = 0; open && RegEnumValueW(open.handle(), i, name.data(), &size, nullptr, nullptr, nullptr,
                                            nullptr) == ERROR_SUCCESS;
         ++i, size = 16384)
      names += QString::fromWCharArray(name.data(), static_cast<int>(size));
    return names;
  }
};

}  // namespace

std::unique_ptr<Registry> systemRegistry() { return std::make_unique<WindowsRegistry>(); }

}  // namespace tandeko

#endif
