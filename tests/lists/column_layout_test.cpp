#include "lists/column_layout.h"

#include <gtest/gtest.h>

#include "session/names.h"
#include "support/scripted_messages.h"

namespace tandeko {
namespace {

const QString kForm = QStringLiteral("karEWKAR");
const QString kFont = QStringLiteral("8");

QString value(const Registry& registry, const char16_t* name) {
  return registry.read(kProgramKey + QStringLiteral("\\karEWKAR\\Kol 8"), QString::fromUtf16(name));
}

TEST(ColumnLayout, KeepsWidthsPlacesAndHeightOfEachFontSize) {
  MemoryRegistry registry;
  EXPECT_TRUE(ColumnLayout::load(registry, kForm, kFont, 2).columns.isEmpty());
  ColumnLayout layout;
  layout.columns = {{120, 1}, {0, 0}};
  layout.rowHeight = 31;
  ASSERT_TRUE(layout.store(registry, kForm, kFont));
  EXPECT_EQ(value(registry, u"Kol 0 Width"), QStringLiteral("120"));
  EXPECT_EQ(value(registry, u"Row Height"), QStringLiteral("31"));
  EXPECT_EQ(registry.read(kProgramKey, QStringLiteral("karEWKARKol ")), QStringLiteral("1"));

  const ColumnLayout read = ColumnLayout::load(registry, kForm, kFont, 2);
  ASSERT_EQ(read.columns.size(), 2);
  EXPECT_EQ(read.columns[0].width, 120);
  EXPECT_EQ(read.columns[0].place, 1);
  EXPECT_EQ(read.columns[1].width, 0);
  EXPECT_EQ(read.rowHeight, 31);
  EXPECT_EQ(ColumnLayout::load(registry, kForm, QStringLiteral("12"), 2).columns[0].width, -1);

  ColumnLayout::forget(registry, kForm);
  EXPECT_TRUE(ColumnLayout::load(registry, kForm, kFont, 2).columns.isEmpty());
}

TEST(ColumnLayout, DamagedValuesAreStandardOnes) {
  MemoryRegistry registry;
  ColumnLayout layout;
  layout.columns = {{120, 0}, {0, 1}};
  ASSERT_TRUE(layout.store(registry, kForm, kFont));
  const QString key = kProgramKey + QStringLiteral("\\karEWKAR\\Kol 8");
  registry.write(key, QStringLiteral("Kol 0 Width"), QStringLiteral("szeroka"));
  registry.write(key, QStringLiteral("Kol 1 Width"), QStringLiteral("99999999"));
  registry.write(key, QStringLiteral("Kol 1 Place"), QStringLiteral("7"));
  registry.write(key, QStringLiteral("Row Height"), QStringLiteral("-20"));
  const ColumnLayout read = ColumnLayout::load(registry, kForm, kFont, 2);
  EXPECT_EQ(read.columns[0].width, -1);
  EXPECT_EQ(read.columns[1].width, -1);
  EXPECT_EQ(read.columns[1].place, -1);
  EXPECT_EQ(read.rowHeight, 0);

  // A list without any column could not be brought back by its user.
  for (const char16_t* name : {u"Kol 0 Width", u"Kol 1 Width"})
    registry.write(key, QString::fromUtf16(name), QStringLiteral("0"));
  EXPECT_TRUE(ColumnLayout::load(registry, kForm, kFont, 2).columns.isEmpty());
}

}  // namespace
}  // namespace tandeko
