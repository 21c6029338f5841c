// SPDX-License-Identifier: BSD-3-Clause
#include "searchlineedit.h"

#include "chipcolumns.h"

#include <QAction>
#include <QCursor>
#include <QHBoxLayout>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>

namespace DEV {

namespace {

constexpr int IconHeight = 15;

// The button that opens the options menu, inside @p edit at its right end.
QPushButton* addOptionsButton(QLineEdit* edit)
{
    auto* button = new QPushButton(edit);
    // The icon belongs to the host application. Scaling a null pixmap would
    // print a warning, and a missing icon is not worth one: the button then
    // simply shows no picture.
    const QPixmap pixmap(QStringLiteral(":/fpgaprj/image/configuration.png"));
    if (!pixmap.isNull())
        button->setIcon(QIcon(pixmap.scaledToHeight(IconHeight, Qt::SmoothTransformation)));
    button->setFlat(true);

    // A layout inside the line edit pins the button to its right end; the
    // stretch takes all the room to its left.
    auto* layout = new QHBoxLayout(edit);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addStretch(1);
    layout->addWidget(button);
    return button;
}

} // namespace

SearchLineEdit::SearchLineEdit(QWidget* parent)
    : QLineEdit(parent)
{
    QPushButton* button = addOptionsButton(this);

    for (int group = 0; group < SearchGroupCount; ++group) {
        auto* action = new QAction(searchGroupName(group), this);
        action->setData(group);
        action->setCheckable(true);
        action->setChecked(group == 0);
        rangeActions.append(action);
    }

    const auto makeOption = [this](bool checked, const QString& text) {
        auto* action = new QAction(this);
        action->setCheckable(true);
        action->setChecked(checked);
        action->setText(text);
        return action;
    };
    caseSensitiveAction = makeOption(false, QStringLiteral("Case sensitive"));
    wildCardAction = makeOption(false, QStringLiteral("Use wild cards"));
    regExpAction = makeOption(false, QStringLiteral("Use regular expression"));
    matchExactlyAction = makeOption(false, QStringLiteral("Match exactly"));
    matchAnywhereAction = makeOption(true, QStringLiteral("Match anywhere"));

    // Connections to one signal run in the order they were made. Each action's
    // exclusivity slot comes first, so whoever listens to patternSyntaxChange()
    // already sees exactly one group and one mode checked.
    for (QAction* action : qAsConst(rangeActions)) {
        connect(action, SIGNAL(triggered(bool)), this, SLOT(updateRangeCheckStatus()));
        connect(action, SIGNAL(triggered(bool)), this, SIGNAL(patternSyntaxChange()));
    }
    for (QAction* action : {wildCardAction, regExpAction, matchExactlyAction, matchAnywhereAction})
        connect(action, SIGNAL(triggered(bool)), this, SLOT(updateCheckStatus()));
    connect(button, SIGNAL(clicked(bool)), this, SLOT(configure()));

    for (QAction* action :
         {wildCardAction, regExpAction, matchExactlyAction, matchAnywhereAction, caseSensitiveAction})
        connect(action, SIGNAL(triggered(bool)), this, SIGNAL(patternSyntaxChange()));
}

SearchLineEdit::~SearchLineEdit()
{
    // The column-group actions go with the line edit's children; the list only
    // points at them.
    rangeActions.clear();
    for (QAction** action :
         {&caseSensitiveAction, &wildCardAction, &regExpAction, &matchExactlyAction, &matchAnywhereAction}) {
        delete *action;
        *action = nullptr;
    }
}

int SearchLineEdit::filterGroup()
{
    for (const QAction* action : qAsConst(rangeActions)) {
        if (action->isChecked())
            return action->data().toInt();
    }
    return 0;
}

void SearchLineEdit::updateCheckStatus()
{
    // Only an action can be "the one picked"; anything else calling in
    // (a direct invocation, another kind of signal) must not clear the modes.
    const QAction* picked = qobject_cast<QAction*>(sender());
    if (!picked)
        return;
    // Triggering a checked action unchecks it; setting it again here is what
    // keeps a repeated pick checked.
    for (QAction* action : {wildCardAction, regExpAction, matchExactlyAction, matchAnywhereAction})
        action->setChecked(action == picked);
}

void SearchLineEdit::updateRangeCheckStatus()
{
    const QAction* picked = qobject_cast<QAction*>(sender());
    if (!picked)
        return;
    for (QAction* action : qAsConst(rangeActions))
        action->setChecked(action == picked);
}

void SearchLineEdit::configure()
{
    // The menu is built anew each time from the long-lived actions, which keep
    // their checked states between openings.
    QPointer<QMenu> menu = new QMenu(this);
    menu->addActions(rangeActions);
    menu->addSeparator();
    menu->addAction(caseSensitiveAction);
    menu->addSeparator();
    menu->addAction(wildCardAction);
    menu->addAction(regExpAction);
    menu->addAction(matchExactlyAction);
    menu->addAction(matchAnywhereAction);
    // QMenu hides a trailing separator, so this one never shows.
    menu->addSeparator();

    // A picked option acts through its own triggered() connections while the
    // menu runs, so the result of exec() is of no interest. The menu is placed
    // at the pointer rather than at the button.
    menu->exec(QCursor::pos());
    // The guard matters if the line edit, and with it the menu, was deleted
    // while the menu's event loop ran.
    delete menu.data();
}

} // namespace DEV
