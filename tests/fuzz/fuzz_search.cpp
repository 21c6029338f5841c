// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: the free-text search against the plain reference, on random chips built by hand and the same
// chips loaded from a file (where equal values share their data), one chip at a time and over the list by every way
// the library searches: short lists and long ones, ordinary and prepared, among chosen positions and typed on.

#include "reference/reference.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QTemporaryDir>

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Short lines are reported on every run; printing them only slows fuzzing down.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const auto choose = [&in](int n) { return in.ConsumeIntegralInRange<int>(0, n - 1); };
    const DEV::ChipFilterBySearch search = Reference::randomSearch(choose);
    // Up to 48 chips, searched value by value, or 64 to 400, folded first.
    QList<DEV::ChipInfo> chips = Reference::randomChips(choose, choose(2) ? choose(25) : 32 + choose(169));
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("chips.csv"));
    const QList<DEV::ChipInfo> loaded = Reference::loadedCopy(chips, path);
    for (int i = 0; i < loaded.size(); ++i)
        chips.insert(std::min(int(chips.size()), 2 * i), loaded.at(i));
    if (!Reference::disagreement(chips, search, choose).isEmpty())
        std::abort();
    return 0;
}
