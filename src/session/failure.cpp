#include "session/failure.h"

#include <exception>

#include "jet/format/error.h"
#include "platform/text.h"

namespace tandeko {

namespace {

// The program's own number for a failure that has none.
constexpr int kUnexpected = 5;

}  // namespace

QString Failure::kind() const {
  return source.startsWith(u"DAO") ? QStringLiteral("DAO") : QStringLiteral("Program");
}

Failure currentFailure(const QString& procedure) {
  try {
    throw;
  } catch (const jet::Error& error) {
    return {error.number(), QString::fromStdString(error.source()), toQString(error.description()),
            procedure};
  } catch (const std::exception& error) {
    return {kUnexpected, QStringLiteral("Tandeko"), QString::fromUtf8(error.what()), procedure};
  } catch (...) {
    return {kUnexpected, QStringLiteral("Tandeko"), QStringLiteral("Nieznany błąd"), procedure};
  }
}

}  // namespace tandeko
