#pragma once

#include <string>
#include <utility>
#include <vector>

#include "jet/catalog/table_def.h"

namespace jet {

// The properties of one catalogue object and its columns, as the object's LvProp value holds them:
//
//   4D 52 32 00 ("MR2", UTF-16 texts; Jet 4) or 4B 4B 44 00 ("KKD", texts of the code page; Jet 3), then
//   chunks of u32 length of the chunk, u16 kind, payload:
//     kind 80  names: { u16 byte length, name } ...; values refer to them by position
//     kind 0   the object's properties, kind 1 one column's:
//              u32 4 + 2 + name length, u16 name length, owner's name,
//              { u16 8 + size, u8 design, u8 type, u16 name number, u16 size, value } ...
struct PropertyBlob {
  struct Owner {
    uint16_t kind = 0;
    std::u16string name;
    PropertySet set;
  };
  static constexpr uint16_t kObject = 0, kColumn = 1, kNames = 0x80;

  std::vector<std::u16string> names;  // as read; rewriting keeps their order
  std::vector<Owner> owners;
  std::vector<std::pair<uint16_t, std::string>> others;  // chunks of other kinds, as read

  bool empty() const { return owners.empty() && others.empty(); }
  // nullptr when the blob has no chunk for it.
  Owner* object();
  Owner* column(std::u16string_view columnName);
  Owner& makeObject();
  Owner& makeColumn(std::u16string_view columnName);
};

// Throws Error 3049 naming `page`. An empty value holds no properties.
PropertyBlob parseProperties(Bytes stored, int codePage, PageNumber page);
std::string encodeProperties(const PropertyBlob& blob, Version version, int codePage);

// Puts the blob's properties into the table's and its columns' definitions.
void applyProperties(TableDef& table, const PropertyBlob& blob);

}  // namespace jet
