// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: the chip table model under random sequences of new lists (whole, or chosen rows of a list, said
// to follow a column's order when they do), sorts and look-ups, with a sort tuning taken from the input
// (one part to seven, each threshold at zero or at its largest). Nothing may crash, Qt's model checks must hold, and
// the rows must always be those of the plain stable sort of the rows set, one sort after the other.

#include "chipcolumns_p.h"
#include "chipinfotablemodel_p.h"
#include "reference/reference.h"
#include "tuning_p.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QAbstractItemModelTester>

#include <climits>
#include <cstdlib>
#include <numeric>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const auto choose = [&in](int n) { return in.ConsumeIntegralInRange<int>(0, n - 1); };
    DEV::pimpl::Tuning& tuning = DEV::pimpl::tuning();
    const int setting = choose(256);
    tuning.parts = 1 + setting % 7;
    tuning.sortParallelFrom = setting & 0x08 ? 0 : INT_MAX;
    tuning.sortWideDigitsFrom = setting & 0x10 ? 0 : setting & 0x20 ? INT_MAX : DEV::pimpl::Tuning().sortWideDigitsFrom;
    DEV::ChipInfoTableModel model;
    // The tester reports an inconsistent model as a warning; nothing else warns here.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
        if (type != QtDebugMsg)
            std::abort();
    });
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);
    QList<DEV::ChipInfo> held;
    QVector<int> rows; // positions in held, as the model should show them
    const auto text = [](const DEV::ChipInfo& c) {
        return QStringList{c.deviceId, c.partNumber, c.series, c.device, c.deviceVersion, c.package, c.speed, c.voltage}
            + c.resources;
    };
    while (in.remaining_bytes() > 0) {
        const int action = choose(5);
        if (action == 0)
            held = Reference::randomRows(choose, choose(41), QString(), choose(2) == 1);
        if (action == 0 || action == 3) { // a new list, or the very list already held: a full reset either way
            model.setChipInfoList(held);
            rows.resize(held.size());
            std::iota(rows.begin(), rows.end(), 0);
        } else if (action == 4) { // some rows, in any order, or in that of a column
            rows.clear();
            for (int k = 0; k < held.size(); ++k) {
                if (choose(3))
                    rows.insert(choose(int(rows.size()) + 1), k);
            }
            const int orderedBy = choose(18) - 1;
            rows = DEV::pimpl::plainSortedRows(held, rows, orderedBy, Qt::AscendingOrder);
            if (orderedBy < 0 || choose(2))
                model.setChipInfoList(held, rows);
            else
                DEV::pimpl::ChipInfoTableModelPrivate::setOrderedRows(model, held, rows, orderedBy);
        } else if (action == 1) {
            const int column = choose(20) - 2;
            const bool ascending = choose(2) == 1;
            model.sort(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
            rows = DEV::pimpl::plainSortedRows(held, rows, column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
            if (model.rowCount() != rows.size() || model.chipInfoList().size() != rows.size())
                std::abort();
            for (int row = 0; row < rows.size(); ++row) {
                const QStringList shown = text(model.index2chipInfo(model.index(row, 0)));
                if (shown != text(held.at(rows.at(row))) || text(model.chipInfoList().at(row)) != shown)
                    std::abort();
            }
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
