#include "register/item_tree.h"

#include <span>

#include "jet/sql/engine.h"
#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

jet::Text rawText(const jet::Value& value) {
  const auto* text = value.getIf<jet::Text>();
  return text ? *text : jet::Text();
}

// Rows of the tree's query, in the order of its columns.
class RowReader : public jet::sql::RowSink {
 public:
  void begin(const std::vector<jet::sql::ResultColumn>&) override {}
  bool row(std::span<const jet::Value> values) override {
    ItemRow item;
    item.parent = keyOf(values[0]);
    item.id = keyOf(values[1]).value_or(0);
    item.name = rawText(values[2]);
    if (!values[3].isNull()) item.quantity = jet::sql::toDouble(values[3]);
    item.unit = rawText(values[4]);
    item.icon = keyOf(values[5]);
    item.number = rawText(values[6]);
    item.catalogNumber = rawText(values[7]);
    item.serialNumber = rawText(values[8]);
    if (const auto* price = values[9].getIf<jet::Currency>()) item.price = *price;
    rows.push_back(std::move(item));
    return true;
  }
  std::vector<ItemRow> rows;
};

using Places = std::vector<int>;

// Positions of the rows in the order of a walk level by level from `top`, and the position of each one's
// set in the result (-1 at the top). A row at the top stays there, whoever's component it is.
struct Walk {
  Places order, parents;
};

Walk walk(const std::vector<ItemRow>& rows, const Places& top,
          const std::unordered_map<int, Places>& components) {
  std::vector<bool> reached(rows.size());
  for (const int place : top) reached[static_cast<size_t>(place)] = true;
  Walk result{top, Places(top.size(), -1)};
  for (size_t at = 0; at < result.order.size(); ++at) {
    const auto found = components.find(rows[static_cast<size_t>(result.order[at])].id);
    if (found == components.end()) continue;
    for (const int place : found->second) {
      if (reached[static_cast<size_t>(place)]) continue;
      reached[static_cast<size_t>(place)] = true;
      result.order.push_back(place);
      result.parents.push_back(static_cast<int>(at));
    }
  }
  return result;
}

// The rows, in their order, that no walk from the top reaches but by beginning with them: items whose set
// is not among the rows, and items that are their own components over one or more steps.
Places strays(const std::vector<ItemRow>& rows, const std::unordered_map<int, int>& placeOf) {
  enum class State : char { New, OnTheWay, Done };
  std::vector<State> states(rows.size(), State::New);
  std::vector<bool> stray(rows.size());
  std::vector<size_t> way;
  for (size_t begin = 0; begin < rows.size(); ++begin) {
    way.clear();
    size_t at = begin;
    while (states[at] == State::New) {
      states[at] = State::OnTheWay;
      way.push_back(at);
      if (!rows[at].parent) break;
      const auto set = placeOf.find(*rows[at].parent);
      if (set == placeOf.end()) {
        stray[at] = true;
        break;
      }
      at = static_cast<size_t>(set->second);
      if (states[at] != State::OnTheWay) continue;
      for (size_t member = way.size(); member-- > 0;) {  // round to where the way met itself
        stray[way[member]] = true;
        if (way[member] == at) break;
      }
    }
    for (const size_t passed : way) states[passed] = State::Done;
  }
  Places found;
  for (size_t at = 0; at < rows.size(); ++at)
    if (stray[at]) found.push_back(static_cast<int>(at));
  return found;
}

}  // namespace

QString PanelNodeText(const ItemRow& row, const CurrentRegister& shown) {
  QString extras;
  const auto add = [&extras](bool wanted, const QString& joiner, const QString& text) {
    if (wanted && !text.isEmpty()) extras += joiner + text;
  };
  const QString comma = QStringLiteral(", ");
  add(shown.showNumber, comma, toQString(row.number));
  add(shown.showCatalogNumber, comma, toQString(row.catalogNumber));
  add(shown.showSerialNumber, comma, toQString(row.serialNumber));
  if (row.quantity || !row.unit.empty())
    add(shown.showQuantity, QStringLiteral(" - "),
        (row.quantity ? toText(jet::Value(*row.quantity)) : QString()) + toQString(row.unit));
  if (row.price) add(shown.showPrice, comma, toText(jet::Value(*row.price)) + QStringLiteral(" zł"));
  if (extras.startsWith(u',') || extras.startsWith(QStringLiteral(" -"))) extras.remove(0, 2);
  const QString name = toQString(row.name);
  return extras.isEmpty() ? name : name + QStringLiteral(" [") + extras + u']';
}

ItemTree ItemTree::load(jet::Database& database, int registerKey, int holder) {
  RowReader reader;
  const QString sql =
      QStringLiteral(
          "SELECT parent, indewi, nazwa, ilosc, indjed, ikona, numewi, numkat, numser, cenazak FROM ewkar "
          "WHERE indrew = ") +
      QString::number(registerKey) + QStringLiteral(" And indpra = ") + QString::number(holder) +
      QStringLiteral(" ORDER BY nazwa ");
  database.stream(sql.toStdU16String(), reader);
  return build(std::move(reader.rows));
}

ItemTree ItemTree::build(std::vector<ItemRow> rows) {
  Places top;
  std::unordered_map<int, Places> components;
  std::unordered_map<int, int> placeOf;
  for (size_t at = 0; at < rows.size(); ++at) {
    const auto place = static_cast<int>(at);
    placeOf.emplace(rows[at].id, place);
    if (rows[at].parent)
      components[*rows[at].parent].push_back(place);
    else
      top.push_back(place);
  }

  Walk found = walk(rows, top, components);
  if (found.order.size() < rows.size()) {  // something is damaged
    const Places more = strays(rows, placeOf);
    top.insert(top.end(), more.begin(), more.end());
    found = walk(rows, top, components);
  }

  ItemTree tree;
  tree.topLevel_ = static_cast<int>(top.size());
  tree.nodes_.resize(found.order.size());
  for (size_t at = 0; at < found.order.size(); ++at) {
    Node& node = tree.nodes_[at];
    node.item = std::move(rows[static_cast<size_t>(found.order[at])]);
    node.parent = found.parents[at];
    tree.places_.emplace(node.item.id, static_cast<int>(at));
    if (node.parent < 0) {
      node.row = static_cast<int>(at);
      continue;
    }
    Node& set = tree.nodes_[static_cast<size_t>(node.parent)];
    if (set.childCount == 0) set.firstChild = static_cast<int>(at);
    node.row = set.childCount++;
  }
  return tree;
}

int ItemTree::find(int item) const {
  const auto found = places_.find(item);
  return found == places_.end() ? -1 : found->second;
}

}  // namespace tandeko
