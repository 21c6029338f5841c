// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: the chip table model under random sequences of new lists, sorts and look-ups. Nothing may crash,
// Qt's model checks must hold, and every sort must order the cells as the plain cell comparison does.

#include "chipinfotablemodel.h"
#include "reference/reference.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QAbstractItemModelTester>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const auto choose = [&in](int n) { return in.ConsumeIntegralInRange<int>(0, n - 1); };
    DEV::ChipInfoTableModel model;
    // The tester reports an inconsistent model as a warning; nothing else warns here.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
        if (type != QtDebugMsg)
            std::abort();
    });
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);
    QList<DEV::ChipInfo> held;
    while (in.remaining_bytes() > 0) {
        const int action = choose(4);
        if (action == 0)
            held = Reference::randomRows(choose, choose(41));
        if (action == 0 || action == 3) { // a new list, or the very list already held: a full reset either way
            model.setChipInfoList(held);
        } else if (action == 1) {
            const int column = choose(20) - 2;
            const bool ascending = choose(2) == 1;
            model.sort(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
            if (model.rowCount() != held.size()
                || (column >= 0 && column < 16 && !Reference::misordered(model, column, ascending).isEmpty()))
                std::abort();
        } else {
            // The first row with a record's identifier is at or before the record's own row.
            const int row = choose(model.rowCount() + 4) - 2;
            const QModelIndex index = model.index(row, choose(20) - 2);
            model.data(index, Qt::TextAlignmentRole);
            if (index.isValid() && model.info2index(model.index2chipInfo(index)).row() > row)
                std::abort();
        }
    }
    qInstallMessageHandler(nullptr);
    return 0;
}
