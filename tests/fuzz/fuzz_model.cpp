// libFuzzer target: the chip table model under random sequences of list
// changes, sorts and queries. Nothing may crash, the model must stay
// consistent, and every sort must order the cells as the plain comparison of
// cell texts does.

#include "chipinfotablemodel.h"
#include "fuzzhelpers.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>

using DEV::ChipInfo;
using DEV::ChipInfoTableModel;

namespace {

QString fuzzCell(FuzzedDataProvider& in)
{
    static const char* const Pieces[] = {"", "0", "9", "10", "-3", "72Kb", "64KB", "2Mb", "Kb", "KbKb", "1Kb2",
                                         " 5", "a", "B", "Z", "\xC3\xA4", "2147483647", "2147483648", "+7", "x"};
    QString s;
    const int parts = in.ConsumeIntegralInRange<int>(0, 2);
    for (int i = 0; i < parts; ++i)
        s += QString::fromUtf8(Pieces[in.ConsumeIntegralInRange<size_t>(0, sizeof(Pieces) / sizeof(*Pieces) - 1)]);
    return s;
}

QList<ChipInfo> fuzzList(FuzzedDataProvider& in)
{
    QList<ChipInfo> list;
    const int rows = in.ConsumeIntegralInRange<int>(0, 40);
    for (int r = 0; r < rows; ++r) {
        ChipInfo c;
        c.deviceId = QString::number(in.ConsumeIntegralInRange<int>(0, 9));
        for (QString* m : {&c.partNumber, &c.series, &c.device, &c.deviceVersion, &c.package, &c.speed, &c.voltage})
            *m = fuzzCell(in);
        const int counts = in.ConsumeIntegralInRange<int>(0, 11);
        for (int i = 0; i < counts; ++i)
            c.resources << fuzzCell(in);
        list << c;
    }
    return list;
}

int kindOf(int column)
{
    if (column >= 0 && column <= 6)
        return 0;
    if (column >= 10 && column <= 13)
        return 2;
    return 1;
}

// The comparison a sort of @p column must agree with: <0, 0 or >0.
int compareCells(const QString& a, const QString& b, int column)
{
    switch (kindOf(column)) {
    case 0:
        return a.compare(b, Qt::CaseSensitive);
    case 1: {
        const int x = a.toInt(nullptr, 10), y = b.toInt(nullptr, 10);
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    default: {
        QString l = a, r = b;
        l.remove(QLatin1String("Kb"), Qt::CaseSensitive);
        r.remove(QLatin1String("Kb"), Qt::CaseSensitive);
        const int x = l.toInt(nullptr, 10), y = r.toInt(nullptr, 10);
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    FuzzHelpers::init(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    ChipInfoTableModel model;
    QList<ChipInfo> held;
    while (in.remaining_bytes() > 0) {
        switch (in.ConsumeIntegralInRange<int>(0, 5)) {
        case 0:
            held = fuzzList(in);
            model.setChipInfoList(held);
            break;
        case 1: {
            const int column = in.ConsumeIntegralInRange<int>(-2, 17);
            const Qt::SortOrder order = in.ConsumeBool() ? Qt::AscendingOrder : Qt::DescendingOrder;
            model.sort(column, order);
            if (model.rowCount() != held.size())
                std::abort();
            if (column >= 0 && column < 16) {
                for (int r = 1; r < model.rowCount(); ++r) {
                    const QString a = model.data(model.index(r - 1, column)).toString();
                    const QString b = model.data(model.index(r, column)).toString();
                    const int c = compareCells(a, b, column);
                    if (order == Qt::AscendingOrder ? c > 0 : c < 0)
                        std::abort();
                }
            }
            break;
        }
        case 2: {
            const int row = in.ConsumeIntegralInRange<int>(-2, model.rowCount() + 1);
            const int column = in.ConsumeIntegralInRange<int>(-2, 17);
            const QModelIndex index = model.index(row, column);
            model.data(index, Qt::DisplayRole);
            model.data(index, Qt::TextAlignmentRole);
            model.flags(index);
            const ChipInfo chip = model.index2chipInfo(index);
            if (index.isValid() && model.info2index(chip).row() > row)
                std::abort(); // the first row with that identifier is at or before this one
            break;
        }
        case 3:
            model.headerData(in.ConsumeIntegralInRange<int>(-2, 17),
                             in.ConsumeBool() ? Qt::Horizontal : Qt::Vertical, in.ConsumeIntegralInRange<int>(0, 13));
            break;
        case 4: {
            ChipInfo probe;
            probe.deviceId = QString::number(in.ConsumeIntegralInRange<int>(0, 10));
            const QModelIndex found = model.info2index(probe);
            if (found.isValid() && model.index2chipInfo(found).deviceId != probe.deviceId)
                std::abort();
            break;
        }
        default:
            // The very list already held: still a full reset, same rows.
            model.setChipInfoList(held);
            break;
        }
    }
    return 0;
}
