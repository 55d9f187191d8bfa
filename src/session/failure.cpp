#include "session/failure.h"

#include <exception>
#include <new>
#include <system_error>

#include "jet/format/error.h"
#include "platform/text.h"
#include "session/names.h"
#include "session/program_errors.h"

namespace tandeko {

namespace {

int numberOf(const std::error_code& code) {
  if (code == std::errc::no_such_file_or_directory) return kNoFile;
  if (code == std::errc::not_a_directory) return kNoFolder;
  if (code == std::errc::no_space_on_device) return kDiskFull;
  if (code == std::errc::permission_denied || code == std::errc::operation_not_permitted ||
      code == std::errc::read_only_file_system)
    return kNoAccess;
  if (code == std::errc::io_error) return kDiskFailure;
  return kUnexpected;
}

int numberOf(const std::exception& error) {
  if (dynamic_cast<const std::bad_alloc*>(&error)) return kNoMemory;
  const auto* system = dynamic_cast<const std::system_error*>(&error);
  return system ? numberOf(system->code()) : kUnexpected;
}

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
    return {numberOf(error), kProgramName, QString::fromUtf8(error.what()), procedure};
  } catch (...) {
    return {kUnexpected, kProgramName, QStringLiteral("Nieznany błąd"), procedure};
  }
}

}  // namespace tandeko
