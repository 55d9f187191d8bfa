#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// A piece of SQL in both dialects.
namespace jet::differential {

struct Sql {
  std::string jet, lite;
  Sql() = default;
  Sql(const char* both) : jet(both), lite(both) {}
  Sql(const std::string& both) : jet(both), lite(both) {}
  Sql(std::string inJet, std::string inLite) : jet(std::move(inJet)), lite(std::move(inLite)) {}
  Sql& operator+=(const Sql& s) {
    jet += s.jet;
    lite += s.lite;
    return *this;
  }
  bool empty() const { return jet.empty(); }
};
inline Sql operator+(Sql a, const Sql& b) { return a += b; }

inline std::string filled(std::string_view pattern, std::initializer_list<const std::string*> arguments) {
  std::string out;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '$' && i + 1 < pattern.size())
      out += **(arguments.begin() + (pattern[++i] - '0'));
    else
      out += pattern[i];
  }
  return out;
}

// A pattern with $0, $1, $2 for the arguments; Sql{jet, lite} where the dialects say it differently.
inline Sql phrase(const Sql& pattern, const Sql& a, const Sql& b = {}, const Sql& c = {}) {
  return {filled(pattern.jet, {&a.jet, &b.jet, &c.jet}), filled(pattern.lite, {&a.lite, &b.lite, &c.lite})};
}

}  // namespace jet::differential
