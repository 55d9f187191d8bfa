#include "jet/catalog/table.h"

#include <limits>
#include <random>

#include "jet/catalog/cascade.h"
#include "jet/format/error.h"

namespace jet {

namespace {

constexpr uint64_t kHashPrime = 0x100000001B3;

// Equal values have equal hashes; Null has 0.
struct ValueHash {
  uint64_t operator()(std::monostate) const { return 0; }
  uint64_t operator()(const Binary& v) const { return std::hash<std::string_view>()(asChars(v)); }
  uint64_t operator()(const Guid& v) const { return std::hash<std::string_view>()(asChars(v.bytes)); }
  uint64_t operator()(const Currency& v) const { return std::hash<int64_t>()(v.scaled); }
  uint64_t operator()(const Date& v) const { return std::hash<double>()(v.days); }
  uint64_t operator()(const Decimal& v) const {
    uint64_t hash = v.negative ? 1 : 0;
    for (const uint32_t word : v.magnitude) hash = hash * kHashPrime + word;
    return hash * 31 + v.scale;
  }
  template <typename T>
  uint64_t operator()(const T& v) const {
    return std::hash<T>()(v);
  }
};

constexpr char kSource[] = "DAO.Recordset";

std::mt19937& randomSource() {
  thread_local std::mt19937 source{std::random_device{}()};
  return source;
}

// Kept apart by chance alone, as the property's function has it.
Guid randomGuid() {
  Guid guid;
  for (uint8_t& byte : guid.bytes) byte = static_cast<uint8_t>(randomSource()());
  guid.bytes[7] = static_cast<uint8_t>((guid.bytes[7] & 0x0F) | 0x40);
  guid.bytes[8] = static_cast<uint8_t>((guid.bytes[8] & 0x3F) | 0x80);
  return guid;
}

bool isRandomNumber(const ColumnDef& column) {
  return column.defaultValue.find(u"GenUniqueID") != std::u16string::npos;
}

bool isTooLong(const ColumnDef& column, const Value& value, Version version) {
  if (column.isLongValue()) return false;
  if (const Text* text = value.getIf<Text>()) return text->size() > static_cast<size_t>(column.size(version));
  if (const Binary* binary = value.getIf<Binary>()) return binary->size() > column.layout.length;
  return false;
}

}  // namespace

Table::Table(Catalog& catalog, TableDefPtr def, RuleEvaluator* rules)
    : catalog_(catalog), def_(std::move(def)), rules_(rules), rows_(catalog.pager(), def_) {}

Table::~Table() = default;

std::optional<std::vector<Value>> Table::read(RowId row) const {
  const auto present = fetch(row);
  if (!present) return std::nullopt;
  const RowReader stored = reader(present->bytes, present->where);
  std::vector<Value> values;
  values.reserve(def_->columns.size());
  for (size_t i = 0; i < def_->columns.size(); ++i) values.push_back(column(stored, static_cast<int>(i)));
  return values;
}

RowId Table::insert(std::vector<std::optional<Value>> given) {
  Transaction change(catalog_.pager());
  const int32_t lastBefore = lastAutoNumber_;
  try {
    const RowId row = insertChecked(std::move(given), nullptr, [this](const auto& values, auto autoNumber) {
      return rows_.insert(values, autoNumber);
    });
    change.commit();
    return row;
  } catch (...) {
    lastAutoNumber_ = lastBefore;
    throw;
  }
}

RowId Table::Insertion::insert(std::vector<std::optional<Value>> given) {
  return table_.insertChecked(std::move(given), &known_, [this](const auto& values, auto autoNumber) {
    return batch_.insert(values, autoNumber);
  });
}

template <typename Store>
RowId Table::insertChecked(std::vector<std::optional<Value>> given, KnownKeys* known, const Store& store) {
  given.resize(def_->columns.size());
  std::vector<Value> values(given.size());
  std::optional<int32_t> autoNumber;
  fill(given, values, autoNumber);
  checkValues(values, {});
  const RowId row = store(values, autoNumber);
  if (!Cascade::references(*this).foreign().empty())
    Cascade(*this).checkForeign(*this, values, {}, false, known);
  return row;
}

// `autoNumber` gets the definition's new last AutoNumber when that changes.
void Table::fill(std::vector<std::optional<Value>>& given, std::vector<Value>& values,
                 std::optional<int32_t>& autoNumber) {
  for (size_t i = 0; i < given.size(); ++i) {
    const ColumnDef& column = def_->columns[i];
    if (given[i]) values[i] = std::move(*given[i]);
    if (column.autoNumber && column.type() == Type::Long) {
      if (values[i].isNull() && isRandomNumber(column)) {
        values[i] = Value(static_cast<int32_t>(randomSource()()));
      } else {
        const int32_t last = catalog_.counts(def_->page).lastAutoNumber;
        if (values[i].isNull()) {
          const int64_t next = int64_t{last} + def_->autoNumberIncrement;
          if (next != static_cast<int32_t>(next)) throw Error(3349, {}, kSource);
          autoNumber = static_cast<int32_t>(next);
          values[i] = Value(*autoNumber);
        } else if (const int32_t* explicitly = values[i].getIf<int32_t>(); explicitly && *explicitly > last) {
          autoNumber = *explicitly;
        }
      }
      if (const int32_t* number = values[i].getIf<int32_t>()) lastAutoNumber_ = *number;
    } else if (column.guidAutoNumber && values[i].isNull()) {
      values[i] = Value(randomGuid());
    } else if (!given[i] && rules_ && !column.defaultValue.empty()) {
      values[i] = rules_->defaultValue(column);
    }
    if (column.type() == Type::Boolean && values[i].isNull()) values[i] = Value(false);
  }
}

bool Table::hasRules() const {
  if (!rules_) return false;
  if (!def_->validationRule.empty()) return true;
  for (const ColumnDef& column : def_->columns) {
    if (!column.validationRule.empty()) return true;
  }
  return false;
}

void Table::checkValues(std::span<const Value> values, const std::vector<bool>& changed) const {
  const auto each = [&](const auto& check) {
    for (size_t i = 0; i < values.size(); ++i) {
      if (changed.empty() || changed[i]) check(def_->columns[i], values[i], static_cast<int>(i));
    }
  };
  each([](const ColumnDef& column, const Value& value, int) {
    if (column.required && value.isNull() && column.type() != Type::Boolean)
      throw Error(3314, {column.name}, kSource);
  });
  each([](const ColumnDef& column, const Value& value, int) {
    const Text* text = column.allowZeroLength ? nullptr : value.getIf<Text>();
    if (text && text->empty()) throw Error(3315, {column.name}, kSource);
  });
  const Version version = def_->rowLayout.file->version;
  each([&](const ColumnDef& column, const Value& value, int) {
    if (isTooLong(column, value, version)) throw Error(3163, {}, kSource);
  });
  if (!rules_) return;
  each([&](const ColumnDef& column, const Value&, int ordinal) {
    checkRule(column.validationRule, column.validationText, column.name, ordinal, values);
  });
  checkRule(def_->validationRule, def_->validationText, def_->name, -1, values);
}

void Table::checkRule(const std::u16string& rule, const std::u16string& text, const std::u16string& name,
                      int ordinal, std::span<const Value> values) const {
  if (rule.empty() || rules_->satisfies(rule, *def_, ordinal, values)) return;
  if (!text.empty()) throw Error::withText(3316, text, kSource);
  throw Error(3317, {name, rule}, kSource);
}

void Table::update(RowId row, std::span<const Change> changes) {
  if (changes.empty()) return;
  Transaction change(catalog_.pager());
  Cascade(*this).update(row, changes);
  change.commit();
}

void Table::remove(RowId row) {
  Transaction change(catalog_.pager());
  Cascade(*this).remove(row);
  change.commit();
}

uint64_t Table::identity(const RowReader& row) const {
  const IndexDef* primary = def_->primaryKey();
  if (!primary) return 1;
  uint64_t hash = 1;
  for (const IndexColumn& part : def_->realIndexes[static_cast<size_t>(primary->real)].columns) {
    const Value key = column(row, part.ordinal);
    hash = hash * kHashPrime + std::visit(ValueHash{}, key.storage());
  }
  return hash == 0 ? 1 : hash;
}

std::string Table::indexKey(int realIndex, std::span<const Value> values) const {
  const auto columns = def_->keyColumns(def_->realIndexes[static_cast<size_t>(realIndex)],
                                        def_->rowLayout.file->version == Version::Jet3);
  return encodeKey({columns.data(), values.size()}, values);
}

Table::IndexScan::IndexScan(const Table& table, int realIndex, KeyRange range, bool backwards)
    : tree_(indexTree(table.catalog_.pager(), table.def(), realIndex)),
      cursor_(tree_),
      range_(std::move(range)),
      backwards_(backwards) {}

bool Table::IndexScan::next() {
  const std::string &first = backwards_ ? range_.high : range_.low,
                    &last = backwards_ ? range_.low : range_.high;
  if (!started_) {
    started_ = true;
    cursor_.seek(asBytes(first),
                 backwards_ ? first.empty() || !range_.highExclusive : !first.empty() && range_.lowExclusive);
  }
  if (!(backwards_ ? cursor_.previous() : cursor_.next())) return false;
  if (last.empty()) return true;
  const std::string_view key = asChars(cursor_.key());
  const int order = key.substr(0, last.size()).compare(last);
  if (order == 0) return !(backwards_ ? range_.lowExclusive : range_.highExclusive);
  return backwards_ ? order > 0 : order < 0;
}

}  // namespace jet
