#include "jet/catalog/query_text.h"

#include <algorithm>
#include <iterator>

#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

enum Attribute {
  kKind = 1,
  kParameter,
  kOptions,
  kSourceFile,
  kInput,
  kOutput,
  kJoin,
  kWhere,
  kGroup,
  kHaving,
  kOrder
};
enum Kind {
  kSelect = 1,
  kMakeTable,
  kAppend,
  kUpdate,
  kDelete,
  kCrosstab,
  kDefinition,
  kPassThrough,
  kUnion
};
constexpr int kAllFields = 0x01, kDistinct = 0x02, kOwnerAccess = 0x04, kDistinctRow = 0x08, kTop = 0x10,
              kPercent = 0x20;
constexpr int kAppendValues = 0x8000;
constexpr int kPivot = 1, kRowHeading = 2;  // flags of a crosstab's output columns; 0 is the value

// Words that a name may not be without brackets.
bool isReserved(std::u16string_view name) {
  static constexpr std::u16string_view kWords =
      u" all alter and any as asc between by constraint create delete desc distinct drop eqv exists false "
      u"foreign from"
      u" group having imp in index inner insert into is join key left like mod not null on or order outer "
      u"parameters"
      u" percent pivot primary right select set some table top transform true union unique update values "
      u"where with"
      u" xor ";
  return kWords.find(u" " + foldName(name) + u" ") != kWords.npos;
}

std::u16string quoted(std::u16string_view name) {
  const bool plain = !name.empty() && !isReserved(name) && !(name[0] >= u'0' && name[0] <= u'9') &&
                     std::all_of(name.begin(), name.end(), [](char16_t c) {
                       return c == u'_' || (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') ||
                              (c >= u'a' && c <= u'z') || c >= 0xC0;
                     });
  if (plain || name.find(u'[') != name.npos) return std::u16string(name);
  return u"[" + std::u16string(name) + u"]";
}

// A column that is written to: text as it stands when it is qualified already.
std::u16string target(std::u16string_view name) {
  return name.find(u'.') != name.npos ? std::u16string(name) : quoted(name);
}

std::u16string join(const std::vector<std::u16string>& items, std::u16string_view separator) {
  std::u16string out;
  for (const std::u16string& item : items) {
    if (!out.empty()) out += separator;
    out += item;
  }
  return out;
}

std::u16string_view parameterType(int code) {
  static constexpr std::u16string_view kNames[] = {
      u"Value",    u"Bit",    u"Byte", u"Short",      u"Long",     u"Currency", u"IEEESingle", u"IEEEDouble",
      u"DateTime", u"Binary", u"Text", u"LongBinary", u"LongText", u"Value",    u"Value",      u"Guid"};
  return code >= 0 && code < static_cast<int>(std::size(kNames)) ? kNames[code] : kNames[0];
}

class QueryWriter {
 public:
  QueryWriter(const std::vector<QueryPart>& parts, std::u16string_view name) : parts_(parts), name_(name) {}

  std::u16string write() {
    const QueryPart* kind = first(kKind);
    if (!kind) fail();
    if (kind->flag == kDefinition || kind->flag == kPassThrough) return trimmed(kind->expression);
    std::u16string sql = parameters();
    switch (kind->flag) {
      case kSelect:
        sql += select({});
        break;
      case kMakeTable:
        sql += select(u" INTO " + quoted(kind->name1) + inFile(kind->name2, kind->expression));
        break;
      case kAppend:
        sql += append(*kind);
        break;
      case kUpdate:
        sql += update();
        break;
      case kDelete:
        sql += u"DELETE " + distinct() + outputs(-1) + from() + where();
        break;
      case kCrosstab:
        sql += crosstab();
        break;
      case kUnion:
        sql += unite();
        break;
      default:
        fail();
    }
    if (options() & kOwnerAccess) sql += u" WITH OWNERACCESS OPTION";
    return sql + u";";
  }

 private:
  [[noreturn]] void fail() const { throw Error(3340, {name_}); }

  const QueryPart* first(int attribute) const {
    for (const QueryPart& p : parts_) {
      if (p.attribute == attribute) return &p;
    }
    return nullptr;
  }

  std::vector<const QueryPart*> all(int attribute) const {
    std::vector<const QueryPart*> found;
    for (const QueryPart& p : parts_) {
      if (p.attribute == attribute) found.push_back(&p);
    }
    return found;
  }

  static std::u16string trimmed(std::u16string text) {
    while (!text.empty() && (text.back() == u'\0' || text.back() == u';' || text.back() == u' ' ||
                             text.back() == u'\r' || text.back() == u'\n')) {
      text.pop_back();
    }
    return text + u";";
  }

  int options() const {
    const QueryPart* p = first(kOptions);
    return p ? p->flag : 0;
  }

  std::u16string parameters() const {
    std::vector<std::u16string> items;
    for (const QueryPart* p : all(kParameter)) {
      std::u16string item = quoted(p->name1) + u" " + std::u16string(parameterType(p->flag));
      if (p->flag == 10 && !p->expression.empty()) item += u" (" + p->expression + u")";
      items.push_back(std::move(item));
    }
    return items.empty() ? std::u16string() : u"PARAMETERS " + join(items, u", ") + u"; ";
  }

  std::u16string distinct() const {
    if (options() & kDistinct) return u"DISTINCT ";
    return options() & kDistinctRow ? u"DISTINCTROW " : u"";
  }

  std::u16string top() const {
    const QueryPart* p = first(kOptions);
    if (!p || !(p->flag & kTop)) return {};
    return u"TOP " + p->name1 + (p->flag & kPercent ? u" PERCENT " : u" ");
  }

  // Output columns whose flag is `flag`; all of them for -1.
  std::u16string outputs(int flag) const {
    std::vector<std::u16string> items;
    for (const QueryPart* p : all(kOutput)) {
      if (flag >= 0 && p->flag != flag) continue;
      items.push_back(p->name1.empty() ? p->expression : p->expression + u" AS " + quoted(p->name1));
    }
    if (flag < 0 && ((options() & kAllFields) || items.empty())) items.push_back(u"*");
    return join(items, u", ");
  }

  static std::u16string inFile(const std::u16string& path, const std::u16string& connect) {
    if (path.empty() && connect.empty()) return {};
    return u" IN '" + path + u"'" + (connect.empty() ? u"" : u" [" + connect + u"]");
  }

  struct Source {
    std::u16string text;
    std::vector<std::u16string> names;
    bool joined = false;
  };

  std::vector<Source> inputs() const {
    std::vector<Source> sources;
    for (const QueryPart* p : all(kInput)) {
      Source source;
      source.text = p->expression.empty() ? quoted(p->name1) : u"(" + trimmedInput(p->expression) + u")";
      if (!p->name2.empty()) source.text += u" AS " + quoted(p->name2);
      source.names.push_back(p->name2.empty() ? p->name1 : p->name2);
      sources.push_back(std::move(source));
    }
    return sources;
  }

  static std::u16string trimmedInput(const std::u16string& text) {
    std::u16string out = trimmed(text);
    out.pop_back();
    return out;
  }

  static Source* holder(std::vector<Source>& sources, std::u16string_view name) {
    for (Source& source : sources) {
      for (const std::u16string& held : source.names) {
        if (sameName(held, name)) return &source;
      }
    }
    return nullptr;
  }

  // Joins of the same two inputs are one join with several conditions.
  struct JoinGroup {
    const QueryPart* part;
    std::vector<std::u16string> conditions;
    std::u16string text() const {
      return conditions.size() == 1 ? conditions[0] : u"(" + jet::join(conditions, u") AND (") + u")";
    }
  };

  std::vector<JoinGroup> joins() const {
    std::vector<JoinGroup> groups;
    for (const QueryPart* p : all(kJoin)) {
      const auto same = std::find_if(groups.begin(), groups.end(), [&](const JoinGroup& g) {
        return g.part->flag == p->flag && sameName(g.part->name1, p->name1) &&
               sameName(g.part->name2, p->name2);
      });
      if (same != groups.end()) {
        same->conditions.push_back(p->expression);
      } else {
        groups.push_back({p, {p->expression}});
      }
    }
    return groups;
  }

  std::u16string from() const {
    std::vector<Source> sources = inputs();
    if (sources.empty()) return {};
    for (const JoinGroup& group : joins()) {
      Source* left = holder(sources, group.part->name1);
      Source* right = holder(sources, group.part->name2);
      if (!left || !right) fail();
      if (left == right) {
        left->text += u" AND (" + group.text() + u")";
        continue;
      }
      const auto bracketed = [](const Source& s) { return s.joined ? u"(" + s.text + u")" : s.text; };
      const std::u16string_view word = group.part->flag == 2   ? u" LEFT JOIN "
                                       : group.part->flag == 3 ? u" RIGHT JOIN "
                                                               : u" INNER JOIN ";
      left->text = bracketed(*left) + std::u16string(word) + bracketed(*right) + u" ON " + group.text();
      left->joined = true;
      left->names.insert(left->names.end(), right->names.begin(), right->names.end());
      sources.erase(sources.begin() + (right - sources.data()));
    }
    std::stable_partition(sources.begin(), sources.end(), [](const Source& s) { return !s.joined; });
    std::vector<std::u16string> texts;
    for (const Source& source : sources) texts.push_back(source.text);
    const QueryPart* file = first(kSourceFile);
    return u" FROM " + jet::join(texts, u", ") + (file ? inFile(file->name1, file->expression) : u"");
  }

  std::u16string conditions(int attribute, std::u16string_view word) const {
    std::vector<std::u16string> items;
    for (const QueryPart* p : all(attribute)) items.push_back(p->expression);
    if (items.empty()) return {};
    return std::u16string(word) + (items.size() == 1 ? items[0] : u"(" + jet::join(items, u") AND (") + u")");
  }

  std::u16string where() const { return conditions(kWhere, u" WHERE "); }

  std::u16string groups(int flag) const {
    std::vector<std::u16string> items;
    for (const QueryPart* p : all(kGroup)) {
      if (flag < 0 || p->flag == flag) items.push_back(p->expression);
    }
    return items.empty() ? std::u16string() : u" GROUP BY " + jet::join(items, u", ");
  }

  std::u16string orders() const {
    std::vector<std::u16string> items;
    for (const QueryPart* p : all(kOrder)) {
      items.push_back(p->expression + (p->name1 == u"D" || p->name1 == u"d" ? u" DESC" : u""));
    }
    return items.empty() ? std::u16string() : u" ORDER BY " + jet::join(items, u", ");
  }

  std::u16string select(const std::u16string& into) const {
    return u"SELECT " + distinct() + top() + outputs(-1) + into + from() + where() + groups(-1) +
           conditions(kHaving, u" HAVING ") + orders();
  }

  std::u16string append(const QueryPart& kind) const {
    std::vector<std::u16string> targets, values;
    bool allNamed = true, byValue = false;
    for (const QueryPart* p : all(kOutput)) {
      if (p->name2.empty()) {
        allNamed = false;
      } else {
        targets.push_back(target(p->name2));
      }
      values.push_back(p->expression);
      byValue = byValue || (p->flag & kAppendValues) != 0;
    }
    std::u16string sql = u"INSERT INTO " + quoted(kind.name1) + inFile(kind.name2, kind.expression);
    if (allNamed && !targets.empty()) sql += u" (" + jet::join(targets, u", ") + u")";
    if (byValue) return sql + u" VALUES (" + jet::join(values, u", ") + u")";
    return sql + u" " + select({});
  }

  std::u16string update() const {
    std::vector<std::u16string> items;
    for (const QueryPart* p : all(kOutput)) items.push_back(target(p->name2) + u" = " + p->expression);
    std::u16string source = from();
    if (source.empty() || items.empty()) fail();
    source.erase(0, std::u16string_view(u" FROM ").size());
    return u"UPDATE " + distinct() + source + u" SET " + jet::join(items, u", ") + where();
  }

  std::u16string crosstab() const {
    std::u16string pivot;
    for (const QueryPart* p : all(kOutput)) {
      if (p->flag == kPivot) pivot = p->expression;
    }
    return u"TRANSFORM " + outputs(0) + u" SELECT " + distinct() + outputs(kRowHeading) + from() + where() +
           groups(kRowHeading) + conditions(kHaving, u" HAVING ") + orders() + u" PIVOT " + pivot;
  }

  std::u16string unite() const {
    std::vector<std::u16string> pieces;
    for (const QueryPart* p : all(kInput)) pieces.push_back(trimmedInput(p->expression));
    if (pieces.empty()) fail();
    return jet::join(pieces, options() & kDistinct ? u" UNION " : u" UNION ALL ") + orders();
  }

  const std::vector<QueryPart>& parts_;
  std::u16string_view name_;
};

}  // namespace

std::u16string buildQuerySql(std::vector<QueryPart> parts, std::u16string_view name) {
  std::stable_sort(parts.begin(), parts.end(), [](const QueryPart& a, const QueryPart& b) {
    return a.attribute != b.attribute ? a.attribute < b.attribute : a.order < b.order;
  });
  return QueryWriter(parts, name).write();
}

}  // namespace jet
