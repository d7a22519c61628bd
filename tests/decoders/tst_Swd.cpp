#include "DecoderChecks.h"
#include "SwdAnalyzer.h"
#include "WireBundle.h"

#include <QtTest>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Desk = BundleDesk<SwdAnalyzer>;

namespace {

constexpr std::uint32_t swclk = 0;
constexpr std::uint32_t swdio = 1;
constexpr const char *lines = "swclk=0,swdio=1";

enum Port : unsigned { Dp = 0, Ap = 1 };
enum Ack : unsigned { Ok = 1, Wait = 2, Fault = 4, NoReply = 7 };

/// Both sides of a serial wire by ARM IHI 0031 (ADIv5.2), B4; a clock is 10 samples, SWDIO changes in its low half.
class Wires : public WireBundle {
public:
    Wires() : WireBundle(2, 3) { wait(20); }
    Wires &bit(bool value)
    {
        set(swclk, false).set(swdio, value).wait(5);
        rises.push_back(now());
        set(swclk, true).wait(5);
        return *this;
    }
    /// The target's bit is there right behind the edge at which the host takes the one before.
    Wires &bits(std::uint64_t value, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            bit((value >> i & 1U) != 0);
        }
        return *this;
    }
    Wires &ones(int count)
    {
        for (int i = 0; i < count; ++i) {
            bit(true);
        }
        return *this;
    }
    Wires &idle(unsigned count = 4) { return bits(0, count); }
    Wires &reset(int count = 52) { return ones(count).idle(); }
    Wires &request(Port port, bool isRead, unsigned address, bool wrongParity = false)
    {
        const unsigned word = port | unsigned(isRead) << 1 | (address >> 2) << 2;
        const bool parity = (std::popcount(word) % 2 != 0) != wrongParity;
        starts.push_back(now() + 5);
        return bits(0x81U | word << 1 | unsigned(parity) << 5, 8);
    }
    Wires &data(std::uint32_t value, bool wrongParity = false)
    {
        bits(value, 32).bit((std::popcount(value) % 2 != 0) != wrongParity);
        ends.push_back(rises.back());
        return *this;
    }
    Wires &read(Port port, unsigned address, std::uint32_t value, bool wrongParity = false, unsigned turn = 1)
    {
        return request(port, true, address).ones(int(turn)).bits(Ok, 3).data(value, wrongParity).ones(int(turn));
    }
    Wires &write(Port port, unsigned address, std::uint32_t value, bool wrongParity = false, unsigned turn = 1)
    {
        return request(port, false, address).ones(int(turn)).bits(Ok, 3).ones(int(turn)).data(value, wrongParity);
    }
    /// Without data.
    Wires &refused(Port port, bool isRead, unsigned address, unsigned ack)
    {
        request(port, isRead, address).ones(1).bits(ack, 3);
        ends.push_back(rises.back());
        return ones(1);
    }

    std::vector<std::int64_t> rises;
    std::vector<std::int64_t> starts; ///< of transfers
    std::vector<std::int64_t> ends;
};

std::string transfer(unsigned port, bool isRead, unsigned address, const std::string &ack, const std::string &rest = {})
{
    return "transfer ap=" + std::to_string(port) + " rd=" + (isRead ? "1" : "0") + " addr=" + std::to_string(address) +
           " ack=" + ack + rest;
}

std::string value(std::uint32_t data, bool wrongParity = false)
{
    return " v=" + std::to_string(data) + (wrongParity ? " perr=1" : " perr=0");
}

Texts textsOf(const Desk &desk)
{
    Texts texts;
    for (const DecodedFrame &frame : desk.frames()) {
        texts.push_back(frame.text);
    }
    return texts;
}

} // namespace

class TstSwd : public QObject {
    Q_OBJECT
private slots:
    void readsAndWritesHaveTheirData();
    void theTargetMayChangeTheLineRightBehindTheEdge();
    void wrongParityOfDataIsTold();
    void otherAnswersHaveNoData_data();
    void otherAnswersHaveNoData();
    void aHostMayClockTheDataThatNobodySends();
    void overrunDetectionKeepsTheData();
    void dataThatIsNotThereIsNotPassedOver();
    void aRequestWithWrongParityIsNoTransfer();
    void fiftyOnesAreAReset_data();
    void fiftyOnesAreAReset();
    void sequencesSwitch_data();
    void sequencesSwitch();
    void aDormantPortIsWoken();
    void whatComesBehindASwitchToJtagIsPassedOver();
    void turnAroundsMayBeLonger();
    void aTurnAroundThatStaysAsItIsIsFollowed();
    void aWriteOfWrongParityChangesNothing();
    void oneOfSeveralTargetsIsSelectedWithoutAnAnswer();
    void registersHaveTheirNames();
    void banksAreFollowed();
    void cutEndsShowNothingFalse();
    void aCaptureMayBeginAnywhere();
    void transfersWithoutRestAreFoundFromWithinOne();
    void transfersBehindOnesAloneAreFound();
    void aRequestBehindARestWithoutClocksIsFound();
    void positionsAreWiderThan32Bits();
    void textsGoFromShortToLong();
    void errorsAreMarked();
    void framesAreExported();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstSwd::readsAndWritesHaveTheirData()
{
    Wires wires;
    wires.reset().read(Dp, 0, 0x2ba01477).idle().write(Dp, 8, 0xf0).write(Ap, 4, 0xffffffff).idle(1).read(Ap, 12, 1);
    const Desk desk(wires, lines);
    QCOMPARE(desk.summaries(),
             (Texts{"reset", transfer(0, true, 0, "OK", value(0x2ba01477)), transfer(0, false, 8, "OK", value(0xf0)),
                    transfer(1, false, 4, "OK", value(0xffffffff)), transfer(1, true, 12, "OK", value(1))}));
    for (std::uint64_t i = 0; i < 4; ++i) {
        QCOMPARE(desk.frame(i + 1).first, wires.starts[i]);
        QCOMPARE(desk.frame(i + 1).last, wires.ends[i]);
    }
}

void TstSwd::theTargetMayChangeTheLineRightBehindTheEdge()
{
    // Read of DPIDR with bits that change at the very samples of the edges.
    Wires wires;
    wires.reset().request(Dp, true, 0);
    std::vector<bool> bits = {true, true, false, false};
    for (unsigned i = 0; i < 32; ++i) {
        bits.push_back((0x2ba01477U >> i & 1U) != 0);
    }
    bits.push_back(std::popcount(0x2ba01477U) % 2 != 0);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        wires.set(swclk, false).wait(5).set(swclk, true);
        wires.set(swdio, i + 1 < bits.size() ? bool(bits[i + 1]) : true).wait(5);
    }
    wires.idle();
    QCOMPARE(Desk(wires, lines).summaries().back(), transfer(0, true, 0, "OK", value(0x2ba01477)));
}

void TstSwd::wrongParityOfDataIsTold()
{
    Wires wires;
    wires.reset().read(Ap, 0, 3, true).idle().write(Ap, 0, 7, true).idle().write(Ap, 0, 8);
    const Desk desk(wires, lines);
    QCOMPARE(desk.summaries(),
             (Texts{"reset", transfer(1, true, 0, "OK", value(3, true)), transfer(1, false, 0, "OK", value(7, true)),
                    transfer(1, false, 0, "OK", value(8))}));
    QVERIFY(desk.frame(1).text.find("wrong parity") != std::string::npos);
}

void TstSwd::otherAnswersHaveNoData_data()
{
    QTest::addColumn<unsigned>("ack");
    QTest::addColumn<QString>("name");
    QTest::newRow("wait") << unsigned(Wait) << "WAIT";
    QTest::newRow("fault") << unsigned(Fault) << "FAULT";
    QTest::newRow("nobody answers") << unsigned(NoReply) << "NOREPLY";
    QTest::newRow("none of the answers") << 0U << "ERROR";
    QTest::newRow("two answers at once") << 3U << "ERROR";
}

void TstSwd::otherAnswersHaveNoData()
{
    QFETCH(unsigned, ack);
    QFETCH(QString, name);
    for (const bool isRead : {true, false}) {
        Wires wires;
        wires.reset().refused(Ap, isRead, 4, ack).idle(2).read(Dp, 4, 0x55).idle();
        const Desk desk(wires, lines);
        QCOMPARE(desk.summaries(),
                 (Texts{"reset", transfer(1, isRead, 4, name.toStdString()), transfer(0, true, 4, "OK", value(0x55))}));
        QCOMPARE(desk.frame(1).last, wires.ends[0]);
        // A reset may follow at once as well.
        Wires again;
        again.reset().refused(Ap, isRead, 4, ack).reset().read(Dp, 0, 0x55).idle();
        QCOMPARE(Desk(again, lines).summaries(), (Texts{"reset", transfer(1, isRead, 4, name.toStdString()), "reset",
                                                        transfer(0, true, 0, "OK", value(0x55))}));
    }
}

void TstSwd::aHostMayClockTheDataThatNobodySends()
{
    Wires wires;
    wires.reset().refused(Dp, true, 0, NoReply).ones(33).request(Dp, false, 0).ones(1).bits(NoReply, 3).ones(1);
    wires.bits(0x1e, 33).idle().read(Dp, 4, 0x11).idle();
    QCOMPARE(Desk(wires, lines).summaries(),
             (Texts{"reset", transfer(0, true, 0, "NOREPLY"), transfer(0, false, 0, "NOREPLY"),
                    transfer(0, true, 4, "OK", value(0x11))}));
}

void TstSwd::overrunDetectionKeepsTheData()
{
    Wires wires;
    // ORUNDETECT is bit 0 of CTRL/STAT. The data of the write looks like a request.
    wires.reset().write(Dp, 4, 0x50000001).idle().refused(Ap, false, 12, Wait).bits(0xa5a5a5a5, 33).idle();
    wires.read(Dp, 4, 0x2).idle().write(Dp, 4, 0x50000000).idle().refused(Ap, true, 12, Wait).read(Ap, 12, 9).idle();
    QCOMPARE(Desk(wires, lines).summaries(),
             (Texts{"reset", transfer(0, false, 4, "OK", value(0x50000001)), transfer(1, false, 12, "WAIT"),
                    transfer(0, true, 4, "OK", value(2)), transfer(0, false, 4, "OK", value(0x50000000)),
                    transfer(1, true, 12, "WAIT"), transfer(1, true, 12, "OK", value(9))}));
}

/// ORUNDETECT is written, but WAIT and FAULT stay without data; so many clocks behind the first, in the zeros of the
/// next transfer, begins one that is sound as well.
void TstSwd::dataThatIsNotThereIsNotPassedOver()
{
    Wires wires;
    wires.reset().write(Dp, 4, 1).idle().refused(Ap, false, 12, Wait).idle(2).write(Ap, 4, 0).idle(2).read(Ap, 12, 9);
    wires.idle(8).refused(Ap, true, 12, Wait).idle(2).refused(Ap, true, 12, Fault).idle(2).write(Ap, 4, 0).idle(2);
    wires.read(Dp, 0, 7).idle();
    QCOMPARE(Desk(wires, lines).summaries(),
             (Texts{"reset", transfer(0, false, 4, "OK", value(1)), transfer(1, false, 12, "WAIT"),
                    transfer(1, false, 4, "OK", value(0)), transfer(1, true, 12, "OK", value(9)),
                    transfer(1, true, 12, "WAIT"), transfer(1, true, 12, "FAULT"),
                    transfer(1, false, 4, "OK", value(0)), transfer(0, true, 0, "OK", value(7))}));
}

void TstSwd::aRequestWithWrongParityIsNoTransfer()
{
    Wires wires;
    wires.reset().request(Ap, true, 8, true).ones(5).idle().reset().read(Dp, 0, 1).idle();
    const Desk desk(wires, lines);
    QCOMPARE(desk.summaries(),
             (Texts{"reset", "request ap=1 rd=1 addr=8", "reset", transfer(0, true, 0, "OK", value(1))}));
    QCOMPARE(desk.frame(1).text, std::string("Request with wrong parity"));
}

void TstSwd::fiftyOnesAreAReset_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("isReset");
    QTest::newRow("49") << 49 << false;
    QTest::newRow("50") << 50 << true;
    QTest::newRow("200") << 200 << true;
}

void TstSwd::fiftyOnesAreAReset()
{
    QFETCH(int, count);
    QFETCH(bool, isReset);
    Wires wires;
    wires.idle().ones(count).idle().read(Dp, 0, 1).idle();
    const Desk desk(wires, lines);
    QCOMPARE(desk.summaries().size(), std::size_t(isReset ? 2 : 1));
    QCOMPARE(desk.summaries().back(), transfer(0, true, 0, "OK", value(1)));
    if (isReset) {
        QCOMPARE(desk.frame(0).first, wires.rises[4]);
        QCOMPARE(desk.frame(0).last, wires.rises[std::size_t(3 + count)]);
    }
}

void TstSwd::sequencesSwitch_data()
{
    QTest::addColumn<unsigned>("sequence");
    QTest::addColumn<QString>("summary");
    QTest::newRow("to SWD") << 0xe79eU << "switch";
    QTest::newRow("to SWD, deprecated") << 0xedb6U << "switch";
    QTest::newRow("to JTAG") << 0xe73cU << "leave to=jtag";
    QTest::newRow("to JTAG, deprecated") << 0xaeaeU << "leave to=jtag";
    QTest::newRow("to dormant") << 0xe3bcU << "leave to=dormant";
}

void TstSwd::sequencesSwitch()
{
    QFETCH(unsigned, sequence);
    QFETCH(QString, summary);
    Wires wires;
    wires.ones(50).bits(sequence, 16).ones(52).idle();
    const Desk desk(wires, lines);
    QCOMPARE(desk.summaries(), (Texts{"reset", summary.toStdString(), "reset"}));
    QCOMPARE(desk.frame(1).first, wires.rises[50]);
    QCOMPARE(desk.frame(1).last, wires.rises[65]);
    QCOMPARE(desk.frame(2).first, wires.rises[66]);
    // Without the ones before it there is none.
    Wires bare;
    bare.idle().ones(20).bits(sequence, 16).idle(16);
    for (const std::string &text : Desk(bare, lines).summaries()) {
        QVERIFY(text != summary.toStdString());
    }
}

void TstSwd::aDormantPortIsWoken()
{
    Wires wires;
    wires.ones(8).bits(0x33bbbbba, 31).ones(8);
    wires.bits(0x86852d956209f392, 64).bits(0x19bc0ea2e3ddafe9, 64).bits(0, 4).bits(0x1a, 8).reset();
    wires.read(Dp, 0, 5).idle();
    const Desk desk(wires, lines);
    QCOMPARE(desk.summaries(), (Texts{"leave to=dormant", "switch", "reset", transfer(0, true, 0, "OK", value(5))}));
    QCOMPARE(desk.frame(1).last, wires.rises[8 + 31 + 8 + 139]);
}

void TstSwd::whatComesBehindASwitchToJtagIsPassedOver()
{
    Wires wires;
    wires.ones(50)
        .bits(0xe73c, 16)
        .idle()
        .read(Dp, 0, 1)
        .idle()
        .ones(50)
        .bits(0xe79e, 16)
        .reset()
        .read(Dp, 0, 2)
        .idle();
    QCOMPARE(Desk(wires, lines).summaries(),
             (Texts{"reset", "leave to=jtag", "reset", "switch", "reset", transfer(0, true, 0, "OK", value(2))}));
}

void TstSwd::turnAroundsMayBeLonger()
{
    // DLCR is register 4 of bank 1; its bits 9 and 8 are the turn-around less one.
    Wires wires;
    wires.reset().write(Dp, 8, 1).write(Dp, 4, 0x200).idle().read(Ap, 0, 0x77, false, 3);
    wires.write(Ap, 4, 0x88, false, 3).idle().reset().read(Dp, 0, 0x99).idle();
    const Desk desk(wires, lines);
    const Texts got = desk.summaries();
    QCOMPARE(Texts(got.begin() + 3, got.end()),
             (Texts{transfer(1, true, 0, "OK", value(0x77)), transfer(1, false, 4, "OK", value(0x88)), "reset",
                    transfer(0, true, 0, "OK", value(0x99))}));
    QCOMPARE(desk.frame(2).text, std::string("Write DLCR: 0x00000200, OK"));
}

/// A port without the field TURNROUND.
void TstSwd::aTurnAroundThatStaysAsItIsIsFollowed()
{
    Wires wires;
    wires.reset().write(Dp, 8, 1).idle().write(Dp, 4, 0x300).idle().refused(Ap, false, 4, Wait).idle();
    wires.read(Ap, 12, 0x12345678).idle().write(Ap, 4, 9).idle();
    QCOMPARE(Desk(wires, lines).summaries(),
             (Texts{"reset", transfer(0, false, 8, "OK", value(1)), transfer(0, false, 4, "OK", value(0x300)),
                    transfer(1, false, 4, "WAIT"), transfer(1, true, 12, "OK", value(0x12345678)),
                    transfer(1, false, 4, "OK", value(9))}));
}

void TstSwd::aWriteOfWrongParityChangesNothing()
{
    Wires wires;
    wires.reset().write(Dp, 8, 0).idle().write(Dp, 8, 0x010000f0, true).idle().read(Ap, 12, 1).idle();
    QCOMPARE(textsOf(Desk(wires, lines)).back(), std::string("Read AP 0 DRW: 0x00000001, OK"));
}

void TstSwd::oneOfSeveralTargetsIsSelectedWithoutAnAnswer()
{
    Wires wires;
    wires.reset().request(Dp, false, 12).ones(1).bits(NoReply, 3).ones(1).data(0x01002927).idle();
    wires.read(Dp, 0, 1).idle();
    const Desk desk(wires, lines);
    QCOMPARE(desk.summaries(), (Texts{"reset", transfer(0, false, 12, "NOREPLY", value(0x01002927)),
                                      transfer(0, true, 0, "OK", value(1))}));
    QCOMPARE(desk.frame(1).text, std::string("Write TARGETSEL: 0x01002927, no reply"));
}

void TstSwd::registersHaveTheirNames()
{
    Wires wires;
    wires.reset();
    for (const unsigned address : {0U, 4U, 8U, 12U}) {
        wires.read(Dp, address, 0).idle().write(Dp, address == 12 ? 0 : address, 0).idle();
    }
    Texts names;
    for (const std::string &text : textsOf(Desk(wires, lines))) {
        names.push_back(text.substr(0, text.find(':')));
    }
    QCOMPARE(names, (Texts{"Line reset", "Read DPIDR", "Write ABORT", "Read CTRL/STAT", "Write CTRL/STAT",
                           "Read RESEND", "Write SELECT", "Read RDBUFF", "Write ABORT"}));
}

void TstSwd::banksAreFollowed()
{
    Wires wires;
    wires.reset().read(Ap, 12, 0).idle().write(Dp, 8, 0x020000f2).read(Ap, 12, 1).idle().read(Dp, 4, 2).idle();
    wires.write(Dp, 8, 0).write(Ap, 4, 3).idle().write(Dp, 8, 0x30).write(Ap, 0, 4).idle();
    const Texts got = textsOf(Desk(wires, lines));
    QCOMPARE(got[1], std::string("Read AP 0xC: 0x00000000, OK")); // nobody has said which bank
    QCOMPARE(got[3], std::string("Read AP 2 IDR: 0x00000001, OK"));
    QCOMPARE(got[4], std::string("Read TARGETID: 0x00000002, OK"));
    QCOMPARE(got[6], std::string("Write AP 0 TAR: 0x00000003, OK"));
    QCOMPARE(got[8], std::string("Write AP 0 0x30: 0x00000004, OK"));
}

void TstSwd::cutEndsShowNothingFalse()
{
    Wires wires;
    wires.reset().read(Dp, 0, 0x2ba01477).idle().write(Dp, 8, 0xf0).refused(Ap, true, 0, Wait).read(Ap, 0, 1).idle();
    const auto whole = Desk(wires, lines).frames();
    QCOMPARE(whole.size(), std::size_t(5));
    for (std::int64_t length = 1; length <= wires.now(); ++length) {
        const auto cut = Desk(wires, lines, 1000000, length).frames();
        QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
        QVERIFY(length <= wires.ends[0] || cut.size() > 1);
    }
}

void TstSwd::aCaptureMayBeginAnywhere()
{
    Wires wires;
    wires.reset().read(Dp, 0, 0x2ba01477).idle().write(Dp, 8, 0xf0).idle(2).read(Ap, 0, 0xa5a5a5a5).idle();
    wires.read(Dp, 4, 0xf0000040).idle(8).refused(Ap, true, 0, Wait).idle(3).read(Ap, 0, 0x12345678).idle();
    const Texts whole = Desk(wires, lines).summaries();
    for (std::int64_t from = 1; from < wires.now(); ++from) {
        const Texts got = Desk(wires, lines, 1000000, -1, from).summaries();
        std::size_t left = 0;
        while (left < wires.starts.size() && wires.starts[wires.starts.size() - 1 - left] > from) {
            ++left;
        }
        // The reset, cut, may still be one; the first transfer may not have enough clocks at rest before it.
        QVERIFY2(got.size() + 1 >= left && got.size() <= left + 1, std::to_string(from).c_str());
        const bool hasReset = !got.empty() && got.front() == "reset";
        left = std::min(left, got.size() - std::size_t(hasReset));
        const bool isSame = std::equal(got.end() - std::ptrdiff_t(left), got.end(), whole.end() - std::ptrdiff_t(left));
        QVERIFY2(isSame && got.size() == left + std::size_t(hasReset), std::to_string(from).c_str());
    }
}

/// Nothing parts the requests from what comes before; the answers in a row tell them.
void TstSwd::transfersWithoutRestAreFoundFromWithinOne()
{
    Wires wires;
    wires.read(Ap, 0xc, 0x5a5ac3c3).refused(Ap, true, 0xc, Wait).refused(Ap, true, 0xc, Wait);
    wires.read(Ap, 0xc, 0xf0000040).write(Dp, 8, 0xffffffff).read(Dp, 0xc, 0).read(Ap, 0, 0x12345678).idle();
    const Texts whole = Desk(wires, lines).summaries();
    for (const std::ptrdiff_t within : {0, 1, 2, 3, 4}) {
        const std::int64_t from = wires.starts[std::size_t(within)] + 50;
        const Texts got = Desk(wires, lines, 1000000, -1, from).summaries();
        QVERIFY2(got == Texts(whole.begin() + within + 1, whole.end()), std::to_string(from).c_str());
    }
}

/// A host that leaves out the idle clocks: behind a line reset, and where the line floats high.
void TstSwd::transfersBehindOnesAloneAreFound()
{
    Wires wires;
    wires.idle().ones(60).read(Dp, 0, 0x2ba01477).write(Dp, 8, 0xf0).ones(9);
    wires.read(Dp, 4, 0xf0000040).read(Ap, 0, 1).idle();
    const Texts expected{"reset", transfer(Dp, true, 0, "OK", value(0x2ba01477)),
                         transfer(Dp, false, 8, "OK", value(0xf0)), transfer(Dp, true, 4, "OK", value(0xf0000040)),
                         transfer(Ap, true, 0, "OK", value(1))};
    QCOMPARE(Desk(wires, lines).summaries(), expected);
}

/// The host leaves the line high and stops the clock; without a rest nothing parts the request from the ones before.
void TstSwd::aRequestBehindARestWithoutClocksIsFound()
{
    for (const std::int64_t rest : {0, 50, 200}) {
        Wires wires;
        wires.read(Dp, 0xc, 0xf0000040).ones(3).wait(rest);
        wires.read(Ap, 0xc, 0x12345678).idle();
        const std::int64_t within = wires.starts[0] + 100;
        const Texts got = Desk(wires, lines, 1000000, -1, within).summaries();
        QCOMPARE(got.size(), std::size_t(rest > 80 ? 1 : 0));
        if (!got.empty()) {
            QCOMPARE(got[0], std::string("transfer ap=1 rd=1 addr=12 ack=OK v=305419896 perr=0"));
        }
    }
}

void TstSwd::positionsAreWiderThan32Bits()
{
    constexpr std::int64_t far = std::int64_t(1) << 38;
    Wires wires;
    wires.wait(far);
    wires.reset().read(Dp, 0, 1).idle();
    const Desk desk(wires, lines);
    QCOMPARE(desk.frame(1).first, wires.starts[0]);
    QCOMPARE(desk.frame(1).last, wires.ends[0]);
    QVERIFY(wires.starts[0] > far);
}

void TstSwd::textsGoFromShortToLong()
{
    Wires wires;
    wires.ones(50).bits(0xe79e, 16).reset().read(Dp, 0, 0x41).idle().refused(Ap, false, 4, Wait).idle();
    const Desk desk(wires, lines);
    const Channel line(0, swdio);
    QCOMPARE(desk.bubble(0, line, DisplayBase::Decimal), (Texts{"R", "Reset", "Line reset"}));
    QCOMPARE(desk.bubble(1, line, DisplayBase::Decimal), (Texts{"S", "Switch", "Switch to SWD"}));
    QCOMPARE(desk.bubble(3, line, DisplayBase::Decimal), (Texts{"R", "R DPIDR", "R DPIDR 65", "Read DPIDR: 65, OK"}));
    QCOMPARE(desk.bubble(4, line, DisplayBase::Decimal), (Texts{"!", "W AP 4", "W AP 4 WAIT", "Write AP 4: WAIT"}));
}

void TstSwd::errorsAreMarked()
{
    Wires wires;
    wires.reset().read(Dp, 0, 1, true).idle().refused(Ap, false, 4, Fault).idle(8).write(Ap, 0, 1).idle();
    const auto markers = Desk(wires, lines).markers(swdio);
    std::vector<std::uint64_t> errors;
    for (const Marker &marker : markers) {
        if (marker.type == MarkerType::ErrorX) {
            errors.push_back(marker.sample);
        }
    }
    QCOMPARE(errors, (std::vector<std::uint64_t>{std::uint64_t(wires.ends[0]), std::uint64_t(wires.ends[1])}));
}

void TstSwd::framesAreExported()
{
    Wires wires;
    wires.reset().read(Dp, 0, 1).idle().ones(50).bits(0xe73c, 16).ones(52).idle();
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out.csv")).toStdString();
    const std::string csv = decoderChecks::exported(Desk(wires, lines), path, 0);
    QVERIFY2(csv.find(",transfer,0,1,0,OK,1,0,,\"Read DPIDR: 0x00000001, OK\"") != std::string::npos, csv.c_str());
    QVERIFY2(csv.find(",leave,,,,,,,jtag,Switch to JTAG\n") != std::string::npos, csv.c_str());
}

void TstSwd::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("10 MHz") << 10000000 << 50000;
    QTest::newRow("20 kHz, small blocks") << 20000 << 53;
    QTest::newRow("500 MHz") << 500000000 << 100000;
}

/// Transfer n: its number as data, of the debug port when it is a multiple of three.
void TstSwd::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<SwdAnalyzer>(), lines);
    const auto capture = desk.simulate(rate, rate >= 500000000 ? 10000000 : 1000000, block);
    desk.run(*capture);
    const Texts got = desk.summaries();
    QVERIFY(got.size() > 100);
    Texts expected;
    for (std::uint32_t n = 0; expected.size() < got.size(); ++n) {
        if (n % 32 == 0) {
            expected.insert(expected.end(), {"reset", "switch", "reset"});
            expected.push_back(transfer(0, true, 0, "OK", value(0x2ba01477)));
            expected.push_back("request ap=0 rd=1 addr=0");
        }
        const bool isSilent = n % 29 == 6;
        const bool isFault = n % 31 == 3 && !isSilent;
        const bool isWait = n % 5 == 2 && !isFault && !isSilent;
        const bool isDp = n % 3 == 0;
        const unsigned address = (n >> 2 & 3U) << 2;
        expected.push_back(transfer(isDp ? 0 : 1, isDp, address,
                                    isSilent  ? "NOREPLY"
                                    : isFault ? "FAULT"
                                    : isWait  ? "WAIT"
                                              : "OK",
                                    isFault || isWait || isSilent ? std::string() : value(n, n % 67 == 5)));
        if (n % 64 == 31) {
            expected.insert(expected.end(), {"reset", "leave to=dormant", "switch"});
        } else if (n % 64 == 63) {
            expected.insert(expected.end(), {"reset", "leave to=jtag"});
        }
    }
    expected.resize(got.size());
    QCOMPARE(got, expected);
}

void TstSwd::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 50000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        for (const std::int64_t other : {1, 2, 5, 50, 500}) {
            TestCapture capture(1000000, length);
            capture.channel(swclk, true, decoderChecks::randomEdges(1, mean, length));
            capture.channel(swdio, true, decoderChecks::randomEdges(2, mean * other, length));
            DecodeDesk desk(std::make_unique<SwdAnalyzer>(), lines);
            QCOMPARE(decoderChecks::faultOf(desk.run(capture), length), std::string());
        }
    }
}

QTEST_GUILESS_MAIN(TstSwd)
#include "tst_Swd.moc"
