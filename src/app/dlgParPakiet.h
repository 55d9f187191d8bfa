#pragma once

#include <QDialog>
#include <QLineEdit>
#include <memory>

#include "session/session.h"

namespace Ui {
class dlgParPakiet;
}

namespace tandeko {

// "Parametry programu...".
class dlgParPakiet : public QDialog {
  Q_OBJECT

 public:
  dlgParPakiet(Session& session, QWidget* parent);
  ~dlgParPakiet() override;

 private:
  struct FolderField {
    QLineEdit* field;
    QString setting;
    QString chooserTitle;
    QString refusal;
  };

  void fillCombos();
  void fillUsers();
  void load();
  bool apply();
  bool foldersExist();
  bool storeFolders();
  void chooseFolder(const FolderField& folder);
  void chooseColor();
  void showColor(const QColor& color);

  Session& session_;
  QColor color_;
  QList<FolderField> folders_;
  std::unique_ptr<Ui::dlgParPakiet> ui_;
};

}  // namespace tandeko
