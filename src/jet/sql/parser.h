#pragma once

#include <string_view>

#include "jet/sql/ast.h"

namespace jet::sql {

// One statement; a ';' may end it. Throws the syntax errors of DAO: 3075 in an expression, one number a
// clause elsewhere (3131 FROM, 3141 SELECT, ...), 3129 for an unknown verb, 3142 for text behind the end,
// 3360 for too deep nesting.
ast::Statement parse(std::u16string_view sql);

// An expression alone: a default value ("=Date()"; the '=' may be missing) or a find criterion.
ast::ExprPtr parseExpression(std::u16string_view text);

// A column's validation rule, in which the value is left out: ">0 And <10", "Like 'A*'", "'L' Or 'S'".
// Kind::Implicit stands for it.
ast::ExprPtr parseRule(std::u16string_view text);

}  // namespace jet::sql
