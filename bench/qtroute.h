// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_BENCH_QTROUTE_H
#define DEV_BENCH_QTROUTE_H

// What a host without this library would write: every chip as a row of a
// QStandardItemModel with the sixteen table columns, shown through a
// QSortFilterProxyModel that filters and sorts.

#include "catalogues.h"

#include <chipcolumns.h>

#include <QSortFilterProxyModel>
#include <QStandardItemModel>

#include <map>
#include <memory>

namespace Bench {

struct QtRoute
{
    QStandardItemModel source;
    QSortFilterProxyModel proxy;
};

inline QList<QStandardItem*> rowOf(const DEV::ChipInfo& c)
{
    QList<QStandardItem*> row;
    for (int column = 0; column < DEV::ChipColumnCount; ++column) {
        const QString& text = DEV::chipColumnValue(c, column);
        const bool emptyCount = text.isEmpty() && column >= DEV::FirstResourceColumn;
        row << new QStandardItem(emptyCount ? QStringLiteral("0") : text);
    }
    return row;
}

/// The Qt route over the catalogue of @p chips chips, built once per run.
inline QtRoute& qtRoute(int chips)
{
    static std::map<int, std::unique_ptr<QtRoute>> built;
    auto& slot = built[chips];
    if (!slot) {
        slot.reset(new QtRoute);
        for (const DEV::ChipInfo& c : database(chips).allChipInfo())
            slot->source.appendRow(rowOf(c));
        slot->proxy.setSourceModel(&slot->source);
        slot->proxy.setFilterKeyColumn(-1);
        slot->proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
    }
    return *slot;
}

} // namespace Bench

#endif // DEV_BENCH_QTROUTE_H
