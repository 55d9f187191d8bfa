#include <gtest/gtest.h>

#include <QCheckBox>
#include <QPlainTextEdit>

#include "people_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct PeopleRights : testing::TestWithParam<std::pair<const char*, bool>>, PeopleFixture {
  bool may() const { return GetParam().second; }
  bool enabled(const ChildForm& form, const char* button) {
    return child<QPushButton>(form, button)->isEnabled();
  }
};

TEST_P(PeopleRights, DecideWhatEachFormLetsChange) {
  user(QString::fromLatin1(GetParam().first));

  auto* list = new karSWPRA(session);
  frame.showForm(list);
  EXPECT_EQ(enabled(*list, "cmdNowy"), may());
  EXPECT_EQ(enabled(*list, "cmdUsun"), may());
  EXPECT_TRUE(enabled(*list, "cmdPopraw")) << "looking is always allowed";
  messages.answers = {Answer::Yes};
  list->run(Command::Usun);
  EXPECT_EQ(ask(u"SELECT count(*) FROM swpra WHERE indpra = 1"_s), may() ? u"0"_s : u"1"_s);
  closeForms();

  dokSWPRA* form = dokSWPRA::open(session, kNowak, {});
  ASSERT_TRUE(form);
  EXPECT_EQ(form->readOnly(), !may());
  EXPECT_EQ(enabled(*form, "cmdZapisz"), may());
  for (const char* name : {"txtNazwisko", "txtImie", "txtNumpok", "txtTelefon", "txtEmail", "txtWzrost",
                           "txtKolnierz", "txtObuwie"})
    EXPECT_EQ(child<QLineEdit>(*form, name)->isReadOnly(), !may()) << name;
  for (const char* name : {"cmbGrupa", "cmbKomorka"})
    EXPECT_EQ(child<QComboBox>(*form, name)->isEnabled(), may()) << name;
  EXPECT_EQ(child<QCheckBox>(*form, "cbAktywny")->isEnabled(), may());
  EXPECT_EQ(child<QPlainTextEdit>(*form, "txtUwagi")->isReadOnly(), !may());
  closeForms();

  for (const DictionaryKind& kind : dictionaryKinds()) {
    SCOPED_TRACE(kind.form.toStdString());
    openDictionary(session, kind.form);
    const ChildForm& dictionary = *frame.opened.back();
    EXPECT_EQ(dictionary.readOnly(), !may());
    for (const char* button : {"cmdNowy", "cmdUsun", "cmdZapisz"})
      EXPECT_EQ(enabled(dictionary, button), may()) << button;
    EXPECT_EQ(child<QLineEdit>(dictionary, "txtNazwa")->isReadOnly(), !may());
    EXPECT_EQ(dictionary.findChild<QLineEdit*>(u"txt"_s + kind.keyField)->isReadOnly(),
              !may() || !kind.typedKey);
    EXPECT_FALSE(child<QLineEdit>(dictionary, "txtNazwa")->text().isEmpty()) << "looking is always allowed";
    closeForms();
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, PeopleRights,
                         testing::Values(std::pair{"E+W", true}, std::pair{"W", true},
                                         std::pair{"E+W+R", true}, std::pair{"D+W", true},
                                         std::pair{"P+W", false}, std::pair{"P", false},
                                         std::pair{"E", false}, std::pair{"D", false}, std::pair{"R", false},
                                         std::pair{"", false}));

}  // namespace
}  // namespace tandeko
