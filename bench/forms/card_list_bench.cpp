// The card list of all registers, 200,000 items in 10 registers.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QScrollBar>

#include "firm_session.h"
#include "lists/row_copy.h"
#include "lists/row_search.h"
#include "register/card_list_form.h"

namespace {

using namespace tandeko;

Firm& bigFirm() {
  static Firm made({.employees = 2000, .items = 200'000, .registers = 10, .seed = 7});
  return made;
}

// Megabytes that the process has in memory.
double residentMemory() {
  QFile status(QStringLiteral("/proc/self/statm"));
  if (!status.open(QIODevice::ReadOnly)) return 0;
  return status.readAll().split(' ').value(1).toDouble() * 4096 / 1048576;
}

// With all registers and the sums; shown.
std::unique_ptr<karEWKAR> openList() {
  auto list = std::make_unique<karEWKAR>(bigFirm().session());
  list->resize(1200, 700);
  list->show();
  list->run(Command::Sumuj);
  list->run(Command::WszystkieRejestry);
  QApplication::processEvents();
  return list;
}

karEWKAR& shownList() {
  // Never deleted: a widget must not outlive the application, which ends before static objects do.
  static karEWKAR& list = *openList().release();
  return list;
}

void openAllRegisters(benchmark::State& state) {
  karEWKAR list(bigFirm().session());
  list.resize(1200, 700);
  list.show();
  list.run(Command::Sumuj);
  list.run(Command::WszystkieRejestry);
  for (auto _ : state) {
    list.KarRefresh();
    QApplication::processEvents();
  }
  state.counters["rows"] = list.DataSource().rows();
  state.counters["MB"] = residentMemory();
}

void filterKeystroke(benchmark::State& state, const char16_t* typed, bool sums) {
  karEWKAR& list = shownList();
  if (list.isOn(Command::Sumuj) != sums) list.run(Command::Sumuj);
  auto* field = list.findChild<QLineEdit*>(QStringLiteral("txtNazwa"));
  for (auto _ : state) {
    state.PauseTiming();
    field->clear();
    Q_EMIT field->returnPressed();
    state.ResumeTiming();
    field->setText(QString::fromUtf16(typed));
    Q_EMIT field->returnPressed();
    QApplication::processEvents();
  }
  state.counters["rows"] = list.DataSource().rows();
  field->clear();
  Q_EMIT field->returnPressed();
}

void scrollThrough(benchmark::State& state) {
  karEWKAR& list = shownList();
  QScrollBar* bar = list.grid().verticalScrollBar();
  int at = 0;
  for (auto _ : state) {
    at = (at + 7919) % (bar->maximum() + 1);
    bar->setValue(at);
    list.grid().viewport()->repaint();
  }
}

void searchEveryCell(benchmark::State& state) {
  karEWKAR& list = shownList();
  const RowSearch search(list.DataSource(), QStringLiteral("nie ma takiego"), list.grid().shownColumns());
  for (auto _ : state)
    for (int row = 0; row < 100'000; ++row) benchmark::DoNotOptimize(search.columnIn(row));
}

void copyRowsToText(benchmark::State& state) {
  karEWKAR& list = shownList();
  QList<int> rows;
  for (int row = 0; row < 100'000; ++row) rows << row;
  int done = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(
        copyRows(bigFirm().session(), list.DataSource(), rows, list.grid().shownColumns(), done).size());
}

void sortByHolder(benchmark::State& state) {
  karEWKAR& list = shownList();
  auto* header = static_cast<SortHeader*>(list.grid().horizontalHeader());
  for (auto _ : state) {
    Q_EMIT header->sortRequested(5, false);
    QApplication::processEvents();
  }
}

BENCHMARK(openAllRegisters)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterKeystroke, oneLetter, u"k", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterKeystroke, twoLetters, u"ko", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterKeystroke, withSums, u"ko", true)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollThrough)->Unit(benchmark::kMillisecond);
BENCHMARK(searchEveryCell)->Unit(benchmark::kMillisecond);
BENCHMARK(copyRowsToText)->Unit(benchmark::kMillisecond);
BENCHMARK(sortByHolder)->Unit(benchmark::kMillisecond);

}  // namespace
