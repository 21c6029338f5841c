// The search field: its options and their initial states, the exclusivity of
// the column groups and of the match modes, the order of state change and
// signal, the options menu, and the icon that comes from the host's resources.

#include "searchlineedit.h"
#include "testhelpers.h"

#include <QAction>
#include <QApplication>
#include <QLayout>
#include <QMenu>
#include <QMetaMethod>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using DEV::SearchLineEdit;

namespace {

const QStringList GroupTexts = {"All",   "Series", "Part Number", "Device", "Device Version", "Package",
                                "Speed", "Voltage", "IO",         "LUT",    "FF",             "ROM16",
                                "SSRAM", "BSRAM",  "UserFlash",   "DSP",    "PLL"};

QList<QAction*> modeActions(const SearchLineEdit& edit)
{
    return {edit.wildCardAction, edit.regExpAction, edit.matchExactlyAction, edit.matchAnywhereAction};
}

QList<bool> checkedStates(const QList<QAction*>& actions)
{
    QList<bool> out;
    for (const QAction* a : actions)
        out << a->isChecked();
    return out;
}

/// Seventeen (or four) states with only @p index checked.
QList<bool> oneHot(int size, int index)
{
    QList<bool> out;
    for (int i = 0; i < size; ++i)
        out << (i == index);
    return out;
}

/// What a receiver of patternSyntaxChange() finds when it reads the options.
struct Snapshot
{
    int group;
    QList<bool> groups;
    QList<bool> modes;
    bool caseSensitive;
};

Snapshot snapshot(SearchLineEdit& edit)
{
    return {edit.filterGroup(), checkedStates(edit.rangeActions), checkedStates(modeActions(edit)),
            edit.caseSensitiveAction->isChecked()};
}

} // namespace

/// Records the options each time patternSyntaxChange() arrives.
class Observer : public QObject
{
    Q_OBJECT
public:
    explicit Observer(SearchLineEdit* edit)
        : m_edit(edit)
    {
        connect(edit, SIGNAL(patternSyntaxChange()), this, SLOT(record()));
    }
    QList<Snapshot> seen;

public slots:
    void record() { seen << snapshot(*m_edit); }

private:
    SearchLineEdit* m_edit;
};

/// Takes the test icon out of the resource system for its lifetime.
struct IconResourceRemoved
{
    IconResourceRemoved() { Q_CLEANUP_RESOURCE(searchlineedit_icon); }
    ~IconResourceRemoved() { Q_INIT_RESOURCE(searchlineedit_icon); }
};

class TestSearchLineEdit : public QObject
{
    Q_OBJECT

private:
    /// Clicks the options button; while the menu runs, reads it and closes it.
    /// Returns the entries, separators as null, or fails when no menu came up.
    static bool openMenu(SearchLineEdit& edit, QList<QAction*>* entries, QPoint* pos, QPointer<QMenu>* seen)
    {
        bool shown = false;
        QTimer::singleShot(0, &edit, [&]() {
            QMenu* menu = edit.findChild<QMenu*>();
            if (!menu || !menu->isVisible())
                return;
            shown = true;
            *seen = menu;
            *pos = menu->pos();
            for (QAction* a : menu->actions())
                *entries << (a->isSeparator() ? nullptr : a);
            menu->close();
        });
        QPushButton* button = edit.findChild<QPushButton*>();
        if (!button)
            return false;
        button->click();
        return shown;
    }

private slots:
    void metaMethodsInInterfaceOrder()
    {
        const QMetaObject* mo = &SearchLineEdit::staticMetaObject;
        QCOMPARE(QByteArray(mo->className()), QByteArray("DEV::SearchLineEdit"));
        QCOMPARE(mo->methodCount() - mo->methodOffset(), 4);
        const QList<QByteArray> names = {"patternSyntaxChange()", "updateCheckStatus()", "updateRangeCheckStatus()",
                                         "configure()"};
        for (int i = 0; i < names.size(); ++i) {
            const QMetaMethod m = mo->method(mo->methodOffset() + i);
            QCOMPARE(m.methodSignature(), names.at(i));
            QCOMPARE(m.methodType(), i == 0 ? QMetaMethod::Signal : QMetaMethod::Slot);
            QCOMPARE(m.access(), i == 0 ? QMetaMethod::Public : QMetaMethod::Private);
        }
    }

    void initialOptions()
    {
        SearchLineEdit edit(nullptr);
        QCOMPARE(edit.filterGroup(), 0);

        QStringList texts;
        QList<int> data;
        for (const QAction* a : edit.rangeActions) {
            texts << a->text();
            data << a->data().toInt();
            QCOMPARE(a->data().type(), QVariant::Int);
            QVERIFY(a->isCheckable());
            QCOMPARE(a->parent(), &edit);
        }
        QCOMPARE(texts, GroupTexts);
        QList<int> positions;
        for (int i = 0; i < GroupTexts.size(); ++i)
            positions << i;
        QCOMPARE(data, positions);
        QCOMPARE(checkedStates(edit.rangeActions), oneHot(17, 0));

        const QList<QAction*> options = {edit.caseSensitiveAction, edit.wildCardAction, edit.regExpAction,
                                         edit.matchExactlyAction, edit.matchAnywhereAction};
        texts.clear();
        for (const QAction* a : options) {
            texts << a->text();
            QVERIFY(a->isCheckable());
            QCOMPARE(a->parent(), &edit);
        }
        QCOMPARE(texts, (QStringList{"Case sensitive", "Use wild cards", "Use regular expression", "Match exactly",
                                     "Match anywhere"}));
        QCOMPARE(checkedStates(options), (QList<bool>{false, false, false, false, true}));
    }

    void pickGroup_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("picked");
        QTest::addColumn<int>("group");
        // Every group once, each picked while another one is checked.
        for (int i = 0; i < GroupTexts.size(); ++i) {
            const QString before = GroupTexts.at((i + 5) % GroupTexts.size());
            QTest::addRow("%s after %s", qPrintable(GroupTexts.at(i)), qPrintable(before))
                << before << GroupTexts.at(i) << i;
        }
        QTest::newRow("All again") << "All" << "All" << 0;
        QTest::newRow("PLL again") << "PLL" << "PLL" << 16;
    }

    void pickGroup()
    {
        QFETCH(QString, before);
        QFETCH(QString, picked);
        QFETCH(int, group);
        SearchLineEdit edit(nullptr);
        const auto byText = [&edit](const QString& text) {
            for (QAction* a : edit.rangeActions) {
                if (a->text() == text)
                    return a;
            }
            return static_cast<QAction*>(nullptr);
        };
        QVERIFY(byText(before) && byText(picked));
        byText(before)->trigger();

        Observer observer(&edit);
        byText(picked)->trigger();

        const int index = edit.rangeActions.indexOf(byText(picked));
        QCOMPARE(observer.seen.size(), 1);
        const Snapshot& s = observer.seen.first();
        QCOMPARE(s.groups, oneHot(17, index));
        QCOMPARE(s.group, group);
        QCOMPARE(s.modes, oneHot(4, 3));
        QCOMPARE(s.caseSensitive, false);
        QCOMPARE(edit.filterGroup(), group);
    }

    void pickMode_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("picked");
        const char* names[] = {"wild cards", "regular expression", "exactly", "anywhere"};
        for (int before = 0; before < 4; ++before) {
            for (int picked = 0; picked < 4; ++picked)
                QTest::addRow("%s after %s", names[picked], names[before]) << before << picked;
        }
    }

    void pickMode()
    {
        QFETCH(int, before);
        QFETCH(int, picked);
        SearchLineEdit edit(nullptr);
        edit.rangeActions.at(9)->trigger();
        modeActions(edit).at(before)->trigger();

        Observer observer(&edit);
        modeActions(edit).at(picked)->trigger();

        QCOMPARE(observer.seen.size(), 1);
        const Snapshot& s = observer.seen.first();
        QCOMPARE(s.modes, oneHot(4, picked));
        QCOMPARE(s.groups, oneHot(17, 9));
        QCOMPARE(s.caseSensitive, false);
        QCOMPARE(checkedStates(modeActions(edit)), oneHot(4, picked));
    }

    void caseSensitiveTogglesAlone()
    {
        SearchLineEdit edit(nullptr);
        edit.rangeActions.at(14)->trigger();
        edit.matchExactlyAction->trigger();

        Observer observer(&edit);
        edit.caseSensitiveAction->trigger();
        edit.caseSensitiveAction->trigger();

        QCOMPARE(observer.seen.size(), 2);
        QCOMPARE(observer.seen.at(0).caseSensitive, true);
        QCOMPARE(observer.seen.at(1).caseSensitive, false);
        for (const Snapshot& s : observer.seen) {
            QCOMPARE(s.group, 14);
            QCOMPARE(s.modes, oneHot(4, 2));
        }
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
        QSignalSpy spy(&edit, SIGNAL(patternSyntaxChange()));
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
        edit.rangeActions.at(0)->setChecked(false);
        edit.rangeActions.at(3)->setChecked(true);
        edit.rangeActions.at(7)->setChecked(true);
        edit.wildCardAction->setChecked(true);
        const QList<bool> groups = checkedStates(edit.rangeActions);
        const QList<bool> modes = checkedStates(modeActions(edit));
        QSignalSpy spy(&edit, SIGNAL(patternSyntaxChange()));

        if (throughSignal) {
            QObject source;
            QVERIFY(QObject::connect(&source, SIGNAL(objectNameChanged(QString)), &edit, QByteArray("1" + slot).constData()));
            source.setObjectName(QStringLiteral("not an action"));
        } else {
            const QByteArray name = slot.left(slot.indexOf('('));
            QVERIFY(QMetaObject::invokeMethod(&edit, name.constData()));
        }

        QCOMPARE(checkedStates(edit.rangeActions), groups);
        QCOMPARE(checkedStates(modeActions(edit)), modes);
        QCOMPARE(edit.caseSensitiveAction->isChecked(), false);
        QCOMPARE(spy.count(), 0);
    }

    void menuListsOptionsAtPointer()
    {
        SearchLineEdit edit(nullptr);
        edit.resize(150, 24);
        edit.show();
        // The menu is taller than the offscreen screen leaves below any
        // pointer, so Qt lifts it to the top edge; the column follows the
        // pointer, never the button at the far end of the field.
        QCursor::setPos(237, 300);
        QList<QAction*> entries;
        QPoint pos;
        QPointer<QMenu> menu;
        QVERIFY(openMenu(edit, &entries, &pos, &menu));

        QList<QAction*> expected = edit.rangeActions;
        expected << nullptr << edit.caseSensitiveAction << nullptr << modeActions(edit) << nullptr;
        QCOMPARE(entries, expected);
        QCOMPARE(pos.x(), 237);
        QVERIFY(menu.isNull()); // each opening builds and discards its own menu

        QCursor::setPos(41, 300);
        entries.clear();
        QVERIFY(openMenu(edit, &entries, &pos, &menu));
        QCOMPARE(entries, expected);
        QCOMPARE(pos.x(), 41);
    }

    void iconFromHostResource()
    {
        SearchLineEdit edit(nullptr);
        QPushButton* button = edit.findChild<QPushButton*>();
        QVERIFY(button);
        QVERIFY(button->isFlat());
        QVERIFY(button->text().isEmpty());
        // The test image is 40x20; the icon keeps its proportions at 15 high.
        QCOMPARE(button->icon().availableSizes(), (QList<QSize>{QSize(30, 15)}));

        // A one-pixel checkerboard scaled down by smoothing turns grey; plain
        // scaling would keep only black and white.
        const QImage image = button->icon().pixmap(QSize(30, 15)).toImage();
        bool grey = false;
        for (int y = 0; y < image.height() && !grey; ++y) {
            for (int x = 0; x < image.width() && !grey; ++x) {
                const int v = qGray(image.pixel(x, y));
                grey = v > 40 && v < 215;
            }
        }
        QVERIFY(grey);

        edit.resize(200, 24);
        edit.show();
        edit.layout()->activate();
        QCOMPARE(button->geometry().right(), edit.width() - 1);
        QVERIFY(button->geometry().left() > edit.width() / 2);
    }

    void missingIconLeavesButtonWorking()
    {
        IconResourceRemoved removed;
        TestHelpers::MessageCapture messages;
        SearchLineEdit edit(nullptr);
        QCOMPARE(messages.count(), 0);

        QPushButton* button = edit.findChild<QPushButton*>();
        QVERIFY(button);
        QVERIFY(button->icon().isNull());
        QList<QAction*> entries;
        QPoint pos;
        QPointer<QMenu> menu;
        QVERIFY(openMenu(edit, &entries, &pos, &menu));
        QCOMPARE(entries.size(), 25);
    }
};

QTEST_MAIN(TestSearchLineEdit)
#include "tst_searchlineedit.moc"
