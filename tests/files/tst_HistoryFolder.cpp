#include "files/DataFileBytes.h"
#include "files/HistoryFolder.h"
#include "store/MemBudget.h"

#include <QDir>
#include <QTest>

namespace {

QByteArray captureFile(std::int64_t samples = 1000)
{
    return "<settings><global/></settings>\n" +
           DataFileBytes(8).samples(samples).frequency(1'000'000).block(0, 0, {samples}).told().bytes();
}

QDateTime timeOf(int second)
{
    return {QDate(2026, 3, 9), QTime(7, 5, second, 120), Qt::UTC};
}

} // namespace

class TstHistoryFolder : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 30; }
    void anEntryTellsTimeModelLengthAndPicture();
    void aNameThatExistsIsNotGivenTwice();
    void theNewestComeFirst();
    void whatIsNoCaptureIsPassedOver();
    void theOldestGoBeyondTheLimits_data();
    void theOldestGoBeyondTheLimits();
    void whatKilledProgramsLeaveGoesAfterAnHour();
    void theFolderIsTheUsersAlone();
    void thePictureShowsLevelsAndTransitions();
    void thePictureTakesTheChannelsWithTransitionsFirst();

private:
    /// A capture of that second. @return its path
    static QString add(const HistoryFolder &history, int second, const QByteArray &bytes = captureFile())
    {
        const QString path = history.newPath(timeOf(second), QStringLiteral("RV2420"));
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? path : QString();
    }
    static QStringList seconds(const HistoryFolder &history)
    {
        QStringList list;
        for (const HistoryEntry &entry : history.list()) {
            list += entry.time.toString(QStringLiteral("s"));
        }
        return list;
    }
};

void TstHistoryFolder::anEntryTellsTimeModelLengthAndPicture()
{
    const FileFolder folder;
    const HistoryFolder history(folder.path(QStringLiteral("history")));
    QVERIFY(history.list().isEmpty());
    QVERIFY(history.make());
    const QString path = add(history, 1);
    const QVector<PictureRow> rows{PictureRow(pictureColumns, '0'), PictureRow(pictureColumns, 'x')};
    history.putPicture(path, rows);
    const QVector<HistoryEntry> entries = history.list();
    QCOMPARE(entries.size(), 1);
    const HistoryEntry &entry = entries.constFirst();
    QCOMPARE(entry.path, path);
    QCOMPARE(entry.time, timeOf(1));
    QCOMPARE(entry.model, QStringLiteral("RV2420"));
    QCOMPARE(entry.samples, 1000);
    QCOMPARE(entry.seconds(), 0.001);
    QCOMPARE(entry.bytes, captureFile().size());
    QCOMPARE(entry.picture, rows);
}

void TstHistoryFolder::aNameThatExistsIsNotGivenTwice()
{
    const FileFolder folder;
    const HistoryFolder history(folder.path(QString()));
    const QString first = add(history, 1);
    const QString second = add(history, 1);
    QVERIFY(first != second && !second.isEmpty());
    QCOMPARE(history.list().size(), 2);
    QVERIFY(!history.newPath(timeOf(1), QStringLiteral("../a b"))
                 .mid(folder.path(QString()).size())
                 .contains(QStringLiteral("..")));
}

void TstHistoryFolder::theNewestComeFirst()
{
    const FileFolder folder;
    const HistoryFolder history(folder.path(QString()));
    for (const int second : {3, 9, 1}) {
        QVERIFY(!add(history, second).isEmpty());
    }
    QCOMPARE(seconds(history), QStringList({QStringLiteral("9"), QStringLiteral("3"), QStringLiteral("1")}));
}

void TstHistoryFolder::whatIsNoCaptureIsPassedOver()
{
    const FileFolder folder;
    const HistoryFolder history(folder.path(QString()));
    QVERIFY(!add(history, 1, "nothing of ours").isEmpty());
    QVERIFY(!add(history, 2, captureFile().left(60)).isEmpty());
    QVERIFY(!folder.write(captureFile(), QStringLiteral("mine.cxdat")).isEmpty());
    QVERIFY(!folder.write(captureFile(), QStringLiteral("20261399-070501-120_RV2420_1.cxdat")).isEmpty());
    QVERIFY(QDir().mkpath(history.newPath(timeOf(4), QString())));
#ifdef Q_OS_UNIX // elsewhere a link is a file of another ending
    QVERIFY(QFile::link(folder.path(QStringLiteral("mine.cxdat")), history.newPath(timeOf(6), QString())));
#endif
    const QString path = add(history, 5);
    history.putPicture(path, {PictureRow("no picture"), PictureRow(pictureColumns, '7')});
    QCOMPARE(seconds(history), QStringList(QStringLiteral("5")));
    QVERIFY(history.list().constFirst().picture.isEmpty());
}

void TstHistoryFolder::theOldestGoBeyondTheLimits_data()
{
    QTest::addColumn<int>("captures");
    QTest::addColumn<int>("files"); // as many bytes as so many files have
    QTest::addColumn<QStringList>("left");
    const QStringList all{QStringLiteral("4"), QStringLiteral("3"), QStringLiteral("2"), QStringLiteral("1")};
    QTest::newRow("all fit") << 4 << 4 << all;
    QTest::newRow("a number") << 2 << 9 << QStringList(all.mid(0, 2));
    QTest::newRow("bytes") << 9 << 3 << QStringList(all.mid(0, 3));
    QTest::newRow("none fits, and the newest stays") << 0 << 0 << QStringList(all.mid(0, 1));
}

void TstHistoryFolder::theOldestGoBeyondTheLimits()
{
    QFETCH(int, captures);
    QFETCH(int, files);
    QFETCH(QStringList, left);
    const FileFolder folder;
    const HistoryFolder history(folder.path(QString()));
    for (const int second : {1, 2, 3, 4}) {
        history.putPicture(add(history, second), {PictureRow(pictureColumns, '0')});
    }
    const QString mine = folder.write(captureFile(), QStringLiteral("mine.cxdat"));
    history.tidy({captures, files * std::int64_t(captureFile().size())});
    QCOMPARE(seconds(history), left);
    QVERIFY(QFile::exists(mine)); // what is not the history's is not removed
    QCOMPARE(QDir(history.path()).entryList({QStringLiteral("*.txt")}).size(), left.size());
}

void TstHistoryFolder::whatKilledProgramsLeaveGoesAfterAnHour()
{
    const FileFolder folder;
    const HistoryFolder history(folder.path(QString()));
    const QString capture = add(history, 1);
    history.putPicture(capture, {PictureRow(pictureColumns, '0')});
    QStringList names;
    for (const char *name : {"old.part", "old.txt", "new.part", "new.txt"}) {
        names += folder.write("x", QLatin1String(name));
    }
    const QDateTime twoHoursAgo = QDateTime::currentDateTimeUtc().addSecs(-2 * 60 * 60);
    const QString picture = QString(capture).replace(QStringLiteral(".cxdat"), QStringLiteral(".txt"));
    for (const QString &name : {names.at(0), names.at(1), capture, picture}) {
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(twoHoursAgo, QFileDevice::FileModificationTime));
    }
    history.tidy({});
    QVERIFY(!QFile::exists(names.at(0)) && !QFile::exists(names.at(1)));
    QVERIFY(QFile::exists(names.at(2)) && QFile::exists(names.at(3)));
    QVERIFY(QFile::exists(capture) && QFile::exists(picture));
}

void TstHistoryFolder::theFolderIsTheUsersAlone()
{
    const FileFolder folder;
    const HistoryFolder history(folder.path(QStringLiteral("a/b")));
    QVERIFY(history.make() && history.make());
#ifdef Q_OS_UNIX
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(!(QFile::permissions(history.path()) & others));
#endif
    const HistoryFolder inAFile(folder.write("x", QStringLiteral("file")) + QStringLiteral("/history"));
    QVERIFY(!inAFile.make());
    QVERIFY(inAFile.list().isEmpty());
    inAFile.tidy({});
}

void TstHistoryFolder::thePictureShowsLevelsAndTransitions()
{
    const auto data = CaptureBuilder(8).samples(6400).channel(3, 1, {3200}).build();
    const QVector<PictureRow> rows = pictureOf(*data);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.constFirst().size(), pictureColumns);
    QCOMPARE(rows.constFirst().left(31), QByteArray(31, '1'));
    QCOMPARE(rows.constFirst().right(31), QByteArray(31, '0'));
    QVERIFY(rows.constFirst().contains('x'));
    const auto shortOne = CaptureBuilder(8).samples(3).channel(0, 1).build();
    QCOMPARE(pictureOf(*shortOne).constFirst(), PictureRow(pictureColumns, '1'));
}

void TstHistoryFolder::thePictureTakesTheChannelsWithTransitionsFirst()
{
    CaptureBuilder builder(16);
    for (int chn = 0; chn < 10; ++chn) {
        builder.channel(chn, chn % 2);
    }
    builder.channel(12, 0, {500}).channel(9, 1, {500});
    const auto data = builder.build();
    const QVector<PictureRow> rows = pictureOf(*data);
    QCOMPARE(rows.size(), pictureRowsMost);
    QVERIFY(!rows.at(3).contains('x') && rows.at(4).contains('x') && rows.at(5).contains('x'));
    QCOMPARE(rows.at(4).at(0), '1');
}

QTEST_GUILESS_MAIN(TstHistoryFolder)
#include "tst_HistoryFolder.moc"
