#pragma once

#include <QPushButton>
#include <functional>

#include "session/session.h"

namespace tandeko {

// Offers to save changes before a form closes; false when it has to stay open: the user called it off, or `save`
// did not succeed.
bool mayLeave(Session& session, const std::function<bool()>& save);

// A form on one record, new or stored: knows whether its fields were changed, offers to save them before
// it closes, and answers Enter, Esc, and Ctrl+PageUp and Ctrl+PageDown, which turn its pages.
class RecordForm : public ChildForm {
  Q_OBJECT

 public:
  explicit RecordForm(Session& session, const QString& name, const QString& karParent);

  // The name of the view that opened the form.
  QString KarParent() const { return karParent_; }
  // "Nowy" or "Popraw".
  QString mode() const { return recordKey() > 0 ? QStringLiteral("Popraw") : QStringLiteral("Nowy"); }
  virtual int recordKey() const = 0;

 Q_SIGNALS:
  void saved(int key);

 protected:
  // Stores the fields; false, with the reason told, when that is refused or fails. Called only while every
  // date and number is a possible one.
  virtual bool save() = 0;

  // Watches every field below the form, and the two buttons. To be called once, after the fields exist.
  void watch(QPushButton* cmdZapisz, QPushButton* cmdAnuluj);
  bool edited() const { return edited_; }
  void setEdited(bool edited);
  // While fields are filled, changes are not the user's.
  class Loading {
   public:
    explicit Loading(RecordForm& form) : form_(form) { ++form_.loading_; }
    ~Loading() { --form_.loading_; }
    Loading(const Loading&) = delete;
    Loading& operator=(const Loading&) = delete;

   private:
    RecordForm& form_;
  };
  bool loading() const { return loading_ > 0; }

  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

  Session& session_;

 private:
  bool saveSound();

  QString karParent_;
  QPushButton* cmdZapisz_ = nullptr;
  int loading_ = 0;
  bool edited_ = false;
};

}  // namespace tandeko
