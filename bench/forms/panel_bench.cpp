// How long the panel takes to open, to fill a tree of 20,000 items, and to move a set of 500 components.
//
//   QT_QPA_PLATFORM=offscreen bench_forms

#include <benchmark/benchmark.h>

#include <QApplication>

#include "firm_session.h"
#include "platform/statements.h"
#include "register/panel/karEWPAN.h"

namespace {

using namespace tandeko;

// About 100,000 items of one register, a fifth of them in the warehouse.
Firm& firm() {
  static Firm made({.employees = 200, .items = 100'000, .registers = 1, .seed = 1});
  return made;
}

// 2,000 employees and 50,000 items.
Firm& manyEmployees() {
  static Firm made({.employees = 2000, .items = 50'000, .registers = 1, .seed = 2});
  return made;
}

void openPanel(benchmark::State& state, Firm& (*firm)()) {
  Session& session = firm().session();
  for (auto _ : state) {
    karEWPAN panel(session);
    panel.resize(1200, 700);
    panel.show();
    QApplication::processEvents();
    benchmark::DoNotOptimize(
        panel.findChild<ItemTreeView*>(QStringLiteral("treeMagazyn"))->items().rowCount());
  }
}

void refillWarehouse(benchmark::State& state) {
  karEWPAN panel(firm().session());
  panel.show();
  auto* tree = panel.findChild<ItemTreeView*>(QStringLiteral("treeMagazyn"));
  for (auto _ : state) {
    panel.PanelFillTree(*tree, 0);
    QApplication::processEvents();
  }
  state.counters["items"] = static_cast<double>(tree->items().tree().nodes().size());
}

// A set of 500 components from an employee to the warehouse and back, both trees filled again each time.
void moveBigSet(benchmark::State& state) {
  Session& session = manyEmployees().session();
  jet::Database& database = session.database();
  const auto add = [&](const QString& name, const QString& parent) {
    execute(database,
            QStringLiteral("INSERT INTO ewkar (indrew, indpra, parent, Nazwa, Indgew, Indsew) SELECT "
                           "TOP 1 1, 1, ") +
                parent + QStringLiteral(", '") + name +
                QStringLiteral("', Indgew, Indsew FROM ewkar WHERE indrew = 1"));
    return database.lastAutoNumber();
  };
  const ItemStore store{session.workspace(), database, 1};
  int set = 0;
  {
    Transaction transaction(session.workspace());
    set = add(QStringLiteral("Wielki zestaw"), QStringLiteral("Null"));
    for (int i = 0; i < 500; ++i) add(QStringLiteral("Element"), str(set));
    transaction.commit();
  }
  bool here = true;
  size_t moved = 0;
  for (auto _ : state) {
    moved = PanelMoveItem(store, set, here ? kWarehouse : 1, 0).record.after.size();
    benchmark::DoNotOptimize(ItemTree::load(database, 1, kWarehouse).nodes().size());
    benchmark::DoNotOptimize(ItemTree::load(database, 1, 1).nodes().size());
    here = !here;
  }
  state.counters["items"] = static_cast<double>(moved);
}

BENCHMARK_CAPTURE(openPanel, oneBigWarehouse, firm)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(openPanel, manyEmployees, manyEmployees)->Unit(benchmark::kMillisecond);
BENCHMARK(moveBigSet)->Unit(benchmark::kMillisecond);
BENCHMARK(refillWarehouse)->Unit(benchmark::kMillisecond);

}  // namespace
