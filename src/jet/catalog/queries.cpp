#include "jet/catalog/catalog_impl.h"
#include "jet/catalog/query_text.h"
#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

std::optional<std::u16string> FileCatalog::querySql(std::u16string_view name) {
  const ReadScope scope(pager_);
  const auto query = objects_->find(
      [&](const CatalogObject& o) { return o.type == kObjectQuery && sameName(o.name, name); });
  if (!query) return std::nullopt;

  const TableDefPtr def = systemTable(u"MSysQueries");
  const int id = systemColumn(*def, u"ObjectId", Type::Long),
            attribute = systemColumn(*def, u"Attribute", Type::Byte),
            order = systemColumn(*def, u"Order", Type::Binary),
            flag = systemColumn(*def, u"Flag", Type::Integer),
            name1 = systemColumn(*def, u"Name1", Type::Text),
            name2 = systemColumn(*def, u"Name2", Type::Text),
            expression = systemColumn(*def, u"Expression", Type::Memo);
  const RowStore rows(pager_, def);
  std::vector<QueryPart> parts;
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    if (row.value(id) != Value(query->object.id)) continue;
    const auto text = [&](int ordinal) {
      const Value value = rows.value(row, ordinal);
      return value.isNull() ? std::u16string() : value.get<Text>();
    };
    QueryPart part;
    if (const Value v = row.value(attribute); !v.isNull()) part.attribute = v.get<uint8_t>();
    if (const Value v = row.value(flag); !v.isNull()) part.flag = static_cast<uint16_t>(v.get<int16_t>());
    part.order = asChars(row.stored(order));
    part.name1 = text(name1);
    part.name2 = text(name2);
    part.expression = text(expression);
    parts.push_back(std::move(part));
  }
  return buildQuerySql(std::move(parts), query->object.name);
}

}  // namespace jet
