#include "files/DataFileBytes.h"
#include "files/HistoryFolder.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

/// "luxcli history" as it was built, on a history of its own.
class TstLuxcliHistory : public QObject {
    Q_OBJECT
private slots:
    void init();
    void textHasALineACapture();
    void jsonTellsAllOfACapture();
    void aFolderThatIsNotThereIsAnEmptyHistory();
    void aFolderThatCannotBeReadIsTold();
    void aCaptureIsFetchedWhole();
    void aNumberThatIsNoneIsTold_data();
    void aNumberThatIsNoneIsTold();
    void aCopyThatCannotBeWrittenIsTold();
    void wrongUsageIsTold_data();
    void wrongUsageIsTold();
    void helpIsGood();

private:
    int history(const QStringList &arguments);
    [[nodiscard]] static QByteArray bytesOf(std::int64_t samples)
    {
        return "<settings><global/></settings>\n" +
               DataFileBytes(8).samples(samples).frequency(1'000'000).block(0, 0, {samples}).told().bytes();
    }

    std::unique_ptr<FileFolder> m_folder;
    QString m_history;
    QByteArray m_out;
    QByteArray m_err;
};

void TstLuxcliHistory::init()
{
    m_folder = std::make_unique<FileFolder>();
    m_history = m_folder->path(QStringLiteral("history"));
    const HistoryFolder history(m_history);
    QVERIFY(history.make());
    for (const int second : {1, 2}) {
        const QDateTime time(QDate(2026, 3, 9), QTime(7, 5, second, 120), Qt::UTC);
        QFile file(history.newPath(time, QStringLiteral("RV2420")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytesOf(second * 1000)) > 0);
    }
}

int TstLuxcliHistory::history(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(LUXCLI), QStringList{QStringLiteral("history")} + arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit) {
        return -1;
    }
    m_out = process.readAllStandardOutput().replace("\r\n", "\n");
    m_err = process.readAllStandardError();
    return process.exitCode();
}

void TstLuxcliHistory::textHasALineACapture()
{
    for (const QStringList &verb : {QStringList(), QStringList(QStringLiteral("list"))}) {
        QCOMPARE(history(verb + QStringList{QStringLiteral("--folder"), m_history}), 0);
        const QList<QByteArray> lines = m_out.split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.at(0).startsWith("1  2026-03-"));
        QVERIFY(lines.at(0).contains(":02  RV2420  1000000 Hz  2000 samples  0.002"));
        QVERIFY(lines.at(1).startsWith("2  ") && lines.at(1).contains("1000 samples"));
    }
}

void TstLuxcliHistory::jsonTellsAllOfACapture()
{
    QCOMPARE(history({QStringLiteral("--json"), QStringLiteral("--folder"), m_history}), 0);
    const QJsonObject first = QJsonDocument::fromJson(m_out.split('\n').at(0)).object();
    QCOMPARE(first.value(QStringLiteral("number")).toInt(), 1);
    QCOMPARE(first.value(QStringLiteral("time")).toString(), QStringLiteral("2026-03-09T07:05:02.120Z"));
    QCOMPARE(first.value(QStringLiteral("model")).toString(), QStringLiteral("RV2420"));
    QCOMPARE(first.value(QStringLiteral("rate")).toInt(), 1'000'000);
    QCOMPARE(first.value(QStringLiteral("samples")).toInt(), 2000);
    QCOMPARE(first.value(QStringLiteral("seconds")).toDouble(), 0.002);
    QCOMPARE(first.value(QStringLiteral("bytes")).toInt(), bytesOf(2000).size());
    QVERIFY(QFile::exists(first.value(QStringLiteral("path")).toString()));
}

void TstLuxcliHistory::aFolderThatIsNotThereIsAnEmptyHistory()
{
    QCOMPARE(history({QStringLiteral("--folder"), m_history + QStringLiteral("/none")}), 0);
    QVERIFY(m_out.isEmpty() && m_err.isEmpty());
}

void TstLuxcliHistory::aFolderThatCannotBeReadIsTold()
{
    const QString file = m_folder->write("no folder", QStringLiteral("file"));
    QCOMPARE(history({QStringLiteral("--folder"), file}), 1);
    QCOMPARE(m_out, QByteArray());
    QVERIFY2(m_err.startsWith("luxcli: ") && m_err.contains("no folder that can be read"), m_err);
}

void TstLuxcliHistory::aCaptureIsFetchedWhole()
{
    for (const int number : {1, 2}) {
        const QString to = m_folder->path(QStringLiteral("%1.cxdat").arg(number));
        QCOMPARE(history({QStringLiteral("fetch"), QString::number(number), QStringLiteral("-o"), to,
                          QStringLiteral("--folder"), m_history}),
                 0);
        QCOMPARE(m_folder->read(QStringLiteral("%1.cxdat").arg(number)), bytesOf(number == 1 ? 2000 : 1000));
    }
}

void TstLuxcliHistory::aNumberThatIsNoneIsTold_data()
{
    QTest::addColumn<QString>("number");
    for (const char *number : {"0", "3", "-1", "x", "99999999999"}) {
        QTest::newRow(number) << QString::fromLatin1(number);
    }
}

void TstLuxcliHistory::aNumberThatIsNoneIsTold()
{
    QFETCH(QString, number);
    const QString to = m_folder->path(QStringLiteral("none.cxdat"));
    QCOMPARE(history({QStringLiteral("-o"), to, QStringLiteral("--folder"), m_history, QStringLiteral("--"),
                      QStringLiteral("fetch"), number}),
             1);
    QVERIFY(m_err.contains("there is no capture"));
    QVERIFY(!QFile::exists(to));
}

void TstLuxcliHistory::aCopyThatCannotBeWrittenIsTold()
{
    const QString to = m_folder->path(QStringLiteral("no/folder.cxdat"));
    QCOMPARE(history({QStringLiteral("fetch"), QStringLiteral("1"), QStringLiteral("-o"), to,
                      QStringLiteral("--folder"), m_history}),
             1);
    QVERIFY(m_err.contains("folder does not exist"));
}

void TstLuxcliHistory::wrongUsageIsTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("another word") << QStringList(QStringLiteral("show"));
    QTest::newRow("too many words") << QStringList({QStringLiteral("list"), QStringLiteral("1")});
    QTest::newRow("no number") << QStringList({QStringLiteral("fetch"), QStringLiteral("-o"), QStringLiteral("a")});
    QTest::newRow("no file") << QStringList({QStringLiteral("fetch"), QStringLiteral("1")});
    QTest::newRow("another option") << QStringList(QStringLiteral("--all"));
}

void TstLuxcliHistory::wrongUsageIsTold()
{
    QFETCH(QStringList, arguments);
    QCOMPARE(history(arguments), 2);
    QVERIFY(m_err.contains("luxcli history --help"));
}

void TstLuxcliHistory::helpIsGood()
{
    QCOMPARE(history({QStringLiteral("--help")}), 0);
    QVERIFY(m_out.startsWith("Usage: luxcli history"));
}

QTEST_GUILESS_MAIN(TstLuxcliHistory)
#include "tst_LuxcliHistory.moc"
