#include "jet/catalog/cascade.h"

#include <algorithm>

#include "jet/format/error.h"

namespace jet {

namespace {

constexpr char kSource[] = "DAO.Recordset";
constexpr size_t kMostKnown = 10'000;  // keys of a relationship that are remembered

bool touches(const RealIndex& index, const std::vector<bool>& changed) {
  return changed.empty() ||
         std::any_of(index.columns.begin(), index.columns.end(),
                     [&](const IndexColumn& part) { return changed[static_cast<size_t>(part.ordinal)]; });
}

}  // namespace

const References& Cascade::references(Table& table) {
  if (!table.references_) table.references_ = std::make_unique<References>(table.catalog_, *table.def_);
  return *table.references_;
}

Table& Cascade::related(const TableDefPtr& def) {
  if (def->page == root_.def_->page) return root_;
  std::unique_ptr<Table>& table = root_.related_[def->page];
  if (!table) table = std::make_unique<Table>(root_.catalog_, def, root_.rules_);
  return *table;
}

void Cascade::update(RowId row, std::span<const Table::Change> changes) {
  run({&root_, row, {changes.begin(), changes.end()}, false, false});
}

void Cascade::remove(RowId row) { run({&root_, row, {}, true, false}); }

void Cascade::run(Step first) {
  steps_.push_back(std::move(first));
  while (!steps_.empty()) {
    const Step step = std::move(steps_.back());
    steps_.pop_back();
    // Two ways may have led to one row.
    if (step.isCascaded && !step.table->fetch(step.row)) continue;
    try {
      step.isRemoval ? removeRow(step) : updateRow(step);
    } catch (const Error& error) {
      if (!step.isCascaded) throw;
      rethrowCascaded(error, step);
    }
  }
  for (const Forbidden& f : forbidden_) {
    if (!indexTree(root_.catalog_.pager(), *f.table, f.real).containsKey(asBytes(f.key))) continue;
    throw Error(f.isCascaded ? 3396 : 3200, {f.table->name}, kSource);
  }
}

void Cascade::updateRow(const Step& step) {
  Table& table = *step.table;
  const References& refs = references(table);
  std::vector<bool> changed(table.def_->columns.size());
  for (const Table::Change& change : step.changes) changed[static_cast<size_t>(change.ordinal)] = true;

  const bool related =
      std::any_of(refs.foreign().begin(), refs.foreign().end(),
                  [&](const References::Foreign& f) {
                    return touches(table.def_->realIndexes[static_cast<size_t>(f.real)], changed);
                  }) ||
      std::any_of(refs.primary().begin(), refs.primary().end(), [&](const References::Primary& p) {
        return touches(table.def_->realIndexes[static_cast<size_t>(p.real)], changed);
      });
  std::vector<Value> before, after(changed.size());
  if (related || table.hasRules()) {
    auto present = table.read(step.row);
    if (!present) throw Error(3167, {}, kSource);
    before = std::move(*present);
    after = before;
  }
  for (const Table::Change& change : step.changes) after[static_cast<size_t>(change.ordinal)] = change.value;
  table.checkValues(after, changed);
  table.rows_.update(step.row, step.changes);
  if (!related) return;

  checkForeign(table, after, changed, step.isCascaded);
  for (const References::Primary& side : refs.primary()) {
    const RealIndex& own = table.def_->realIndexes[static_cast<size_t>(side.real)];
    const RealIndex& theirs = side.foreign->realIndexes[static_cast<size_t>(side.foreignReal)];
    if (!touches(own, changed)) continue;
    const std::string oldKey = referenceKey(own, before, *side.foreign, theirs);
    if (oldKey.empty() || oldKey == referenceKey(own, after, *side.foreign, theirs)) continue;
    if (!side.cascadeUpdates) {
      forbidden_.push_back({side.foreign, side.foreignReal, oldKey, step.isCascaded});
      continue;
    }
    std::vector<Table::Change> changes;
    for (size_t i = 0; i < own.columns.size(); ++i) {
      changes.push_back({theirs.columns[i].ordinal, after[static_cast<size_t>(own.columns[i].ordinal)]});
    }
    for (const RowId row : rowsWithKey(side, oldKey))
      steps_.push_back({&this->related(side.foreign), row, changes, false, true});
  }
}

void Cascade::removeRow(const Step& step) {
  Table& table = *step.table;
  const References& refs = references(table);
  std::vector<Value> values(table.def_->columns.size());
  if (!refs.primary().empty()) {
    const auto row = table.fetch(step.row);
    if (!row) throw Error(3167, {}, kSource);
    const RowReader reader = table.reader(row->bytes, row->where);
    for (const References::Primary& side : refs.primary()) {
      for (const IndexColumn& part : table.def_->realIndexes[static_cast<size_t>(side.real)].columns) {
        values[static_cast<size_t>(part.ordinal)] = table.column(reader, part.ordinal);
      }
    }
  }
  table.rows_.remove(step.row);
  for (const References::Primary& side : refs.primary()) {
    const RealIndex& own = table.def_->realIndexes[static_cast<size_t>(side.real)];
    const RealIndex& theirs = side.foreign->realIndexes[static_cast<size_t>(side.foreignReal)];
    const std::string key = referenceKey(own, values, *side.foreign, theirs);
    if (key.empty()) continue;
    if (side.onDelete == References::Primary::OnDelete::Refuse) {
      forbidden_.push_back({side.foreign, side.foreignReal, key, step.isCascaded});
      continue;
    }
    const bool removes = side.onDelete == References::Primary::OnDelete::Cascade;
    std::vector<Table::Change> nulls;
    if (!removes) {
      for (const IndexColumn& part : theirs.columns) nulls.push_back({part.ordinal, Value()});
    }
    for (const RowId row : rowsWithKey(side, key))
      steps_.push_back({&related(side.foreign), row, nulls, removes, true});
  }
}

// Every foreign key of the row that is not Null, at least of those with a changed column, must be there.
void Cascade::checkForeign(Table& table, std::span<const Value> values, const std::vector<bool>& changed,
                           bool isCascaded, KnownKeys* known) const {
  const auto& sides = references(table).foreign();
  if (known) known->resize(sides.size());
  for (size_t i = 0; i < sides.size(); ++i) {
    const References::Foreign& side = sides[i];
    const RealIndex& own = table.def_->realIndexes[static_cast<size_t>(side.real)];
    if (!touches(own, changed)) continue;
    const std::string key = referenceKey(own, values, side.keyColumns);
    if (key.empty() || (known && (*known)[i].contains(key))) continue;
    if (!indexTree(table.catalog_.pager(), *side.primary, side.primaryReal).containsKey(asBytes(key))) {
      throw Error(isCascaded ? 3397 : 3201, {side.primary->name}, kSource);
    }
    if (known && (*known)[i].size() < kMostKnown) (*known)[i].insert(key);
  }
}

std::vector<RowId> Cascade::rowsWithKey(const References::Primary& side, const std::string& key) const {
  std::vector<RowId> rows;
  const BTree tree = indexTree(root_.catalog_.pager(), *side.foreign, side.foreignReal);
  BTree::Cursor cursor(tree);
  cursor.seek(asBytes(key));
  while (cursor.next() && asChars(cursor.key()) == key) rows.push_back(cursor.row());
  return rows;
}

// What is wrong with a row that the user did not touch has numbers of its own.
void Cascade::rethrowCascaded(const Error& error, const Step& step) const {
  const TableDef& def = *step.table->def_;
  const std::u16string& column =
      step.changes.empty() ? def.name : def.columns[static_cast<size_t>(step.changes.front().ordinal)].name;
  switch (error.number()) {
    case 3022:
      throw Error(3399, {def.name}, kSource);
    case 3058:
      throw Error(3398, {def.name}, kSource);
    case 3163:
      throw Error(3411, {def.name, column}, kSource);
    case 3314:
      throw Error(3401, {column}, kSource);
    case 3315:
      throw Error(3402, {column}, kSource);
    case 3316:
    case 3317:
      throw Error(3404, {column}, kSource);
    default:
      throw error;
  }
}

}  // namespace jet
