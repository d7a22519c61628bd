#include "corvanlux/analyzer/FrameText.h"

#include <QtTest>

#include <array>
#include <string>
#include <vector>

using lux::formatDuration;
using lux::formatNumber;
using lux::FrameText;
using lux::FrameValues;

class TstFrameText : public QObject {
    Q_OBJECT
private slots:
    void numbersHaveTheirLeadingZeros_data();
    void numbersHaveTheirLeadingZeros();
    void durationsHaveThreeDigitsAndAUnit_data();
    void durationsHaveThreeDigitsAndAUnit();
    void aBubbleKeepsAllTextsAndTheListTheLast();
    void longTextsOfABubbleStayWhole();
    void bytesAreATextWhereTheyArePrintable();
    void longByteListsAreCut();
    void valuesKeepOrderKindAndTexts();
    void whatIsTooLongForAShortTextIsCut();
};

void TstFrameText::numbersHaveTheirLeadingZeros_data()
{
    QTest::addColumn<quint64>("value");
    QTest::addColumn<unsigned>("bits");
    QTest::addColumn<int>("base");
    QTest::addColumn<QString>("text");
    const auto row = [](quint64 value, unsigned bits, DisplayBase base, const char *text) {
        QTest::newRow(qPrintable(QStringLiteral("%1 in %2 bits: %3").arg(value).arg(bits).arg(QLatin1String(text))))
            << value << bits << int(base) << QString::fromLatin1(text);
    };
    row(5, 8, DisplayBase::Binary, "0b00000101");
    row(5, 3, DisplayBase::Binary, "0b101");
    row(5, 8, DisplayBase::Decimal, "5");
    row(10, 8, DisplayBase::Hexadecimal, "0x0A");
    row(10, 9, DisplayBase::Hexadecimal, "0x00A");
    row(~quint64(0), 64, DisplayBase::Hexadecimal, "0xFFFFFFFFFFFFFFFF");
    row(~quint64(0), 64, DisplayBase::Decimal, "18446744073709551615");
    row(~quint64(0), 64, DisplayBase::Binary, "0b1111111111111111111111111111111111111111111111111111111111111111");
    row('A', 8, DisplayBase::Ascii, "'A'");
    row(' ', 7, DisplayBase::Ascii, "' '");
    row(10, 8, DisplayBase::Ascii, "LF");
    row(27, 8, DisplayBase::Ascii, "ESC");
    row(0, 8, DisplayBase::Ascii, "NUL");
    row(31, 8, DisplayBase::Ascii, "US");
    row(127, 8, DisplayBase::Ascii, "DEL");
    row(128, 8, DisplayBase::Ascii, "0x80");
    row('A', 16, DisplayBase::Ascii, "0x0041");
    row('A', 8, DisplayBase::AsciiHex, "'A' (0x41)");
    row(13, 8, DisplayBase::AsciiHex, "CR (0x0D)");
    row(200, 8, DisplayBase::AsciiHex, "0xC8");
    row(1, 0, DisplayBase::Hexadecimal, "0x1");
}

void TstFrameText::numbersHaveTheirLeadingZeros()
{
    QFETCH(quint64, value);
    QFETCH(unsigned, bits);
    QFETCH(int, base);
    QFETCH(QString, text);
    QCOMPARE(std::string(formatNumber(value, bits, DisplayBase(base)).view()), text.toStdString());
}

void TstFrameText::durationsHaveThreeDigitsAndAUnit_data()
{
    QTest::addColumn<qint64>("samples");
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<QString>("text");
    QTest::newRow("us") << qint64(868) << qint64(100000000) << "8.68 us";
    QTest::newRow("ms") << qint64(12345) << qint64(1000000) << "12.3 ms";
    QTest::newRow("ns") << qint64(1) << qint64(10000000) << "100 ns";
    QTest::newRow("rounds up to the next unit") << qint64(999999) << qint64(1000000000) << "1.00 ms";
    QTest::newRow("rounds up to fewer decimals") << qint64(9999) << qint64(1000000000) << "10.0 us";
    QTest::newRow("before") << qint64(-15) << qint64(1000000) << "-15.0 us";
    QTest::newRow("none") << qint64(0) << qint64(1000) << "0.00 s";
    QTest::newRow("long") << qint64(5000) << qint64(1) << "5000 s";
    QTest::newRow("no rate") << qint64(5) << qint64(0) << "5.00 s";
}

void TstFrameText::durationsHaveThreeDigitsAndAUnit()
{
    QFETCH(qint64, samples);
    QFETCH(qint64, rate);
    QFETCH(QString, text);
    QCOMPARE(std::string(formatDuration(samples, rate).view()), text.toStdString());
}

void TstFrameText::aBubbleKeepsAllTextsAndTheListTheLast()
{
    FrameText out;
    out.start(FrameText::Purpose::Bubble, Channel(0, 4), DisplayBase::Decimal);
    QVERIFY(out.isBubble());
    QCOMPARE(out.channel().channelIndex, 4U);
    out.add("A");
    out.add("Address ", out.number(80, 7), " read");
    const char *const *texts = nullptr;
    std::uint32_t count = 0;
    out.strings(&texts, &count);
    QCOMPARE(count, 2U);
    QCOMPARE(std::string(texts[0]), std::string("A"));
    QCOMPARE(std::string(texts[1]), std::string("Address 80 read"));
    QCOMPARE(std::string(out.last()), std::string("Address 80 read"));
    out.start(FrameText::Purpose::Tabular, Channel(), DisplayBase::Decimal);
    QCOMPARE(std::string(out.last()), std::string());
    out.add("A");
    out.add("B");
    out.strings(&texts, &count);
    QCOMPARE(count, 1U);
    QCOMPARE(std::string(texts[0]), std::string("B"));
}

void TstFrameText::longTextsOfABubbleStayWhole()
{
    const std::string longPiece(5000, 'x');
    FrameText out;
    for (int round = 0; round < 2; ++round) {
        out.start(FrameText::Purpose::Bubble, Channel(), DisplayBase::Decimal);
        out.add("");
        for (int i = 0; i < 20; ++i)
            out.add(out.number(std::uint64_t(i), 8), "", longPiece, "end");
        const char *const *texts = nullptr;
        std::uint32_t count = 0;
        out.strings(&texts, &count);
        QCOMPARE(count, 21U);
        QCOMPARE(std::string(texts[0]), std::string());
        for (int i = 0; i < 20; ++i)
            QCOMPARE(std::string(texts[i + 1]), std::to_string(i) + longPiece + "end");
        QCOMPARE(std::string(out.last()), "19" + longPiece + "end");
    }
}

void TstFrameText::bytesAreATextWhereTheyArePrintable()
{
    const std::array<std::uint8_t, 3> bytes{'a', 'b', ' '};
    const std::array<std::uint8_t, 2> mixed{'a', 10};
    FrameText out;
    out.start(FrameText::Purpose::Tabular, Channel(), DisplayBase::Ascii);
    out.addBytes("Data ", bytes);
    QCOMPARE(std::string(out.last()), std::string("Data \"ab \""));
    out.addBytes("Data ", mixed);
    QCOMPARE(std::string(out.last()), std::string("Data 'a' LF"));
    out.start(FrameText::Purpose::Tabular, Channel(), DisplayBase::Hexadecimal);
    out.addBytes("", mixed);
    QCOMPARE(std::string(out.last()), std::string("0x61 0x0A"));
    out.addBytes("none", {});
    QCOMPARE(std::string(out.last()), std::string("none"));
}

void TstFrameText::longByteListsAreCut()
{
    const std::array<std::uint8_t, 5> bytes{1, 2, 3, 4, 5};
    FrameText out;
    out.start(FrameText::Purpose::Tabular, Channel(), DisplayBase::Decimal);
    out.addBytes("", bytes, 3);
    QCOMPARE(std::string(out.last()), std::string("1 2 3 ..."));
}

void TstFrameText::valuesKeepOrderKindAndTexts()
{
    const std::array<std::uint8_t, 2> bytes{0x0A, 0xFF};
    FrameValues out;
    for (int round = 0; round < 2; ++round) {
        out.start();
        out.kind("frame")
            .number("id", 66)
            .flag("ext", true)
            .text("ack", "OK")
            .hex("cmd", 0xB, 2)
            .hex("data", bytes)
            .none("crc");
        QCOMPARE(std::string(out.frameKind()), std::string("frame"));
        const auto list = out.list();
        QCOMPARE(list.size(), std::size_t(6));
        QCOMPARE(list[0].number, std::uint64_t(66));
        QCOMPARE(list[1].type, FrameValueType::Flag);
        QCOMPARE(std::string(list[2].text), std::string("OK"));
        QCOMPARE(std::string(list[3].text), std::string("0B"));
        QCOMPARE(std::string(list[4].text), std::string("0AFF"));
        QCOMPARE(list[5].type, FrameValueType::None);
    }
    out.start();
    QCOMPARE(std::string(out.frameKind()), std::string());
    QVERIFY(out.list().empty());
}

void TstFrameText::whatIsTooLongForAShortTextIsCut()
{
    const lux::ShortText text(std::string(500, 'x'));
    QCOMPARE(text.view().size(), lux::ShortText::most);
}

QTEST_APPLESS_MAIN(TstFrameText)
#include "tst_FrameText.moc"
