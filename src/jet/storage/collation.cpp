#include "jet/storage/collation.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

#include "jet/format/text.h"
#include "jet/storage/collation_tables.h"

namespace jet {

using namespace collation_tables;

namespace {

constexpr size_t kMaxUnits = 255;
constexpr uint8_t kNeutralWeight = 2;

// Letters that Polish takes out of their base letter's accented forms.
struct PolishLetter {
  char16_t capital, small;
  uint16_t code;
};
constexpr PolishLetter kPolish[] = {
    {u'Ą', u'ą', 0x4B03}, {u'Ć', u'ć', 0x4E02}, {u'Ę', u'ę', 0x5202},
    {u'Ł', u'ł', 0x5F05}, {u'Ń', u'ń', 0x6303}, {u'Ó', u'ó', 0x6502},
    {u'Ś', u'ś', 0x6C07}, {u'Ź', u'ź', 0x7903}, {u'Ż', u'ż', 0x7904},
};

std::u16string_view significantPart(std::u16string_view text) {
  text = text.substr(0, kMaxUnits);
  while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
  return text;
}

bool isSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDFFF; }

uint16_t surrogateCode(char16_t c) {
  if (c < 0xDC00) return static_cast<uint16_t>(c - 10238);
  const int o = c - 0xDC00;
  const int shift = o < 8 ? 9992 : o < 262 ? 9990 : o < 516 ? 9988 : o < 770 ? 9986 : 9984;
  return static_cast<uint16_t>(c - shift);
}

// `steps` further in a run whose low byte counts 02..FF.
uint16_t stepped(uint16_t code, int steps) {
  const int low = (code & 0xFF) - 2 + steps;
  return static_cast<uint16_t>(((code >> 8) + low / 254) << 8 | (2 + low % 254));
}

// Appends the bytes of a code: one when the low byte is 0.
int putCode(uint16_t code, uint8_t (&bytes)[4]) {
  bytes[0] = static_cast<uint8_t>(code >> 8);
  bytes[1] = static_cast<uint8_t>(code);
  return bytes[1] ? 2 : 1;
}

// The byte that stands for a character in code page 1252, -1 when there is none.
int byte1252(char16_t c) {
  static const std::u16string upper = [] {
    std::string bytes;
    for (int b = 0x80; b < 0xA0; ++b) bytes += static_cast<char>(b);
    return decodeAnsi(asBytes(bytes), 1252);
  }();
  if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return c;
  const size_t at = upper.find(c);
  return at == std::u16string::npos ? -1 : static_cast<int>(0x80 + at);
}

}  // namespace

Collation::Collation(uint16_t lcid, bool jet3, bool exact) : lcid_(lcid), jet3_(jet3), exact_(exact) {
  if (jet3) {
    for (int c = 1; c < kQuickUnits; ++c) {
      const int byte = byte1252(static_cast<char16_t>(c));
      if (byte < 0) continue;
      const ByteCode& code = kGeneral97[byte];
      if (!code.second && !code.nibble) plain_[c] = static_cast<uint16_t>(code.code << 8);
    }
    return;
  }
  for (int i = 0; i < kGeneralCount && kGeneral[i].first < kQuickUnits; ++i) {
    const CodeRun& run = kGeneral[i];
    for (int c = run.first; c <= std::min<int>(run.last, kQuickUnits - 1); ++c)
      quick_[c] = {run.flags & kStep ? stepped(run.code, c - run.first) : run.code, run.weight, run.flags};
  }
  if (lcid == 0x0415)
    for (const PolishLetter& letter : kPolish)
      for (char16_t c : {letter.capital, letter.small}) quick_[c] = {letter.code, kNeutralWeight, kLetter};
  for (int c = 0; c < kQuickUnits; ++c)
    if ((quick_[c].flags & ~kStep) == kLetter && quick_[c].weight == kNeutralWeight)
      plain_[c] = quick_[c].code;
}

const Collation& Collation::get(uint16_t lcid, bool jet3) {
  static const Collation general(0x0409, false, true), polish(0x0415, false, true),
      general97(0x0409, true, true);
  if (lcid == 0x0409) return jet3 ? general97 : general;
  if (lcid == 0x0415 && !jet3) return polish;
  static std::mutex mutex;
  static std::map<std::pair<uint16_t, bool>, Collation> others;
  const std::lock_guard lock(mutex);
  return others.try_emplace({lcid, jet3}, lcid, jet3, false).first->second;
}

Collation::Unit Collation::unit(char16_t c) const {
  if (c < kQuickUnits) return quick_[c];
  if (isSurrogate(c)) return {surrogateCode(c), 0x3F, kLetter};
  const CodeRun* end = kGeneral + kGeneralCount;
  const CodeRun* run =
      std::lower_bound(kGeneral, end, c, [](const CodeRun& r, char16_t u) { return r.last < u; });
  if (run == end || run->first > c) return {};
  return {run->flags & kStep ? stepped(run->code, c - run->first) : run->code, run->weight, run->flags};
}

// The unit's bytes in the first part of the key.
int Collation::primaryBytes(char16_t c, uint8_t (&bytes)[4]) const {
  if (jet3_) {
    const int byte = byte1252(c);
    if (byte < 0) {  // no stored text holds it: sorts behind everything that does occur
      bytes[0] = 0xFF, bytes[1] = static_cast<uint8_t>(c >> 8), bytes[2] = static_cast<uint8_t>(c);
      return 3;
    }
    bytes[0] = kGeneral97[byte].code, bytes[1] = kGeneral97[byte].second;
    return bytes[1] ? 2 : 1;
  }
  const Unit u = unit(c);
  switch (u.flags & kKindMask) {
    case kLetter:
      return putCode(u.code, bytes);
    case kSeveral: {
      const SeveralElements& several = kSeveralTable[u.code];
      std::copy_n(several.codes, several.codeLength, bytes);
      return several.codeLength;
    }
    default:
      return 0;
  }
}

void Collation::appendKey(std::u16string_view text, std::string& key) const {
  text = significantPart(text);
  if (jet3_)
    appendGeneral97(text, key);
  else
    appendGeneral(text, key);
}

void Collation::appendGeneral(std::u16string_view text, std::string& key) const {
  struct Unprintable {
    int position;
    uint8_t code;
  };
  int elements = 0;
  while (!text.empty() && text.front() < kQuickUnits && plain_[text.front()]) {
    const uint16_t code = plain_[text.front()];
    key += static_cast<char>(code >> 8);
    if (code & 0xFF) key += static_cast<char>(code);
    ++elements;
    text.remove_prefix(1);
  }
  if (text.empty()) {
    key.append("\x01\0", 2);
    return;
  }
  std::string weights(static_cast<size_t>(elements),
                      kNeutralWeight);  // behind those of marks without a letter
  bool accented = false;
  std::vector<uint8_t> kana;
  std::vector<Unprintable> unprintables;
  for (const char16_t c : text) {
    const Unit u = unit(c);
    uint8_t bytes[4];
    switch (u.flags & kKindMask) {
      case kLetter:
        key.append(reinterpret_cast<char*>(bytes), static_cast<size_t>(putCode(u.code, bytes)));
        weights += static_cast<char>(u.weight);
        accented = accented || u.weight != kNeutralWeight;
        ++elements;
        if (u.flags >> kKanaShift) kana.push_back(static_cast<uint8_t>(u.flags >> kKanaShift));
        break;
      case kSeveral: {
        const SeveralElements& several = kSeveralTable[u.code];
        key.append(reinterpret_cast<const char*>(several.codes), several.codeLength);
        if (accented)
          weights +=
              static_cast<char>(*std::max_element(several.weights, several.weights + several.elements));
        else
          weights.append(reinterpret_cast<const char*>(several.weights), several.elements);
        elements += several.elements;
        break;
      }
      case kMark:
        accented = true;
        if (elements == 0)
          weights += static_cast<char>(u.weight);
        else
          weights.back() = static_cast<char>(static_cast<uint8_t>(weights.back()) + u.weight);
        break;
      case kUnprintable:
        unprintables.push_back({elements, static_cast<uint8_t>(u.code)});
        break;
      default:
        break;
    }
  }
  while (!weights.empty() && static_cast<uint8_t>(weights.back()) <= kNeutralWeight) weights.pop_back();
  key += '\x01';
  key += weights;
  if (!kana.empty() || !unprintables.empty()) key += "\x01\x01";
  if (!kana.empty()) {
    while (!kana.empty() && kana.back() == 3) kana.pop_back();
    for (size_t i = 0; i < kana.size(); i += 3) {
      const auto at = [&](size_t k) { return k < kana.size() ? kana[k] : 0; };
      key += static_cast<char>(0x80 | at(i) << 4 | at(i + 1) << 2 | at(i + 2));
    }
    key += "\xFF\x02\x80\xFF\x80";
    if (!unprintables.empty()) key += '\xFF';
  }
  if (!unprintables.empty()) key += '\x01';
  for (const Unprintable& u : unprintables) {
    const int position = 0x8000 | (7 + 4 * u.position);
    key += {static_cast<char>(position >> 8), static_cast<char>(position), '\x06', static_cast<char>(u.code)};
  }
  key += '\0';
}

void Collation::appendGeneral97(std::u16string_view text, std::string& key) const {
  std::vector<uint8_t> nibbles{0};
  size_t pending = 0;
  for (const char16_t c : text) {
    uint8_t bytes[4];
    key.append(reinterpret_cast<char*>(bytes), static_cast<size_t>(primaryBytes(c, bytes)));
    const int byte = byte1252(c);
    if (byte < 0) continue;
    if (kGeneral97[byte].nibble) {
      nibbles.insert(nibbles.end(), pending, 2);
      nibbles.push_back(kGeneral97[byte].nibble);
      pending = 0;
    } else {
      pending += kGeneral97[byte].significant;
    }
  }
  if (nibbles.size() == 1) {
    key += '\0';
    return;
  }
  nibbles.push_back(0);
  if (nibbles.size() % 2) nibbles.push_back(0);
  for (size_t i = 0; i < nibbles.size(); i += 2) key += static_cast<char>(nibbles[i] << 4 | nibbles[i + 1]);
}

int Collation::compare(std::u16string_view a, std::u16string_view b) const {
  a = significantPart(a), b = significantPart(b);
  const auto plain = [&](char16_t c) { return c < kQuickUnits ? plain_[c] : uint16_t{0}; };
  const size_t shorter = std::min(a.size(), b.size());
  for (size_t i = 0; i < shorter; ++i) {
    const uint16_t codeA = plain(a[i]), codeB = plain(b[i]);
    if (!codeA || !codeB) return compareSlowly(a, b);
    if (codeA != codeB) return codeA < codeB ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  // The longer text wins when it goes on with a letter; else the parts behind the letters decide.
  const std::u16string_view longer = a.size() > b.size() ? a : b;
  if (!plain(longer[shorter])) return compareSlowly(a, b);
  return a.size() < b.size() ? -1 : 1;
}

int Collation::compareSlowly(std::u16string_view a, std::u16string_view b) const {
  // Byte by byte through the first parts of both keys; 0 at the end, which is below every code.
  struct Primaries {
    const Collation& order;
    std::u16string_view rest;
    uint8_t bytes[4] = {};
    int at = 0, count = 0;
    uint8_t next() {
      while (at == count) {
        if (rest.empty()) return 0;
        count = order.primaryBytes(rest.front(), bytes), at = 0;
        rest.remove_prefix(1);
      }
      return bytes[at++];
    }
  };
  if (a == b) return 0;
  Primaries left{*this, a}, right{*this, b};
  for (;;) {
    const uint8_t x = left.next(), y = right.next();
    if (x != y) return x < y ? -1 : 1;
    if (x == 0) break;
  }
  std::string keyA, keyB;
  appendKey(a, keyA), appendKey(b, keyB);
  return keyA.compare(keyB);
}

}  // namespace jet
