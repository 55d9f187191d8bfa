#include "database/rename_entry.h"

#include <QDir>
#include <QFileInfo>

namespace tandeko {

namespace {

const struct {
  const char16_t* name;
  const char16_t* fallback;  // null: only when it is there
} kCarried[] = {
    {u"Aktywna", u"1"},
    {u"Defragmentacja", u"0"},
    {u"Defragmentacja potwierdz", u"0"},
    {u"Defragmentacja co dni", u"30"},
    {u"Kopia", u"0"},
    {u"Kopia potwierdz", u"0"},
    {u"Kopia co dni", u"3"},
    {u"Kopia folder", u""},
    {u"Replika", u"0"},
    {u"Replika otworz", u"0"},
    {u"Replika folder", u""},
    {u"Replika aktualizacja", u"0"},
    {u"Replika aktualizacja potwierdz", u"0"},
    {u"Replika zapis", u"0"},
    {u"Replika zapis potwierdz", u"0"},
    {u"Haslo", nullptr},
};

}  // namespace

void handyCarry(Session& session, const HandyEntry& entry, const QString& newPath) {
  Registry& registry = session.registry();
  const QString oldKey = handyKey(entry.subkey);
  const QFileInfo file(newPath);
  QList<std::pair<QString, QString>> values;
  for (const auto& [name, fallback] : kCarried) {
    const QString value =
        registry.read(oldKey, QString::fromUtf16(name), fallback ? QString::fromUtf16(fallback) : QString());
    if (fallback || !value.isEmpty()) values << std::pair(QString::fromUtf16(name), value);
  }
  // An entry of the new name, with or without the extension, was that of the file that is gone now.
  for (const HandyEntry& other : handyList(session))
    if (other.subkey != entry.subkey && other.fileName().compare(file.fileName(), Qt::CaseInsensitive) == 0)
      handyRemove(session, other.subkey);
  const QString newKey = handyKey(file.fileName());
  const bool sameKey = newKey.compare(oldKey, Qt::CaseInsensitive) == 0;
  if (sameKey) handyRemove(session, entry.subkey);
  registry.write(newKey, QStringLiteral("Folder"), QDir::toNativeSeparators(file.absolutePath()));
  for (const auto& [name, value] : std::as_const(values)) registry.write(newKey, name, value);
  if (!sameKey) handyRemove(session, entry.subkey);
}

}  // namespace tandeko
