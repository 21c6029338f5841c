// SPDX-License-Identifier: BSD-3-Clause
// The selector and its dialog: how the combo boxes fill and cascade, what the table, the count and the signal show
// after each road a user can take (boxes, typing, search options, clicks, a header click, a preset chip), the OK
// button, and getSelectedChip() ended with OK or Cancel.

#include "deviceselectordialog.h"

#include "deviceselector.h"
#include "searchlineedit.h"
#include "testhelpers.h"

#include <QtWidgets>

using DEV::DeviceSelector;
using DEV::DeviceSelectorDialog;
using TestHelpers::chipLine;
using TestHelpers::fields;
using L = QStringList;

namespace {

// Part numbers sort by code unit ("PN-10" < "PN-9" < "PN-A1" < ... < "pn-a") unlike the database's order (by
// version); two series differ only in letter case and share the device D20; one chip has no device id.
const QByteArray Cascade = chipLine("a-01", "PN-B2", "X1", "D20", "B", "P2", "C7")
    + chipLine("a-02", "PN-A1", "X1", "D20", "A", "P1", "C6") + chipLine("zr9k31a-015", "PN-C3", "X1", "D20", "", "P1")
    + chipLine("a-04", "PN-10", "X1", "D10", "A", "P3", "C8") + chipLine("b-01", "PN-9", "x1", "D20", "C", "Q1", "I7")
    + chipLine("b-02", "PN-Z", "x1", "D30", "", "Q2", "I6") + chipLine("", "pn-a", "S2", "E1", "B", "R1", "C6");

/// The device ids a selectedDeviceChanged() spy has seen, "-" for an empty choice.
QString reports(const QSignalSpy& spy)
{
    L out;
    for (const QList<QVariant>& args : spy)
        out << qvariant_cast<DEV::DeviceArg>(args.at(0)).deviceId;
    return out.replaceInStrings(QRegularExpression(QStringLiteral("^$")), QStringLiteral("-")).join(' ');
}

/// Every box's entries ("/" between boxes), or every box's current entry.
QString boxes(const QWidget& w, bool entries)
{
    L out;
    for (const char* name : {"cbSeries", "cbDevice", "cbDeviceVersion", "cbPackage", "cbCondition"}) {
        const auto* box = w.findChild<QComboBox*>(QLatin1String(name));
        L items;
        for (int i = 0; i < box->count(); ++i)
            items << box->itemText(i);
        out << (entries ? items.join(' ') : box->currentText());
    }
    return out.join(entries ? '/' : ',');
}

QString matchCount(const QWidget& w) { return w.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text(); }

QString rowsOf(const QWidget& w)
{
    return TestHelpers::columnTexts(*w.findChild<QTableView*>()->model(), 0).join(' ');
}

/// Applies steps in order: "box=text", a search option ("case", "wild", "regexp", "exact", "group<n>"), "type:text"
/// typed into the search field ('<' is a backspace), "set:text" set by code, "click:part number", "sort:column" (a
/// header click) or "preset:device id".
bool apply(QWidget& w, const QString& steps)
{
    auto* search = w.findChild<DEV::SearchLineEdit*>();
    const QHash<QString, QAction*> options = {{"case", search->caseSensitiveAction}, {"wild", search->wildCardAction},
                                              {"regexp", search->regExpAction}, {"exact", search->matchExactlyAction}};
    for (const QString& step : steps.split(' ', Qt::SkipEmptyParts)) {
        auto* box = w.findChild<QComboBox*>(step.section('=', 0, 0));
        QAction* option = step.startsWith("group") ? search->rangeActions.value(step.mid(5).toInt()) : options.value(step);
        auto* selector = qobject_cast<DeviceSelector*>(&w) ? qobject_cast<DeviceSelector*>(&w) : w.findChild<DeviceSelector*>();
        if (step.startsWith(QLatin1String("type:"))) {
            for (const QChar c : step.mid(5))
                c == '<' ? QTest::keyClick(search, Qt::Key_Backspace) : QTest::keyClicks(search, QString(c));
        } else if (step.startsWith(QLatin1String("set:"))) {
            search->setText(step.mid(4));
        } else if (step.startsWith(QLatin1String("click:"))) {
            auto* table = w.findChild<QTableView*>();
            const QModelIndex cell = table->model()->index(rowsOf(w).split(' ').indexOf(step.mid(6)), 0);
            QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(cell).center());
        } else if (step.startsWith(QLatin1String("sort:"))) {
            QHeaderView* header = w.findChild<QTableView*>()->horizontalHeader();
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {header->sectionViewportPosition(step.mid(5).toInt()) + 9, 5});
        } else if (step.startsWith(QLatin1String("preset:"))) {
            selector->setCurrentDevice(step.mid(7));
        } else if (box && box->findText(step.section('=', 1)) >= 0) {
            box->setCurrentIndex(box->findText(step.section('=', 1)));
        } else if (option) {
            option->trigger();
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
    std::unique_ptr<DEV::DeviceDb> m_cascade;

    /// A shown selector, so that rows have geometry for clicks.
    std::unique_ptr<DeviceSelector> shown()
    {
        std::unique_ptr<DeviceSelector> w(new DeviceSelector(m_cascade.get()));
        w->resize(700, 650);
        w->show();
        if (!QTest::qWaitForWindowExposed(w.get()))
            w.reset();
        return w;
    }

private Q_SLOTS:
    void initTestCase()
    {
        Q_INIT_RESOURCE(searchlineedit_icon);
        m_cascade = m_files.load(Cascade);
    }

    // The signal hosts connect to by its string signature; then the dialog's set-up and the table's.
    void metaObjectsAndSetUp()
    {
        L texts;
        for (const QMetaObject* mo : {&DeviceSelector::staticMetaObject, &DeviceSelectorDialog::staticMetaObject})
            texts << mo->className() + QLatin1Char(' ') + mo->method(mo->methodOffset()).methodSignature();
        DeviceSelectorDialog dialog(m_cascade.get());
        auto* selector = dialog.findChild<DeviceSelector*>();
        selector->setMinimumSize(1000, 600); // contents do not change the size hint
        texts << dialog.windowTitle() + QStringLiteral(" %1x%2").arg(dialog.sizeHint().width()).arg(dialog.sizeHint().height());
        QCOMPARE(texts, (L{"DEV::DeviceSelector selectedDeviceChanged(DEV::DeviceArg)",
                           "DEV::DeviceSelectorDialog selectedDeviceChanged(DEV::DeviceArg)", "Select Device 800x450"}));
        QCOMPARE(selector->findChild<QHBoxLayout*>("SerarchLayout")->indexOf(selector->findChild<DEV::SearchLineEdit*>()), 1);
        QCOMPARE(selector->findChild<QLabel*>("label_4")->text() + matchCount(*selector), QStringLiteral("Search:(0 matches)"));
        QCOMPARE(dialog.findChild<QDialogButtonBox*>()->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        auto* table = selector->findChild<QTableView*>();
        QVERIFY(table->isSortingEnabled() && table->isColumnHidden(1) && !table->horizontalHeader()->highlightSections()
                && table->selectionMode() == QAbstractItemView::SingleSelection && table->verticalHeader()->isHidden());
        // Qt raises a default row height below the style's minimum to that minimum.
        QCOMPARE(table->verticalHeader()->defaultSectionSize(), qMax(24, table->verticalHeader()->minimumSectionSize()));
        table->horizontalHeader()->showSection(1); // brings back the width it was given
        QList<int> widths;
        for (int section = 0; section < 16; ++section)
            widths << table->horizontalHeader()->sectionSize(section);
        QCOMPARE(widths, (QList<int>{210, 100, 110, 130, 90, 60, 60, 50, 55, 50, 75, 75, 75, 80, 120, 40}));
        const auto* version = selector->findChild<QLabel*>(QStringLiteral("labelDeviceVersion"));
        QCOMPARE(version->alignment(), Qt::AlignTop);
        QCOMPARE(version->text(), QStringLiteral("<p style='line-height:60%'> Device Version: </p><p style='font-size:"
                                                 "9px;line-height:0px'> &#10056;no version number is initial version </p>"));
    }

    // "steps|current entries|rows|count label|reports|part number selected[|entries of the boxes after the series]".
    // Each rebuild reports the empty choice ("-"): a device change three times (filter, the version box's clear and
    // refill). A series narrows the other boxes to its chips, a device only the versions, and with "Any" as series no
    // chip qualifies for the version list. A preset moves series, device and version, and selects the chip if its row
    // is shown.
    void roads_data()
    {
        QTest::addColumn<QString>("road");
        const char* const roads[][2] = {
            {"start", "|%any|PN-10 PN-9 PN-A1 PN-B2 PN-C3 PN-Z pn-a|(0 matches)|||%all"},
            {"upper-case series", "cbSeries=X1|X1,Any,Any,Any,Any|PN-10 PN-A1 PN-B2 PN-C3|(0 matches)|-||%x1"},
            {"lower-case series resets the others, D20 not carried over", "cbSeries=X1 cbDevice=D20 cbDeviceVersion=B "
             "cbPackage=P2 cbCondition=C7 cbSeries=x1|x1,Any,Any,Any,Any|PN-9 PN-Z|(0 matches)|- - - - - - - -||"
             "Any D20 D30/Any C /Any Q1 Q2/Any I6 I7"},
            {"device", "cbSeries=X1 cbDevice=D10|X1,D10,Any,Any,Any|PN-10|(0 matches)|- - - -||Any D10 D20/Any A/Any P1 P2 "
                       "P3/Any C6 C7 C8"},
            {"device back to Any", "cbSeries=X1 cbDevice=D10 cbDevice=Any|X1,Any,Any,Any,Any|PN-10 PN-A1 PN-B2 PN-C3|"
                                   "(0 matches)|- - - - - - -||%x1"},
            {"device under Any series", "cbDevice=D20|Any,D20,Any,Any,Any|PN-9 PN-A1 PN-B2 PN-C3|(0 matches)|- - -||Any "
                                        "D10 D20 D30 E1/Any/Any P1 P2 P3 Q1 Q2 R1/Any C6 C7 C8 I6 I7"},
            {"blank version: unversioned only", "cbDeviceVersion=|Any,Any,,Any,Any|PN-C3 PN-Z|(0 matches)|-|"},
            {"package and speed", "cbPackage=P1 cbCondition=C6|Any,Any,Any,P1,C6|PN-A1 PN-C3|(0 matches)|- -||%all"},
            {"several hits", "type:pn-|%any|PN-10 PN-9 PN-A1 PN-B2 PN-C3 PN-Z pn-a|(7 matches)|- - -|"},
            {"search within the boxes", "cbSeries=x1 type:A1|x1,Any,Any,Any,Any||(0 matches)|- - -|"},
            {"one character deleted", "cbPackage=P1 type:C3<|Any,Any,Any,P1,Any|PN-C3|(1 matches)|- - - -|"},
            {"last character deleted", "cbPackage=P1 type:C3<<|Any,Any,Any,P1,Any|PN-A1 PN-C3|(0 matches)|- - - - -|"},
            {"box change reruns the search", "type:PN- cbSeries=X1|X1,Any,Any,Any,Any|PN-10 PN-A1 PN-B2 PN-C3|(4 matches)|"
                                             "- - - -|"},
            {"case sensitive", "type:PN-A case|%any|PN-A1|(1 matches)|- - - - -|"},
            {"exactly, then case", "type:PN-A exact case|%any||(0 matches)|- - - - - -|"},
            {"wild cards", "type:pn-? wild|%any|PN-9 PN-Z pn-a|(3 matches)|- - - - -|"},
            {"regular expression", "type:PN-[0-9]+ regexp|%any|PN-10 PN-9|(2 matches)|- - - - - - - - - -|"},
            {"speed column", "type:C6 group6|%any|PN-A1 PN-C3 pn-a|(3 matches)|- - -|"},
            // A header click sorts; a rebuild drops that sort, and the selection.
            {"header click", "sort:0|%any|pn-a PN-Z PN-C3 PN-B2 PN-A1 PN-9 PN-10|(0 matches)||"},
            {"rebuild after a click and a sort", "click:PN-9 sort:0 cbPackage=Any cbCondition=C6|Any,Any,Any,Any,C6|"
                                                 "PN-A1 PN-C3 pn-a|(0 matches)|b-01 -|"},
            // Text set by code is no user edit: it waits for the next rebuild.
            {"text set by code", "set:B2|%any|PN-10 PN-9 PN-A1 PN-B2 PN-C3 PN-Z pn-a|(0 matches)||"},
            {"text set by code, then a box", "set:B2 cbPackage=P2|Any,Any,Any,P2,Any|PN-B2|(1 matches)|-|"},
            {"clicks report their chips", "click:PN-A1 click:PN-9 click:pn-a|%any|PN-10 PN-9 PN-A1 PN-B2 PN-C3 PN-Z pn-a|"
                                          "(0 matches)|a-02 b-01 -|pn-a"},
            {"preset", "preset:a-01|X1,D20,B,Any,Any|PN-B2|(0 matches)|- - - - - a-01|PN-B2"},
            {"preset: empty or other case", "cbPackage=P1 preset: preset:A-01|Any,Any,Any,P1,Any|PN-A1 PN-C3|(0 matches)|-|"},
            {"preset: initial version", "preset:b-02|x1,D30,,Any,Any|PN-Z|(0 matches)|- - - - - b-02|PN-Z"},
            {"preset: series current", "cbSeries=X1 preset:a-04|X1,D10,A,Any,Any|PN-10|(0 matches)|- - - - - a-04|PN-10"},
            {"preset: all current", "cbSeries=X1 cbDevice=D20 cbDeviceVersion=B preset:a-01|X1,D20,B,Any,Any|PN-B2|"
                                    "(0 matches)|- - - - - a-01|PN-B2"},
            // Package and speed are left alone, even when they hide the chip.
            {"preset: package hides the chip", "preset:a-01 cbPackage=P1 preset:a-01|X1,D20,B,P1,Any||(0 matches)|"
                                               "- - - - - a-01 -|"},
            {"preset: search hides the chip", "type:zzz preset:a-01|X1,D20,B,Any,Any||(0 matches)|- - - - - - - -|"},
            {"preset: search shows the chip", "type:pn-b preset:a-01|X1,D20,B,Any,Any|PN-B2|(1 matches)|"
                                              "- - - - - - - - - a-01|PN-B2"},
            {"preset: old identifier", "preset:zr9k31-013|X1,D20,,Any,Any|PN-C3|(0 matches)|- - - - - zr9k31a-015|PN-C3"},
            {"preset: unknown old identifier", "preset:zr9k31-015|%any|PN-10 PN-9 PN-A1 PN-B2 PN-C3 PN-Z pn-a|(0 matches)||"},
        };
        for (const auto& road : roads)
            QTest::newRow(road[0]) << QString::fromLatin1(road[1])
                                          .replace(QLatin1String("%any"), "Any,Any,Any,Any,Any")
                                          .replace(QLatin1String("%all"),
                                                   "Any D10 D20 D30 E1/Any C B A /Any P1 P2 P3 Q1 Q2 R1/Any C6 C7 C8 I6 I7")
                                          .replace(QLatin1String("%x1"), "Any D10 D20/Any B A /Any P1 P2 P3/Any C6 C7 C8");
    }
    void roads()
    {
        QFETCH(QString, road);
        const L expected = road.split('|');
        auto selector = shown();
        QVERIFY(selector);
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QVERIFY(apply(*selector, expected.at(0)));
        L actual{expected.at(0), boxes(*selector, false), rowsOf(*selector), matchCount(*selector), reports(spy),
                 selector->selectedDevice().partNumber};
        if (expected.size() > 6) // the entries of the boxes after the series
            actual << boxes(*selector, true).section('/', 1);
        QCOMPARE(actual, expected);
        QCOMPARE(selector->findChild<QTableView*>()->selectionModel()->selectedRows().size(), int(!actual.at(5).isEmpty()));
        if (!actual.at(5).isEmpty())
            QCOMPARE(fields(qvariant_cast<DEV::DeviceArg>(spy.last().at(0))), fields(selector->selectedDevice()));
    }

    // The filter runs before the versions are refilled.
    void deviceChangeFiltersBeforeRefillingVersions()
    {
        DeviceSelector selector(m_cascade.get());
        QVERIFY(apply(selector, "cbSeries=X1"));
        L seen;
        connect(&selector, &DeviceSelector::selectedDeviceChanged, this, [&]() {
            seen << QString::number(selector.findChild<QComboBox*>("cbDeviceVersion")->count()) + ':' + rowsOf(selector);
        });
        QVERIFY(apply(selector, "cbDevice=D10"));
        QCOMPARE(seen, (L{"4:PN-10", "0:PN-10", "2:PN-10"}));
    }

    // "preset: steps, button": what the dialog showed when it opened (OK enabled, the chip selected), and the chip
    // returned.
    void getSelectedChip_data()
    {
        QTest::addColumn<QString>("run");
        QTest::addColumn<QString>("result");
        QTest::newRow("OK on preset chip") << "a-02: OK" << "1 a-02 -> a-02";
        QTest::newRow("OK after choosing another row") << "a-02: cbDeviceVersion=Any click:PN-B2 OK" << "1 a-02 -> a-01";
        // Nothing preset, nothing reported: OK stays enabled and gives no chip.
        QTest::newRow("OK with unknown id") << "k-99: OK" << "1  -> ";
        QTest::newRow("Cancel") << "a-02: Cancel" << "1 a-02 -> ";
        // OK follows the choice: a row without a device id leaves it off.
        QTest::newRow("OK on a chip without id") << "a-02: cbSeries=Any click:pn-a OK" << "1 a-02 still open -> ";
    }
    void getSelectedChip()
    {
        QFETCH(QString, run);
        QFETCH(QString, result);
        // Once exec() runs: note what the dialog shows, end it as the row says, and reject it if still open so that a
        // failure cannot hang.
        QString seen;
        QPointer<DeviceSelectorDialog> dialog;
        QTimer::singleShot(0, [&]() {
            dialog = qobject_cast<DeviceSelectorDialog*>(QApplication::activeModalWidget());
            auto* buttons = dialog->findChild<QDialogButtonBox*>();
            seen = QString::number(buttons->button(QDialogButtonBox::Ok)->isEnabled()) + ' ' + dialog->selectedDevice().deviceId;
            apply(*dialog, run.section(' ', 1, -2));
            QTest::mouseClick(buttons->button(run.endsWith("OK") ? buttons->Ok : buttons->Cancel), Qt::LeftButton);
            if (dialog->isVisible()) {
                seen += QStringLiteral(" still open");
                dialog->reject();
            }
        });
        const DEV::ChipInfo chip = DeviceSelectorDialog::getSelectedChip(nullptr, m_cascade.get(), run.section(':', 0, 0));
        QCOMPARE(seen + " -> " + chip.deviceId, result);
        QCOMPARE(fields(chip), fields(chip.deviceId.isEmpty() ? DEV::ChipInfo() : m_cascade->findByID(chip.deviceId)));
        QVERIFY(dialog.isNull()); // the dialog does not outlive the call
    }
};

QTEST_MAIN(TestDeviceSelector)
#include "tst_deviceselector.moc"
