// SPDX-License-Identifier: BSD-3-Clause
#include "chipcolumns.h"

#include <QStringView>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

#if defined(__SSE2__)
constexpr bool SSE2Packs = true;
#else
constexpr bool SSE2Packs = false;
#endif

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
#if defined(__SSE2__)
    if (Bits == 8) {
        // Three times eight units: any above 255, and the units as bytes.
        __m128i wide = _mm_setzero_si128();
        for (int c = 0; c < 3; ++c) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + 8 * c));
            wide = _mm_or_si128(wide, _mm_srli_epi16(v, 8));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes + 8 * c), _mm_packus_epi16(v, v));
        }
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(wide, _mm_setzero_si128())) != 0xFFFF)
            return false;
    }
#endif
    char16_t widest = 0;
    for (int i = 0; i < Units && (Bits == 16 || !SSE2Packs); ++i) {
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

// A key's first two words, turned over for a descending order, and where it is.
struct Item
{
    quint64 word[2];
    int position;
};

/*
 * @p keys (which are in position order) ordered by their first word,
 * ascending or descending, ties in position order: a radix sort from the
 * lowest byte, skipping the bytes that every key shares.
 */
std::vector<Item> byFirstWord(const std::vector<Key>& keys, bool descending)
{
    std::vector<Item> items(keys.size()), spare(keys.size());
    quint64 varying = 0;
    for (size_t i = 0; i < keys.size(); ++i) {
        const quint64 flip = descending ? ~quint64(0) : 0;
        items[i] = {{keys[i].head[0] ^ flip, keys[i].head[1] ^ flip}, keys[i].position};
        varying |= items[i].word[0] ^ items[0].word[0];
    }
    for (int shift = 0; shift < 64; shift += 8) {
        if (((varying >> shift) & 0xFF) == 0)
            continue;
        size_t start[257] = {};
        for (const Item& item : items)
            ++start[((item.word[0] >> shift) & 0xFF) + 1];
        for (int digit = 0; digit < 256; ++digit)
            start[digit + 1] += start[digit];
        for (const Item& item : items)
            spare[start[(item.word[0] >> shift) & 0xFF]++] = item;
        items.swap(spare);
    }
    return items;
}

} // namespace

QVector<int> sortChipRows(const QList<ChipInfo>& chips, QVector<int> rows, int column, Qt::SortOrder order)
{
    if (!isColumn(column) || rows.size() < 2)
        return rows;
    const auto cell = [&](const Key& k) { return QStringView(chipColumnValue(chips.at(rows.at(k.position)), column)); };
    const bool text = chipColumnKind(column) == ColumnKind::Text;
    const bool cutKb = chipColumnKind(column) == ColumnKind::Kilobits;
    std::vector<Key> keys(size_t(rows.size()));
    bool narrow = true;
    for (int i = 0; i < rows.size(); ++i) {
        Key& key = keys[size_t(i)];
        key.position = i;
        const QStringView value(chipColumnValue(chips.at(rows.at(i)), column));
        if (!text)
            key.number = numberKey(value, cutKb);
        else if (narrow)
            narrow = pack<8>(key, value);
    }
    if (text && !narrow) {
        for (Key& key : keys)
            pack<16>(key, cell(key));
    }
    const auto compare = [&](const Key& l, const Key& r) {
        if (!text)
            return l.number < r.number ? -1 : (l.number > r.number ? 1 : 0);
        const int c = compareHeads(l, r);
        return c != 0 ? c : compareTails(l, r, cell(l), cell(r));
    };

    const int direction = order == Qt::AscendingOrder ? 1 : -1;
    bool inOrder = true;
    for (size_t i = 1; i < keys.size() && inOrder; ++i)
        inOrder = direction * compare(keys[i - 1], keys[i]) <= 0;
    if (inOrder)
        return rows;
    // Ties keep their order in the input: its position is the last key, so
    // a plain (unstable) sort gives the stable order.
    const auto before = [&](const Key& l, const Key& r) {
        const int c = compare(l, r);
        return c != 0 ? direction * c < 0 : l.position < r.position;
    };
    std::vector<int> positions;
    positions.reserve(keys.size());
    if (text) {
        // First by the first word, a byte at a time, which compares nothing;
        // then each run of equal first words, mostly short, by the second
        // word and, where that agrees too, by everything.
        std::vector<Item> items = byFirstWord(keys, order != Qt::AscendingOrder);
        for (size_t from = 0, to = 0; from < items.size(); from = to) {
            for (to = from + 1; to < items.size() && items[to].word[0] == items[from].word[0];)
                ++to;
            std::sort(items.begin() + qsizetype(from), items.begin() + qsizetype(to), [&](const Item& l, const Item& r) {
                if (l.word[1] != r.word[1])
                    return l.word[1] < r.word[1];
                return before(keys[size_t(l.position)], keys[size_t(r.position)]);
            });
        }
        for (const Item& item : items)
            positions.push_back(item.position);
    } else {
        std::sort(keys.begin(), keys.end(), before);
        for (const Key& key : keys)
            positions.push_back(key.position);
    }
    QVector<int> sorted(rows.size());
    for (size_t i = 0; i < positions.size(); ++i)
        sorted[int(i)] = rows.at(positions[i]);
    return sorted;
}

} // namespace DEV
