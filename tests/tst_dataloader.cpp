// How a device data file becomes the database's list: columns, trimming,
// order, malformed lines and their exact messages. Encodings and odd bytes
// are left to the randomised comparison in tst_loaderdiff.

#include "testhelpers.h"

#include <QCoreApplication>
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
    }
    void unopenableFile()
    {
        QFETCH(QString, path);
        MessageCapture capture;
        const DeviceDb db(path);
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("can not opend device data file:  \"%1\"").arg(path)});
        QVERIFY(db.allChipInfo().isEmpty());
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
