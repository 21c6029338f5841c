// SPDX-License-Identifier: BSD-3-Clause
// Benchmark driver: a QApplication (offscreen unless a platform is chosen)
// around Google Benchmark's runner, since the widget benchmarks need one.

#include <benchmark/benchmark.h>

#include <QApplication>

namespace {

QtMessageHandler passOn = nullptr;

// Showing a widget on the offscreen platform logs this once per window; it
// says nothing about what is measured and would bury the results.
void dropPlatformChatter(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (message.contains(QLatin1String("propagateSizeHints")))
        return;
    passOn(type, context, message);
}

} // namespace

int main(int argc, char** argv)
{
    passOn = qInstallMessageHandler(dropPlatformChatter);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
