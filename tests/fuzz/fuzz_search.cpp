// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: the free-text search against the plain reference, on random chips built by hand and the same
// chips loaded from a file (where equal values share their data), one chip at a time and over the list by every way
// the library searches: short lists and long ones, ordinary and prepared, among chosen positions and typed on. The
// tuning comes from the input, one for preparing the search and another for searching.

#include "reference/reference.h"
#include "tuning_p.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QTemporaryDir>

#include <climits>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Short lines are reported on every run; printing them only slows fuzzing down.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return 0;
}

namespace {

// One to seven parts, the thresholds and the window each at its least, small, as by default or at its largest.
DEV::pimpl::Tuning tuningFrom(FuzzedDataProvider& in)
{
    const auto pick = [&in](int small, int usual) { return in.PickValueInArray({0, small, usual, INT_MAX}); };
    DEV::pimpl::Tuning t;
    t.parts = in.ConsumeIntegralInRange<int>(1, 7);
    t.searchParallelFrom = pick(5, t.searchParallelFrom);
    t.foldFrom = pick(3, t.foldFrom);
    t.foldWindow = std::max(1, pick(2, t.foldWindow));
    return t;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const DEV::pimpl::Tuning preparing = tuningFrom(in), searching = tuningFrom(in);
    const auto choose = [&in](int n) { return in.ConsumeIntegralInRange<int>(0, n - 1); };
    const DEV::ChipFilterBySearch search = Reference::randomSearch(choose);
    // Up to 48 chips, or 64 to 400.
    QList<DEV::ChipInfo> chips = Reference::randomChips(choose, choose(2) ? choose(25) : 32 + choose(169));
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("chips.csv"));
    const QList<DEV::ChipInfo> loaded = Reference::loadedCopy(chips, path);
    for (int i = 0; i < loaded.size(); ++i)
        chips.insert(std::min(int(chips.size()), 2 * i), loaded.at(i));
    DEV::pimpl::tuning() = preparing;
    const DEV::ChipSearch prepared(chips);
    DEV::pimpl::tuning() = searching;
    if (!Reference::disagreement(chips, search, choose, Reference::found(chips, search), prepared).isEmpty())
        std::abort();
    return 0;
}
