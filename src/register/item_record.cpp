#include "register/item_record.h"

#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

QString itemQuery(int id) { return QStringLiteral("SELECT * FROM ewkar WHERE indewi = ") + str(id); }

jet::Value keyOrNull(int key) { return key > 0 ? jet::Value(int32_t{key}) : jet::Value(); }

std::optional<double> numberIn(const jet::Value& value) {
  return value.isNull() ? std::nullopt : std::optional(toDouble(value));
}

void writeFields(jet::Recordset& row, const ItemData& item, int registerKey, const QString& user) {
  const auto set = [&row](std::u16string_view field, const jet::Value& value) {
    row.field(field).setValue(value);
  };
  const auto number = [](const std::optional<double>& value) {
    return value ? jet::Value(*value) : jet::Value();
  };
  const auto part = [&item](int value) {
    return item.purchased.isValid() ? jet::Value(static_cast<int16_t>(value)) : jet::Value();
  };
  set(u"Indrew", jet::Value(int32_t{registerKey}));
  set(u"nazwa", fromText(item.name));
  set(u"Indsew", keyOrNull(item.state));
  set(u"Parent", keyOrNull(item.parent));
  set(u"Indgew", keyOrNull(item.group));
  set(u"Indpra", jet::Value(int32_t{item.holder}));
  set(u"Ilosc", number(item.quantity));
  set(u"Indjed", textOrNull(item.unit));
  set(u"Cenazak", item.price ? fromCurrency(*item.price) : jet::Value());
  set(u"numewi", textOrNull(item.number));
  set(u"numser", textOrNull(item.serialNumber));
  set(u"Numkat", textOrNull(item.catalogNumber));
  set(u"data", fromDate(item.issued));
  set(u"datazak", fromDate(item.purchased));
  set(u"miesiac", part(item.purchased.month()));
  set(u"rok", part(item.purchased.year()));
  set(u"Uwagi", textOrNull(item.notes));
  set(u"Indoso", textOrNull(user));
  set(u"Srodek", jet::Value(item.fixedAsset));
}

}  // namespace

std::optional<ItemData> loadItem(jet::Database& database, int id) {
  const auto row = openRows(database, itemQuery(id));
  if (row->eof()) return std::nullopt;
  ItemData item;
  item.id = id;
  item.name = toText(row->value(u"nazwa"));
  item.holder = toInt(row->value(u"Indpra"));
  item.parent = toInt(row->value(u"Parent"));
  item.group = toInt(row->value(u"Indgew"));
  item.state = toInt(row->value(u"Indsew"));
  item.unit = toText(row->value(u"Indjed"));
  item.quantity = numberIn(row->value(u"Ilosc"));
  item.price = numberIn(row->value(u"Cenazak"));
  item.number = toText(row->value(u"numewi"));
  item.serialNumber = toText(row->value(u"numser"));
  item.catalogNumber = toText(row->value(u"Numkat"));
  item.issued = toDate(row->value(u"data"));
  item.purchased = toDate(row->value(u"datazak"));
  item.notes = toText(row->value(u"Uwagi"));
  item.fixedAsset = toBool(row->value(u"Srodek"));
  return item;
}

ItemData proposeItem(jet::Database& database, int registerKey, const QDate& today) {
  ItemData item;
  item.issued = item.purchased = today;
  const auto row =
      openRows(database, QStringLiteral("SELECT * FROM swrew WHERE indrew = ") + str(registerKey));
  if (!row->eof()) {
    item.group = toInt(row->value(u"Startgew"));
    item.state = toInt(row->value(u"Startsew"));
    item.unit = toText(row->value(u"Startjed"));
    item.quantity = numberIn(row->value(u"Startilosc"));
  }
  return item;
}

ItemFault checkItem(const ItemData& item) {
  if (item.name.trimmed().isEmpty()) return ItemFault::NoName;
  if (item.name.contains(u'\\')) return ItemFault::NameWithBackslash;
  if (item.group < 1) return ItemFault::NoGroup;
  if (item.state < 1) return ItemFault::NoState;
  if (item.unit.isEmpty()) return ItemFault::NoUnit;
  return ItemFault::None;
}

std::optional<QString> itemWithNumber(jet::Database& database, int id, const QString& number) {
  if (number.isEmpty()) return std::nullopt;
  const auto row = openRows(database, QStringLiteral("SELECT * FROM ewkar WHERE indewi <> ") + str(id) +
                                          QStringLiteral(" And numewi = '") + number + QStringLiteral("' "));
  if (row->eof()) return std::nullopt;
  return toText(row->value(u"nazwa"));
}

SaveResult saveItem(const ItemStore& store, ItemData& item, const QString& user, const QList<DocLink>& links,
                    const RowCheck& complete) {
  Transaction transaction(store.workspace);
  const bool isNew = item.id < 1;
  const auto row = openRows(store.database, itemQuery(isNew ? 0 : item.id));
  if (isNew) {
    row->addNew();
  } else {
    if (row->eof()) return SaveResult::Gone;
    row->edit();
  }
  const int holderBefore = isNew ? item.holder : toInt(row->value(u"Indpra"));
  writeFields(*row, item, store.registerKey, user);
  if (!complete(*row)) {
    row->cancelUpdate();
    return SaveResult::Incomplete;
  }
  if (item.parent > 0 && !StructCheck(store, item.id, item.holder, item.parent)) {
    row->cancelUpdate();
    return SaveResult::WrongSet;
  }
  row->update();
  int id = item.id;
  if (isNew) {
    row->setBookmark(row->lastModified());
    id = toInt(row->value(u"indewi"));
  } else if (holderBefore != item.holder) {
    PanelMoveComponents(store, id, holderBefore, item.holder);
  }
  DocLinksSave(store.database, linkAddress(store.registerKey, id), links);
  transaction.commit();
  item.id = id;
  return SaveResult::Saved;
}

LinkAddress linkAddress(int registerKey, int item) {
  return {QStringLiteral("EWKAR"), registerKey, str(item), 0};
}

int splitItem(const ItemStore& store, int item, double quantity, const QString& number,
              const QString& serialNumber) {
  Transaction transaction(store.workspace);
  const auto source = openRows(store.database, itemQuery(item));
  if (source->eof()) return 0;
  // As it is shown: 1 less 0.9 leaves 0.1, not 0.09999999999999998.
  const double left = leadingNumber(toText(jet::Value(toDouble(source->value(u"Ilosc")) - quantity)));
  if (quantity <= 0 || left <= 0) return 0;
  const auto target = openRows(store.database, itemQuery(0));
  target->addNew();
  for (size_t at = 0; at < source->fieldCount(); ++at)
    if (!source->field(at).autoNumber()) target->field(at).setValue(source->field(at).value());
  target->field(u"Ilosc").setValue(jet::Value(quantity));
  target->field(u"numewi").setValue(textOrNull(number));
  target->field(u"numser").setValue(textOrNull(serialNumber));
  target->update();
  target->setBookmark(target->lastModified());
  const int split = toInt(target->value(u"indewi"));
  source->edit();
  source->field(u"Ilosc").setValue(jet::Value(left));
  source->update();
  transaction.commit();
  return split;
}

}  // namespace tandeko
