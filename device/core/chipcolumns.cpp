// SPDX-License-Identifier: BSD-3-Clause
#include "chipcolumns.h"

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

bool isColumn(int column)
{
    return column >= 0 && column < ChipColumnCount;
}

} // namespace

QString chipColumnHeader(int column)
{
    return isColumn(column) ? QString::fromLatin1(Columns[column].header) : QString();
}

ColumnKind chipColumnKind(int column)
{
    return isColumn(column) ? Columns[column].kind : ColumnKind::Text;
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
    if (!isColumn(column) || entry >= chip.resources.size())
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

} // namespace DEV

namespace DEV {

namespace {

/*
 * The number a cell compares as. Almost every cell is a short run of ASCII
 * digits (with "Kb" in size columns), which cannot overflow and is read
 * directly; everything else takes QString::toInt(), which defines the order.
 */
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
    QString number = text.toString();
    if (cutKb)
        number.remove(QLatin1String("Kb"), Qt::CaseSensitive);
    return number.toInt(nullptr, 10);
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

inline int compareHeads(const Key& l, const Key& r)
{
    for (int w = 0; w < 3; ++w) {
        if (l.head[w] != r.head[w])
            return l.head[w] < r.head[w] ? -1 : 1;
    }
    return 0;
}

// For texts whose heads are equal. Past the end a head holds 0, the same as
// U+0000, so equal heads that hold both texts whole mean that the shorter
// is a prefix of the longer; only other ties compare the texts.
int compareTails(const Key& l, const Key& r, QStringView left, QStringView right)
{
    if (l.number && r.number)
        return left.size() < right.size() ? -1 : (left.size() > right.size() ? 1 : 0);
    return left.compare(right, Qt::CaseSensitive);
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

} // namespace

QVector<int> sortChipRows(const QList<ChipInfo>& chips, QVector<int> rows, int column, Qt::SortOrder order)
{
    if (!isColumn(column) || rows.size() < 2)
        return rows;
    const auto cell = [&](const Key& k) { return QStringView(chipColumnValue(chips.at(rows.at(k.position)), column)); };
    const bool text = chipColumnKind(column) == ColumnKind::Text;
    const bool cutKb = chipColumnKind(column) == ColumnKind::Kilobits;
    const auto compare = [&](const Key& l, const Key& r) {
        if (!text)
            return l.number < r.number ? -1 : (l.number > r.number ? 1 : 0);
        const int c = compareHeads(l, r);
        return c != 0 ? c : compareTails(l, r, cell(l), cell(r));
    };
    // Read once: the lambdas below, some on another thread, take the flag,
    // and any value but ascending sorts descending.
    const bool descending = order != Qt::AscendingOrder;
    const int direction = descending ? -1 : 1;
    // Ties keep their order in the input: its position is the last key, so
    // a plain (unstable) sort gives the stable order.
    const auto before = [&](const Key& l, const Key& r) {
        const int c = compare(l, r);
        return c != 0 ? direction * c < 0 : l.position < r.position;
    };

    std::vector<Key> keys(size_t(rows.size()));
    struct Part
    {
        int from = 0, to = 0;
        bool narrow = true; // text packed eight bits to a unit
        bool moved = false;
    };
    // Keys the rows of @p part, packing text as narrow as it allows, and
    // orders them; a part already in order costs no more than that check.
    const auto sortPart = [&](Part& part) {
        Key* const first = keys.data() + part.from;
        Key* const last = keys.data() + part.to;
        for (Key* key = first; key != last; ++key) {
            key->position = int(key - keys.data());
            const QStringView value(chipColumnValue(chips.at(rows.at(key->position)), column));
            if (!text)
                key->number = numberKey(value, cutKb);
            else if (!part.narrow || !(part.narrow = pack<8>(*key, value)))
                pack<16>(*key, value);
        }
        if (!part.narrow) { // keys packed narrow before the first wide one
            for (Key* key = first; key != last; ++key)
                pack<16>(*key, cell(*key));
        }
        part.moved = std::adjacent_find(first, last, [&](const Key& l, const Key& r) { return before(r, l); }) != last;
        if (!part.moved)
            return;
        if (!text) {
            std::sort(first, last, before);
            return;
        }
        // First by the first word, a digit at a time, which compares
        // nothing; then each run of equal first words, mostly short, by
        // everything.
        byFirstWord(first, last, descending);
        for (Key *from = first, *to = first; from != last; from = to) {
            for (to = from + 1; to != last && to->head[0] == from->head[0];)
                ++to;
            std::sort(from, to, before);
        }
    };
    // A long list in parts at once, merged afterwards.
    const int n = int(rows.size());
    std::vector<Part> parts(size_t(pimpl::partsFor(n, pimpl::tuning().sortParallelFrom)));
    for (size_t p = 0; p < parts.size(); ++p)
        parts[p] = {int(pimpl::partStart(n, int(p), int(parts.size()))), int(pimpl::partStart(n, int(p) + 1, int(parts.size())))};
    pimpl::runParts(int(parts.size()), [&](int p) { sortPart(parts[size_t(p)]); });
    // Keys compare only when their parts packed them alike.
    const bool narrow = std::all_of(parts.begin(), parts.end(), [](const Part& part) { return part.narrow; });
    for (Part& part : parts) {
        if (part.narrow && !narrow) {
            part.narrow = false;
            sortPart(part);
        }
    }
    bool moved = std::any_of(parts.begin(), parts.end(), [](const Part& part) { return part.moved; });
    for (size_t p = 1; p < parts.size(); ++p) {
        Key* const middle = keys.data() + parts[p].from;
        if (before(*middle, *(middle - 1))) {
            std::inplace_merge(keys.data(), middle, keys.data() + parts[p].to, before);
            moved = true;
        }
    }
    if (!moved)
        return rows;
    QVector<int> sorted(rows.size());
    for (size_t i = 0; i < keys.size(); ++i)
        sorted[int(i)] = rows.at(keys[i].position);
    return sorted;
}

} // namespace DEV
