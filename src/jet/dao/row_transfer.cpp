#include "jet/dao/row_transfer.h"

#include <algorithm>

#include "jet/dao/table_source.h"
#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

bool isText(Type type) { return type == Type::Text || type == Type::Memo; }

}  // namespace

RowTransfer::RowTransfer(Pager& from, const TableDef& source, TableBuilder& builder, const TableDef& target,
                         RowMarks& marks, bool tolerant)
    : source_(source),
      target_(target),
      builder_(builder),
      marks_(marks),
      tolerant_(tolerant),
      jet3_(source.rowLayout.file->version == Version::Jet3),
      columns_(target.columns.size()),
      texts_(target.columns.size()),
      fields_(target.columns.size()),
      keyValues_(target.columns.size()) {
  for (const ColumnDef& column : target.columns) {
    const int ordinal = source.columnOrdinal(column.name);
    if (ordinal < 0 || source.columns[static_cast<size_t>(ordinal)].type() != column.type())
      throwDamaged(u"table " + source.name + u" lacks the column " + column.name, source.page);
    if (column.autoNumber) autoNumber_ = static_cast<int>(sourceOrdinals_.size());
    sourceOrdinals_.push_back(ordinal);
    const ColumnDef& own = source.columns[static_cast<size_t>(ordinal)];
    stores_.emplace_back(from, own.ownedMap, own.freeMap);
  }
}

void RowTransfer::copy(Bytes bytes, PageNumber where) {
  const RowReader row(source_.rowLayout, bytes, where);
  const uint32_t count = jet3_ ? bytes[0] : get16(bytes.data());
  if (tolerant_ && count > source_.rowLayout.nextColumn)
    throwDamaged(u"more columns than the table ever had", where);
  bytes_ += bytes.size();
  // Long values last: they leave traces in the new file.
  for (size_t i = 0; i < columns_.size(); ++i)
    if (!target_.columns[i].isLongValue()) readColumn(row, i);
  for (size_t i = 0; i < columns_.size(); ++i) {
    if (!target_.columns[i].isLongValue()) continue;
    fields_[i].clear();
    row.longValue(sourceOrdinals_[i]);  // throws when cut short
  }
  try {
    for (size_t i = 0; i < columns_.size(); ++i)
      if (target_.columns[i].isLongValue()) readLongValue(row, i, sourceOrdinals_[i]);
    builder_.encodeShrinking(fields_, [&] {
      for (size_t i = 0; i < columns_.size(); ++i)
        if (target_.columns[i].isLongValue()) columns_[i] = {!fields_[i].empty(), asBytes(fields_[i])};
      encodeStoredRow(target_.rowLayout, columns_, row_);
    });
    builder_.add(asBytes(row_), keyValues_);
  } catch (const Error&) {
    if (tolerant_) removeLongValues();
    throw;
  }
  if (autoNumber_ >= 0 && columns_[static_cast<size_t>(autoNumber_)].bytes.size() == 4) {
    const auto given = static_cast<int32_t>(get32(columns_[static_cast<size_t>(autoNumber_)].bytes.data()));
    largestAutoNumber_ = std::max(largestAutoNumber_, given);
  }
}

void RowTransfer::readColumn(const RowReader& row, size_t i) {
  const int from = sourceOrdinals_[i];
  const ColumnDef& target = target_.columns[i];
  StoredColumn& column = columns_[i];
  if (target.type() == Type::Boolean) {
    column = {row.boolean(from), {}};
  } else {
    column = {!row.isNull(from), row.stored(from)};
    if (column.isSet && column.bytes.size() < fixedSize(target.type())) row.value(from);  // throws: cut short
    if (column.isSet && jet3_ && isText(target.type())) convertText(column.bytes, i);
  }
  const auto& indexed = builder_.indexedColumns();
  if (std::binary_search(indexed.begin(), indexed.end(), static_cast<int>(i)))
    keyValues_[i] = row.value(from);
}

// A Jet 3 text in the form of Jet 4.
void RowTransfer::convertText(Bytes stored, size_t i) {
  const ColumnLayout& layout = target_.columns[i].layout;
  std::u16string text = decodeAnsi(stored, source_.rowLayout.codePage);
  if (layout.fixed) text.resize(layout.length / 2, u' ');
  texts_[i].clear();
  encodeText(text, layout.compressed && !layout.fixed, texts_[i]);
  columns_[i].bytes = asBytes(texts_[i]);
}

void RowTransfer::removeLongValues() {
  for (size_t i = 0; i < fields_.size(); ++i) {
    if (fields_[i].empty()) continue;
    builder_.longValues(static_cast<int>(i)).remove(LongValueRef::parse(asBytes(fields_[i]), 0));
  }
}

void RowTransfer::readLongValue(const RowReader& row, size_t i, int from) {
  keyValues_[i] = {};
  const std::optional<LongValueRef> ref = row.longValue(from);
  if (!ref) return;
  if (!tolerant_ || isSound(stores_[i], *ref))
    fields_[i] = transferLongValue(*ref, i, from);
  else
    ++lostValues_;
}

// Every part can be read and belongs to this value only.
bool RowTransfer::isSound(const LongValueStore& store, const LongValueRef& ref) const {
  std::vector<RowId> parts;
  try {
    store.visitRows(ref, [&](RowId part, Bytes) {
      if (part.isNull()) return true;
      if (marks_.contains(part)) throwDamaged(u"long value used twice", part.page);
      parts.push_back(part);
      return true;
    });
  } catch (const Error& error) {
    if (!isDamage(error)) throw;
    return false;
  }
  std::sort(parts.begin(), parts.end());
  return std::adjacent_find(parts.begin(), parts.end()) == parts.end();
}

std::string RowTransfer::readMarked(const LongValueStore& store, const LongValueRef& ref) {
  std::string value;
  store.visitRows(ref, [&](RowId part, Bytes bytes) {
    if (!part.isNull() && !marks_.add(part)) throwDamaged(u"long value used twice", part.page);
    value += asChars(bytes);
    return true;
  });
  bytes_ += value.size();
  return value;
}

LongValueField RowTransfer::transferLongValue(const LongValueRef& ref, size_t i, int from) {
  const ColumnDef& column = target_.columns[i];
  const FileLayout& layout = FileLayout::of(Version::Jet4);
  const auto& indexed = builder_.indexedColumns();
  const bool isIndexed = std::binary_search(indexed.begin(), indexed.end(), static_cast<int>(i));
  const bool rewritten = jet3_ && column.type() == Type::Memo;
  LongValueStore& to = builder_.longValues(static_cast<int>(i));

  if (!isIndexed && !rewritten && ref.length > layout.maxLongValuePart &&
      ref.kind != LongValueRef::Kind::Inline) {
    LongValueStore::Writer writer(to, ref.length);
    stores_[i].visitRows(ref, [&](RowId part, Bytes bytes) {
      if (!marks_.add(part)) throwDamaged(u"long value used twice", part.page);
      writer.append(bytes);
      return true;
    });
    bytes_ += ref.length;
    return writer.finish();
  }
  std::string value = readMarked(stores_[i], ref);
  if (rewritten) {
    const std::u16string text = decodeAnsi(asBytes(value), source_.rowLayout.codePage);
    value.clear();
    encodeText(text, column.layout.compressed, value);
    return to.write(asBytes(value), 2 * text.size() > layout.maxInlineBytes);
  }
  if (isIndexed)
    keyValues_[i] =
        decodeStored(source_.columns[static_cast<size_t>(from)].layout, source_.rowLayout, asBytes(value));
  return to.write(asBytes(value), ref.kind != LongValueRef::Kind::Inline);
}

}  // namespace jet
