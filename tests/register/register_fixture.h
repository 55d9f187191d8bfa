#pragma once

#include <QStringList>

#include "platform/statements.h"
#include "platform/text.h"
#include "register/item_store.h"
#include "support/test_session.h"

namespace tandeko {

// The main window as the panel and the forms see it: one active form, menus and status texts recorded.
class RecordedFrame : public Frame {
 public:
  QWidget* window() override { return nullptr; }
  void showForm(ChildForm* form) override {
    opened.push_back(form);
    form->show();
  }
  bool activateForm(const QString& formName) override { return findForm(formName) != nullptr; }
  ChildForm* findForm(const QString& formName) const override {
    for (ChildForm* form : opened)
      if (form->formName() == formName) return form;
    return nullptr;
  }
  ChildForm* activeForm() const override { return opened.empty() ? nullptr : opened.back(); }
  QList<ChildForm*> forms() const override { return {opened.begin(), opened.end()}; }
  bool closeForms(const QList<ChildForm*>&) override { return true; }
  bool FormCloseAll(ChildForm*) override { return true; }
  void popupMenu(ContextMenu menu, const QPoint&) override { menus.push_back(menu); }
  void setStatusText(const QString& text) override { status << text; }
  void showUserName(const QString&) override {}
  void updateCommands() override {}
  void reloadRegisters() override {}

  std::vector<ChildForm*> opened;
  std::vector<ContextMenu> menus;
  QStringList status;
};

// A new database with the tables of the register, one group, department, unit, state and item group, register
// 1 of kind "S" and register 2 of kind "L", and two employees.
struct RegisterFixture : TestSession {
  RegisterFixture();

  jet::Database& db() { return session.database(); }
  ItemStore store(int registerKey = 1) { return {session.workspace(), db(), registerKey}; }
  int64_t sql(const QString& statement) { return execute(db(), statement); }
  // A value of the first row, as text; "-" for Null and "" without a row.
  QString ask(const QString& query);

  int item(const QString& name, int holder, int parent = 0, int registerKey = 1);
  // "holder/parent" of an item, parent 0 for Null; "" when it is gone.
  QString place(int item);

  // Logs in with another level of rights.
  void user(const QString& level) {
    UserState state = session.user();
    state.level = level;
    session.setUser(state);
  }

  QString path;
  RecordedFrame frame;
  static constexpr int kNowak = 1, kAdamska = 2;
};

}  // namespace tandeko
