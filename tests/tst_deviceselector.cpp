// SPDX-License-Identifier: BSD-3-Clause
// The selector and its dialog: how the combo boxes fill and cascade, what the table, the count and the signal show
// after each road a user can take (boxes, typing, search options, clicks, a header click, a preset chip), the OK
// button, and getSelectedChip() ended with OK or Cancel.

#include "deviceselectordialog.h"

#include "chiprequirements.h"
#include "deviceselector.h"
#include "reference/reference.h"
#include "searchlineedit.h"
#include "testhelpers.h"

#include <QtWidgets>

#include <numeric>

using DEV::DeviceSelector;
using DEV::DeviceSelectorDialog;
using TestHelpers::chipLine;
using TestHelpers::fields;
using L = QStringList;

namespace {

// Part numbers sort by code unit ("PN-10" < "PN-9" < "PN-A1" < ... < "pn-a") unlike the database's order (by
// version); two series differ only in letter case and share the device D20; one chip has no device id, two share one.
const QByteArray Cascade = chipLine("a-01", "PN-B2", "X1", "D20", "B", "P2", "C7") + chipLine("a-01", "PN-B1", "X1", "D20", "B", "P2", "C7")
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

/// A selector's saved state as saveState() lays it out; by default a fresh selector's.
struct SelectorState
{
    qint32 sort = 0, order = 0;
    QVector<qint32> at{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    QVector<qint32> width{210, 0, 110, 130, 90, 60, 60, 50, 55, 50, 75, 75, 75, 80, 120, 40}; // none for a hidden one
    QVector<quint8> hidden{0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    QByteArray bytes() const
    {
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_5_12);
        out << quint32(0x44455332) << sort << order;
        for (int column = 0; column < 16; ++column)
            out << at[column] << width[column] << hidden[column];
        return bytes;
    }
};

/// Lays out the button boxes it styles as @p layout, a QDialogButtonBox::ButtonLayout.
struct ButtonLayout : QProxyStyle
{
    explicit ButtonLayout(int layout) : layout(layout) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* data) const override
    {
        return hint == SH_DialogButtonLayout ? layout : QProxyStyle::styleHint(hint, option, widget, data);
    }
    const int layout;
};

/// Applies steps in order: "box=text", a search option ("case", "wild", "regexp", "exact", "anywhere", "group<n>"),
/// "type:text"
/// typed into the search field ('<' is a backspace), "set:text" set by code, "click:part number" ("dbl:" a double
/// click), "sort:column" (a header click), "key:name" pressed where the focus is, "preset:device id" or
/// "exact:part number[/match key]"; "menu:word" the table's visible, enabled context-menu entry starting with it,
/// "column:n" a click on column n of the comparison panel ("cdbl:n" a double click), "button:word" a click on the
/// button starting with it, "compare:PN,PN..." the host's comparison (match key MK), "panel" the panel shown ("hidden":
/// hidden again),
/// "min:resource=count" the row of minimums shown with that one, "focus:object name" the widget given the focus by Tab.
bool apply(QWidget& w, const QString& steps)
{
    auto* search = w.findChild<DEV::SearchLineEdit*>();
    const QHash<QString, QAction*> options = {{"case", search->caseSensitiveAction}, {"wild", search->wildCardAction},
                                              {"regexp", search->regExpAction}, {"exact", search->matchExactlyAction},
                                              {"anywhere", search->matchAnywhereAction}};
    for (const QString& step : steps.split(' ', Qt::SkipEmptyParts)) {
        auto* box = w.findChild<QComboBox*>(step.section('=', 0, 0));
        QAction* option = step.startsWith("group") ? search->rangeActions.value(step.mid(5).toInt()) : options.value(step);
        auto* selector = qobject_cast<DeviceSelector*>(&w) ? qobject_cast<DeviceSelector*>(&w) : w.findChild<DeviceSelector*>();
        if (step.startsWith(QLatin1String("type:"))) {
            for (const QChar c : step.mid(5))
                c == '<' ? QTest::keyClick(search, Qt::Key_Backspace) : QTest::keyClicks(search, QString(c));
        } else if (step.startsWith(QLatin1String("set:"))) {
            search->setText(step.mid(4));
        } else if (QRegularExpression("^(click|dbl|column|cdbl):").match(step).hasMatch()) {
            // The table's row of a part number, or the comparison panel's column.
            const bool panel = step.startsWith("c") && !step.startsWith("click");
            auto* view = w.findChild<QTableView*>(panel ? QStringLiteral("comparisonView") : QStringLiteral("tableView"));
            const QString at = step.section(':', 1);
            const QPoint cell = view->visualRect(panel ? view->model()->index(0, at.toInt())
                                                       : view->model()->index(rowsOf(w).split(' ').indexOf(at), 0)).center();
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell);
            if (step.contains(QLatin1String("dbl:")))
                QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, cell);
        } else if (step.startsWith(QLatin1String("key:"))) {
            const int key = QMetaEnum::fromType<Qt::Key>().keyToValue(("Key_" + step.mid(4)).toLatin1());
            QTest::keyClick(w.window()->focusWidget(), Qt::Key(key));
        } else if (step.startsWith(QLatin1String("exact:"))) {
            DEV::ChipInfo chip;
            chip.partNumber = step.mid(6).section('/', 0, 0);
            chip.matchKey = step.contains('/') ? step.section('/', 1) : QStringLiteral("MK");
            selector->setCurrentDevice(chip);
        } else if (step.startsWith(QLatin1String("sort:"))) {
            QHeaderView* header = w.findChild<QTableView*>()->horizontalHeader();
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {header->sectionViewportPosition(step.mid(5).toInt()) + 9, 5});
        } else if (step.startsWith(QLatin1String("preset:"))) {
            selector->setCurrentDevice(step.mid(7));
        } else if (step.startsWith(QLatin1String("menu:"))) {
            QAction* entry = nullptr;
            for (QAction* action : w.findChild<QTableView*>()->actions())
                entry = action->text().startsWith(step.mid(5)) && action->isVisible() && action->isEnabled() ? action : entry;
            if (!entry)
                return false;
            entry->trigger();
        } else if (step.startsWith(QLatin1String("button:"))) {
            QPushButton* button = nullptr;
            for (QPushButton* candidate : w.findChildren<QPushButton*>())
                button = candidate->text().startsWith(step.mid(7)) && candidate->isEnabled() ? candidate : button;
            if (!button)
                return false;
            QTest::mouseClick(button, Qt::LeftButton);
        } else if (step.startsWith(QLatin1String("compare:"))) {
            QList<DEV::ChipInfo> chips;
            for (const QString& partNumber : step.mid(8).split(',')) {
                chips << DEV::ChipInfo();
                chips.last().partNumber = partNumber;
                chips.last().matchKey = QStringLiteral("MK");
            }
            selector->setComparedChips(chips);
        } else if (step.startsWith(QLatin1String("min:"))) {
            DEV::ChipRequirements needs;
            if (!needs.set(step.mid(4)).isEmpty())
                return false;
            selector->setRequirementsVisible(true);
            selector->setRequirements(needs);
        } else if (step.startsWith(QLatin1String("focus:"))) {
            w.findChild<QWidget*>(step.mid(6))->setFocus(Qt::TabFocusReason);
        } else if (step == QLatin1String("panel") || step == QLatin1String("hidden")) {
            selector->setComparisonVisible(step == QLatin1String("panel"));
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
    // Chips t-10 to t-69, part numbers PN-10 to PN-69, LUT 100 times the number, and t-99, a second record of PN-15
    // (one chip, two device ids).
    std::unique_ptr<DEV::DeviceDb> m_long;

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
        QByteArray lines;
        for (int i = 10; i < 70; ++i) {
            lines += chipLine("t-" + QByteArray::number(i), "PN-" + QByteArray::number(i)).replace(",200,", "," + QByteArray::number(i * 100) + ",");
            if (i == 15)
                lines += chipLine("t-99", "PN-15").replace(",200,", ",1500,");
        }
        m_long = m_files.load(lines);
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
        for (const bool recent : {false, true}) { // the selector above the buttons, nothing else
            dialog.setRecentVisible(recent);
            auto* layout = qobject_cast<QVBoxLayout*>(dialog.layout());
            QVERIFY(layout && layout->count() == 2 && layout->itemAt(0)->widget() == selector
                    && layout->itemAt(1)->widget() == dialog.findChild<QDialogButtonBox*>());
        }
        auto* table = selector->findChild<QTableView*>();
        QVERIFY(table->isSortingEnabled() && table->isColumnHidden(1) && !table->horizontalHeader()->highlightSections()
                && table->selectionMode() == QAbstractItemView::SingleSelection && table->verticalHeader()->isHidden());
        table->horizontalHeader()->showSection(1); // brings back the width it was given (the others: savedState)
        QCOMPARE(table->horizontalHeader()->sectionSize(1), 100);
        const auto* version = selector->findChild<QLabel*>(QStringLiteral("labelDeviceVersion"));
        QCOMPARE(version->alignment(), Qt::AlignTop);
        QCOMPARE(version->text(), QStringLiteral("<p style='line-height:60%'> Device Version: </p><p style='font-size:"
                                                 "9px;line-height:0px'> &#10056;no version number is initial version </p>"));
    }

    // "steps|current entries|rows|count label|reports|part number selected[|entries of the boxes after the series]",
    // or, with the comparison panel shown ("panel"), "...|compared chips|context-menu entries after the copy actions"
    // ("~": disabled). Each rebuild reports the empty choice ("-"): a device change three times (filter, the version
    // box's clear and refill). A series narrows the other boxes to its chips, a device only the versions, and with
    // "Any" as series no chip qualifies for the version list. A preset moves series, device and version, and selects
    // the chip if its row is shown. The same package: the series (one rebuild that resets the other boxes, run
    // directly when the series stays), the package (one more) and the chip again, the search cleared. A compared
    // column presets its chip as setCurrentDevice(ChipInfo) does.
    void roads_data()
    {
        QTest::addColumn<QString>("road");
        const char* const roads[][2] = {
            {"start", "|%any|PN-10 PN-9 PN-A1 PN-B1 PN-B2 PN-C3 PN-Z pn-a|(0 matches)|||%all"},
            {"upper-case series", "cbSeries=X1|X1,Any,Any,Any,Any|PN-10 PN-A1 PN-B1 PN-B2 PN-C3|(0 matches)|-||%x1"},
            {"lower-case series resets the others, D20 not carried over", "cbSeries=X1 cbDevice=D20 cbDeviceVersion=B "
             "cbPackage=P2 cbCondition=C7 cbSeries=x1|x1,Any,Any,Any,Any|PN-9 PN-Z|(0 matches)|- - - - - - - -||"
             "Any D20 D30/Any C /Any Q1 Q2/Any I6 I7"},
            {"device", "cbSeries=X1 cbDevice=D10|X1,D10,Any,Any,Any|PN-10|(0 matches)|- - - -||Any D10 D20/Any A/Any P1 P2 "
                       "P3/Any C6 C7 C8"},
            {"device back to Any", "cbSeries=X1 cbDevice=D10 cbDevice=Any|X1,Any,Any,Any,Any|PN-10 PN-A1 PN-B1 PN-B2 PN-C3|"
                                   "(0 matches)|- - - - - - -||%x1"},
            {"device under Any series", "cbDevice=D20|Any,D20,Any,Any,Any|PN-9 PN-A1 PN-B1 PN-B2 PN-C3|(0 matches)|- - -||Any "
                                        "D10 D20 D30 E1/Any/Any P1 P2 P3 Q1 Q2 R1/Any C6 C7 C8 I6 I7"},
            {"blank version: unversioned only", "cbDeviceVersion=|Any,Any,,Any,Any|PN-C3 PN-Z|(0 matches)|-|"},
            {"package and speed", "cbPackage=P1 cbCondition=C6|Any,Any,Any,P1,C6|PN-A1 PN-C3|(0 matches)|- -||%all"},
            {"a minimum all chips meet keeps every box's choice", "cbDevice=D20 cbPackage=P2 cbCondition=C7 min:LUT=100|"
                                                                "Any,D20,Any,P2,C7|PN-B1 PN-B2|(0 matches)|- - - - - - - - - - -|"},
            {"several hits", "type:pn-|%any|PN-10 PN-9 PN-A1 PN-B1 PN-B2 PN-C3 PN-Z pn-a|(8 matches)|- - -|"},
            {"search within the boxes", "cbSeries=x1 type:A1|x1,Any,Any,Any,Any||(0 matches)|- - -|"},
            {"one character deleted", "cbPackage=P1 type:C3<|Any,Any,Any,P1,Any|PN-C3|(1 matches)|- - - -|"},
            {"last character deleted", "cbPackage=P1 type:C3<<|Any,Any,Any,P1,Any|PN-A1 PN-C3|(0 matches)|- - - - -|"},
            {"box change reruns the search", "type:PN- cbSeries=X1|X1,Any,Any,Any,Any|PN-10 PN-A1 PN-B1 PN-B2 PN-C3|(5 matches)|"
                                             "- - - -|"},
            {"case sensitive", "type:PN-A case|%any|PN-A1|(1 matches)|- - - - -|"},
            {"exactly, then case", "type:PN-A exact case|%any||(0 matches)|- - - - - -|"},
            {"wild cards", "type:pn-? wild|%any|PN-9 PN-Z pn-a|(3 matches)|- - - - -|"},
            {"regular expression", "type:PN-[0-9]+ regexp|%any|PN-10 PN-9|(2 matches)|- - - - - - - - - -|"},
            {"speed column", "type:C6 group6|%any|PN-A1 PN-C3 pn-a|(3 matches)|- - -|"},
            // A header click sorts; a rebuild drops that sort, and the selection.
            {"header click keeps the chosen chip", "click:PN-9 sort:0|%any|pn-a PN-Z PN-C3 PN-B2 PN-B1 PN-A1 PN-9 PN-10|(0 matches)|b-01|PN-9"},
            {"header click", "sort:0|%any|pn-a PN-Z PN-C3 PN-B2 PN-B1 PN-A1 PN-9 PN-10|(0 matches)||"},
            {"a click after the sort", "click:PN-9 sort:0 click:PN-A1|%any|pn-a PN-Z PN-C3 PN-B2 PN-B1 PN-A1 PN-9 PN-10|"
                                       "(0 matches)|b-01 a-02|PN-A1"},
            {"rebuild after a click and a sort", "click:PN-9 sort:0 cbPackage=Any cbCondition=C6|Any,Any,Any,Any,C6|"
                                                 "PN-A1 PN-C3 pn-a|(0 matches)|b-01 -|"},
            // Text set by code is no user edit: it waits for the next rebuild.
            {"text set by code", "set:B2|%any|PN-10 PN-9 PN-A1 PN-B1 PN-B2 PN-C3 PN-Z pn-a|(0 matches)||"},
            {"text set by code, then a box", "set:B2 cbPackage=P2|Any,Any,Any,P2,Any|PN-B2|(1 matches)|-|"},
            {"the first Down selects the first row", "cbPackage=P1 focus:tableView key:Down|Any,Any,Any,P1,Any|PN-A1 PN-C3|"
                                                     "(0 matches)|- a-02|PN-A1"},
            {"clicks report their chips", "click:PN-A1 click:PN-9 click:pn-a|%any|PN-10 PN-9 PN-A1 PN-B1 PN-B2 PN-C3 PN-Z pn-a|"
                                          "(0 matches)|a-02 b-01 -|pn-a"},
            {"preset: the first row of the id", "preset:a-01|X1,D20,B,Any,Any|PN-B1 PN-B2|(0 matches)|- - - - - a-01|PN-B1"},
            {"preset: exact chip", "exact:PN-B2|X1,D20,B,Any,Any|PN-B1 PN-B2|(0 matches)|- - - - - a-01|PN-B2"},
            {"preset: exact chip, other match key", "exact:PN-B2/XX|%any|PN-10 PN-9 PN-A1 PN-B1 PN-B2 PN-C3 PN-Z pn-a|(0 matches)||"},
            {"preset: empty or other case", "cbPackage=P1 preset: preset:A-01|Any,Any,Any,P1,Any|PN-A1 PN-C3|(0 matches)|-|"},
            {"preset: initial version", "preset:b-02|x1,D30,,Any,Any|PN-Z|(0 matches)|- - - - - b-02|PN-Z"},
            {"preset: series current", "cbSeries=X1 preset:a-04|X1,D10,A,Any,Any|PN-10|(0 matches)|- - - - - a-04|PN-10"},
            {"preset: all current", "cbSeries=X1 cbDevice=D20 cbDeviceVersion=B preset:a-01|X1,D20,B,Any,Any|PN-B1 PN-B2|"
                                    "(0 matches)|- - - - - a-01|PN-B1"},
            // Package and speed are left alone, even when they hide the chip.
            {"preset: package hides the chip", "preset:a-01 cbPackage=P1 preset:a-01|X1,D20,B,P1,Any||(0 matches)|"
                                               "- - - - - a-01 -|"},
            {"preset: search hides the chip", "type:zzz preset:a-01|X1,D20,B,Any,Any||(0 matches)|- - - - - - - -|"},
            {"preset: search shows the chip", "type:pn-b preset:a-01|X1,D20,B,Any,Any|PN-B1 PN-B2|(2 matches)|"
                                              "- - - - - - - - - a-01|PN-B1"},
            {"preset: old identifier", "preset:zr9k31-013|X1,D20,,Any,Any|PN-C3|(0 matches)|- - - - - zr9k31a-015|PN-C3"},
            {"preset: unknown old identifier", "preset:zr9k31-015|%any|PN-10 PN-9 PN-A1 PN-B1 PN-B2 PN-C3 PN-Z pn-a|(0 matches)||"},
            {"nothing chosen: entries off", "panel|%any|%rows|(0 matches)||||Show~ Add~"},
            {"same package from every chip", "panel click:PN-A1 menu:Show|X1,Any,Any,P1,Any|PN-A1 PN-C3|(0 matches)|a-02 - - a-02|"
                                             "PN-A1||Show Add"},
            {"same package: the series stays, the other boxes and the search go",
             "panel cbSeries=X1 cbDevice=D20 cbCondition=C7 type:B2 click:PN-B2 menu:Show|X1,Any,Any,P2,Any|PN-B1 PN-B2|"
             "(0 matches)|- - - - - - - a-01 - - a-01|PN-B2||Show Add"},
            {"same package of a chip without id", "panel click:pn-a menu:Show|S2,Any,Any,R1,Any|pn-a|(0 matches)|- - - -|pn-a||"
                                                  "Show Add"},
            {"a compared chip offers Remove", "panel click:PN-A1 menu:Add|%any|%rows|(0 matches)|a-02|PN-A1|PN-A1|Show Remove"},
            {"add, add, remove", "panel click:PN-A1 menu:Add click:PN-9 menu:Add click:PN-A1 menu:Remove|%any|%rows|(0 matches)|"
                                 "a-02 b-01 a-02|PN-A1|PN-9|Show Add"},
            {"Enter on a column", "panel click:PN-A1 menu:Add click:PN-Z menu:Add column:0 key:Return|X1,D20,A,Any,Any|PN-A1|"
                                  "(0 matches)|a-02 b-02 - - - - - a-02|PN-A1|PN-A1 PN-Z|Show Remove"},
            {"double-click on a column", "panel compare:PN-Z,PN-A1 cdbl:0|x1,D30,,Any,Any|PN-Z|(0 matches)|- - - - - b-02|PN-Z|"
                                         "PN-Z PN-A1|Show Remove"},
            {"host's list: unknown and repeated part numbers left out", "panel compare:PN-9,PN-X,PN-9,pn-a|%any|%rows|"
                                                                        "(0 matches)|||PN-9 pn-a|Show~ Add~"},
            {"Select in table, then Clear", "panel compare:PN-9,PN-Z column:0 button:Select button:Clear|x1,D20,C,Any,Any|PN-9|"
                                            "(0 matches)|- - - - - b-01|PN-9||Show Add"},
            {"the first Right selects the first column", "panel compare:PN-9,PN-Z focus:comparisonView key:Right key:Return|"
                                                         "x1,D20,C,Any,Any|PN-9|(0 matches)|- - - - - b-01|PN-9|PN-9 PN-Z|Show Remove"},
            {"Remove the current column", "panel compare:PN-9,PN-A1,PN-Z column:1 button:Remove|%any|%rows|(0 matches)|||"
                                          "PN-9 PN-Z|Show~ Add~"},
            {"a search hides the compared chip", "panel type:zzz compare:PN-9 column:0 key:Return|x1,D20,C,Any,Any||(0 matches)|"
                                                 "- - - - - - - -||PN-9|Show~ Add~"},
            {"panel hidden: the copy actions only", "panel compare:PN-9 click:PN-9 hidden|%any|%rows|(0 matches)|b-01|PN-9|PN-9|"},
        };
        for (const auto& road : roads)
            QTest::newRow(road[0]) << QString::fromLatin1(road[1])
                                          .replace(QLatin1String("%any"), "Any,Any,Any,Any,Any")
                                          .replace(QLatin1String("%all"),
                                                   "Any D10 D20 D30 E1/Any C B A /Any P1 P2 P3 Q1 Q2 R1/Any C6 C7 C8 I6 I7")
                                          .replace(QLatin1String("%x1"), "Any D10 D20/Any B A /Any P1 P2 P3/Any C6 C7 C8")
                                          .replace(QLatin1String("%rows"), "PN-10 PN-9 PN-A1 PN-B1 PN-B2 PN-C3 PN-Z pn-a");
    }
    void roads()
    {
        QFETCH(QString, road);
        const L expected = road.split('|');
        auto selector = shown();
        QVERIFY(selector && !selector->comparisonVisible());
        QSignalSpy spy(selector.get(), &DeviceSelector::selectedDeviceChanged);
        QVERIFY(apply(*selector, expected.at(0)));
        L actual{expected.at(0), boxes(*selector, false), rowsOf(*selector), matchCount(*selector), reports(spy),
                 selector->selectedDevice().partNumber};
        if (expected.at(0).startsWith("panel")) {
            L compared, menu;
            for (const DEV::ChipInfo& chip : selector->comparedChips())
                compared << chip.partNumber;
            for (QAction* action : selector->findChild<QTableView*>()->actions().mid(2)) {
                if (action->isVisible() && !action->isSeparator())
                    menu << action->text().section(' ', 0, 0) + (action->isEnabled() ? "" : "~");
            }
            actual << compared.join(' ') << menu.join(' ');
        } else if (expected.size() > 6) {
            actual << boxes(*selector, true).section('/', 1);
        }
        QCOMPARE(actual, expected);
        QItemSelectionModel* selection = selector->findChild<QTableView*>()->selectionModel();
        QCOMPARE(selection->selectedRows().size(), int(!actual.at(5).isEmpty()));
        if (selection->hasSelection()) // the keyboard acts where the highlight is
            QCOMPARE(selection->currentIndex().row(), selection->selectedRows().first().row());
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

    // Tab walks the filter, the search field, its options button, the table and the buttons, each named for assistive
    // tools ("*": labelled by its caption, "+": described); Space opens the options menu at its button, not at the
    // pointer; Ctrl+C copies the part number, the context menu offers it and the whole row.
    void keyboardAndAccessibility()
    {
        qputenv("QT_ACCESSIBILITY", "1");
        DeviceSelectorDialog dialog(m_cascade.get());
        dialog.setCurrentDevice(m_cascade->findByPN("PN-A1").value(0));
        dialog.accept(); // a recent chip, so the drop-down takes the focus, and a chosen one, so OK does
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        // In reading order, with the buttons as KDE lays them out: the drop-down first when shown; hidden again, no
        // stop, nor in the way (the box handed the focus to its first button).
        const std::pair<bool, const char*> buttons[] = {{true, "Recent chips+,OK,Cancel"}, {false, "OK,Cancel"}};
        for (const auto& [recent, order] : buttons) {
            ButtonLayout style(QDialogButtonBox::KdeLayout);
            dialog.findChild<QDialogButtonBox*>()->setStyle(&style);
            dialog.setRecentVisible(recent);
            dialog.findChild<QComboBox*>("cbSeries")->setFocus();
            L stops;
            for (int i = 0; i < int(QString(order).count(',')) + 10; ++i) {
                QAccessibleInterface* widget = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
                stops << widget->text(QAccessible::Name) + (widget->relations(QAccessible::Label).isEmpty() ? "" : "*")
                        + (widget->text(QAccessible::Description).isEmpty() ? "" : "+");
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            }
            // On Linux a combo box's accessible name is its current entry; its caption names it through the relation.
            QCOMPARE(stops, L({"X1*+", "D20*+", "A*+", "Any*+", "Any*+", "Search*+", "Search options+", "Matching chips+"})
                                + QString(order).split(',') + L{"X1*+"});
            dialog.findChild<QDialogButtonBox*>()->setStyle(nullptr);
        }
        auto* options = dialog.findChild<DEV::SearchLineEdit*>()->findChild<QPushButton*>();
        dialog.move(QPoint(20, 590) - options->mapTo(&dialog, QPoint())); // the tall menu fits above the button
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
            QRect menu;
            QTimer::singleShot(0, [&] {
                menu = QApplication::activePopupWidget()->geometry();
                QApplication::activePopupWidget()->close();
            });
            options->setFocus();
            QTest::keyClick(options, key);
            QCOMPARE(menu.bottomLeft() + QPoint(0, 1), options->mapToGlobal(QPoint()));
        }
        auto* table = dialog.findChild<QTableView*>();
        QVERIFY(apply(dialog, "click:PN-A1"));
        QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
        QString copied = QGuiApplication::clipboard()->text();
        QTimer::singleShot(0, [&] {
            for (QAction* action : QApplication::activePopupWidget()->actions())
                copied += '|' + action->text();
            QApplication::activePopupWidget()->actions().last()->trigger();
            QApplication::activePopupWidget()->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), table->viewport()->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(table->viewport(), &event);
        QCOMPARE(copied + '|' + QGuiApplication::clipboard()->text(),
                 "PN-A1|Copy part number|Copy row|PN-A1\tD20\tA\tP1\tC6\t1.0V\t100\t200\t300\t4Kb\t5Kb\t6Kb\t7Kb\t8\t9");
        // The comparison's rows that differ say so to assistive tools as well as in bold.
        dialog.deviceSelector()->setComparisonVisible(true);
        QVERIFY(apply(dialog, "compare:PN-9,PN-Z"));
        QAccessibleInterface* compared = QAccessible::queryAccessibleInterface(dialog.findChild<QTableView*>("comparisonView"));
        L rows;
        for (int row = 1; row <= 17; ++row) // each row's header, after the row of column headers, before two chips
            rows << compared->child(row * 3)->text(QAccessible::Name);
        QCOMPARE(rows.join(','), "Part Number (differs),Series,Device (differs),Device Version (differs),Package (differs),"
                                 "Speed (differs),Voltage,IO,LUT,FF,ROM16,SSRAM,BSRAM,User Flash,DSP,PLL,Device ID (differs)");
    }

    // A cut cell shows its text as a tool tip, one that fits none; at its smallest the filter's widgets neither
    // overlap nor lose their captions; a box of a thousand devices and more is not measured entry by entry, and its
    // longest entry still fits.
    void readable()
    {
        auto selector = shown();
        QVERIFY(selector);
        auto* table = selector->findChild<QTableView*>();
        L tips;
        for (int width : {210, table->fontMetrics().horizontalAdvance("PN-10") + 2}) { // fits; wraps and is cut
            table->horizontalHeader()->resizeSection(0, width);
            const QPoint at = table->visualRect(table->model()->index(0, 0)).center();
            QHelpEvent help(QEvent::ToolTip, at, table->viewport()->mapToGlobal(at));
            QApplication::sendEvent(table->viewport(), &help);
            tips << QToolTip::text();
        }
        QCOMPARE(tips, (L{"", "PN-10"}));
        QWidget host; // inside a host widget no layout enforces a minimum
        auto* embedded = new DeviceSelector(m_cascade.get(), &host);
        host.resize(800, 600);
        host.show();
        embedded->resize(300, 200);
        QCoreApplication::processEvents();
        const QList<QWidget*> filter = embedded->findChild<QGroupBox*>()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (QWidget* a : filter) {
            QVERIFY2(a->width() >= a->minimumSizeHint().width(), qPrintable(a->objectName()));
            for (QWidget* b : filter)
                QVERIFY2(a == b || !a->geometry().intersects(b->geometry()), qPrintable(a->objectName() + ' ' + b->objectName()));
        }
        QByteArray lines;
        for (int i = 0; i < 1200; ++i)
            lines += chipLine("id" + QByteArray::number(i), "PN", "S1", i == 700 ? "XXXXXXXXXXXXXXXXXXXX" : "D" + QByteArray::number(i));
        const auto db = m_files.load(lines);
        DeviceSelector many(db.get());
        QComboBox longest;
        longest.addItem("XXXXXXXXXXXXXXXXXXXX");
        const auto* box = many.findChild<QComboBox*>("cbDevice");
        QVERIFY(box->count() == 1201 && box->sizeHint().width() >= longest.sizeHint().width());
    }


    // A preset scrolls once, from the event loop, and puts its row in the middle: not at once and not twice (as the
    // view's own scroll to a new current index would), whether the selector was shown before the preset or after it.
    void presetScrollsOnceFromTheEventLoop_data()
    {
        QTest::addColumn<bool>("shownFirst");
        QTest::newRow("shown, then preset") << true;
        QTest::newRow("preset, then shown") << false;
    }
    void presetScrollsOnceFromTheEventLoop()
    {
        QFETCH(bool, shownFirst);
        DeviceSelector selector(m_long.get());
        selector.resize(500, 400);
        selector.setVisible(shownFirst);
        auto* table = selector.findChild<QTableView*>();
        QSignalSpy scrolls(table->verticalScrollBar(), &QScrollBar::valueChanged);
        selector.setCurrentDevice(QStringLiteral("t-55"));
        selector.show();
        QCOMPARE(scrolls.count(), 0);
        QVERIFY(QTest::qWaitForWindowExposed(&selector));
        QCoreApplication::processEvents();
        QCOMPARE(scrolls.count(), 1);
        // Where the view centres the row in the widget as laid out now.
        const int centred = table->verticalScrollBar()->value();
        table->scrollToTop();
        table->scrollTo(table->model()->index(55 - 9, 0), QAbstractItemView::PositionAtCenter); // PN-15 twice
        QCOMPARE(centred, table->verticalScrollBar()->value());
        QVERIFY(centred > 0);
    }

    // The row of minimums as a host fills it, in the selector ("set:", "show", "hide") and in the dialog ("dialog:"):
    // "shown|minimums that apply|rows|LUT field".
    void requirementsFromTheHost_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("expected");
        QTest::newRow("selector, row hidden: nothing applies") << "set:LUT=6500" << "0||61|6500";
        QTest::newRow("selector, filled, then shown") << "set:LUT=6500 show" << "1|LUT=6500|5|6500";
        QTest::newRow("selector, shown, then filled") << "show set:LUT=6500,IO=100" << "1|IO=100,LUT=6500|5|6500";
        QTest::newRow("selector, hidden again") << "set:LUT=6500 show hide" << "0||61|6500";
        QTest::newRow("dialog shows the row it fills") << "dialog:LUT=6500" << "1|LUT=6500|5|6500";
        QTest::newRow("dialog, no minimum hides it") << "dialog:LUT=6500 dialog:" << "0||61|";
    }
    void requirementsFromTheHost()
    {
        QFETCH(QString, steps);
        QFETCH(QString, expected);
        DeviceSelectorDialog dialog(m_long.get());
        DeviceSelector* selector = dialog.deviceSelector();
        QCOMPARE(selector, dialog.findChild<DeviceSelector*>());
        for (const QString& step : steps.split(' ')) {
            DEV::ChipRequirements needs;
            for (const QString& minimum : step.section(':', 1).split(',', Qt::SkipEmptyParts))
                QVERIFY(needs.set(minimum).isEmpty());
            if (step.startsWith("set:"))
                selector->setRequirements(needs);
            else if (step.startsWith("dialog:"))
                dialog.setRequirements(needs);
            else
                selector->setRequirementsVisible(step == "show");
        }
        QLineEdit* lut = nullptr;
        for (auto* field : selector->findChildren<QLineEdit*>())
            lut = field->accessibleName() == "Minimum LUT" ? field : lut;
        QCOMPARE(L({QString::number(selector->requirementsVisible()), selector->requirements().toStrings().join(','),
                    QString::number(selector->findChild<QTableView*>()->model()->rowCount()), lut->text()})
                     .join('|'),
                 expected);
    }

    // The recent chips, and the state kept between sessions. restoreState() takes what saveState() can write and
    // refuses anything else, changing nothing and reporting nothing, in the selector's part ("selector:" rows) as in
    // the dialog's. Taken: the first rows, the chip chosen before (kept, not reported again), the recent chips as the
    // drop-down lists them, and the columns as the state has them. The catalogue holds one chip in two records.
    void savedState_data()
    {
        QTest::addColumn<QByteArray>("state");
        QTest::addColumn<QByteArray>("columns"); // the selector's part
        QTest::addColumn<QString>("taken");      // empty: refused
        DeviceSelectorDialog source(m_long.get());
        source.resize(640, 480);
        const auto dialog = [geometry = source.saveGeometry()](const QByteArray& columns, const QVariant& recent,
                                                               const QByteArray& damaged = {}) {
            QByteArray bytes;
            QDataStream out(&bytes, QIODevice::WriteOnly);
            out.setVersion(QDataStream::Qt_5_12);
            out << quint32(0x44455344) << (damaged.isEmpty() ? geometry : damaged) << columns;
            if (recent.isValid())
                out << recent.toStringList();
            return bytes;
        };
        const auto selector = [&](const char* name, const std::function<void(SelectorState&)>& change, const char* taken) {
            SelectorState columns;
            change(columns);
            QTest::newRow(qPrintable(QStringLiteral("selector: ") + name)) << dialog(columns.bytes(), L()) << columns.bytes() << taken;
        };
        selector("a fresh selector's", [](SelectorState&) {}, "PN-10 PN-11 PN-12|PN-20|");
        selector("LUT first and descending, a wider package", [](SelectorState& s) {
            s = {8, Qt::DescendingOrder};
            std::swap(s.at[0], s.at[8]);
            s.width[4] = 140;
        }, "PN-69 PN-68 PN-67|PN-20|");
        selector("the last column as wide as a header allows", [](SelectorState& s) { s.width[15] = 1048575; }, "PN-10 PN-11 PN-12|PN-20|");
        selector("two columns at one position", [](SelectorState& s) { s.at[3] = 2; }, "");
        selector("a position past the last", [](SelectorState& s) { s.at[15] = 16; }, "");
        selector("a width below zero", [](SelectorState& s) { s.width[4] = -1; }, "");
        selector("a width past the widest", [](SelectorState& s) { s.width[15] = 1048576; }, "");
        selector("a hidden column with a width", [](SelectorState& s) { s.width[1] = 100; }, "");
        selector("a hidden flag that is neither", [](SelectorState& s) { s.hidden[4] = 2; }, "");
        selector("a sort column past the last", [](SelectorState& s) { s.sort = 16; }, "");
        selector("a sort order that is neither", [](SelectorState& s) { s.order = 2; }, "");
        const QByteArray fresh = SelectorState().bytes();
        QTest::newRow("selector: a byte after the end") << dialog(fresh + '\0', L()) << fresh << "";
        QTest::newRow("selector: someone else's") << dialog("DEV", L()) << fresh << "";
        const QByteArray good = dialog(fresh, L{"PN-15", "MK", "PN-11", "MK", "PN-98", "MK"});
        QTest::newRow("recent chips, an unknown one left out") << good << fresh << "PN-10 PN-11 PN-12|PN-20|PN-15 PN-11";
        QTest::newRow("saved before the recent chips") << dialog(fresh, QVariant()) << fresh << "PN-10 PN-11 PN-12|PN-20|";
        QTest::newRow("a chip twice") << dialog(fresh, L{"PN-15", "MK", "PN-11", "MK", "PN-15", "MK"}) << fresh << "";
        QTest::newRow("no part number") << dialog(fresh, L{"PN-11", "MK", "", "MK"}) << fresh << "";
        L nine;
        for (int i = 10; i < 19; ++i)
            nine << "PN-" + QString::number(i) << "MK";
        QTest::newRow("nine chips") << dialog(fresh, nine) << fresh << "";
        QTest::newRow("an odd recent list") << dialog(fresh, L{"PN-15", "MK", "PN-11"}) << fresh << "";
        QTest::newRow("damaged geometry") << dialog(fresh, L(), "geometry") << fresh << "";
        QTest::newRow("a byte after the end") << good + '\0' << fresh << "";
        QTest::newRow("cut short") << good.chopped(1) << fresh << "";
        QTest::newRow("a selector's") << fresh << fresh << "";
    }
    void savedState()
    {
        QFETCH(QByteArray, state);
        QFETCH(QByteArray, columns);
        QFETCH(QString, taken);
        DeviceSelectorDialog dialog(m_long.get());
        // Accepted with OK, newest first, each chip once (t-15 and t-99 are one), eight kept; neither OK with no row
        // chosen nor Cancel adds one.
        dialog.accept();
        for (const char* id : {"t-10", "t-11", "t-12", "t-13", "t-14", "t-16", "t-17", "t-18", "t-15", "t-99", "t-19"}) {
            dialog.setCurrentDevice(QString::fromLatin1(id));
            qstrcmp(id, "t-19") == 0 ? dialog.reject() : dialog.accept();
        }
        dialog.setCurrentDevice(QStringLiteral("t-20"));
        dialog.setRecentVisible(true);
        dialog.resize(500, 400);
        auto* button = dialog.findChild<QPushButton*>("recentButton");
        QMenu* dropDown = button->menu();
        const auto seen = [&] {
            L recent, entries;
            for (const DEV::ChipInfo& chip : dialog.recentChips())
                recent << chip.partNumber;
            for (QAction* entry : dropDown->actions())
                entries << entry->text();
            const bool listed = entries == recent && button->isEnabled() == !recent.isEmpty();
            return rowsOf(dialog).section(' ', 0, 2) + '|' + dialog.selectedDevice().partNumber + '|' + recent.join(' ')
                + (listed ? "" : " (not in the drop-down)");
        };
        const QString was = "PN-10 PN-11 PN-12|PN-20|PN-15 PN-18 PN-17 PN-16 PN-14 PN-13 PN-12 PN-11";
        const QByteArray before = dialog.saveState();
        QCOMPARE(seen(), was);
        QCOMPARE(dialog.deviceSelector()->saveState(), SelectorState().bytes());
        QSignalSpy reports(&dialog, &DeviceSelectorDialog::selectedDeviceChanged);
        QCOMPARE(dialog.restoreState(state), !taken.isEmpty());
        QCOMPARE(seen(), taken.isEmpty() ? was : taken);
        QCOMPARE(reports.count(), 0);
        if (taken.isEmpty())
            QCOMPARE(dialog.saveState(), before);
        else
            QVERIFY(dialog.deviceSelector()->saveState() == columns && dialog.size() == QSize(640, 480));
        if (!dropDown->actions().isEmpty()) { // its newest entry presets that chip
            dropDown->actions().first()->trigger();
            QCOMPARE(dialog.selectedDevice().partNumber, dialog.recentChips().first().partNumber);
        }
    }

    // "preset: steps[ button]": what the dialog showed when it opened (OK enabled, the part number selected), and
    // the part number returned. A preset "=PN" is the exact chip PN.
    void getSelectedChip_data()
    {
        QTest::addColumn<QString>("run");
        QTest::addColumn<QString>("result");
        QTest::newRow("OK on preset chip") << "a-02: OK" << "1 PN-A1 -> PN-A1";
        QTest::newRow("OK after choosing another row") << "a-02: cbDeviceVersion=Any click:PN-B2 OK" << "1 PN-A1 -> PN-B2";
        // Nothing preset, nothing reported: OK stays enabled and gives no chip.
        QTest::newRow("OK with unknown id") << "k-99: OK" << "1  -> ";
        QTest::newRow("Cancel") << "a-02: Cancel" << "1 PN-A1 -> ";
        // OK follows the choice: a row without a device id leaves it off.
        QTest::newRow("OK on a chip without id") << "a-02: cbSeries=Any click:pn-a OK" << "1 PN-A1 still open -> ";
        QTest::newRow("exact chip, keyboard from there") << "=PN-B1: key:Down key:Return" << "1 PN-B1 -> PN-B2";
        QTest::newRow("sorted, then OK") << "=PN-B2: sort:0 OK" << "1 PN-B2 -> PN-B2";
        QTest::newRow("double-click") << "a-02: cbDeviceVersion=Any dbl:PN-B2" << "1 PN-A1 -> PN-B2";
        QTest::newRow("double-click on a chip without id") << "a-02: cbSeries=Any dbl:pn-a" << "1 PN-A1 still open -> ";
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
            seen = QString::number(buttons->button(QDialogButtonBox::Ok)->isEnabled()) + ' ' + dialog->selectedDevice().partNumber;
            const bool button = run.endsWith("OK") || run.endsWith("Cancel");
            apply(*dialog, run.section(' ', 1, button ? -2 : -1));
            if (button)
                QTest::mouseClick(buttons->button(run.endsWith("OK") ? buttons->Ok : buttons->Cancel), Qt::LeftButton);
            if (dialog->isVisible()) {
                seen += QStringLiteral(" still open");
                dialog->reject();
            }
        });
        const QString preset = run.section(':', 0, 0);
        const DEV::ChipInfo chip = preset.startsWith('=') ? DeviceSelectorDialog::getSelectedChip(nullptr, m_cascade.get(),
                                                                  m_cascade->findByPN(preset.mid(1)).value(0))
                                                          : DeviceSelectorDialog::getSelectedChip(nullptr, m_cascade.get(), preset);
        QCOMPARE(seen + " -> " + chip.partNumber, result);
        QCOMPARE(fields(chip), fields(m_cascade->findByPN(chip.partNumber).value(0)));
        QVERIFY(dialog.isNull()); // the dialog does not outlive the call
    }

    // A pattern typed key by key and taken back with Backspace, more keys than the selector keeps steps for, with
    // search options and boxes (the version box too) changed in between. After each step the table shows the chips the boxes leave that the
    // plain search finds (all of them while the field is empty), in part-number order with ties in database order,
    // and the label counts the hits: keys typed on search only the hits before, Backspace goes back to them, and
    // neither may change what is seen.
    void typingKeyByKey()
    {
        QByteArray catalogue = TestHelpers::generatedCatalogue("copies", 3000);
        // Part numbers shared with chips of a later version, which the database lists first.
        for (const QByteArray& line : catalogue.split('\n').mid(0, 700)) {
            QList<QByteArray> values = line.split(',');
            if (values.size() > 5 && values.at(1).endsWith("C5/I4")) {
                values[0].prepend("v-");
                values[5] = "Z";
                catalogue += values.join(',') + '\n';
            }
        }
        const auto db = m_files.load(catalogue);
        const QList<DEV::ChipInfo> all = db->allChipInfo();
        QVector<int> order(int(all.size()));
        std::iota(order.begin(), order.end(), 0);
        order = Reference::sortedRows(all, order, 0, true);
        QCOMPARE(db->partNumberOrder(), order);
        DeviceSelector selector(db.get());
        auto* search = selector.findChild<DEV::SearchLineEdit*>();
        const QAbstractItemModel& model = *selector.findChild<QTableView*>()->model();
        L steps; // one key at a time
        for (const QString& step : QStringLiteral("type:zr1n<<1l4-m case type:<<<<<<<ZR1L case type:4-<<< cbSeries=ZR1L "
                                                  "type:<1 group2 type:L9< group0 cbPackage=QN48 type:4-UVQN48C5/<<<<<<<<<<< "
                                                  "type:4 wild type:*5 anywhere type:< exact type:<<<<<<QN48 regexp type:(< "
                                                  "anywhere cbPackage=Any cbDevice=ZR1L4 cbDeviceVersion=A cbDeviceVersion=B "
                                                  "type:< cbSeries=Any group8 type:<<<<0<22<").split(' ')) {
            for (const QChar key : step.startsWith("type:") ? step.mid(5) : QString())
                steps << "type:" + QString(key);
            if (!step.startsWith("type:"))
                steps << step;
        }
        for (const QString& step : steps) {
            QVERIFY2(apply(selector, step), qPrintable(step));
            const int syntax = search->wildCardAction->isChecked() ? 0 : search->regExpAction->isChecked() ? 1
                : search->matchExactlyAction->isChecked()          ? 2 : 3;
            const DEV::ChipFilterBySearch f{search->filterGroup(), syntax, search->caseSensitiveAction->isChecked(),
                                            search->text()};
            const L current = boxes(selector, false).split(','); // "Any" where a box leaves all
            L wanted, shown;
            for (int k : order) {
                const DEV::ChipInfo& c = all.at(k);
                const QString values[] = {c.series, c.device, c.deviceVersion, c.package, c.speed};
                bool kept = true;
                for (int b = 0; b < 5; ++b)
                    kept = kept && (current.at(b) == "Any" || current.at(b) == values[b]);
                if (kept && (f.pattern.isEmpty() || Reference::matchSearch(c, f)))
                    wanted << c.partNumber + '/' + c.deviceVersion;
            }
            for (int row = 0; row < model.rowCount(); ++row)
                shown << model.index(row, 0).data().toString() + '/' + model.index(row, 3).data().toString();
            const QString count = QStringLiteral("(%1 matches)").arg(f.pattern.isEmpty() ? 0 : wanted.size());
            QCOMPARE((L{step + ' ' + f.pattern + ' ' + matchCount(selector)} + shown), (L{step + ' ' + f.pattern + ' ' + count} + wanted));
        }
    }
};

QTEST_MAIN(TestDeviceSelector)
#include "tst_deviceselector.moc"
