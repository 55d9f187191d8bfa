#include "platform/window_search.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileSystemWatcher>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUuid>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace tandeko {

namespace {

// Files in the folder, per copy: ID.lock held while it runs, ID.caption its caption in UTF-8, ID.raise
// present when another copy asks for the window.
class FolderWindowSearch : public WindowSearch {
 public:
  explicit FolderWindowSearch(const QString& folder)
      : folder_(folder), id_(QUuid::createUuid().toString(QUuid::WithoutBraces)) {
    QDir().mkpath(folder_);
  }

  ~FolderWindowSearch() override {
    QFile::remove(file(id_, "caption"));
    QFile::remove(file(id_, "raise"));
  }

  bool find(const QString& caption) override { return !idOf(caption).isEmpty(); }

  void raise(const QString& caption) override {
    const QString id = idOf(caption);
    if (id.isEmpty()) return;
    QFile request(file(id, "raise"));
    request.open(QIODevice::WriteOnly);
  }

  void announce(const QString& caption, std::function<void()> onRaise) override {
    onRaise_ = std::move(onRaise);
    if (!lock_) {
      lock_ = std::make_unique<QLockFile>(file(id_, "lock"));
      lock_->setStaleLockTime(0);
      if (!lock_->tryLock()) return;
      watcher_.addPath(folder_);
      QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &watcher_, [this] {
        if (QFile::remove(file(id_, "raise")) && onRaise_) onRaise_();
      });
    }
    QSaveFile note(file(id_, "caption"));
    if (note.open(QIODevice::WriteOnly)) {
      note.write(caption.toUtf8());
      note.commit();
    }
  }

 private:
  QString file(const QString& id, const char* kind) const {
    return folder_ + u'/' + id + u'.' + QLatin1String(kind);
  }

  // The copy with that caption; notes of copies that ended without clearing up are removed.
  QString idOf(const QString& caption) {
    const QDir folder(folder_);
    for (const QString& name : folder.entryList({QStringLiteral("*.caption")}, QDir::Files)) {
      const QString id = name.chopped(8);
      if (id == id_) continue;
      QLockFile lock(file(id, "lock"));
      lock.setStaleLockTime(0);
      if (lock.tryLock(0)) {
        QFile::remove(file(id, "caption"));
        QFile::remove(file(id, "raise"));
        continue;
      }
      QFile note(file(id, "caption"));
      if (note.open(QIODevice::ReadOnly) && QString::fromUtf8(note.readAll()) == caption) return id;
    }
    return {};
  }

  QString folder_;
  QString id_;
  std::unique_ptr<QLockFile> lock_;
  QFileSystemWatcher watcher_;
  std::function<void()> onRaise_;
};

#ifdef Q_OS_WIN

// The name of a process's executable file without its folder, in small letters: a copy may have been started
// from another drive letter. Empty when the process may not be asked, because it runs as somebody else.
QString executableOf(DWORD process) {
  const HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
  if (!handle) return {};
  wchar_t name[2048];
  DWORD size = 2048;
  const bool known = QueryFullProcessImageNameW(handle, 0, name, &size);
  CloseHandle(handle);
  const QString path = known ? QString::fromWCharArray(name, static_cast<qsizetype>(size)) : QString();
  return path.mid(path.lastIndexOf(u'\\') + 1).toLower();
}

class DesktopWindowSearch : public WindowSearch {
 public:
  bool find(const QString& caption) override { return handle(caption) != nullptr; }

  // Without waiting for the other copy, which may be busy. What it asks in front of its window stays in
  // front.
  void raise(const QString& caption) override {
    const HWND window = handle(caption);
    if (!window) return;
    ShowWindowAsync(window, SW_SHOWMAXIMIZED);
    BringWindowToTop(window);
    SetForegroundWindow(GetLastActivePopup(window));
  }

  void announce(const QString&, std::function<void()>) override {}

 private:
  struct Wanted {
    QString caption;
    QString executable;
    HWND found;
  };

  static HWND handle(const QString& caption) {
    Wanted wanted{caption, executableOf(GetCurrentProcessId()), nullptr};
    EnumWindows(&compare, reinterpret_cast<LPARAM>(&wanted));
    return wanted.found;
  }

  // A visible window of another copy of this program; a folder's window of the same caption is none. The
  // caption of a main window goes on with that of its child while one fills it.
  static BOOL CALLBACK compare(HWND window, LPARAM parameter) {
    auto* wanted = reinterpret_cast<Wanted*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId() || !IsWindowVisible(window) || GetWindow(window, GW_OWNER))
      return TRUE;
    wchar_t text[512];
    const QString caption = QString::fromWCharArray(text, GetWindowTextW(window, text, 512));
    if (caption != wanted->caption && !caption.startsWith(wanted->caption + QStringLiteral(" - [")))
      return TRUE;
    if (executableOf(process) != wanted->executable) return TRUE;
    wanted->found = window;
    return FALSE;
  }
};

#endif

}  // namespace

std::unique_ptr<WindowSearch> windowSearchIn(const QString& folder) {
  return std::make_unique<FolderWindowSearch>(folder);
}

std::unique_ptr<WindowSearch> systemWindowSearch() {
#ifdef Q_OS_WIN
  return std::make_unique<DesktopWindowSearch>();
#else
  return windowSearchIn(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
                        QStringLiteral("/tandeko"));
#endif
}

}  // namespace tandeko
