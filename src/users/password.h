#pragma once

#include <QString>
#include <cstdint>

// The scrambling of stored user passwords: fixed and reversible, no protection.
namespace tandeko {

// The key that all programs of the family use.
inline const QString kPasswordKey = QStringLiteral("qarvenu47tobxw");
inline constexpr int kPasswordPad = 20;
// Ends the scrambled password within a stored value; random filling follows it.
inline constexpr char16_t kPasswordEnd = 150;

// The generator's seed that a key gives.
int32_t PassSeed(const QString& key);

// Characters outside 32..126 are dropped. An empty text gives only filling, no end mark.
QString PassEncode(const QString& key, const QString& text, int padLength);

// The password followed by the end mark; a stored value without the mark is decoded whole.
QString PassDecode(const QString& key, const QString& stored);

}  // namespace tandeko
