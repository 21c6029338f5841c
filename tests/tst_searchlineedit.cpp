// SPDX-License-Identifier: BSD-3-Clause
// The search field: its options and their initial states, the exclusivity of the column groups and of the match modes
// as a receiver of the signal sees it, the options menu, and the icon that comes from the host's resources.

#include "searchlineedit.h"
#include "testhelpers.h"

#include <QtWidgets>

using DEV::SearchLineEdit;
using L = QStringList;

namespace {

/// The 17 groups, "Case sensitive", then the four modes.
QList<QAction*> options(const SearchLineEdit& edit)
{
    return edit.rangeActions + QList<QAction*>{edit.caseSensitiveAction, edit.wildCardAction, edit.regExpAction,
                                                 edit.matchExactlyAction, edit.matchAnywhereAction};
}

/// The group searched, then a 1 for each option checked.
QString snapshot(SearchLineEdit& edit)
{
    QString checked = QString::number(edit.filterGroup()) + ' ';
    for (const QAction* a : options(edit))
        checked += a->isChecked() ? '1' : '0';
    return checked;
}

QString state(int group, int mode, bool cs)
{
    QString checked(22, '0');
    checked[group] = checked[18 + mode] = '1';
    checked[17] = cs ? '1' : '0';
    return QString::number(group) + ' ' + checked;
}

/// Clicks the options button and, while the menu runs, reads its entries (separators as null) and where it stands,
/// and closes it.
QList<QAction*> openMenu(SearchLineEdit& edit, QPoint* pos)
{
    QList<QAction*> entries;
    QTimer::singleShot(0, &edit, [&]() {
        auto* menu = edit.findChild<QMenu*>();
        *pos = menu->pos();
        for (QAction* a : menu->actions())
            entries << (a->isSeparator() ? nullptr : a);
        menu->close();
    });
    edit.findChild<QPushButton*>()->click();
    return edit.findChild<QMenu*>() ? QList<QAction*>() : entries; // each opening builds and discards its menu
}

} // namespace

class TestSearchLineEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Checking by code is no pick: no signal, and the first checked group counts.
    void optionsAndInitialState()
    {
        SearchLineEdit edit(nullptr);
        L texts;
        for (const QAction* a : options(edit)) {
            texts << a->text() + a->data().toString();
            QVERIFY(a->isCheckable() && a->parent() == &edit);
        }
        QCOMPARE(texts, (L{"All0", "Series1", "Part Number2", "Device3", "Device Version4", "Package5", "Speed6", "Voltage7",
                           "IO8", "LUT9", "FF10", "ROM1611", "SSRAM12", "BSRAM13", "UserFlash14", "DSP15", "PLL16",
                           "Case sensitive", "Use wild cards", "Use regular expression", "Match exactly", "Match anywhere"}));
        QCOMPARE(snapshot(edit), state(0, 3, false));
        QSignalSpy spy(&edit, &SearchLineEdit::patternSyntaxChange);
        edit.rangeActions.at(0)->setChecked(false);
        const int none = edit.filterGroup();
        edit.rangeActions.at(16)->setChecked(true);
        edit.rangeActions.at(9)->setChecked(true);
        QCOMPARE(QVariantList({none, edit.filterGroup(), spy.count()}), QVariantList({0, 9, 0}));
    }

    // What a receiver of patternSyntaxChange() finds after each pick (options numbered as by options()): exactly one
    // group and one mode checked, the other options untouched, a repeated pick still checked.
    void picks()
    {
        SearchLineEdit edit(nullptr);
        L observed;
        connect(&edit, &SearchLineEdit::patternSyntaxChange, this, [&]() { observed << snapshot(edit); });
        for (int option : {5, 16, 16, 0, 19, 18, 18, 21, 20, 17, 17, 14})
            options(edit).at(option)->trigger();
        QCOMPARE(observed, (L{state(5, 3, false), state(16, 3, false), state(16, 3, false), state(0, 3, false),
                              state(0, 1, false), state(0, 0, false), state(0, 0, false), state(0, 3, false),
                              state(0, 2, false), state(0, 2, true), state(0, 2, false), state(14, 2, false)}));
    }

    // The host's 40x20 icon scaled to 15 pixels high, on a button at the right end whose menu lists every option and
    // opens at the pointer, not at the button (Qt lifts it where the screen below is too short). Without the icon the
    // button still opens the menu, silently.
    void buttonIconAndMenu()
    {
        SearchLineEdit edit(nullptr);
        auto* button = edit.findChild<QPushButton*>();
        QVERIFY(button->isFlat() && button->text().isEmpty());
        QCOMPARE(button->icon().availableSizes(), (QList<QSize>{QSize(30, 15)}));
        edit.resize(200, 24);
        edit.show();
        edit.layout()->activate();
        QVERIFY(button->geometry().right() == edit.width() - 1 && button->geometry().left() > edit.width() / 2);
        const QList<QAction*> expected = options(edit).mid(0, 17) + QList<QAction*>{nullptr, edit.caseSensitiveAction, nullptr}
            + options(edit).mid(18) + QList<QAction*>{nullptr};
        QCursor::setPos(237, 300);
        QPoint pos;
        QCOMPARE(openMenu(edit, &pos), expected);
        QCOMPARE(pos.x(), 237);
        Q_CLEANUP_RESOURCE(searchlineedit_icon);
        TestHelpers::MessageCapture messages;
        SearchLineEdit plain(nullptr);
        QCOMPARE(messages.count(), 0);
        QVERIFY(plain.findChild<QPushButton*>()->icon().isNull());
        QCOMPARE(openMenu(plain, &pos).size(), 25);
        Q_INIT_RESOURCE(searchlineedit_icon);
    }
};

QTEST_MAIN(TestSearchLineEdit)
#include "tst_searchlineedit.moc"
