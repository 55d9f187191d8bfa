#include "lists/filter_store.h"

#include "session/names.h"

namespace tandeko {

namespace {

const QString kLogical = QStringLiteral("Operator logiczny");
const QString kField = QStringLiteral("Pole");
const QString kColumn = QStringLiteral("Kolumna");
const QString kSqlOperator = QStringLiteral("Operator porownania");
const QString kValue = QStringLiteral("Wartosc");
const QString kDisplayOperator = QStringLiteral("Operator opisowy");

// A key's name cannot hold "\". The sign that stands in for it is written so only where it would be taken
// for such a stand-in, so that every other name is stored as it is.
const QString kBackslash = QStringLiteral("%5C");
const QString kPercent = QStringLiteral("%25");

QString keyName(const QString& name) {
  QString key;
  for (qsizetype at = 0; at < name.size(); ++at) {
    const QStringView rest = QStringView(name).sliced(at);
    if (name[at] == u'\\')
      key += kBackslash;
    else if (rest.startsWith(kBackslash) || rest.startsWith(kPercent))
      key += kPercent;
    else
      key += name[at];
  }
  return key;
}

QString nameOf(const QString& key) {
  QString name;
  for (qsizetype at = 0; at < key.size(); ++at) {
    const QStringView rest = QStringView(key).sliced(at);
    const bool standIn = rest.startsWith(kBackslash) || rest.startsWith(kPercent);
    name += !standIn ? key[at] : rest.startsWith(kBackslash) ? QChar(u'\\') : QChar(u'%');
    if (standIn) at += 2;
  }
  return name;
}

}  // namespace

FilterStore::FilterStore(Registry& registry, const QString& section)
    : registry_(registry), key_(kFiltersKey + u'\\' + section) {}

QString FilterStore::keyOf(const QString& name) const { return key_ + u'\\' + keyName(name); }

QStringList FilterStore::names() const {
  QStringList names;
  for (const QString& key : registry_.subkeys(key_)) names << nameOf(key);
  return names;
}

bool FilterStore::contains(const QString& name) const { return registry_.hasKey(keyOf(name)); }

QList<FilterCondition> FilterStore::load(const QString& name) const {
  QList<FilterCondition> conditions;
  const QString filter = keyOf(name);
  for (const QString& number : registry_.subkeys(filter)) {
    const auto read = [&](const QString& value) { return registry_.read(filter + u'\\' + number, value); };
    FilterCondition condition{read(kLogical),     read(kField), read(kColumn),
                              read(kSqlOperator), read(kValue), read(kDisplayOperator)};
    // The two words are all that may stand there in a statement.
    condition.logical = condition.logical == u"Or" ? QStringLiteral("Or") : QStringLiteral("And");
    if (!condition.isEmpty()) conditions << condition;
  }
  return conditions;
}

bool FilterStore::save(const QString& name, const QList<FilterCondition>& conditions) {
  const QString filter = keyOf(name);
  if (registry_.hasKey(filter) && !registry_.removeKey(filter)) return false;
  bool stored = registry_.createKey(filter);
  // Keys come back in alphabetical order: numbers of one width keep the order of the conditions.
  const auto width = QString::number(conditions.size()).size();
  int number = 0;
  for (const FilterCondition& condition : conditions) {
    if (condition.isEmpty()) continue;
    const QString key = filter + u'\\' + QString::number(++number).rightJustified(width, u'0');
    stored &= registry_.createKey(key) && registry_.write(key, kColumn, condition.column) &&
              registry_.write(key, kSqlOperator, condition.sqlOperator) &&
              registry_.write(key, kDisplayOperator, condition.displayOperator) &&
              registry_.write(key, kValue, condition.value) &&
              registry_.write(key, kField, condition.field) &&
              registry_.write(key, kLogical, condition.logical);
  }
  return stored;
}

bool FilterStore::remove(const QString& name) { return registry_.removeKey(keyOf(name)); }

}  // namespace tandeko
