// The selector widget: how its combo boxes fill and cascade, what the table
// shows after each road a user can take (combo boxes, typing, search options,
// clicks), the signals each road emits and in which order, and presetting a
// chip with setCurrentDevice().

#include "deviceselector.h"

#include "devicedb.h"
#include "searchlineedit.h"
#include "testhelpers.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QMetaMethod>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using DEV::ChipInfo;
using DEV::DeviceArg;
using DEV::DeviceDb;
using DEV::DeviceSelector;
using DEV::SearchLineEdit;

namespace {

/// One data-file line; the fields the selector does not filter on are fixed.
QByteArray chipLine(const char* id, const char* pn, const char* series, const char* device, const char* version,
                    const char* package, const char* speed)
{
    return QByteArray(id) + ',' + pn + ',' + series + ",MK," + device + ',' + version + ',' + package + ",1.0V,"
        + speed + ",AUX,100,200,300,4Kb,5Kb,6Kb,7Kb,8,9\n";
}

/*
 * Small enough to list every combo box in full. Part numbers are chosen so
 * that code-unit order ("PN-10" < "PN-9" < "PN-A1" < ... < "pn-a") differs
 * from the database's order (by version, descending), and two series differ
 * only in letter case. D20 exists in both X1 and x1.
 */
QByteArray cascadeCatalogue()
{
    return chipLine("a-01", "PN-B2", "X1", "D20", "B", "P2", "C7")
        + chipLine("a-02", "PN-A1", "X1", "D20", "A", "P1", "C6")
        + chipLine("a-03", "PN-C3", "X1", "D20", "", "P1", "C6")
        + chipLine("a-04", "PN-10", "X1", "D10", "A", "P3", "C8")
        + chipLine("b-01", "PN-9", "x1", "D20", "C", "Q1", "I7")
        + chipLine("b-02", "PN-Z", "x1", "D30", "", "Q2", "I6")
        + chipLine("c-01", "pn-a", "S2", "E1", "B", "R1", "C6");
}

const QStringList AllPartNumbers = {"PN-10", "PN-9", "PN-A1", "PN-B2", "PN-C3", "PN-Z", "pn-a"};

/// 120 chips of one series and device under current zr9k31a identifiers:
/// more rows than the table can show at once.
QByteArray largeCatalogue()
{
    QByteArray bytes;
    for (int i = 0; i < 120; ++i) {
        const QByteArray n = QByteArray::number(i).rightJustified(3, '0');
        const QByteArray package = "K" + QByteArray::number(i % 3);
        bytes += chipLine("zr9k31a-" + n, "G-" + n, "G", "GD", i % 2 ? "" : "B", package, "C6");
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

QStringList items(const QComboBox* b)
{
    QStringList out;
    for (int i = 0; i < b->count(); ++i)
        out << b->itemText(i);
    return out;
}

/// The current text of the five boxes: series, device, version, package, speed.
QStringList currentTexts(const QWidget& w)
{
    QStringList out;
    for (const char* name : {"cbSeries", "cbDevice", "cbDeviceVersion", "cbPackage", "cbCondition"})
        out << box(w, QLatin1String(name))->currentText();
    return out;
}

QStringList partNumbers(const QWidget& w)
{
    const QAbstractItemModel* model = tableOf(w)->model();
    QStringList out;
    for (int row = 0; row < model->rowCount(); ++row)
        out << model->index(row, 0).data().toString();
    return out;
}

int rowOf(const QWidget& w, const QString& partNumber)
{
    return partNumbers(w).indexOf(partNumber);
}

QString matchCount(const QWidget& w)
{
    return w.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text();
}

/// The device ids carried by every emission so far; an empty choice reads "".
QStringList emittedIds(const QSignalSpy& spy)
{
    QStringList out;
    for (const QList<QVariant>& args : spy)
        out << qvariant_cast<DeviceArg>(args.at(0)).deviceId;
    return out;
}

/// @p n empty reports, as emittedIds() lists them.
QStringList empties(int n)
{
    QStringList out;
    for (int i = 0; i < n; ++i)
        out << QString();
    return out;
}

/// The search field's option that a data row names: an option or "group<n>".
QAction* option(const SearchLineEdit* search, const QString& name)
{
    if (name.startsWith(QLatin1String("group")))
        return search->rangeActions.value(name.mid(5).toInt());
    const QHash<QString, QAction*> options = {{"case", search->caseSensitiveAction},
                                              {"wild", search->wildCardAction},
                                              {"regexp", search->regExpAction},
                                              {"exact", search->matchExactlyAction},
                                              {"anywhere", search->matchAnywhereAction}};
    return options.value(name);
}

/// Applies steps written "box=text", e.g. "cbSeries=X1", in order.
bool applyChoices(QWidget& w, const QStringList& steps)
{
    for (const QString& step : steps) {
        const int eq = step.indexOf(QLatin1Char('='));
        QComboBox* b = box(w, step.left(eq));
        const int index = b ? b->findText(step.mid(eq + 1)) : -1;
        if (index < 0)
            return false;
        b->setCurrentIndex(index);
    }
    return true;
}

void clickRow(QTableView* table, int row)
{
    const QRect cell = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
}

bool sameChip(const ChipInfo& a, const ChipInfo& b)
{
    return a.deviceId == b.deviceId && a.partNumber == b.partNumber && a.series == b.series
        && a.matchKey == b.matchKey && a.device == b.device && a.deviceVersion == b.deviceVersion
        && a.package == b.package && a.voltage == b.voltage && a.speed == b.speed && a.auxiliary == b.auxiliary
        && a.resources == b.resources;
}

} // namespace

class TestDeviceSelector : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<DeviceDb> m_cascade;
    std::unique_ptr<DeviceDb> m_large;
    std::unique_ptr<DeviceDb> m_empty;

    std::unique_ptr<DeviceDb> load(const QString& name, const QByteArray& bytes)
    {
        const QString path = m_dir.filePath(name);
        if (!TestHelpers::writeFile(path, bytes))
            return nullptr;
        return std::unique_ptr<DeviceDb>(new DeviceDb(path));
    }

    DeviceDb* db(const QString& name) const { return name == QLatin1String("large") ? m_large.get() : m_cascade.get(); }

    /// A shown selector over @p db, so that rows have geometry for clicks and scrolling.
    static std::unique_ptr<DeviceSelector> shown(DeviceDb* db)
    {
        std::unique_ptr<DeviceSelector> s(new DeviceSelector(db));
        // Tall enough that a row at the bottom edge is far from the middle.
        s->resize(700, 650);
        s->show();
        if (!QTest::qWaitForWindowExposed(s.get()))
            return nullptr;
        return s;
    }

private slots:
    void initTestCase()
    {
        Q_INIT_RESOURCE(searchlineedit_icon);
        QVERIFY(m_dir.isValid());
        m_cascade = load(QStringLiteral("cascade.csv"), cascadeCatalogue());
        m_large = load(QStringLiteral("large.csv"), largeCatalogue());
        m_empty = load(QStringLiteral("empty.csv"), QByteArray());
        QVERIFY(m_cascade && m_large && m_empty);
        QCOMPARE(m_cascade->allChipInfo().size(), 7);
        QCOMPARE(m_large->allChipInfo().size(), 120);
    }

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
        const QMetaMethod signal = mo.method(mo.methodOffset());
        QCOMPARE(signal.methodType(), QMetaMethod::Signal);
        QCOMPARE(signal.parameterType(0), QMetaType::type("DEV::DeviceArg"));
        QVERIFY(signal.parameterType(0) != QMetaType::UnknownType);

        // A queued connection copies the argument through the meta-type system.
        DeviceSelector selector(m_cascade.get());
        QObject receiver;
        QStringList received;
        connect(
            &selector, &DeviceSelector::selectedDeviceChanged, &receiver,
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
        QVERIFY(table->isSortingEnabled());
        QCOMPARE(header->sortIndicatorSection(), 0);
        QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
        QVERIFY(table->isColumnHidden(1));
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(table->horizontalScrollMode(), QAbstractItemView::ScrollPerPixel);
        QVERIFY(table->verticalHeader()->isHidden());
        // Qt raises a default row height below the style's minimum to that minimum.
        QCOMPARE(table->verticalHeader()->defaultSectionSize(),
                 qMax(24, table->verticalHeader()->minimumSectionSize()));
        QVERIFY(!header->highlightSections());

        // A hidden section reports 0; showing it brings back the width it was given.
        header->showSection(1);
        QList<int> widths;
        for (int section = 0; section < 16; ++section)
            widths << header->sectionSize(section);
        QCOMPARE(widths, (QList<int>{210, 100, 110, 130, 90, 60, 60, 50, 55, 50, 75, 75, 75, 80, 120, 40}));
        const QLabel* versionLabel = selector.findChild<QLabel*>(QStringLiteral("labelDeviceVersion"));
        QCOMPARE(versionLabel->alignment(), Qt::AlignTop);
        QCOMPARE(versionLabel->text(),
                 QStringLiteral("<p style='line-height:60%'> Device Version: </p><p style='font-size:9px;"
                                "line-height:0px'> &#10056;no version number is initial version </p>"));
    }

    void comboBoxContents_data()
    {
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QStringList>("devices");
        QTest::addColumn<QStringList>("versions");
        QTest::addColumn<QStringList>("packages");
        QTest::addColumn<QStringList>("speeds");

        const QStringList allDevices = {"Any", "D10", "D20", "D30", "E1"};
        const QStringList allVersions = {"Any", "C", "B", "A", ""};
        const QStringList allPackages = {"Any", "P1", "P2", "P3", "Q1", "Q2", "R1"};
        const QStringList allSpeeds = {"Any", "C6", "C7", "C8", "I6", "I7"};
        const QStringList x1Packages = {"Any", "P1", "P2", "P3"};
        const QStringList x1Speeds = {"Any", "C6", "C7", "C8"};

        QTest::newRow("every chip at start") << QStringList() << allDevices << allVersions << allPackages << allSpeeds;
        QTest::newRow("upper-case series")
            << QStringList{"cbSeries=X1"} << QStringList{"Any", "D10", "D20"} << QStringList{"Any", "B", "A", ""}
            << x1Packages << x1Speeds;
        QTest::newRow("lower-case series")
            << QStringList{"cbSeries=x1"} << QStringList{"Any", "D20", "D30"} << QStringList{"Any", "C", ""}
            << QStringList{"Any", "Q1", "Q2"} << QStringList{"Any", "I6", "I7"};
        QTest::newRow("series then Any again")
            << QStringList{"cbSeries=S2", "cbSeries=Any"} << allDevices << allVersions << allPackages << allSpeeds;
        QTest::newRow("device narrows versions only")
            << QStringList{"cbSeries=X1", "cbDevice=D10"} << QStringList{"Any", "D10", "D20"} << QStringList{"Any", "A"}
            << x1Packages << x1Speeds;
        QTest::newRow("device back to Any lists the series' versions")
            << QStringList{"cbSeries=X1", "cbDevice=D10", "cbDevice=Any"} << QStringList{"Any", "D10", "D20"}
            << QStringList{"Any", "B", "A", ""} << x1Packages << x1Speeds;
        // With "Any" as series no chip qualifies for the version list.
        QTest::newRow("device under Any series")
            << QStringList{"cbDevice=D20"} << allDevices << QStringList{"Any"} << allPackages << allSpeeds;
    }

    void comboBoxContents()
    {
        QFETCH(QStringList, choices);
        DeviceSelector selector(m_cascade.get());
        QVERIFY(applyChoices(selector, choices));
        QCOMPARE(items(box(selector, "cbSeries")), (QStringList{"Any", "S2", "X1", "x1"}));
        QFETCH(QStringList, devices);
        QCOMPARE(items(box(selector, "cbDevice")), devices);
        QFETCH(QStringList, versions);
        QCOMPARE(items(box(selector, "cbDeviceVersion")), versions);
        QFETCH(QStringList, packages);
        QCOMPARE(items(box(selector, "cbPackage")), packages);
        QFETCH(QStringList, speeds);
        QCOMPARE(items(box(selector, "cbCondition")), speeds);
        QCOMPARE(box(selector, "cbDeviceVersion")->currentIndex(), 0);
    }

    void seriesChangeResetsDependentBoxes()
    {
        DeviceSelector selector(m_cascade.get());
        QVERIFY(applyChoices(selector, {"cbSeries=X1", "cbDevice=D20", "cbDeviceVersion=B", "cbPackage=P2",
                                        "cbCondition=C7"}));
        QCOMPARE(partNumbers(selector), QStringList{"PN-B2"});
        // D20 exists in x1 as well, and still is not carried over.
        QVERIFY(applyChoices(selector, {"cbSeries=x1"}));
        QCOMPARE(currentTexts(selector), (QStringList{"x1", "Any", "Any", "Any", "Any"}));
        for (const char* name : {"cbDevice", "cbDeviceVersion", "cbPackage", "cbCondition"})
            QCOMPARE(box(selector, QLatin1String(name))->currentIndex(), 0);
        QCOMPARE(partNumbers(selector), (QStringList{"PN-9", "PN-Z"}));
    }

    void emptyDatabase()
    {
        DeviceSelector selector(m_empty.get());
        for (const char* name : {"cbSeries", "cbDevice", "cbDeviceVersion", "cbPackage", "cbCondition"})
            QCOMPARE(items(box(selector, QLatin1String(name))), QStringList{"Any"});
        QCOMPARE(tableOf(selector)->model()->rowCount(), 0);
        QSignalSpy spy(&selector, &DeviceSelector::selectedDeviceChanged);
        selector.setCurrentDevice(QStringLiteral("a-01"));
        QCOMPARE(spy.count(), 0);
        QVERIFY(selector.selectedDevice().deviceId.isNull());
    }

    void tableFollowsBoxes_data()
    {
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QStringList>("rows");
        QTest::newRow("nothing chosen") << QStringList() << AllPartNumbers;
        QTest::newRow("series") << QStringList{"cbSeries=X1"} << QStringList{"PN-10", "PN-A1", "PN-B2", "PN-C3"};
        QTest::newRow("series and device") << QStringList{"cbSeries=X1", "cbDevice=D20"}
                                           << QStringList{"PN-A1", "PN-B2", "PN-C3"};
        QTest::newRow("version") << QStringList{"cbDeviceVersion=B"} << QStringList{"PN-B2", "pn-a"};
        // The blank entry is the initial version: only unversioned chips.
        QTest::newRow("blank version") << QStringList{"cbDeviceVersion="} << QStringList{"PN-C3", "PN-Z"};
        QTest::newRow("blank version in series") << QStringList{"cbSeries=X1", "cbDeviceVersion="}
                                                 << QStringList{"PN-C3"};
        QTest::newRow("package") << QStringList{"cbPackage=P1"} << QStringList{"PN-A1", "PN-C3"};
        QTest::newRow("speed") << QStringList{"cbCondition=C6"} << QStringList{"PN-A1", "PN-C3", "pn-a"};
        QTest::newRow("package and speed") << QStringList{"cbPackage=P1", "cbCondition=C6"}
                                           << QStringList{"PN-A1", "PN-C3"};
        QTest::newRow("nothing passes") << QStringList{"cbPackage=P2", "cbCondition=C6"} << QStringList();
    }

    void tableFollowsBoxes()
    {
        QFETCH(QStringList, choices);
        DeviceSelector selector(m_cascade.get());
        QVERIFY(applyChoices(selector, choices));
        QFETCH(QStringList, rows);
        QCOMPARE(partNumbers(selector), rows);
        QCOMPARE(tableOf(selector)->horizontalHeader()->sortIndicatorSection(), 0);
        QCOMPARE(tableOf(selector)->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    }

    void rebuildUndoesUserSortSelectionAndScroll()
    {
        auto selector = shown(m_large.get());
        QVERIFY(selector);
        QTableView* table = tableOf(*selector);
        QHeaderView* header = table->horizontalHeader();
        // The user sorts by Part Number descending with a header click,
        // scrolls down and picks a row.
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(header->sectionViewportPosition(0) + 20, header->height() / 2));
        QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
        QCOMPARE(partNumbers(*selector).first(), QStringLiteral("G-119"));
        table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum());
        QVERIFY(table->verticalScrollBar()->value() > 0);
        clickRow(table, table->rowAt(table->viewport()->height() / 2));
        QVERIFY(!selector->selectedDevice().deviceId.isEmpty());

        QVERIFY(applyChoices(*selector, {"cbPackage=K1"}));
        QStringList expected;
        for (int i = 1; i < 120; i += 3)
            expected << QStringLiteral("G-%1").arg(i, 3, 10, QLatin1Char('0'));
        QCOMPARE(partNumbers(*selector), expected);
        QCOMPARE(header->sortIndicatorSection(), 0);
        QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
        QVERIFY(table->selectionModel()->selectedRows().isEmpty());
        QVERIFY(selector->selectedDevice().deviceId.isNull());
        QCOMPARE(table->verticalScrollBar()->value(), 0);
    }

    void signalsOfEachRoad_data()
    {
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QString>("boxName");
        QTest::addColumn<int>("key");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<int>("emissions");

        QTest::newRow("package") << QStringList() << "cbPackage" << int(Qt::Key_Down) << QStringList{"PN-A1", "PN-C3"}
                                 << 1;
        QTest::newRow("speed") << QStringList() << "cbCondition" << int(Qt::Key_Down)
                               << QStringList{"PN-A1", "PN-C3", "pn-a"} << 1;
        QTest::newRow("version") << QStringList() << "cbDeviceVersion" << int(Qt::Key_Down)
                                 << QStringList{"PN-9"} << 1;
        // filter() first, then the version box's clear (index -1) and refill (index 0).
        QTest::newRow("device") << QStringList() << "cbDevice" << int(Qt::Key_Down) << QStringList{"PN-10"} << 3;
        QTest::newRow("device in series") << QStringList{"cbSeries=X1"} << "cbDevice" << int(Qt::Key_Down)
                                          << QStringList{"PN-10"} << 3;
        QTest::newRow("series") << QStringList() << "cbSeries" << int(Qt::Key_Down) << QStringList{"pn-a"} << 1;
        QTest::newRow("series back to Any") << QStringList{"cbSeries=S2"} << "cbSeries" << int(Qt::Key_Up)
                                            << AllPartNumbers << 1;
    }

    void signalsOfEachRoad()
    {
        QFETCH(QStringList, choices);
        QFETCH(QString, boxName);
        QFETCH(int, key);
        QFETCH(int, emissions);
        DeviceSelector selector(m_cascade.get());
        QVERIFY(applyChoices(selector, choices));
        QSignalSpy spy(&selector, &DeviceSelector::selectedDeviceChanged);
        QTest::keyClick(box(selector, boxName), Qt::Key(key));
        QCOMPARE(emittedIds(spy), empties(emissions));
        for (const QList<QVariant>& args : spy)
            QVERIFY(sameChip(qvariant_cast<DeviceArg>(args.at(0)), ChipInfo()));
        QFETCH(QStringList, rows);
        QCOMPARE(partNumbers(selector), rows);
    }

    void deviceChangeFiltersBeforeRefillingVersions()
    {
        DeviceSelector selector(m_cascade.get());
        QVERIFY(applyChoices(selector, {"cbSeries=X1"}));
        QComboBox* versions = box(selector, "cbDeviceVersion");
        QList<int> versionCounts;
        QStringList tables;
        connect(&selector, &DeviceSelector::selectedDeviceChanged, this, [&]() {
            versionCounts << versions->count();
            tables << partNumbers(selector).join(QLatin1Char(' '));
        });
        QVERIFY(applyChoices(selector, {"cbDevice=D10"}));
        QCOMPARE(versionCounts, (QList<int>{4, 0, 2}));
        QCOMPARE(tables, (QStringList{"PN-10", "PN-10", "PN-10"}));
        QCOMPARE(items(versions), (QStringList{"Any", "A"}));
    }

    void clickOnRowReportsItsChip()
    {
        auto selector = shown(m_cascade.get());
        QVERIFY(selector);
        QTableView* table = tableOf(*selector);
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QVERIFY(selector->selectedDevice().partNumber.isNull());
        QVERIFY(selector->selectedDevice().resources.isEmpty());

        clickRow(table, rowOf(*selector, QStringLiteral("PN-A1")));
        QCOMPARE(emittedIds(spy), QStringList{"a-02"});
        QVERIFY(sameChip(qvariant_cast<DeviceArg>(spy.last().at(0)), m_cascade->findByID(QStringLiteral("a-02"))));
        QVERIFY(sameChip(selector->selectedDevice(), m_cascade->findByID(QStringLiteral("a-02"))));

        const int row = rowOf(*selector, QStringLiteral("pn-a"));
        clickRow(table, row);
        QCOMPARE(emittedIds(spy), (QStringList{"a-02", "c-01"}));
        // Reading the selection reports nothing.
        QCOMPARE(selector->selectedDevice().deviceId, QStringLiteral("c-01"));
        QCOMPARE(spy.count(), 2);

        // Deselecting is not reported; only rebuilds report the empty choice.
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          table->visualRect(table->model()->index(row, 0)).center());
        QVERIFY(table->selectionModel()->selectedRows().isEmpty());
        QVERIFY(selector->selectedDevice().deviceId.isNull());
        QCOMPARE(spy.count(), 2);
    }

    void typingSearchesWithinBoxes_data()
    {
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("label");
        QTest::newRow("several hits") << QStringList() << "pn-" << AllPartNumbers << "(7 matches)";
        QTest::newRow("one hit keeps the plural") << QStringList() << "A1" << QStringList{"PN-A1"} << "(1 matches)";
        QTest::newRow("no hit") << QStringList() << "zzz" << QStringList() << "(0 matches)";
        QTest::newRow("within a series") << QStringList{"cbSeries=X1"} << "PN-"
                                         << QStringList{"PN-10", "PN-A1", "PN-B2", "PN-C3"} << "(4 matches)";
        QTest::newRow("outside the boxes") << QStringList{"cbSeries=x1"} << "A1" << QStringList() << "(0 matches)";
    }

    void typingSearchesWithinBoxes()
    {
        QFETCH(QStringList, choices);
        QFETCH(QString, typed);
        auto selector = shown(m_cascade.get());
        QVERIFY(selector);
        QVERIFY(applyChoices(*selector, choices));
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QTest::keyClicks(selector->findChild<SearchLineEdit*>(), typed);
        // One search, and one empty report, per keystroke.
        QCOMPARE(emittedIds(spy), empties(typed.size()));
        QFETCH(QStringList, rows);
        QCOMPARE(partNumbers(*selector), rows);
        QFETCH(QString, label);
        QCOMPARE(matchCount(*selector), label);
    }

    void deletingLastCharacterRestoresBoxResult()
    {
        auto selector = shown(m_cascade.get());
        QVERIFY(selector);
        QVERIFY(applyChoices(*selector, {"cbPackage=P1"}));
        SearchLineEdit* search = selector->findChild<SearchLineEdit*>();
        QTest::keyClicks(search, QStringLiteral("C3"));
        QCOMPARE(partNumbers(*selector), QStringList{"PN-C3"});
        QCOMPARE(matchCount(*selector), QStringLiteral("(1 matches)"));

        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QTest::keyClick(search, Qt::Key_Backspace);
        QCOMPARE(matchCount(*selector), QStringLiteral("(1 matches)"));
        QTest::keyClick(search, Qt::Key_Backspace);
        QCOMPARE(search->text(), QString());
        QCOMPARE(matchCount(*selector), QStringLiteral("(0 matches)"));
        QCOMPARE(partNumbers(*selector), (QStringList{"PN-A1", "PN-C3"}));
        QCOMPARE(emittedIds(spy), (QStringList{"", ""}));
    }

    void boxChangeRerunsSearch()
    {
        auto selector = shown(m_cascade.get());
        QVERIFY(selector);
        SearchLineEdit* search = selector->findChild<SearchLineEdit*>();
        QTest::keyClicks(search, QStringLiteral("PN-"));
        QCOMPARE(matchCount(*selector), QStringLiteral("(7 matches)"));

        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QVERIFY(applyChoices(*selector, {"cbSeries=X1"}));
        QCOMPARE(matchCount(*selector), QStringLiteral("(4 matches)"));
        QCOMPARE(partNumbers(*selector), (QStringList{"PN-10", "PN-A1", "PN-B2", "PN-C3"}));
        QCOMPARE(spy.count(), 1);

        // Text set by code is no user edit: nothing runs until a box changes.
        search->setText(QStringLiteral("B2"));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(matchCount(*selector), QStringLiteral("(4 matches)"));
        QVERIFY(applyChoices(*selector, {"cbPackage=P2"}));
        QCOMPARE(matchCount(*selector), QStringLiteral("(1 matches)"));
        QCOMPARE(partNumbers(*selector), QStringList{"PN-B2"});
        QCOMPARE(spy.count(), 2);
    }

    void searchOptionsRerunSearch_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("label");
        QTest::newRow("case sensitive") << "PN-A" << QStringList{"case"} << QStringList{"PN-A1"} << "(1 matches)";
        QTest::newRow("case sensitive twice") << "PN-A" << QStringList{"case", "case"}
                                              << QStringList{"PN-A1", "pn-a"} << "(2 matches)";
        QTest::newRow("match exactly") << "PN-A" << QStringList{"exact"} << QStringList{"pn-a"} << "(1 matches)";
        QTest::newRow("exactly and case") << "PN-A" << QStringList{"exact", "case"} << QStringList() << "(0 matches)";
        QTest::newRow("wild cards") << "pn-?" << QStringList{"wild"} << QStringList{"PN-9", "PN-Z", "pn-a"}
                                    << "(3 matches)";
        QTest::newRow("regular expression") << "PN-[0-9]+" << QStringList{"regexp"} << QStringList{"PN-10", "PN-9"}
                                            << "(2 matches)";
        QTest::newRow("back to anywhere") << "PN-A" << QStringList{"exact", "anywhere"}
                                          << QStringList{"PN-A1", "pn-a"} << "(2 matches)";
        // Speed grades are searched in their own column only.
        QTest::newRow("speed column") << "C6" << QStringList{"group6"} << QStringList{"PN-A1", "PN-C3", "pn-a"}
                                      << "(3 matches)";
        QTest::newRow("part number column") << "C6" << QStringList{"group2"} << QStringList() << "(0 matches)";
    }

    void searchOptionsRerunSearch()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, options);
        auto selector = shown(m_cascade.get());
        QVERIFY(selector);
        SearchLineEdit* search = selector->findChild<SearchLineEdit*>();
        QTest::keyClicks(search, typed);
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        for (const QString& name : options) {
            QAction* action = option(search, name);
            QVERIFY(action);
            action->trigger();
        }
        QCOMPARE(spy.count(), options.size());
        QFETCH(QStringList, rows);
        QCOMPARE(partNumbers(*selector), rows);
        QFETCH(QString, label);
        QCOMPARE(matchCount(*selector), label);
    }

    void setCurrentDevice_data()
    {
        QTest::addColumn<QString>("catalogue");
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<QStringList>("emitted");
        QTest::addColumn<QString>("selected");

        const QStringList any = {"Any", "Any", "Any", "Any", "Any"};
        // Series, device (filter, version clear, version refill) and version each filter once.
        const QStringList fiveEmpty = empties(5);
        QTest::newRow("empty id") << "cascade" << QStringList() << QString() << QString() << any << QStringList()
                                  << QString();
        QTest::newRow("unknown id") << "cascade" << QStringList() << QString() << "a-99" << any << QStringList()
                                    << QString();
        QTest::newRow("id in other case") << "cascade" << QStringList{"cbPackage=P1"} << QString() << "A-01"
                                          << QStringList{"Any", "Any", "Any", "P1", "Any"} << QStringList()
                                          << QString();
        QTest::newRow("known id") << "cascade" << QStringList() << QString() << "a-01"
                                  << QStringList{"X1", "D20", "B", "Any", "Any"} << fiveEmpty + QStringList{"a-01"}
                                  << "a-01";
        QTest::newRow("initial version") << "cascade" << QStringList() << QString() << "b-02"
                                         << QStringList{"x1", "D30", "", "Any", "Any"}
                                         << fiveEmpty + QStringList{"b-02"} << "b-02";
        QTest::newRow("series already current")
            << "cascade" << QStringList{"cbSeries=X1"} << QString() << "a-04"
            << QStringList{"X1", "D10", "A", "Any", "Any"} << empties(4) + QStringList{"a-04"} << "a-04";
        QTest::newRow("all three already current")
            << "cascade" << QStringList{"cbSeries=X1", "cbDevice=D20", "cbDeviceVersion=B"} << QString() << "a-01"
            << QStringList{"X1", "D20", "B", "Any", "Any"} << QStringList{"a-01"} << "a-01";
        // Package and speed are left alone, even when they hide the chip.
        QTest::newRow("package hides the chip")
            << "cascade" << QStringList{"cbSeries=X1", "cbDevice=D20", "cbDeviceVersion=B", "cbPackage=P1"}
            << QString() << "a-01" << QStringList{"X1", "D20", "B", "P1", "Any"} << QStringList() << QString();
        QTest::newRow("search hides the chip") << "cascade" << QStringList() << "zzz" << "a-01"
                                               << QStringList{"X1", "D20", "B", "Any", "Any"} << fiveEmpty
                                               << QString();
        QTest::newRow("search shows the chip") << "cascade" << QStringList() << "pn-b" << "a-01"
                                               << QStringList{"X1", "D20", "B", "Any", "Any"}
                                               << fiveEmpty + QStringList{"a-01"} << "a-01";
        QTest::newRow("old identifier") << "large" << QStringList() << QString() << "zr9k31-013"
                                        << QStringList{"G", "GD", "", "Any", "Any"}
                                        << fiveEmpty + QStringList{"zr9k31a-015"} << "zr9k31a-015";
        QTest::newRow("old identifier not in table") << "large" << QStringList() << QString() << "zr9k31-015"
                                                     << any << QStringList() << QString();
    }

    void setCurrentDevice()
    {
        QFETCH(QString, catalogue);
        QFETCH(QStringList, choices);
        QFETCH(QString, typed);
        QFETCH(QString, id);
        QFETCH(QStringList, emitted);
        QFETCH(QString, selected);
        auto selector = shown(db(catalogue));
        QVERIFY(selector);
        QVERIFY(applyChoices(*selector, choices));
        QTest::keyClicks(selector->findChild<SearchLineEdit*>(), typed);
        const QStringList rowsBefore = partNumbers(*selector);
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);

        selector->setCurrentDevice(id);
        QFETCH(QStringList, boxes);
        QCOMPARE(currentTexts(*selector), boxes);
        QCOMPARE(emittedIds(spy), emitted);
        QCOMPARE(selector->selectedDevice().deviceId, selected);
        if (emitted.isEmpty())
            QCOMPARE(partNumbers(*selector), rowsBefore);
        if (!selected.isEmpty()) {
            const ChipInfo chip = db(catalogue)->findByID(selected);
            QVERIFY(sameChip(qvariant_cast<DeviceArg>(spy.last().at(0)), chip));
            QVERIFY(sameChip(selector->selectedDevice(), chip));
            QCOMPARE(tableOf(*selector)->selectionModel()->selectedRows(0).size(), 1);
            QVERIFY(tableOf(*selector)->hasFocus());
        } else {
            QVERIFY(tableOf(*selector)->selectionModel()->selectedRows().isEmpty());
        }
    }

    void presetTwiceReportsOnlyTheChip()
    {
        DeviceSelector selector(m_cascade.get());
        selector.setCurrentDevice(QStringLiteral("a-01"));
        QSignalSpy spy(&selector, &DeviceSelector::selectedDeviceChanged);
        // The boxes stand already; the row is cleared and selected again.
        selector.setCurrentDevice(QStringLiteral("a-01"));
        QCOMPARE(emittedIds(spy), QStringList{"a-01"});
        QCOMPARE(tableOf(selector)->selectionModel()->selectedRows().size(), 1);
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
