// The shipped German translation: complete, in step with the sources, and
// applied to exactly the texts that are meant to be translated. The column
// headers and the search menu stay English.

#include "devicedb.h"
#include "deviceselectordialog.h"
#include "searchlineedit.h"
#include "testhelpers.h"

#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QProcess>
#include <QRegularExpression>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

namespace {

const QString TranslationDir = QStringLiteral(DEVICE_QM_DIR);

// The source texts of a .ts file, context by context.
QStringList sourcesOf(const QString& tsFile)
{
    QFile f(tsFile);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QString ts = QString::fromUtf8(f.readAll());
    QStringList out;
    QString context;
    static const QRegularExpression item(QStringLiteral("<name>(.*?)</name>|<source>(.*?)</source>"),
                                         QRegularExpression::DotMatchesEverythingOption);
    auto it = item.globalMatch(ts);
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        if (!m.captured(1).isEmpty())
            context = m.captured(1);
        else
            out << context + QLatin1String(" | ") + m.captured(2);
    }
    out.sort();
    return out;
}

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<DEV::DeviceDb> m_db;
    QTranslator m_german;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QString path = m_dir.filePath(QStringLiteral("chips.csv"));
        QVERIFY(TestHelpers::writeFile(path, TestHelpers::line19("zr9k31a-015", "PN-15", "A", "ZR9K")
                                                 + TestHelpers::line19("x-1", "PN-X", "", "ZR1N")));
        m_db.reset(new DEV::DeviceDb(path));
        QVERIFY(m_german.load(QStringLiteral("device_de"), TranslationDir));
        QVERIFY(QCoreApplication::installTranslator(&m_german));
    }

    void everyMessageIsTranslated()
    {
        QFile ts(QStringLiteral(DEVICE_SOURCE_DIR "/translations/device_de.ts"));
        QVERIFY(ts.open(QIODevice::ReadOnly));
        const QByteArray text = ts.readAll();
        QVERIFY(text.contains("<translation>"));
        QVERIFY(!text.contains("type=\"unfinished\""));
        QVERIFY(!text.contains("<translation></translation>"));
    }

    // A text added to the sources must reach the translation too.
    void translationSourcesMatchTheCode()
    {
        const QString fresh = m_dir.filePath(QStringLiteral("fresh_de.ts"));
        QProcess lupdate;
        lupdate.setWorkingDirectory(QStringLiteral(DEVICE_SOURCE_DIR));
        lupdate.start(QStringLiteral(DEVICE_LUPDATE),
                      {QStringLiteral("-no-obsolete"), QStringLiteral("-locations"), QStringLiteral("none"),
                       QStringLiteral("device/ui/deviceselector.cpp"), QStringLiteral("device/ui/deviceselectordialog.cpp"),
                       QStringLiteral("device/ui/deviceselector.ui"), QStringLiteral("device/ui/searchlineedit.cpp"),
                       QStringLiteral("-ts"), fresh});
        QVERIFY(lupdate.waitForFinished(60000));
        QCOMPARE(lupdate.exitCode(), 0);
        const QStringList expected = sourcesOf(fresh);
        QVERIFY(expected.size() >= 12);
        QCOMPARE(sourcesOf(QStringLiteral(DEVICE_SOURCE_DIR "/translations/device_de.ts")), expected);
    }

    void dialogAndFormTexts()
    {
        DEV::DeviceSelectorDialog dialog(m_db.get());
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Baustein auswählen"));
        const auto label = [&](const char* name) {
            auto* l = dialog.findChild<QLabel*>(QLatin1String(name));
            return l ? l->text() : QStringLiteral("<missing %1>").arg(QLatin1String(name));
        };
        QCOMPARE(label("label"), QStringLiteral("Serie:"));
        QCOMPARE(label("label_2"), QStringLiteral("Baustein:"));
        QCOMPARE(label("label_3"), QStringLiteral("Gehäuse:"));
        QCOMPARE(label("label_5"), QStringLiteral("Geschwindigkeit:"));
        QCOMPARE(label("label_4"), QStringLiteral("Suche:"));
        QCOMPARE(label("matchCountLabel"), QStringLiteral("(0 Treffer)"));
        QVERIFY(label("labelDeviceVersion").contains(QLatin1String("Bausteinversion:")));
        QVERIFY(!label("labelDeviceVersion").contains(QLatin1String("initial version")));

        auto* search = dialog.findChild<DEV::SearchLineEdit*>();
        QVERIFY(search);
        QTest::keyClicks(search, QStringLiteral("PN-1"));
        QCOMPARE(label("matchCountLabel"), QStringLiteral("(1 Treffer)"));
    }

    void fixedEnglishTexts()
    {
        DEV::DeviceSelectorDialog dialog(m_db.get());
        auto* table = dialog.findChild<QTableView*>(QStringLiteral("tableView"));
        QVERIFY(table);
        QCOMPARE(table->model()->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Part Number"));
        QCOMPARE(table->model()->headerData(13, Qt::Horizontal).toString(), QStringLiteral("User Flash"));
        auto* search = dialog.findChild<DEV::SearchLineEdit*>();
        QVERIFY(search);
        QCOMPARE(search->rangeActions.first()->text(), QStringLiteral("All"));
        QCOMPARE(search->caseSensitiveAction->text(), QStringLiteral("Case sensitive"));
        QCOMPARE(search->matchAnywhereAction->text(), QStringLiteral("Match anywhere"));
    }

    void pickerLanguageOption_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("German") << "de" << 0;
        QTest::newRow("no such translation") << "xx" << 2;
    }

    void pickerLanguageOption()
    {
        QFETCH(QString, lang);
        QFETCH(int, exitCode);
        QProcess picker;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        picker.setProcessEnvironment(env);
        const QString png = m_dir.filePath(QStringLiteral("shot.png"));
        picker.start(QStringLiteral(DEVICEPICKER_PATH),
                     {QStringLiteral("--lang"), lang, QStringLiteral("--screenshot"), png});
        QVERIFY(picker.waitForFinished(60000));
        QCOMPARE(picker.exitCode(), exitCode);
        if (exitCode == 2)
            QCOMPARE(picker.readAllStandardError(), QByteArray("devicepicker: no translation for language 'xx'\n"));
        else
            QVERIFY(QFileInfo(png).size() > 0);
    }
};

QTEST_MAIN(TestTranslations)
#include "tst_translations.moc"
