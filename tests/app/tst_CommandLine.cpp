#include "app/CommandLine.h"
#include "support/BoxCloser.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TstCommandLine : public QObject {
    Q_OBJECT
private slots:
    void helpAndVersionAreAnswered();
    void anythingElseStartsTheProgram();
    void whatDoesNotExistIsMissing();
    void whatStandsBehindTheOpenedFileIsNotLookedAt();
    void missingFilesAreToldInOneBox();
};

void TstCommandLine::helpAndVersionAreAnswered()
{
    for (const char *option : {"-h", "--help"}) {
        const auto answer = CommandLine::answer({QStringLiteral("a.cxdat"), QLatin1String(option)});
        QVERIFY(answer && answer->startsWith(QStringLiteral("Usage: corvanlux [FILE]\n")));
    }
    for (const char *option : {"-v", "--version"}) {
        QCOMPARE(CommandLine::answer({QLatin1String(option)}).value(),
                 QStringLiteral("CorvanLUX ") + QStringLiteral(LUX_VERSION) + QLatin1Char('\n'));
    }
}

void TstCommandLine::anythingElseStartsTheProgram()
{
    QVERIFY(!CommandLine::answer({}));
    QVERIFY(!CommandLine::answer({QStringLiteral("help"), QStringLiteral("--verbose"), QStringLiteral("a.cxdat")}));
}

void TstCommandLine::whatDoesNotExistIsMissing()
{
    const QTemporaryDir dir;
    QCOMPARE(CommandLine::missingFiles({}), QStringList());
    QCOMPARE(CommandLine::missingFiles({QStringLiteral("--option"), QString(), dir.path()}), QStringList());
    const QStringList files{dir.filePath(QStringLiteral("a.cxdat")), dir.filePath(QStringLiteral("b"))};
    QCOMPARE(CommandLine::missingFiles(files), files);
}

void TstCommandLine::whatStandsBehindTheOpenedFileIsNotLookedAt()
{
    const QTemporaryDir dir;
    const QString there = dir.filePath(QStringLiteral("there.cxset"));
    QFile file(there);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(CommandLine::missingFiles({QStringLiteral("/no/a"), there, QStringLiteral("/no/b")}),
             QStringList{QStringLiteral("/no/a")});
}

void TstCommandLine::missingFilesAreToldInOneBox()
{
    BoxCloser closer;
    CommandLine::tellMissing(nullptr, {});
    QCOMPARE(closer.seen.count, 0);
    CommandLine::tellMissing(nullptr, {QStringLiteral("/no/a.cxdat"), QStringLiteral("/no/b")});
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.title, QStringLiteral("An error occurred"));
    QCOMPARE(closer.seen.text, QStringLiteral("File open failed.\r\n/no/a.cxdat\r\n/no/b\r\nThe file does not exist."));
}

QTEST_MAIN(TstCommandLine)
#include "tst_CommandLine.moc"
