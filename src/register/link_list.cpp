#include "register/link_list.h"

#include <QDropEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMimeData>
#include <QStyledItemDelegate>
#include <QUrl>

#include "platform/resources.h"

namespace tandeko {

namespace {

// Stops a name at its field's size.
class NameDelegate : public QStyledItemDelegate {
 public:
  explicit NameDelegate(LinkList& list) : QStyledItemDelegate(&list), list_(list) {}
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override {
    if (index.column() != 0) return nullptr;
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* line = qobject_cast<QLineEdit*>(editor)) line->setMaxLength(list_.nameSize());
    return editor;
  }

 private:
  LinkList& list_;
};

}  // namespace

class LinkList::Entry : public QTreeWidgetItem {
 public:
  DocLink link;
};

QStringList filesIn(const QMimeData& data) {
  QStringList files;
  const auto append = [&files](const QString& path) {
    const QFileInfo file(path);
    if (file.isAbsolute() && file.isFile()) files << file.absoluteFilePath();
  };
  for (const QUrl& url : data.urls())
    if (url.isLocalFile()) append(url.toLocalFile());
  if (!files.isEmpty() || !data.hasText()) return files;
  for (QString line : data.text().split(u'\n', Qt::SkipEmptyParts)) {
    line = line.trimmed();
    if (line.size() > 1 && line.startsWith(u'"') && line.endsWith(u'"')) line = line.mid(1, line.size() - 2);
    append(line.startsWith(u"file:") ? QUrl(line).toLocalFile() : line);
  }
  return files;
}

LinkList::LinkList(QWidget* parent) : QTreeWidget(parent) {
  setColumnCount(2);
  setHeaderLabels({QStringLiteral("Nazwa"), QStringLiteral("Data pliku")});
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(0, QHeaderView::Stretch);
  header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  setItemDelegate(new NameDelegate(*this));
  setReadOnly(false);
  connect(this, &QTreeWidget::itemChanged, this,
          [this](QTreeWidgetItem* item) { takeName(static_cast<Entry&>(*item)); });
  connect(this, &QTreeWidget::itemDoubleClicked, this, &LinkList::openRequested);
}

void LinkList::setLinks(const QList<DocLink>& links, const QString& documentsFolder) {
  documentsFolder_ = documentsFolder;
  clear();
  for (const DocLink& link : links) {
    auto* entry = new Entry;
    show(*entry, link);
    addTopLevelItem(entry);
  }
}

QList<DocLink> LinkList::links() const {
  QList<DocLink> all;
  for (int row = 0; row < topLevelItemCount(); ++row)
    all.append(static_cast<const Entry*>(topLevelItem(row))->link);
  return all;
}

LinkList::Entry* LinkList::current() const { return static_cast<Entry*>(currentItem()); }

void LinkList::show(Entry& entry, const DocLink& link) {
  const QSignalBlocker quiet(this);
  entry.setFlags(readOnly_ ? entry.flags() & ~Qt::ItemIsEditable : entry.flags() | Qt::ItemIsEditable);
  const QString real = realLinkPath(link.path, documentsFolder_);
  const QFileInfo file(real);
  entry.link = link;
  entry.setText(0, link.name);
  entry.setText(
      1, file.exists() ? QLocale().toString(file.lastModified().date(), QLocale::ShortFormat) : QString());
  entry.setIcon(0, icon("document"));
  entry.setToolTip(0, real);
}

bool LinkList::isTaken(const QString& name, const Entry* except) const {
  const auto found = findItems(name, Qt::MatchFixedString);
  return std::any_of(found.begin(), found.end(), [except](const auto* item) { return item != except; });
}

QString LinkList::freeName(const QString& name, const Entry* except) const {
  QString free = name.left(nameSize_);
  for (int number = 2; isTaken(free, except); ++number) {
    const QString suffix = QStringLiteral(" (%1)").arg(number);
    free = name.left(nameSize_ - suffix.size()) + suffix;
  }
  return free;
}

void LinkList::add(DocLink link) {
  link.name = freeName(link.name, nullptr);
  auto* entry = new Entry;
  show(*entry, link);
  addTopLevelItem(entry);
  setCurrentItem(entry);
  Q_EMIT edited();
}

void LinkList::replaceSelected(const DocLink& link) {
  Entry* entry = current();
  if (!entry) return;
  DocLink changed = link;
  changed.serial = entry->link.serial;
  const QString fileBefore = QFileInfo(realLinkPath(entry->link.path, documentsFolder_)).fileName();
  changed.name = entry->link.name == fileBefore ? freeName(link.name, entry) : entry->link.name;
  show(*entry, changed);
  Q_EMIT edited();
}

void LinkList::takeName(Entry& entry) {
  const QString name = entry.text(0).trimmed();
  const QString before = entry.link.name;
  const bool refused = isTaken(name, &entry);
  if (!refused && !name.isEmpty()) entry.link.name = name;
  show(entry, entry.link);
  if (refused)
    Q_EMIT renameRefused(name);
  else if (entry.link.name != before)
    Q_EMIT edited();
}

void LinkList::removeSelected() {
  if (!currentItem()) return;
  delete currentItem();
  Q_EMIT edited();
}

void LinkList::renameSelected() {
  if (currentItem()) editItem(currentItem(), 0);
}

QString LinkList::selectedPath() const { return current() ? current()->link.path : QString(); }

void LinkList::setReadOnly(bool readOnly) {
  readOnly_ = readOnly;
  setEditTriggers(readOnly ? NoEditTriggers : EditKeyPressed);
  setAcceptDrops(!readOnly);
  viewport()->setAcceptDrops(!readOnly);
}

void LinkList::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Paste))
    Q_EMIT commandRequested(Command::ZrodloWklej);
  else if (event->key() == Qt::Key_Insert)
    Q_EMIT commandRequested(Command::ZrodloNowy);
  else if (event->key() == Qt::Key_Delete)
    Q_EMIT commandRequested(Command::ZrodloUsun);
  else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentItem())
    Q_EMIT openRequested();
  else
    QTreeWidget::keyPressEvent(event);
}

void LinkList::dragEnterEvent(QDragEnterEvent* event) {
  if (!readOnly_ && event->mimeData() && !filesIn(*event->mimeData()).isEmpty())
    event->acceptProposedAction();
}

void LinkList::dragMoveEvent(QDragMoveEvent* event) { event->acceptProposedAction(); }

void LinkList::dropEvent(QDropEvent* event) {
  const QStringList files = filesIn(*event->mimeData());
  if (readOnly_ || files.isEmpty()) return;
  // The file manager must not take a move for granted and delete the files.
  event->setDropAction(Qt::CopyAction);
  event->accept();
  Q_EMIT filesDropped(files);
}

}  // namespace tandeko
