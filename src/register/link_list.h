#pragma once

#include <QTreeWidget>

#include "register/document_links.h"

namespace tandeko {

// lstZrodlo: the documents of a record, kept here until the record is stored.
class LinkList : public QTreeWidget {
  Q_OBJECT

 public:
  explicit LinkList(QWidget* parent = nullptr);

  void setLinks(const QList<DocLink>& links, const QString& documentsFolder);
  QList<DocLink> links() const;
  // Gives the link another name when that one is taken.
  void add(DocLink link);
  void replaceSelected(const DocLink& link);
  void removeSelected();
  void renameSelected();
  // The selected link's path as stored; empty for none.
  QString selectedPath() const;
  void setReadOnly(bool readOnly);

 Q_SIGNALS:
  void edited();
  void openRequested();

 private:
  void show(QTreeWidgetItem& entry, const DocLink& link);

  QString documentsFolder_;
  bool readOnly_ = false;
};

}  // namespace tandeko
