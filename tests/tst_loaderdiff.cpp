// The loader against the plain reference loader, on random files: the same
// records, member for member (null and empty told apart), the same version
// order, and the same messages in the same order.

#include "devicedb.h"
#include "reference/referenceloader.h"
#include "testhelpers.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>

using DEV::ChipInfo;

namespace {

// Records of one version have no defined order, so each run of equal
// versions is compared as a sorted list; nulls are told from empties.
QStringList canonical(const QList<ChipInfo>& chips)
{
    QStringList out;
    for (int i = 0, j = 0; i < chips.size(); i = j) {
        QStringList group;
        for (j = i; j < chips.size() && chips.at(j).deviceVersion == chips.at(i).deviceVersion; ++j)
            group << TestHelpers::fields(chips.at(j)).join(QLatin1Char('|'));
        group.sort();
        out << QStringLiteral("== version ") + chips.at(i).deviceVersion << group;
    }
    return out;
}

QByteArray pick(QRandomGenerator& rng, const QList<QByteArray>& from)
{
    return from.at(int(rng.bounded(from.size())));
}

QByteArray randomField(QRandomGenerator& rng)
{
    static const QList<QByteArray> pieces{
        "", " ", "\t", "A", "B", "b", "zr9k31a-015", "PN-1", "72Kb", " 64 ", "\xC2\xB5", "\xE6\x97\xA5",
        "\xC3", "\x80", "\xFF", "\"", "\\", "x y", "\x00", "\r", "\xEF\xBB\xBF", "0", "C6/I5"};
    QByteArray f;
    const int n = int(rng.bounded(4));
    for (int i = 0; i < n; ++i)
        f += pick(rng, pieces);
    return f;
}

QByteArray randomFile(QRandomGenerator& rng)
{
    static const QList<QByteArray> boms{"", "", "", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"};
    static const QList<QByteArray> ends{"\n", "\n", "\r\n", "\r", "\n\n", ""};
    QByteArray file = pick(rng, boms);
    const int lines = int(rng.bounded(12));
    for (int l = 0; l < lines; ++l) {
        const int columns = int(rng.bounded(22));
        QByteArray line;
        for (int c = 0; c < columns; ++c) {
            if (c)
                line += ',';
            line += randomField(rng);
        }
        file += line + pick(rng, ends);
    }
    return file;
}

} // namespace

class TestLoaderDiff : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    void compareOn(const QByteArray& bytes)
    {
        const QString path = m_dir.filePath(QStringLiteral("f.csv"));
        QVERIFY(TestHelpers::writeFile(path, bytes));

        QStringList referenceMessages;
        QList<ChipInfo> expected;
        {
            TestHelpers::MessageCapture capture;
            expected = Reference::loadDataFile(path);
            referenceMessages = capture.criticals();
        }
        TestHelpers::MessageCapture capture;
        DEV::DeviceDb db(path);
        QCOMPARE(capture.criticals(), referenceMessages);
        QCOMPARE(canonical(db.allChipInfo()), canonical(expected));
    }

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void randomFiles_data()
    {
        QTest::addColumn<QByteArray>("codec");
        QTest::newRow("UTF-8 locale") << QByteArray("UTF-8");
        QTest::newRow("Latin-1 locale") << QByteArray("ISO-8859-1");
    }

    void randomFiles()
    {
        QFETCH(QByteArray, codec);
        QTextCodec* saved = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
        QRandomGenerator rng(20261121);
        for (int i = 0; i < 1500; ++i) {
            const QByteArray bytes = randomFile(rng);
            compareOn(bytes);
            if (QTest::currentTestFailed()) {
                qWarning() << "file was" << bytes;
                break;
            }
        }
        QTextCodec::setCodecForLocale(saved);
    }

    // Lines that straddle the loader's internal read blocks, and a multi-byte
    // character cut by a block boundary.
    void blockBoundaries()
    {
        QByteArray bytes;
        int i = 0;
        while (bytes.size() < 3 * 1024 * 1024) {
            bytes += TestHelpers::line19("id\xC2\xB5" + QByteArray::number(i), "PN-\xE6\x97\xA5" + QByteArray::number(i),
                                         QByteArray(1, char('A' + i % 5)));
            ++i;
        }
        compareOn(bytes);
    }

    void utf16And32()
    {
        const QString text = QStringLiteral("id,PN-\u00B5,s,k,d,B,p,v,c,x,1,2\nbad,line\nid2,PN2,s,k,d,,p,v\n");
        for (const char* name : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
            QTextCodec* codec = QTextCodec::codecForName(name);
            QVERIFY(codec);
            QTextEncoder* enc = codec->makeEncoder(QTextCodec::DefaultConversion); // writes a byte-order mark
            compareOn(enc->fromUnicode(text));
            delete enc;
        }
    }
};

QTEST_GUILESS_MAIN(TestLoaderDiff)
#include "tst_loaderdiff.moc"
