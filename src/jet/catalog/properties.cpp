#include "jet/catalog/properties.h"

#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

constexpr size_t kSignatureSize = 4, kChunkHead = 6, kValueHead = 8;
constexpr char kSignature4[] = "MR2", kSignature3[] = "KKD";  // with their NUL

bool isText(Type type) { return type == Type::Text || type == Type::Memo; }

bool isKnownType(uint8_t code) { return (code >= 1 && code <= 12) || (code >= 15 && code <= 17); }

class BlobReader {
 public:
  BlobReader(Bytes stored, int codePage, PageNumber page)
      : rest_(stored), codePage_(codePage), page_(page), ansi_(asChars(stored).starts_with("KKD")) {
    const std::string_view head = asChars(stored).substr(0, kSignatureSize);
    if (head != std::string_view(kSignature4, 4) && head != std::string_view(kSignature3, 4)) fail();
    rest_ = rest_.subspan(kSignatureSize);
  }

  PropertyBlob read() {
    PropertyBlob blob;
    while (!rest_.empty()) {
      Bytes chunk = take(rest_, kChunkHead);
      const uint32_t length = get32(chunk.data());
      const uint16_t kind = get16(chunk.data() + 4);
      if (length < kChunkHead) fail();
      Bytes payload = take(rest_, length - kChunkHead);
      if (kind == PropertyBlob::kNames) {
        readNames(payload, blob);
      } else if (kind == PropertyBlob::kObject || kind == PropertyBlob::kColumn) {
        blob.owners.push_back(readOwner(kind, payload, blob.names));
      } else {
        blob.others.emplace_back(kind, asChars(payload));
      }
    }
    return blob;
  }

 private:
  [[noreturn]] void fail() const { throwDamaged(u"a property list is damaged", page_); }

  Bytes take(Bytes& from, size_t count) const {
    if (from.size() < count) fail();
    const Bytes taken = from.first(count);
    from = from.subspan(count);
    return taken;
  }

  std::u16string text(Bytes stored) const {
    if (ansi_) return decodeAnsi(stored, codePage_);
    std::u16string out(stored.size() / 2, u'\0');
    for (size_t i = 0; i < out.size(); ++i) out[i] = get16(stored.data() + 2 * i);
    return out;
  }

  std::u16string name(Bytes& from) const {
    const size_t length = get16(take(from, 2).data());
    return text(take(from, length));
  }

  void readNames(Bytes payload, PropertyBlob& blob) const {
    while (!payload.empty()) blob.names.push_back(name(payload));
  }

  PropertyBlob::Owner readOwner(uint16_t kind, Bytes payload,
                                const std::vector<std::u16string>& names) const {
    PropertyBlob::Owner owner{.kind = kind, .name = {}, .set = {}};
    const uint32_t ownerLength = get32(take(payload, 4).data());
    if (ownerLength < 6) fail();
    Bytes ownerName = take(payload, ownerLength - 4);
    owner.name = name(ownerName);
    while (!payload.empty()) {
      const size_t length = get16(take(payload, 2).data());
      if (length < kValueHead) fail();
      Bytes value = take(payload, length - 2);
      owner.set.items.push_back(readValue(value, names));
    }
    return owner;
  }

  Property readValue(Bytes value, const std::vector<std::u16string>& names) const {
    const Bytes head = take(value, kValueHead - 2);
    const size_t nameNumber = get16(head.data() + 2), size = get16(head.data() + 4);
    if (nameNumber >= names.size()) fail();
    const Bytes content = take(value, size);
    Property p{.name = names[nameNumber], .type = Type::Binary, .design = head[0] != 0, .stored = {}};
    if (isKnownType(head[1])) {
      p.type = static_cast<Type>(head[1]);
    } else {
      p.unknownType = head[1];
    }
    if (ansi_ && isText(p.type)) {
      encodeText(text(content), false, p.stored);
    } else {
      p.stored = asChars(content);
    }
    return p;
  }

  Bytes rest_;
  int codePage_;
  PageNumber page_;
  bool ansi_;
};

class BlobWriter {
 public:
  BlobWriter(const PropertyBlob& blob, Version version, int codePage)
      : names_(blob.names), ansi_(version == Version::Jet3), codePage_(codePage) {
    std::string owners;
    for (const PropertyBlob::Owner& owner : blob.owners) owners += chunk(owner.kind, ownerPayload(owner));
    for (const auto& [kind, payload] : blob.others) owners += chunk(kind, payload);
    std::string list;
    for (const std::u16string& name : names_) putName(list, name);
    out_.assign(ansi_ ? kSignature3 : kSignature4, kSignatureSize);
    out_ += chunk(PropertyBlob::kNames, list) + owners;
  }

  std::string take() { return std::move(out_); }

 private:
  static void put(std::string& out, uint32_t value, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) out += static_cast<char>(value >> 8 * i);
  }

  static std::string chunk(uint16_t kind, std::string_view payload) {
    std::string out;
    put(out, static_cast<uint32_t>(payload.size() + kChunkHead), 4);
    put(out, kind, 2);
    return out.append(payload);
  }

  std::string text(std::u16string_view value) const {
    std::string out;
    if (ansi_) {
      encodeAnsi(value, codePage_, out);
    } else {
      encodeText(value, false, out);
    }
    return out;
  }

  void putName(std::string& out, std::u16string_view name) const {
    const std::string stored = text(name);
    put(out, static_cast<uint32_t>(stored.size()), 2);
    out += stored;
  }

  uint32_t nameNumber(const std::u16string& name) {
    const auto found = std::find(names_.begin(), names_.end(), name);
    if (found == names_.end()) {
      names_.push_back(name);
      return static_cast<uint32_t>(names_.size() - 1);
    }
    return static_cast<uint32_t>(found - names_.begin());
  }

  std::string ownerPayload(const PropertyBlob::Owner& owner) {
    std::string name, out;
    putName(name, owner.name);
    put(out, static_cast<uint32_t>(name.size() + 4), 4);
    out += name;
    for (const Property& p : owner.set.items) {
      std::string content = p.stored;
      if (ansi_ && isText(p.type)) {
        PropertySet one;
        one.items.push_back(p);
        content = text(one.text(p.name));
      }
      if (content.size() > 0xFFFF - kValueHead) throw Error(3271);
      put(out, static_cast<uint32_t>(content.size() + kValueHead), 2);
      out += p.design ? '\1' : '\0';
      out += static_cast<char>(p.unknownType != 0 ? p.unknownType : static_cast<uint8_t>(p.type));
      put(out, nameNumber(p.name), 2);
      put(out, static_cast<uint32_t>(content.size()), 2);
      out += content;
    }
    return out;
  }

  std::vector<std::u16string> names_;
  bool ansi_;
  int codePage_;
  std::string out_;
};

}  // namespace

PropertyBlob::Owner* PropertyBlob::object() {
  for (Owner& owner : owners) {
    if (owner.kind == kObject) return &owner;
  }
  return nullptr;
}

PropertyBlob::Owner* PropertyBlob::column(std::u16string_view columnName) {
  for (Owner& owner : owners) {
    if (owner.kind == kColumn && sameName(owner.name, columnName)) return &owner;
  }
  return nullptr;
}

PropertyBlob::Owner& PropertyBlob::makeObject() {
  if (Owner* present = object()) return *present;
  return *owners.insert(owners.begin(), Owner{.kind = kObject, .name = {}, .set = {}});
}

PropertyBlob::Owner& PropertyBlob::makeColumn(std::u16string_view columnName) {
  if (Owner* present = column(columnName)) return *present;
  owners.push_back({.kind = kColumn, .name = std::u16string(columnName), .set = {}});
  return owners.back();
}

PropertyBlob parseProperties(Bytes stored, int codePage, PageNumber page) {
  if (stored.empty()) return {};
  return BlobReader(stored, codePage, page).read();
}

std::string encodeProperties(const PropertyBlob& blob, Version version, int codePage) {
  return BlobWriter(blob, version, codePage).take();
}

void applyProperties(TableDef& table, const PropertyBlob& blob) {
  for (const PropertyBlob::Owner& owner : blob.owners) {
    if (owner.kind == PropertyBlob::kObject) {
      table.properties = owner.set;
      table.validationRule = owner.set.text(u"ValidationRule");
      table.validationText = owner.set.text(u"ValidationText");
      continue;
    }
    const int ordinal = table.columnOrdinal(owner.name);
    if (ordinal < 0) continue;  // left behind by a deleted column
    ColumnDef& column = table.columns[ordinal];
    column.properties = owner.set;
    column.required = owner.set.boolean(u"Required", false);
    // The designer leaves the entry out when it forbids empty texts; a column without any entries came
    // from SQL, which allows them.
    column.allowZeroLength = owner.set.boolean(u"AllowZeroLength", false);
    column.defaultValue = owner.set.text(u"DefaultValue");
    column.validationRule = owner.set.text(u"ValidationRule");
    column.validationText = owner.set.text(u"ValidationText");
  }
}

}  // namespace jet
