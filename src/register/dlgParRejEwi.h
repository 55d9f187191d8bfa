#pragma once

#include <QPushButton>
#include <vector>

#include "register/register_boxes.h"
#include "session/session.h"

namespace tandeko {

// "Parametry rejestru": the kind, the look and the numbering of the current register.
class dlgParRejEwi : public ChildForm {
  Q_OBJECT

 public:
  explicit dlgParRejEwi(Session& session);

  // The current register has changed.
  void KarRefresh() override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void build();
  void showRegister();
  bool save();
  bool mayStore(RegisterData& record, bool& dropSets);
  void setEdited(bool edited);

  Session& session_;
  RegisterData data_;
  QLineEdit* txtNazwa_ = nullptr;
  std::vector<RegisterBox*> boxes_;
  QPushButton *cmdZapisz_ = nullptr, *cmdZastosuj_ = nullptr, *cmdZamknij_ = nullptr;
  bool edited_ = false;
};

// The messages of the rules that the dialog and the wizard share.
extern const char16_t* const kNoNumberText;
extern const char16_t* const kPerGroupText;
extern const char16_t* const kRegisterGoneText;
// Tells the user why a register cannot bear a name; true when it can. `own` is the key of the register that
// has it.
bool checkRegisterName(Session& session, const QString& name, int own);

}  // namespace tandeko
