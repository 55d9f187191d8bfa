#include "jet/sql/case_table.h"
#include "jet/sql/operators.h"

namespace jet::sql {

LikePattern::LikePattern(std::u16string_view pattern, const Collation& collation) : collation_(&collation) {
  for (size_t i = 0; i < pattern.size();) {
    const char16_t c = pattern[i];
    if (c == u'[') {
      i = addList(pattern, i);
      continue;
    }
    ++i;
    if (c == u'*') {
      if (!elements_.empty() && elements_.back().kind == Element::AnyRun) continue;
      elements_.push_back({Element::AnyRun});
    } else if (c == u'?') {
      elements_.push_back({Element::AnyUnit});
    } else if (c == u'#') {
      elements_.push_back({Element::Digit});
    } else {
      if (exact_) prefix_ += c;
      elements_.push_back({Element::Unit, lowerUnit(c)});
      continue;
    }
    exact_ = false;
  }
}

// The list at the bracket `at`; returns the position behind it. A bracket that is never closed is literal,
// and so is a list of one plain character.
size_t LikePattern::addList(std::u16string_view pattern, size_t at) {
  const size_t end = pattern.find(u']', at + 1);
  const bool isLiteral = end == pattern.npos;
  std::u16string_view body = isLiteral ? pattern.substr(at, 1) : pattern.substr(at + 1, end - at - 1);
  const size_t next = isLiteral ? at + 1 : end + 1;
  if (body.empty()) return next;
  if (body.size() == 1) {
    if (exact_) prefix_ += body[0];
    elements_.push_back({Element::Unit, lowerUnit(body[0])});
    return next;
  }
  Element element{body[0] == u'!' ? Element::NoneOf : Element::OneOf};
  if (body[0] == u'!') body.remove_prefix(1);
  element.firstRange = static_cast<uint32_t>(ranges_.size());
  for (size_t i = 0; i < body.size(); ++i) {
    const bool isRange = i + 2 < body.size() && body[i + 1] == u'-';
    ranges_.push_back({body[i], isRange ? body[i + 2] : body[i]});
    if (isRange) i += 2;
  }
  element.rangeCount = static_cast<uint32_t>(ranges_.size()) - element.firstRange;
  elements_.push_back(element);
  exact_ = false;
  return next;
}

bool LikePattern::matchesUnit(const Element& e, char16_t c) const {
  switch (e.kind) {
    case Element::Unit:
      return c == e.unit || lowerUnit(c) == e.unit;
    case Element::AnyUnit:
      return true;
    case Element::Digit:
      return c >= u'0' && c <= u'9';
    case Element::AnyRun:
      return false;
    case Element::OneOf:
    case Element::NoneOf:
      break;
  }
  bool found = false;
  for (uint32_t i = e.firstRange; i < e.firstRange + e.rangeCount && !found; ++i) {
    const Range& range = ranges_[i];
    if (range.first == range.last) {
      found = lowerUnit(c) == lowerUnit(range.first);
    } else {
      const std::u16string_view unit(&c, 1);
      found = collation_->compare({&range.first, 1}, unit) <= 0 &&
              collation_->compare(unit, {&range.last, 1}) <= 0;
    }
  }
  return found == (e.kind == Element::OneOf);
}

// When a unit does not fit, only the last run so far needs to grow: an earlier one could not help.
bool LikePattern::matches(std::u16string_view text) const {
  constexpr size_t kNone = static_cast<size_t>(-1);
  const size_t count = elements_.size();
  size_t at = 0, element = 0, run = kNone, runEnd = 0;
  for (;;) {
    if (element < count && elements_[element].kind == Element::AnyRun) {
      if (element + 1 == count) return true;
      run = ++element;
      runEnd = at;
    } else if (at < text.size() && element < count && matchesUnit(elements_[element], text[at])) {
      ++at, ++element;
    } else if (at == text.size() && element == count) {
      return true;
    } else {
      if (run == kNone || runEnd >= text.size()) return false;
      at = ++runEnd;
      element = run;
    }
  }
}

}  // namespace jet::sql
