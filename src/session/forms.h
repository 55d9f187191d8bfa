#pragma once

#include <QPoint>
#include <QString>
#include <QWidget>

// What the forms and the main window know of each other. The main window implements Frame; every form
// that lives inside it is a ChildForm.
namespace tandeko {

// What the menus and the toolbar can ask of the active child form.
enum class Command {
  // Any list.
  Nowy,
  Popraw,
  Usun,
  Drukuj,
  Znajdz,
  Filtr,
  Sumuj,
  Rozlicz,
  WszystkieRejestry,
  ZaznaczWiersze,
  KopiujWiersze,
  // The panel's employee list.
  PraNowy,
  PraWlas,
  PraUsun,
  PraWidokDuze,
  PraWidokMale,
  PraWidokSzczeg,
  PraWidokLista,
  // The panel's trees.
  SprzNowy,
  SprzWlas,
  SprzUsun,
  SprzPodziel,
  SprzKopiuj,
  SprzWklej,
  PanelMagazyn,
  PanelKosz,
  // The documents linked to a record.
  ZrodloNowy,
  ZrodloUsun,
  ZrodloWklej,
  ZrodloNazwa,
  ZrodloPlik,
};

// The context menus that the main window owns.
enum class ContextMenu { RegisterList, PanelEmployees, PanelItems, DocumentLinks };

// A form inside the main window. Its objectName is the form's name ("karEWPAN", "dokSWPRA", ...), whose
// first three letters tell its kind; its windowTitle is its caption.
class ChildForm : public QWidget {
  Q_OBJECT

 public:
  using QWidget::QWidget;

  QString formName() const { return objectName(); }
  // Activates the form's window.
  void bringToFront();

  // Whether the form can do it now; the main window enables its entries by this.
  virtual bool supports(Command) const { return false; }
  virtual void run(Command) {}
  // Whether the entry is shown with a check mark (the panel's views).
  virtual bool isOn(Command) const { return false; }

  // Reads the shown data again. Called after changes by other forms, and by the automatic refresh.
  virtual void KarRefresh() {}
  // Stores the form's layout (true) or brings back the standard one (false).
  virtual void KarSaveParam(bool /*save*/) {}
  // Whether "Zapamiętaj wygląd okna" means anything here.
  virtual bool hasLayout() const { return false; }
  // Marked read-only in the list of open windows.
  bool readOnly() const { return readOnly_; }
  void setReadOnly(bool readOnly) { readOnly_ = readOnly; }

 Q_SIGNALS:
  // What supports() answers may have changed (a selection, a right).
  void commandsChanged();

 private:
  bool readOnly_ = false;
};

class Frame {
 public:
  virtual ~Frame() = default;

  virtual QWidget* window() = 0;

  // Shows the form inside the frame and owns it from now on.
  virtual void showForm(ChildForm* form) = 0;
  // Brings an open form of that name to the front; false when there is none.
  virtual bool activateForm(const QString& formName) = 0;
  virtual ChildForm* findForm(const QString& formName) const = 0;
  virtual ChildForm* activeForm() const = 0;
  virtual QList<ChildForm*> forms() const = 0;
  // Closes the forms in turn and stops at one that refuses, with false.
  virtual bool closeForms(const QList<ChildForm*>& forms) = 0;
  // Closes every form but `except`; one that refuses is reported and gives false.
  virtual bool FormCloseAll(ChildForm* except = nullptr) = 0;

  // Shows one of the frame's context menus for the active form.
  virtual void popupMenu(ContextMenu menu, const QPoint& globalPosition) = 0;

  // The text of the status bar; an empty one clears it. Lets the window repaint.
  virtual void setStatusText(const QString& text) = 0;
  virtual void showUserName(const QString& userName) = 0;
  // Enables menus and toolbar by the rights of the session and the active form.
  virtual void updateCommands() = 0;
  // Reads the registers of the database into the register combo again.
  virtual void reloadRegisters() = 0;
};

}  // namespace tandeko
