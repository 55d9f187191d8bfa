#pragma once

#include <QList>
#include <QString>
#include <optional>

#include "jet/dao/dao.h"

namespace tandeko {

class Session;

// A file attached to a record; the file itself stays where it is.
struct DocLink {
  QString name;       // as shown
  QString path;       // "<Dokumenty>\..." inside of the documents folder
  jet::Value serial;  // carried along unchanged
  bool operator==(const DocLink&) const = default;
};

// The record that links belong to.
struct LinkAddress {
  QString table;  // "EWKAR" for items
  int registerKey = 0;
  QString number;  // an item's key
  int position = 0;
};

QList<DocLink> DocLinksLoad(jet::Database& database, const LinkAddress& address);
// The longest name of a link, in characters.
int linkNameSize(jet::Database& database);
// Replaces the record's links. To be called inside of the transaction that stores the record.
void DocLinksSave(jet::Database& database, const LinkAddress& address, const QList<DocLink>& links);

// Lets the user choose a file; nullopt when he gives up or copying into the documents folder fails.
std::optional<DocLink> DocLinkAdd(Session& session);
// The link to a file that is chosen already, with the question about the documents folder. A file of the same
// name that is there already is replaced only when the user says so.
std::optional<DocLink> linkTo(Session& session, const QString& file);
// Opens the file with the program that belongs to its type.
void DocLinkOpen(Session& session, const QString& path);

// A path as stored, with the marker in place of the documents folder, and back. An empty folder changes
// nothing.
QString storedLinkPath(const QString& file, const QString& documentsFolder);
QString realLinkPath(const QString& stored, const QString& documentsFolder);

}  // namespace tandeko
