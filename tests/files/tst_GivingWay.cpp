#include "files/DataFileBytes.h"
#include "files/GivingWay.h"
#include "store/MemBudget.h"
#include "support/Tokens.h"

#include <QFile>
#include <QTest>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using namespace std::chrono_literals;

/// A disk that takes what it is given only when it is told to.
class SlowFile : public QFile {
public:
    using QFile::QFile;
    Tokens entered;
    Tokens mayGo;

protected:
    qint64 writeData(const char *bytes, qint64 size) override
    {
        entered.release();
        mayGo.acquire();
        return QFile::writeData(bytes, size);
    }
};

std::unique_ptr<SmpData> capture()
{
    return CaptureBuilder(8).channel(0, 0, {10}).build();
}

} // namespace

class TstGivingWay : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 30; }
    void aWriterTakesTheLeaseOfWhoDoesNotRead();
    void aWriterGetsTheLeaseOfWhoReadsWhenTheReaderLeaves();
    void aWriterWaitsForNoDisk();
    void whoStaysIsNotTakenTheLease();
    void withoutACaptureThereIsNothingToRead();
    void aFileThatIsToldToStopWritesNoMore();
    void writersAndAReaderMeetAnywhere();
};

void TstGivingWay::aWriterTakesTheLeaseOfWhoDoesNotRead()
{
    const auto data = capture();
    const auto way = GivingWay::on(data.get());
    QCOMPARE(data->leaseCount(), 1);
    QVERIFY(way->enter() && way->leave());
    QVERIFY(data->open(0ms));
    QVERIFY(!way->enter());
    data->readmit();
    QVERIFY(!way->enter()); // for good
    QCOMPARE(data->leaseCount(), 0);
}

void TstGivingWay::aWriterGetsTheLeaseOfWhoReadsWhenTheReaderLeaves()
{
    const auto data = capture();
    const auto way = GivingWay::on(data.get());
    QVERIFY(way->enter());
    QVERIFY(!data->open(0ms));
    QCOMPARE(data->leaseCount(), 1);
    QVERIFY(!way->leave());
    QCOMPARE(data->leaseCount(), 0);
    data->open();
    QVERIFY(!way->enter());
}

void TstGivingWay::aWriterWaitsForNoDisk()
{
    const FileFolder folder;
    const auto data = capture();
    const auto way = GivingWay::on(data.get());
    SlowFile file(folder.path(QStringLiteral("slow")));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    qint64 written = 0;
    bool entered = true;
    std::thread worker([&] {
        QVERIFY(way->enter());
        GivingWayFile out(file, *way, [] { return true; });
        QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        written = out.write("abc", 3);
        entered = way->enter();
    });
    file.entered.acquire();
    QVERIFY(data->open(0ms)); // while the disk stands still
    data->clear();
    file.mayGo.release();
    worker.join();
    QCOMPARE(written, -1);
    QVERIFY(!entered);
}

void TstGivingWay::whoStaysIsNotTakenTheLease()
{
    const auto data = capture();
    const auto way = GivingWay::on(data.get());
    way->stay();
    QVERIFY(!data->open(0ms));
    QVERIFY(way->enter() && way->leave());
    QCOMPARE(data->leaseCount(), 1);
    way->release();
    QVERIFY(data->open(0ms));
    QVERIFY(!way->enter());
}

void TstGivingWay::withoutACaptureThereIsNothingToRead()
{
    SmpData open(8, 0);
    open.begin(0, 1000, std::vector<std::uint8_t>(8, 1));
    for (const SmpData *data : {static_cast<const SmpData *>(nullptr), static_cast<const SmpData *>(&open)}) {
        const auto way = GivingWay::on(data);
        QVERIFY(!way->enter());
        way->release();
        QVERIFY(!way->enter());
    }
}

void TstGivingWay::aFileThatIsToldToStopWritesNoMore()
{
    const FileFolder folder;
    const auto data = capture();
    const auto way = GivingWay::on(data.get());
    QFile file(folder.path(QStringLiteral("stopped")));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    bool mayGoOn = true;
    GivingWayFile out(file, *way, [&mayGoOn] { return mayGoOn; });
    QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    QVERIFY(way->enter());
    QCOMPARE(out.write("abc", 3), 3);
    mayGoOn = false;
    QCOMPARE(out.write("def", 3), -1);
    QCOMPARE(file.size(), 3);
    QVERIFY(out.isGood()); // the file has not failed
    way->release();
    QCOMPARE(data->leaseCount(), 0);
}

void TstGivingWay::writersAndAReaderMeetAnywhere()
{
    constexpr int rounds = 300;
    const auto data = capture();
    for (int i = 0; i < rounds; ++i) {
        const auto way = GivingWay::on(data.get());
        std::atomic<std::int64_t> seen{0};
        std::thread reader([&] {
            while (way->enter()) {
                seen += data->smpCount();
                if (!way->leave()) {
                    break;
                }
            }
            way->release();
        });
        data->open(); // as a capture's thread does
        data->readmit();
        reader.join();
        QCOMPARE(data->leaseCount(), 0);
        QCOMPARE(seen % data->smpCount(), 0);
    }
}

QTEST_GUILESS_MAIN(TstGivingWay)
#include "tst_GivingWay.moc"
