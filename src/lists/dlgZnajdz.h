#pragma once

#include <QDialog>
#include <QPointer>
#include <memory>

#include "lists/kar_form.h"

namespace Ui {
class dlgZnajdz;
}

namespace tandeko {

// "Szybkie wyszukiwanie": looks for a text in the active list, from the row after the current one. Stays open
// over the list; when another list becomes active it works on that one.
class dlgZnajdz : public QDialog {
  Q_OBJECT

 public:
  // Shows the one find dialog of the window over this list. Data-entry dialogs are never searched.
  static void open(Session& session, KarForm& caller);
  // Searches on for the last text (F3); opens the dialog when there is none yet.
  static void repeat(Session& session, KarForm& caller);

  dlgZnajdz(Session& session, QWidget* parent);
  ~dlgZnajdz() override;

  void setCaller(KarForm& caller);
  // True when a row was found and made current.
  bool search();

  void reject() override;

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  static dlgZnajdz& of(Session& session, KarForm& caller);
  enum class Outcome { Found, NotFound, Stopped };
  // Looks through rows [from, to).
  Outcome walk(int from, int to);
  void finish(Outcome outcome);

  Session& session_;
  std::unique_ptr<Ui::dlgZnajdz> ui_;
  QPointer<KarForm> caller_;
  bool searching_ = false;
  bool stop_ = false;
};

}  // namespace tandeko
