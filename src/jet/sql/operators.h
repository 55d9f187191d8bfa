#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/format/value.h"
#include "jet/sql/locale.h"
#include "jet/storage/collation.h"

// The scalar semantics of Jet SQL: operators, comparison, conversion. No knowledge of tables or syntax.
// Errors (source "DAO.Expression"): 3464 type mismatch, 3421 conversion, 6 overflow, 11 division by zero,
// 5, 13 and 94 of functions.
namespace jet::sql {

// What evaluation depends on besides its operands; fixed during a statement.
struct EvalContext {
  const Collation* collation = nullptr;                  // the database's sort order
  Date now;                                              // Now(), Date(), Time()
  char16_t decimalSeparator = kLocale.decimalSeparator;  // of numbers turned into text (CStr, &, Format)
  uint64_t randomState = 0;                              // of Rnd; 0: not yet used
};

// Three-valued truth: nullopt is Null.
using Truth = std::optional<bool>;
Truth truth(const Value& v);  // any non-zero number is true; text: 3464
Value fromTruth(Truth t);

// Arithmetic with Null gives Null. Whole numbers widen (Byte, Integer, Long, then Double) instead of
// overflowing; other types throw 6. Text operands are read as numbers, but two texts are joined by +.
Value add(const Value& a, const Value& b, const EvalContext& c);
Value subtract(const Value& a, const Value& b, const EvalContext& c);
Value multiply(const Value& a, const Value& b, const EvalContext& c);
Value divide(const Value& a, const Value& b, const EvalContext& c);
Value integerDivide(const Value& a, const Value& b, const EvalContext& c);
Value modulo(const Value& a, const Value& b, const EvalContext& c);
Value power(const Value& a, const Value& b, const EvalContext& c);
Value negate(const Value& a, const EvalContext& c);
// Joins texts; Null counts as empty, and only two Nulls give Null.
Value concatenate(const Value& a, const Value& b, const EvalContext& c);
Value logicalNot(const Value& a);
// And, Or, Xor, Eqv, Imp: bitwise on integers, three-valued with Null.
enum class Logical { And, Or, Xor, Eqv, Imp };
Value logical(Logical op, const Value& a, const Value& b);

// The type of an operator's result as far as the operands' types tell: a value may come out wider. Null
// stands for an unknown operand.
enum class Arithmetic { Add, Subtract, Multiply, Divide, IntegerDivide, Modulo, Power, Concatenate };
Type arithmeticType(Arithmetic op, Type a, Type b);
// The type that holds values of both, as in the columns of a union and the two sides of a comparison.
Type unifiedType(Type a, Type b);
// A value as that type; a number that came out wider stays as it is.
Value unifiedValue(Value v, Type type, const EvalContext& c);

// <0, 0, >0; nullopt when either is Null. Text by the collation, trailing blanks ignored. Throws 3464
// for text against a number. Agrees with the keys of appendSortKey for unifiedType of the two types.
std::optional<int> compare(const Value& a, const Value& b, const EvalContext& c);

// A Like pattern, compiled once: * any run, ? one unit, # one digit, [a-z] one of, [!a-z] none of (ranges in
// the sort order, [] nothing). Case does not count, trailing blanks do. The time of a match grows at most
// with the product of the lengths.
class LikePattern {
 public:
  LikePattern(std::u16string_view pattern, const Collation& collation);
  bool matches(std::u16string_view text) const;
  // Literal text before the first wildcard, for index ranges; `exact` when there is no wildcard.
  const std::u16string& prefix() const { return prefix_; }
  bool exact() const { return exact_; }

 private:
  struct Range {
    char16_t first, last;
  };
  struct Element {
    enum Kind : uint8_t { Unit, AnyUnit, AnyRun, Digit, OneOf, NoneOf } kind;
    char16_t unit = 0;                        // of Unit, in lower case
    uint32_t firstRange = 0, rangeCount = 0;  // of a list
  };
  size_t addList(std::u16string_view pattern, size_t at);
  bool matchesUnit(const Element& e, char16_t c) const;

  std::u16string prefix_;
  const Collation* collation_;
  bool exact_ = true;
  std::vector<Element> elements_;
  std::vector<Range> ranges_;
};
// Text of any value as Like and & see it: numbers with at most 15 digits and the locale's decimal separator,
// dates as yyyy-mm-dd hh:nn:ss without an empty part, booleans -1 and 0, Null empty.
std::u16string toText(const Value& v, const EvalContext& c);

// Conversion to a column's type on assignment. Null stays Null. Numbers round half to even. Throws 3163 (text
// longer than `size` characters, binary longer than `size` bytes, 0 = no limit), 3421 (no such value of the
// type), 3349 (number out of range). `scale` is that of a Decimal column.
Value convertFor(Type type, int size, const Value& v, const EvalContext& c, uint8_t scale = 0);

// Appends bytes that are equal exactly when DISTINCT, GROUP BY and UNION call the values equal, and whose
// bytewise order is the order of ORDER BY ascending (Null first), inverted when `descending`. Keys of several
// columns may follow one another. `as` is the unified type of the column.
void appendSortKey(const Value& v, Type as, const Collation& collation, bool descending, std::string& key);

double toDouble(const Value& v);    // numbers, dates, booleans; text by the locale: 3464 when impossible
int64_t toInteger(const Value& v);  // rounds half to even; 6 on overflow

// Dates as people here write them: 22.11.2026, 22-11-26, 22/11/2026, 2026-11-22, 22 listopada 2026, each with
// or without a time 7:05, 07:05:30 or 7:05 PM; a time alone is of day 0.
std::optional<Date> parseDate(std::u16string_view text);
// The inside of #...#: the same, but the month comes first (11/22/2026) wherever that gives a date.
std::optional<Date> parseDateLiteral(std::u16string_view text);

}  // namespace jet::sql
