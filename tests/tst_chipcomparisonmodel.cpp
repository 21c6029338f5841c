// SPDX-License-Identifier: BSD-3-Clause
// The comparison model: the transposed table with its headers, the rows marked where the shown texts differ, and
// the signals of every change, checked as well by Qt's model tester.

#include "chipcomparisonmodel.h"

#include <QAbstractItemModelTester>
#include <QFont>
#include <QTest>

using DEV::ChipComparisonModel;
using DEV::ChipInfo;
using L = QStringList;

namespace {

// A record from a data-file line: id, part number, series, match key, device, version, package, voltage, speed,
// auxiliary, counts.
ChipInfo chip(const QString& line)
{
    const L f = line.split(',');
    return ChipInfo{f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7], f[8], f[9], f.mid(10)};
}

// A and B differ in part number, version, speed, LUT, User Flash (" " is shown as it is, an empty count as 0), PLL
// (missing) and id; not in match key and auxiliary, which are not shown. C differs from A only in part number and id;
// A2 has A's part number. Z, N and M carry every count as "0", empty and missing: alike, as the table shows them.
const QHash<QChar, ChipInfo> Chips{
    {'A', chip("a,A,S,k,D1,,P,1.0V,C6,x,10,100,,0,8Kb,72Kb,,1,2")},
    {'B', chip("b,B,S,k2,D1,V,P,1.0V,C7,y,10,200,0,,8Kb,72Kb, ,1")},
    {'C', chip("c,C,S,k,D1,,P,1.0V,C6,x,10,100,,0,8Kb,72Kb,,1,2")},
    {'2', chip("a2,A,S,k,D1,,P,1.0V,C6,x,10,100,,0,8Kb,72Kb,,1,2")},
    {'E', ChipInfo()},
    {'Z', chip("z,Z,S,k,D1,,P,1.0V,C6,x,0,0,0,0,0,0,0,0,0")},
    {'N', chip("n,N,S,k,D1,,P,1.0V,C6,x,,,,,,,,,")},
    {'M', chip("m,M,S,k,D1,,P,1.0V,C6,x")},
};

QList<ChipInfo> chips(const QString& keys)
{
    QList<ChipInfo> list;
    for (const QChar key : keys)
        list << Chips.value(key);
    return list;
}

} // namespace

class TestChipComparisonModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // "*" marks a differing row, whose cells say so in DiffersRole and are bold; the vertical headers are the chip
    // table's, then "Device ID".
    void table_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<L>("expected");
        QTest::newRow("two chips") << "AB"
            << L{"*Part Number|A|B", " Series|S|S", " Device|D1|D1", "*Device Version||V", " Package|P|P",
                 "*Speed|C6|C7", " Voltage|1.0V|1.0V", " IO|10|10", "*LUT|100|200", " FF|0|0", " ROM16|0|0",
                 " SSRAM|8Kb|8Kb", " BSRAM|72Kb|72Kb", "*User Flash|0| ", " DSP|1|1", "*PLL|2|0", "*Device ID|a|b"};
        QTest::newRow("every count empty, missing or 0") << "ZNM"
            << L{"*Part Number|Z|N|M", " Series|S|S|S", " Device|D1|D1|D1", " Device Version|||", " Package|P|P|P",
                 " Speed|C6|C6|C6", " Voltage|1.0V|1.0V|1.0V", " IO|0|0|0", " LUT|0|0|0", " FF|0|0|0", " ROM16|0|0|0",
                 " SSRAM|0|0|0", " BSRAM|0|0|0", " User Flash|0|0|0", " DSP|0|0|0", " PLL|0|0|0", "*Device ID|z|n|m"};
        QTest::newRow("one chip: nothing differs") << "B"
            << L{" Part Number|B", " Series|S", " Device|D1", " Device Version|V", " Package|P", " Speed|C7",
                 " Voltage|1.0V", " IO|10", " LUT|200", " FF|0", " ROM16|0", " SSRAM|8Kb", " BSRAM|72Kb",
                 " User Flash| ", " DSP|1", " PLL|0", " Device ID|b"};
    }
    void table()
    {
        QFETCH(QString, keys);
        QFETCH(L, expected);
        ChipComparisonModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setChips(chips(keys));
        L rows;
        for (int r = 0; r < model.rowCount(); ++r) {
            QString row = (model.rowDiffers(r) ? "*" : " ") + model.headerData(r, Qt::Vertical).toString();
            for (int c = 0; c < model.columnCount(); ++c) {
                const QModelIndex cell = model.index(r, c);
                row += '|' + cell.data().toString();
                QCOMPARE(cell.data(ChipComparisonModel::DiffersRole), QVariant(model.rowDiffers(r)));
                QCOMPARE(cell.data(Qt::FontRole).isValid(), model.rowDiffers(r));
                QVERIFY(!model.rowDiffers(r) || cell.data(Qt::FontRole).value<QFont>().bold());
                QCOMPARE(cell.data(Qt::TextAlignmentRole), QVariant(r >= 7 && r <= 15 ? 130u : 129u)); // right, left
            }
            rows << row;
        }
        QCOMPARE(rows, expected);
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), keys.left(1));
        for (const QVariant& none : {model.headerData(keys.size(), Qt::Horizontal), model.headerData(17, Qt::Vertical),
                                     model.headerData(0, Qt::Vertical, Qt::ToolTipRole),
                                     model.index(0, 0).data(Qt::ToolTipRole), model.data(model.index(0, keys.size()))})
            QVERIFY(!none.isValid());
        QVERIFY(!model.rowDiffers(-1) && !model.rowDiffers(17));
    }

    // Starting from some chips, one change: the signals in order, then its result ("data ROW:FIRST-LAST" for the
    // rows whose marking turned, over the columns that stay), and the ids compared after.
    void changes_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("change");
        QTest::addColumn<L>("announced");
        QTest::addColumn<QString>("after");
        const L turned{"data 0:0-0", "data 3:0-0", "data 5:0-0", "data 8:0-0", "data 13:0-0", "data 15:0-0", "data 16:0-0"};
        QTest::newRow("add to none") << "" << "add A" << L{"insert 0-0", "true"} << "a";
        QTest::newRow("add a second: rows turned over the first") << "A" << "add B" << L{"insert 1-1"} + turned + L{"true"} << "a b";
        QTest::newRow("add a third that turns nothing") << "AB" << "add C" << L{"insert 2-2", "true"} << "a b c";
        QTest::newRow("add a part number again: refused") << "AB" << "add 2" << L{"false"} << "a b";
        QTest::newRow("add no chip: refused") << "A" << "add E" << L{"false"} << "a";
        QTest::newRow("remove the second: rows turned over the first") << "AB" << "remove B" << L{"remove 1-1"} + turned + L{"true"} << "a";
        QTest::newRow("remove the first, nothing turns") << "ABC" << "remove A" << L{"remove 0-0", "true"} << "b c";
        QTest::newRow("remove an unknown part number") << "AB" << "remove X" << L{"false"} << "a b";
        QTest::newRow("remove two columns") << "BAC" << "columns 0 2" << L{"remove 0-1"} + turned + L{"true"} << "c";
        QTest::newRow("remove columns past the end") << "AB" << "columns 1 2" << L{"false"} << "a b";
        QTest::newRow("remove no columns") << "AB" << "columns 0 0" << L{"false"} << "a b";
        QTest::newRow("set: no chip and repeats left out") << "A" << "set 2BEA" << L{"reset"} << "a2 b";
        QTest::newRow("clear") << "AB" << "clear" << L{"reset"} << "";
    }
    void changes()
    {
        QFETCH(QString, start);
        QFETCH(QString, change);
        QFETCH(L, announced);
        QFETCH(QString, after);
        ChipComparisonModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setChips(chips(start));
        L log;
        const auto range = [&log](const char* what) {
            return [&log, what](const QModelIndex&, int first, int last) { log << QStringLiteral("%1 %2-%3").arg(what).arg(first).arg(last); };
        };
        connect(&model, &QAbstractItemModel::columnsInserted, this, range("insert"));
        connect(&model, &QAbstractItemModel::columnsRemoved, this, range("remove"));
        connect(&model, &QAbstractItemModel::modelReset, this, [&log] { log << "reset"; });
        connect(&model, &QAbstractItemModel::dataChanged, this,
                [&log](const QModelIndex& from, const QModelIndex& to, const QVector<int>& roles) {
                    QCOMPARE(from.row(), to.row());
                    QCOMPARE(roles, (QVector<int>{ChipComparisonModel::DiffersRole, Qt::FontRole}));
                    log << QStringLiteral("data %1:%2-%3").arg(from.row()).arg(from.column()).arg(to.column());
                });
        const QString argument = change.section(' ', 1);
        if (change.startsWith("add"))
            log << QVariant(model.addChip(Chips.value(argument.at(0)))).toString();
        else if (change.startsWith("remove"))
            log << QVariant(model.removeChip(argument)).toString();
        else if (change.startsWith("columns"))
            log << QVariant(model.removeColumns(argument.section(' ', 0, 0).toInt(), argument.section(' ', 1).toInt())).toString();
        else if (change.startsWith("set"))
            model.setChips(chips(argument));
        else
            model.clear();
        QCOMPARE(log, announced);
        L ids;
        for (const ChipInfo& c : model.chips())
            ids << c.deviceId;
        QCOMPARE(ids.join(' '), after);
        QCOMPARE(model.columnCount(), ids.size());
        QCOMPARE(model.columnOf("B"), int(ids.indexOf("b")));
    }
};

QTEST_MAIN(TestChipComparisonModel)
#include "tst_chipcomparisonmodel.moc"
