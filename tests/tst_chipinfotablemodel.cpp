// SPDX-License-Identifier: BSD-3-Clause
// The chip table model: headers, cell texts and alignment, the row <-> chip mappings, one reset pair for every
// change, and sorting: exact orders per column kind, and a seeded comparison with the plain cell comparison.

#include "chipcolumns_p.h"
#include "chipinfotablemodel_p.h"
#include "reference/reference.h"
#include "testhelpers.h"

#include <QAbstractItemModelTester>

#include <numeric>

using DEV::ChipInfo;
using DEV::ChipInfoTableModel;
using TestHelpers::columnTexts;
using TestHelpers::fields;
using L = QStringList;

namespace {

ChipInfo chip(const QString& id, const QString& pn, const L& resources = L())
{
    return ChipInfo{id, pn, {}, {}, {}, {}, {}, {}, {}, {}, resources};
}

/// Records showing @p texts in @p column ("<missing>": no such count), their ids counting up from 0.
QList<ChipInfo> listOf(int column, const L& texts)
{
    QList<ChipInfo> list;
    for (const QString& text : texts) {
        ChipInfo c = chip(QString::number(list.size()), QString(), QVector<QString>(qMax(column - 7, 0), "1").toList());
        QString* members[] = {&c.partNumber, &c.series, &c.device, &c.deviceVersion, &c.package, &c.speed, &c.voltage};
        if (column < 7)
            *members[column] = text;
        else if (text != QLatin1String("<missing>"))
            c.resources << text << QStringLiteral("1");
        list << c;
    }
    return list;
}

L rowIds(ChipInfoTableModel& model)
{
    L out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.index2chipInfo(model.index(row, 0)).deviceId;
    return out;
}

QList<ChipInfo> randomRows(quint32 seed, int count)
{
    QRandomGenerator rng(seed);
    const auto choose = [&rng](int n) { return int(rng.bounded(n)); };
    return Reference::randomRows(choose, count);
}

} // namespace

class TestChipInfoTableModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Speed comes before voltage, unlike the record; id, match key and auxiliary are not shown; an empty or missing
    // count shows as 0. Outside the table, and for other roles, there is nothing.
    void cells()
    {
        const ChipInfo full = TestHelpers::Catalogues().load("m0,m1,m2,m3,m4,m5,m6,m7,m8,m9,11,22,33,44Kb,55Kb,, ,88,99,x")
                                  ->allChipInfo().value(0);
        const L headers{"Part Number", "Series", "Device", "Device Version", "Package", "Speed", "Voltage", "IO", "LUT",
                        "FF", "ROM16", "SSRAM", "BSRAM", "User Flash", "DSP", "PLL"};
        const L texts{"m1", "m2", "m4", "m5", "m6", "m8", "m7", "11", "22", "33", "44Kb", "55Kb", "0", " ", "88", "99"};
        ChipInfoTableModel model;
        model.setChipInfoList({chip("other", ""), full, chip("short", "", {"5"})});
        QCOMPARE(model.columnCount(), 16);
        for (int column = 0; column < 16; ++column) {
            QCOMPARE(model.headerData(column, Qt::Horizontal).toString(), headers.at(column));
            const QModelIndex index = model.index(1, column);
            QCOMPARE(model.data(index).toString(), texts.at(column));
            QCOMPARE(model.columnOfChipInfo(full, column), texts.at(column));
            QCOMPARE(model.data(index, Qt::TextAlignmentRole), QVariant(column < 7 ? 129u : 130u));
            QCOMPARE(model.flags(index), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
            QCOMPARE(model.data(model.index(2, column)).toString(), QString(column == 7 ? "5" : column > 7 ? "0" : ""));
        }
        for (const auto& [section, orientation, role] :
             {std::make_tuple(16, Qt::Horizontal, int(Qt::DisplayRole)), std::make_tuple(-1, Qt::Horizontal, 0),
              std::make_tuple(0, Qt::Vertical, 0), std::make_tuple(0, Qt::Horizontal, int(Qt::ToolTipRole))})
            QVERIFY(!model.headerData(section, orientation, role).isValid());
        QCOMPARE(model.rowCount(model.index(0, 0)) + model.columnCount(model.index(0, 0)), 0);
        QCOMPARE(model.flags(QModelIndex()), Qt::NoItemFlags);
        for (int role : {int(Qt::EditRole), int(Qt::ToolTipRole), int(Qt::UserRole)})
            QVERIFY(!model.data(model.index(0, 12), role).isValid());
        QVERIFY(!model.data(QModelIndex(), Qt::TextAlignmentRole).isValid() && model.columnOfChipInfo(full, 16).isNull());
    }

    // A row's chip, whatever the column or model of the index; a chip's row is the first with its id, column 0.
    void rowsToChips()
    {
        ChipInfoTableModel model, other;
        model.setChipInfoList({chip("d1", "P1"), chip("d2", "P2", {"7"}), chip("d2", "P3")});
        other.setChipInfoList(listOf(0, {"a", "b", "c", "d"}));
        QCOMPARE(fields(model.index2chipInfo(other.index(1, 11))), fields(chip("d2", "P2", {"7"})));
        QCOMPARE(fields(model.index2chipInfo(other.index(3, 0))), fields(ChipInfo()));
        QVERIFY(!model.data(other.index(3, 0)).isValid());
        L rows;
        for (const char* id : {"d1", "d2", "d9", "D1"}) {
            const QModelIndex index = model.info2index(chip(id, "P3"));
            rows << QStringLiteral("%1,%2,%3").arg(index.row()).arg(index.column()).arg(index.model() == &model);
        }
        QCOMPARE(rows.join(' '), QStringLiteral("0,0,1 1,0,1 -1,-1,0 -1,-1,0"));
    }

    // The row count at both notifications of every change, new list or sort, even when nothing moves: the list
    // changes between the two, and nothing else is announced. Qt's model checks hold throughout.
    void oneResetPerChange()
    {
        ChipInfoTableModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        L seen;
        const auto note = [&] { seen << QString::number(model.rowCount()); };
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, note);
        connect(&model, &QAbstractItemModel::modelReset, this, note);
        connect(&model, &QAbstractItemModel::layoutChanged, this, [&] { seen << QStringLiteral("layout"); });
        const QList<ChipInfo> held = randomRows(1, 3);
        model.setChipInfoList(held);
        model.setChipInfoList(held);
        for (int column : {0, 12, 16, -1})
            model.sort(column, Qt::AscendingOrder);
        model.setChipInfoList({});
        model.setChipInfoList(randomRows(1, 1));
        model.sort(7, Qt::DescendingOrder);
        QCOMPARE(seen.join(' '), QStringLiteral("0 3 3 3 3 3 3 3 3 3 3 3 3 0 0 1 1 1"));
    }

    // "column order|cells|cells as sorted", order 0 ascending; any other value sorts descending.
    void sortOrders_data()
    {
        QTest::addColumn<QString>("sort");
        const char* const rows[][2] = {
            {"IO: 9 before 10, empty is 0", "7 0|10,9,100,|0,9,10,100"},
            {"part number: 10 before 9", "0 0|10,9,100|10,100,9"},
            {"series: upper case first", "1 0|a,Z,b,B|B,Z,a,b"},
            {"package: 17th unit decides", "4 0|AAAAAAAAAAAAAAAAC,B,AAAAAAAAAAAAAAAAb,AAAAAAAAAAAAAAAAB,AAAAAAAAAAAAAAAA|"
                                           "AAAAAAAAAAAAAAAA,AAAAAAAAAAAAAAAAB,AAAAAAAAAAAAAAAAC,AAAAAAAAAAAAAAAAb,B"},
            {"BSRAM: only Kb is a unit", "12 0|8Kb,64KB,16kb,,1Kb|64KB,16kb,0,1Kb,8Kb"},
            {"LUT: overflow and text are 0", "8 0|2147483648,5,x,-1|-1,2147483648,x,5"},
            {"PLL: missing entry is 0", "15 0|3,1,<missing>|0,1,3"},
            {"FF: other order value is descending", "9 7|1,3,2|3,2,1"},
        };
        for (const auto& row : rows)
            QTest::newRow(row[0]) << QString::fromLatin1(row[1]);
    }
    void sortOrders()
    {
        QFETCH(QString, sort);
        const L parts = sort.split('|');
        const int column = parts.at(0).section(' ', 0, 0).toInt();
        ChipInfoTableModel model;
        model.setChipInfoList(listOf(column, parts.at(1).split(',')));
        model.sort(column, Qt::SortOrder(parts.at(0).section(' ', 1).toInt()));
        QCOMPARE(columnTexts(model, column), parts.at(2).split(','));
    }

    // Rows of a list shown by position, in their order: a sort by any column orders them. Only the selector's own
    // route may say which column they follow, and a sort by it, ascending, then takes them at their word; any other
    // sort orders them, and orders them again after another sort.
    void rowsOfASharedList()
    {
        const QList<ChipInfo> chips = listOf(0, {"c", "a", "b", "d"});
        ChipInfoTableModel model;
        model.setChipInfoList(chips, {2, 3, 0});
        model.sort(0, Qt::AscendingOrder);
        QCOMPARE(rowIds(model), (L{"2", "0", "3"}));
        DEV::pimpl::ChipInfoTableModelPrivate::setOrderedRows(model, chips, {2, 3, 0}, 0);
        L seen;
        for (const auto& [column, order] : {std::make_pair(0, Qt::AscendingOrder), std::make_pair(0, Qt::DescendingOrder),
                                            std::make_pair(0, Qt::AscendingOrder), std::make_pair(16, Qt::DescendingOrder)}) {
            model.sort(column, order);
            seen << rowIds(model).join(',') + '/' + TestHelpers::ids(model.chipInfoList()).join(',');
        }
        QCOMPARE(seen, (L{"2,3,0/2,3,0", "3,0,2/3,0,2", "2,0,3/2,0,3", "2,0,3/2,0,3"}));
        model.setChipInfoList(chips, {});
        QCOMPARE(model.rowCount() + model.chipInfoList().size(), 0);
        QCOMPARE(fields(model.index2chipInfo(model.index(0, 0))), fields(ChipInfo()));
        model.setChipInfoList(chips);
        QCOMPARE(TestHelpers::ids(model.chipInfoList()), (L{"0", "1", "2", "3"}));
        model.sort(0, Qt::DescendingOrder);
        QCOMPARE(TestHelpers::ids(model.chipInfoList()), (L{"3", "0", "2", "1"}));
    }

    // Every column, both orders, a long prefix shared by every text that moves all differences far in, and texts
    // with or without units beyond U+00FF; the whole list, then chosen rows of it in an order of their own, each
    // sorted once more by another column the other way: the records come out in a plain stable sort's order, rows
    // with equal cells as they were, nothing lost, doubled or altered. The fast sort gives the plain one's order at
    // the defaults and at every extreme of its tuning (one part or seven, each threshold at zero or at its largest).
    void sortAgreesWithReference_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("ascending");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<int>("count");
        for (int column = 0; column < 16; ++column) {
            for (bool ascending : {true, false}) {
                QTest::addRow("column %d, %d", column, int(ascending)) << column << ascending << QString() << 600;
                if (column < 7)
                    QTest::addRow("column %d, %d, shared prefix", column, int(ascending))
                        << column << ascending << QStringLiteral("ZR1NR-LX9PK88PC6/I5-") << 600;
            }
        }
        QTest::newRow("long: wider digits, halves") << 2 << false << QStringLiteral("ZR") << TestHelpers::rounds(33000);
    }
    void sortAgreesWithReference()
    {
        QFETCH(int, column);
        QFETCH(bool, ascending);
        QFETCH(QString, prefix);
        QFETCH(int, count);
        QRandomGenerator rng(quint32(1000 * (ascending + 2 * prefix.isEmpty()) + column));
        const auto choose = [&rng](int n) { return int(rng.bounded(n)); };
        // A long list is sorted in two halves at once: units beyond U+00FF in the second only.
        const QList<ChipInfo> chips = count <= 600 ? Reference::randomRows(choose, count, prefix, column % 2 == 0)
                                                   : Reference::randomRows(choose, count / 2, prefix, false)
                + Reference::randomRows(choose, count / 2, prefix, true);
        QVector<int> all(int(chips.size())), chosen;
        std::iota(all.begin(), all.end(), 0);
        for (int k = int(chips.size()) - 1; k >= 0; k -= 1 + choose(3))
            chosen << k;
        // Each half in order, the whole not; a long list the model would sort the same way.
        const QVector<int> halves = Reference::sortedRows(chips, all.mid(count / 2), column, ascending)
            + Reference::sortedRows(chips, all.mid(0, count / 2), column, ascending);
        const Qt::SortOrder order = ascending ? Qt::AscendingOrder : Qt::DescendingOrder;
        for (const QVector<int>& rows : {halves, count > 600 ? all : QVector<int>()}) {
            const QVector<int> expected = Reference::sortedRows(chips, rows, column, ascending);
            QCOMPARE(DEV::pimpl::plainSortedRows(chips, rows, column, order), expected);
            for (const auto& [name, tuning] : TestHelpers::extremeTunings()) {
                const TestHelpers::ScopedTuning tuned(tuning);
                QVERIFY2(DEV::sortChipRows(chips, rows, column, order) == expected, name.constData());
            }
        }
        if (count > 600)
            return;
        ChipInfoTableModel model;
        for (const QVector<int>& rows : {all, chosen}) {
            if (rows.size() == chips.size())
                model.setChipInfoList(chips);
            else
                model.setChipInfoList(chips, rows);
            QVector<int> expected = rows;
            for (const auto& [by, up] : {std::make_pair(column, ascending), std::make_pair((column + 5) % 16, !ascending)}) {
                model.sort(by, up ? Qt::AscendingOrder : Qt::DescendingOrder);
                expected = Reference::sortedRows(chips, expected, by, up);
                L after, wanted;
                for (int row = 0; row < expected.size(); ++row) {
                    after << fields(model.index2chipInfo(model.index(row, 0))).join(QChar(0x1e));
                    wanted << fields(chips.at(expected.at(row))).join(QChar(0x1e));
                }
                QCOMPARE(model.rowCount(), int(expected.size()));
                QCOMPARE(after, wanted);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestChipInfoTableModel)
#include "tst_chipinfotablemodel.moc"
