// Column sorting: text, whole-number and "Kb" columns in both orders, columns
// outside the table, and a randomised comparison with a plain comparison sort.

#include "chipinfotablemodel.h"
#include "testhelpers.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

using DEV::ChipInfo;
using DEV::ChipInfoTableModel;
using TestHelpers::columnTexts;
using TestHelpers::ids;
using L = QStringList;

namespace {

enum Kind { Text, Number, KbSize };

Kind kindOf(int column)
{
    return column < 7 ? Text : column >= 10 && column <= 13 ? KbSize : Number;
}

// Marks a resource entry that the record does not carry at all.
const QString Missing = QStringLiteral("<missing>");

// Records showing @p texts in @p column, their ids counting up from 0.
QList<ChipInfo> listOf(int column, const QStringList& texts)
{
    QList<ChipInfo> list;
    for (const QString& text : texts) {
        ChipInfo c;
        c.deviceId = QString::number(list.size());
        QString* members[] = {&c.partNumber, &c.series, &c.device, &c.deviceVersion, &c.package, &c.speed, &c.voltage};
        if (column < 7)
            *members[column] = text;
        for (int k = 7; k < column; ++k)
            c.resources << QString::number(k);
        if (column >= 7 && text != Missing)
            c.resources << text << QStringLiteral("1");
        list << c;
    }
    return list;
}

QList<ChipInfo> rows(ChipInfoTableModel& model)
{
    QList<ChipInfo> out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.index2chipInfo(model.index(row, 0));
    return out;
}

// The comparison written out the plain way, cell texts built afresh each time.
struct LiteralLess
{
    const ChipInfoTableModel* model;
    int column;
    bool ascending;

    bool operator()(const ChipInfo& l, const ChipInfo& r) const
    {
        QString a = model->columnOfChipInfo(l, column);
        QString b = model->columnOfChipInfo(r, column);
        if (kindOf(column) == Text)
            return ascending ? QString::compare(a, b, Qt::CaseSensitive) < 0 : QString::compare(a, b, Qt::CaseSensitive) > 0;
        if (kindOf(column) == KbSize) {
            a.remove(QStringLiteral("Kb"), Qt::CaseSensitive);
            b.remove(QStringLiteral("Kb"), Qt::CaseSensitive);
        }
        return ascending ? a.toInt(nullptr, 10) < b.toInt(nullptr, 10) : a.toInt(nullptr, 10) > b.toInt(nullptr, 10);
    }
};

// Records full of ties and of texts that only some comparisons tell apart:
// texts that differ only after many equal units or only by a trailing U+0000,
// counts that are not plain digits, "Kb" in odd places, short resource lists.
// With @p prefix, every text cell starts with it.
QList<ChipInfo> randomChips(quint32 seed, int count, const QString& prefix)
{
    const QStringList words = L{"", "a", "A", "Z", "z", "9", "10", " ", "LV9QN88", "PC6/I5", "\xc3\xa9", "\xef\xbf\xbf",
                                "\xf0\x9f\x98\x80"} << QString(QChar(0));
    const QStringList counts{"", "0", "7", "-3", "+4", " 5", "5 ", "x", "007", "123456789", "1234567890",
                             "2147483647", "2147483648", "9999999999", "8Kb", "Kb8", "0Kb", "Kb", "64KB", "2Mb",
                             "16kb", "1Kb0Kb", "KbKb", "12KbKb", "0x10", "1234567890Kb", "1:", "1/"};
    QRandomGenerator rng(seed);
    const auto pick = [&rng](const QStringList& pool) { return pool.at(int(rng.bounded(quint32(pool.size())))); };
    QList<ChipInfo> list;
    for (int i = 0; i < count; ++i) {
        ChipInfo c;
        c.deviceId = QString::number(i);
        for (QString* m : {&c.partNumber, &c.series, &c.device, &c.deviceVersion, &c.package, &c.speed, &c.voltage}) {
            *m = prefix;
            for (int w = int(rng.bounded(7)); w > 0; --w)
                *m += pick(words);
        }
        for (int k = int(rng.bounded(11)); k > 0; --k) { // short lists too
            const QString n = QString::number(int(rng.bounded(40)) - 5);
            const int form = int(rng.bounded(3));
            c.resources << (form == 0 ? pick(counts) : form == 1 ? n : n + QLatin1String("Kb"));
        }
        list << c;
    }
    return list;
}

} // namespace

class TestChipInfoTableModelSort : public QObject
{
    Q_OBJECT

private slots:
    void orders_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("order");
        QTest::addColumn<QStringList>("cells");
        QTest::addColumn<QStringList>("expected");
        const int up = Qt::AscendingOrder;
        const QString nul(QChar(0));
        const QString a16(16, QLatin1Char('A'));

        QTest::newRow("IO: 9 before 10") << 7 << up << L{"10", "9", "100", ""} << L{"0", "9", "10", "100"};
        QTest::newRow("part number: 10 before 9") << 0 << up << L{"10", "9", "100"} << L{"10", "100", "9"};
        QTest::newRow("series: upper case first") << 1 << up << L{"a", "Z", "b", "B"} << L{"B", "Z", "a", "b"};
        QTest::newRow("device: UTF-16 units") << 2 << up << L{"\xef\xbf\xbf", "\xf0\x9f\x98\x80", "\xc3\xa9"}
                                              << L{"\xc3\xa9", "\xf0\x9f\x98\x80", "\xef\xbf\xbf"};
        QTest::newRow("package: 17th unit decides") << 4 << up << L{a16 + "C", "B", a16 + "B", a16}
                                                    << L{a16, a16 + "B", a16 + "C", "B"};
        QTest::newRow("package: 17th unit's case decides") << 4 << up << L{a16 + "b", "B", a16 + "B"}
                                                           << L{a16 + "B", a16 + "b", "B"};
        QTest::newRow("package: 17th unit, descending") << 4 << int(Qt::DescendingOrder) << L{a16 + "B", "B", a16 + "C", a16}
                                                        << L{"B", a16 + "C", a16 + "B", a16};
        QTest::newRow("speed: trailing U+0000") << 5 << up << L{"A" + nul, "A", nul, "A" + nul + nul}
                                                << L{nul, "A", "A" + nul, "A" + nul + nul};
        QTest::newRow("ROM16: empty, 72Kb, 512Kb") << 10 << up << L{"512Kb", "", "72Kb"} << L{"0", "72Kb", "512Kb"};
        QTest::newRow("BSRAM: 64KB is 0") << 12 << up << L{"8Kb", "64KB", "1Kb"} << L{"64KB", "1Kb", "8Kb"};
        QTest::newRow("ROM16: kb is not a unit") << 10 << up << L{"8Kb", "16kb", "2Kb"} << L{"16kb", "2Kb", "8Kb"};
        QTest::newRow("SSRAM: every Kb cut") << 11 << up << L{"1Kb0Kb", "9Kb", "2"} << L{"2", "9Kb", "1Kb0Kb"};
        QTest::newRow("DSP: non-number is 0") << 14 << up << L{"5", "x", "-3"} << L{"-3", "x", "5"};
        QTest::newRow("LUT: overflow is 0") << 8 << up << L{"2147483648", "5", "-1"} << L{"-1", "2147483648", "5"};
        QTest::newRow("PLL: missing entry is 0") << 15 << up << L{"3", "1", Missing} << L{"0", "1", "3"};
        QTest::newRow("FF: other order value is descending") << 9 << 7 << L{"1", "3", "2"} << L{"3", "2", "1"};
    }
    void orders()
    {
        QFETCH(int, column);
        QFETCH(int, order);
        QFETCH(QStringList, cells);
        QFETCH(QStringList, expected);
        ChipInfoTableModel model;
        model.setChipInfoList(listOf(column, cells));
        model.sort(column, Qt::SortOrder(order));
        QCOMPARE(columnTexts(model, column), expected);
    }

    void orderKeptWhereNothingIsToSort()
    {
        // An ordered list, equal keys included, stays as it is.
        const QList<ChipInfo> ordered = listOf(0, {"A", "B", "B", "C"});
        ChipInfoTableModel model;
        model.setChipInfoList(ordered);
        model.sort(0, Qt::AscendingOrder);
        QCOMPARE(ids(rows(model)), ids(ordered));

        const QList<ChipInfo> chips = randomChips(7, 30, QString());
        model.setChipInfoList(chips);
        for (int column : {16, -1, 1000}) {
            model.sort(column, Qt::AscendingOrder);
            model.sort(column, Qt::DescendingOrder);
        }
        QCOMPARE(ids(rows(model)), ids(chips));

        // The caller's list shares its data with the model and must not move.
        const QList<ChipInfo> copy = listOf(8, {"3", "1", "2"});
        model.setChipInfoList(copy);
        model.sort(8, Qt::AscendingOrder);
        QCOMPARE(columnTexts(model, 8), (L{"1", "2", "3"}));
        QCOMPARE(ids(copy), (L{"0", "1", "2"}));
    }

    void agreesWithPlainComparisonSort_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("ascending");
        QTest::addColumn<QString>("prefix");
        // Every column with the kind kindOf() gives it; a long prefix shared
        // by every text moves all differences far into the texts.
        for (int column = 0; column < 16; ++column) {
            for (bool ascending : {true, false}) {
                QTest::addRow("column %d, %d", column, int(ascending)) << column << ascending << QString();
                if (column < 7)
                    QTest::addRow("column %d, %d, shared prefix", column, int(ascending))
                        << column << ascending << QStringLiteral("GW1NR-LV9QN88PC6/I5-");
            }
        }
    }
    void agreesWithPlainComparisonSort()
    {
        QFETCH(int, column);
        QFETCH(bool, ascending);
        QFETCH(QString, prefix);
        const QList<ChipInfo> chips = randomChips(quint32(1000 * (ascending + 2 * prefix.isEmpty()) + column), 600, prefix);
        ChipInfoTableModel model;
        model.setChipInfoList(chips);
        model.sort(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
        const QList<ChipInfo> sorted = rows(model);
        QCOMPARE(sorted.size(), chips.size());
        const LiteralLess less{&model, column, ascending};
        QList<ChipInfo> reference = chips;
        std::sort(reference.begin(), reference.end(), less);

        // Equal keys may come in any order, so position by position the two
        // need only be equivalent; for text columns that means the same text.
        QStringList before, after;
        for (int i = 0; i < sorted.size(); ++i) {
            QVERIFY2(!less(sorted.at(i), reference.at(i)) && !less(reference.at(i), sorted.at(i)),
                     qPrintable(QStringLiteral("row %1: '%2' where '%3' belongs")
                                    .arg(i)
                                    .arg(model.columnOfChipInfo(sorted.at(i), column),
                                         model.columnOfChipInfo(reference.at(i), column))));
            before << TestHelpers::fields(chips.at(i)).join(QChar(0x1e));
            after << TestHelpers::fields(sorted.at(i)).join(QChar(0x1e));
        }
        // The same records, nothing lost, doubled or altered.
        before.sort();
        after.sort();
        QCOMPARE(after, before);
    }
};

QTEST_MAIN(TestChipInfoTableModelSort)
#include "tst_chipinfotablemodel_sort.moc"
