#include "jet/format/value.h"

namespace jet {

Type Value::type() const {
  // In the order of Storage's alternatives.
  static constexpr Type kTypes[] = {Type::Null,     Type::Boolean, Type::Byte,   Type::Integer, Type::Long,
                                    Type::Currency, Type::Single,  Type::Double, Type::Date,    Type::Binary,
                                    Type::Text,     Type::Guid,    Type::Decimal};
  static_assert(std::size(kTypes) == std::variant_size_v<Storage>);
  return storage_.valueless_by_exception() ? Type::Null : kTypes[storage_.index()];
}

}  // namespace jet
