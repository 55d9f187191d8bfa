#include "jet/sql/scan.h"

#include <algorithm>

#include "jet/sql/index_bound.h"

namespace jet::sql {

void TableScan::explain(PlanText& text, int depth) const {
  text.line(depth, u"scan " + slot_.name() + filterNote());
}

bool TableScan::advance(EvalContext&) {
  if (!scan_->next()) return false;
  slot_.setRow(scan_->id(), scan_->bytes(), scan_->where());
  return true;
}

void QueryScan::explain(PlanText& text, int depth) const {
  text.line(depth, u"query " + slot_.name() + filterNote());
  slot_.rows()->explain(text, depth + 1);
}

bool QueryScan::advance(EvalContext& c) {
  if (!slot_.rows()->next(c)) return false;
  slot_.setQueryRow();
  return true;
}

void IndexSeek::open(EvalContext& c) {
  ranges_.clear();
  rows_.clear();
  scan_.reset();
  whole_.reset();
  range_ = row_ = 0;
  collected_ = false;
  const size_t columns = slot_.table()->def().realIndexes[static_cast<size_t>(access_.index)].columns.size();
  // Entries of one whole key come in the order of the pages as they are.
  if (!addRanges(c) || access_.equal.size() == columns) return;
  std::sort(ranges_.begin(), ranges_.end(), [](const auto& a, const auto& b) { return a.low < b.low; });
  const auto same = [](const auto& a, const auto& b) { return a.low == b.low && a.high == b.high; };
  ranges_.erase(std::unique(ranges_.begin(), ranges_.end(), same), ranges_.end());
  collectRows();
}

// False when no key can match.
bool IndexSeek::addRanges(EvalContext& c) {
  const Table& table = *slot_.table();
  const RealIndex& index = table.def().realIndexes[static_cast<size_t>(access_.index)];
  const auto column = [&](size_t i) -> const ColumnDef& {
    return table.def().columns[static_cast<size_t>(index.columns[i].ordinal)];
  };
  std::vector<Value> key;
  Value scratch;
  for (Expression* operand : access_.equal) {
    if (!operand) {
      key.emplace_back();
      continue;
    }
    auto v = exactKey(column(key.size()).type(), operand->view(c, scratch));
    if (!v) return false;
    key.push_back(std::move(*v));
  }
  if (access_.isPoint()) {
    const std::string bytes = table.indexKey(access_.index, key);
    ranges_.push_back({bytes, bytes});
    return true;
  }
  const size_t next = key.size();
  if (access_.list) {
    for (size_t i = 1; i < access_.list->operands.size(); ++i) {
      auto v = exactKey(column(next).type(), access_.list->operands[i]->view(c, scratch));
      if (!v) continue;
      key.resize(next);
      key.push_back(std::move(*v));
      const std::string bytes = table.indexKey(access_.index, key);
      ranges_.push_back({bytes, bytes});
    }
    return !ranges_.empty();
  }
  KeyBounds bounds;
  if (access_.like) {
    const LikePattern* pattern = access_.like->pattern(c);
    if (!pattern) return false;
    bounds = likeBounds(table, access_.index, key, pattern->prefix());
  } else {
    std::optional<Value> low, high;
    if (access_.low) low = access_.low->value(c);
    if (access_.high) high = access_.high->value(c);
    if ((low && low->isNull()) || (high && high->isNull())) return false;
    if (access_.symmetric) {
      const auto order = compare(*low, *high, c);
      if (order && *order > 0) std::swap(low, high);
    }
    bounds = rangeBounds(table, access_.index, key, low, high);
  }
  if (bounds.isEmpty) return false;
  ranges_.push_back(std::move(bounds.range));
  return true;
}

void IndexSeek::collectRows() {
  collected_ = true;
  const size_t limit = std::max<size_t>(1000, static_cast<size_t>(slot_.tableRows()) / 3);
  for (const Table::KeyRange& range : ranges_) {
    Table::IndexScan scan(*slot_.table(), access_.index, range);
    while (scan.next()) {
      if (rows_.size() == limit) {
        rows_.clear();
        whole_.emplace(slot_.table()->scan());
        return;
      }
      rows_.push_back(scan.row());
    }
  }
  std::sort(rows_.begin(), rows_.end());
}

bool IndexSeek::advance(EvalContext&) {
  const Table& table = *slot_.table();
  if (whole_) {
    if (!whole_->next()) return false;
    slot_.setRow(whole_->id(), whole_->bytes(), whole_->where());
    return true;
  }
  for (;;) {
    RowId id;
    if (collected_) {
      if (row_ == rows_.size()) return false;
      id = rows_[row_++];
    } else {
      if (!scan_) {
        if (range_ == ranges_.size()) return false;
        scan_.emplace(table, access_.index, ranges_[range_++]);
      }
      if (!scan_->next()) {
        scan_.reset();
        continue;
      }
      id = scan_->row();
    }
    if (auto row = table.fetch(id)) {
      slot_.setRow(id, std::move(*row));
      return true;
    }
  }
}

std::u16string IndexSeek::describe() const {
  const TableDef& def = slot_.table()->def();
  for (const IndexDef& index : def.indexes)
    if (index.real == access_.index) return index.name;
  return u"?";
}

void IndexSeek::explain(PlanText& text, int depth) const {
  std::u16string line = u"index seek " + slot_.name() + u"." + describe() + u" (";
  const TableDef& def = slot_.table()->def();
  const RealIndex& index = def.realIndexes[static_cast<size_t>(access_.index)];
  const auto name = [&](size_t i) { return def.columns[static_cast<size_t>(index.columns[i].ordinal)].name; };
  for (size_t i = 0; i < access_.equal.size(); ++i) line += (i ? u", " : u"") + name(i) + u" =";
  if (!access_.isPoint()) {
    if (!access_.equal.empty()) line += u", ";
    line += name(access_.equal.size()) + (access_.like ? u" like" : access_.list ? u" in" : u" range");
  }
  text.line(depth, line + u")");
}

}  // namespace jet::sql
