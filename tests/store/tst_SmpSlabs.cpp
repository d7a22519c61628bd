#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpSlabs.h"
#include "store/SmpWriter.h"

#include <QFile>
#include <QtTest>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#ifdef Q_OS_WIN
// The first declares what the second needs, so this is not the order of the alphabet.
// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on
#endif

namespace {

/// Bytes of this process that lie in memory; -1 where the system does not tell.
#ifdef Q_OS_WIN
std::int64_t residentBytes()
{
    PROCESS_MEMORY_COUNTERS counters{};
    return GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) != 0
               ? std::int64_t(counters.WorkingSetSize)
               : -1;
}
#else
std::int64_t residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    constexpr std::int64_t page = 4096;
    return file.readAll().split(' ').value(1, "-1").toLongLong() * page;
}
#endif

} // namespace

class TstSmpSlabs : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = ample; }
    void cleanup() { blockRefusal = nullptr; }
    void blocksLieApartAndAreAligned();
    void eachBlockIsChargedByItsExactSize();
    void aRefusedBlockIsNotCharged();
    void aSlabWhoseBlocksAreGivenIsCutAnew();
    void clearingCreditsWhatIsLeft();
    void theMemoryOfABigCaptureGoesBackWhenASmallOneTakesItsPlace();
    void theMemoryOfACaptureThatIsCutShortGoesBack();

private:
    static constexpr std::int64_t ample = std::int64_t(1) << 40;

    /// A capture of one channel with an entry at each sample.
    static void fill(SmpData &data, std::int64_t entries, std::int64_t length);
};

void TstSmpSlabs::blocksLieApartAndAreAligned()
{
    constexpr std::size_t size = sizeof(SmpEdgeLeaf);
    SmpSlabs slabs;
    std::vector<std::uint8_t *> blocks;
    for (int i = 0; i < 100; ++i) { // three slabs
        auto *block = static_cast<std::uint8_t *>(slabs.take(size));
        QVERIFY(block != nullptr);
        QCOMPARE(reinterpret_cast<std::uintptr_t>(block) % 64, std::uintptr_t(0));
        std::memset(block, i, size);
        blocks.push_back(block);
    }
    for (int i = 0; i < 100; ++i) {
        const std::uint8_t *block = blocks[std::size_t(i)];
        QVERIFY(std::all_of(block, block + size, [i](std::uint8_t byte) { return byte == i; }));
    }
}

void TstSmpSlabs::eachBlockIsChargedByItsExactSize()
{
    memBudget = 1000;
    SmpSlabs slabs;
    void *first = slabs.take(300);
    void *second = slabs.take(1001); // whatever remains
    QCOMPARE(memBudget.load(), std::int64_t(-301));
    slabs.give(first, 300);
    QCOMPARE(memBudget.load(), std::int64_t(-1));
    slabs.give(nullptr, 300);
    slabs.give(second, 1001);
    QCOMPARE(memBudget.load(), std::int64_t(1000));
}

void TstSmpSlabs::aRefusedBlockIsNotCharged()
{
    blockRefusal = [](std::size_t size) { return size > 100; };
    SmpSlabs slabs;
    QVERIFY(slabs.take(101) == nullptr);
    QCOMPARE(memBudget.load(), ample);
    QVERIFY(slabs.take(100) != nullptr);
}

void TstSmpSlabs::aSlabWhoseBlocksAreGivenIsCutAnew()
{
    constexpr std::size_t size = SmpSlabs::slabSize / 5; // four to a slab
    SmpSlabs slabs;
    std::vector<void *> blocks;
    for (int i = 0; i < 12; ++i) {
        blocks.push_back(slabs.take(size));
    }
    for (const int i : {5, 6, 4, 7}) { // the slab in the middle
        slabs.give(blocks[std::size_t(i)], size);
    }
    for (int i = 0; i < 4; ++i) {
        void *again = slabs.take(size);
        QVERIFY(std::find(blocks.begin() + 4, blocks.begin() + 8, again) != blocks.begin() + 8);
    }
    slabs.trim(); // nothing is left over
    for (const int i : {0, 1, 2, 3, 8, 9, 10, 11}) {
        std::memset(blocks[std::size_t(i)], 1, size);
    }
}

void TstSmpSlabs::clearingCreditsWhatIsLeft()
{
    SmpSlabs slabs;
    for (int i = 0; i < 50; ++i) {
        void *block = slabs.take(100000);
        if (i % 3 == 0) {
            slabs.give(block, 100000);
        }
    }
    slabs.clear();
    QCOMPARE(memBudget.load(), ample);
    QVERIFY(slabs.take(1) != nullptr);
}

void TstSmpSlabs::fill(SmpData &data, std::int64_t entries, std::int64_t length)
{
    const std::vector<std::uint8_t> enable(1, 1);
    data.begin(0, 1000, enable);
    const std::vector<std::int32_t> widths(10, 1);
    std::int64_t pos = 0;
    while (pos < entries) {
        (void)data.addPulses(widths, 0, pos);
    }
    SmpWriter(data).setSmpCount(length);
    data.finish(length);
}

void TstSmpSlabs::theMemoryOfABigCaptureGoesBackWhenASmallOneTakesItsPlace()
{
    constexpr std::int64_t entries = 20'000'000; // 100 MB
    SmpData data(1, 0);
    fill(data, 10, 100);
    const std::int64_t before = residentBytes();
    if (before < 0) {
        QSKIP("this system does not tell what a process holds");
    }
    for (int round = 0; round < 3; ++round) {
        fill(data, entries, entries + 100);
        QVERIFY(residentBytes() > before + entries * 4);
        fill(data, 10, 100);
        QTRY_VERIFY(residentBytes() < before + entries);
    }
}

void TstSmpSlabs::theMemoryOfACaptureThatIsCutShortGoesBack()
{
    constexpr std::int64_t entries = 20'000'000;
    SmpData data(1, 0);
    fill(data, 10, 100);
    const std::int64_t before = residentBytes();
    if (before < 0) {
        QSKIP("this system does not tell what a process holds");
    }
    fill(data, entries, 1000);
    QCOMPARE(data.entryCount(0), std::int64_t(1000));
    QTRY_VERIFY(residentBytes() < before + entries);
}

QTEST_GUILESS_MAIN(TstSmpSlabs)
#include "tst_SmpSlabs.moc"
