#include "AsyncSender.h"
#include "DecoderChecks.h"
#include "IrNecAnalyzer.h"
#include "IrNecSimulation.h"

#include <QtTest>

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

namespace {

constexpr std::int64_t sampleRate = 1000000;
const std::string low = "ir=3,polarity=low";

/// Writes marks and spaces; times in us, stretched by a factor.
class Remote {
public:
    explicit Remote(bool activeHigh = false, double factor = 1.0)
        : m_line(!activeHigh), m_activeHigh(activeHigh), m_factor(factor)
    {
        space(20000);
    }
    Remote &mark(double us) { return level(true, us); }
    Remote &space(double us) { return level(false, us); }
    /// So many of the bits, the lowest of the first byte first, and the last mark.
    Remote &frame(const std::vector<unsigned> &bytes, unsigned count = 32)
    {
        begins.push_back(m_line.position());
        mark(9000).space(4500);
        for (unsigned i = 0; i < count; ++i) {
            mark(562.5).space((bytes[i / 8] >> i % 8 & 1U) != 0 ? 1687.5 : 562.5);
        }
        mark(562.5);
        ends.push_back(m_line.position());
        return space(40000);
    }
    Remote &repeat()
    {
        begins.push_back(m_line.position());
        mark(9000).space(2250).mark(562.5);
        ends.push_back(m_line.position());
        return space(90000);
    }
    [[nodiscard]] const EdgeLine &line() const { return m_line; }

    std::vector<std::int64_t> begins;
    std::vector<std::int64_t> ends;

private:
    Remote &level(bool light, double us)
    {
        m_line.set(light == m_activeHigh);
        m_time += us * m_factor;
        m_line.holdUntil(std::int64_t(m_time));
        return *this;
    }

    EdgeLine m_line;
    bool m_activeHigh;
    double m_factor;
    double m_time = 0;
};

class Decoded : public DecodedLine {
public:
    Decoded(const Remote &remote, const std::string &settings, std::int64_t length = -1)
        : DecodedLine(std::make_unique<IrNecAnalyzer>(), remote.line(), settings, sampleRate, length)
    {}
};

} // namespace

class TstIrNec : public QObject {
    Q_OBJECT
private slots:
    void aFrameReachesFromItsLeaderToItsLastMark();
    void eitherPolarityMayBeSetOrFound();
    void addressesMayBeExtended();
    void aWrongComplementOfTheCommandIsTold();
    void aRepeatKnowsWhatItRepeats();
    void eachTimeMayBeATwentyFivePercentOff_data();
    void eachTimeMayBeATwentyFivePercentOff();
    void receiversMakeMarksLongerOrShorter();
    void theToleranceIsASetting();
    void aFrameThatBreaksOffIsTold();
    void aFrameThatBreaksOffHidesNoOther();
    void aCarrierIsTakenAwayAndTold();
    void aCarrierIsNoneWhereItIsSetOff();
    void spikesAreNotSeen_data();
    void spikesAreNotSeen();
    void otherRemotesAreNoFrames();
    void textsGoFromShortToLong();
    void eachBitHasAMarker();
    void settingsAreChecked();
    void exportsHaveAllFrames();
    void aCutFrameIsNotShown();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstIrNec::aFrameReachesFromItsLeaderToItsLastMark()
{
    Remote remote;
    remote.frame({0x40, 0xbf, 0x44, 0xbb});
    const Decoded desk(remote, low);
    QCOMPARE(desk.summaries(), Texts{"frame bytes=40BF44BB address=64 command=68 ext=0 ok=1"});
    QCOMPARE(desk.frame(0).first, remote.begins[0]);
    QCOMPARE(desk.frame(0).last, remote.ends[0] - 1);
}

void TstIrNec::eitherPolarityMayBeSetOrFound()
{
    for (const bool activeHigh : {false, true}) {
        Remote remote(activeHigh);
        remote.frame({0x40, 0xbf, 0x44, 0xbb}).repeat();
        QCOMPARE(Decoded(remote, "ir=3,polarity=high").frames().size(), std::size_t(activeHigh ? 2 : 0));
        QCOMPARE(Decoded(remote, "ir=3,polarity=low").frames().size(), std::size_t(activeHigh ? 0 : 2));
        QCOMPARE(Decoded(remote, "ir=3,polarity=auto").frames().size(), std::size_t(2));
    }
}

void TstIrNec::addressesMayBeExtended()
{
    Remote remote;
    remote.frame({0x41, 0xea, 0x48, 0xb7});
    QCOMPARE(Decoded(remote, low).summaries(), Texts{"frame bytes=41EA48B7 address=59969 command=72 ext=1 ok=1"});
}

void TstIrNec::aWrongComplementOfTheCommandIsTold()
{
    Remote remote;
    remote.frame({0x40, 0xbf, 0x44, 0xba});
    const Decoded desk(remote, low);
    QCOMPARE(desk.frame(0).value("ok"), std::string("0"));
    QCOMPARE(desk.frame(0).text, std::string("Address 0x40, command 0x44, its complement is 0xBA"));
    const auto markers = desk.markers(3);
    QCOMPARE(markers.size(), std::size_t(33));
    QCOMPARE(markers.back().type, MarkerType::ErrorX);
    QCOMPARE(std::int64_t(markers.back().sample), desk.frame(0).last);
}

void TstIrNec::aRepeatKnowsWhatItRepeats()
{
    Remote remote;
    remote.repeat().frame({0x40, 0xbf, 0x44, 0xbb}).repeat().repeat().space(300000).repeat();
    const Decoded desk(remote, low);
    QCOMPARE(desk.summaries(), (Texts{"repeat", "frame bytes=40BF44BB address=64 command=68 ext=0 ok=1",
                                      "repeat address=64 command=68", "repeat address=64 command=68", "repeat"}));
    QCOMPARE(desk.frame(2).first, remote.begins[2]);
    QCOMPARE(desk.frame(2).last, remote.ends[2] - 1);
}

void TstIrNec::eachTimeMayBeATwentyFivePercentOff_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("slow, within") << 1.24 << true;
    QTest::newRow("fast, within") << 0.76 << true;
    QTest::newRow("slow, beyond") << 1.26 << false;
    QTest::newRow("fast, beyond") << 0.74 << false;
}

void TstIrNec::eachTimeMayBeATwentyFivePercentOff()
{
    QFETCH(double, factor);
    QFETCH(bool, isRead);
    Remote remote(false, factor);
    remote.frame({0x40, 0xbf, 0x44, 0xbb}).repeat();
    QCOMPARE(Decoded(remote, low).frames().size(), std::size_t(isRead ? 2 : 0));
    // Each time by itself, in a frame that is as it should be; those of bits by 160 us more.
    const double byReceiver = (isRead ? 155 : 165) * (factor > 1 ? 1 : -1);
    const double times[][2] = {{9000, 4500}, {562.5, 1687.5}};
    for (int which = 0; which < 4; ++which) {
        Remote one;
        one.mark(which == 0 ? times[0][0] * factor : times[0][0]);
        one.space(which == 1 ? times[0][1] * factor : times[0][1]);
        for (int i = 0; i < 32; ++i) {
            one.mark(which == 2 && i == 5 ? times[1][0] * factor + byReceiver : times[1][0]);
            one.space(which == 3 && i == 7 ? times[1][1] * factor + byReceiver : times[1][1]);
        }
        one.mark(562.5).space(40000);
        const auto frames = Decoded(one, low).frames();
        const bool isFrame = !frames.empty() && frames[0].kind == "frame";
        QCOMPARE(isFrame, isRead);
    }
}

void TstIrNec::receiversMakeMarksLongerOrShorter()
{
    for (const double off : {-158, 158}) {
        Remote remote(false, 1.04);
        remote.mark(9000 + off).space(4500 - off);
        for (int i = 0; i < 32; ++i) {
            remote.mark(562.5 + off).space((i % 3 == 0 ? 1687.5 : 562.5) - off);
        }
        remote.mark(562.5 + off).space(40000);
        remote.mark(9000 + off).space(2250 - off).mark(562.5 + off).space(90000);
        const Decoded desk(remote, low);
        QCOMPARE(desk.frames().size(), std::size_t(2));
        QCOMPARE(desk.frame(0).value("bytes"), std::string("49922449"));
        QCOMPARE(desk.frame(1).kind, std::string("repeat"));
    }
}

void TstIrNec::theToleranceIsASetting()
{
    Remote remote(false, 1.12);
    remote.frame({0x40, 0xbf, 0x44, 0xbb});
    QCOMPARE(Decoded(remote, low + ",tolerance=10").frames().size(), std::size_t(0));
    QCOMPARE(Decoded(remote, low + ",tolerance=13").frames().size(), std::size_t(1));
    Remote slow(false, 1.39);
    slow.frame({0x40, 0xbf, 0x44, 0xbb});
    QCOMPARE(Decoded(slow, low + ",tolerance=40").frames().size(), std::size_t(1));
}

void TstIrNec::aFrameThatBreaksOffIsTold()
{
    Remote remote;
    remote.frame({0x40, 0xbf}, 10).frame({1, 0xfe, 2, 0xfd});
    const Decoded desk(remote, low);
    QCOMPARE(desk.summaries(), (Texts{"cut bits=10", "frame bytes=01FE02FD address=1 command=2 ext=0 ok=1"}));
    QCOMPARE(desk.frame(0).last, remote.ends[0] - 1);
    QCOMPARE(desk.frame(0).text, std::string("Cut after 10 bits"));
    QCOMPARE(desk.markers(3)[10].type, MarkerType::ErrorX);
}

void TstIrNec::aFrameThatBreaksOffHidesNoOther()
{
    // The mark that is too long for a bit is the next one's leader.
    Remote remote;
    remote.mark(9000).space(4500).mark(562.5).space(562.5).frame({1, 0xfe, 2, 0xfd});
    QCOMPARE(Decoded(remote, low).summaries(),
             (Texts{"cut bits=1", "frame bytes=01FE02FD address=1 command=2 ext=0 ok=1"}));
}

void TstIrNec::aCarrierIsTakenAwayAndTold()
{
    Remote carrier(true);
    const auto mark = [&carrier](int periods) {
        for (int i = 0; i < periods; ++i) {
            carrier.mark(9).space(1000.0 / 38 - 9);
        }
    };
    for (int key = 0; key < 2; ++key) {
        mark(342);
        carrier.space(4500);
        for (unsigned i = 0; i < 32; ++i) {
            mark(21);
            carrier.space((0xbb44bf40U >> i & 1U) != 0 ? 1697 : 572);
        }
        mark(21);
        carrier.space(40000);
    }
    const Decoded desk(carrier, "ir=3");
    QCOMPARE(desk.summaries(), Texts(2, "frame bytes=40BF44BB address=64 command=68 ext=0 ok=1"));
    QCOMPARE(desk.message(), std::string("Carrier found: 38.0 kHz"));
    QCOMPARE(Decoded(carrier, "ir=3,carrier=on").frames().size(), std::size_t(2));
    QVERIFY(Decoded(carrier, "ir=3,carrier=off").frames().empty());
}

void TstIrNec::aCarrierIsNoneWhereItIsSetOff()
{
    Remote remote;
    remote.frame({0x40, 0xbf, 0x44, 0xbb});
    const Decoded desk(remote, low + ",carrier=off");
    QCOMPARE(desk.frames().size(), std::size_t(1));
    QVERIFY(desk.message().empty());
}

void TstIrNec::spikesAreNotSeen_data()
{
    QTest::addColumn<QString>("carrier");
    QTest::addColumn<int>("samples");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("shorter than an eighth of a bit's mark") << "off" << 69 << true;
    QTest::newRow("longer") << "off" << 72 << false;
    QTest::newRow("beside a carrier") << "auto" << 69 << true;
}

void TstIrNec::spikesAreNotSeen()
{
    QFETCH(QString, carrier);
    QFETCH(int, samples);
    QFETCH(bool, isRead);
    Remote remote;
    remote.frame({0x40, 0xbf, 0x44, 0xbb}).repeat();
    const EdgeLine spiked = decoderChecks::withSpikes(remote.line(), samples);
    const DecodedLine desk(std::make_unique<IrNecAnalyzer>(), spiked, low + ",carrier=" + carrier.toStdString(),
                           sampleRate);
    const Texts expected = {"frame bytes=40BF44BB address=64 command=68 ext=0 ok=1", "repeat address=64 command=68"};
    QCOMPARE(desk.summaries() == expected, isRead);
    QVERIFY(!isRead || desk.frame(0).first == remote.begins[0]);
}

void TstIrNec::otherRemotesAreNoFrames()
{
    Remote remote; // a leader of 2400 us and marks of two lengths
    for (int key = 0; key < 3; ++key) {
        remote.mark(2400).space(600);
        for (int i = 0; i < 12; ++i) {
            remote.mark(i % 3 == 0 ? 1200 : 600).space(600);
        }
        remote.space(25000);
    }
    QVERIFY(Decoded(remote, low).frames().empty());
}

void TstIrNec::textsGoFromShortToLong()
{
    Remote remote;
    remote.frame({0x40, 0xbf, 0x44, 0xbb}).repeat().frame({0x41, 0xea, 0x48, 0xb7});
    const Decoded desk(remote, low);
    const Channel channel(0, 3);
    QCOMPARE(desk.bubble(0, channel, DisplayBase::Decimal), (Texts{"68", "64: 68", "Address 64, command 68"}));
    QCOMPARE(desk.bubble(1, channel, DisplayBase::Hexadecimal),
             (Texts{"R", "Repeat", "Repeat of 0x44", "Repeat of address 0x40, command 0x44"}));
    QCOMPARE(desk.frame(2).text, std::string("Extended address 0xEA41, command 0x48"));
}

void TstIrNec::eachBitHasAMarker()
{
    Remote remote;
    remote.frame({0x01, 0xfe, 0x44, 0xbb});
    const auto markers = Decoded(remote, low).markers(3);
    QCOMPARE(markers.size(), std::size_t(32));
    QCOMPARE(markers[0].type, MarkerType::One);
    QCOMPARE(markers[1].type, MarkerType::Zero);
    QCOMPARE(std::int64_t(markers[0].sample), remote.begins[0] + 13500);
}

void TstIrNec::settingsAreChecked()
{
    DecodeDesk desk(std::make_unique<IrNecAnalyzer>());
    QVERIFY(!desk.edit({{"ir", "none"}}).empty());
    QCOMPARE(desk.edit({{"ir", "1"}, {"polarity", "high"}, {"carrier", "on"}, {"tolerance", "40"}}), std::string());
    QVERIFY(!desk.edit({{"tolerance", "41"}}).empty());
    QVERIFY(!desk.edit({{"tolerance", "4"}}).empty());
}

void TstIrNec::exportsHaveAllFrames()
{
    Remote remote;
    remote.frame({0x40, 0xbf, 0x44, 0xbb}).repeat();
    const Decoded desk(remote, low);
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("out")).toStdString();
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    QVERIFY2(csv.find("frame,40BF44BB,64,68,0,1,,") != std::string::npos, csv.c_str());
    const std::string text = decoderChecks::exported(desk, path + ".txt", 0);
    QVERIFY2(text.find("Repeat of address 0x40, command 0x44") != std::string::npos, text.c_str());
}

void TstIrNec::aCutFrameIsNotShown()
{
    Remote remote(false, 1.0);
    remote.frame({0x40, 0xbf, 0x44, 0xbb}).repeat().frame({1, 0xfe}, 7);
    const auto whole = Decoded(remote, low).frames();
    QCOMPARE(whole.size(), std::size_t(3));
    for (std::int64_t length = 1; length < remote.line().position(); length += 97) {
        const Decoded desk(remote, low, length);
        QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
        QCOMPARE(decoderChecks::faultOfCut(desk.frames(), whole), std::string());
    }
}

void TstIrNec::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("low") << "polarity=low" << 1000000 << 100000;
    QTest::newRow("high, small blocks") << "polarity=high,carrier=off" << 20000 << 77;
    QTest::newRow("with carrier") << "polarity=high,carrier=on" << 2000000 << 65536;
    QTest::newRow("found") << "" << 100000 << 4096;
}

void TstIrNec::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    DecodeDesk desk(std::make_unique<IrNecAnalyzer>(), "ir=0," + settings.toStdString());
    const auto capture = desk.simulate(rate, rate * std::int64_t(10), block);
    QCOMPARE(decoderChecks::faultOf(desk.run(*capture), capture->device().smpCount), std::string());
    const auto frames = desk.frames();
    QVERIFY(frames.size() > 100);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const IrNecSimulated sent = IrNecSimulated::of(std::uint32_t(i));
        if (sent.isRepeat) {
            QCOMPARE(frames[i].kind, std::string("repeat"));
        } else if (sent.sent < IrNecSimulated::frameBits) {
            QCOMPARE(frames[i].summary(), "cut bits=" + std::to_string(sent.sent));
        } else {
            std::string bytes;
            for (unsigned k = 0; k < 4; ++k) {
                bytes += QString::asprintf("%02X", sent.bits >> 8 * k & 0xffU).toStdString();
            }
            QCOMPARE(frames[i].value("bytes"), bytes);
        }
    }
}

void TstIrNec::randomEdgesGiveFramesInOrder()
{
    constexpr std::int64_t length = 2000000;
    for (const std::int64_t mean : {1, 20, 300, 562, 2000}) {
        for (const char *settings : {"ir=3", "ir=3,polarity=low,carrier=off,tolerance=40"}) {
            TestCapture capture(sampleRate, length);
            capture.channel(3, true, decoderChecks::randomEdges(std::uint32_t(mean), mean, length));
            DecodeDesk desk(std::make_unique<IrNecAnalyzer>(), settings);
            desk.run(capture);
            QCOMPARE(decoderChecks::faultOf(desk, length), std::string());
            QVERIFY(desk.frames().size() < 30);
        }
    }
}

QTEST_GUILESS_MAIN(TstIrNec)
#include "tst_IrNec.moc"
