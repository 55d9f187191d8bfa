#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QToolButton>

#include "driver.h"
#include "lists/dlgZnajdz.h"
#include "lists/filter_store.h"
#include "platform/text.h"
#include "register/card_list_form.h"

namespace tandeko::tour {

namespace {

class CardListTour {
 public:
  explicit CardListTour(Driver& driver) : d_(driver) {}

  void run() {
    d_.keys({QStringLiteral("ctrl+2")});
    Driver::wait(500);
    list_ = qobject_cast<karEWKAR*>(d_.window.findForm(QStringLiteral("karEWKAR")));
    if (!d_.check(list_ != nullptr, "Ctrl+2 opens the card list")) return;
    list_->parentWidget()->showMaximized();
    Driver::wait(300);
    quickFilters();
    sums();
    sorting();
    find();
    namedFilter();
    correctAndDelete();
    list_->parentWidget()->close();
    Driver::wait(200);
  }

 private:
  int rows() const { return list_->DataSource().rows(); }
  QString cell(int row, int column) const { return list_->DataSource().cellText(row, column); }
  template <typename Widget>
  Widget& field(const char* name) {
    return *list_->findChild<Widget*>(QString::fromLatin1(name));
  }

  void quickFilters() {
    const int all = rows();
    const QString letters = cell(all / 2, kNameColumn).left(3);
    field<QLineEdit>("txtNazwa").setFocus();
    d_.type(letters.toLower());
    bool fit = rows() > 0 && rows() < all;
    for (int row = 0; row < rows(); ++row) fit &= cell(row, kNameColumn).startsWith(letters, Qt::CaseInsensitive);
    d_.check(fit, "the list follows what is typed into a quick filter");
    d_.check(field<QLabel>("labOpis").isVisible(), "and says what it shows");
    d_.shot(QStringLiteral("card-list-quick"));
    d_.keys({QStringLiteral("Down"), QStringLiteral("Down")});
    d_.check(list_->grid().hasFocus() && list_->grid().currentRow() == 1, "Down goes to the rows");
    field<QLineEdit>("txtNazwa").setFocus();
    d_.keys({QStringLiteral("Escape")});
    d_.check(rows() == all, "Escape clears the field");
    auto& holder = field<QComboBox>("cmbPracownik");
    holder.setFocus();
    d_.type(QStringLiteral("magaz"));
    d_.keys({QStringLiteral("Tab")});
    Driver::wait(200);
    d_.check(rows() > 0 && rows() < all && cell(0, 5) == u"[Magazyn]", "the warehouse is chosen by a part of its name");
    d_.click(field<QToolButton>("cmdBezFiltru").mapToGlobal(QPoint(10, 10)));
    d_.check(rows() == all, "one button takes all filters away");
  }

  void sums() {
    d_.keys({QStringLiteral("ctrl+shift+s")});
    Driver::wait(200);
    auto& grid = field<QTableWidget>("gridSuma");
    d_.check(grid.isVisible() && grid.item(0, 1)->text() == sumText(rows()), "the sums bar counts the rows");
    list_->run(Command::WszystkieRejestry);
    d_.check(grid.item(0, 1)->text() == sumText(rows()), "and those of all registers");
    d_.shot(QStringLiteral("card-list"));
    list_->grid().horizontalScrollBar()->setValue(list_->grid().horizontalScrollBar()->maximum());
    d_.shot(QStringLiteral("card-list-right"));
    list_->grid().horizontalScrollBar()->setValue(0);
    list_->run(Command::WszystkieRejestry);
    Driver::wait(200);
  }

  void sorting() {
    QHeaderView& header = *list_->grid().horizontalHeader();
    const auto caption = [&](int column) {
      return header.viewport()->mapToGlobal(QPoint(header.sectionViewportPosition(column) + 20, 8));
    };
    d_.click(caption(5));
    Driver::wait(400);  // or the next click makes it a double click
    d_.check(list_->sort() == u"7 ASC", "a click on the header sorts");
    d_.click(caption(5));
    Driver::wait(200);
    d_.check(list_->sort() == u"7 DESC", "a second one turns the order round");
    d_.shotOfMenu(caption(0), QStringLiteral("card-list-columns"));
    d_.shotOfMenu(list_->grid().viewport()->mapToGlobal(QPoint(60, 60)), QStringLiteral("card-list-menu"));
  }

  void find() {
    list_->grid().setFocus();
    list_->grid().goToRow(0);
    d_.keys({QStringLiteral("ctrl+f")});
    Driver::wait(300);
    auto* dialog = d_.window.findChild<dlgZnajdz*>();
    if (!d_.check(dialog && dialog->isVisible(), "Ctrl+F opens the find dialog")) return;
    const QString number = cell(rows() - 1, 6);
    d_.type(number.toLower());
    d_.keys({QStringLiteral("Return")});
    Driver::wait(200);
    d_.check(cell(list_->grid().currentRow(), 6) == number, "and Enter goes to the row");
    d_.shot(QStringLiteral("find"));
    d_.expectWindow("behind the last row it asks", [this](QWidget&) { d_.shot(QStringLiteral("find-wrap")); });
    d_.keys({QStringLiteral("F3")});
    Driver::wait(1'700);
    d_.keys({QStringLiteral("Escape")});
    Driver::wait(200);
    d_.check(!dialog->isVisible(), "Escape closes it");
  }

  void namedFilter() {
    const int all = rows();
    FilterStore store(d_.session.registry(), list_->RegSection());
    store.save(QStringLiteral("Drogie w magazynie"),
               {{QStringLiteral("And"), QStringLiteral("ewkar.Cenazak"), QStringLiteral("Cena nabycia"),
                 QStringLiteral(">"), QStringLiteral("500"), QStringLiteral(">")},
                {QStringLiteral("And"), QStringLiteral("ewkar.Indpra"), QStringLiteral("Nr użytkownika"),
                 QStringLiteral("="), QStringLiteral("0"), QStringLiteral("=")}});
    d_.expectWindow("Ctrl+Shift+F opens the filters", [this](QWidget& dialog) {
      d_.shot(QStringLiteral("filters"));
      d_.expectWindow("a filter is edited", [this](QWidget&) { d_.shot(QStringLiteral("filter-edit")); });
      dialog.findChild<QPushButton*>(QStringLiteral("cmdPopraw"))->click();
      dialog.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
    });
    d_.keys({QStringLiteral("ctrl+shift+f")});
    Driver::wait(4'000);
    d_.check(rows() > 0 && rows() < all && cell(0, 5) == u"[Magazyn]", "it narrows the list");
    d_.shot(QStringLiteral("card-list-filter"));
    d_.click(field<QToolButton>("cmdBezFiltru").mapToGlobal(QPoint(10, 10)));
    d_.check(rows() == all, "and is taken away");
  }

  void correctAndDelete() {
    list_->grid().setFocus();
    list_->grid().goToRow(3);
    const int key = list_->currentKey();
    d_.keys({QStringLiteral("Return")});
    Driver::wait(400);
    QWidget* form = nullptr;
    for (ChildForm* open : d_.window.forms())
      if (open->formName() == u"dokEWKAR") form = open;
    if (d_.check(form != nullptr, "Enter opens the item")) {
      d_.shot(QStringLiteral("item"));
      d_.keys({QStringLiteral("Escape")});
      Driver::wait(300);
    }
    list_->bringToFront();
    list_->grid().setFocus();
    list_->goToKey(key);
    const int all = rows();
    d_.expectWindow("Delete asks", [this](QWidget&) {
      d_.shot(QStringLiteral("card-list-delete"));
      d_.keys({QStringLiteral("alt+t")});
    });
    d_.keys({QStringLiteral("Delete")});
    Driver::wait(1'700);
    d_.check(rows() == all - 1 && list_->DataSource().rowOf(key) < 0, "and removes that row alone");
  }

  static constexpr int kNameColumn = 11;

  Driver& d_;
  karEWKAR* list_ = nullptr;
};

}  // namespace

void tourCardList(Driver& driver) { CardListTour(driver).run(); }

}  // namespace tandeko::tour
