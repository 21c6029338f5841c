// The search field: its options and their initial states, the exclusivity of
// the column groups and of the match modes, the order of state change and
// signal, the options menu, and the icon that comes from the host's resources.

#include "searchlineedit.h"
#include "testhelpers.h"

#include <QAction>
#include <QLayout>
#include <QMenu>
#include <QMetaMethod>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using DEV::SearchLineEdit;

namespace {

const QStringList GroupTexts = {"All", "Series", "Part Number", "Device", "Device Version", "Package", "Speed",
                                "Voltage", "IO", "LUT", "FF", "ROM16", "SSRAM", "BSRAM", "UserFlash", "DSP", "PLL"};
const QStringList ModeNames = {"wild", "regexp", "exact", "anywhere"};

QList<QAction*> modeActions(const SearchLineEdit& edit)
{
    return {edit.wildCardAction, edit.regExpAction, edit.matchExactlyAction, edit.matchAnywhereAction};
}

QString checkedBits(const QList<QAction*>& actions)
{
    QString out;
    for (const QAction* a : actions)
        out += a->isChecked() ? QLatin1Char('1') : QLatin1Char('0');
    return out;
}

/// The options as a receiver of patternSyntaxChange() finds them.
QString snapshot(SearchLineEdit& edit)
{
    return QStringLiteral("group %1, groups %2, modes %3, case %4")
        .arg(edit.filterGroup())
        .arg(checkedBits(edit.rangeActions), checkedBits(modeActions(edit)))
        .arg(edit.caseSensitiveAction->isChecked());
}

/// An option named "g<n>", "case" or one of ModeNames.
QAction* option(const SearchLineEdit& edit, const QString& name)
{
    if (name.startsWith(QLatin1Char('g')))
        return edit.rangeActions.value(name.mid(1).toInt());
    return name == QLatin1String("case") ? edit.caseSensitiveAction : modeActions(edit).value(ModeNames.indexOf(name));
}

QString oneHot(int size, int index)
{
    QString out(size, QLatin1Char('0'));
    out[index] = QLatin1Char('1');
    return out;
}

/// Clicks the options button and, while the menu runs, reads and closes it.
/// Returns the entries, separators as null; none when no menu came up.
QList<QAction*> openMenu(SearchLineEdit& edit, QPoint* pos = nullptr)
{
    QList<QAction*> entries;
    QPointer<QMenu> seen;
    QTimer::singleShot(0, &edit, [&]() {
        seen = edit.findChild<QMenu*>();
        if (!seen || !seen->isVisible())
            return;
        if (pos)
            *pos = seen->pos();
        for (QAction* a : seen->actions())
            entries << (a->isSeparator() ? nullptr : a);
        seen->close();
    });
    edit.findChild<QPushButton*>()->click();
    // Each opening builds and discards its own menu.
    return seen.isNull() ? entries : QList<QAction*>();
}

} // namespace

class TestSearchLineEdit : public QObject
{
    Q_OBJECT

private slots:
    void metaMethods()
    {
        const QMetaObject& mo = SearchLineEdit::staticMetaObject;
        QCOMPARE(QByteArray(mo.className()), QByteArray("DEV::SearchLineEdit"));
        QStringList methods;
        for (int i = mo.methodOffset(); i < mo.methodCount(); ++i)
            methods << QString::number(mo.method(i).methodType()) + QString::number(mo.method(i).access())
                    + mo.method(i).methodSignature();
        QCOMPARE(methods, (QStringList{"12patternSyntaxChange()", "20updateCheckStatus()", "20updateRangeCheckStatus()",
                                       "20configure()"}));
    }

    void initialOptions()
    {
        SearchLineEdit edit(nullptr);
        QStringList texts;
        const QList<QAction*> options = edit.rangeActions + QList<QAction*>{edit.caseSensitiveAction} + modeActions(edit);
        for (const QAction* a : options) {
            texts << a->text();
            QVERIFY(a->isCheckable() && a->parent() == &edit);
        }
        QCOMPARE(texts, GroupTexts + QStringList({"Case sensitive", "Use wild cards", "Use regular expression",
                                                  "Match exactly", "Match anywhere"}));
        for (int i = 0; i < edit.rangeActions.size(); ++i)
            QCOMPARE(edit.rangeActions.at(i)->data(), QVariant(i));
        QCOMPARE(snapshot(edit), QStringLiteral("group 0, groups %1, modes 0001, case 0").arg(oneHot(17, 0)));
    }

    // What a receiver of patternSyntaxChange() finds, once per pick: exactly
    // one group and one mode checked, the other options untouched.
    void picks_data()
    {
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QStringList>("picks");
        QTest::addColumn<QStringList>("seen");
        const auto state = [](int group, int mode, bool cs) {
            return QStringLiteral("group %1, groups %2, modes %3, case %4")
                .arg(group).arg(oneHot(17, group), oneHot(4, mode)).arg(cs);
        };
        for (int i = 0; i < 17; ++i)
            QTest::addRow("%s after %s", qPrintable(GroupTexts.at(i)), qPrintable(GroupTexts.at((i + 5) % 17)))
                << QStringList{QStringLiteral("g%1").arg((i + 5) % 17)} << QStringList{QStringLiteral("g%1").arg(i)}
                << QStringList{state(i, 3, false)};
        QTest::newRow("All again") << QStringList() << QStringList{"g0"} << QStringList{state(0, 3, false)};
        QTest::newRow("PLL again") << QStringList{"g16"} << QStringList{"g16"} << QStringList{state(16, 3, false)};
        for (int before = 0; before < 4; ++before) {
            for (int picked = 0; picked < 4; ++picked)
                QTest::addRow("%s after %s", qPrintable(ModeNames.at(picked)), qPrintable(ModeNames.at(before)))
                    << QStringList{"g9", ModeNames.at(before)} << QStringList{ModeNames.at(picked)}
                    << QStringList{state(9, picked, false)};
        }
        QTest::newRow("case twice") << QStringList{"g14", "exact"} << QStringList{"case", "case"}
                                    << QStringList{state(14, 2, true), state(14, 2, false)};
    }
    void picks()
    {
        QFETCH(QStringList, setup);
        QFETCH(QStringList, picks);
        QFETCH(QStringList, seen);
        SearchLineEdit edit(nullptr);
        for (const QString& name : setup)
            option(edit, name)->trigger();
        QStringList observed;
        connect(&edit, &SearchLineEdit::patternSyntaxChange, this, [&]() { observed << snapshot(edit); });
        for (const QString& name : picks)
            option(edit, name)->trigger();
        QCOMPARE(observed, seen);
    }

    void filterGroupReadsFirstChecked_data()
    {
        QTest::addColumn<QList<int>>("checked");
        QTest::addColumn<int>("group");
        QTest::newRow("none") << QList<int>{} << 0;
        QTest::newRow("UserFlash") << QList<int>{14} << 14;
        QTest::newRow("LUT and PLL") << QList<int>{9, 16} << 9;
        QTest::newRow("Series and All") << QList<int>{1, 0} << 0;
    }
    void filterGroupReadsFirstChecked()
    {
        QFETCH(QList<int>, checked);
        QFETCH(int, group);
        SearchLineEdit edit(nullptr);
        QSignalSpy spy(&edit, &SearchLineEdit::patternSyntaxChange);
        for (int i = 0; i < edit.rangeActions.size(); ++i)
            edit.rangeActions.at(i)->setChecked(checked.contains(i));
        QCOMPARE(edit.filterGroup(), group);
        QCOMPARE(spy.count(), 0); // setChecked is not a pick
    }

    void nonActionSenderChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<bool>("throughSignal");
        for (const char* slot : {"updateCheckStatus()", "updateRangeCheckStatus()"}) {
            QTest::addRow("%s from a QObject signal", slot) << QByteArray(slot) << true;
            QTest::addRow("%s invoked directly", slot) << QByteArray(slot) << false;
        }
    }
    void nonActionSenderChangesNothing()
    {
        QFETCH(QByteArray, slot);
        QFETCH(bool, throughSignal);
        SearchLineEdit edit(nullptr);
        // A state no slot would leave behind, so any reaction shows.
        for (int g : {0, 3, 7})
            edit.rangeActions.at(g)->toggle();
        edit.wildCardAction->setChecked(true);
        const QString before = snapshot(edit);
        QSignalSpy spy(&edit, &SearchLineEdit::patternSyntaxChange);
        QObject source;
        if (throughSignal) {
            QVERIFY(connect(&source, SIGNAL(objectNameChanged(QString)), &edit, QByteArray("1" + slot).constData()));
            source.setObjectName(QStringLiteral("not an action"));
        } else {
            QVERIFY(QMetaObject::invokeMethod(&edit, slot.left(slot.indexOf('(')).constData()));
        }
        QCOMPARE(snapshot(edit), before);
        QCOMPARE(spy.count(), 0);
    }

    void menuListsOptionsAtPointer()
    {
        SearchLineEdit edit(nullptr);
        edit.resize(150, 24);
        edit.show();
        QList<QAction*> expected = edit.rangeActions;
        expected << nullptr << edit.caseSensitiveAction << nullptr << modeActions(edit) << nullptr;
        // The menu is taller than the offscreen screen leaves below the
        // pointer, so Qt lifts it; the column follows the pointer, not the button.
        for (int x : {237, 41}) {
            QCursor::setPos(x, 300);
            QPoint pos;
            QCOMPARE(openMenu(edit, &pos), expected);
            QCOMPARE(pos.x(), x);
        }
    }

    void iconFromHostResource()
    {
        SearchLineEdit edit(nullptr);
        QPushButton* button = edit.findChild<QPushButton*>();
        QVERIFY(button->isFlat() && button->text().isEmpty());
        // The 40x20 test image keeps its proportions at 15 pixels high.
        QCOMPARE(button->icon().availableSizes(), (QList<QSize>{QSize(30, 15)}));
        // A one-pixel checkerboard turns grey when scaled smoothly, not when
        // plain scaling keeps only black and white.
        const QImage image = button->icon().pixmap(QSize(30, 15)).toImage();
        bool grey = false;
        for (int i = 0; i < image.width() * image.height() && !grey; ++i)
            grey = qAbs(qGray(image.pixel(i % image.width(), i / image.width())) - 127) < 88;
        QVERIFY(grey);
        edit.resize(200, 24);
        edit.show();
        edit.layout()->activate();
        QCOMPARE(button->geometry().right(), edit.width() - 1);
        QVERIFY(button->geometry().left() > edit.width() / 2);
    }

    void missingIconLeavesButtonWorking()
    {
        Q_CLEANUP_RESOURCE(searchlineedit_icon);
        TestHelpers::MessageCapture messages;
        SearchLineEdit edit(nullptr);
        QCOMPARE(messages.count(), 0);
        QVERIFY(edit.findChild<QPushButton*>()->icon().isNull());
        QCOMPARE(openMenu(edit).size(), 25);
        Q_INIT_RESOURCE(searchlineedit_icon);
    }
};

QTEST_MAIN(TestSearchLineEdit)
#include "tst_searchlineedit.moc"
