#include "session/session.h"

#include <QDir>
#include <QFileInfo>

#include "jet/format/error.h"
#include "platform/text.h"

namespace tandeko {

namespace {

constexpr int kNoDatabase = 3420;  // the object is no longer set

QString parameterQuery(const QString& name) {
  return QStringLiteral("SELECT * FROM dbpar WHERE indpar = '%1'").arg(name);
}

}  // namespace

Session::Session(const Platform& platform) : platform_(platform), settings_(platform.registry) {
  const QDate today = platform_.clock.today();
  month_ = today.month();
  year_ = today.year();
}

Session::~Session() { closeDatabase(); }

bool Session::BaseConnect(const QString& path, const QString& password, bool exclusive, bool readOnly) {
  closeDatabase();
  try {
    workspace_ = std::make_unique<jet::Workspace>();
    jet::Workspace::OpenOptions options;
    options.exclusive = exclusive;
    options.readOnly = readOnly || readOnlyForced_;
    options.connect = u";pwd=" + toU16(password) + u";";
    database_ = workspace_->openDatabase(toPath(path), options);
  } catch (...) {
    connectFailure_ = currentFailure(QStringLiteral("BaseConnect"));
    database_.reset();
    workspace_.reset();
    return false;
  }
  databasePath_ = QDir::toNativeSeparators(path);
  databasePassword_ = password;
  databaseName_ = QFileInfo(path).fileName();
  exclusive_ = exclusive;
  Q_EMIT databaseChanged();
  return true;
}

void Session::closeDatabase() {
  const bool wasOpen = databaseOpen();
  database_.reset();
  workspace_.reset();
  if (wasOpen) Q_EMIT databaseChanged();
}

jet::Database& Session::database() const {
  if (!database_) throw jet::Error(kNoDatabase);
  return *database_;
}

jet::Workspace& Session::workspace() const {
  if (!workspace_) throw jet::Error(kNoDatabase);
  return *workspace_;
}

QString Session::databaseFolder() const { return QFileInfo(databasePath_).absolutePath(); }

QString Session::databaseFile() const { return QFileInfo(databasePath_).fileName(); }

QString Session::parameterRead(const QString& name, const QString& fallback) const {
  const auto rows = database().openRecordset(toU16(parameterQuery(name)), jet::RecordsetType::Snapshot);
  return rows->eof() ? fallback : toText(rows->value(u"wartosc"));
}

void Session::parameterWrite(const QString& name, const QString& value) {
  const auto rows = database().openRecordset(toU16(parameterQuery(name)), jet::RecordsetType::Dynaset);
  if (rows->eof()) {
    rows->addNew();
    rows->field(u"Indpar").setValue(fromText(name));
  } else {
    rows->edit();
  }
  rows->field(u"wartosc").setValue(textOrNull(value));
  rows->update();
}

void Session::setUser(const UserState& user) {
  user_ = user;
  Q_EMIT userChanged();
}

bool Session::UserReadOnly(const QString& table, int key) const {
  const ChildForm* active = frame_ ? frame_->activeForm() : nullptr;
  bool readOnly = user_.level.contains(u'P') || (active && active->readOnly());
  if (table.isEmpty()) return readOnly;
  const QString value = parameterRead(QStringLiteral("UPR") + user_.id + table);
  if (!value.isEmpty()) {
    // The blank and comma make the first entry look like every other.
    const QString entries = QStringLiteral(" ,") + value;
    const QString entry = u',' + QString::number(key);
    if (entries.contains(entry + QStringLiteral("e,")))
      readOnly = false;
    else if (entries.contains(entry + QStringLiteral("p,")))
      readOnly = true;
  }
  return key == 0 || readOnly;
}

void Session::setCurrentRegister(int indrew) {
  if (indrew == register_) return;
  register_ = indrew;
  Q_EMIT registerChanged(indrew);
}

void Session::setCurrentPeriod(int month, int year) {
  month_ = month;
  year_ = year;
}

void Session::setStatusText(const QString& text) {
  if (frame_) frame_->setStatusText(text);
}

void Session::KarRefresh(const QString& formName) {
  if (ChildForm* form = frame_ ? frame_->findForm(formName) : nullptr) form->KarRefresh();
}

bool Session::FormCloseAll(ChildForm* except) { return !frame_ || frame_->FormCloseAll(except); }

}  // namespace tandeko
