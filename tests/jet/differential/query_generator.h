#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "jet/differential/schema.h"

namespace jet::differential {

struct Query {
  Sql sql;
  std::vector<Kind> kinds;      // of the result's columns
  std::vector<size_t> ordered;  // columns by which both results are ordered, the first counting most
  bool outerJoin = false;       // the engine may refuse the combination of joins (3258)
};

// Random statements over the schema, the same ones for the same seed.
class QueryGenerator {
 public:
  explicit QueryGenerator(uint32_t seed) : random_(seed) {}
  Query next();
  // UPDATE or DELETE of a part of one table.
  Sql nextChange();

 private:
  struct Column {
    Sql sql;
    Kind kind;
    bool integral;
  };
  using Scope = std::vector<Column>;
  struct Output {
    Sql sql;  // the SELECT with columns named k<first>, k<first + 1>, ...
    int first = 0;
    std::vector<bool> integral;
  };

  bool chance(int percent) { return static_cast<int>(random_() % 100) < percent; }
  int below(int n) { return static_cast<int>(random_() % static_cast<uint32_t>(n)); }
  Kind anyKind();
  const Column* columnOf(const Scope& scope, Kind kind, bool integral = false);

  Sql value(Kind kind, const Scope& scope, int depth);
  Sql number(const Scope& scope, int depth, bool integral = false);
  Sql text(const Scope& scope, int depth);
  Sql date(const Scope& scope, int depth);
  Sql boolean(const Scope& scope, int depth);
  Sql condition(const Scope& scope, int depth);
  Sql comparison(const Scope& scope, int depth);
  Sql membership(const Scope& scope, int depth);
  Sql subqueryCondition(const Scope& scope, int depth);
  Sql scalarSubquery(Kind kind, const Scope& scope, int depth);
  Sql like(const Scope& scope, int depth);
  Sql aggregate(Kind kind, const Scope& scope, int depth);
  Sql groupItem(Kind kind, const Scope& scope);
  Sql literal(Kind kind);

  Sql source(Scope& scope, int depth);
  Sql joined(Scope& scope, int sources, int depth);
  Sql joinCondition(const Scope& left, const Scope& right);
  Sql from(Scope& scope, int depth);
  Output select(const std::vector<Kind>& kinds, const Scope& outer, int depth);
  Output grouped(const std::vector<Kind>& kinds, const Scope& outer, int depth);
  Output body(const std::vector<Kind>& kinds, int depth);

  std::mt19937 random_;
  int aliases_ = 0, names_ = 0;
  bool outerJoin_ = false;
};

}  // namespace jet::differential
