// SPDX-License-Identifier: BSD-3-Clause
#include "chipcolumns.h"
#include "chipcolumns_p.h"

#include "parallel_p.h"
#include "tuning_p.h"

#include <QStringView>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>
#include <vector>

namespace DEV {

namespace {

struct Column
{
    const char* header;
    ColumnKind kind;
    int searchGroup;
    // The search menu's word for the column, where it differs from the header.
    const char* searchName;
};

// Speed comes before Voltage on purpose, the reverse of the record's member
// order. The texts are fixed English, not translated. The search menu has
// always said "UserFlash" in one word while the table says "User Flash";
// users know both, so both stay.
constexpr Column Columns[ChipColumnCount] = {
    {"Part Number", ColumnKind::Text, 2, nullptr},
    {"Series", ColumnKind::Text, 1, nullptr},
    {"Device", ColumnKind::Text, 3, nullptr},
    {"Device Version", ColumnKind::Text, 4, nullptr},
    {"Package", ColumnKind::Text, 5, nullptr},
    {"Speed", ColumnKind::Text, 6, nullptr},
    {"Voltage", ColumnKind::Text, 7, nullptr},
    {"IO", ColumnKind::Number, 8, nullptr},
    {"LUT", ColumnKind::Number, 9, nullptr},
    {"FF", ColumnKind::Number, 10, nullptr},
    {"ROM16", ColumnKind::Kilobits, 11, nullptr},
    {"SSRAM", ColumnKind::Kilobits, 12, nullptr},
    {"BSRAM", ColumnKind::Kilobits, 13, nullptr},
    {"User Flash", ColumnKind::Kilobits, 14, "UserFlash"},
    {"DSP", ColumnKind::Number, 15, nullptr},
    {"PLL", ColumnKind::Number, 16, nullptr},
};

} // namespace

QString chipColumnHeader(int column)
{
    return pimpl::isChipColumn(column) ? QString::fromLatin1(Columns[column].header) : QString();
}

ColumnKind chipColumnKind(int column)
{
    return pimpl::isChipColumn(column) ? Columns[column].kind : ColumnKind::Text;
}

const QString& chipColumnValue(const ChipInfo& chip, int column)
{
    static const QString none;
    switch (ChipColumn(column)) {
    case ChipColumn::PartNumber:
        return chip.partNumber;
    case ChipColumn::Series:
        return chip.series;
    case ChipColumn::Device:
        return chip.device;
    case ChipColumn::DeviceVersion:
        return chip.deviceVersion;
    case ChipColumn::Package:
        return chip.package;
    case ChipColumn::Speed:
        return chip.speed;
    case ChipColumn::Voltage:
        return chip.voltage;
    default:
        break;
    }
    const int entry = column - FirstResourceColumn;
    if (!pimpl::isChipColumn(column) || entry >= chip.resources.size())
        return none;
    return chip.resources.at(entry);
}

int searchGroupColumn(int group)
{
    for (int column = 0; column < ChipColumnCount; ++column) {
        if (Columns[column].searchGroup == group)
            return column;
    }
    return -1;
}

QString searchGroupName(int group)
{
    if (group == 0)
        return QStringLiteral("All");
    const int column = searchGroupColumn(group);
    if (column < 0)
        return QString();
    const char* name = Columns[column].searchName;
    return QString::fromLatin1(name ? name : Columns[column].header);
}

namespace {

// The number a count cell sorts as: QString::toInt() of the text, with
// every "Kb" cut out first in a Kb column. The table knows no other unit,
// so "2Mb" counts 0 here, while a requirement reads it as 2048 kilobits
// (amountWithUnit() in chiprequirements.cpp).
int toIntCuttingKb(QStringView text, bool cutKb)
{
    QString number = text.toString();
    if (cutKb)
        number.remove(QLatin1String("Kb"), Qt::CaseSensitive);
    return number.toInt(nullptr, 10);
}

// The same number, read directly for almost every cell: a short run of
// ASCII digits (with "Kb" in size columns), which cannot overflow.
int numberKey(QStringView text, bool cutKb)
{
    qsizetype length = text.size();
    if (cutKb && text.endsWith(QLatin1String("Kb")))
        length -= 2;
    if (length >= 1 && length <= 9) {
        int value = 0;
        qsizetype i = 0;
        for (; i < length && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i)
            value = value * 10 + (text[i].unicode() - '0');
        if (i == length)
            return value;
    }
    return toIntCuttingKb(text, cutKb);
}

/*
 * A row's sort key: for number columns the number, for text columns the
 * first units packed three words deep with the first unit in the high bits,
 * so that comparing words compares units in order. Units below 256 pack
 * eight to a word, so the words hold the whole of a typical part number;
 * where a cell has a larger unit early on, every key packs four to a word.
 * Only cells that agree that far compare their texts. A sort of a million
 * part numbers thus moves small keys and seldom chases a string on the heap.
 */
struct Key
{
    quint64 head[3];
    int position; // in the rows given, which orders ties
    int number;   // a number column's value; for text, whether the text is all in head
};

// Packs the first units of @p text into @p key, Bits (8 or 16) to a unit;
// false when a unit does not fit.
template <int Bits>
bool pack(Key& key, QStringView text)
{
    constexpr int Units = 3 * 64 / Bits;
    const qsizetype n = std::min<qsizetype>(text.size(), Units);
    char16_t units[24] = {};
    if (n > 0) // an empty view may point nowhere
        std::memcpy(units, text.utf16(), size_t(n) * sizeof(char16_t));
    uchar bytes[24];
    char16_t widest = 0;
    for (int i = 0; i < Units; ++i) {
        widest |= units[i];
        if (Bits == 8) {
            bytes[i] = uchar(units[i]);
        } else {
            bytes[2 * i] = uchar(units[i] >> 8);
            bytes[2 * i + 1] = uchar(units[i]);
        }
    }
    if (Bits == 8 && widest > 0xFF)
        return false;
    for (int w = 0; w < 3; ++w)
        key.head[w] = qFromBigEndian<quint64>(bytes + 8 * w);
    key.number = text.size() <= Units;
    return true;
}

/*
 * @p keys (in position order) ordered by their first word, ascending or
 * descending, ties in position order: a radix sort from the lowest digit
 * that moves whole keys, so that ordering the ties afterwards reads keys
 * that lie together. Digits that every key shares are skipped; long lists
 * take sixteen bits a pass (Tuning::sortWideDigitsFrom).
 */
void byFirstWord(Key* first, Key* last, bool descending)
{
    quint64 varying = 0;
    for (const Key* key = first; key != last; ++key)
        varying |= key->head[0] ^ first->head[0];
    if (varying == 0) // nothing to move, so no room to move it into
        return;
    const int bits = last - first < pimpl::tuning().sortWideDigitsFrom ? 8 : 16;
    const quint64 mask = (quint64(1) << bits) - 1;
    const quint64 flip = descending ? ~quint64(0) : 0;
    std::vector<quint32> start(size_t(mask) + 2);
    std::vector<Key> spare(size_t(last - first));
    Key *from = first, *to = spare.data();
    for (int shift = 0; shift < 64; shift += bits) {
        if (((varying >> shift) & mask) == 0)
            continue;
        const auto digit = [&](const Key& key) { return size_t(((key.head[0] ^ flip) >> shift) & mask); };
        std::fill(start.begin(), start.end(), 0);
        for (const Key* key = from; key != from + spare.size(); ++key)
            ++start[digit(*key) + 1];
        std::partial_sum(start.begin(), start.end(), start.begin());
        for (const Key* key = from; key != from + spare.size(); ++key)
            to[start[digit(*key)]++] = *key;
        std::swap(from, to);
    }
    if (from != first)
        std::copy(from, from + spare.size(), first);
}

/*
 * One sortChipRows(): the rows keyed and ordered in parts, a long list's
 * parts on several threads at once, and the parts merged. Only keys move.
 */
class RowSort
{
private:
    struct Part
    {
        int from = 0, to = 0;
        bool narrow = true; // text packed eight bits to a unit
        bool moved = false;
    };

    QStringView cell(const Key& key) const { return chipColumnValue(m_chips.at(m_rows.at(key.position)), m_column); }

    int compare(const Key& l, const Key& r) const
    {
        if (m_kind != ColumnKind::Text)
            return l.number < r.number ? -1 : int(l.number > r.number);
        for (int w = 0; w < 3; ++w) {
            if (l.head[w] != r.head[w])
                return l.head[w] < r.head[w] ? -1 : 1;
        }
        // Past the end a head holds 0, the same as U+0000, so equal heads
        // that hold both texts whole mean that the shorter is a prefix of
        // the longer; only other ties compare the texts.
        const QStringView a = cell(l), b = cell(r);
        if (l.number && r.number)
            return a.size() < b.size() ? -1 : int(a.size() > b.size());
        return a.compare(b, Qt::CaseSensitive);
    }

    // Ties keep their order in the input: its position is the last key, so
    // a plain (unstable) sort gives the stable order.
    bool before(const Key& l, const Key& r) const
    {
        const int c = compare(l, r);
        return c != 0 ? (m_descending ? c > 0 : c < 0) : l.position < r.position;
    }
    auto ordering() const
    {
        return [this](const Key& l, const Key& r) { return before(l, r); };
    }

public:
    RowSort(const QList<ChipInfo>& chips, const QVector<int>& rows, int column, Qt::SortOrder order)
        : m_chips(chips)
        , m_rows(rows)
        , m_column(column)
        , m_kind(chipColumnKind(column))
        , m_descending(order != Qt::AscendingOrder) // any value but ascending sorts descending
        , m_keys(size_t(rows.size()))
    {
        const int n = int(rows.size()), parts = pimpl::partsFor(n, pimpl::tuning().sortParallelFrom);
        for (int p = 0; p < parts; ++p)
            m_parts.push_back({int(pimpl::partStart(n, p, parts)), int(pimpl::partStart(n, p + 1, parts))});
    }

    // Keys and orders every part. Keys compare only when their parts packed
    // them alike, so when one part could not pack its text narrow, the
    // others pack theirs again wide.
    void sortParts()
    {
        pimpl::runParts(int(m_parts.size()), [this](int p) { sortPart(m_parts[size_t(p)]); });
        const bool narrow = std::all_of(m_parts.begin(), m_parts.end(), [](const Part& part) { return part.narrow; });
        for (Part& part : m_parts) {
            if (part.narrow && !narrow) {
                part.narrow = false;
                sortPart(part);
            }
        }
    }

    // Merges the ordered parts; false when no row moved.
    bool mergeParts()
    {
        bool moved = std::any_of(m_parts.begin(), m_parts.end(), [](const Part& part) { return part.moved; });
        for (size_t p = 1; p < m_parts.size(); ++p) {
            Key* const middle = m_keys.data() + m_parts[p].from;
            if (before(*middle, *(middle - 1))) {
                std::inplace_merge(m_keys.data(), middle, m_keys.data() + m_parts[p].to, ordering());
                moved = true;
            }
        }
        return moved;
    }

    QVector<int> sortedRows() const
    {
        QVector<int> sorted(m_rows.size());
        for (size_t i = 0; i < m_keys.size(); ++i)
            sorted[int(i)] = m_rows.at(m_keys[i].position);
        return sorted;
    }

private:
    // Keys the rows of @p part, packing text as narrow as it allows.
    void keyPart(Part& part)
    {
        const bool cutKb = m_kind == ColumnKind::Kilobits;
        for (int k = part.from; k < part.to; ++k) {
            Key& key = m_keys[size_t(k)];
            key.position = k;
            if (m_kind != ColumnKind::Text)
                key.number = numberKey(cell(key), cutKb);
            else if (!part.narrow || !(part.narrow = pack<8>(key, cell(key))))
                pack<16>(key, cell(key));
        }
        for (int k = part.from; !part.narrow && k < part.to; ++k) // those packed narrow before the first wide one
            pack<16>(m_keys[size_t(k)], cell(m_keys[size_t(k)]));
    }

    // Orders the keys of @p part; a part already in order costs no more than
    // that check. Text goes first by the first word, a digit at a time, which
    // compares nothing; then each run of equal first words, mostly short, by
    // everything.
    void sortPart(Part& part)
    {
        keyPart(part);
        Key* const first = m_keys.data() + part.from;
        Key* const last = m_keys.data() + part.to;
        part.moved = std::adjacent_find(first, last, [this](const Key& l, const Key& r) { return before(r, l); }) != last;
        if (!part.moved)
            return;
        if (m_kind != ColumnKind::Text) {
            std::sort(first, last, ordering());
            return;
        }
        byFirstWord(first, last, m_descending);
        for (Key *from = first, *to = first; from != last; from = to) {
            for (to = from + 1; to != last && to->head[0] == from->head[0];)
                ++to;
            std::sort(from, to, ordering());
        }
    }

    const QList<ChipInfo>& m_chips;
    const QVector<int>& m_rows;
    const int m_column;
    const ColumnKind m_kind;
    const bool m_descending;
    std::vector<Key> m_keys;
    std::vector<Part> m_parts;
};

} // namespace

QVector<int> sortChipRows(const QList<ChipInfo>& chips, QVector<int> rows, int column, Qt::SortOrder order)
{
    if (!pimpl::isChipColumn(column) || rows.size() < 2)
        return rows;
    RowSort sort(chips, rows, column, order);
    sort.sortParts();
    return sort.mergeParts() ? sort.sortedRows() : rows;
}

namespace pimpl {

QString chipCellText(const ChipInfo& chip, int column)
{
    // The loader keeps lines that end early, so a record may carry fewer
    // than nine counts; a missing count is shown like an empty one, as 0.
    const QString& value = chipColumnValue(chip, column);
    if (value.isEmpty() && column >= FirstResourceColumn && pimpl::isChipColumn(column))
        return QStringLiteral("0");
    return pimpl::isChipColumn(column) ? value : QString();
}

uint chipColumnAlignment(int column)
{
    return (chipColumnKind(column) == ColumnKind::Text ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter;
}

QVector<int> plainSortedRows(const QList<ChipInfo>& chips, QVector<int> rows, int column, Qt::SortOrder order)
{
    if (!pimpl::isChipColumn(column))
        return rows;
    const ColumnKind kind = chipColumnKind(column);
    const auto compare = [&](int l, int r) {
        const QString& a = chipColumnValue(chips.at(l), column);
        const QString& b = chipColumnValue(chips.at(r), column);
        if (kind == ColumnKind::Text)
            return a.compare(b, Qt::CaseSensitive);
        const int x = toIntCuttingKb(a, kind == ColumnKind::Kilobits), y = toIntCuttingKb(b, kind == ColumnKind::Kilobits);
        return x < y ? -1 : int(x > y);
    };
    const int direction = order == Qt::AscendingOrder ? 1 : -1;
    std::stable_sort(rows.begin(), rows.end(), [&](int l, int r) { return direction * compare(l, r) < 0; });
    return rows;
}

} // namespace pimpl

} // namespace DEV
