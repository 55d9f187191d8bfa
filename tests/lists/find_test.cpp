#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QTest>

#include "list_fixture.h"
#include "lists/dlgZnajdz.h"
#include "support/dialogs.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct FindTest : testing::Test, ListFixture {
  FindTest() : ListFixture({u"Kowalski"_s, u"ŁÓDKA"_s, u"żuraw"_s, u"Nowak"_s, u"Makowski"_s}) {
    sql(u"UPDATE thing SET notes = 'u Kowala' WHERE id = 4"_s);
    list->KarRefresh();
    list->run(Command::Znajdz);
    dialog = list->findChild<dlgZnajdz*>();
  }

  // What is found from row `from` (0-based) on; -1 for nothing.
  int find(const QString& text, int from, int column = -1) {
    list->grid().goToRow(from);
    child<QLineEdit>(*dialog, "txtSzukaj")->setText(text);
    child<QComboBox>(*dialog, "cmbKolumna")->setCurrentIndex(column + 1);
    return dialog->search() ? list->grid().currentRow() : -1;
  }

  dlgZnajdz* dialog = nullptr;
};

TEST_F(FindTest, FindsAnywhereInACellWithoutRegardToCase) {
  EXPECT_EQ(dialog->windowTitle(), u"Szybkie wyszukiwanie"_s);
  EXPECT_EQ(child<QComboBox>(*dialog, "cmbKolumna")->itemText(0), u"... (wszystkie)"_s);
  EXPECT_EQ(child<QComboBox>(*dialog, "cmbKolumna")->itemText(2), u"Nazwa"_s);
  const struct {
    const char16_t* text;
    int from;
    int column;
    int found;
  } cases[] = {
      {u"łódka", 0, -1, 1}, {u"ŻURAW", 0, -1, 2},        {u"kow", 0, -1, 3},    {u"kow", 0, 1, 4},
      {u"kow", 3, -1, 4},   {u"12,5", 2, -1, 3},         {u"12,5", 2, 1, -1},   {u"03.02.", 0, 3, 1},
      {u"tak", 1, -1, 2},   {u"nie ma tego", 2, -1, -1}, {u"lodka", 0, -1, -1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(find(QString::fromUtf16(c.text), c.from, c.column), c.found)
        << QString::fromUtf16(c.text).toStdString() << " in " << c.column;
    if (c.found < 0) {
      EXPECT_EQ(list->grid().currentRow(), c.from) << "the current row stays";
      messages.shown.clear();
    }
  }
  EXPECT_TRUE(messages.shown.empty());
}

TEST_F(FindTest, TheListCanDoEverythingAgainAfterwards) {
  bool may = false;
  QObject::connect(list.get(), &ChildForm::commandsChanged, list.get(),
                   [&] { may = list->supports(Command::Popraw); });
  EXPECT_EQ(find(u"żuraw"_s, 0), 2);
  EXPECT_TRUE(may) << "the last that buttons and menus heard";
}

TEST_F(FindTest, AsksBeforeItStartsFromTheTop) {
  messages.answers = {Answer::No, Answer::Yes, Answer::Yes};
  EXPECT_EQ(find(u"łódka"_s, 2), -1);
  EXPECT_EQ(messages.takeOnly().text,
            u"Osiągnięty został ostatni wiersz tabeli. Chcesz rozpocząć przesukiwanie od początku tabeli?"_s);
  EXPECT_EQ(find(u"łódka"_s, 2), 1);
  EXPECT_EQ(find(u"makowski"_s, 4), 4) << "the current row is the last to be looked at";
  EXPECT_EQ(messages.shown.size(), 2u);
}

TEST_F(FindTest, EnterAndF3SearchOnAndTheDialogCanHide) {
  child<QLineEdit>(*dialog, "txtSzukaj")->setText(u"12,5"_s);
  QTest::keyClick(child<QLineEdit>(*dialog, "txtSzukaj"), Qt::Key_Return);
  EXPECT_EQ(list->grid().currentRow(), 1);
  EXPECT_TRUE(dialog->isVisible());
  child<QCheckBox>(*dialog, "cbUkryj")->setChecked(true);
  QTest::keyClick(dialog, Qt::Key_F3);
  EXPECT_EQ(list->grid().currentRow(), 2);
  EXPECT_FALSE(dialog->isVisible());
  QTest::keyClick(&list->grid(), Qt::Key_F3);
  EXPECT_EQ(list->grid().currentRow(), 3);
}

TEST_F(FindTest, CancelStopsASearchThatIsRunning) {
  Transaction doubled(session.workspace());
  for (int i = 0; i < 15; ++i) sql(u"INSERT INTO thing (name) SELECT name FROM thing"_s);
  doubled.commit();
  list->KarRefresh();
  QTimer::singleShot(0, [this] { child<QPushButton>(*dialog, "cmdAnuluj")->click(); });
  EXPECT_EQ(find(u"nie ma"_s, 0), -1);
  EXPECT_TRUE(messages.shown.empty()) << "a stopped search does not ask";
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_EQ(list->grid().currentRow(), 0);
}

TEST_F(FindTest, DataEntryDialogsAreNeverSearchedAndAnEmptyListSaysSo) {
  ThingList entry(session);
  entry.setObjectName(u"dajTHING"_s);
  dlgZnajdz::open(session, entry);
  EXPECT_EQ(entry.findChild<dlgZnajdz*>(), nullptr);

  sql(u"DELETE FROM thing"_s);
  list->KarRefresh();
  EXPECT_FALSE(list->supports(Command::Znajdz));
  EXPECT_EQ(find(u"x"_s, 0), -1);
  EXPECT_TRUE(messages.shown.empty());
}

}  // namespace
}  // namespace tandeko
