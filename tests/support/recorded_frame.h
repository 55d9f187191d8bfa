#pragma once

#include <QStringList>
#include <vector>

#include "session/forms.h"

namespace tandeko {

// The main window as the forms see it: one active form, menus and status texts recorded.
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

}  // namespace tandeko
