// SPDX-License-Identifier: BSD-3-Clause
#include "chipcolumns.h"

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
