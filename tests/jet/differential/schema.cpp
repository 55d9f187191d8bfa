#include "jet/differential/schema.h"

namespace jet::differential {

namespace {

const char* const kTexts[] = {"Anna", "ANNA", "anna", "Łódź", "łódź", "Lodz", "co-op", "coop", "Żak",
                              "zak",  "ąb",   "ab",   "AB",   "x'y",  "xy",   "a*c",   "",     "abc"};

template <typename Items>
const auto& pick(const Items& items, std::mt19937& random) {
  return items[random() % std::size(items)];
}

std::string quoted(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    out += c;
    if (c == '\'') out += c;
  }
  return out + "'";
}

int daysSince1899(int year, int month, int day) {
  // Days before the month of a year that begins in March.
  const int y = month > 2 ? year : year - 1, m = month > 2 ? month - 3 : month + 9;
  return 365 * y + y / 4 - y / 100 + y / 400 + (153 * m + 2) / 5 + day - 1 - 693899;
}

Sql dateOf(int year, int month, int day, bool noon) {
  const std::string us = std::to_string(month) + "/" + std::to_string(day) + "/" + std::to_string(year);
  return {"#" + us + (noon ? " 12:00:00#" : "#"),
          std::to_string(daysSince1899(year, month, day)) + (noon ? ".5" : ".0")};
}

Sql valueOf(const SchemaColumn& column, int row, std::mt19937& random) {
  if (column.name == "id") return std::to_string(row + 1);
  if (column.kind != Kind::Boolean && random() % 5 == 0) return "Null";
  switch (column.kind) {
    case Kind::Number: {
      const int n = static_cast<int>(random() % 13) - 2;
      if (column.integral) return std::to_string(n);
      static const char* const kFractions[] = {"", ".25", ".5", ".75"};
      return std::to_string(n) + pick(kFractions, random);
    }
    case Kind::Text:
      return quoted(pick(kTexts, random));
    case Kind::Date:
      return dateLiteral(random);
    case Kind::Boolean:
      return random() % 2 ? Sql("True", "-1") : Sql("False", "0");
  }
  return "Null";
}

}  // namespace

const std::vector<SchemaTable>& schema() {
  const SchemaColumn id{"id", Kind::Number, true, "LONG NOT NULL PRIMARY KEY",
                        "INTEGER NOT NULL PRIMARY KEY"};
  const std::string text = "TEXT COLLATE jet";
  static const std::vector<SchemaTable> tables = {
      {"people",
       {id,
        {"surname", Kind::Text, false, "TEXT(40)", text},
        {"room", Kind::Number, true, "LONG", "INTEGER"},
        {"chief", Kind::Number, true, "SHORT", "INTEGER"},
        {"pay", Kind::Number, false, "CURRENCY", "REAL"},
        {"born", Kind::Date, false, "DATETIME", "REAL"},
        {"active", Kind::Boolean, false, "BIT", "INTEGER"}}},
      {"rooms",
       {id,
        {"label", Kind::Text, false, "TEXT(20)", text},
        {"area", Kind::Number, false, "DOUBLE", "REAL"},
        {"floor", Kind::Number, true, "BYTE", "INTEGER"}}},
      {"things",
       {id,
        {"label", Kind::Text, false, "TEXT(20)", text},
        {"holder", Kind::Number, true, "LONG", "INTEGER"},
        {"kind", Kind::Text, false, "TEXT(10)", text},
        {"amount", Kind::Number, true, "SHORT", "INTEGER"},
        {"price", Kind::Number, false, "CURRENCY", "REAL"},
        {"bought", Kind::Date, false, "DATETIME", "REAL"},
        {"broken", Kind::Boolean, false, "BIT", "INTEGER"},
        {"remarks", Kind::Text, false, "MEMO", text}}},
      {"hollow",
       {id,
        {"word", Kind::Text, false, "TEXT(10)", text},
        {"count1", Kind::Number, true, "LONG", "INTEGER"}}},
  };
  return tables;
}

std::vector<Sql> schemaStatements() {
  std::vector<Sql> statements;
  for (const SchemaTable& table : schema()) {
    Sql create = "CREATE TABLE " + table.name + " (";
    for (const SchemaColumn& c : table.columns)
      create += Sql(&c == table.columns.data() ? "" : ", ") + Sql(c.name + " ") + Sql(c.jetType, c.liteType);
    statements.push_back(create + ")");
  }
  for (const char* index :
       {"room ON people (room)", "surname ON people (surname)", "born ON people (born DESC)",
        "holder ON things (holder, amount)", "kind ON things (kind DESC)", "price ON things (price)",
        "label ON rooms (label)"})
    statements.push_back({"CREATE INDEX i_" + std::string(index), ""});
  const std::pair<size_t, int> counts[] = {{0, 22}, {1, 7}, {2, 35}};
  std::mt19937 random(7);
  for (const auto& [index, count] : counts) {
    const SchemaTable& table = schema()[index];
    for (int row = 0; row < count; ++row) {
      Sql insert = "INSERT INTO " + table.name + " VALUES (";
      for (const SchemaColumn& c : table.columns) {
        Sql value = valueOf(c, row, random);
        if (c.jetType == "BYTE" && value.jet[0] == '-') value = "0";
        insert += Sql(&c == table.columns.data() ? "" : ", ") + value;
      }
      statements.push_back(insert + ")");
    }
  }
  return statements;
}

Sql numberLiteral(std::mt19937& random) {
  if (random() % 4 == 0) return std::to_string(random() % 8) + (random() % 2 ? ".5" : ".25");
  return std::to_string(random() % 12);
}

Sql textLiteral(std::mt19937& random) {
  std::string text = pick(kTexts, random);
  if (random() % 6 == 0) text += "  ";
  return quoted(text);
}

Sql dateLiteral(std::mt19937& random) {
  const int year = random() % 8 == 0 ? 1898 : 2020 + static_cast<int>(random() % 3);
  const int month = static_cast<int>(random() % 4) * 3 + 1, day = random() % 2 ? 1 : 28;
  return dateOf(year, month, day, year > 1899 && random() % 4 == 0);
}

}  // namespace jet::differential
