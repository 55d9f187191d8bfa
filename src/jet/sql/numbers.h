#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "jet/format/value.h"
#include "jet/sql/decimal.h"
#include "jet/sql/operators.h"

// Numbers as the expression code sees them.
namespace jet::sql {

[[noreturn]] void expressionError(int number);  // Error `number`, source "DAO.Expression"

const Collation& collationOf(const EvalContext& c);  // General when the context has none

inline bool isIntegral(Type t) { return t >= Type::Boolean && t <= Type::Long; }
inline bool isFloating(Type t) { return t == Type::Single || t == Type::Double; }
inline bool isExactNumber(Type t) { return isIntegral(t) || t == Type::Currency || t == Type::Decimal; }
// Booleans included: they are -1 and 0.
inline bool isNumberType(Type t) { return isExactNumber(t) || isFloating(t); }
inline bool isTextual(Type t) { return t == Type::Text || t == Type::Memo; }

int64_t integralValue(const Value& v);  // of an integral type; True is -1
double checkedDouble(double d);         // 6 when not finite
Value integerResult(int64_t v,
                    Type narrowest);  // Byte, Integer or Long, the next wider one that holds it, or Double

// Text read as a number by the locale, in plain form "-12.5E3"; nullopt when it is none. A comma or a point
// separates decimals; groups of three may be set apart by blanks or, when both signs occur, by the first of
// them. &H and &O prefixes are known.
std::optional<std::string> plainNumber(std::u16string_view text);
std::optional<double> numberFromText(std::u16string_view text);

// Exact where the value is exact, 15 significant digits of floating numbers. Error 6 out of range, 3464 for
// text that is no number and for bytes.
Decimal toDecimal(const Value& v);
Currency toCurrency(const Value& v);

// 15 (7 for Single) significant digits, decimal point, "1E+20" when the exponent leaves -5..14.
std::string doubleText(double d, int digits = 15);
std::u16string guidText(const Guid& guid);
std::optional<Guid> guidFromText(std::u16string_view text);

// Text longer than an index key reaches is compared piece by piece.
inline constexpr size_t kKeyUnits = 255;
int compareTexts(std::u16string_view a, std::u16string_view b, const Collation& collation);

std::u16string widen(std::string_view ascii);

}  // namespace jet::sql
