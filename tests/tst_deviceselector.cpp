// The selector widget: how its combo boxes fill and cascade, what the table
// shows after each road a user can take (combo boxes, typing, search options,
// clicks), the signals each road emits and in which order, and presetting a
// chip with setCurrentDevice().

#include "deviceselector.h"

#include "searchlineedit.h"
#include "testhelpers.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMetaMethod>
#include <QScrollBar>
#include <QTest>

using DEV::ChipInfo;
using DEV::DeviceArg;
using DEV::DeviceDb;
using DEV::DeviceSelector;
using DEV::SearchLineEdit;
using TestHelpers::chipLine;
using TestHelpers::emittedIds;
using TestHelpers::fields;
using L = QStringList;

namespace {

/*
 * Part numbers are chosen so that code-unit order ("PN-10" < "PN-9" <
 * "PN-A1" < ... < "pn-a") differs from the database's order (by version,
 * descending), and two series differ only in letter case. D20 exists in
 * both X1 and x1.
 */
const QByteArray Cascade = chipLine("a-01", "PN-B2", "X1", "D20", "B", "P2", "C7")
    + chipLine("a-02", "PN-A1", "X1", "D20", "A", "P1", "C6") + chipLine("a-03", "PN-C3", "X1", "D20", "", "P1", "C6")
    + chipLine("a-04", "PN-10", "X1", "D10", "A", "P3", "C8") + chipLine("b-01", "PN-9", "x1", "D20", "C", "Q1", "I7")
    + chipLine("b-02", "PN-Z", "x1", "D30", "", "Q2", "I6") + chipLine("c-01", "pn-a", "S2", "E1", "B", "R1", "C6");

const QStringList AllPartNumbers = {"PN-10", "PN-9", "PN-A1", "PN-B2", "PN-C3", "PN-Z", "pn-a"};
const char* const Boxes[] = {"cbSeries", "cbDevice", "cbDeviceVersion", "cbPackage", "cbCondition"};

/// More rows than the table can show at once, under current zr9k31a ids.
QByteArray largeCatalogue()
{
    QByteArray bytes;
    for (int i = 0; i < 120; ++i) {
        const QByteArray n = QByteArray::number(i).rightJustified(3, '0');
        bytes += chipLine("zr9k31a-" + n, "G-" + n, "G", "GD", i % 2 ? "" : "B", "K" + QByteArray::number(i % 3));
    }
    return bytes;
}

QComboBox* box(const QWidget& w, const QString& name)
{
    return w.findChild<QComboBox*>(name);
}

QTableView* tableOf(const QWidget& w)
{
    return w.findChild<QTableView*>(QStringLiteral("tableView"));
}

/// Every box's entries (blanks between entries, "|" between boxes), or
/// every box's current entry ("," between boxes).
QString comboState(const QWidget& w, bool entries)
{
    QStringList out;
    for (const char* name : Boxes) {
        const QComboBox* b = box(w, QLatin1String(name));
        QStringList items;
        for (int i = 0; i < b->count(); ++i)
            items << b->itemText(i);
        out << (entries ? items.join(' ') : b->currentText());
    }
    return out.join(entries ? '|' : ',');
}

QStringList partNumbers(const QWidget& w)
{
    return TestHelpers::columnTexts(*tableOf(w)->model(), 0);
}

QString matchCount(const QWidget& w)
{
    return w.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text();
}

/// Applies steps in order: "box=text" (e.g. "cbSeries=X1"), a search option
/// ("case", "wild", "regexp", "exact", "anywhere", "group<n>"), or "type:text"
/// typed into the search field with '<' standing for a backspace.
bool apply(QWidget& w, const QStringList& steps)
{
    SearchLineEdit* search = w.findChild<SearchLineEdit*>();
    const QHash<QString, QAction*> options = {{"case", search->caseSensitiveAction}, {"wild", search->wildCardAction},
                                              {"regexp", search->regExpAction}, {"exact", search->matchExactlyAction},
                                              {"anywhere", search->matchAnywhereAction}};
    for (const QString& step : steps) {
        QComboBox* b = box(w, step.section('=', 0, 0));
        QAction* action = step.startsWith("group") ? search->rangeActions.value(step.mid(5).toInt()) : options.value(step);
        if (step.startsWith(QLatin1String("type:"))) {
            for (const QChar c : step.mid(5))
                c == '<' ? QTest::keyClick(search, Qt::Key_Backspace) : QTest::keyClicks(search, QString(c));
        } else if (b && b->findText(step.section('=', 1)) >= 0) {
            b->setCurrentIndex(b->findText(step.section('=', 1)));
        } else if (action) {
            action->trigger();
        } else {
            return false;
        }
    }
    return true;
}

} // namespace

class TestDeviceSelector : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;
    std::unique_ptr<DeviceDb> m_cascade;
    std::unique_ptr<DeviceDb> m_large;

    /// A shown selector, so that rows have geometry for clicks and scrolling;
    /// tall enough that a row at the bottom edge is far from the middle.
    static std::unique_ptr<DeviceSelector> shown(DeviceDb* db)
    {
        std::unique_ptr<DeviceSelector> s(new DeviceSelector(db));
        s->resize(700, 650);
        s->show();
        if (!QTest::qWaitForWindowExposed(s.get()))
            s.reset();
        return s;
    }

private slots:
    void initTestCase()
    {
        Q_INIT_RESOURCE(searchlineedit_icon);
        m_cascade = m_files.load(Cascade);
        m_large = m_files.load(largeCatalogue());
        QCOMPARE(m_cascade->allChipInfo().size(), 7);
        QCOMPARE(m_large->allChipInfo().size(), 120);
    }

    // Slots are connected by their string signatures, so the names are part of the design.
    void metaObjectAndQueuedSignal()
    {
        const QMetaObject& mo = DeviceSelector::staticMetaObject;
        QCOMPARE(QByteArray(mo.className()), QByteArray("DEV::DeviceSelector"));
        QList<QByteArray> signatures;
        for (int i = mo.methodOffset(); i < mo.methodCount(); ++i)
            signatures << mo.method(i).methodSignature();
        QCOMPARE(signatures, (QList<QByteArray>{"selectedDeviceChanged(DEV::DeviceArg)", "onSeriesChanged()",
                                                "onDeviceChanged()", "filter()", "filterBySearch()",
                                                "onIndexSelected()", "scrollToCurrentDevice()"}));
        QCOMPARE(mo.method(mo.methodOffset()).methodType(), QMetaMethod::Signal);

        DeviceSelector selector(m_cascade.get());
        QStringList received;
        connect(&selector, &DeviceSelector::selectedDeviceChanged, this,
                [&](const DeviceArg& chip) { received << chip.partNumber; }, Qt::QueuedConnection);
        selector.setCurrentDevice(QStringLiteral("a-01"));
        QVERIFY(received.isEmpty());
        QTRY_COMPARE(received, (QStringList{"", "", "", "", "", "PN-B2"}));
    }

    void formConfiguration()
    {
        DeviceSelector selector(m_cascade.get());
        const auto* searchRow = selector.findChild<QHBoxLayout*>(QStringLiteral("SerarchLayout"));
        QCOMPARE(searchRow->indexOf(selector.findChild<SearchLineEdit*>()), 1);
        QCOMPARE(searchRow->count(), 3);
        QTableView* table = tableOf(selector);
        QHeaderView* header = table->horizontalHeader();
        QVERIFY(table->isSortingEnabled() && table->isColumnHidden(1) && table->verticalHeader()->isHidden());
        QVERIFY(!header->highlightSections() && table->horizontalScrollMode() == QAbstractItemView::ScrollPerPixel);
        QVERIFY(table->selectionBehavior() == QAbstractItemView::SelectRows
                && table->selectionMode() == QAbstractItemView::SingleSelection);
        // Qt raises a default row height below the style's minimum to that minimum.
        QCOMPARE(table->verticalHeader()->defaultSectionSize(), qMax(24, table->verticalHeader()->minimumSectionSize()));
        // A hidden section reports 0; showing it brings back the width it was given.
        header->showSection(1);
        QList<int> widths;
        for (int section = 0; section < 16; ++section)
            widths << header->sectionSize(section);
        QCOMPARE(widths, (QList<int>{210, 100, 110, 130, 90, 60, 60, 50, 55, 50, 75, 75, 75, 80, 120, 40}));
        const QLabel* version = selector.findChild<QLabel*>(QStringLiteral("labelDeviceVersion"));
        QCOMPARE(version->alignment(), Qt::AlignTop);
        QCOMPARE(version->text(), QStringLiteral("<p style='line-height:60%'> Device Version: </p><p style='font-size:"
                                                 "9px;line-height:0px'> &#10056;no version number is initial version </p>"));
    }

    // What each road of the user leaves: every box's entries ("|" between
    // boxes; "" when not of interest), the current entries, the table, the
    // count label, and how many rebuilds reported the empty choice. A device
    // change rebuilds three times: filter(), then the version box's clear and
    // refill; every keystroke and search option rebuilds once.
    void roads_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("items");
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QString>("label");
        QTest::addColumn<int>("rebuilds");
        const QString all = QStringLiteral("Any D10 D20 D30 E1|Any C B A |Any P1 P2 P3 Q1 Q2 R1|Any C6 C7 C8 I6 I7");
        const QString x1 = QStringLiteral("Any D10 D20|Any B A |Any P1 P2 P3|Any C6 C7 C8");
        const QString lower = QStringLiteral("Any D20 D30|Any C |Any Q1 Q2|Any I6 I7");
        const QString any = QStringLiteral("Any,Any,Any,Any,Any");
        const QString none = QStringLiteral("(0 matches)");
        QTest::newRow("start") << L{} << all << any << AllPartNumbers.join(' ') << none << 0;
        QTest::newRow("upper-case series") << L{"cbSeries=X1"} << x1 << "X1,Any,Any,Any,Any" << "PN-10 PN-A1 PN-B2 PN-C3"
                                           << none << 1;
        QTest::newRow("lower-case series") << L{"cbSeries=x1"} << lower << "x1,Any,Any,Any,Any" << "PN-9 PN-Z" << none << 1;
        // D20 exists in x1 as well, and still is not carried over.
        QTest::newRow("series change resets the others")
            << L{"cbSeries=X1", "cbDevice=D20", "cbDeviceVersion=B", "cbPackage=P2", "cbCondition=C7", "cbSeries=x1"}
            << lower << "x1,Any,Any,Any,Any" << "PN-9 PN-Z" << none << 8;
        QTest::newRow("series then Any again") << L{"cbSeries=S2", "cbSeries=Any"} << all << any
                                               << AllPartNumbers.join(' ') << none << 2;
        QTest::newRow("device narrows versions only") << L{"cbSeries=X1", "cbDevice=D10"}
                                                      << "Any D10 D20|Any A|Any P1 P2 P3|Any C6 C7 C8"
                                                      << "X1,D10,Any,Any,Any" << "PN-10" << none << 4;
        QTest::newRow("device back to Any") << L{"cbSeries=X1", "cbDevice=D10", "cbDevice=Any"} << x1
                                            << "X1,Any,Any,Any,Any" << "PN-10 PN-A1 PN-B2 PN-C3" << none << 7;
        // With "Any" as series no chip qualifies for the version list.
        QTest::newRow("device under Any series")
            << L{"cbDevice=D20"} << "Any D10 D20 D30 E1|Any|Any P1 P2 P3 Q1 Q2 R1|Any C6 C7 C8 I6 I7"
            << "Any,D20,Any,Any,Any" << "PN-9 PN-A1 PN-B2 PN-C3" << none << 3;
        // The blank entry is the initial version: only unversioned chips.
        QTest::newRow("blank version") << L{"cbDeviceVersion="} << all << "Any,Any,,Any,Any" << "PN-C3 PN-Z" << none << 1;
        QTest::newRow("package and speed") << L{"cbPackage=P1", "cbCondition=C6"} << all << "Any,Any,Any,P1,C6"
                                           << "PN-A1 PN-C3" << none << 2;
        QTest::newRow("nothing passes") << L{"cbPackage=P2", "cbCondition=C6"} << all << "Any,Any,Any,P2,C6" << ""
                                        << none << 2;
        // The search runs within what the boxes allow.
        QTest::newRow("several hits") << L{"type:pn-"} << all << any << AllPartNumbers.join(' ') << "(7 matches)" << 3;
        QTest::newRow("one hit keeps the plural") << L{"type:A1"} << all << any << "PN-A1" << "(1 matches)" << 2;
        QTest::newRow("no hit") << L{"type:zzz"} << all << any << "" << none << 3;
        QTest::newRow("within a series") << L{"cbSeries=X1", "type:PN-"} << x1 << "X1,Any,Any,Any,Any"
                                         << "PN-10 PN-A1 PN-B2 PN-C3" << "(4 matches)" << 4;
        QTest::newRow("outside the boxes") << L{"cbSeries=x1", "type:A1"} << "" << "x1,Any,Any,Any,Any" << "" << none << 3;
        QTest::newRow("one character deleted") << L{"cbPackage=P1", "type:C3<"} << "" << "Any,Any,Any,P1,Any" << "PN-C3"
                                               << "(1 matches)" << 4;
        QTest::newRow("last character deleted") << L{"cbPackage=P1", "type:C3<<"} << "" << "Any,Any,Any,P1,Any"
                                                << "PN-A1 PN-C3" << none << 5;
        QTest::newRow("box change reruns") << L{"type:PN-", "cbSeries=X1"} << x1 << "X1,Any,Any,Any,Any"
                                           << "PN-10 PN-A1 PN-B2 PN-C3" << "(4 matches)" << 4;
        QTest::newRow("case sensitive") << L{"type:PN-A", "case"} << "" << any << "PN-A1" << "(1 matches)" << 5;
        QTest::newRow("case sensitive twice") << L{"type:PN-A", "case", "case"} << "" << any << "PN-A1 pn-a"
                                              << "(2 matches)" << 6;
        QTest::newRow("match exactly") << L{"type:PN-A", "exact"} << "" << any << "pn-a" << "(1 matches)" << 5;
        QTest::newRow("exactly and case") << L{"type:PN-A", "exact", "case"} << "" << any << "" << none << 6;
        QTest::newRow("wild cards") << L{"type:pn-?", "wild"} << "" << any << "PN-9 PN-Z pn-a" << "(3 matches)" << 5;
        QTest::newRow("regular expression") << L{"type:PN-[0-9]+", "regexp"} << "" << any << "PN-10 PN-9"
                                            << "(2 matches)" << 10;
        QTest::newRow("back to anywhere") << L{"type:PN-A", "exact", "anywhere"} << "" << any << "PN-A1 pn-a"
                                          << "(2 matches)" << 6;
        // Speed grades are searched in their own column only.
        QTest::newRow("speed column") << L{"type:C6", "group6"} << "" << any << "PN-A1 PN-C3 pn-a" << "(3 matches)" << 3;
        QTest::newRow("part number column") << L{"type:C6", "group2"} << "" << any << "" << none << 3;
    }
    void roads()
    {
        QFETCH(QStringList, steps);
        QFETCH(QString, items);
        QFETCH(QString, current);
        QFETCH(QString, rows);
        QFETCH(QString, label);
        QFETCH(int, rebuilds);
        auto selector = shown(m_cascade.get());
        QVERIFY(selector);
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QVERIFY(apply(*selector, steps));
        if (!items.isEmpty())
            QCOMPARE(comboState(*selector, true), QStringLiteral("Any S2 X1 x1|") + items);
        QCOMPARE(comboState(*selector, false), current);
        QCOMPARE(partNumbers(*selector).join(' '), rows);
        QCOMPARE(matchCount(*selector), label);
        QCOMPARE(spy.count(), rebuilds);
        for (const QList<QVariant>& args : spy)
            QCOMPARE(fields(qvariant_cast<DeviceArg>(args.at(0))), fields(ChipInfo()));
    }

    void emptyDatabase()
    {
        const std::unique_ptr<DeviceDb> empty = m_files.load(QByteArray());
        DeviceSelector selector(empty.get());
        QCOMPARE(comboState(selector, true), QStringLiteral("Any|Any|Any|Any|Any"));
        QCOMPARE(tableOf(selector)->model()->rowCount(), 0);
        QSignalSpy spy(&selector, &DeviceSelector::selectedDeviceChanged);
        selector.setCurrentDevice(QStringLiteral("a-01"));
        QCOMPARE(spy.count(), 0);
    }

    void rebuildUndoesUserSortSelectionAndScroll()
    {
        auto selector = shown(m_large.get());
        QVERIFY(selector);
        QTableView* table = tableOf(*selector);
        QHeaderView* header = table->horizontalHeader();
        // The user sorts by Part Number descending, scrolls down and picks a row.
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(header->sectionViewportPosition(0) + 20, header->height() / 2));
        QCOMPARE(partNumbers(*selector).first(), QStringLiteral("G-119"));
        table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum());
        QVERIFY(table->verticalScrollBar()->value() > 0);
        TestHelpers::clickRow(table, table->rowAt(table->viewport()->height() / 2));
        QVERIFY(!selector->selectedDevice().deviceId.isEmpty());

        QVERIFY(apply(*selector, {"cbPackage=K1"}));
        QStringList expected;
        for (int i = 1; i < 120; i += 3)
            expected << QStringLiteral("G-%1").arg(i, 3, 10, QLatin1Char('0'));
        QCOMPARE(partNumbers(*selector), expected);
        QCOMPARE(header->sortIndicatorSection(), 0);
        QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
        QVERIFY(table->selectionModel()->selectedRows().isEmpty());
        QCOMPARE(table->verticalScrollBar()->value(), 0);
    }

    void deviceChangeFiltersBeforeRefillingVersions()
    {
        DeviceSelector selector(m_cascade.get());
        QVERIFY(apply(selector, {"cbSeries=X1"}));
        QStringList seen;
        connect(&selector, &DeviceSelector::selectedDeviceChanged, this, [&]() {
            seen << QString::number(box(selector, "cbDeviceVersion")->count()) + ':' + partNumbers(selector).join(' ');
        });
        QVERIFY(apply(selector, {"cbDevice=D10"}));
        QCOMPARE(seen, (QStringList{"4:PN-10", "0:PN-10", "2:PN-10"}));
    }

    void clickOnRowReportsItsChip()
    {
        auto selector = shown(m_cascade.get());
        QVERIFY(selector);
        QTableView* table = tableOf(*selector);
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QCOMPARE(fields(selector->selectedDevice()), fields(ChipInfo()));
        TestHelpers::clickRow(table, partNumbers(*selector).indexOf("PN-A1"));
        QCOMPARE(fields(qvariant_cast<DeviceArg>(spy.last().at(0))), fields(m_cascade->findByID("a-02")));
        QCOMPARE(fields(selector->selectedDevice()), fields(m_cascade->findByID("a-02")));
        const int row = partNumbers(*selector).indexOf("pn-a");
        TestHelpers::clickRow(table, row);
        QCOMPARE(selector->selectedDevice().deviceId, QStringLiteral("c-01"));
        QCOMPARE(emittedIds(spy), (QStringList{"a-02", "c-01"}));
        // Deselecting is not reported; only rebuilds report the empty choice.
        TestHelpers::clickRow(table, row, Qt::ControlModifier);
        QVERIFY(selector->selectedDevice().deviceId.isNull());
        QCOMPARE(spy.count(), 2);
    }

    // Text set by code is no user edit: nothing runs until a box changes.
    void textSetByCodeWaitsForTheBoxes()
    {
        DeviceSelector selector(m_cascade.get());
        QSignalSpy spy(&selector, &DeviceSelector::selectedDeviceChanged);
        selector.findChild<SearchLineEdit*>()->setText(QStringLiteral("B2"));
        QCOMPARE(spy.count(), 0);
        QCOMPARE(partNumbers(selector), AllPartNumbers);
        QVERIFY(apply(selector, {"cbPackage=P2"}));
        QCOMPARE(partNumbers(selector), QStringList{"PN-B2"});
        QCOMPARE(matchCount(selector), QStringLiteral("(1 matches)"));
    }

    // Series, device (filter, version clear, version refill) and version each
    // rebuild once when they move; the chip, if its row is shown, comes last.
    void setCurrentDevice_data()
    {
        QTest::addColumn<bool>("large");
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("boxes");
        QTest::addColumn<int>("rebuilds");
        QTest::addColumn<QString>("selected");
        const QString any = QStringLiteral("Any,Any,Any,Any,Any");
        const QString a01 = QStringLiteral("X1,D20,B,Any,Any");
        const L a01Boxes{"cbSeries=X1", "cbDevice=D20", "cbDeviceVersion=B"};
        QTest::newRow("empty id") << false << L() << "" << any << 0 << "";
        QTest::newRow("unknown id") << false << L() << "a-99" << any << 0 << "";
        QTest::newRow("id in other case") << false << L{"cbPackage=P1"} << "A-01" << "Any,Any,Any,P1,Any" << 0 << "";
        QTest::newRow("known id") << false << L() << "a-01" << a01 << 5 << "a-01";
        QTest::newRow("initial version") << false << L() << "b-02" << "x1,D30,,Any,Any" << 5 << "b-02";
        QTest::newRow("series already current") << false << L{"cbSeries=X1"} << "a-04" << "X1,D10,A,Any,Any" << 4 << "a-04";
        QTest::newRow("all three already current") << false << a01Boxes << "a-01" << a01 << 0 << "a-01";
        // Package and speed are left alone, even when they hide the chip.
        QTest::newRow("package hides the chip") << false << a01Boxes + L{"cbPackage=P1"} << "a-01" << "X1,D20,B,P1,Any"
                                                << 0 << "";
        QTest::newRow("search hides the chip") << false << L{"type:zzz"} << "a-01" << a01 << 5 << "";
        QTest::newRow("search shows the chip") << false << L{"type:pn-b"} << "a-01" << a01 << 5 << "a-01";
        QTest::newRow("old identifier") << true << L() << "zr9k31-013" << "G,GD,,Any,Any" << 5 << "zr9k31a-015";
        QTest::newRow("old identifier not in table") << true << L() << "zr9k31-015" << any << 0 << "";
    }
    void setCurrentDevice()
    {
        QFETCH(bool, large);
        QFETCH(QStringList, choices);
        QFETCH(QString, id);
        QFETCH(QString, boxes);
        QFETCH(int, rebuilds);
        QFETCH(QString, selected);
        DeviceDb* db = large ? m_large.get() : m_cascade.get();
        auto selector = shown(db);
        QVERIFY(selector);
        QVERIFY(apply(*selector, choices));
        const QStringList rowsBefore = partNumbers(*selector);
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);

        selector->setCurrentDevice(id);
        QCOMPARE(comboState(*selector, false), boxes);
        QStringList expected = QVector<QString>(rebuilds).toList();
        if (!selected.isEmpty())
            expected << selected;
        QCOMPARE(emittedIds(spy), expected);
        QCOMPARE(fields(selector->selectedDevice()), fields(db->findByID(selected)));
        QCOMPARE(tableOf(*selector)->selectionModel()->selectedRows().size(), selected.isEmpty() ? 0 : 1);
        QVERIFY(selected.isEmpty() || tableOf(*selector)->hasFocus());
        if (expected.isEmpty())
            QCOMPARE(partNumbers(*selector), rowsBefore);
    }

    void presetChipScrollsToCentreFromEventLoop()
    {
        auto selector = shown(m_large.get());
        QVERIFY(selector);
        QTableView* table = tableOf(*selector);
        selector->setCurrentDevice(QStringLiteral("zr9k31a-060"));
        const QModelIndexList rows = table->selectionModel()->selectedRows(0);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().data().toString(), QStringLiteral("G-060"));
        const QRect viewport = table->viewport()->rect();
        // Not yet: the table was rebuilt and sits at the top.
        QVERIFY(!viewport.intersects(table->visualRect(rows.first())));
        QTRY_VERIFY(viewport.contains(table->visualRect(rows.first())));
        const int offCentre = table->visualRect(rows.first()).center().y() - viewport.center().y();
        QVERIFY2(qAbs(offCentre) <= table->rowHeight(rows.first().row()), qPrintable(QString::number(offCentre)));
    }
};

QTEST_MAIN(TestDeviceSelector)
#include "tst_deviceselector.moc"
