#include "platform/secret.h"

#include <QByteArray>

#ifdef Q_OS_WIN

#include <windows.h>

#include <dpapi.h>

namespace tandeko {

namespace {

template <typename Operation>
QByteArray convert(QByteArray bytes, Operation operation) {
  DATA_BLOB in{static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(bytes.data())};
  DATA_BLOB out{};
  if (!operation(&in, &out)) return {};
  const QByteArray result(reinterpret_cast<const char*>(out.pbData), static_cast<qsizetype>(out.cbData));
  LocalFree(out.pbData);
  return result;
}

}  // namespace

QString sealSecret(const QString& secret) {
  const QByteArray sealed = convert(secret.toUtf8(), [](DATA_BLOB* in, DATA_BLOB* out) {
    return CryptProtectData(in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, out);
  });
  return QString::fromLatin1(sealed.toHex());
}

QString openSecret(const QString& sealed) {
  const QByteArray secret =
      convert(QByteArray::fromHex(sealed.toLatin1()), [](DATA_BLOB* in, DATA_BLOB* out) {
        return CryptUnprotectData(in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, out);
      });
  return QString::fromUtf8(secret);
}

}  // namespace tandeko

#else

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QMessageAuthenticationCode>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QStandardPaths>

namespace tandeko {

namespace {

constexpr int kKeySize = 32;
constexpr int kNonceSize = 16;
constexpr int kTagSize = 32;

QByteArray randomBytes(int count) {
  QByteArray bytes(count, '\0');
  for (char& byte : bytes) byte = static_cast<char>(QRandomGenerator::system()->bounded(256));
  return bytes;
}

// The user's key, made at first use; empty when it can be neither read nor stored.
QByteArray userKey() {
  const QString folder =
      QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/kwarcel");
  const QString path = folder + QStringLiteral("/key");
  QFile file(path);
  if (file.open(QIODevice::ReadOnly)) return file.readAll();
  QDir().mkpath(folder);
  QSaveFile fresh(path);
  const QByteArray key = randomBytes(kKeySize);
  const bool stored = fresh.open(QIODevice::WriteOnly) &&
                      fresh.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
                      fresh.write(key) == key.size() && fresh.commit();
  return stored ? key : QByteArray();
}

QByteArray mac(const QByteArray& message, const QByteArray& key) {
  return QMessageAuthenticationCode::hash(message, key, QCryptographicHash::Sha256);
}

// Exclusive or with a stream of authentication codes of the nonce and a counter.
QByteArray scramble(const QByteArray& text, const QByteArray& nonce, const QByteArray& key) {
  QByteArray out = text;
  QByteArray block;
  for (qsizetype i = 0; i < out.size(); ++i) {
    if (i % kTagSize == 0) block = mac(nonce + QByteArray::number(i / kTagSize), key);
    out[i] = static_cast<char>(out[i] ^ block[i % kTagSize]);
  }
  return out;
}

}  // namespace

QString sealSecret(const QString& secret) {
  const QByteArray key = userKey();
  if (key.size() != kKeySize) return {};
  const QByteArray nonce = randomBytes(kNonceSize);
  const QByteArray body = nonce + scramble(secret.toUtf8(), nonce, key);
  return QString::fromLatin1((mac(body, key) + body).toHex());
}

QString openSecret(const QString& sealed) {
  const QByteArray key = userKey();
  const QByteArray bytes = QByteArray::fromHex(sealed.toLatin1());
  if (key.size() != kKeySize || bytes.size() < kTagSize + kNonceSize) return {};
  const QByteArray body = bytes.mid(kTagSize);
  if (mac(body, key) != bytes.left(kTagSize)) return {};
  return QString::fromUtf8(scramble(body.mid(kNonceSize), body.left(kNonceSize), key));
}

}  // namespace tandeko

#endif
