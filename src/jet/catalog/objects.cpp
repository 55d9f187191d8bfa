#include "jet/catalog/objects.h"

#include <algorithm>
#include <set>

#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

int systemColumn(const TableDef& def, std::u16string_view name, Type type) {
  const int ordinal = def.columnOrdinal(name);
  if (ordinal < 0 || def.columns[ordinal].type() != type) {
    throwDamaged(u"a system table lacks the column " + std::u16string(name), def.page);
  }
  return ordinal;
}

SystemRow& SystemRow::set(std::u16string_view column, Value value) {
  const int ordinal = def_.columnOrdinal(column);
  if (ordinal < 0) throwDamaged(u"a system table lacks the column " + std::u16string(column), def_.page);
  values_[ordinal] = std::move(value);
  return *this;
}

ObjectStore::ObjectStore(Pager& pager, TableDefPtr objects)
    : pager_(pager), rows_(pager, std::move(objects)) {
  const TableDef& def = rows_.def();
  columns_ = {.id = systemColumn(def, u"Id", Type::Long),
              .parent = systemColumn(def, u"ParentId", Type::Long),
              .name = systemColumn(def, u"Name", Type::Text),
              .type = systemColumn(def, u"Type", Type::Integer),
              .created = systemColumn(def, u"DateCreate", Type::Date),
              .updated = systemColumn(def, u"DateUpdate", Type::Date),
              .owner = systemColumn(def, u"Owner", Type::Binary),
              .flags = systemColumn(def, u"Flags", Type::Long),
              .properties = systemColumn(def, u"LvProp", Type::Ole)};
}

CatalogObject ObjectStore::decode(const RowReader& row) const {
  const auto number = [&](int ordinal) {
    const Value value = row.value(ordinal);
    return value.isNull() ? 0 : value.get<int32_t>();
  };
  const auto date = [&](int ordinal) {
    const Value value = row.value(ordinal);
    return value.isNull() ? 0.0 : value.get<Date>().days;
  };
  CatalogObject object;
  object.id = number(columns_.id);
  object.parent = number(columns_.parent);
  object.flags = number(columns_.flags);
  if (const Value type = row.value(columns_.type); !type.isNull()) object.type = type.get<int16_t>();
  if (const Value name = row.value(columns_.name); !name.isNull()) object.name = name.get<Text>();
  object.created = date(columns_.created);
  object.updated = date(columns_.updated);
  return object;
}

std::vector<ObjectStore::Entry> ObjectStore::all() const {
  std::vector<Entry> entries;
  for (Heap::Scan scan = rows_.scan(); scan.next();) {
    entries.push_back({decode(rows_.reader(scan.bytes(), scan.where())), scan.id()});
  }
  return entries;
}

std::optional<ObjectStore::Entry> ObjectStore::find(
    const std::function<bool(const CatalogObject&)>& match) const {
  for (Heap::Scan scan = rows_.scan(); scan.next();) {
    CatalogObject object = decode(rows_.reader(scan.bytes(), scan.where()));
    if (match(object)) return Entry{std::move(object), scan.id()};
  }
  return std::nullopt;
}

std::optional<ObjectStore::Entry> ObjectStore::find(int32_t parent, std::u16string_view name) const {
  return find([&](const CatalogObject& o) { return o.parent == parent && sameName(o.name, name); });
}

std::string ObjectStore::properties(RowId row) const {
  const auto present = rows_.heap().fetch(row);
  if (!present) return {};
  const Value value = rows_.value(rows_.reader(present->bytes, present->where), columns_.properties);
  if (value.isNull()) return {};
  const Binary& bytes = value.get<Binary>();
  return {bytes.begin(), bytes.end()};
}

std::string ObjectStore::rowBytes(RowId row) const {
  const auto present = rows_.heap().fetch(row);
  return present ? std::string(asChars(present->bytes)) : std::string();
}

Binary ObjectStore::ownerOf(std::u16string_view name) const {
  const auto entry = find([&](const CatalogObject& o) { return sameName(o.name, name); });
  const auto row = entry ? rows_.heap().fetch(entry->row) : std::nullopt;
  const Value owner = row ? rows_.reader(row->bytes, row->where).value(columns_.owner) : Value();
  if (owner.isNull()) throwDamaged(u"a system object has no owner", kObjectsPage);
  return owner.get<Binary>();
}

void ObjectStore::add(const CatalogObject& object, const std::string& properties, const TableDefPtr& aces) {
  const Date now{pager_.environment().localTime()};
  SystemRow row(rows_.def());
  row.set(u"Id", object.id)
      .set(u"ParentId", object.parent)
      .set(u"Name", object.name)
      .set(u"Type", object.type)
      .set(u"DateCreate", now)
      .set(u"DateUpdate", now)
      .set(u"Owner", ownerOf(u"MSysDb"))
      .set(u"Flags", object.flags);
  if (!properties.empty()) row.set(u"LvProp", Binary(properties.begin(), properties.end()));
  rows_.insert(row.values());
  copyPermissions(object.parent, object.id, aces);
}

// Every permission that the container passes on is given to the new object; where it names the creator, the
// owner takes that place, unless another one is the owner's already.
void ObjectStore::copyPermissions(int32_t container, int32_t object, const TableDefPtr& aces) {
  RowStore store(pager_, aces);
  const int id = systemColumn(*aces, u"ObjectId", Type::Long),
            sid = systemColumn(*aces, u"SID", Type::Binary), acm = systemColumn(*aces, u"ACM", Type::Long),
            inheritable = systemColumn(*aces, u"FInheritable", Type::Boolean);
  const Binary owner = ownerOf(u"MSysDb"), engine = ownerOf(u"MSysObjects");
  Binary creator(kSidCreator, kSidCreator + 2);
  for (size_t i = 0; i < 2 && i < engine.size(); ++i) creator[i] ^= engine[i] ^ kSidEngine[i];

  std::vector<std::pair<Binary, int32_t>> given;
  bool ownerGiven = false;
  for (Heap::Scan scan = store.scan(); scan.next();) {
    const RowReader row = store.reader(scan.bytes(), scan.where());
    if (row.value(id) != Value(container) || !row.boolean(inheritable)) continue;
    const Value who = row.value(sid), mask = row.value(acm);
    if (who.isNull() || mask.isNull()) continue;
    ownerGiven = ownerGiven || who.get<Binary>() == owner;
    given.emplace_back(who.get<Binary>(), mask.get<int32_t>());
  }
  for (auto& [who, mask] : given) {
    if (who == creator) {
      if (ownerGiven) continue;
      who = owner;
    }
    SystemRow row(*aces);
    row.set(u"ObjectId", object).set(u"SID", who).set(u"ACM", mask).set(u"FInheritable", false);
    store.insert(row.values());
  }
}

void ObjectStore::remove(const Entry& entry, const TableDefPtr& aces) {
  rows_.remove(entry.row);
  RowStore store(pager_, aces);
  const int id = systemColumn(*aces, u"ObjectId", Type::Long);
  std::vector<RowId> doomed;
  for (Heap::Scan scan = store.scan(); scan.next();) {
    if (store.reader(scan.bytes(), scan.where()).value(id) == Value(entry.object.id))
      doomed.push_back(scan.id());
  }
  for (const RowId row : doomed) store.remove(row);
}

void ObjectStore::change(RowId row, std::optional<std::u16string_view> name, const std::string* properties) {
  std::vector<RowStore::Change> changes;
  changes.push_back({columns_.updated, Date{pager_.environment().localTime()}});
  if (name) changes.push_back({columns_.name, Text(*name)});
  if (properties) {
    changes.push_back({columns_.properties, properties->empty()
                                                ? Value()
                                                : Value(Binary(properties->begin(), properties->end()))});
  }
  rows_.update(row, changes);
}

int32_t ObjectStore::freeId() const {
  std::set<int32_t> taken;
  for (const Entry& entry : all()) {
    if (entry.object.id < 0) taken.insert(entry.object.id);
  }
  if (taken.empty()) return INT32_MIN;
  if (*taken.rbegin() < -2) return *taken.rbegin() + 1;
  int32_t id = INT32_MIN;  // the top is taken: the first gap
  while (taken.contains(id)) ++id;
  return id;
}

}  // namespace jet
