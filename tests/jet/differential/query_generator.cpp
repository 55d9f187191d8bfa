#include "jet/differential/query_generator.h"

#include <algorithm>

namespace jet::differential {

namespace {

// Texts compare by the engine's order in SQLite too.
Sql ordered(Kind kind, const Sql& s) {
  return kind == Kind::Text ? phrase({"$0", "($0 COLLATE jet)"}, s) : s;
}

const char* const kComparisons[] = {"=", "<>", "<", "<=", ">", ">="};

}  // namespace

Kind QueryGenerator::anyKind() {
  static const Kind kKinds[] = {Kind::Number, Kind::Number, Kind::Number, Kind::Text,
                                Kind::Text,   Kind::Date,   Kind::Boolean};
  return kKinds[below(7)];
}

const QueryGenerator::Column* QueryGenerator::columnOf(const Scope& scope, Kind kind, bool integral) {
  std::vector<const Column*> fitting;
  for (const Column& c : scope)
    if (c.kind == kind && (c.integral || !integral)) fitting.push_back(&c);
  return fitting.empty() ? nullptr : fitting[static_cast<size_t>(below(static_cast<int>(fitting.size())))];
}

Sql QueryGenerator::literal(Kind kind) {
  switch (kind) {
    case Kind::Number:
      return numberLiteral(random_);
    case Kind::Text:
      return textLiteral(random_);
    case Kind::Date:
      return dateLiteral(random_);
    case Kind::Boolean:
      return chance(50) ? Sql("True", "-1") : Sql("False", "0");
  }
  return "Null";
}

Sql QueryGenerator::value(Kind kind, const Scope& scope, int depth) {
  switch (kind) {
    case Kind::Number:
      return number(scope, depth);
    case Kind::Text:
      return text(scope, depth);
    case Kind::Date:
      return date(scope, depth);
    case Kind::Boolean:
      return boolean(scope, depth);
  }
  return "Null";
}

Sql QueryGenerator::number(const Scope& scope, int depth, bool integral) {
  const Column* column = columnOf(scope, Kind::Number, integral);
  if (depth <= 0 || chance(45)) {
    if (column && chance(80)) return column->sql;
    return integral ? Sql(std::to_string(below(9))) : numberLiteral(random_);
  }
  const auto part = [&] { return number(scope, depth - 1, integral); };
  switch (below(integral ? 11 : 14)) {
    case 0:
      return phrase("($0 + $1)", part(), part());
    case 1:
      return phrase("($0 - $1)", part(), part());
    case 2:
      return phrase("($0 * $1)", part(), std::to_string(below(4)));
    case 3:
      return phrase("(-$0)", part());
    case 4:
      return phrase({"($0 \\ $1)", "($0 / $1)"}, number(scope, depth - 1, true),
                    std::to_string(1 + below(4)));
    case 5:
      return phrase({"($0 Mod $1)", "($0 % $1)"}, number(scope, depth - 1, true),
                    std::to_string(1 + below(4)));
    case 6:
      return phrase({"Len($0)", "length($0)"}, text(scope, depth - 1));
    case 7:
      return phrase({"IIf($0, $1, $2)", "(CASE WHEN $0 THEN $1 ELSE $2 END)"}, condition(scope, depth - 1),
                    part(), part());
    case 8:
      return phrase({"IIf(IsNull($0), 0, $0)", "coalesce($0, 0)"}, part());
    case 9: {
      const Sql day = date(scope, depth - 1);
      return chance(50) ? phrase({"Year($0)", "CAST(strftime('%Y', $0 + 2415018.5) AS INTEGER)"}, day)
                        : phrase({"Month($0)", "CAST(strftime('%m', $0 + 2415018.5) AS INTEGER)"}, day);
    }
    case 10:
      return integral ? phrase({"Abs($0)", "abs($0)"}, part())
                      : scalarSubquery(Kind::Number, scope, depth - 1);
    case 11:
      return phrase({"($0 / $1)", "(CAST($0 AS REAL) / $1)"}, part(), std::to_string(1 + below(4)));
    case 12:
      return phrase({"Switch($0, $1, True, $2)", "(CASE WHEN $0 THEN $1 ELSE $2 END)"},
                    condition(scope, depth - 1), part(), part());
    default:
      return phrase({"Int($0)", "floor($0)"}, part());
  }
}

Sql QueryGenerator::text(const Scope& scope, int depth) {
  const Column* column = columnOf(scope, Kind::Text);
  if (depth <= 0 || chance(60)) return column && chance(85) ? column->sql : textLiteral(random_);
  const auto part = [&] { return text(scope, depth - 1); };
  switch (below(6)) {
    case 0:
      return phrase({"($0 & $1)", "joined($0, $1)"}, part(), part());
    case 1:
      return phrase({"($0 & $1)", "joined($0, $1)"}, part(), number(scope, depth - 1, true));
    case 2:
      return phrase({"Left($0, 2)", "substr($0, 1, 2)"}, part());
    case 3:
      return phrase({"Mid($0, 2, 3)", "substr($0, 2, 3)"}, part());
    case 4:
      return scalarSubquery(Kind::Text, scope, depth - 1);
    default:
      return phrase({"IIf($0, $1, $2)", "(CASE WHEN $0 THEN $1 ELSE $2 END)"}, condition(scope, depth - 1),
                    part(), part());
  }
}

Sql QueryGenerator::date(const Scope& scope, int depth) {
  const Column* column = columnOf(scope, Kind::Date);
  if (depth <= 0 || chance(70)) return column && chance(80) ? column->sql : dateLiteral(random_);
  if (chance(30)) return scalarSubquery(Kind::Date, scope, depth - 1);
  const Sql days =
      chance(50) ? Sql("30") : phrase({"IIf(IsNull($0), 1, $0)", "coalesce($0, 1)"}, number(scope, 0, true));
  // Before the origin of dates a sum of day numbers alone is right for whole days only.
  return phrase({"(DateSerial(2021, 1, 1) + $0)", "(44197 + $0)"}, days);
}

Sql QueryGenerator::boolean(const Scope& scope, int depth) {
  const Column* column = columnOf(scope, Kind::Boolean);
  if (column && (depth <= 0 || chance(60))) return column->sql;
  if (depth <= 0) return literal(Kind::Boolean);
  return phrase({"($0)", "(-($0))"}, comparison(scope, depth - 1));
}

Sql QueryGenerator::like(const Scope& scope, int depth) {
  static const char* const kPatterns[] = {"a*",   "*a*", "?a*",   "*[a-c]", "[!a-c]*",
                                          "Łó??", "x*y", "a[*]c", "anna",   "*"};
  const std::string pattern = kPatterns[below(10)];
  const bool inverted = chance(25);
  return phrase({inverted ? "($0 Not Like '" + pattern + "')" : "($0 Like '" + pattern + "')",
                 (inverted ? "(NOT alike($0, '" : "(alike($0, '") + pattern + "'))"},
                text(scope, depth - 1));
}

Sql QueryGenerator::comparison(const Scope& scope, int depth) {
  const Kind kind = anyKind();
  const Sql a = value(kind, scope, depth - 1), b = chance(35) ? literal(kind) : value(kind, scope, depth - 1);
  return ordered(kind, a) + Sql(std::string(" ") + kComparisons[chance(40) ? 0 : below(6)] + " ") +
         ordered(kind, b);
}

Sql QueryGenerator::membership(const Scope& scope, int depth) {
  const Kind kind = anyKind();
  const Sql a = ordered(kind, value(kind, scope, depth - 1));
  if (chance(40)) {
    const Sql low = ordered(kind, chance(70) ? literal(kind) : value(kind, scope, depth - 1));
    const Sql high = ordered(kind, chance(70) ? literal(kind) : value(kind, scope, depth - 1));
    const Sql between = phrase(
        {"$0 Between $1 And $2", "(($0 >= $1 AND $0 <= $2) OR ($0 >= $2 AND $0 <= $1))"}, a, low, high);
    return chance(30) ? phrase("(Not ($0))", between) : phrase("($0)", between);
  }
  Sql list = literal(kind);
  for (int i = below(4); i > 0; --i) list += Sql(", ") + (chance(12) ? Sql("Null") : literal(kind));
  return phrase(chance(30) ? "($0 Not In ($1))" : "($0 In ($1))", a, list);
}

Sql QueryGenerator::scalarSubquery(Kind kind, const Scope& scope, int depth) {
  Scope own;
  const Sql sources = source(own, 0);
  Scope all = own;
  all.insert(all.end(), scope.begin(), scope.end());
  const char* function = chance(50) ? "Min" : "Max";
  const Column* column = columnOf(own, kind);
  if (!column || kind == Kind::Boolean) return literal(kind);
  return phrase("(SELECT " + std::string(function) + "($0) FROM $1 WHERE $2)", ordered(kind, column->sql),
                sources, condition(all, depth));
}

Sql QueryGenerator::subqueryCondition(const Scope& scope, int depth) {
  Scope own;
  const Sql sources = chance(25) ? joined(own, 2, 0) : source(own, 0);
  Scope all = own;
  all.insert(all.end(), scope.begin(), scope.end());
  const Sql where = condition(chance(60) ? all : own, depth - 1);
  if (chance(35))
    return phrase(
        chance(35) ? "(Not Exists (SELECT * FROM $0 WHERE $1))" : "Exists (SELECT * FROM $0 WHERE $1)",
        sources, where);
  const Kind kind = anyKind();
  const Column* column = columnOf(own, kind);
  if (!column) return condition(scope, depth - 1);
  const Sql a = ordered(kind, value(kind, scope, 1)), item = ordered(kind, column->sql);
  if (chance(65))
    return phrase(chance(40) ? "($0 Not In (SELECT $1 FROM " : "($0 In (SELECT $1 FROM ", a, item) +
           phrase("$0 WHERE $1))", sources, where);
  const bool all3 = chance(40);
  const std::string op = kComparisons[below(6)];
  // SQLite has no ANY and ALL: three-valued "some row is true" and "no row is false".
  const Sql test = phrase({"$0", "$0 " + op + " $1"}, a, item);
  const std::string decided = all3 ? "0" : "1", open = all3 ? "1" : "0";
  const Sql lite = phrase(
      {"", "(SELECT CASE WHEN coalesce(max(($0) IS " + decided + "), 0) THEN " + decided +
               " WHEN coalesce(max(($0) IS NULL), 0) THEN NULL ELSE " + open + " END FROM $1 WHERE $2)"},
      test, sources, where);
  const Sql jet =
      phrase({"($0 " + op + (all3 ? " All" : " Any") + " (SELECT $1 FROM $2", ""}, a, item, sources);
  return {jet.jet + " WHERE " + where.jet + "))", lite.lite};
}

Sql QueryGenerator::condition(const Scope& scope, int depth) {
  if (depth <= 0) {
    const Kind kind = anyKind();
    const Column* column = columnOf(scope, kind);
    if (!column) return "1 = 1";
    const Sql c = ordered(kind, column->sql);
    if (chance(20)) return phrase(chance(50) ? "$0 Is Null" : "$0 Is Not Null", c);
    const Column* other = chance(30) ? columnOf(scope, kind) : nullptr;
    return phrase("$0 " + std::string(kComparisons[below(6)]) + " $1", c,
                  other ? ordered(kind, other->sql) : literal(kind));
  }
  const auto part = [&] { return condition(scope, depth - 1); };
  switch (below(13)) {
    case 0:
    case 1:
      return phrase("($0 And $1)", part(), part());
    case 2:
      return phrase("($0 Or $1)", part(), part());
    case 3:
      return phrase("(Not ($0))", part());
    case 4:
      return phrase({"(($0) Xor ($1))", "((($0) <> 0) <> (($1) <> 0))"}, part(), part());
    case 5:
      return like(scope, depth);
    case 6:
      return membership(scope, depth);
    case 7:
      return subqueryCondition(scope, depth);
    case 8:
      return phrase("($0 Is Null)", value(anyKind(), scope, depth - 1));
    case 9:
      return phrase("($0)", boolean(scope, depth - 1));
    default:
      return phrase("($0)", comparison(scope, depth));
  }
}

// One table or, deeper, a derived one; adds its columns to the scope.
Sql QueryGenerator::source(Scope& scope, int depth) {
  const std::string alias = "t" + std::to_string(++aliases_);
  if (depth > 0 && chance(15)) {
    std::vector<Kind> kinds(static_cast<size_t>(1 + below(3)));
    for (Kind& k : kinds) k = anyKind();
    kinds[0] = Kind::Number;  // every source can be joined by a number
    const Output inner = body(kinds, depth - 1);
    for (size_t i = 0; i < kinds.size(); ++i)
      scope.push_back(
          {alias + ".k" + std::to_string(inner.first + static_cast<int>(i)), kinds[i], inner.integral[i]});
    return phrase("($0) AS " + alias, inner.sql);
  }
  const SchemaTable& table = schema()[static_cast<size_t>(chance(5) ? 3 : below(3))];
  for (const SchemaColumn& c : table.columns) scope.push_back({alias + "." + c.name, c.kind, c.integral});
  return table.name + " AS " + alias;
}

Sql QueryGenerator::joinCondition(const Scope& left, const Scope& right) {
  for (;;) {
    const Kind kind = anyKind();
    const Column *a = columnOf(left, kind), *b = columnOf(right, kind);
    if (!a || !b) continue;
    const char* op = chance(85) ? "=" : kComparisons[below(6)];
    const Sql sides =
        chance(50) ? phrase("$0 " + std::string(op) + " $1", ordered(kind, a->sql), ordered(kind, b->sql))
                   : phrase("$0 " + std::string(op) + " $1", ordered(kind, b->sql), ordered(kind, a->sql));
    return chance(20) ? phrase("($0 And $1)", sides, joinCondition(left, right)) : sides;
  }
}

Sql QueryGenerator::joined(Scope& scope, int sources, int depth) {
  if (sources == 1) return source(scope, depth);
  Scope left, right;
  const int leftCount = chance(80) ? sources - 1 : 1;
  Sql a = joined(left, leftCount, depth), b = joined(right, sources - leftCount, depth);
  if (leftCount > 1) a = phrase("($0)", a);
  if (sources - leftCount > 1) b = phrase("($0)", b);
  static const char* const kJoins[] = {"INNER", "INNER", "LEFT", "RIGHT"};
  const int join = below(4);
  outerJoin_ |= join > 1;
  const Sql on = joinCondition(left, right);
  scope.insert(scope.end(), left.begin(), left.end());
  scope.insert(scope.end(), right.begin(), right.end());
  return phrase("$0 " + std::string(kJoins[join]) + " JOIN $1 ON $2", a, b, on);
}

Sql QueryGenerator::from(Scope& scope, int depth) {
  const int shape = below(10);
  if (shape < 4) return source(scope, depth);
  if (shape < 7) return joined(scope, 2, depth);
  if (shape < 8) return joined(scope, 3, depth);
  const Sql first = shape < 9 ? source(scope, depth) : joined(scope, 2, 0);
  return phrase("$0, $1", first, source(scope, 0));
}

QueryGenerator::Output QueryGenerator::select(const std::vector<Kind>& kinds, const Scope& outer, int depth) {
  Scope scope;
  const Sql sources = from(scope, depth);
  const size_t inner = scope.size();
  scope.insert(scope.end(), outer.begin(), outer.end());
  Output out;
  out.first = names_;
  names_ += static_cast<int>(kinds.size());
  out.sql = chance(25) ? "SELECT DISTINCT " : "SELECT ";
  for (size_t i = 0; i < kinds.size(); ++i) {
    const bool integral = kinds[i] == Kind::Number && chance(50);
    out.integral.push_back(integral);
    const Sql item = integral ? number(scope, depth, true) : value(kinds[i], scope, depth);
    out.sql += Sql(i ? ", " : "") +
               phrase("$0 AS k" + std::to_string(out.first + static_cast<int>(i)), ordered(kinds[i], item));
  }
  out.sql += phrase(" FROM $0", sources);
  scope.resize(inner);
  scope.insert(scope.end(), outer.begin(), outer.end());
  if (chance(65)) out.sql += phrase(" WHERE $0", condition(scope, depth));
  return out;
}

Sql QueryGenerator::aggregate(Kind kind, const Scope& scope, int depth) {
  if (kind == Kind::Number) {
    switch (below(5)) {
      case 0:
        return "Count(*)";
      case 1:
        return phrase("Count($0)", value(anyKind(), scope, 1));
      case 2:
        return phrase("Sum($0)", number(scope, depth));
      case 3:
        return phrase({"Avg(CDbl(IIf(IsNull($0), 0, $0)))", "avg(coalesce($0, 0))"}, number(scope, 0));
      default:
        break;
    }
  }
  const char* function = chance(50) ? "Min" : "Max";
  if (kind == Kind::Boolean)
    return phrase({"($0 > $1)", "(-($0 > $1))"}, aggregate(Kind::Number, scope, 0), std::to_string(below(9)));
  return phrase(std::string(function) + "($0)", ordered(kind, value(kind, scope, depth)));
}

// A column or a small expression over one; empty when there is no column.
Sql QueryGenerator::groupItem(Kind kind, const Scope& scope) {
  const Column* column = columnOf(scope, kind == Kind::Boolean && chance(50) ? Kind::Number : kind);
  if (!column) return {};
  if (column->kind != kind) return phrase({"($0 > 3)", "(-($0 > 3))"}, column->sql);
  if (chance(70)) return ordered(kind, column->sql);
  if (kind == Kind::Number)
    return phrase({column->integral ? "($0 Mod 3)" : "($0 * 2)", column->integral ? "($0 % 3)" : "($0 * 2)"},
                  column->sql);
  return kind == Kind::Text ? phrase({"Left($0, 1)", "(substr($0, 1, 1) COLLATE jet)"}, column->sql)
                            : column->sql;
}

QueryGenerator::Output QueryGenerator::grouped(const std::vector<Kind>& kinds, const Scope& outer,
                                               int depth) {
  Scope scope;
  const Sql sources = from(scope, depth);
  Scope all = scope;
  all.insert(all.end(), outer.begin(), outer.end());
  Output out;
  out.first = names_;
  names_ += static_cast<int>(kinds.size());
  Sql groups;
  out.sql = "SELECT ";
  for (size_t i = 0; i < kinds.size(); ++i) {
    Sql item = chance(50) ? groupItem(kinds[i], scope) : Sql();
    if (item.empty())
      item = aggregate(kinds[i], scope, depth - 1);
    else
      groups += Sql(groups.empty() ? "" : ", ") + item;
    out.integral.push_back(false);
    out.sql += Sql(i ? ", " : "") + phrase("$0 AS k" + std::to_string(out.first + static_cast<int>(i)), item);
  }
  out.sql += phrase(" FROM $0", sources);
  if (chance(50)) out.sql += phrase(" WHERE $0", condition(all, depth));
  if (!groups.empty()) {
    out.sql += phrase(" GROUP BY $0", groups);
    if (chance(30)) {
      const Kind kind = chance(60) ? Kind::Number : Kind::Text;
      out.sql += phrase(" HAVING $0 " + std::string(kComparisons[below(6)]) + " $1",
                        ordered(kind, aggregate(kind, scope, 0)), literal(kind));
    }
  }
  return out;
}

QueryGenerator::Output QueryGenerator::body(const std::vector<Kind>& kinds, int depth) {
  return chance(30) ? grouped(kinds, {}, depth) : select(kinds, {}, depth);
}

Query QueryGenerator::next() {
  aliases_ = names_ = 0;
  outerJoin_ = false;
  Query query;
  query.kinds.resize(static_cast<size_t>(1 + below(4)));
  for (Kind& k : query.kinds) k = anyKind();
  const int depth = 1 + below(2);
  const Output first = body(query.kinds, depth);
  query.sql = first.sql;
  const bool isUnion = chance(20);
  if (isUnion)
    for (int parts = 1 + below(2); parts > 0; --parts)
      query.sql += Sql(chance(40) ? " UNION ALL " : " UNION ") + body(query.kinds, depth - 1).sql;
  if (chance(60)) {
    std::vector<size_t> columns(query.kinds.size());
    for (size_t i = 0; i < columns.size(); ++i) columns[i] = i;
    std::shuffle(columns.begin(), columns.end(), random_);
    columns.resize(chance(60) ? columns.size() : 1);
    Sql order;
    for (size_t c : columns) {
      const std::string name = "k" + std::to_string(first.first + static_cast<int>(c));
      order += Sql(order.empty() ? "" : ", ") +
               ordered(query.kinds[c], chance(30) ? Sql(name, name) : Sql(std::to_string(c + 1), name)) +
               Sql(chance(40) ? " DESC" : "");
    }
    // A wish for the first rows takes the ties of the last one with it.
    const bool top = !isUnion && chance(30);
    const std::string count = std::to_string(1 + below(6));
    if (top) {
      const bool distinct = query.sql.jet.starts_with("SELECT DISTINCT ");
      query.sql.jet.insert(distinct ? 16 : 7, "TOP " + count + " ");
      query.sql.lite =
          "SELECT *, rank() OVER (ORDER BY " + order.lite + ") AS place FROM (" + query.sql.lite + ")";
    }
    query.sql =
        phrase({"$0 ORDER BY $1",
                "SELECT * FROM ($0)" + (top ? " WHERE place <= " + count : std::string()) + " ORDER BY $1"},
               query.sql, order);
    query.ordered = columns;
  }
  query.outerJoin = outerJoin_;
  return query;
}

Sql QueryGenerator::nextChange() {
  aliases_ = names_ = 0;
  const SchemaTable& table = schema()[static_cast<size_t>(below(3))];
  Scope scope;
  for (const SchemaColumn& c : table.columns)
    scope.push_back({table.name + "." + c.name, c.kind, c.integral});
  const Sql where = condition(scope, 2);
  // SQLite picks the records first, lest its subqueries see changed ones.
  const std::string chosen =
      "CREATE TEMP TABLE chosen AS SELECT id, $1 AS content FROM " + table.name + " WHERE $0; ";
  if (chance(40))
    return phrase({"DELETE FROM " + table.name + " WHERE $0",
                   chosen + "DELETE FROM " + table.name + " WHERE id IN (SELECT id FROM chosen)"},
                  where, "0");
  const SchemaColumn& column =
      table.columns[static_cast<size_t>(1 + below(static_cast<int>(table.columns.size()) - 1))];
  Sql content = value(column.kind, scope, 1);
  if (column.kind == Kind::Number) content = phrase("($0)", number(scope, 0, true));
  if (column.kind == Kind::Boolean) content = phrase({"$0", "coalesce($0, 0)"}, content);  // never Null
  if (column.jetType == "BYTE") content = std::to_string(below(200));
  if (column.kind == Kind::Text) content = phrase({"Left($0, 10)", "substr($0, 1, 10)"}, content);
  return phrase({"UPDATE " + table.name + " SET " + column.name + " = $1 WHERE $0",
                 chosen + "UPDATE " + table.name + " SET " + column.name +
                     " = (SELECT content FROM chosen WHERE chosen.id = " + table.name +
                     ".id) WHERE id IN (SELECT id FROM chosen)"},
                where, content);
}

}  // namespace jet::differential
