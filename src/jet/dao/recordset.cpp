#include <algorithm>

#include "jet/dao/recordset_impl.h"

namespace jet {

namespace {

constexpr const char* kSource = "DAO.Recordset";

}  // namespace

const std::u16string& Field::name() const { return recordset_->impl_->columns()[index_].name; }

Type Field::type() const { return recordset_->impl_->columns()[index_].type; }

int Field::size() const {
  const sql::ResultColumn& column = recordset_->impl_->columns()[index_];
  switch (column.type) {
    case Type::Boolean:
    case Type::Byte: return 1;
    case Type::Integer: return 2;
    case Type::Long:
    case Type::Single: return 4;
    case Type::Currency:
    case Type::Double:
    case Type::Date: return 8;
    case Type::Guid: return 16;
    case Type::Decimal: return 17;
    case Type::Text: return column.size != 0 ? column.size : 255;
    case Type::Binary: return column.size;
    default: return 0;
  }
}

bool Field::required() const { return recordset_->impl_->columns()[index_].required; }

bool Field::allowZeroLength() const { return recordset_->impl_->columns()[index_].allowZeroLength; }

bool Field::autoNumber() const { return recordset_->impl_->columns()[index_].autoNumber; }

const std::u16string& Field::sourceTable() const { return recordset_->impl_->columns()[index_].sourceTable; }

const std::u16string& Field::sourceField() const { return recordset_->impl_->columns()[index_].sourceColumn; }

Value Field::value() const { return recordset_->impl_->fieldValue(index_); }

void Field::setValue(const Value& value) { recordset_->impl_->setFieldValue(index_, value); }

Recordset::Recordset(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {
  impl_->fields.resize(impl_->columns().size());
  for (size_t i = 0; i < impl_->fields.size(); ++i) {
    impl_->fields[i].recordset_ = this;
    impl_->fields[i].index_ = i;
  }
}

Recordset::~Recordset() = default;

RecordsetType Recordset::type() const { return impl_->type; }

bool Recordset::updatable() const { return impl_->isDynaset() && !impl_->database.pager->readOnly(); }

void Recordset::close() {
  impl_->discardEdit();
  if (impl_->isDynaset()) impl_->plan->rows.clear();
  impl_->position = -1;
}

void Recordset::requery() { impl_->open(); }

size_t Recordset::fieldCount() const { return impl_->fields.size(); }

Field& Recordset::field(size_t index) {
  if (index >= impl_->fields.size()) throw Error(3265, {}, kSource);
  return impl_->fields[index];
}

Field& Recordset::field(std::u16string_view name) {
  const auto& columns = impl_->columns();
  for (size_t i = 0; i < columns.size(); ++i)
    if (sameName(columns[i].name, name)) return impl_->fields[i];
  throw Error(3265, {}, kSource);
}

const Field& Recordset::field(size_t index) const { return const_cast<Recordset*>(this)->field(index); }

const Field& Recordset::field(std::u16string_view name) const { return const_cast<Recordset*>(this)->field(name); }

bool Recordset::bof() const { return impl_->position < 0; }

bool Recordset::eof() const { return impl_->rowCount() == 0 || impl_->position >= static_cast<int64_t>(impl_->rowCount()); }

int64_t Recordset::recordCount() const { return static_cast<int64_t>(impl_->rowCount()); }

int64_t Recordset::absolutePosition() const { return impl_->hasCurrent() ? impl_->position : -1; }

void Recordset::setAbsolutePosition(int64_t position) {
  if (position < 0 || position >= recordCount()) throw Error(3001, {}, kSource);
  impl_->moveTo(position);
}

void Recordset::moveFirst() {
  if (recordCount() == 0) throw Error(3021, {}, kSource);
  impl_->moveTo(0);
}

void Recordset::moveLast() {
  if (recordCount() == 0) throw Error(3021, {}, kSource);
  impl_->moveTo(recordCount() - 1);
}

void Recordset::moveNext() {
  if (eof()) throw Error(3021, {}, kSource);
  impl_->moveTo(impl_->position + 1);
}

void Recordset::movePrevious() {
  if (bof()) throw Error(3021, {}, kSource);
  impl_->moveTo(impl_->position - 1);
}

void Recordset::move(int64_t count) {
  if (!impl_->hasCurrent() && (recordCount() == 0 || count == 0)) throw Error(3021, {}, kSource);
  impl_->moveTo(impl_->position + count);
}

void Recordset::findFirst(std::u16string_view criterion) { impl_->find(criterion, 0, 1); }

void Recordset::findNext(std::u16string_view criterion) { impl_->find(criterion, impl_->position + 1, 1); }

void Recordset::findLast(std::u16string_view criterion) { impl_->find(criterion, recordCount() - 1, -1); }

void Recordset::findPrevious(std::u16string_view criterion) { impl_->find(criterion, impl_->position - 1, -1); }

bool Recordset::noMatch() const { return impl_->noMatch; }

Recordset::Bookmark Recordset::bookmark() const {
  if (!impl_->hasCurrent()) throw Error(3021, {}, kSource);
  return impl_->bookmarkOf(impl_->position);
}

void Recordset::setBookmark(const Bookmark& bookmark) {
  for (int64_t row = 0; row < recordCount(); ++row) {
    if (impl_->bookmarkOf(row) != bookmark) continue;
    impl_->moveTo(row);
    return;
  }
  throw Error(3159, {}, kSource);
}

Recordset::Bookmark Recordset::lastModified() const {
  if (impl_->lastModified.empty()) throw Error(3021, {}, kSource);
  return impl_->lastModified;
}

void Recordset::addNew() { impl_->beginAdd(); }

void Recordset::edit() { impl_->beginEdit(); }

void Recordset::update() {
  switch (impl_->editMode) {
    case EditMode::None: throw Error(3020, {}, kSource);
    case EditMode::Edit: impl_->storeEdit(); break;
    case EditMode::AddNew: impl_->storeNew(); break;
  }
  impl_->discardEdit();
}

void Recordset::cancelUpdate() {
  if (impl_->editMode == EditMode::None) throw Error(3020, {}, kSource);
  impl_->discardEdit();
}

void Recordset::remove() { impl_->remove(); }

Recordset::EditMode Recordset::editMode() const { return impl_->editMode; }

}  // namespace jet
