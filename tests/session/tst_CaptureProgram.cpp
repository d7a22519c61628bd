// A program that captures, exports and saves without a window, and what the system loads for it.

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

class TstCaptureProgram : public QObject {
    Q_OBJECT
private slots:
    void itCapturesExportsAndSaves();
    void itLoadsNoGui();
};

void TstCaptureProgram::itCapturesExportsAndSaves()
{
    const QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), folder.path());
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(LUX_CAPTURE_PROGRAM), {folder.path()});
    QVERIFY(program.waitForFinished(60000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QFile text(folder.filePath(QStringLiteral("capture.txt")));
    QVERIFY(text.open(QIODevice::ReadOnly));
    QVERIFY(text.readLine().startsWith("Time[s], "));
    QVERIFY(!text.atEnd());
    QFile data(folder.filePath(QStringLiteral("capture.cxdat")));
    QVERIFY(data.open(QIODevice::ReadOnly));
    QVERIFY(data.readAll().contains("<devModel>8</devModel>"));
}

void TstCaptureProgram::itLoadsNoGui()
{
#ifdef Q_OS_LINUX
    QProcess ldd;
    ldd.start(QStringLiteral("ldd"), {QStringLiteral(LUX_CAPTURE_PROGRAM)});
    QVERIFY(ldd.waitForFinished(30000));
    const QByteArray loaded = ldd.readAllStandardOutput();
    QVERIFY(loaded.contains("libQt5Core"));
    QVERIFY(!loaded.contains("libQt5Gui") && !loaded.contains("libQt5Widgets"));
#else
    QSKIP("what is loaded is told by a tool of Linux");
#endif
}

QTEST_GUILESS_MAIN(TstCaptureProgram)
#include "tst_CaptureProgram.moc"
