// The part of a DatabaseCopy that carries the catalogue: rows of the system tables, with new ids of tables.

#include <algorithm>

#include "jet/catalog/objects.h"
#include "jet/catalog/properties.h"
#include "jet/catalog/row_store.h"
#include "jet/catalog/tdef_io.h"
#include "jet/dao/database_copy.h"
#include "jet/dao/table_source.h"
#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

constexpr int16_t kDatabaseDocument = -32757;  // needs no permissions of its own
// Permissions of an object that has lost its own: what new tables get in a file without a workgroup.
constexpr int32_t kOwnerAccess = 0xF00FE, kUsersAccess = 0xFFEFF;

int32_t longValue(const Value& value) {
  const int32_t* number = value.getIf<int32_t>();
  return number ? *number : 0;
}

Value& column(std::vector<Value>& row, const TableDef& def, std::u16string_view name, Type type) {
  return row[static_cast<size_t>(systemColumn(def, name, type))];
}

}  // namespace

void DatabaseCopy::copySystemTables(SystemTables& tables) {
  objectIds_ = {{static_cast<int32_t>(source_.objects.def.page), static_cast<int32_t>(tables.objects.page)},
                {static_cast<int32_t>(source_.aces.def.page), static_cast<int32_t>(tables.aces.page)},
                {static_cast<int32_t>(source_.queries.def.page), static_cast<int32_t>(tables.queries.page)},
                {static_cast<int32_t>(source_.relationships.def.page),
                 static_cast<int32_t>(tables.relationships.page)}};
  for (const auto& [from, to] : tablePages_)
    objectIds_[static_cast<int32_t>(from)] = static_cast<int32_t>(to);
  if (settings_.tolerant) findCompleteRelations();
  copySystemRows(
      source_.objects, tables.objects,
      [&](Row& row) {
        const int32_t id = longValue(column(row, tables.objects, u"Id", Type::Long));
        if (!adjustObject(row, tables.objects)) return false;
        const int32_t newId = longValue(column(row, tables.objects, u"Id", Type::Long));
        objectIds_[id] = newId;
        if (column(row, tables.objects, u"Type", Type::Integer) == Value(kDatabaseDocument))
          withPermissions_.insert(newId);
        if (carried_.insert(newId).second) return true;
        throwDamaged(u"two objects have the same id", source_.objects.def.page);
      },
      [&] { return settings_.tolerant ? missingObjects(tables.objects) : std::vector<Row>(); });

  const auto mapped = [&](Row& row, const TableDef& def) {
    Value& id = column(row, def, u"ObjectId", Type::Long);
    const auto found = objectIds_.find(longValue(id));
    // What belongs to no object is a remainder, and its id may be another's in the new file.
    if (found == objectIds_.end() || !carried_.contains(found->second)) return false;
    id = found->second;
    return true;
  };
  copySystemRows(
      source_.aces, tables.aces,
      [&](Row& row) {
        if (!mapped(row, tables.aces)) return false;
        Value& sid = column(row, tables.aces, u"SID", Type::Binary);
        sid = translatedSid(sid);
        if (settings_.tolerant && (sid.isNull() || sid.get<Binary>().empty()))
          throwDamaged(u"permissions of nobody", source_.aces.def.page);
        withPermissions_.insert(longValue(column(row, tables.aces, u"ObjectId", Type::Long)));
        return true;
      },
      [&] { return settings_.tolerant ? missingPermissions(tables.aces) : std::vector<Row>(); });
  copySystemRows(
      source_.queries, tables.queries, [&](Row& row) { return mapped(row, tables.queries); }, nullptr);
  copySystemRows(
      source_.relationships, tables.relationships,
      [&](Row& row) {
        const Value& name = column(row, tables.relationships, u"szRelationship", Type::Text);
        return !settings_.tolerant || (!name.isNull() && relations_.contains(foldName(name.get<Text>())));
      },
      nullptr);
}

// Relationships all of whose rows are there, between tables that are there.
void DatabaseCopy::findCompleteRelations() {
  const TableDef& def = source_.relationships.def;
  const int name = def.columnOrdinal(u"szRelationship"), count = def.columnOrdinal(u"ccolumn"),
            foreign = def.columnOrdinal(u"szObject"), primary = def.columnOrdinal(u"szReferencedObject");
  if (name < 0 || count < 0 || foreign < 0 || primary < 0) return;
  std::set<std::u16string> tables;
  for (const CopySource::Table& table : source_.tables) tables.insert(foldName(table.def.name));
  std::map<std::u16string, int32_t> missing;  // rows of each
  RowMarks marks(source_.pager.pageCount());
  TableSource(source_.pager, def, source_.relationships.pages, marks, true)
      .forEach([&](Bytes bytes, PageNumber where) {
        try {
          const RowReader row(def.rowLayout, bytes, where);
          const Value who = row.value(name), from = row.value(primary), to = row.value(foreign);
          if (who.isNull() || from.isNull() || to.isNull()) return;
          const bool known =
              tables.contains(foldName(from.get<Text>())) && tables.contains(foldName(to.get<Text>()));
          const auto entry = missing.emplace(foldName(who.get<Text>()), longValue(row.value(count))).first;
          if (known) --entry->second;
        } catch (const Error& error) {
          if (!isDamage(error)) throw;
        }
      });
  for (const auto& [relation, rows] : missing) {
    if (rows == 0)
      relations_.insert(relation);
    else
      lose(u"relationship " + relation + u": lost, the catalogue tells only a part of it");
  }
}

// Copies the rows that `adjust` accepts, after its changes, and those that are `missing` then.
void DatabaseCopy::copySystemRows(const CopySource::Table& from, TableDef& to, const Adjust& adjust,
                                  const std::function<std::vector<Row>()>& missing) {
  const auto def = std::make_shared<TableDef>(from.def);
  const RowStore reader(source_.pager, def);
  std::vector<int> ordinals;  // of the source, -1 where it has no such column
  for (const ColumnDef& c : to.columns) {
    const int ordinal = def->columnOrdinal(c.name);
    const bool same = ordinal >= 0 && def->columns[static_cast<size_t>(ordinal)].type() == c.type();
    ordinals.push_back(same ? ordinal : -1);
  }
  std::filesystem::path scratch = to_->path();
  scratch += "-sort";
  TableBuilder builder(*to_, to, scratch);
  TableSource rows(source_.pager, *def, from.pages, marks_, settings_.tolerant);
  uint64_t lost = 0;
  Row values;
  rows.forEach([&](Bytes bytes, PageNumber where) {
    bool readable = true;
    try {
      const RowReader row = reader.reader(bytes, where);
      values.assign(ordinals.size(), Value());
      for (size_t i = 0; i < ordinals.size(); ++i) {
        if (ordinals[i] < 0) continue;
        try {
          values[i] = reader.value(row, ordinals[i]);
        } catch (const Error& error) {
          if (!settings_.tolerant || !isDamage(error) || !to.columns[i].isLongValue()) throw;
          lose(u"system table " + to.name + u": a memo or OLE value lost");
        }
      }
      readable = !adjust || adjust(values);
      if (readable) builder.addValues(values);
    } catch (const Error& error) {
      if (!settings_.tolerant || (!isDamage(error) && error.number() != 3058 && error.number() != 3047))
        throw;
      ++lost;
    }
    tick(bytes.size());
  });
  if (missing)
    for (const Row& row : missing()) builder.addValues(row);
  builder.finish(settings_.tolerant, [this] { tick(0); });
  const uint64_t unread =
      rows.badPages() > 0 && from.def.rowCount > rows.slots() ? from.def.rowCount - rows.slots() : 0;
  if (settings_.tolerant && lost + unread + builder.duplicates() > 0)
    lose(u"system table " + from.def.name + u": " +
         fromUtf8(std::to_string(lost + unread + builder.duplicates())) + u" rows lost");
  writeTdef(*to_, to, {to.page});
}

// The catalogue entry as the new file has it; false when its object is not carried.
bool DatabaseCopy::adjustObject(Row& row, const TableDef& def) {
  Value &id = column(row, def, u"Id", Type::Long), &type = column(row, def, u"Type", Type::Integer);
  const Value& name = column(row, def, u"Name", Type::Text);
  if (settings_.tolerant && (id.isNull() || type.isNull() || name.isNull() || name.get<Text>().empty()))
    return false;
  if (settings_.tolerant) mendType(type, longValue(id));
  const int16_t kind = type.isNull() ? int16_t{0} : type.get<int16_t>();
  if (kind == kObjectTable) {
    const auto page = objectIds_.find(longValue(id));
    if (page == objectIds_.end()) {
      if (!settings_.tolerant)
        throwDamaged(u"a table in the catalogue has no definition", source_.objects.def.page);
      return false;
    }
    id = page->second;
  }
  if (settings_.tolerant) {
    if (kind == kObjectRelation && !relations_.contains(foldName(name.get<Text>()))) return false;
    if (!takeName(row, def)) return false;
  }
  Value& owner = column(row, def, u"Owner", Type::Binary);
  owner = translatedSid(owner);
  Value& properties = column(row, def, u"LvProp", Type::Ole);
  properties = adjustedProperties(properties, name.isNull() ? std::u16string() : name.get<Text>());
  // The plan that a query once had; it names pages of the old file.
  if (kind == kObjectQuery) column(row, def, u"LvExtra", Type::Ole) = {};
  return true;
}

// An entry with the number of a table's page is that table's, whatever its type has become. Another that has the
// number of a new table would be mistaken for it.
void DatabaseCopy::mendType(Value& type, int32_t id) const {
  if (type.get<int16_t>() == kObjectTable) return;
  if (objectIds_.contains(id))
    type = kObjectTable;
  else if (id > 0 && static_cast<PageNumber>(id) < to_->pageCount())
    throwDamaged(u"an object has the number of a page", source_.objects.def.page);
}

// Makes the name in its container one of its own.
bool DatabaseCopy::takeName(Row& row, const TableDef& def) {
  const int32_t parent = longValue(column(row, def, u"ParentId", Type::Long));
  Value& name = column(row, def, u"Name", Type::Text);
  const std::u16string wanted = name.get<Text>();
  for (int i = 2; i < 1000; ++i) {
    if (names_.insert({parent, foldName(name.get<Text>())}).second) return true;
    name = Text(wanted.substr(0, kMaxNameLength - 4) + u" " + fromUtf8(std::to_string(i)));
  }
  return false;
}

Value DatabaseCopy::adjustedProperties(const Value& stored, const std::u16string& object) {
  const Binary* bytes = stored.getIf<Binary>();
  const bool jet3 = source_.header.version == Version::Jet3;
  if (!bytes || (!jet3 && !settings_.tolerant)) return stored;
  try {
    const PropertyBlob blob = parseProperties(*bytes, source_.header.codePage, source_.objects.def.page);
    if (!jet3) return stored;
    if (blob.empty()) return {};
    const std::string converted = encodeProperties(blob, Version::Jet4, source_.header.codePage);
    return Binary(converted.begin(), converted.end());
  } catch (const Error& error) {
    if (!settings_.tolerant || !isDamage(error)) throw;
    lose(u"properties of " + object + u" lost");
    return {};
  }
}

Value DatabaseCopy::translatedSid(const Value& sid) const {
  const Binary* bytes = sid.getIf<Binary>();
  if (!bytes) return sid;
  Binary translated = *bytes;
  for (size_t i = 0; i < std::min(translated.size(), sidToggle_.size()); ++i) translated[i] ^= sidToggle_[i];
  return translated;
}

// The entries that every file has and this one has lost, and those of tables that were found without one.
std::vector<DatabaseCopy::Row> DatabaseCopy::missingObjects(const TableDef& objects) {
  std::vector<Row> rows;
  for (Row& row : newObjectRows(objects, sidMask_, to_->environment().localTime())) {
    const int32_t parent = longValue(column(row, objects, u"ParentId", Type::Long));
    const std::u16string name = foldName(column(row, objects, u"Name", Type::Text).get<Text>());
    if (!names_.insert({parent, name}).second) continue;
    const int32_t id = longValue(column(row, objects, u"Id", Type::Long));
    objectIds_[id] = id;
    if (carried_.insert(id).second) rows.push_back(std::move(row));
  }
  const Date now{to_->environment().localTime()};
  const Binary admin{static_cast<uint8_t>(kSidAdmin[0] ^ sidMask_[0]),
                     static_cast<uint8_t>(kSidAdmin[1] ^ sidMask_[1])};
  for (const CopySource::Table& table : source_.tables) {
    const auto id = static_cast<int32_t>(tablePages_.at(table.def.page));
    if (table.isListed || !carried_.insert(id).second) continue;
    SystemRow row(objects);
    row.set(u"Id", id)
        .set(u"ParentId", kTablesContainer)
        .set(u"Name", table.def.name)
        .set(u"Type", kObjectTable);
    row.set(u"DateCreate", now).set(u"DateUpdate", now).set(u"Owner", admin).set(u"Flags", int32_t{0});
    rows.emplace_back(row.values().begin(), row.values().end());
    takeName(rows.back(), objects);
  }
  return rows;
}

std::vector<DatabaseCopy::Row> DatabaseCopy::missingPermissions(const TableDef& aces) {
  std::vector<Row> rows;
  std::set<int32_t> lacking;
  std::set_difference(carried_.begin(), carried_.end(), withPermissions_.begin(), withPermissions_.end(),
                      std::inserter(lacking, lacking.end()));
  for (Row& row : newPermissionRows(aces, sidMask_)) {
    const int32_t id = longValue(column(row, aces, u"ObjectId", Type::Long));
    if (lacking.contains(id)) withPermissions_.insert(id), rows.push_back(std::move(row));
  }
  for (const int32_t id : lacking) {
    if (withPermissions_.contains(id)) continue;
    for (const auto& [sid, access] : {std::pair{kSidAdmin, kOwnerAccess}, {kSidUsers, kUsersAccess}}) {
      SystemRow row(aces);
      row.set(u"ObjectId", id).set(u"ACM", access).set(u"FInheritable", false);
      row.set(u"SID",
              Binary{static_cast<uint8_t>(sid[0] ^ sidMask_[0]), static_cast<uint8_t>(sid[1] ^ sidMask_[1])});
      rows.emplace_back(row.values().begin(), row.values().end());
    }
  }
  return rows;
}

}  // namespace jet
