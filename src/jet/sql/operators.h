#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/format/value.h"
#include "jet/storage/collation.h"

// The scalar semantics of Jet SQL: operators, comparison, conversion. No knowledge of tables or syntax.
// Errors: 3464 type mismatch, 3421 conversion, 11/6/13/94 of expressions (source "DAO.Expression").
namespace jet::sql {

// What evaluation depends on besides its operands; fixed during a statement.
struct EvalContext {
  const Collation* collation = nullptr;  // the database's sort order
  Date now;                              // Now(), Date(), Time()
  char16_t decimalSeparator = u',';      // of text <-> number conversions by locale (CStr, CDbl, &)
  uint64_t randomState = 0;
};

// Three-valued truth: nullopt is Null.
using Truth = std::optional<bool>;
Truth truth(const Value& v);  // any non-zero number is true; text: 3464
Value fromTruth(Truth t);

Value add(const Value& a, const Value& b, const EvalContext& c);
Value subtract(const Value& a, const Value& b, const EvalContext& c);
Value multiply(const Value& a, const Value& b, const EvalContext& c);
Value divide(const Value& a, const Value& b, const EvalContext& c);
Value integerDivide(const Value& a, const Value& b, const EvalContext& c);
Value modulo(const Value& a, const Value& b, const EvalContext& c);
Value power(const Value& a, const Value& b, const EvalContext& c);
Value negate(const Value& a, const EvalContext& c);
Value concatenate(const Value& a, const Value& b, const EvalContext& c);  // &
Value logicalNot(const Value& a);
// And, Or, Xor, Eqv, Imp: bitwise on integers, three-valued with Null.
enum class Logical { And, Or, Xor, Eqv, Imp };
Value logical(Logical op, const Value& a, const Value& b);

// <0, 0, >0; nullopt when either is Null. Text by the collation, trailing blanks ignored. Throws 3464
// for text against a number.
std::optional<int> compare(const Value& a, const Value& b, const EvalContext& c);

// A Like pattern, compiled once. DAO wildcards * ? # [..] [!..].
class LikePattern {
 public:
  LikePattern(std::u16string_view pattern, const Collation& collation);
  bool matches(std::u16string_view text) const;
  // Literal text before the first wildcard, for index ranges; `exact` when there is no wildcard.
  const std::u16string& prefix() const { return prefix_; }
  bool exact() const { return exact_; }

 private:
  struct Element;
  std::u16string pattern_, prefix_;
  const Collation* collation_;
  bool exact_ = false;
  std::vector<Element> elements_;
};
// Text of any value as Like and & see it (numbers by locale, dates dd.mm.yyyy hh:nn:ss as Polish systems
// show them, booleans -1/0).
std::u16string toText(const Value& v, const EvalContext& c);

// Conversion to a column's type on assignment. Null stays Null. Throws 3163 (text too long for `size`
// characters, 0 = no limit), 3421, 3349 out of range.
Value convertFor(Type type, int size, const Value& v, const EvalContext& c, uint8_t scale = 0);

// Appends bytes that are equal exactly when DISTINCT, GROUP BY and UNION call the values equal, and whose
// bytewise order is the order of ORDER BY ascending (Null first). `as` is the unified type of the column.
void appendSortKey(const Value& v, Type as, const Collation& collation, bool descending, std::string& key);

double toDouble(const Value& v);   // numbers, dates, booleans; text via the locale: 3464 when impossible
int64_t toInteger(const Value& v); // rounds half to even; 6 on overflow
std::optional<Date> parseDate(std::u16string_view text);  // locale forms: d.m.yyyy, d-m-yyyy, yyyy-mm-dd, with times
std::optional<Date> parseDateLiteral(std::u16string_view text);  // the inside of #...#, US order

}  // namespace jet::sql
