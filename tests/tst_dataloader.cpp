// How a device data file becomes the database's list: columns, trimming,
// malformed lines and their messages, encodings and hostile files.

#include "devicedb.h"
#include "testhelpers.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>

#include <unistd.h>

using DEV::ChipInfo;
using DEV::DeviceDb;
using TestHelpers::MessageCapture;

Q_DECLARE_METATYPE(QList<QByteArray>)

namespace {

// A byte array of the whole literal, embedded NULs included.
template <int N>
QByteArray raw(const char (&bytes)[N])
{
    return QByteArray(bytes, N - 1);
}

} // namespace

class TestDataLoader : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_fileNo = 0;

    QString writeData(const QByteArray& bytes)
    {
        const QString path = m_dir.filePath(QStringLiteral("data%1.csv").arg(++m_fileNo));
        if (!TestHelpers::writeFile(path, bytes))
            qFatal("cannot write test fixture %s", qPrintable(path));
        return path;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // Files are decoded with the locale's codec; pin it so that the
        // results do not depend on the environment the tests run in.
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    }

    void columnCounts_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("speed");
        QTest::addColumn<QString>("auxiliary");
        QTest::addColumn<int>("resourceCount");

        QTest::newRow("7 columns: malformed") << QByteArray("a,b,c,d,e,f,g") << false << QString() << QString() << 0;
        QTest::newRow("8 columns: no speed, no auxiliary")
            << QByteArray("id,pn,s,k,d,v,p,u") << true << "" << "" << 0;
        QTest::newRow("9 columns: speed, no auxiliary")
            << QByteArray("id,pn,s,k,d,v,p,u,C7") << true << "C7" << "" << 0;
        QTest::newRow("10 columns: no resources")
            << QByteArray("id,pn,s,k,d,v,p,u,C7,X") << true << "C7" << "X" << 0;
        QTest::newRow("19 columns: nine resources")
            << QByteArray("id,pn,s,k,d,v,p,u,C7,X,1,2,3,4,5,6,7,8,9") << true << "C7" << "X" << 9;
        QTest::newRow("25 columns: fifteen resources, all kept")
            << QByteArray("id,pn,s,k,d,v,p,u,C7,X,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15") << true << "C7" << "X"
            << 15;
        QTest::newRow("nine commas: ten empty columns") << QByteArray(",,,,,,,,,") << true << "" << "" << 0;
        QTest::newRow("one column") << QByteArray("justtext") << false << QString() << QString() << 0;
    }

    void columnCounts()
    {
        QFETCH(QByteArray, line);
        QFETCH(bool, accepted);
        QFETCH(QString, speed);
        QFETCH(QString, auxiliary);
        QFETCH(int, resourceCount);

        MessageCapture capture;
        DeviceDb db(writeData(line + '\n'));
        const QList<ChipInfo> chips = db.allChipInfo();
        if (!accepted) {
            QCOMPARE(chips.size(), 0);
            QCOMPARE(capture.criticals(),
                     QStringList{QStringLiteral("incorrect device info entry \"%1\"").arg(QString::fromLatin1(line))});
            return;
        }
        QCOMPARE(capture.count(), 0);
        QCOMPARE(chips.size(), 1);
        QCOMPARE(chips.at(0).speed, speed);
        QCOMPARE(chips.at(0).auxiliary, auxiliary);
        QCOMPARE(chips.at(0).resources.size(), resourceCount);
        const QList<QByteArray> parts = line.split(',');
        for (int i = 0; i < resourceCount; ++i)
            QCOMPARE(chips.at(0).resources.at(i), QString::fromLatin1(parts.at(10 + i)));
    }

    void columnsFillMembersInOrder()
    {
        DeviceDb db(writeData("id,pn,ser,key,dev,ver,pkg,volt,spd,aux,r0,r1\n"));
        const ChipInfo c = db.allChipInfo().value(0);
        QCOMPARE(c.deviceId, QStringLiteral("id"));
        QCOMPARE(c.partNumber, QStringLiteral("pn"));
        QCOMPARE(c.series, QStringLiteral("ser"));
        QCOMPARE(c.matchKey, QStringLiteral("key"));
        QCOMPARE(c.device, QStringLiteral("dev"));
        QCOMPARE(c.deviceVersion, QStringLiteral("ver"));
        QCOMPARE(c.package, QStringLiteral("pkg"));
        QCOMPARE(c.voltage, QStringLiteral("volt"));
        QCOMPARE(c.speed, QStringLiteral("spd"));
        QCOMPARE(c.auxiliary, QStringLiteral("aux"));
        QCOMPARE(c.resources, (QStringList{QStringLiteral("r0"), QStringLiteral("r1")}));
    }

    void textMembersTrimmedResourcesKept()
    {
        DeviceDb db(writeData(" id , \tPN-1 ,ser,key,dev,ver,pkg,volt,spd, aux\t, 64 ,72Kb , ,in side\n"));
        const ChipInfo c = db.allChipInfo().value(0);
        QCOMPARE(c.deviceId, QStringLiteral("id"));
        QCOMPARE(c.partNumber, QStringLiteral("PN-1"));
        QCOMPARE(c.auxiliary, QStringLiteral("aux"));
        QCOMPARE(c.resources, (QStringList{QStringLiteral(" 64 "), QStringLiteral("72Kb "), QStringLiteral(" "),
                                           QStringLiteral("in side")}));
    }

    void quotesAreNotSyntax()
    {
        DeviceDb db(writeData("id,\"PN,1\",ser,key,dev,ver,pkg,volt,spd,aux\n"));
        const ChipInfo c = db.allChipInfo().value(0);
        QCOMPARE(c.partNumber, QStringLiteral("\"PN"));
        QCOMPARE(c.series, QStringLiteral("1\""));
        QCOMPARE(c.auxiliary, QStringLiteral("spd"));
        QCOMPARE(c.resources, QStringList{QStringLiteral("aux")});
    }

    void emptyLinesSkippedSilently()
    {
        MessageCapture capture;
        DeviceDb db(writeData("\n\na,b,c,d,e,f,g,h\n\n\r\n\na,b,c,d,e,f,g,h"));
        QCOMPARE(db.allChipInfo().size(), 2);
        QCOMPARE(capture.count(), 0);
    }

    void whitespaceOnlyLineIsMalformed()
    {
        MessageCapture capture;
        DeviceDb db(writeData("a,b,c,d,e,f,g,h\n \t \na,b,c,d,e,f,g,h\n"));
        QCOMPARE(db.allChipInfo().size(), 2);
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("incorrect device info entry \" \\t \"")});
    }

    void lineTerminators_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("partNumbers");

        QTest::newRow("LF") << QByteArray("i,P1,s,k,d,,p,v,c,x,1\ni,P2,s,k,d,,p,v,c,x,2\n")
                            << QStringList{"P1", "P2"};
        QTest::newRow("CR LF") << QByteArray("i,P1,s,k,d,,p,v,c,x,1\r\ni,P2,s,k,d,,p,v,c,x,2\r\n")
                               << QStringList{"P1", "P2"};
        QTest::newRow("no final newline") << QByteArray("i,P1,s,k,d,,p,v,c,x,1\ni,P2,s,k,d,,p,v,c,x,2")
                                          << QStringList{"P1", "P2"};
        QTest::newRow("UTF-8 byte-order mark") << QByteArray("\xEF\xBB\xBFi,P1,s,k,d,,p,v,c,x,1\n")
                                               << QStringList{"P1"};
    }

    void lineTerminators()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, partNumbers);

        MessageCapture capture;
        DeviceDb db(writeData(bytes));
        QStringList got;
        for (const ChipInfo& c : db.allChipInfo())
            got << c.partNumber;
        got.sort();
        QCOMPARE(got, partNumbers);
        QCOMPARE(capture.count(), 0);
        // The terminator never leaks into the last (untrimmed) column.
        for (const ChipInfo& c : db.allChipInfo()) {
            QCOMPARE(c.resources.size(), 1);
            QVERIFY(!c.resources.at(0).contains(QLatin1Char('\r')));
        }
        // The byte-order mark is not part of the first identifier.
        QCOMPARE(db.allChipInfo().at(0).deviceId, QStringLiteral("i"));
    }

    void decodedWithTheLocaleCodec_data()
    {
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QString>("partNumber");
        QTest::newRow("UTF-8") << QByteArray("UTF-8") << QStringLiteral("PN-\u00B5");
        QTest::newRow("Latin-1") << QByteArray("ISO-8859-1") << QStringLiteral("PN-\u00C2\u00B5");
    }

    void decodedWithTheLocaleCodec()
    {
        QFETCH(QByteArray, codec);
        QFETCH(QString, partNumber);
        QTextCodec* saved = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
        DeviceDb db(writeData("id,PN-\xC2\xB5,s,k,d,,p,v,c,x\n"));
        QTextCodec::setCodecForLocale(saved);
        QCOMPARE(db.allChipInfo().value(0).partNumber, partNumber);
    }

    void orderedByVersionDescending_data()
    {
        QTest::addColumn<QList<QByteArray>>("versionsInFile");

        QTest::newRow("already ordered") << QList<QByteArray>{"b", "B", "A", ""};
        QTest::newRow("reversed") << QList<QByteArray>{"", "A", "B", "b"};
        QTest::newRow("mixed") << QList<QByteArray>{"A", "", "b", "B"};
        QTest::newRow("mixed with blanks around") << QList<QByteArray>{" A", "  ", "b ", " B "};
    }

    void orderedByVersionDescending()
    {
        QFETCH(QList<QByteArray>, versionsInFile);
        QByteArray bytes;
        int n = 0;
        for (const QByteArray& v : versionsInFile) {
            bytes += TestHelpers::line19("id" + QByteArray::number(n), "PN" + QByteArray::number(n), v);
            ++n;
        }

        DeviceDb db(writeData(bytes));
        QStringList versions;
        for (const ChipInfo& c : db.allChipInfo())
            versions << c.deviceVersion;
        QCOMPARE(versions, (QStringList{"b", "B", "A", ""}));
    }

    void missingFile()
    {
        const QString path = m_dir.filePath(QStringLiteral("does-not-exist.csv"));
        MessageCapture capture;
        DeviceDb db(path);
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("can not opend device data file:  \"%1\"").arg(path)});
        QVERIFY(db.allChipInfo().isEmpty());
        QVERIFY(db.allDevice().isEmpty());
        QVERIFY(db.findByPN(QString()).isEmpty());
        QVERIFY(db.findByID(QStringLiteral("zr9k31-013")).deviceId.isEmpty());
        QVERIFY(db.find(QString(), QString()).partNumber.isNull());
    }

    void directoryIsNotAFile()
    {
        MessageCapture capture;
        DeviceDb db(m_dir.path());
        QCOMPARE(capture.criticals(),
                 QStringList{QStringLiteral("can not opend device data file:  \"%1\"").arg(m_dir.path())});
        QVERIFY(db.allChipInfo().isEmpty());
    }

    void unreadableFile()
    {
        if (::geteuid() == 0)
            QSKIP("running as root: permissions do not keep the file from being read");
        const QString path = writeData("a,b,c,d,e,f,g,h\n");
        QFile::setPermissions(path, QFileDevice::WriteOwner);
        MessageCapture capture;
        DeviceDb db(path);
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("can not opend device data file:  \"%1\"").arg(path)});
        QVERIFY(db.allChipInfo().isEmpty());
    }

    void emptyFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("zero bytes") << QByteArray();
        QTest::newRow("only newlines") << QByteArray("\n\n\n");
        QTest::newRow("only CR LF") << QByteArray("\r\n\r\n");
        QTest::newRow("only a byte-order mark") << QByteArray("\xEF\xBB\xBF");
    }

    void emptyFiles()
    {
        QFETCH(QByteArray, bytes);
        MessageCapture capture;
        DeviceDb db(writeData(bytes));
        QVERIFY(db.allChipInfo().isEmpty());
        QCOMPARE(capture.count(), 0);
    }

    void hostileContent_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("partNumbers");
        QTest::addColumn<int>("messages");

        QTest::newRow("lone CR inside a line is dropped")
            << QByteArray("i,P\r1,s,k,d,,p,v,c,x\n") << QStringList{"P1"} << 0;
        QTest::newRow("lone CR as the only terminator joins the lines")
            << QByteArray("i,P1,s,k,d,,p,v,c,x\ri,P2,s,k,d,,p,v,c,x\n") << QStringList{"P1"} << 0;
        QTest::newRow("NUL bytes stay in their field")
            << raw("i,P\0001,s,k,d,,p,v,c,x\n\0\0\0\n") << QStringList{QString::fromLatin1("P\0001", 3)} << 1;
        QTest::newRow("UTF-16LE with byte-order mark")
            << raw("\xFF\xFEi\0,\0P\0""1\0,\0,\0,\0,\0,\0,\0,\0\n\0") << QStringList{"P1"} << 0;
        QTest::newRow("UTF-16BE with byte-order mark")
            << raw("\xFE\xFF\0i\0,\0P\0""1\0,\0,\0,\0,\0,\0,\0,\0\n") << QStringList{"P1"} << 0;
        QTest::newRow("fields of white space only are empty after trimming")
            << QByteArray(" , P1 ,\t,\t ,  ,   ,    ,\t\t, , , \n") << QStringList{"P1"} << 0;
    }

    void hostileContent()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, partNumbers);
        QFETCH(int, messages);

        MessageCapture capture;
        DeviceDb db(writeData(bytes));
        QStringList got;
        for (const ChipInfo& c : db.allChipInfo())
            got << c.partNumber;
        QCOMPARE(got, partNumbers);
        QCOMPARE(capture.criticals().size(), messages);
        if (QByteArray(QTest::currentDataTag()).startsWith("fields of white space")) {
            const ChipInfo c = db.allChipInfo().at(0);
            QVERIFY(c.deviceId.isEmpty() && c.series.isEmpty() && c.auxiliary.isEmpty());
            QCOMPARE(c.resources, QStringList{QStringLiteral(" ")});
        }
    }

    void millionShortLines()
    {
        QByteArray bytes;
        bytes.reserve(17 * 1000000);
        for (int i = 0; i < 1000000; ++i)
            bytes += i % 2 ? QByteArrayLiteral("i,p,s,k,d,A,p,v\n") : QByteArrayLiteral("i,p,s,k,d,,p,v\n");
        MessageCapture capture;
        DeviceDb db(writeData(bytes));
        const QList<ChipInfo> chips = db.allChipInfo();
        QCOMPARE(chips.size(), 1000000);
        QCOMPARE(chips.first().deviceVersion, QStringLiteral("A"));
        QCOMPARE(chips.at(499999).deviceVersion, QStringLiteral("A"));
        QCOMPARE(chips.at(500000).deviceVersion, QString());
        QCOMPARE(capture.count(), 0);
    }

    void tenThousandFields()
    {
        QByteArray line = "id,PN-WIDE,s,k,d,,p,v,c,x";
        for (int i = 0; i < 9990; ++i)
            line += ',' + QByteArray::number(i);
        DeviceDb db(writeData(line + '\n'));
        const ChipInfo c = db.allChipInfo().value(0);
        QCOMPARE(c.partNumber, QStringLiteral("PN-WIDE"));
        QCOMPARE(c.resources.size(), 9990);
        QCOMPARE(c.resources.last(), QStringLiteral("9989"));
    }

    void messageEscapesTheLine()
    {
        MessageCapture capture;
        DeviceDb db(writeData("say \"hi\",\\n\n"));
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("incorrect device info entry \"say \\\"hi\\\",\\\\n\"")});
    }

    void everyWellFormedLineSurvivesGarbage()
    {
        QByteArray bytes;
        bytes += TestHelpers::line19("good1", "PN1");
        bytes += QByteArray("\x00\x01\x02\xff\xfe,\x80\x81\n", 9);
        bytes += TestHelpers::line19("good2", "PN2");
        bytes += QByteArray("bad\xC3\x28utf8,,,,,,,,,\n");
        bytes += TestHelpers::line19("good3", "PN3");
        bytes += QByteArray(1000, '\xff') + '\n';
        bytes += TestHelpers::line19("good4", "PN4");

        MessageCapture capture;
        DeviceDb db(writeData(bytes));
        QStringList ids;
        for (const ChipInfo& c : db.allChipInfo())
            ids << c.deviceId;
        for (const char* id : {"good1", "good2", "good3", "good4"})
            QVERIFY2(ids.contains(QLatin1String(id)), id);
        // The invalid UTF-8 line has ten columns and is a record; the two
        // lines without enough commas are reported.
        QCOMPARE(ids.size(), 5);
        QCOMPARE(capture.criticals().size(), 2);
    }

    void hugeSingleLine()
    {
        QByteArray bytes = TestHelpers::line19("before", "PN-B");
        QByteArray big(10 * 1024 * 1024, 'x');
        bytes += big + '\n';
        bytes += TestHelpers::line19("after", "PN-A");

        MessageCapture capture;
        DeviceDb db(writeData(bytes));
        QCOMPARE(db.allChipInfo().size(), 2);
        const QStringList crit = capture.criticals();
        QCOMPARE(crit.size(), 1);
        QCOMPARE(crit.at(0).size(), int(QByteArrayLiteral("incorrect device info entry \"\"").size() + big.size()));
    }

    // The message must reach stderr exactly as the default handler prints it,
    // so a host's log shows the very text we document.
    void messagesOnStderrByteForByte()
    {
        const QString helper = QCoreApplication::applicationDirPath() + QStringLiteral("/loaddb");
        const QString missing = m_dir.filePath(QStringLiteral("none.csv"));
        const QString bad = writeData("a,b\n");

        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("QT_MESSAGE_PATTERN"));
        p.setProcessEnvironment(env);
        p.start(helper, {missing, bad});
        QVERIFY2(p.waitForFinished(30000), qPrintable(p.errorString()));
        QCOMPARE(p.exitCode(), 0);
        const QByteArray expected = "can not opend device data file:  \"" + missing.toUtf8() + "\"\n"
                                    "incorrect device info entry \"a,b\"\n";
        QCOMPARE(p.readAllStandardError(), expected);
    }
};

QTEST_GUILESS_MAIN(TestDataLoader)
#include "tst_dataloader.moc"
