// SPDX-License-Identifier: BSD-3-Clause
#include "chipinfotablemodel.h"

#include "chipcolumns.h"

#include <QStringView>

#include <algorithm>
#include <vector>

namespace DEV {

namespace {

constexpr uint LeftAligned = Qt::AlignLeft | Qt::AlignVCenter;
constexpr uint RightAligned = Qt::AlignRight | Qt::AlignVCenter;

bool isColumn(int column)
{
    return column >= 0 && column < ChipColumnCount;
}

// The text a cell shows, by reference: see "Sorting" in docs/performance.md.
// The loader keeps lines that end early, so a record may carry fewer than
// nine counts; a missing count is shown like an empty one, as 0.
const QString& cellText(const ChipInfo& info, int column)
{
    static const QString zero = QStringLiteral("0");
    const QString& value = chipColumnValue(info, column);
    if (value.isEmpty() && column >= FirstResourceColumn && isColumn(column))
        return zero;
    return value;
}

/*
 * The number a cell compares as: the text converted with QString::toInt() in
 * base 10, for Kb columns after every "Kb" has been cut out. Memory sizes are
 * written like "72Kb"; only that exact spelling is a unit, so "64KB" or "2Mb"
 * stay non-numeric and count as 0, like any text toInt() rejects.
 *
 * Almost every cell is a short run of ASCII digits (with "Kb" in size
 * columns). Such text cannot overflow and converts to its decimal value, so
 * it is read directly; everything else takes the general conversion.
 */
int numberKey(QStringView text, bool cutKb)
{
    const QChar* chars = text.data();
    qsizetype length = text.size();
    if (cutKb && length >= 2 && chars[length - 2] == QLatin1Char('K') && chars[length - 1] == QLatin1Char('b'))
        length -= 2;
    if (length >= 1 && length <= 9) {
        int value = 0;
        qsizetype i = 0;
        for (; i < length; ++i) {
            const ushort unit = chars[i].unicode();
            if (unit < '0' || unit > '9')
                break;
            value = value * 10 + (unit - '0');
        }
        if (i == length)
            return value;
    }

    QString number = text.toString();
    if (cutKb)
        number.remove(QLatin1String("Kb"), Qt::CaseSensitive);
    return number.toInt(nullptr, 10);
}

// A row's sort key next to the row it came from.
template <typename Key>
struct KeyedRow
{
    Key key;
    int row;
};

// The sort key of a text cell: the sixteen units after the prefix all cells
// share, and the text (see "Sorting" in docs/performance.md).
struct TextKey
{
    static constexpr int Words = 4;
    static constexpr int UnitsPerWord = 4;

    // UTF-16 units from the common prefix on, four per word, the first in the
    // high bits, so that comparing words compares the units in order. A
    // position past the end packs as 0, the same as U+0000, so equal heads
    // alone do not make equal texts.
    quint64 head[Words];
    QStringView text;
    // The whole text after the common prefix is in the head.
    bool inHead;
};

int compareKeys(const TextKey& left, const TextKey& right)
{
    for (int w = 0; w < TextKey::Words; ++w) {
        if (left.head[w] != right.head[w])
            return left.head[w] < right.head[w] ? -1 : 1;
    }
    // Equal heads that hold both texts entirely: the texts agree unit by
    // unit, and where one is longer its extra units are U+0000, so the
    // shorter is a prefix of the longer. Lists with many equal cells (a
    // package, a series) would otherwise compare every pair in full.
    if (left.inHead && right.inHead) {
        const qsizetype l = left.text.size();
        const qsizetype r = right.text.size();
        return l < r ? -1 : (l > r ? 1 : 0);
    }
    return left.text.compare(right.text, Qt::CaseSensitive);
}

int compareKeys(int left, int right)
{
    return left < right ? -1 : (left > right ? 1 : 0);
}

/*
 * The records and their texts lie scattered on the heap, and building the
 * keys is mostly waiting for them. Asking for them some rows ahead lets those
 * waits overlap: the record first, then, once it has arrived, where its text
 * lies (on Qt 5 the text's header, which the characters follow and whose
 * address the record holds; on Qt 6 the characters themselves).
 */
constexpr int FetchAhead = 8;

// Asks for the record 2 * FetchAhead rows after @p row, and for the text in
// @p column of the record FetchAhead rows after it, which has arrived by now.
inline void fetchAhead(const QList<ChipInfo>& chips, int row, int column)
{
#if defined(__GNUC__)
    const int n = int(chips.size());
    if (row + 2 * FetchAhead < n)
        __builtin_prefetch(&chips.at(row + 2 * FetchAhead));
    if (row + FetchAhead < n) {
        const QString& text = cellText(chips.at(row + FetchAhead), column);
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        __builtin_prefetch(text.constData());
#else
        __builtin_prefetch(const_cast<QString&>(text).data_ptr()); // only read; Qt offers no const accessor
#endif
    }
#else
    Q_UNUSED(chips);
    Q_UNUSED(row);
    Q_UNUSED(column);
#endif
}

/*
 * Keys of a text column. The views point into the records' own strings; they
 * stay valid because nothing touches the list until the sort is done.
 */
std::vector<KeyedRow<TextKey>> textKeys(const QList<ChipInfo>& chips, int column)
{
    std::vector<KeyedRow<TextKey>> keyed;
    if (chips.isEmpty())
        return keyed;
    keyed.reserve(size_t(chips.size()));

    // Units that every text shares decide nothing; the head starts after
    // them. Found while each text is at hand anyway.
    const QStringView first(cellText(chips.first(), column));
    qsizetype common = first.size();
    const int n = int(chips.size());
    for (int row = 0; row < n; ++row) {
        fetchAhead(chips, row, column);
        const QStringView text(cellText(chips.at(row), column));
        keyed.push_back({TextKey{{}, text, false}, row});
        common = std::min(common, text.size());
        qsizetype i = 0;
        while (i < common && text[i] == first[i])
            ++i;
        common = i;
    }

    for (size_t i = 0; i < keyed.size(); ++i) {
#if defined(__GNUC__)
        if (i + FetchAhead < keyed.size())
            __builtin_prefetch(keyed[i + FetchAhead].key.text.data() + common);
#endif
        KeyedRow<TextKey>& k = keyed[i];
        const QStringView text = k.key.text;
        qsizetype pos = common;
        for (quint64& word : k.key.head) {
            word = 0;
            for (int u = 0; u < TextKey::UnitsPerWord; ++u, ++pos)
                word = (word << 16) | (pos < text.size() ? text[pos].unicode() : 0u);
        }
        k.key.inHead = text.size() <= pos;
    }
    return keyed;
}

// Keys of a number or Kb column, found and read in two passes on purpose
// (see "Sorting" in docs/performance.md).
std::vector<KeyedRow<int>> numberKeys(const QList<ChipInfo>& chips, int column, bool cutKb)
{
    std::vector<QStringView> cells;
    const int n = int(chips.size());
    cells.reserve(size_t(n));
    for (int row = 0; row < n; ++row) {
        fetchAhead(chips, row, column);
        cells.push_back(QStringView(cellText(chips.at(row), column)));
    }

    std::vector<KeyedRow<int>> keyed;
    keyed.reserve(cells.size());
    for (size_t row = 0; row < cells.size(); ++row)
        keyed.push_back({numberKey(cells[row], cutKb), int(row)});
    return keyed;
}

// The rows of @p keyed in sorted order, or nothing when they are in order
// already. compareKeys() has the sign of the comparison of the two cell
// texts, so the order is theirs. The sort is stable: rows with equal keys
// keep the order they had, so a click on a second header orders ties by
// the first (see "Sorting" in docs/performance.md).
template <typename Key>
std::vector<int> sortedRows(std::vector<KeyedRow<Key>> keyed, Qt::SortOrder order)
{
    const int direction = order == Qt::AscendingOrder ? 1 : -1;
    bool ordered = true;
    for (size_t i = 1; i < keyed.size() && ordered; ++i)
        ordered = direction * compareKeys(keyed[i - 1].key, keyed[i].key) <= 0;
    if (ordered)
        return {};

    // Descending is the reversed comparison, not a reversed ascending result,
    // so equal keys are not forced into the opposite order.
    if (order == Qt::AscendingOrder) {
        std::stable_sort(keyed.begin(), keyed.end(), [](const KeyedRow<Key>& l, const KeyedRow<Key>& r) {
            return compareKeys(l.key, r.key) < 0;
        });
    } else {
        std::stable_sort(keyed.begin(), keyed.end(), [](const KeyedRow<Key>& l, const KeyedRow<Key>& r) {
            return compareKeys(l.key, r.key) > 0;
        });
    }

    std::vector<int> rows;
    rows.reserve(keyed.size());
    for (const KeyedRow<Key>& k : keyed)
        rows.push_back(k.row);
    return rows;
}

/*
 * Puts element sourceRows[i] of @p chips at position i.
 *
 * A list shared with someone else must be copied anyway; copying it straight
 * into the new order also lays the records out in memory in the order later
 * walks over the list will visit them. A list of our own is reordered in
 * place: QList keeps records behind pointers, so swapItemsAt() only exchanges
 * two pointers, and following the permutation's cycles moves no record and
 * copies no string.
 */
void applyOrder(QList<ChipInfo>& chips, const std::vector<int>& sourceRows)
{
    if (!chips.isDetached()) {
        QList<ChipInfo> ordered;
        ordered.reserve(chips.size());
        for (int row : sourceRows)
            ordered.append(chips.at(row));
        chips = ordered;
        return;
    }

    std::vector<bool> placed(sourceRows.size(), false);
    for (int start = 0; start < int(sourceRows.size()); ++start) {
        if (placed[size_t(start)])
            continue;
        // Position 'pos' still holds the record that started this cycle;
        // each swap fills 'pos' and carries that record one step further.
        int pos = start;
        placed[size_t(pos)] = true;
        for (int from = sourceRows[size_t(pos)]; from != start; from = sourceRows[size_t(pos)]) {
            chips.swapItemsAt(pos, from);
            pos = from;
            placed[size_t(pos)] = true;
        }
    }
}

// Orders @p chips as sort() orders the rows; detaches the list only when
// something moves.
void sortChips(QList<ChipInfo>& chips, int column, Qt::SortOrder order)
{
    if (!isColumn(column) || chips.size() < 2)
        return;
    std::vector<int> rows;
    switch (chipColumnKind(column)) {
    case ColumnKind::Text:
        rows = sortedRows(textKeys(chips, column), order);
        break;
    case ColumnKind::Number:
        rows = sortedRows(numberKeys(chips, column, false), order);
        break;
    case ColumnKind::Kilobits:
        rows = sortedRows(numberKeys(chips, column, true), order);
        break;
    }
    if (!rows.empty())
        applyOrder(chips, rows);
}

} // namespace

ChipInfoTableModel::ChipInfoTableModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

ChipInfoTableModel::~ChipInfoTableModel() = default;

void ChipInfoTableModel::setChipInfoList(const QList<ChipInfo>& list)
{
    beginResetModel();
    m_chips = list;
    endResetModel();
}

const QList<ChipInfo>& ChipInfoTableModel::chipInfoList() const
{
    return m_chips;
}

ChipInfo ChipInfoTableModel::index2chipInfo(const QModelIndex& index)
{
    return m_chips.value(index.row());
}

QModelIndex ChipInfoTableModel::info2index(ChipInfo info)
{
    for (int row = 0; row < m_chips.size(); ++row) {
        if (m_chips.at(row).deviceId == info.deviceId)
            return index(row, 0);
    }
    return QModelIndex();
}

QString ChipInfoTableModel::columnOfChipInfo(const ChipInfo& info, int column) const
{
    return cellText(info, column);
}

int ChipInfoTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_chips.size();
}

int ChipInfoTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ChipColumnCount;
}

QVariant ChipInfoTableModel::data(const QModelIndex& index, int role) const
{
    const int column = index.column();
    switch (role) {
    case Qt::TextAlignmentRole:
        if (!isColumn(column))
            return QVariant();
        return chipColumnKind(column) == ColumnKind::Text ? LeftAligned : RightAligned;
    case Qt::DisplayRole: {
        const int row = index.row();
        if (row < 0 || row >= m_chips.size())
            return QVariant();
        return columnOfChipInfo(m_chips.at(row), column);
    }
    default:
        return QVariant();
    }
}

QVariant ChipInfoTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || !isColumn(section))
        return QVariant();
    return chipColumnHeader(section);
}

Qt::ItemFlags ChipInfoTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

void ChipInfoTableModel::sort(int column, Qt::SortOrder order)
{
    beginResetModel();
    sortChips(m_chips, column, order);
    endResetModel();
}

} // namespace DEV
