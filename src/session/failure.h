#pragma once

#include <QString>

namespace tandeko {

// An unexpected failure on its way to the user.
struct Failure {
  int number = 0;
  QString source;       // what raised it; "DAO..." for the database engine
  QString description;  // the engine's own text
  QString procedure;    // the procedure that gave up, such as "BaseCheck"

  // "DAO" for the database engine's failures, "Program" for all others.
  QString kind() const;
};

// The failure of the exception that is being handled. To be called inside a catch block.
Failure currentFailure(const QString& procedure);

// Shows a failure to the user and returns when he continues.
class FailureView {
 public:
  virtual ~FailureView() = default;
  // `explanation` is the looked-up text for the user.
  virtual void showFailure(const Failure& failure, const QString& explanation) = 0;
};

}  // namespace tandeko
