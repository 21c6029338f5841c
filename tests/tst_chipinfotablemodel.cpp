#include "chipinfo.h"
#include "chipinfotablemodel.h"

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <algorithm>

using DEV::ChipInfo;
using DEV::ChipInfoTableModel;

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
    ChipInfo c;
    c.deviceId = QStringLiteral("ID-1");
    c.partNumber = QStringLiteral("PN-1");
    c.series = QStringLiteral("SER");
    c.matchKey = QStringLiteral("MK");
    c.device = QStringLiteral("DEV");
    c.deviceVersion = QStringLiteral("B");
    c.package = QStringLiteral("PKG");
    c.voltage = QStringLiteral("1.2V");
    c.speed = QStringLiteral("C7");
    c.auxiliary = QStringLiteral("AUX");
    c.resources = QStringList{QStringLiteral("11"), QStringLiteral("22"), QStringLiteral("33"),
                              QStringLiteral("44Kb"), QStringLiteral("55Kb"), QStringLiteral("66Kb"),
                              QStringLiteral("77Kb"), QStringLiteral("88"), QStringLiteral("99"),
                              QStringLiteral("extra")};
    return c;
}

QStringList columnTexts(const ChipInfoTableModel& model, int column)
{
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.data(model.index(row, column)).toString();
    return out;
}

} // namespace

class TestChipInfoTableModel : public QObject
{
    Q_OBJECT

private slots:
    void headerData_data()
    {
        QTest::addColumn<int>("section");
        QTest::addColumn<int>("orientation");
        QTest::addColumn<int>("role");
        QTest::addColumn<QVariant>("expected");

        const char* const titles[] = {"Part Number", "Series", "Device", "Device Version", "Package", "Speed",
                                      "Voltage", "IO", "LUT", "FF", "ROM16", "SSRAM", "BSRAM", "User Flash",
                                      "DSP", "PLL"};
        for (int s = 0; s < 16; ++s)
            QTest::addRow("section %d", s) << s << int(Qt::Horizontal) << int(Qt::DisplayRole)
                                           << QVariant(QString::fromLatin1(titles[s]));
        QTest::newRow("section 16") << 16 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
        QTest::newRow("section -1") << -1 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
        QTest::newRow("vertical 0") << 0 << int(Qt::Vertical) << int(Qt::DisplayRole) << QVariant();
        QTest::newRow("tool tip") << 0 << int(Qt::Horizontal) << int(Qt::ToolTipRole) << QVariant();
        QTest::newRow("edit") << 0 << int(Qt::Horizontal) << int(Qt::EditRole) << QVariant();
        QTest::newRow("alignment") << 7 << int(Qt::Horizontal) << int(Qt::TextAlignmentRole) << QVariant();
    }
    void headerData()
    {
        QFETCH(int, section);
        QFETCH(int, orientation);
        QFETCH(int, role);
        QFETCH(QVariant, expected);

        // Headers do not depend on the rows: an empty model has them too.
        ChipInfoTableModel model;
        QCOMPARE(model.headerData(section, Qt::Orientation(orientation), role), expected);
    }

    void cells_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("text");
        QTest::addColumn<uint>("alignment");

        const QStringList texts{QStringLiteral("PN-1"), QStringLiteral("SER"), QStringLiteral("DEV"),
                                QStringLiteral("B"), QStringLiteral("PKG"), QStringLiteral("C7"),
                                QStringLiteral("1.2V"), QStringLiteral("11"), QStringLiteral("22"),
                                QStringLiteral("33"), QStringLiteral("44Kb"), QStringLiteral("55Kb"),
                                QStringLiteral("66Kb"), QStringLiteral("77Kb"), QStringLiteral("88"),
                                QStringLiteral("99")};
        for (int column = 0; column < 16; ++column)
            QTest::addRow("column %d", column) << column << texts.at(column) << (column < 7 ? 129u : 130u);
    }
    void cells()
    {
        QFETCH(int, column);
        QFETCH(QString, text);
        QFETCH(uint, alignment);

        ChipInfoTableModel model;
        model.setChipInfoList({chip(QStringLiteral("other"), QStringLiteral("first")), fullChip()});
        const QModelIndex index = model.index(1, column);

        const QVariant display = model.data(index, Qt::DisplayRole);
        QCOMPARE(display.userType(), int(QMetaType::QString));
        QCOMPARE(display.toString(), text);
        QCOMPARE(model.columnOfChipInfo(fullChip(), column), text);
        const QVariant align = model.data(index, Qt::TextAlignmentRole);
        QCOMPARE(align.userType(), int(QMetaType::UInt));
        QCOMPARE(align.toUInt(), alignment);
        QCOMPARE(int(model.flags(index)), 33);
    }

    void emptyAndMissingResources_data()
    {
        QTest::addColumn<QStringList>("resources");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("text");

        QStringList empties;
        for (int k = 0; k < 9; ++k)
            empties << QLatin1String("");
        const QStringList two{QStringLiteral("5"), QStringLiteral("6")};
        QTest::newRow("empty IO") << empties << 7 << QStringLiteral("0");
        QTest::newRow("empty PLL") << empties << 15 << QStringLiteral("0");
        QTest::newRow("no entries, IO") << QStringList() << 7 << QStringLiteral("0");
        QTest::newRow("no entries, PLL") << QStringList() << 15 << QStringLiteral("0");
        QTest::newRow("short, present") << two << 8 << QStringLiteral("6");
        QTest::newRow("short, first missing") << two << 9 << QStringLiteral("0");
        QTest::newRow("blank kept") << QStringList{QStringLiteral(" ")} << 7 << QStringLiteral(" ");
    }
    void emptyAndMissingResources()
    {
        QFETCH(QStringList, resources);
        QFETCH(int, column);
        QFETCH(QString, text);

        ChipInfoTableModel model;
        model.setChipInfoList({chip(QStringLiteral("id"), QStringLiteral("pn"), resources)});
        QCOMPARE(model.data(model.index(0, column)).toString(), text);
        // Text members get no such stand-in: an empty package is an empty cell.
        const QVariant package = model.data(model.index(0, 4));
        QVERIFY(package.isValid());
        QCOMPARE(package.toString(), QString());
    }

    void columnOutsideTableIsNull()
    {
        ChipInfoTableModel model;
        for (int column : {-1, 16, 100})
            QVERIFY(model.columnOfChipInfo(fullChip(), column).isNull());
    }

    void otherRolesAreInvalid_data()
    {
        QTest::addColumn<int>("role");
        for (int role : std::initializer_list<int>{Qt::EditRole, Qt::ToolTipRole, Qt::StatusTipRole, Qt::WhatsThisRole, Qt::FontRole,
                         Qt::BackgroundRole, Qt::ForegroundRole, Qt::CheckStateRole, Qt::DecorationRole,
                         Qt::SizeHintRole, Qt::InitialSortOrderRole, int(Qt::UserRole)})
            QTest::addRow("role %d", role) << role;
    }
    void otherRolesAreInvalid()
    {
        QFETCH(int, role);
        ChipInfoTableModel model;
        model.setChipInfoList({fullChip()});
        QVERIFY(!model.data(model.index(0, 0), role).isValid());
        QVERIFY(!model.data(model.index(0, 12), role).isValid());
    }

    void indexesOutsideTheList()
    {
        ChipInfoTableModel model;
        model.setChipInfoList({fullChip()});
        ChipInfoTableModel bigger;
        bigger.setChipInfoList({chip(QStringLiteral("a"), QStringLiteral("a")),
                                chip(QStringLiteral("b"), QStringLiteral("b")),
                                chip(QStringLiteral("c"), QStringLiteral("c"))});

        // No cell text and no alignment for the invalid index, and no text
        // for rows the model does not have (an index left over from
        // elsewhere must not crash the model).
        QVERIFY(!model.data(QModelIndex()).isValid());
        QVERIFY(!model.data(QModelIndex(), Qt::TextAlignmentRole).isValid());
        QVERIFY(!model.data(bigger.index(1, 0)).isValid());
        QVERIFY(!model.data(bigger.index(2, 9)).isValid());
        QCOMPARE(int(model.flags(QModelIndex())), 0);

        const ChipInfo none1 = model.index2chipInfo(QModelIndex()); // row -1
        QVERIFY(none1.partNumber.isNull());
        QVERIFY(none1.deviceId.isNull());
        QVERIFY(none1.resources.isEmpty());
        const ChipInfo none2 = model.index2chipInfo(bigger.index(1, 0)); // row == size
        QVERIFY(none2.partNumber.isNull());
        QVERIFY(none2.resources.isEmpty());

        // Only the row counts, not the column or the model.
        const ChipInfo got = model.index2chipInfo(bigger.index(0, 11));
        QCOMPARE(got.partNumber, QStringLiteral("PN-1"));
        QCOMPARE(got.auxiliary, QStringLiteral("AUX"));
        QCOMPARE(got.resources, fullChip().resources);
    }

    void counts()
    {
        ChipInfoTableModel model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), 16);

        model.setChipInfoList({fullChip(), fullChip(), fullChip()});
        QCOMPARE(model.rowCount(), 3);
        const QModelIndex parent = model.index(0, 0);
        QVERIFY(parent.isValid());
        QCOMPARE(model.rowCount(parent), 0);
        QCOMPARE(model.columnCount(parent), 0);
    }

    void info2index_data()
    {
        QTest::addColumn<QString>("deviceId");
        QTest::addColumn<int>("row");

        QTest::newRow("unique") << QStringLiteral("d1") << 0;
        QTest::newRow("shared id, first wins") << QStringLiteral("d2") << 1;
        QTest::newRow("not in list") << QStringLiteral("d9") << -1;
        QTest::newRow("case matters") << QStringLiteral("D1") << -1;
        QTest::newRow("prefix only") << QStringLiteral("d") << -1;
    }
    void info2index()
    {
        QFETCH(QString, deviceId);
        QFETCH(int, row);

        ChipInfoTableModel model;
        model.setChipInfoList({chip(QStringLiteral("d1"), QStringLiteral("P1")),
                               chip(QStringLiteral("d2"), QStringLiteral("P2")),
                               chip(QStringLiteral("d2"), QStringLiteral("P3"))});

        // The probe differs from every row in everything but the id, and
        // equals the second d2 row's part number: only the id may count.
        ChipInfo probe = chip(deviceId, QStringLiteral("P3"));
        probe.series = QStringLiteral("nowhere");
        const QModelIndex index = model.info2index(probe);
        if (row < 0) {
            QVERIFY(!index.isValid());
            return;
        }
        QVERIFY(index.isValid());
        QCOMPARE(index.model(), &model);
        QCOMPARE(index.row(), row);
        QCOMPARE(index.column(), 0);
    }

    void oneResetPerChange_data()
    {
        QTest::addColumn<int>("initialRows");
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("newRows");

        QTest::newRow("set new list") << 1 << QStringLiteral("set3") << 3;
        QTest::newRow("set empty list") << 3 << QStringLiteral("setEmpty") << 0;
        QTest::newRow("set list already held") << 3 << QStringLiteral("setSame") << 3;
        QTest::newRow("sort column 0") << 3 << QStringLiteral("sort 0") << 3;
        QTest::newRow("sort column 12") << 3 << QStringLiteral("sort 12") << 3;
        QTest::newRow("sort column 16") << 3 << QStringLiteral("sort 16") << 3;
        QTest::newRow("sort column -1") << 3 << QStringLiteral("sort -1") << 3;
        QTest::newRow("sort empty list") << 0 << QStringLiteral("sort 7") << 0;
        QTest::newRow("sort one record") << 1 << QStringLiteral("sort 7") << 1;
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

        QSignalSpy aboutToReset(&model, &QAbstractItemModel::modelAboutToBeReset);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        // The row count the model reports at each notification: the list
        // must change between the two, not before or after both.
        QStringList rowsSeen;
        int layoutChanges = 0;
        connect(&model, &QAbstractItemModel::layoutChanged, this, [&] { ++layoutChanges; });
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this,
                [&] { rowsSeen << QStringLiteral("about:%1").arg(model.rowCount()); });
        connect(&model, &QAbstractItemModel::modelReset, this,
                [&] { rowsSeen << QStringLiteral("reset:%1").arg(model.rowCount()); });

        if (action == QLatin1String("set3"))
            model.setChipInfoList({fullChip(), fullChip(), fullChip()});
        else if (action == QLatin1String("setEmpty"))
            model.setChipInfoList({});
        else if (action == QLatin1String("setSame"))
            model.setChipInfoList(held);
        else if (action.startsWith(QLatin1String("sort ")))
            model.sort(action.mid(5).toInt(), Qt::AscendingOrder);
        else
            QFAIL("unknown action");

        QCOMPARE(aboutToReset.count(), 1);
        QCOMPARE(reset.count(), 1);
        const QStringList expected{QStringLiteral("about:%1").arg(initialRows),
                                   QStringLiteral("reset:%1").arg(newRows)};
        QCOMPARE(rowsSeen, expected);
        QCOMPARE(layoutChanges, 0);
    }

    void modelStaysConsistent()
    {
        ChipInfoTableModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);

        QList<ChipInfo> chips;
        for (int i = 0; i < 40; ++i) {
            QStringList resources;
            for (int k = 0; k < (i * 5) % 12; ++k) // 0 to 11 entries, often fewer than nine
                resources << (k % 4 == 0 ? QString() : QString::number((i * 37 + k * 11) % 50) + QLatin1String("Kb"));
            chips << chip(QStringLiteral("id%1").arg(i % 7), QStringLiteral("PN%1").arg((i * 13) % 40), resources);
        }
        model.setChipInfoList(chips);
        for (int column = -1; column <= 16; ++column) {
            model.sort(column, Qt::AscendingOrder);
            model.sort(column, Qt::DescendingOrder);
        }
        model.setChipInfoList({});
        model.sort(3, Qt::AscendingOrder);
        model.setChipInfoList({chips.first()});
        model.sort(15, Qt::DescendingOrder);
        model.setChipInfoList(chips);
        model.sort(0, Qt::AscendingOrder);

        QCOMPARE(model.rowCount(), 40);
        const QStringList parts = columnTexts(model, 0);
        for (int row = 1; row < parts.size(); ++row)
            QVERIFY2(parts.at(row - 1) <= parts.at(row), qPrintable(parts.join(QLatin1Char(' '))));
    }

    void tableViewSortsByHeaderClick()
    {
        ChipInfoTableModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        model.setChipInfoList({chip(QStringLiteral("a"), QStringLiteral("A"), {QStringLiteral("10")}),
                               chip(QStringLiteral("b"), QStringLiteral("B"), {QStringLiteral("9")}),
                               chip(QStringLiteral("c"), QStringLiteral("C"), {QStringLiteral("100")}),
                               chip(QStringLiteral("d"), QStringLiteral("D"), {})});

        QTableView view;
        view.setModel(&model);
        view.setSortingEnabled(true);
        view.resize(1600, 300);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));

        QHeaderView* header = view.horizontalHeader();
        const QPoint io(header->sectionViewportPosition(7) + header->sectionSize(7) / 2, header->height() / 2);
        const QStringList ascending{QStringLiteral("0"), QStringLiteral("9"), QStringLiteral("10"),
                                    QStringLiteral("100")};
        QStringList descending = ascending;
        std::reverse(descending.begin(), descending.end());

        // Which order the first click picks is the header's business; the
        // second click must flip it, and the rows must follow both times.
        QList<Qt::SortOrder> orders;
        view.selectRow(1);
        QVERIFY(view.selectionModel()->hasSelection());
        for (int click = 0; click < 2; ++click) {
            QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, io);
            QCOMPARE(header->sortIndicatorSection(), 7);
            orders << header->sortIndicatorOrder();
            const bool up = orders.last() == Qt::AscendingOrder;
            QCOMPARE(columnTexts(model, 7), up ? ascending : descending);
            QVERIFY(!view.selectionModel()->hasSelection()); // a reset drops the selection
            view.selectRow(0);
        }
        QVERIFY(orders.first() != orders.last());

        view.sortByColumn(0, Qt::DescendingOrder);
        QCOMPARE(columnTexts(model, 0), (QStringList{QStringLiteral("D"), QStringLiteral("C"),
                                                     QStringLiteral("B"), QStringLiteral("A")}));
    }
};

QTEST_MAIN(TestChipInfoTableModel)
#include "tst_chipinfotablemodel.moc"
