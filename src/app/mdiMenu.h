#pragma once

#include <QComboBox>
#include <QLabel>
#include <QMainWindow>
#include <QMap>
#include <functional>

#include "app/auto_refresh.h"
#include "app/child_windows.h"
#include "app/database_desk.h"
#include "app/menus.h"
#include "session/session.h"

namespace tandeko {

// The main window: menus, toolbar, status bar, the two combos, and the area of the child forms.
class mdiMenu : public QMainWindow, public Frame {
  Q_OBJECT

 public:
  explicit mdiMenu(Session& session);
  ~mdiMenu() override;

  DatabaseDesk& desk() { return *desk_; }
  AutoRefresh& autoRefresh() { return autoRefresh_; }
  ChildWindows& children() { return *children_; }
  QMenu* contextMenuOf(ContextMenu menu) const { return contextMenus_[menu]; }

  QWidget* window() override { return this; }
  void showForm(ChildForm* form) override;
  bool activateForm(const QString& formName) override { return children_->activateForm(formName); }
  ChildForm* findForm(const QString& formName) const override { return children_->findForm(formName); }
  ChildForm* activeForm() const override { return children_->activeForm(); }
  QList<ChildForm*> forms() const override { return children_->forms(); }
  bool closeForms(const QList<ChildForm*>& forms) override { return !children_->closeInTurn(forms); }
  bool FormCloseAll(ChildForm* except) override;
  void popupMenu(ContextMenu menu, const QPoint& globalPosition) override;
  void setStatusText(const QString& text) override;
  void showUserName(const QString& userName) override;
  void updateCommands() override;
  void reloadRegisters() override { desk_->reloadRegisters(); }

  // Opens a child form by name, or activates it when it is open.
  void openForm(const QString& formName);
  // KarRefresh of every open list.
  void refreshLists();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void buildMenus();
  void buildToolBar();
  void buildStatusBar();
  void connectCommands();
  void runAction(const QString& menuName, const MenuLine& line);
  bool enabledNow(const MenuLine& line, const QString& menuName) const;
  void placeAtStart();
  void rememberPlace();
  void openStartForm();
  void databaseOpened();
  void activeFormChanged();
  void settingsChanged();
  void saveLayout();
  void updateEditMenu();
  void fillWindowList();
  void endSession();

  Session& session_;
  QComboBox* cmbBaza_ = nullptr;
  QComboBox* cmbEwiRejestr_ = nullptr;
  ChildWindows* children_ = nullptr;
  DatabaseDesk* desk_ = nullptr;
  AutoRefresh autoRefresh_;
  ProgramSettings look_;  // that the open forms show
  QLabel* statusText_ = nullptr;
  QLabel* statusUser_ = nullptr;
  QLabel* statusDate_ = nullptr;
  QMap<ContextMenu, QMenu*> contextMenus_;
  QMap<QString, std::function<void()>> handlers_;
  QList<QAction*> actions_;                 // of all menus
  QList<QPair<QAction*, QAction*>> tools_;  // toolbar button, menu entry
  QList<QAction*> windowList_;
};

}  // namespace tandeko
