#include "database_text.h"

#include <algorithm>
#include <map>
#include <set>

#include "dump_value.h"
#include "jet/catalog/objects.h"
#include "jet/catalog/row_store.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

std::string inQuotes(std::u16string_view text) { return dumpText(text); }

std::string hex(const std::string& bytes) {
  return dumpValue(jet::Value(jet::Binary(bytes.begin(), bytes.end())));
}

void addProperties(const std::string& owner, const jet::PropertySet& set, Lines& lines) {
  for (const jet::Property& p : set.items)
    lines.push_back(owner + " property " + inQuotes(p.name) + " " + std::to_string(static_cast<int>(p.type)) +
                    " " + std::to_string(p.unknownType) + " " + hex(p.stored) + (p.design ? " design" : ""));
}

void addTable(const jet::TableDef& def, jet::Version version, Lines& lines) {
  const std::string table = "table " + inQuotes(def.name);
  lines.push_back(table + " rows " + std::to_string(def.rowCount) + " last " +
                  std::to_string(def.lastAutoNumber));
  addProperties(table, def.properties, lines);
  int position = 0;
  for (const int ordinal : def.displayOrder()) {
    const jet::ColumnDef& c = def.columns[static_cast<size_t>(ordinal)];
    const std::string column = table + " column " + inQuotes(c.name);
    lines.push_back(column + " at " + std::to_string(position++) + " type " +
                    std::to_string(static_cast<int>(c.type())) + " size " + std::to_string(c.size(version)) +
                    (c.layout.fixed ? " fixed" : "") + (c.autoNumber ? " auto" : "") +
                    (c.guidAutoNumber ? " guid" : "") + (c.hyperlink ? " link" : "") + " " +
                    std::to_string(c.layout.precision) + "." + std::to_string(c.layout.scale));
    addProperties(column, c.properties, lines);
  }
  std::map<int, std::set<std::string>> shared;  // names by real index
  for (const jet::IndexDef& index : def.indexes) shared[index.real].insert(inQuotes(index.name));
  for (const jet::IndexDef& index : def.indexes) {
    const jet::RealIndex& real = def.realIndexes[static_cast<size_t>(index.real)];
    std::string line = table + " index " + inQuotes(index.name) + " number " + std::to_string(index.number) +
                       (index.primary ? " primary" : "") + (index.foreign ? " foreign" : "") +
                       (real.unique ? " unique" : "") + (real.required ? " required" : "") +
                       (real.ignoreNulls ? " ignore" : "") + " side " +
                       std::to_string(static_cast<int>(index.side)) + " cascades " +
                       std::to_string(index.cascadeUpdates) + std::to_string(index.cascadeDeletes);
    for (const jet::IndexColumn& part : real.columns)
      line += " " + inQuotes(def.columns[static_cast<size_t>(part.ordinal)].name) +
              (part.descending ? " desc" : "");
    for (const std::string& name : shared[index.real]) line += " = " + name;
    lines.push_back(line);
  }
}

// Objects by type, place and name, with how many permissions they have and how long their long values are.
void addObjects(jet::Catalog& catalog, Lines& lines) {
  const jet::TableDefPtr objects = catalog.table(u"MSysObjects"), aces = catalog.table(u"MSysACEs");
  std::map<int32_t, int> permissions;
  const jet::RowStore aceRows(catalog.pager(), aces);
  for (jet::Heap::Scan scan = aceRows.scan(); scan.next();) {
    const auto row = aceRows.reader(scan.bytes(), scan.where());
    ++permissions[row.value(aces->columnOrdinal(u"ObjectId")).get<int32_t>()];
  }
  const jet::RowStore rows(catalog.pager(), objects);
  for (jet::Heap::Scan scan = rows.scan(); scan.next();) {
    const auto row = rows.reader(scan.bytes(), scan.where());
    const auto value = [&](std::u16string_view name) {
      return rows.value(row, objects->columnOrdinal(name));
    };
    const bool isTable = value(u"Type") == jet::Value(int16_t{1});
    const bool isQuery = value(u"Type") == jet::Value(int16_t{5});
    const bool isRelation = value(u"Type") == jet::Value(int16_t{8});
    std::string line = "object " + dumpValue(value(u"Type")) + " in " + dumpValue(value(u"ParentId")) + " " +
                       dumpValue(value(u"Name")) + " flags " + dumpValue(value(u"Flags")) + " permissions " +
                       std::to_string(permissions[value(u"Id").get<int32_t>()]);
    if (!isRelation) line += " made " + dumpValue(value(u"DateCreate"));
    if (!isTable && !isRelation) line += " id " + dumpValue(value(u"Id"));
    for (const std::u16string_view name :
         {u"Database", u"Connect", u"ForeignName", u"RmtInfoLong", u"Lv", u"LvModule"})
      line += " " + dumpValue(value(name));
    if (!isQuery) line += " " + dumpValue(value(u"LvExtra"));
    lines.push_back(line);
  }
}

}  // namespace

Lines tableRows(jet::Database& database, std::u16string_view table) {
  jet::Catalog& catalog = database.catalog();
  const jet::ReadScope scope(catalog.pager());
  const jet::TableDefPtr def = catalog.table(table);
  const jet::RowStore rows(catalog.pager(), def);
  Lines lines;
  for (jet::Heap::Scan scan = rows.scan(); scan.next();) {
    const auto row = rows.reader(scan.bytes(), scan.where());
    std::string line;
    for (const int ordinal : def->displayOrder())
      line += (line.empty() ? "" : "|") + dumpValue(rows.value(row, ordinal));
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

Lines databaseText(jet::Database& database) {
  jet::Catalog& catalog = database.catalog();
  const jet::ReadScope scope(catalog.pager());
  Lines lines;
  addObjects(catalog, lines);
  for (const jet::CatalogObject& object : catalog.objects()) {
    if (object.type == 5) {
      std::string sql = "not readable";
      try {
        sql = jet::toUtf8(catalog.querySql(object.name).value_or(u"none"));
      } catch (const jet::Error& error) {
        sql = error.what();
      }
      lines.push_back("query " + inQuotes(object.name) + " " + sql);
    }
    if (object.type != 1 || object.name.starts_with(u"MSysObjects") || object.name.starts_with(u"MSysACEs") ||
        object.name.starts_with(u"MSysQueries") || object.name.starts_with(u"MSysRelationships"))
      continue;
    addTable(*catalog.table(object.name), database.version(), lines);
    for (const std::string& row : tableRows(database, object.name))
      lines.push_back("table " + inQuotes(object.name) + " row " + row);
  }
  for (const jet::Relation& r : catalog.relations()) {
    std::string line = "relationship " + inQuotes(r.name) + " " + inQuotes(r.table) + " " +
                       inQuotes(r.foreignTable) + (r.enforced ? " enforced" : "") +
                       (r.unique ? " unique" : "") + (r.cascadeUpdates ? " updates" : "") +
                       (r.cascadeDeletes ? " deletes" : "") + (r.cascadeNull ? " null" : "") + " join " +
                       std::to_string(static_cast<int>(r.join));
    for (const auto& [primary, foreign] : r.columns)
      line += " " + inQuotes(primary) + "=" + inQuotes(foreign);
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

Lines databaseText(const fs::path& path, const std::u16string& connect) {
  jet::Workspace workspace;
  return databaseText(*workspace.openDatabase(path, {.readOnly = true, .connect = connect}));
}

std::string difference(const Lines& before, const Lines& after) {
  Lines gone, come;
  std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(gone));
  std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(come));
  std::string text;
  for (const std::string& line : gone) text += "- " + line.substr(0, 300) + "\n";
  for (const std::string& line : come) text += "+ " + line.substr(0, 300) + "\n";
  return text.substr(0, 8000);
}

void saveQuery(jet::Database& database, std::u16string_view name, std::u16string_view column,
               std::u16string_view table, std::u16string_view condition) {
  jet::Catalog& catalog = database.catalog();
  jet::Transaction change(catalog.pager());
  jet::ObjectStore objects(catalog.pager(), catalog.table(u"MSysObjects"));
  const int32_t id = objects.freeId();
  objects.add(
      {.id = id, .parent = jet::kTablesContainer, .type = jet::kObjectQuery, .name = std::u16string(name)},
      std::string(), catalog.table(u"MSysACEs"));
  const jet::TableDefPtr def = catalog.table(u"MSysQueries");
  jet::RowStore rows(catalog.pager(), def);
  const auto add = [&](int attribute, std::u16string_view input, std::u16string_view expression) {
    jet::SystemRow row(*def);
    row.set(u"ObjectId", id)
        .set(u"Attribute", static_cast<uint8_t>(attribute))
        .set(u"Order", jet::Binary{0, 0, 0, 1});
    row.set(u"Flag", static_cast<int16_t>(attribute == 1));
    if (!input.empty()) row.set(u"Name1", input);
    if (!expression.empty()) row.set(u"Expression", expression);
    rows.insert(row.values());
  };
  add(0, {}, {}), add(1, {}, {}), add(5, table, {}), add(6, {}, column), add(8, {}, condition),
      add(255, {}, {});
  change.commit();
}
