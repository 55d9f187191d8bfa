#include "register/link_list.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>

#include "platform/resources.h"

namespace tandeko {

namespace {

constexpr int kPath = Qt::UserRole, kSerial = Qt::UserRole + 1;

}  // namespace

LinkList::LinkList(QWidget* parent) : QTreeWidget(parent) {
  setColumnCount(2);
  setHeaderLabels({QStringLiteral("Nazwa"), QStringLiteral("Data pliku")});
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(0, QHeaderView::Stretch);
  header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  setEditTriggers(EditKeyPressed);
  connect(this, &QTreeWidget::itemChanged, this, &LinkList::edited);
  connect(this, &QTreeWidget::itemDoubleClicked, this, &LinkList::openRequested);
}

void LinkList::setLinks(const QList<DocLink>& links, const QString& documentsFolder) {
  const QSignalBlocker quiet(this);
  documentsFolder_ = documentsFolder;
  clear();
  for (const DocLink& link : links) show(*new QTreeWidgetItem(this), link);
}

QList<DocLink> LinkList::links() const {
  QList<DocLink> all;
  for (int row = 0; row < topLevelItemCount(); ++row) {
    const QTreeWidgetItem& entry = *topLevelItem(row);
    const QVariant serial = entry.data(0, kSerial);
    all.append({entry.text(0), entry.data(0, kPath).toString(),
                serial.isValid() ? std::optional(serial.toInt()) : std::nullopt});
  }
  return all;
}

void LinkList::show(QTreeWidgetItem& entry, const DocLink& link) {
  entry.setFlags(readOnly_ ? entry.flags() & ~Qt::ItemIsEditable : entry.flags() | Qt::ItemIsEditable);
  const QString real = realLinkPath(link.path, documentsFolder_);
  const QFileInfo file(real);
  entry.setText(0, link.name);
  entry.setText(
      1, file.exists() ? QLocale().toString(file.lastModified().date(), QLocale::ShortFormat) : QString());
  entry.setIcon(0, icon("document"));
  entry.setToolTip(0, real);
  entry.setData(0, kPath, link.path);
  entry.setData(0, kSerial, link.serial ? QVariant(*link.serial) : QVariant());
}

void LinkList::add(DocLink link) {
  const QString name = link.name;
  for (int number = 2; !findItems(link.name, Qt::MatchFixedString).isEmpty(); ++number)
    link.name = QStringLiteral("%1 (%2)").arg(name).arg(number);
  auto* entry = new QTreeWidgetItem;
  show(*entry, link);
  addTopLevelItem(entry);
  setCurrentItem(entry);
  Q_EMIT edited();
}

void LinkList::replaceSelected(const DocLink& link) {
  if (!currentItem()) return;
  DocLink changed = link;
  changed.name = currentItem()->text(0);
  show(*currentItem(), changed);
}

void LinkList::removeSelected() {
  if (!currentItem()) return;
  delete currentItem();
  Q_EMIT edited();
}

void LinkList::renameSelected() {
  if (currentItem()) editItem(currentItem(), 0);
}

QString LinkList::selectedPath() const {
  return currentItem() ? currentItem()->data(0, kPath).toString() : QString();
}

void LinkList::setReadOnly(bool readOnly) {
  readOnly_ = readOnly;
  setEditTriggers(readOnly ? NoEditTriggers : EditKeyPressed);
}

}  // namespace tandeko
