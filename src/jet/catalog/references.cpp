#include "jet/catalog/references.h"

#include "jet/format/error.h"

namespace jet {

namespace {

// Keys of one side's values can be built for the other side's index.
bool correspond(const TableDef& a, const RealIndex& left, const TableDef& b, const RealIndex& right) {
  if (left.columns.size() != right.columns.size()) return false;
  for (size_t i = 0; i < left.columns.size(); ++i) {
    const ColumnDef& x = a.columns[static_cast<size_t>(left.columns[i].ordinal)];
    const ColumnDef& y = b.columns[static_cast<size_t>(right.columns[i].ordinal)];
    const auto isText = [](const ColumnDef& c) { return c.type() == Type::Text || c.type() == Type::Memo; };
    if (x.type() != y.type() && !(isText(x) && isText(y))) return false;
  }
  return true;
}

}  // namespace

References::References(Catalog& catalog, const TableDef& def) {
  for (const IndexDef& index : def.indexes) {
    if (index.side == RelationSide::None) continue;
    const TableDefPtr other = catalog.tableAt(index.partnerTable);
    const IndexDef* partner = nullptr;
    for (const IndexDef& candidate : other->indexes) {
      if (static_cast<int32_t>(candidate.number) == index.partnerNumber) partner = &candidate;
    }
    const RelationSide expected =
        index.side == RelationSide::Primary ? RelationSide::Foreign : RelationSide::Primary;
    if (!partner || partner->side != expected || partner->partnerTable != def.page ||
        !correspond(def, def.realIndexes[static_cast<size_t>(index.real)], *other,
                    other->realIndexes[static_cast<size_t>(partner->real)])) {
      throwDamaged(u"relationship " + index.name + u" lacks its other side", def.page);
    }
    if (index.side == RelationSide::Foreign) {
      const RealIndex& key = other->realIndexes[static_cast<size_t>(partner->real)];
      foreign_.push_back({index.real, other, partner->real,
                          other->keyColumns(key, other->rowLayout.file->version == Version::Jet3)});
    } else {
      primary_.push_back({index.real, other, partner->real, index.cascadeUpdates == 1,
                          index.cascadeDeletes == 1   ? Primary::OnDelete::Cascade
                          : index.cascadeDeletes == 2 ? Primary::OnDelete::SetNull
                                                      : Primary::OnDelete::Refuse});
    }
  }
}

std::string referenceKey(const RealIndex& index, std::span<const Value> values, const TableDef& other,
                         const RealIndex& otherIndex) {
  return referenceKey(index, values,
                      other.keyColumns(otherIndex, other.rowLayout.file->version == Version::Jet3));
}

std::string referenceKey(const RealIndex& index, std::span<const Value> values,
                         std::span<const KeyColumn> otherColumns) {
  std::string key;
  for (size_t i = 0; i < index.columns.size(); ++i) {
    const Value& value = values[static_cast<size_t>(index.columns[i].ordinal)];
    if (value.isNull()) return {};
    appendKeyColumn(otherColumns[i], value, key);
  }
  return key;
}

BTree indexTree(Pager& pager, const TableDef& def, int real) {
  const RealIndex& index = def.realIndexes[static_cast<size_t>(real)];
  return BTree(pager, def.page, index.root, index.map);
}

}  // namespace jet
