// SPDX-License-Identifier: BSD-3-Clause
// Qt Designer's view of the selector widgets: one entry per widget in the
// widget box, under "Device". Forms that use them compile with uic, which
// constructs each widget from its parent alone.
#include "deviceselector.h"
#include "searchlineedit.h"

#include <QIcon>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace DEV {
namespace Designer {

/// One widget as Designer offers it.
class WidgetEntry : public QObject, public QDesignerCustomWidgetInterface
{
    Q_OBJECT
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    using Create = QWidget* (*)(QWidget* parent);

    WidgetEntry(const QString& className, const QString& objectName, const QString& toolTip, Create create,
                QObject* parent)
        : QObject(parent)
        , m_className(className)
        , m_objectName(objectName)
        , m_toolTip(toolTip)
        , m_create(create)
    {
    }

    QString name() const override { return m_className; }
    QString group() const override { return QStringLiteral("Device"); }
    QString toolTip() const override { return m_toolTip; }
    QString whatsThis() const override { return m_toolTip; }
    // The headers are installed flat, so forms include them by bare name.
    QString includeFile() const override
    {
        return m_className.mid(int(qstrlen("DEV::"))).toLower() + QStringLiteral(".h");
    }
    QIcon icon() const override { return QIcon(); }
    bool isContainer() const override { return false; }
    QWidget* createWidget(QWidget* parent) override { return m_create(parent); }
    QString domXml() const override
    {
        return QStringLiteral("<ui language=\"c++\"><widget class=\"") + m_className + QStringLiteral("\" name=\"")
            + m_objectName + QStringLiteral("\"/></ui>");
    }

private:
    const QString m_className;
    const QString m_objectName;
    const QString m_toolTip;
    const Create m_create;
};

/// The plugin: Designer asks it for its widgets.
class WidgetCollection : public QObject, public QDesignerCustomWidgetCollectionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)

public:
    explicit WidgetCollection(QObject* parent = nullptr)
        : QObject(parent)
    {
        // The selector in a form shows the process-wide database; in Designer
        // that is the catalogue beside Designer's own bin/, often none.
        m_widgets << new WidgetEntry(
            QStringLiteral("DEV::DeviceSelector"), QStringLiteral("deviceSelector"),
            QStringLiteral("Chip selector: attribute boxes, search field and chip table"),
            [](QWidget* parent) -> QWidget* { return new DeviceSelector(parent); }, this);
        m_widgets << new WidgetEntry(
            QStringLiteral("DEV::SearchLineEdit"), QStringLiteral("searchLineEdit"),
            QStringLiteral("Search field with the chip table's search options"),
            [](QWidget* parent) -> QWidget* { return new SearchLineEdit(parent); }, this);
    }

    QList<QDesignerCustomWidgetInterface*> customWidgets() const override { return m_widgets; }

private:
    QList<QDesignerCustomWidgetInterface*> m_widgets;
};

} // namespace Designer
} // namespace DEV

#include "deviceplugin.moc"
