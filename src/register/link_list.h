#pragma once

#include <QTreeWidget>

#include "register/document_links.h"
#include "session/forms.h"

class QMimeData;

namespace tandeko {

// lstZrodlo: the documents of a record, kept here until the record is stored. Files of a file manager can be
// dropped on it.
class LinkList : public QTreeWidget {
  Q_OBJECT

 public:
  explicit LinkList(QWidget* parent = nullptr);

  void setLinks(const QList<DocLink>& links, const QString& documentsFolder);
  QList<DocLink> links() const;
  // Gives the link another name when that one is taken.
  void add(DocLink link);
  // A name that the user gave stays; that of the file before gives way to the new one's.
  void replaceSelected(const DocLink& link);
  void removeSelected();
  void renameSelected();
  // The selected link's path as stored; empty for none.
  QString selectedPath() const;
  void setReadOnly(bool readOnly);
  // The longest name, in characters.
  void setNameSize(int size) { nameSize_ = size; }
  int nameSize() const { return nameSize_; }

 Q_SIGNALS:
  void edited();
  void openRequested();
  // By a key: Insert, Delete, Ctrl+V.
  void commandRequested(tandeko::Command command);
  void filesDropped(const QStringList& files);
  // Another link has the name that the user typed.
  void renameRefused(const QString& name);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  class Entry;

  void show(Entry& entry, const DocLink& link);
  Entry* current() const;
  bool isTaken(const QString& name, const Entry* except) const;
  QString freeName(const QString& name, const Entry* except) const;
  void takeName(Entry& entry);

  QString documentsFolder_;
  int nameSize_ = 255;
  bool readOnly_ = false;
};

// The files that a clipboard or a drag holds: those of a file manager, or paths copied as text, one a line,
// with or without quotes. Only files that there are.
QStringList filesIn(const QMimeData& data);

}  // namespace tandeko
