#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "catalog_fixture.h"
#include "jet/catalog/tdef_io.h"
#include "jet/format/text.h"

// Real files, each beside a text dump (NAME.txt) that an independent reader made: every line of a dump that
// speaks of structure must come out of the catalogue again.

namespace jet {
namespace {

std::string quote(std::u16string_view text) {
  std::string out = "\"";
  for (const char c : toUtf8(text)) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        out += c;
    }
  }
  return out + "\"";
}

const char* typeName(Type type) {
  switch (type) {
    case Type::Boolean:
      return "Boolean";
    case Type::Byte:
      return "Byte";
    case Type::Integer:
      return "Integer";
    case Type::Long:
      return "Long";
    case Type::Currency:
      return "Currency";
    case Type::Single:
      return "Single";
    case Type::Double:
      return "Double";
    case Type::Date:
      return "DateTime";
    case Type::Binary:
      return "Binary";
    case Type::Text:
      return "Text";
    case Type::Ole:
      return "OLE";
    case Type::Memo:
      return "Memo";
    case Type::Guid:
      return "GUID";
    case Type::Decimal:
      return "Decimal";
    default:
      return "?";
  }
}

std::string propertyValue(const PropertySet& set, const Property& p) {
  if (p.type == Type::Boolean) return set.boolean(p.name, false) ? "true" : "false";
  if (p.type == Type::Text || p.type == Type::Memo) return quote(set.text(p.name));
  return std::to_string(static_cast<uint8_t>(p.stored.at(0)));
}

void putProperties(const PropertySet& set, std::initializer_list<std::u16string_view> names, const char* head,
                   std::vector<std::string>& lines) {
  for (const std::u16string_view name : names) {
    if (const Property* p = set.find(name))
      lines.push_back(head + toUtf8(name) + "=" + propertyValue(set, *p));
  }
}

void putColumns(const TableDef& table, Version version, std::vector<std::string>& lines) {
  std::vector<const ColumnDef*> columns;
  for (const ColumnDef& c : table.columns) columns.push_back(&c);
  std::sort(columns.begin(), columns.end(),
            [](const ColumnDef* a, const ColumnDef* b) { return a->layout.number < b->layout.number; });
  for (const ColumnDef* c : columns) {
    std::string line = "  column " + quote(c->name) + " type=" + typeName(c->type());
    const bool sized = c->type() == Type::Text || c->type() == Type::Binary;
    if (sized) line += " size=" + std::to_string(c->size(version));
    if (sized && c->layout.fixed) line += " fixed-length";
    if (c->autoNumber || c->guidAutoNumber) line += " autonumber";
    if (c->layout.compressed) line += " compressed";
    if (c->hyperlink) line += " hyperlink";
    lines.push_back(line);
    putProperties(c->properties,
                  {u"Required", u"AllowZeroLength", u"DefaultValue", u"ValidationRule", u"ValidationText",
                   u"Caption", u"Description", u"Format", u"InputMask", u"DecimalPlaces"},
                  "    property ", lines);
  }
}

void putIndexes(const TableDef& table, std::vector<std::string>& lines) {
  std::vector<std::string> indexes;
  for (const IndexDef& i : table.indexes) {
    const RealIndex& real = table.realIndexes[i.real];
    std::string line = "  index " + quote(i.name);
    if (i.primary) line += " primary";
    if (i.foreign) line += " foreign";
    if (real.unique) line += " unique";
    if (real.required) line += " required";
    if (real.ignoreNulls) line += " ignore-nulls";
    line += " data=" + std::to_string(i.real) + " columns=";
    for (const IndexColumn& part : real.columns) {
      line += (&part == &real.columns[0] ? "" : ",") + quote(table.columns[part.ordinal].name) +
              (part.descending ? ":desc" : ":asc");
    }
    indexes.push_back(line);
  }
  std::sort(indexes.begin(), indexes.end());
  lines.insert(lines.end(), indexes.begin(), indexes.end());
}

std::string relationLine(const Relation& r) {
  std::string primary, foreign;
  for (const auto& [p, f] : r.columns) {
    primary += (primary.empty() ? "" : ",") + quote(p);
    foreign += (foreign.empty() ? "" : ",") + quote(f);
  }
  const auto flag = [](const char* name, bool value) {
    return std::string(name) + (value ? "true" : "false");
  };
  return "relationship " + quote(r.name) + " primary=" + quote(r.table) + "(" + primary +
         ") foreign=" + quote(r.foreignTable) + "(" + foreign + ")" + flag(" enforced=", r.enforced) +
         flag(" one-to-one=", r.unique) + flag(" cascade-update=", r.cascadeUpdates) +
         flag(" cascade-delete=", r.cascadeDeletes) + " join=" +
         (r.join == Relation::Join::Left    ? "left"
          : r.join == Relation::Join::Right ? "right"
                                            : "inner");
}

std::vector<std::string> structureLines(Catalog& catalog) {
  const FileHeader& header = catalog.header();
  const bool jet3 = header.version == Version::Jet3;
  char order[64];
  std::snprintf(order, sizeof order, "sort-order 0x%04X%s", header.lcid, jet3 ? "" : " version 0");
  std::vector<std::string> lines{jet3 ? "format jet3" : "format jet4", order,
                                 "code-page " + std::to_string(header.codePage)};
  std::vector<std::u16string> names = catalog.userTables();
  std::sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return toUtf8(a) < toUtf8(b); });
  for (const std::u16string& name : names) {
    const TableDefPtr table = catalog.table(name);
    lines.push_back("table " + quote(table->name) + " rows=" + std::to_string(table->rowCount) +
                    " columns=" + std::to_string(table->columns.size()) +
                    " indexes=" + std::to_string(table->indexes.size()));
    putProperties(table->properties, {u"Description", u"ValidationRule", u"ValidationText"},
                  "  table-property ", lines);
    putColumns(*table, header.version, lines);
    putIndexes(*table, lines);
  }
  std::vector<std::string> relations;
  for (const Relation& r : catalog.relations()) {
    if (!catalog.table(r.table)->system)
      relations.push_back(relationLine(r));  // the dumps have user tables only
  }
  std::sort(relations.begin(), relations.end());
  lines.insert(lines.end(), relations.begin(), relations.end());
  return lines;
}

std::vector<std::string> dumpedLines(const std::filesystem::path& dump) {
  std::vector<std::string> lines;
  std::ifstream in(dump);
  for (std::string line; std::getline(in, line);) {
    if (!line.starts_with("  row ") && line != "end" && line != "mdbdump 1") lines.push_back(line);
  }
  return lines;
}

TEST(CatalogSamples, StructureMatchesTheDumps) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder with samples";
  const ScratchFolder scratch;
  for (const auto& file : sampleFiles()) {
    SCOPED_TRACE(file.filename());
    const auto copy = scratch / file.filename().string();
    std::filesystem::copy_file(file, copy);
    const OpenDatabase db = openDatabase(copy);
    const std::vector<std::string> actual = structureLines(*db.catalog);
    const std::vector<std::string> expected =
        dumpedLines(std::filesystem::path(file).replace_extension(".txt"));
    for (size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) EXPECT_EQ(actual[i], expected[i]);
    EXPECT_EQ(actual.size(), expected.size()) << (actual.size() > expected.size() ? actual : expected).back();
  }
}

// A definition of the original must come out of the writer as it went in, but for fields that hold remains
// of old memory there.
TEST(CatalogSamples, DefinitionsSurviveRewriting) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder with samples";
  const ScratchFolder scratch;
  for (const auto& file : sampleFiles()) {
    SCOPED_TRACE(file.filename());
    const auto copy = scratch / file.filename().string();
    std::filesystem::copy_file(file, copy);
    const OpenDatabase db = openDatabase(copy);
    const ReadScope scope(*db.pager);
    for (const CatalogObject& object : db->objects()) {
      if (object.type != 1) continue;
      SCOPED_TRACE(toUtf8(object.name));
      const TdefBytes stored = readTdefBytes(*db.pager, static_cast<PageNumber>(object.id));
      const TableDef table = parseTdef(stored, db->header());
      EXPECT_TRUE(
          std::is_sorted(table.indexes.begin(), table.indexes.end(),
                         [](const auto& a, const auto& b) { return foldName(a.name) < foldName(b.name); }));
      const std::string written = encodeTdef(table, db->header().version);
      ASSERT_EQ(written.size(), stored.bytes.size());
      const TableDef again = parseTdef({written, stored.pages}, db->header());
      EXPECT_EQ(encodeTdef(again, db->header().version), written);
      // Nothing but descriptors' unused bytes may differ.
      size_t differing = 0;
      for (size_t i = 8; i < written.size(); ++i) differing += written[i] != stored.bytes[i];
      EXPECT_LE(differing, 28 + 4 * table.columns.size() + (11 + 12) * table.realIndexes.size() +
                               12 * table.realIndexes.size());
    }
  }
}

}  // namespace
}  // namespace jet
