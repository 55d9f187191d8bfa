// How long forms take on big firms.
//
//   QT_QPA_PLATFORM=offscreen bench_forms [--benchmark_filter=...]

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLocale>

#include "platform/resources.h"

int main(int argc, char** argv) {
  QLocale::setDefault(QLocale(QLocale::Polish, QLocale::Poland));
  QApplication application(argc, argv);
  tandeko::useResources();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
