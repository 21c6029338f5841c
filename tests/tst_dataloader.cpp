// How a device data file becomes the database's list: columns, trimming,
// order, malformed lines and their exact messages, and hostile files: each
// keeps every well-formed line, reports what it should and nothing else.
// The randomised comparison in tst_loaderdiff covers many more byte mixes.

#include "testhelpers.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QTest>
#include <QTextCodec>

using DEV::ChipInfo;
using DEV::DeviceDb;
using TestHelpers::MessageCapture;

namespace {

/// "id,pn,...,auxiliary|resource,resource": the ten text members, then the counts.
QStringList records(const DeviceDb& db)
{
    QStringList out;
    for (const ChipInfo& c : db.allChipInfo())
        out << TestHelpers::fields(c).mid(0, 10).join(QLatin1Char(',')).replace(QLatin1String("<null>"), QString())
                + QLatin1Char('|') + c.resources.join(QLatin1Char(','));
    return out;
}

// The whole literal, embedded NUL bytes included.
template <int N>
QByteArray raw(const char (&bytes)[N])
{
    return QByteArray(bytes, N - 1);
}

QString badLine(const QString& escaped)
{
    return QStringLiteral("incorrect device info entry \"%1\"").arg(escaped);
}

} // namespace

class TestDataLoader : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;

private slots:
    void initTestCase()
    {
        QVERIFY(m_files.isValid());
        // Files without a byte-order mark are decoded with the locale's codec.
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    }

    void lines_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QStringList>("messages");
        const QStringList none;

        QTest::newRow("7 columns") << QByteArray("a,b,c,d,e,f,g\n") << none << QStringList{badLine("a,b,c,d,e,f,g")};
        QTest::newRow("1 column") << QByteArray("text") << none << QStringList{badLine("text")};
        QTest::newRow("8 columns") << QByteArray("i,p,s,k,d,v,a,u") << QStringList{"i,p,s,k,d,v,a,u,,|"} << none;
        QTest::newRow("9 columns") << QByteArray("i,p,s,k,d,v,a,u,C7") << QStringList{"i,p,s,k,d,v,a,u,C7,|"} << none;
        QTest::newRow("10 columns") << QByteArray("i,p,s,k,d,v,a,u,C7,X\n") << QStringList{"i,p,s,k,d,v,a,u,C7,X|"}
                                    << none;
        QTest::newRow("19 columns") << QByteArray("i,p,s,k,d,v,a,u,C7,X,1,2,3,4,5,6,7,8,9\n")
                                    << QStringList{"i,p,s,k,d,v,a,u,C7,X|1,2,3,4,5,6,7,8,9"} << none;
        QTest::newRow("25 columns, all kept")
            << QByteArray("i,p,s,k,d,v,a,u,C7,X,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n")
            << QStringList{"i,p,s,k,d,v,a,u,C7,X|1,2,3,4,5,6,7,8,9,10,11,12,13,14,15"} << none;
        QTest::newRow("nine commas") << QByteArray(",,,,,,,,,\n") << QStringList{",,,,,,,,,|"} << none;
        QTest::newRow("text trimmed, counts not")
            << QByteArray(" id , \tPN-1 ,s,k,d,v,a,u,c, aux\t, 64 ,72Kb , ,in side\n")
            << QStringList{"id,PN-1,s,k,d,v,a,u,c,aux| 64 ,72Kb , ,in side"} << none;
        QTest::newRow("blank fields are empty") << QByteArray(" , P1 ,\t,\t ,  ,   ,    ,\t\t, , , \n")
                                                << QStringList{",P1,,,,,,,,| "} << none;
        QTest::newRow("quotes are no syntax") << QByteArray("i,\"PN,1\",s,k,d,v,a,u,c,x\n")
                                              << QStringList{"i,\"PN,1\",s,k,d,v,a,u,c|x"} << none;
        QTest::newRow("empty lines skipped") << QByteArray("\n\ni,p,s,k,d,v,a,u\n\n\r\n\n") << QStringList{"i,p,s,k,d,v,a,u,,|"}
                                             << none;
        QTest::newRow("blank line is malformed")
            << QByteArray("i,p,s,k,d,v,a,u\n \t \n") << QStringList{"i,p,s,k,d,v,a,u,,|"} << QStringList{badLine(" \\t ")};
        QTest::newRow("message escapes") << QByteArray("say \"hi\",\\n\n") << none
                                         << QStringList{badLine("say \\\"hi\\\",\\\\n")};
        QTest::newRow("CR LF, no final newline") << QByteArray("i,P1,s,k,d,B,a,u,c,x,1\r\ni,P2,s,k,d,A,a,u,c,x,2")
                                                 << QStringList{"i,P1,s,k,d,B,a,u,c,x|1", "i,P2,s,k,d,A,a,u,c,x|2"}
                                                 << none;
        QTest::newRow("UTF-8 mark") << QByteArray("\xEF\xBB\xBFi,p,s,k,d,v,a,u\n") << QStringList{"i,p,s,k,d,v,a,u,,|"}
                                    << none;
        for (const QString& blank : {QStringLiteral(""), QStringLiteral("\n\n"), QStringLiteral("\r\n\r\n")})
            QTest::addRow("empty file %d", int(blank.size())) << blank.toLatin1() << none << none;
        QTest::newRow("only a mark") << QByteArray("\xEF\xBB\xBF") << none << none;
        // A text stream drops every carriage return, even a lone one.
        QTest::newRow("lone CR") << QByteArray("i,P\r1,s,k,d,v,a,u\ri,p2,s,k,d,v,a,u\n")
                                 << QStringList{"i,P1,s,k,d,v,a,ui,p2,s|k,d,v,a,u"} << none;
        QTest::newRow("NUL bytes") << raw("i,P\0001,s,k,d,v,a,u\n\0\0\n")
                                   << QStringList{QLatin1String("i,P") + QChar(0) + QLatin1String("1,s,k,d,v,a,u,,|")}
                                   << QStringList{badLine("\\u0000\\u0000")};
        QTest::newRow("UTF-16LE with mark") << raw("\xFF\xFEi\0,\0P\0,\0,\0,\0,\0,\0,\0\n\0")
                                            << QStringList{"i,P,,,,,,,,|"} << none;
        QTest::newRow("UTF-16BE with mark") << raw("\xFE\xFF\0i\0,\0P\0,\0,\0,\0,\0,\0,\0\n")
                                            << QStringList{"i,P,,,,,,,,|"} << none;
        QTest::newRow("garbage between good lines")
            << raw("i,p1,s,k,d,v,a,u\n\x01\xFF\xFE,\x80\x81\ni,p2,s,k,d,v,a,u\n")
            << QStringList{"i,p1,s,k,d,v,a,u,,|", "i,p2,s,k,d,v,a,u,,|"}
            << QStringList{badLine(QStringLiteral("\\u0001\uFFFD\uFFFD,\uFFFD\uFFFD"))};
        // Newest version first; equal versions are never mixed here, as their order is open.
        const QStringList ordered{"1,p,s,k,d,b,a,u,,|", "2,p,s,k,d,B,a,u,,|", "3,p,s,k,d,A,a,u,,|",
                                  "4,p,s,k,d,,a,u,,|"};
        QTest::newRow("versions reversed") << QByteArray("4,p,s,k,d,,a,u\n3,p,s,k,d,A,a,u\n2,p,s,k,d,B,a,u\n1,p,s,k,d,b,a,u")
                                           << ordered << none;
        QTest::newRow("versions mixed, blanks around")
            << QByteArray("3,p,s,k,d, A,a,u\n4,p,s,k,d,  ,a,u\n1,p,s,k,d,b ,a,u\n2,p,s,k,d, B ,a,u\n") << ordered << none;
    }
    void lines()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, expected);
        QFETCH(QStringList, messages);
        MessageCapture capture;
        const DeviceDb db(m_files.write(bytes));
        QCOMPARE(records(db), expected);
        QCOMPARE(capture.criticals(), messages);
        QCOMPARE(capture.count(), messages.size());
    }

    void unopenableFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << m_files.path(QStringLiteral("none.csv"));
        QTest::newRow("directory") << m_files.path(QString());
        const QString locked = m_files.write("i,p,s,k,d,v,a,u\n");
        QFile::setPermissions(locked, QFileDevice::WriteOwner);
        QTest::newRow("unreadable") << locked;
    }
    void unopenableFile()
    {
        QFETCH(QString, path);
        if (QFileInfo(path).isFile() && QFile(path).open(QIODevice::ReadOnly))
            QSKIP("the file can be read anyway (running as root)");
        MessageCapture capture;
        const DeviceDb db(path);
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("can not opend device data file:  \"%1\"").arg(path)});
        QVERIFY(db.allChipInfo().isEmpty());
    }

    void millionShortLines()
    {
        QByteArray bytes;
        for (int i = 0; i < 1000000; ++i)
            bytes += i % 2 ? QByteArrayLiteral("i,p,s,k,d,A,a,u\n") : QByteArrayLiteral("i,p,s,k,d,,a,u\n");
        MessageCapture capture;
        const DeviceDb db(m_files.write(bytes));
        const QList<ChipInfo> chips = db.allChipInfo();
        QCOMPARE(chips.size(), 1000000);
        QCOMPARE(chips.at(499999).deviceVersion, QStringLiteral("A"));
        QCOMPARE(chips.at(500000).deviceVersion, QString());
        QCOMPARE(capture.count(), 0);
    }

    // Lines and fields far beyond the loader's read blocks.
    void largeLines()
    {
        QByteArray wide = "id,PN-WIDE,s,k,d,,p,v,c,x";
        for (int i = 0; i < 9990; ++i)
            wide += ',' + QByteArray::number(i);
        const QByteArray huge(10 * 1024 * 1024, 'x');
        MessageCapture capture;
        const DeviceDb db(m_files.write(TestHelpers::line19("a", "PN-A") + huge + '\n' + wide + '\n'));
        QCOMPARE(db.allChipInfo().size(), 2);
        const ChipInfo c = db.findByPN(QStringLiteral("PN-WIDE")).value(0);
        QCOMPARE(c.resources.size(), 9990);
        QCOMPARE(c.resources.last(), QStringLiteral("9989"));
        QCOMPARE(capture.criticals(), QStringList{badLine(QString::fromLatin1(huge))});
    }

    // A host's log must show the documented texts byte for byte.
    void messagesOnStderr()
    {
        const QString missing = m_files.path(QStringLiteral("none.csv"));
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("QT_MESSAGE_PATTERN"));
        p.setProcessEnvironment(env);
        p.start(QCoreApplication::applicationDirPath() + QStringLiteral("/loaddb"), {missing, m_files.write("a,b\n")});
        QVERIFY2(p.waitForFinished(30000), qPrintable(p.errorString()));
        QCOMPARE(p.exitCode(), 0);
        QCOMPARE(p.readAllStandardError(), "can not opend device data file:  \"" + missing.toUtf8()
                                               + "\"\nincorrect device info entry \"a,b\"\n");
    }
};

QTEST_GUILESS_MAIN(TestDataLoader)
#include "tst_dataloader.moc"
