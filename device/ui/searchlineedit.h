// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_SEARCHLINEEDIT_H
#define DEV_SEARCHLINEEDIT_H

#include "device_export.h"

#include <QLineEdit>
#include <QList>

QT_BEGIN_NAMESPACE
class QAction;
QT_END_NAMESPACE

namespace DEV {

/**
 * @brief The device selector's search field: a line edit with an options
 * button at its right end.
 *
 * The button opens a menu of checkable options that tell a search how to use
 * the typed text:
 * - the column group searched: "All" or one of sixteen chip columns
 *   (rangeActions, exactly one checked; filterGroup() reads it);
 * - "Case sensitive", an independent on/off switch;
 * - how the text is read: "Use wild cards", "Use regular expression",
 *   "Match exactly" or "Match anywhere" (exactly one checked).
 *
 * The line edit does no searching itself. Whenever the user picks an option,
 * the option sets are made exclusive again and only then patternSyntaxChange()
 * is emitted, so a receiver always reads a consistent set of options. Picking
 * the option that is already checked leaves it checked.
 *
 * The actions are public so that a search can read them directly. Checking an
 * action through QAction::setChecked() bypasses the exclusivity and emits no
 * signal; only QAction::trigger() (and the menu) behave like a user's pick.
 *
 * The button's icon is ":/fpgaprj/image/configuration.png", which the host
 * application provides in its resources. Without it the button has no icon
 * but still opens the menu.
 *
 * @code
 * auto* edit = new DEV::SearchLineEdit(this);
 * connect(edit, SIGNAL(patternSyntaxChange()), this, SLOT(search()));
 * connect(edit, SIGNAL(textEdited(QString)), this, SLOT(search()));
 * // in search():
 * const int group = edit->filterGroup();
 * const bool caseSensitive = edit->caseSensitiveAction->isChecked();
 * @endcode
 */
class DEVICE_EXPORT SearchLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    /// Builds the field with every option in its initial state.
    explicit SearchLineEdit(QWidget* parent = nullptr);
    ~SearchLineEdit() override;

    /**
     * The column group to search: the data of the first checked action of
     * rangeActions, 0 ("All") when none is checked. 1 to 16 are "Series",
     * "Part Number", "Device", "Device Version", "Package", "Speed",
     * "Voltage", "IO", "LUT", "FF", "ROM16", "SSRAM", "BSRAM", "UserFlash",
     * "DSP" and "PLL", in that order.
     */
    int filterGroup();

    /**
     * The seventeen column-group choices in menu order, "All" first. Each is
     * checkable and carries its group number as int data; "All" is checked
     * initially.
     */
    QList<QAction*> rangeActions;
    /// "Case sensitive": whether letter case counts. Off initially.
    QAction* caseSensitiveAction = nullptr;
    /// "Use wild cards": read the text as a Unix wild-card pattern.
    QAction* wildCardAction = nullptr;
    /// "Use regular expression": read the text as a regular expression.
    QAction* regExpAction = nullptr;
    /// "Match exactly": the text must equal a whole value.
    QAction* matchExactlyAction = nullptr;
    /// "Match anywhere": the text may be any part of a value. Checked initially.
    QAction* matchAnywhereAction = nullptr;

Q_SIGNALS:
    /// Emitted after the user picked any option, once the option sets are consistent again.
    void patternSyntaxChange();

private Q_SLOTS:
    /// Keeps the four text-reading options exclusive; the sender is the one picked.
    void updateCheckStatus();
    /// Keeps the column groups exclusive; the sender is the one picked.
    void updateRangeCheckStatus();
    /// Shows the options menu at the mouse pointer and waits for it to close.
    void configure();
};

} // namespace DEV

#endif // DEV_SEARCHLINEEDIT_H
