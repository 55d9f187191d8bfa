// Rows of real files against the dumps that an independent reader made of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>

#include "dump_value.h"
#include "jet/dao/dao.h"
#include "support/other_reader.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;

// The row lines of each table, by the table's quoted name.
std::map<std::string, std::vector<std::string>> dumpedRows(const fs::path& dump) {
  std::map<std::string, std::vector<std::string>> tables;
  std::ifstream in(dump);
  std::string table;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("table "))
      table = line.substr(6, line.rfind("\" rows=") - 5), tables[table];
    else if (line.starts_with("  row "))
      tables[table].push_back(line.substr(6));
  }
  return tables;
}

std::vector<std::string> rowsOf(jet::Database& database, const std::u16string& name) {
  const auto table = database.tableDef(name);
  std::vector<const jet::ColumnDef*> columns;
  for (const auto& column : table->columns) columns.push_back(&column);
  std::sort(columns.begin(), columns.end(),
            [](const auto* a, const auto* b) { return a->layout.number < b->layout.number; });
  std::u16string sql = u"SELECT ";
  for (const auto* column : columns) sql += (column == columns.front() ? u"[" : u", [") + column->name + u"]";
  const auto rows = database.openRecordset(sql + u" FROM [" + name + u"]", jet::RecordsetType::Snapshot);
  std::vector<std::string> lines;
  for (; !rows->eof(); rows->moveNext()) {
    std::string line;
    for (size_t i = 0; i < rows->fieldCount(); ++i)
      line += (i == 0 ? "" : "|") + dumpValue(rows->field(i).value());
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

// Rules of the file may forbid the change.
void attempt(const std::function<void()>& change) {
  try {
    change();
  } catch (const jet::Error& error) {
    EXPECT_TRUE(error.number() == 3022 || error.number() == 3200 || error.number() == 3201) << error.what();
  }
}

void addCopyOfFirst(jet::Recordset& rows) {
  rows.moveFirst();
  std::vector<jet::Value> first;
  for (size_t i = 0; i < rows.fieldCount(); ++i) first.push_back(rows.field(i).value());
  rows.addNew();
  for (size_t i = 0; i < first.size(); ++i)
    if (!rows.field(i).autoNumber()) rows.field(i).setValue(first[i]);
  rows.update();
}

void turnTextsOfFirst(jet::Recordset& rows) {
  rows.moveFirst();
  rows.edit();
  for (size_t i = 0; i < rows.fieldCount(); ++i) {
    const jet::Value value = rows.field(i).value();
    if (value.type() != jet::Type::Text) continue;
    const jet::Text& text = value.get<jet::Text>();
    rows.field(i).setValue(jet::Text(text.rbegin(), text.rend()));
  }
  rows.update();
}

}  // namespace

TEST(Samples, ReadToTheSameRowsAsTheirDumps) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder of samples";
  for (const fs::path& file : sampleFiles()) {
    SCOPED_TRACE(file.filename().string());
    jet::Workspace workspace;
    const auto database = workspace.openDatabase(file, {.readOnly = true, .connect = {}});
    const auto expected = dumpedRows(fs::path(file).replace_extension(".txt"));
    std::map<std::string, std::vector<std::string>> found;
    for (const auto& table : database->tableNames()) found[dumpText(table)] = rowsOf(*database, table);
    ASSERT_EQ(found.size(), expected.size());
    for (const auto& [table, rows] : expected) EXPECT_EQ(found[table], rows) << table;
  }
}

TEST(Samples, AreSound) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder of samples";
  for (const fs::path& file : sampleFiles()) {
    SCOPED_TRACE(file.filename().string());
    jet::Workspace workspace;
    const auto database = workspace.openDatabase(file, {.readOnly = true, .connect = {}});
    database->check([](const std::u16string& fault) { ADD_FAILURE() << jet::toUtf8(fault); });
  }
}

TEST(Samples, StaySoundWhenCopiesOfThemAreChanged) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder of samples";
  for (const fs::path& file : sampleFiles()) {
    SCOPED_TRACE(file.filename().string());
    const TempFolder folder;
    fs::copy_file(file, folder / "copy.mdb");
    fs::permissions(folder / "copy.mdb", fs::perms::owner_all);
    jet::Workspace workspace;
    const auto database = workspace.openDatabase(folder / "copy.mdb");
    if (database->version() == jet::Version::Jet3) {
      EXPECT_THROW(database->execute(u"CREATE TABLE nowa (a LONG)"), jet::Error);
      continue;
    }
    for (const auto& table : database->tableNames()) {
      const auto rows = database->openRecordset(table);
      if (!rows->updatable()) continue;
      if (rows->recordCount() == 0) continue;
      attempt([&] { addCopyOfFirst(*rows); });
      attempt([&] { turnTextsOfFirst(*rows); });
      attempt([&] {
        rows->moveLast();
        rows->remove();
      });
    }
    database->check([](const std::u16string& fault) { ADD_FAILURE() << jet::toUtf8(fault); });
    expectOtherReaderAgrees(folder / "copy.mdb");
  }
}
