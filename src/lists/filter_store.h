#pragma once

#include <QStringList>

#include "lists/filter_condition.h"
#include "platform/registry.h"

namespace tandeko {

// The named filters of one list, kept in the registry: a key per filter, named by it, and in it a key per
// condition, named by the condition's number.
class FilterStore {
 public:
  // `section`: the list's name among the filters.
  FilterStore(Registry& registry, const QString& section);

  QStringList names() const;  // in alphabetical order
  bool contains(const QString& name) const;
  // Empty for a filter that there is not.
  QList<FilterCondition> load(const QString& name) const;
  // Replaces the filter of that name; empty conditions are left out. False when it could not be stored.
  bool save(const QString& name, const QList<FilterCondition>& conditions);
  bool remove(const QString& name);

 private:
  QString keyOf(const QString& name) const;

  Registry& registry_;
  QString key_;
};

}  // namespace tandeko
