#pragma once

#include <QDate>
#include <QString>
#include <optional>

#include "jet/dao/dao.h"

// The running numbers of a register's items: they restart every year, every month, or run separately in
// each item group.
namespace tandeko {

// How a register numbers its items; neither monthly nor perGroup means every year.
struct NumberingSettings {
  QString numberTemplate;
  bool monthly = false;
  bool perGroup = false;
  bool editable = false;
  bool automatic = false;
};

// The settings of the row with key `id` of `table`, whose key field is "ind" and the last three letters
// of the table's name. No row: the template "Numer" and all flags off. nullopt for a missing id.
std::optional<NumberingSettings> NumLoad(jet::Database& database, const QString& table,
                                         std::optional<int> id);

// The highest running number of a period and the item that bears it. An empty register has 0.
struct LastNumber {
  int number = 0;
  QString text;
  QDate purchased;
};

// Of the period that a purchase date (month or year) or a group determines. nullopt when the period cannot be
// told: monthly numbering without a date, numbering per group without a group.
std::optional<LastNumber> NumLast(jet::Database& database, int registerKey, const QDate& purchased,
                                  int group);

// The number proposed for a new item; "?" without a purchase date or with automatic numbering off.
// Throws jet::Error 6 when the period has used up its numbers.
QString NumNext(jet::Database& database, int registerKey, const QDate& purchased, int group);

}  // namespace tandeko
