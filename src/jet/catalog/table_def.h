#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "jet/storage/index_key.h"
#include "jet/storage/row_codec.h"

namespace jet {

// Properties of an object or column by name, as the catalogue keeps them. Unknown ones are carried along.
struct Property {
  std::u16string name;
  Type type = Type::Text;
  bool design = false;      // built-in: needs design permission
  std::string stored;       // bytes as a Jet 4 file holds them, so that nothing is lost on rewriting
  uint8_t unknownType = 0;  // the type code when it is none of Type's (`type` then is Binary)
};
struct PropertySet {
  std::vector<Property> items;
  const Property* find(std::u16string_view name) const;
  // Text, Memo and Boolean properties; `fallback` when absent.
  std::u16string text(std::u16string_view name) const;
  bool boolean(std::u16string_view name, bool fallback) const;
  void setText(std::u16string_view name, std::u16string_view value, Type type = Type::Text);
  void setBoolean(std::u16string_view name, bool value);
  void remove(std::u16string_view name);
};

struct ColumnDef {
  std::u16string name;
  ColumnLayout layout;
  uint16_t lcid = 0x0409;
  uint16_t codePage = 1252;  // Jet 3 descriptors name it
  uint16_t position = 0;     // display position
  bool autoNumber = false;
  bool guidAutoNumber = false;
  bool hyperlink = false;
  uint8_t flags = 0, extendedFlags = 0;  // as stored
  // from the properties
  bool required = false;
  bool allowZeroLength = true;
  std::u16string defaultValue, validationRule, validationText;  // expression texts
  PropertySet properties;
  // long values
  RowId ownedMap, freeMap;

  Type type() const { return layout.type; }
  // Characters of a text column, bytes of others.
  int size(Version version) const;
  bool isLongValue() const { return type() == Type::Memo || type() == Type::Ole; }
};

struct IndexColumn {
  int ordinal = 0;  // into TableDef::columns
  bool descending = false;
};

// A real index: one tree.
struct RealIndex {
  std::vector<IndexColumn> columns;
  bool unique = false, ignoreNulls = false, required = false;
  uint8_t flags = 0x80;
  PageNumber root = 0;
  RowId map;
  uint32_t uniqueEntries = 0;
};

enum class RelationSide : uint8_t { None = 0, Primary = 1, Foreign = 2 };

// A name for a real index, with what it stands for.
struct IndexDef {
  std::u16string name;
  uint32_t number = 0;  // unique within the table
  int real = 0;         // into TableDef::realIndexes
  bool primary = false;
  bool foreign = false;  // kind 2: made by a relationship
  RelationSide side = RelationSide::None;
  int32_t partnerNumber = -1;
  PageNumber partnerTable = 0;
  uint8_t cascadeUpdates = 4, cascadeDeletes = 4;  // 0/1(/2) in relationships, 4 elsewhere
};

// A table's definition, complete. Immutable once handed out; changes go through Catalog.
struct TableDef {
  std::u16string name;
  PageNumber page = 0;        // first definition page = object id
  bool system = false;        // by its flags in the catalogue
  uint8_t storedType = 0x4E;  // 4E 'N' user table, 53 'S' system table
  uint32_t rowCount = 0;
  int32_t lastAutoNumber = 0, autoNumberIncrement = 1;
  RowLayout rowLayout;  // columns in descriptor order
  std::vector<ColumnDef> columns;
  std::vector<RealIndex> realIndexes;
  std::vector<IndexDef> indexes;  // sorted by name
  RowId ownedMap, freeMap;
  PropertySet properties;
  std::u16string validationRule, validationText;
  std::string stamp;  // what was read to make this definition; equal bytes mean that it still holds

  // -1 when there is none; case does not matter.
  int columnOrdinal(std::u16string_view columnName) const;
  const IndexDef* index(std::u16string_view indexName) const;
  const IndexDef* primaryKey() const;
  // Ordinals in display order: SELECT *.
  std::vector<int> displayOrder() const;
  std::vector<KeyColumn> keyColumns(const RealIndex& index, bool jet3) const;
};

using TableDefPtr = std::shared_ptr<const TableDef>;

}  // namespace jet
