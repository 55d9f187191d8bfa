#pragma once

#include <string>
#include <vector>

namespace jet {

// A row of MSysQueries: one part of a saved query. Texts are empty when Null.
//
//   attribute 0 start, 1 kind (flag) and target (name1), 2 parameter, 3 options, 4 other file, 5 input, 6
//   output column, 7 join, 8 WHERE, 9 GROUP BY, 10 HAVING, 11 ORDER BY, 255 end
struct QueryPart {
  int attribute = 0;
  std::string order;  // sequence number within the attribute, big-endian bytes
  int flag = 0;
  std::u16string name1, name2, expression;
};

// The SQL text of a saved query. Throws Error 3340 (naming the query) when the parts do not make one.
std::u16string buildQuerySql(std::vector<QueryPart> parts, std::u16string_view name);

}  // namespace jet
