#include "register/item_tree.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/scripted_messages.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

ItemRow row(int id, int parent, const char16_t* name) {
  ItemRow item;
  item.id = id;
  if (parent != 0) item.parent = parent;
  item.name = name;
  return item;
}

// The tree as "name(components)name..." in the order of its rows.
QString outline(const ItemTree& tree, int first, int count) {
  QString text;
  for (int at = first; at < first + count; ++at) {
    const auto& node = tree.nodes()[static_cast<size_t>(at)];
    EXPECT_EQ(node.row, at - first);
    text += toQString(node.item.name);
    if (node.childCount > 0) text += u'(' + outline(tree, node.firstChild, node.childCount) + u')';
    text += u' ';
  }
  return text.trimmed();
}
QString outline(const ItemTree& tree) { return outline(tree, 0, tree.topLevelCount()); }

TEST(ItemTree, FollowsParentsInTheOrderOfNames) {
  const struct {
    const char* what;
    std::vector<ItemRow> rows;
    QString expected;
  } cases[] = {
      {"empty", {}, {}},
      {"sets",
       {row(4, 1, u"a"), row(1, 0, u"b"), row(3, 1, u"c"), row(2, 0, u"d"), row(5, 3, u"e")},
       u"b(a c(e)) d"_s},
      {"a broken pair stands behind the others, with what hangs on it",
       {row(1, 2, u"a"), row(2, 1, u"b"), row(3, 0, u"c"), row(4, 1, u"d")},
       u"c a(d) b"_s},
      {"an item that is its own set", {row(1, 1, u"a"), row(2, 0, u"b")}, u"b a"_s},
      {"a longer circle, with a set hanging on it",
       {row(5, 4, u"a"), row(1, 2, u"b"), row(2, 3, u"c"), row(3, 1, u"d"), row(4, 2, u"e")},
       u"b c(e(a)) d"_s},
      {"components of sets that are gone or elsewhere",
       {row(1, 99, u"a"), row(2, 0, u"b"), row(3, 1, u"c"), row(4, 98, u"d")},
       u"b a(c) d"_s},
  };
  for (const auto& c : cases) {
    const auto tree = ItemTree::build(c.rows);
    EXPECT_EQ(outline(tree), c.expected) << c.what;
    for (size_t at = 0; at < tree.nodes().size(); ++at)
      EXPECT_EQ(tree.find(tree.nodes()[at].item.id), static_cast<int>(at)) << c.what;
  }
}

TEST(PanelNodeText, ShowsWhatTheRegisterAsksFor) {
  ItemRow full = row(1, 0, u"Drabina");
  full.number = u"L/0007";
  full.catalogNumber = u"K1";
  full.serialNumber = u"S9";
  full.quantity = 2;
  full.unit = u"szt";
  full.price = jet::Currency{125000};
  ItemRow bare = row(2, 0, u"Stół");
  ItemRow half = bare;
  half.quantity = 2.5;
  half.serialNumber = u"S9";

  const struct {
    const ItemRow& item;
    const char* shown;  // n number, k catalogue number, s serial number, i quantity, c price
    QString expected;
  } cases[] = {
      {full, "", u"Drabina"_s},
      {full, "nksic", u"Drabina [L/0007, K1, S9 - 2szt, 12,5 zł]"_s},
      {full, "i", u"Drabina [ 2szt]"_s},
      {full, "ic", u"Drabina [ 2szt, 12,5 zł]"_s},
      {full, "c", u"Drabina [12,5 zł]"_s},
      {full, "kc", u"Drabina [K1, 12,5 zł]"_s},
      {bare, "nksic", u"Stół"_s},
      {half, "nksic", u"Stół [S9 - 2,5]"_s},
  };
  for (const auto& c : cases) {
    const std::string_view shown = c.shown;
    CurrentRegister current;
    current.showNumber = shown.find('n') != shown.npos;
    current.showCatalogNumber = shown.find('k') != shown.npos;
    current.showSerialNumber = shown.find('s') != shown.npos;
    current.showQuantity = shown.find('i') != shown.npos;
    current.showPrice = shown.find('c') != shown.npos;
    EXPECT_EQ(PanelNodeText(c.item, current), c.expected) << shown;
  }
}

}  // namespace
}  // namespace tandeko
