#pragma once

#include <QList>
#include <QString>

namespace tandeko {

// A database that passed the check in this session.
struct CatalogueEntry {
  QString name;  // as the database combo shows it; "Replika ..." for a replica
  QString path;
  QString password;
  bool exclusive = false;
  bool readOnly = false;
  bool keepPassword = false;  // the user asked to keep the password with the list entry
};

using Catalogue = QList<CatalogueEntry>;

}  // namespace tandeko
