#include "jet/catalog/table_def.h"

#include <algorithm>
#include <array>

#include "jet/format/text.h"

namespace jet {

namespace {

// Properties that the engine or the designer defines; changing them needs design permission.
constexpr std::array<std::u16string_view, 14> kDesignProperties = {
    u"Required",       u"AllowZeroLength", u"DefaultValue",   u"ValidationRule",
    u"ValidationText", u"Description",     u"Format",         u"InputMask",
    u"Caption",        u"DecimalPlaces",   u"DisplayControl", u"UnicodeCompression",
    u"GUID",           u"Orientation"};

bool isDesignProperty(std::u16string_view name) {
  return std::any_of(kDesignProperties.begin(), kDesignProperties.end(),
                     [&](std::u16string_view known) { return sameName(known, name); });
}

Property& entry(PropertySet& set, std::u16string_view name) {
  for (Property& p : set.items) {
    if (sameName(p.name, name)) return p;
  }
  set.items.push_back({.name = std::u16string(name), .design = isDesignProperty(name), .stored = {}});
  return set.items.back();
}

}  // namespace

const Property* PropertySet::find(std::u16string_view name) const {
  for (const Property& p : items) {
    if (sameName(p.name, name)) return &p;
  }
  return nullptr;
}

std::u16string PropertySet::text(std::u16string_view name) const {
  const Property* p = find(name);
  if (!p || (p->type != Type::Text && p->type != Type::Memo)) return {};
  std::u16string text(p->stored.size() / 2, u'\0');
  for (size_t i = 0; i < text.size(); ++i) text[i] = get16(asBytes(p->stored).data() + 2 * i);
  return text;
}

bool PropertySet::boolean(std::u16string_view name, bool fallback) const {
  const Property* p = find(name);
  if (!p || p->type != Type::Boolean || p->stored.empty()) return fallback;
  return p->stored[0] != 0;
}

void PropertySet::setText(std::u16string_view name, std::u16string_view value, Type type) {
  Property& p = entry(*this, name);
  p.type = type;
  p.unknownType = 0;
  p.stored.clear();
  encodeText(value, false, p.stored);
}

void PropertySet::setBoolean(std::u16string_view name, bool value) {
  Property& p = entry(*this, name);
  p.type = Type::Boolean;
  p.unknownType = 0;
  p.stored.assign(1, value ? '\1' : '\0');
}

void PropertySet::remove(std::u16string_view name) {
  std::erase_if(items, [&](const Property& p) { return sameName(p.name, name); });
}

int ColumnDef::size(Version version) const {
  return layout.type == Type::Text && version == Version::Jet4 ? layout.length / 2 : layout.length;
}

int TableDef::columnOrdinal(std::u16string_view columnName) const {
  for (size_t i = 0; i < columns.size(); ++i) {
    if (sameName(columns[i].name, columnName)) return static_cast<int>(i);
  }
  return -1;
}

const IndexDef* TableDef::index(std::u16string_view indexName) const {
  for (const IndexDef& i : indexes) {
    if (sameName(i.name, indexName)) return &i;
  }
  return nullptr;
}

const IndexDef* TableDef::primaryKey() const {
  for (const IndexDef& i : indexes) {
    if (i.primary) return &i;
  }
  return nullptr;
}

std::vector<int> TableDef::displayOrder() const {
  std::vector<int> order(columns.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    const ColumnDef& left = columns[a];
    const ColumnDef& right = columns[b];
    if (left.position != right.position) return left.position < right.position;
    return left.layout.number < right.layout.number;
  });
  return order;
}

std::vector<KeyColumn> TableDef::keyColumns(const RealIndex& index, bool jet3) const {
  std::vector<KeyColumn> keys;
  keys.reserve(index.columns.size());
  for (const IndexColumn& part : index.columns) {
    const ColumnDef& column = columns[part.ordinal];
    const bool text = column.type() == Type::Text || column.type() == Type::Memo;
    keys.push_back({.type = column.type(),
                    .descending = part.descending,
                    .collation = text ? &Collation::get(column.lcid, jet3) : nullptr,
                    .scale = column.layout.scale});
  }
  return keys;
}

}  // namespace jet
