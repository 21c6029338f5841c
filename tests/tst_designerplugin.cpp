// SPDX-License-Identifier: BSD-3-Clause
// The Qt Designer plugin, loaded as Designer loads it, and a form that uses its widgets, compiled by uic.

#include "devicedb.h"
#include "deviceselector.h"
#include "searchlineedit.h"
#include "testhelpers.h"
#include "ui_designerform.h"

#include <QPluginLoader>
#include <QTableView>
#include <QTest>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

class TestDesignerPlugin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Each widget's entry in the widget box, and a widget made through it.
    void widgets_data()
    {
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("header");
        QTest::addColumn<QString>("objectName");
        QTest::newRow("selector") << "DEV::DeviceSelector" << "deviceselector.h" << "deviceSelector";
        QTest::newRow("search field") << "DEV::SearchLineEdit" << "searchlineedit.h" << "searchLineEdit";
    }
    void widgets()
    {
        QFETCH(QString, className);
        QFETCH(QString, header);
        QFETCH(QString, objectName);
        QPluginLoader loader(TestHelpers::testPath("designerPlugin"));
        auto* collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(loader.instance());
        QVERIFY2(collection, qPrintable(loader.errorString()));
        QStringList names;
        QDesignerCustomWidgetInterface* entry = nullptr;
        for (QDesignerCustomWidgetInterface* widget : collection->customWidgets()) {
            names << widget->name();
            entry = widget->name() == className ? widget : entry;
        }
        QCOMPARE(names, QStringList({"DEV::DeviceSelector", "DEV::SearchLineEdit"}));
        QCOMPARE(entry->group(), QStringLiteral("Device"));
        QCOMPARE(entry->includeFile(), header);
        QVERIFY(!entry->isContainer());
        QCOMPARE(entry->domXml(), "<ui language=\"c++\"><widget class=\"" + className + "\" name=\"" + objectName + "\"/></ui>");
        QWidget parent;
        const QWidget* widget = entry->createWidget(&parent);
        QCOMPARE(widget->metaObject()->className(), qPrintable(className));
        QCOMPARE(widget->parentWidget(), &parent);
    }

    // The form's selector shows the process-wide database, the bundled catalogue beside bin/.
    void formFromUic()
    {
        QWidget host;
        Ui::DesignerForm form;
        form.setupUi(&host);
        const int chips = int(DEV::DeviceDb::instance()->allChipInfo().size());
        QVERIFY(chips > 0);
        QCOMPARE(int(form.deviceSelector->findChild<QTableView*>()->model()->rowCount()), chips);
        QCOMPARE(form.searchLineEdit->parentWidget(), &host);
        QCOMPARE(int(form.searchLineEdit->rangeActions.size()), 17);
    }
};

QTEST_MAIN(TestDesignerPlugin)
#include "tst_designerplugin.moc"
