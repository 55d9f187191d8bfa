#include "jet/sql/types.h"

namespace jet::sql {

using ast::Op;

Type operatorType(Op op, Type a, Type b) {
  switch (op) {
    case Op::Power:
      return arithmeticType(Arithmetic::Power, a, b);
    case Op::Multiply:
      return arithmeticType(Arithmetic::Multiply, a, b);
    case Op::Divide:
      return arithmeticType(Arithmetic::Divide, a, b);
    case Op::IntegerDivide:
      return arithmeticType(Arithmetic::IntegerDivide, a, b);
    case Op::Modulo:
      return arithmeticType(Arithmetic::Modulo, a, b);
    case Op::Add:
      return arithmeticType(Arithmetic::Add, a, b);
    case Op::Subtract:
      return arithmeticType(Arithmetic::Subtract, a, b);
    case Op::Concatenate:
      return a == Type::Memo || b == Type::Memo ? Type::Memo : Type::Text;
    case Op::And:
    case Op::Or:
    case Op::Xor:
    case Op::Eqv:
    case Op::Imp:
      if (a == Type::Boolean && b == Type::Boolean) return Type::Boolean;
      return a == Type::Null || b == Type::Null ? Type::Null : Type::Long;
    default:
      return Type::Boolean;
  }
}

}  // namespace jet::sql
