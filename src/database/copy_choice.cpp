#include "database/copy_choice.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpression>
#include <QTreeWidget>

#include "database/upkeep_names.h"

namespace tandeko {

namespace {

enum Column { kName, kDate, kSize };

QString titleOf(const QString& path) { return QStringLiteral("Odtwórz z kopi: ") + baseName(path); }

QString chooseAnyFile(Session& session, const QString& path) {
  FileChoice choice;
  choice.title = titleOf(path);
  choice.folder = copyFolder(session, path);
  choice.filter = QStringLiteral("Baza danych MS Access (*.mdb)");
  choice.extension = QStringLiteral("mdb");
  choice.fileName = QStringLiteral("Kopia ") + baseName(path);
  return session.messages().openFile(choice);
}

}  // namespace

QList<DatabaseCopy> copiesOf(Session& session, const QString& path) {
  const QString name = baseName(path);
  const QRegularExpression dated(QStringLiteral("^Kopia ") + QRegularExpression::escape(name) +
                                     QStringLiteral(" z dnia \\d\\d-\\d\\d-\\d{4}\\.mdb$"),
                                 QRegularExpression::CaseInsensitiveOption);
  QList<DatabaseCopy> copies;
  const QString folder = copyFolder(session, path);
  if (folder.isEmpty()) return copies;
  for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files, QDir::Time)) {
    const QString fileName = file.fileName();
    if (fileName.compare(copyFileName(name), Qt::CaseInsensitive) == 0 ||
        fileName.compare(previousCopyFileName(name), Qt::CaseInsensitive) == 0 ||
        dated.match(fileName).hasMatch())
      copies << DatabaseCopy{QDir::toNativeSeparators(file.absoluteFilePath()), file.lastModified(),
                             file.size()};
  }
  return copies;
}

QString chooseCopy(Session& session, const QString& path) {
  const QList<DatabaseCopy> copies = copiesOf(session, path);
  if (copies.isEmpty()) return chooseAnyFile(session, path);
  dlgBazaKopie dialog(titleOf(path), copies, session.frame() ? session.frame()->window() : nullptr);
  if (dialog.exec() != QDialog::Accepted) return {};
  return dialog.chosen().isEmpty() ? chooseAnyFile(session, path) : dialog.chosen();
}

dlgBazaKopie::dlgBazaKopie(const QString& title, const QList<DatabaseCopy>& copies, QWidget* parent)
    : QDialog(parent) {
  setObjectName(QStringLiteral("dlgBazaKopie"));
  setWindowTitle(title);
  lstKopie_ = new QTreeWidget(this);
  lstKopie_->setObjectName(QStringLiteral("lstKopie"));
  lstKopie_->setRootIsDecorated(false);
  lstKopie_->setAllColumnsShowFocus(true);
  lstKopie_->setUniformRowHeights(true);
  lstKopie_->setHeaderLabels({QStringLiteral("Plik"), QStringLiteral("Data"), QStringLiteral("Rozmiar")});
  const QLocale locale;
  for (const DatabaseCopy& copy : copies) {
    auto* item = new QTreeWidgetItem(
        lstKopie_, {QFileInfo(copy.path).fileName(), locale.toString(copy.made, QLocale::ShortFormat),
                    locale.formattedDataSize(copy.size, 1, QLocale::DataSizeTraditionalFormat)});
    item->setIcon(kName, QIcon(QStringLiteral(":/icons/database-16.png")));
    item->setTextAlignment(kSize, Qt::AlignRight | Qt::AlignVCenter);
    item->setToolTip(kName, copy.path);
    item->setData(kName, Qt::UserRole, copy.path);
  }
  lstKopie_->setCurrentItem(lstKopie_->topLevelItem(0));
  const int unit = fontMetrics().averageCharWidth();
  lstKopie_->header()->setStretchLastSection(false);
  lstKopie_->header()->setSectionResizeMode(kName, QHeaderView::Stretch);
  lstKopie_->header()->setSectionResizeMode(kDate, QHeaderView::ResizeToContents);
  lstKopie_->header()->setSectionResizeMode(kSize, QHeaderView::ResizeToContents);
  lstKopie_->setMinimumSize(unit * 80, fontMetrics().lineSpacing() * 9);

  auto* label = new QLabel(QStringLiteral("&Kopie bazy w folderze kopii, od najnowszej:"), this);
  label->setBuddy(lstKopie_);
  const auto button = [this](const QString& name, const QString& caption) {
    auto* made = new QPushButton(caption, this);
    made->setObjectName(name);
    made->setAutoDefault(false);
    return made;
  };
  auto* choose = button(QStringLiteral("cmdOdtworz"), QStringLiteral("&Odtwórz"));
  auto* other = button(QStringLiteral("cmdInny"), QStringLiteral("&Inny plik..."));
  auto* cancel = button(QStringLiteral("cmdAnuluj"), QStringLiteral("Anuluj"));
  choose->setDefault(true);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(other);
  buttons->addStretch();
  buttons->addWidget(choose);
  buttons->addWidget(cancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(lstKopie_);
  layout->addLayout(buttons);
  connect(lstKopie_, &QTreeWidget::itemActivated, this, &dlgBazaKopie::accept);
  connect(choose, &QPushButton::clicked, this, &dlgBazaKopie::accept);
  connect(other, &QPushButton::clicked, this, &dlgBazaKopie::chooseOther);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  lstKopie_->setFocus();
}

void dlgBazaKopie::accept() {
  chosen_ = lstKopie_->currentItem()->data(kName, Qt::UserRole).toString();
  QDialog::accept();
}

void dlgBazaKopie::chooseOther() {
  chosen_.clear();
  QDialog::accept();
}

}  // namespace tandeko
