#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <future>
#include <vector>

#include "platform/file_probe.h"
#include "platform/mail.h"
#include "platform/secret.h"
#include "platform/shell.h"
#include "platform/window_search.h"
#include "support/scripted_messages.h"

using namespace tandeko;

TEST(WindowSearch, FindsAndRaisesAnotherCopyUntilItEnds) {
  QTemporaryDir folder;
  auto first = windowSearchIn(folder.path());
  auto second = windowSearchIn(folder.path());
  int raised = 0;
  first->announce(QStringLiteral("Tandeko"), [&raised] { ++raised; });
  EXPECT_FALSE(first->find(QStringLiteral("Tandeko"))) << "a copy does not find itself";
  EXPECT_TRUE(second->find(QStringLiteral("Tandeko")));
  EXPECT_FALSE(second->find(QStringLiteral("Tandeko(1)")));

  second->raise(QStringLiteral("Tandeko"));
  EXPECT_TRUE(QTest::qWaitFor([&raised] { return raised > 0; }, 3000));
  EXPECT_EQ(raised, 1);

  first.reset();
  EXPECT_FALSE(second->find(QStringLiteral("Tandeko")));
}

TEST(WindowSearch, ForgetsACopyThatDiedWithoutClearingUp) {
  QTemporaryDir folder;
  QFile note(folder.filePath(QStringLiteral("dead.caption")));
  ASSERT_TRUE(note.open(QIODevice::WriteOnly));
  note.write("Tandeko");
  note.close();
  EXPECT_FALSE(windowSearchIn(folder.path())->find(QStringLiteral("Tandeko")));
  EXPECT_FALSE(note.exists());
}

TEST(Secret, ComesBackOnlyUntouched) {
  const QString secret = QStringLiteral("hasło bazy 1234567890 1234567890 1234567890");
  const QString sealed = sealSecret(secret);
  EXPECT_EQ(openSecret(sealed), secret);
  EXPECT_NE(sealSecret(secret), sealed) << "equal passwords must not look equal";
  EXPECT_FALSE(QByteArray::fromHex(sealed.toLatin1()).contains("1234567890"));
  QString touched = sealed;
  touched[sealed.size() - 1] = touched.back() == u'0' ? u'1' : u'0';
  EXPECT_EQ(openSecret(touched), QString());
  EXPECT_EQ(openSecret(QStringLiteral("xyz")), QString());
}

TEST(Mail, AddressHoldsNoCharacterThatWouldCutItShort) {
  Letter letter{QStringLiteral("a@b.example"), QStringLiteral("Błąd & co"), QStringLiteral("x=1?\ny#2"), {}};
  EXPECT_EQ(mailAddress(letter),
            QStringLiteral("mailto:a@b.example?subject=B%C5%82%C4%85d%20%26%20co&Body=x%3D1%3F%0Ay%232"));
}

TEST(Shell, TellsWhyADocumentOrProgramCannotBeStarted) {
  QTemporaryDir folder;
  SystemShell shell;
  EXPECT_EQ(shell.openDocument(folder.filePath(QStringLiteral("brak.pdf"))), ShellResult::NotFound);
  EXPECT_EQ(shell.startProgram(folder.filePath(QStringLiteral("brak")), {}), ShellResult::NotFound);
  QFile text(folder.filePath(QStringLiteral("tekst")));
  ASSERT_TRUE(text.open(QIODevice::WriteOnly));
  text.close();
  EXPECT_EQ(shell.startProgram(text.fileName(), {}), ShellResult::NoAccess);
}

TEST(FileProbe, TellsFilesFromFolders) {
  QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("a.mdb")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  EXPECT_EQ(FileProbe(file.fileName()).answer(), FileAnswer::Present);
  EXPECT_EQ(FileProbe(folder.path()).answer(), FileAnswer::Missing);
  EXPECT_EQ(FileProbe(folder.filePath(QStringLiteral("b.mdb"))).answer(), FileAnswer::Missing);
}

TEST(FileProbe, ADriveThatDoesNotAnswerIsWaitedForOnce) {
  std::promise<void> network;
  const std::shared_future<void> answer = network.get_future().share();
  const auto hang = [answer](const QString&) { return answer.wait(), true; };
  QElapsedTimer timer;
  timer.start();
  std::vector<FileProbe> probes;
  for (int i = 0; i < 5; ++i) probes.emplace_back(QStringLiteral("/net/%1.mdb").arg(i), hang);
  for (FileProbe& probe : probes) EXPECT_EQ(probe.answer(300), FileAnswer::NoAnswer);
  EXPECT_GE(timer.elapsed(), 300);
  EXPECT_LT(timer.elapsed(), 900) << "not once for each";
  network.set_value();
  EXPECT_EQ(FileProbe(QStringLiteral("/net/a.mdb"), hang).answer(), FileAnswer::Present) << "it is back";
}
