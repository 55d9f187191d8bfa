// Proposing a number in a register of 100,000 items of one year, and opening the item form where the
// warehouse holds 20,000 of them and 5,000 employees may hold one.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

#include "firm_session.h"
#include "platform/statements.h"
#include "register/dokEWKAR.h"
#include "register/numbering.h"

namespace {

using namespace tandeko;

const QDate kDay(2026, 3, 15);

// The form's frame: shows what is opened as a window of its own.
class BareFrame : public Frame {
 public:
  QWidget* window() override { return nullptr; }
  void showForm(ChildForm* form) override { form->show(); }
  bool activateForm(const QString&) override { return false; }
  ChildForm* findForm(const QString&) const override { return nullptr; }
  ChildForm* activeForm() const override { return nullptr; }
  QList<ChildForm*> forms() const override { return {}; }
  bool closeForms(const QList<ChildForm*>&) override { return true; }
  bool FormCloseAll(ChildForm*) override { return true; }
  void popupMenu(ContextMenu, const QPoint&) override {}
  void setStatusText(const QString&) override {}
  void showUserName(const QString&) override {}
  void updateCommands() override {}
  void reloadRegisters() override {}
};

Session& session() {
  static Firm made({.employees = 5000, .items = 100'000, .registers = 1, .seed = 5});
  static BareFrame frame;
  static const bool prepared = [] {
    Session& session = made.session();
    session.setFrame(&frame);
    jet::Database& database = session.database();
    execute(database, QStringLiteral("UPDATE ewkar SET rok = 2026, miesiac = 3, numewi = '1/' & "
                                     "Format(indewi Mod 9000, '0000') & '/2026'"));
    execute(database, QStringLiteral("UPDATE swrew SET NumSzablon = 'Rejestr/Numer/Rok[4]', NumAuto = True, "
                                     "NumMiesieczna = False, NumGrupa = False"));
    // The warehouse has its 20,000.
    execute(database, QStringLiteral("UPDATE ewkar SET indpra = 0, parent = Null WHERE indewi <= 20000"));
    execute(database, QStringLiteral("UPDATE ewkar SET indpra = 1 WHERE indewi > 20000 And indpra = 0"));
    return true;
  }();
  (void)prepared;
  return made.session();
}

void proposeNumber(benchmark::State& state, const char16_t* numberTemplate, bool monthly) {
  jet::Database& database = session().database();
  execute(database, QStringLiteral("UPDATE swrew SET NumSzablon = '%1', NumMiesieczna = %2")
                        .arg(QString::fromUtf16(numberTemplate),
                             monthly ? QStringLiteral("True") : QStringLiteral("False")));
  QString number;
  for (auto _ : state) number = NumNext(database, 1, kDay, 1);
  state.SetLabel(number.toStdString());
}

void openItemForm(benchmark::State& state, int item) {
  Session& shown = session();
  int choices = 0;
  for (auto _ : state) {
    dokEWKAR* form = dokEWKAR::open(shown, {item, 0, 0, {}});
    QApplication::processEvents();
    state.PauseTiming();
    choices = form->findChild<QComboBox*>(QStringLiteral("cmbParent"))->count() +
              form->findChild<QComboBox*>(QStringLiteral("cmbPracownik"))->count();
    delete form;
    state.ResumeTiming();
  }
  state.counters["choices"] = choices;
}

void typeInSets(benchmark::State& state) {
  dokEWKAR* form = dokEWKAR::open(session(), {});
  auto* sets = form->findChild<QComboBox*>(QStringLiteral("cmbParent"));
  sets->setFocus();
  for (auto _ : state) {
    sets->lineEdit()->clear();
    for (const QChar letter : QStringLiteral("kom")) {
      QKeyEvent press(QEvent::KeyPress, letter.toUpper().unicode(), Qt::NoModifier, QString(letter));
      QApplication::sendEvent(sets->lineEdit(), &press);
      QApplication::processEvents();
    }
  }
  delete form;
}

void changeHolder(benchmark::State& state) {
  dokEWKAR* form = dokEWKAR::open(session(), {});
  auto* holders = form->findChild<QComboBox*>(QStringLiteral("cmbPracownik"));
  const int warehouse = holders->currentIndex();
  for (auto _ : state) {
    holders->setCurrentIndex(warehouse + 1);
    holders->setCurrentIndex(warehouse);
    QApplication::processEvents();
  }
  delete form;
}

BENCHMARK_CAPTURE(proposeNumber, yearly, u"Rejestr/Numer/Rok[4]", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(proposeNumber, monthly, u"Rejestr/Numer/Rok[4]", true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(proposeNumber, leadingNumber, u"Numer/Rok[4]", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(openItemForm, newItem, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(openItemForm, storedItem, 10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(typeInSets)->Unit(benchmark::kMillisecond);
BENCHMARK(changeHolder)->Unit(benchmark::kMillisecond);

}  // namespace
