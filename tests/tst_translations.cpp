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
#include <QTest>
#include <QTranslator>

namespace {

const QString TranslationDir = QStringLiteral(DEVICE_QM_DIR);

// The source texts of a .ts file, each after its context, sorted.
QStringList sourcesOf(const QString& tsFile)
{
    QFile f(tsFile);
    QStringList out;
    QString context;
    auto it = QRegularExpression(QStringLiteral("<name>(.*?)</name>|<source>(.*?)</source>"),
                                 QRegularExpression::DotMatchesEverythingOption)
                  .globalMatch(f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString());
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        m.captured(1).isEmpty() ? void(out << context + QLatin1String(" | ") + m.captured(2)) : void(context = m.captured(1));
    }
    out.sort();
    return out;
}

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;
    std::unique_ptr<DEV::DeviceDb> m_db;
    QTranslator m_german;

private slots:
    void initTestCase()
    {
        m_db = m_files.load(TestHelpers::line19("zr9k31a-015", "PN-15", "A", "ZR9K")
                            + TestHelpers::line19("x-1", "PN-X", "", "ZR1N"));
        QVERIFY(m_german.load(QStringLiteral("device_de"), TranslationDir));
        QVERIFY(QCoreApplication::installTranslator(&m_german));
    }

    void everyMessageIsTranslated()
    {
        QFile ts(QStringLiteral(DEVICE_SOURCE_DIR "/translations/device_de.ts"));
        QVERIFY(ts.open(QIODevice::ReadOnly));
        const QByteArray text = ts.readAll();
        QVERIFY(text.contains("<translation>") && !text.contains("type=\"unfinished\""));
        QVERIFY(!text.contains("<translation></translation>"));
    }

    // A text added to the sources must reach the translation too.
    void translationSourcesMatchTheCode()
    {
        const QString fresh = m_files.path(QStringLiteral("fresh_de.ts"));
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

    // Column headers and the search menu stay English.
    void dialogAndFormTexts()
    {
        DEV::DeviceSelectorDialog dialog(m_db.get());
        QStringList labels;
        for (const char* name : {"label", "label_2", "label_3", "label_5", "label_4", "matchCountLabel"})
            labels << dialog.findChild<QLabel*>(QLatin1String(name))->text();
        QCOMPARE(labels, (QStringList{"Serie:", "Baustein:", "Gehäuse:", "Geschwindigkeit:", "Suche:", "(0 Treffer)"}));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Baustein auswählen"));
        const QString version = dialog.findChild<QLabel*>(QStringLiteral("labelDeviceVersion"))->text();
        QVERIFY(version.contains(QLatin1String("Bausteinversion:")) && !version.contains(QLatin1String("initial version")));
        auto* search = dialog.findChild<DEV::SearchLineEdit*>();
        QTest::keyClicks(search, QStringLiteral("PN-1"));
        QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text(), QStringLiteral("(1 Treffer)"));

        const QAbstractItemModel* model = dialog.findChild<QTableView*>()->model();
        QCOMPARE(model->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Part Number"));
        QCOMPARE(model->headerData(13, Qt::Horizontal).toString(), QStringLiteral("User Flash"));
        QCOMPARE(search->rangeActions.first()->text(), QStringLiteral("All"));
        QCOMPARE(search->caseSensitiveAction->text(), QStringLiteral("Case sensitive"));
        QCOMPARE(search->matchAnywhereAction->text(), QStringLiteral("Match anywhere"));
    }

    void pickerLanguageOption()
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        const QString png = m_files.path(QStringLiteral("shot.png"));
        const auto run = [&](const char* lang) {
            return TestHelpers::runProgram(DEVICEPICKER_PATH, {"--lang", lang, "--screenshot", png}, env);
        };
        QCOMPARE(run("de").status, 0);
        QVERIFY(QFileInfo(png).size() > 0);
        const TestHelpers::Run unknown = run("xx");
        QCOMPARE(unknown.status, 2);
        QCOMPARE(unknown.err, QByteArray("devicepicker: no translation for language 'xx'\n"));
    }
};

QTEST_MAIN(TestTranslations)
#include "tst_translations.moc"
