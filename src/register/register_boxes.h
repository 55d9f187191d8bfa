#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <array>

#include "lists/form_fields.h"
#include "register/register_record.h"

// The groups of fields of a register, shared by its parameters dialog and the wizard.
namespace tandeko {

class RegisterBox : public QGroupBox {
  Q_OBJECT

 public:
  using QGroupBox::QGroupBox;
  virtual void show(const RegisterData& record) = 0;
  virtual void read(RegisterData& record) const = 0;

 Q_SIGNALS:
  void changed();

 protected:
  // Reports every change of the fields below.
  void watch();
};

// Kind, and what the names of items show.
class KindBox : public RegisterBox {
 public:
  explicit KindBox(QWidget* parent = nullptr);
  void show(const RegisterData& record) override;
  void read(RegisterData& record) const override;

 private:
  QComboBox* cmbRodzaj_;
  QCheckBox *cbNumewi_, *cbNumkat_, *cbNumser_, *cbIlosc_, *cbCena_;
};

// The number template with its samples.
class TemplateBox : public RegisterBox {
 public:
  explicit TemplateBox(const QDate& today, QWidget* parent = nullptr);
  void show(const RegisterData& record) override;
  void read(RegisterData& record) const override;

 private:
  void showSamples();

  QDate today_;
  std::array<QComboBox*, 3> cmbNumS_;
  QLineEdit* txtNumPo_;
  QComboBox* cmbNumSeparator_;
  QLabel* labNumery_;
};

// When numbers start again.
class PeriodBox : public RegisterBox {
 public:
  explicit PeriodBox(QWidget* parent = nullptr);
  void show(const RegisterData& record) override;
  void read(RegisterData& record) const override;

 private:
  QRadioButton *obNumGrupa_, *obNumRoczna_, *obNumMiesieczna_;
};

// Whether numbers are proposed and may be changed.
class ProposalBox : public RegisterBox {
 public:
  explicit ProposalBox(QWidget* parent = nullptr);
  void show(const RegisterData& record) override;
  void read(RegisterData& record) const override;

 private:
  QCheckBox *cbNumAuto_, *cbNumEdycja_;
};

// What a new item begins with.
class StartBox : public RegisterBox {
 public:
  explicit StartBox(jet::Database& database, QWidget* parent = nullptr);
  void show(const RegisterData& record) override;
  void read(RegisterData& record) const override;

 private:
  QComboBox *cmbStartgew_, *cmbStartsew_, *cmbStartjed_;
  NumberField* txtStartIlosc_;
};

}  // namespace tandeko
