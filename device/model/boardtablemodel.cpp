// SPDX-License-Identifier: BSD-3-Clause
#include "boardtablemodel.h"

#include "chipcolumns.h"

#include <algorithm>
#include <numeric>

namespace DEV {

namespace {

// The chip table's column for each of ours from Part Number on.
constexpr ChipColumn ChipColumns[] = {ChipColumn::PartNumber, ChipColumn::LUT, ChipColumn::FF,
                                      ChipColumn::BSRAM,      ChipColumn::DSP, ChipColumn::IO};

const QString& text(const Board& board, int column)
{
    const QString* const texts[] = {&board.id, &board.name, &board.maker, &board.revision, &board.partNumber};
    return *texts[column];
}

} // namespace

class pimpl::BoardTableModelPrivate
{
public:
    QList<Board> boards;
};

BoardTableModel::BoardTableModel(QObject* parent)
    : QAbstractTableModel(parent)
    , d(new pimpl::BoardTableModelPrivate)
{
}

BoardTableModel::~BoardTableModel() = default;

void BoardTableModel::setBoards(const QList<Board>& boards)
{
    beginResetModel();
    d->boards = boards;
    endResetModel();
}

Board BoardTableModel::board(int row) const
{
    return d->boards.value(row);
}

int BoardTableModel::rowOf(const QString& id) const
{
    const auto found = std::find_if(d->boards.cbegin(), d->boards.cend(), [&](const Board& b) { return b.id == id; });
    return found == d->boards.cend() ? -1 : int(found - d->boards.cbegin());
}

int BoardTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(d->boards.size());
}

QVariant BoardTableModel::data(const QModelIndex& index, int role) const
{
    const int column = index.column();
    if (index.row() < 0 || index.row() >= d->boards.size() || column < 0 || column >= ColumnCount)
        return QVariant();
    const Board& board = d->boards.at(index.row());
    const bool known = !board.chip.partNumber.isEmpty();
    if (role == Qt::TextAlignmentRole)
        return uint((column < LUT ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
    if (role == Qt::ToolTipRole && !known)
        return QStringLiteral("The device catalogue has no chip %1").arg(board.partNumber);
    if (role != Qt::DisplayRole)
        return QVariant();
    if (column <= PartNumber)
        return text(board, column);
    const QString count = chipColumnValue(board.chip, int(ChipColumns[column - PartNumber])).trimmed();
    return !known ? QString() : count.isEmpty() ? QStringLiteral("0") : count;
}

QVariant BoardTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char* const headers[] = {"Identifier", "Name", "Maker", "Revision"};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount)
        return QVariant();
    return section < PartNumber ? QString::fromLatin1(headers[section]) : chipColumnHeader(int(ChipColumns[section - PartNumber]));
}

Qt::ItemFlags BoardTableModel::flags(const QModelIndex& index) const
{
    const bool known = index.isValid() && !board(index.row()).chip.partNumber.isEmpty();
    return known ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

void BoardTableModel::sort(int column, Qt::SortOrder order)
{
    beginResetModel();
    QVector<int> rows(int(d->boards.size()));
    std::iota(rows.begin(), rows.end(), 0);
    QList<ChipInfo> chips;
    for (const Board& board : qAsConst(d->boards)) {
        chips << board.chip;
        chips.last().partNumber = board.partNumber; // also where the database has no chip
    }
    if (column >= PartNumber && column < ColumnCount) {
        rows = sortChipRows(chips, rows, int(ChipColumns[column - PartNumber]), order);
    } else if (column >= 0 && column < PartNumber) {
        const int sign = order == Qt::AscendingOrder ? 1 : -1;
        std::stable_sort(rows.begin(), rows.end(), [&](int l, int r) {
            return sign * text(d->boards.at(l), column).compare(text(d->boards.at(r), column), Qt::CaseSensitive) < 0;
        });
    }
    const QList<Board> unsorted = d->boards;
    for (int i = 0; i < rows.size(); ++i)
        d->boards[i] = unsorted.at(rows.at(i));
    endResetModel();
}

} // namespace DEV
