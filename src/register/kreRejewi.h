#pragma once

#include <QWizard>

#include "register/register_record.h"
#include "session/session.h"

namespace tandeko {

// The register wizard: makes a register, changes one, or deletes one with its items.
class kreRejewi : public QWizard {
  Q_OBJECT

 public:
  enum class Operation { Create, Change, Delete };
  enum Page { OperationPage, NamePage, KindPage, PeriodPage, TemplatePage, StartPage, SummaryPage };

  kreRejewi(Session& session, QWidget* parent);

  Session& session() { return session_; }
  Operation operation() const { return operation_; }
  // Begins with a new register, or with the one of that key; false when there is none.
  bool choose(Operation operation, int key);
  RegisterData& data() { return data_; }

  int nextId() const override;
  void accept() override;

 private:
  bool create();
  bool remove();

  Session& session_;
  Operation operation_ = Operation::Create;
  RegisterData data_;
};

// Shows the wizard; what it changes is in the database and in the main window's list afterwards.
void runRegisterWizard(Session& session);

}  // namespace tandeko
