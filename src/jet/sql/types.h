#pragma once

#include "jet/sql/ast.h"
#include "jet/sql/operators.h"

// Types of expressions, known before any row is read.
namespace jet::sql {

inline bool isText(Type t) { return t == Type::Text || t == Type::Memo; }
inline bool isBinary(Type t) { return t == Type::Binary || t == Type::Ole || t == Type::Internal; }
inline bool isInteger(Type t) { return t == Type::Byte || t == Type::Integer || t == Type::Long; }
inline bool isNumber(Type t) {
  return isInteger(t) || t == Type::Currency || t == Type::Single || t == Type::Double || t == Type::Decimal;
}

// The type a Value of this column type reports: Text for Memo, Binary for Ole.
inline Type heldType(Type t) { return t == Type::Memo ? Type::Text : isBinary(t) ? Type::Binary : t; }

// The result of an operator on operands of these types.
Type operatorType(ast::Op op, Type a, Type b);

// True when comparing the two types can only be a mismatch: text against a number or a date.
inline bool cannotCompare(Type a, Type b) {
  const auto isSerial = [](Type t) { return isNumber(t) || t == Type::Boolean || t == Type::Date; };
  return (isText(a) && isSerial(b)) || (isText(b) && isSerial(a));
}

}  // namespace jet::sql
