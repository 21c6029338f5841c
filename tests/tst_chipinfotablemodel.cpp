// The chip table model: headers, cell texts and alignment, the row <-> chip
// mappings, and one reset pair for every change.

#include "chipinfotablemodel.h"
#include "testhelpers.h"

#include <QAbstractItemModelTester>
#include <algorithm>
#include <QHeaderView>
#include <QTest>

using DEV::ChipInfo;
using DEV::ChipInfoTableModel;
using TestHelpers::columnTexts;

namespace {

ChipInfo chip(const QString& id, const QString& pn, const QStringList& resources = QStringList())
{
    ChipInfo c;
    c.deviceId = id;
    c.partNumber = pn;
    c.resources = resources;
    return c;
}

// Every member distinct, so that a cell showing the wrong member shows up.
ChipInfo fullChip()
{
    ChipInfo c = chip(QStringLiteral("ID-1"), QStringLiteral("PN-1"),
                      {"11", "22", "33", "44Kb", "55Kb", "66Kb", "77Kb", "88", "99", "extra"});
    c.series = QStringLiteral("SER");
    c.matchKey = QStringLiteral("MK");
    c.device = QStringLiteral("DEV");
    c.deviceVersion = QStringLiteral("B");
    c.package = QStringLiteral("PKG");
    c.voltage = QStringLiteral("1.2V");
    c.speed = QStringLiteral("C7");
    c.auxiliary = QStringLiteral("AUX");
    return c;
}

} // namespace

class TestChipInfoTableModel : public QObject
{
    Q_OBJECT

private slots:
    void columns_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("header");
        QTest::addColumn<QString>("text");
        const QStringList headers{"Part Number", "Series", "Device", "Device Version", "Package", "Speed",
                                  "Voltage", "IO", "LUT", "FF", "ROM16", "SSRAM", "BSRAM", "User Flash", "DSP", "PLL"};
        // Speed before voltage, unlike the record.
        const QStringList texts{"PN-1", "SER", "DEV", "B", "PKG", "C7", "1.2V", "11", "22", "33", "44Kb", "55Kb",
                                "66Kb", "77Kb", "88", "99"};
        for (int column = 0; column < 16; ++column)
            QTest::addRow("%d", column) << column << headers.at(column) << texts.at(column);
    }
    void columns()
    {
        QFETCH(int, column);
        QFETCH(QString, header);
        QFETCH(QString, text);
        ChipInfoTableModel model;
        QCOMPARE(model.headerData(column, Qt::Horizontal).toString(), header);
        model.setChipInfoList({chip(QStringLiteral("other"), QStringLiteral("first")), fullChip()});
        const QModelIndex index = model.index(1, column);
        QCOMPARE(model.data(index).toString(), text);
        QCOMPARE(model.columnOfChipInfo(fullChip(), column), text);
        const QVariant align = model.data(index, Qt::TextAlignmentRole);
        QCOMPARE(align.userType(), int(QMetaType::UInt));
        QCOMPARE(align.toUInt(), column < 7 ? 129u : 130u);
        QCOMPARE(model.flags(index), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    }

    void nothingOutsideTheTable()
    {
        ChipInfoTableModel model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), 16);
        for (const auto& [section, orientation, role] :
             {std::make_tuple(16, Qt::Horizontal, int(Qt::DisplayRole)), std::make_tuple(-1, Qt::Horizontal, 0),
              std::make_tuple(0, Qt::Vertical, 0), std::make_tuple(0, Qt::Horizontal, int(Qt::ToolTipRole)),
              std::make_tuple(7, Qt::Horizontal, int(Qt::TextAlignmentRole))})
            QVERIFY(!model.headerData(section, orientation, role).isValid());

        model.setChipInfoList({fullChip(), fullChip()});
        const QModelIndex parent = model.index(0, 0);
        QCOMPARE(model.rowCount(parent), 0);
        QCOMPARE(model.columnCount(parent), 0);
        for (int role : std::initializer_list<int>{Qt::EditRole, Qt::ToolTipRole, Qt::FontRole, Qt::BackgroundRole, Qt::CheckStateRole,
                         Qt::DecorationRole, int(Qt::UserRole)})
            QVERIFY(!model.data(model.index(0, 12), role).isValid());
        QVERIFY(!model.data(QModelIndex(), Qt::TextAlignmentRole).isValid());
        for (int column : {-1, 16})
            QVERIFY(model.columnOfChipInfo(fullChip(), column).isNull());
    }

    void emptyCounts_data()
    {
        QTest::addColumn<QStringList>("resources");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("text");
        const QStringList empties = QString(8, QLatin1Char(',')).split(QLatin1Char(','));
        QTest::newRow("empty IO") << empties << 7 << "0";
        QTest::newRow("empty PLL") << empties << 15 << "0";
        QTest::newRow("short list, present") << QStringList{"5", "6"} << 8 << "6";
        QTest::newRow("short list, missing") << QStringList{"5", "6"} << 9 << "0";
        QTest::newRow("blank kept") << QStringList{" "} << 7 << " ";
    }
    void emptyCounts()
    {
        QFETCH(QStringList, resources);
        QFETCH(int, column);
        QFETCH(QString, text);
        ChipInfoTableModel model;
        model.setChipInfoList({chip(QStringLiteral("id"), QStringLiteral("pn"), resources)});
        QCOMPARE(model.data(model.index(0, column)).toString(), text);
        // Text members get no stand-in: an empty package is an empty cell.
        QCOMPARE(model.data(model.index(0, 4)), QVariant(QString()));
    }

    void rowsToChips()
    {
        ChipInfoTableModel model;
        model.setChipInfoList({chip("d1", "P1"), chip("d2", "P2", {"7"}), chip("d2", "P3")});
        // Only the row counts, not the column or the model of the index.
        ChipInfoTableModel other;
        other.setChipInfoList({chip("a", "a"), chip("b", "b"), chip("c", "c"), chip("d", "d")});
        QCOMPARE(TestHelpers::fields(model.index2chipInfo(other.index(1, 11))), TestHelpers::fields(chip("d2", "P2", {"7"})));
        for (const QModelIndex& outside : {QModelIndex(), other.index(3, 0)})
            QCOMPARE(TestHelpers::fields(model.index2chipInfo(outside)), TestHelpers::fields(ChipInfo()));

        // The probe shares the second d2 row's part number: only the id counts, first row wins.
        const QList<std::pair<QString, int>> probes{{"d1", 0}, {"d2", 1}, {"d9", -1}, {"D1", -1}, {"d", -1}};
        for (const auto& [id, row] : probes) {
            const QModelIndex index = model.info2index(chip(id, QStringLiteral("P3")));
            QCOMPARE(index.isValid(), row >= 0);
            if (row >= 0) {
                QCOMPARE(index.model(), &model);
                QCOMPARE(index.row(), row);
                QCOMPARE(index.column(), 0);
            }
        }
    }

    void oneResetPerChange_data()
    {
        QTest::addColumn<int>("initialRows");
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("newRows");
        QTest::newRow("set new list") << 1 << "set3" << 3;
        QTest::newRow("set empty list") << 3 << "setEmpty" << 0;
        QTest::newRow("set list already held") << 3 << "setSame" << 3;
        for (int column : {0, 12, 16, -1})
            QTest::addRow("sort column %d", column) << 3 << QStringLiteral("sort %1").arg(column) << 3;
        QTest::newRow("sort empty list") << 0 << "sort 7" << 0;
        QTest::newRow("sort one record") << 1 << "sort 7" << 1;
    }
    void oneResetPerChange()
    {
        QFETCH(int, initialRows);
        QFETCH(QString, action);
        QFETCH(int, newRows);
        QList<ChipInfo> held;
        for (int i = 0; i < initialRows; ++i)
            held << chip(QString::number(i), QString::number(9 - i), {QString::number(i * 7 % 3)});
        ChipInfoTableModel model;
        model.setChipInfoList(held);
        // The row count at each notification: the list changes between the two.
        QStringList seen;
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, [&] { seen << QString::number(model.rowCount()); });
        connect(&model, &QAbstractItemModel::modelReset, this, [&] { seen << QString::number(model.rowCount()); });
        connect(&model, &QAbstractItemModel::layoutChanged, this, [&] { seen << QStringLiteral("layout"); });
        if (action == QLatin1String("set3"))
            model.setChipInfoList({fullChip(), fullChip(), fullChip()});
        else if (action == QLatin1String("setEmpty"))
            model.setChipInfoList({});
        else if (action == QLatin1String("setSame"))
            model.setChipInfoList(held);
        else
            model.sort(action.mid(5).toInt(), Qt::AscendingOrder);
        QCOMPARE(seen, (QStringList{QString::number(initialRows), QString::number(newRows)}));
    }

    // Qt's own consistency checks, through every kind of change.
    void modelStaysConsistent()
    {
        ChipInfoTableModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        QList<ChipInfo> chips;
        for (int i = 0; i < 40; ++i) {
            QStringList counts; // often fewer than nine, some empty
            for (int k = 0; k < i * 5 % 12; ++k)
                counts << (k % 4 ? QStringLiteral("%1Kb").arg(i * 37 % 50 + k) : QString());
            chips << chip(QStringLiteral("id%1").arg(i % 7), QStringLiteral("PN%1").arg(i * 13 % 40), counts);
        }
        model.setChipInfoList(chips);
        for (int column = -1; column <= 16; ++column) {
            model.sort(column, Qt::AscendingOrder);
            model.sort(column, Qt::DescendingOrder);
        }
        model.setChipInfoList({});
        model.sort(3, Qt::AscendingOrder);
        model.setChipInfoList(chips);
        QCOMPARE(model.rowCount(), 40);
    }
};

QTEST_MAIN(TestChipInfoTableModel)
#include "tst_chipinfotablemodel.moc"
