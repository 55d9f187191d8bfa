#include "platform/ini_file.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "support/scripted_messages.h"

using namespace tandeko;

namespace {

struct IniFile : testing::Test {
  QString write(const QByteArray& bytes) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return path;
  }
  QByteArray bytes() {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
  }

  QTemporaryDir folder;
  QString path = folder.filePath(QStringLiteral("Errormsg.txt"));
};

}  // namespace

TEST_F(IniFile, ReadsEveryEncoding) {
  const QString text = QStringLiteral("[DAO]\r\n3021=Brak bieżącego rekordu\r\n");
  QByteArray utf16("\xFF\xFE");
  for (const QChar c : text)
    utf16.append(static_cast<char>(c.unicode() & 0xFF)).append(static_cast<char>(c.unicode() >> 8));
  for (const QByteArray& bytes : {text.toUtf8(), "\xEF\xBB\xBF" + text.toUtf8(), utf16,
                                  QByteArray("[DAO]\n3021=Brak bie\xBF\xB9"
                                             "cego rekordu\n")}) {
    write(bytes);
    EXPECT_EQ(iniRead(path, QStringLiteral("DAO"), QStringLiteral("3021")),
              QStringLiteral("Brak bieżącego rekordu"))
        << bytes.toHex().constData();
  }
}

TEST_F(IniFile, FindsValuesAsTheLayoutDefinesThem) {
  write("; komentarz\n[Jeden]\n;a=0\n a = 1 \nb=\"  x \"\na=2\n[Dwa]\nc\nd==e;f\n[jeden]\nz=9\n");
  const auto read = [this](const char* section, const char* key) {
    return iniRead(path, QLatin1String(section), QLatin1String(key));
  };
  EXPECT_EQ(read("jeden", "A"), QStringLiteral("1"));
  EXPECT_EQ(read("Jeden", "b"), QStringLiteral("  x "));
  EXPECT_EQ(read("Jeden", "z"), std::nullopt);
  EXPECT_EQ(read("Dwa", "a"), std::nullopt);
  EXPECT_EQ(read("Dwa", "c"), std::nullopt);
  EXPECT_EQ(read("Dwa", "d"), QStringLiteral("=e;f"));
  EXPECT_EQ(read("Trzy", "a"), std::nullopt);
  EXPECT_EQ(iniRead(folder.filePath(QStringLiteral("brak")), QStringLiteral("a"), QStringLiteral("b")),
            std::nullopt);
}

TEST_F(IniFile, WritesIntoTheSectionAndKeepsTheRest) {
  write("[A]\nx=1\n\n; koniec\n[B]\ny=2\n");
  EXPECT_TRUE(iniWrite(path, QStringLiteral("a"), QStringLiteral("X"), QStringLiteral("żółw\r\ni kot")));
  EXPECT_TRUE(iniWrite(path, QStringLiteral("B"), QStringLiteral("z"), QStringLiteral("3")));
  EXPECT_TRUE(iniWrite(path, QStringLiteral("C"), QStringLiteral("q"), QStringLiteral("4")));
  ASSERT_TRUE(bytes().startsWith("\xEF\xBB\xBF"));
  EXPECT_EQ(QString::fromUtf8(bytes()),
            QStringLiteral("[A]\r\nX=żółw  i kot\r\n\r\n; koniec\r\n[B]\r\ny=2\r\nz=3\r\n[C]\r\nq=4\r\n"));
}
