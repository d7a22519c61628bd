#include "files/ForeignBytes.h"
#include "files/VcdReader.h"
#include "store/MemBudget.h"

#include <QtTest>

namespace {

const QByteArray head = "$timescale 1 us $end\n$var wire 1 ! clk $end\n$enddefinitions $end\n";

} // namespace

/// Value change dumps that are none, or that somebody made to do harm.
class TstVcdBadInput : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { memBudget = std::int64_t(4) << 30; }
    void itIsToldWithItsLine_data();
    void itIsToldWithItsLine();
    void aFileCutAnywhereIsToldOrShort();
    void aWordWithoutEndIsTold_data();
    void aWordWithoutEndIsTold();
    void moreVariablesThanCanBeRememberedAreTold();
    void spentMemoryIsTold();
    void whatIsNoFileIsTold();
};

void TstVcdBadInput::itIsToldWithItsLine_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("detail");
    const auto row = [](const char *name, const QByteArray &bytes, const char *detail) {
        QTest::newRow(name) << bytes << QString::fromLatin1(detail);
    };
    row("empty", "", "line 1: the file ends within the declarations");
    row("something else", "Time,0\n1,2\n", "line 1: \"Time,0\" is no declaration");
    row("a byte of zero", head + QByteArray("#0 0!\n\0", 7), "line 5: a byte of zero");
    row("a byte of zero in the declarations", QByteArray("$timescale\n1 us $end\n\0", 22),
        "line 3: a byte that is no text");
    row("time goes back", head + "#5 1!\n#9 0!\n#8 1!\n", "line 6: the time goes back");
    row("time of 2^63", head + "#0 0!\n#9223372036854775808 1!\n", "line 5: this time has no room in 63 bits");
    row("time beyond 63 bits of seconds",
        "$timescale 100 s $end\n" + head.mid(head.indexOf('\n') + 1) + "#0 0!\n#9223372036854775807 1!\n",
        "line 5: this time has no room in 63 bits");
    row("time of many digits", head + "#0 0!\n#99999999999999999999999999 1!\n",
        "line 5: this time has no room in 63 bits");
    row("time beyond any grid", head + "#0 0!\n#1 1!\n#9223372036854775807 0!\n#9223372036854775807\n",
        "line 8: the time before needs more than 2^40 samples");
    row("time below 0", head + "#-5 1!\n", "line 4: this is no time");
    row("time with a point", head + "#1.5 1!\n", "line 4: this is no time");
    row("time without digits", head + "# 1!\n", "line 4: this is no time");
    row("times too fine", QByteArray(head).replace("1 us", "1 fs") + "#0 0!\n#1 1!\n#2 0!\n",
        "line 6: the time before needs a sample rate above 2^40 Hz");
    row("identifier that is not declared", head + "#0 0!\n1\"\n", "line 5: an identifier code that is not declared");
    row("vector of one that is not declared", head + "#0\nb1 abcde\n",
        "line 5: an identifier code that is not declared");
    row("value without identifier", head + "#0\n1\n", "line 5: a value without an identifier code");
    row("vector without identifier", head + "#0\nb1\n", "line 5: a value without an identifier code");
    row("vector of letters", head + "#0\nb12 !\n", "line 5: this is no value of bits");
    row("no value", head + "#0\n?!\n", "line 5: this is no value and no time");
    row("no values", head, "line 4: there is no value in it");
    row("time scale of 2", "$timescale 2 ns $end", "line 1: \"2ns\" is no time scale");
    row("time scale of minutes", "\n$timescale\n1 min\n$end", "line 4: \"1min\" is no time scale");
    row("variable without a name", "\n$var wire 1 ! $end", "line 2: this is no declaration of a variable");
    row("variable without bits", "$var wire 0 ! a $end", "line 1: this is no declaration of a variable");
    row("variable of 2^31 bits", "$var wire 2147483648 ! a $end", "line 1: this is no declaration of a variable");
    row("variable of many bits", "$var wire 1000000 ! a $end", "line 1: this is no declaration of a variable");
    row("long identifier", "$var wire 1 " + QByteArray(33, 'i') + " a $end", "line 1: this identifier code cannot be");
    row("foreign letters as identifier", "$var wire 1 \xc3\xa4 a $end", "line 1: this identifier code cannot be");
    row("scope without a name", "$scope module $end", "line 1: a scope without a name");
    row("comment without end", head + "#0 1!\n$comment a\nb\n", "line 7: the file ends before $end");
    row("no variable", "$enddefinitions $end #0", "there is no channel in it");
}

void TstVcdBadInput::itIsToldWithItsLine()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, detail);
    const ForeignCapture read = foreign(bytes, ForeignKind::Vcd);
    QCOMPARE(read.result, FileResult::Damaged);
    QCOMPARE(read.detail, detail);
    QVERIFY(!read.capture);
}

void TstVcdBadInput::aFileCutAnywhereIsToldOrShort()
{
    const QByteArray whole = head + "#0 $dumpvars 0! $end\n#12 1!\nb0 !\n$comment x $end\n#20\n";
    for (int size = 0; size < whole.size(); ++size) {
        const ForeignCapture read = foreign(whole.left(size), ForeignKind::Vcd);
        QVERIFY(read.isDone() ? read.capture->smpCount() <= 20 : !read.detail.isEmpty());
    }
}

void TstVcdBadInput::aWordWithoutEndIsTold_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("in the declarations") << QByteArray("$var wire 1 ! ") << QByteArray("n");
    QTest::newRow("words of a declaration") << QByteArray("$var wire 1 ! ") << QByteArray("n ");
    QTest::newRow("a scope") << QByteArray("$scope module ") << QByteArray("n");
    QTest::newRow("an identifier") << head + "#0 1" << QByteArray("!");
    QTest::newRow("a vector") << head + "#0 b" << QByteArray("0");
    QTest::newRow("blanks behind a vector") << head + "#0 b0" << QByteArray(" ");
    QTest::newRow("a command") << head + "#0 $" << QByteArray("d");
    QTest::newRow("scopes in scopes") << QByteArray() << QByteArray("$scope module aaaaaaaaaa $end\n");
}

void TstVcdBadInput::aWordWithoutEndIsTold()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, body);
    EndlessText file(start, body, qint64(1) << 25);
    const ForeignCapture read = readVcd(file, {}, {});
    QCOMPARE(read.result, FileResult::Damaged);
    QVERIFY2(read.detail.startsWith(QStringLiteral("line ")), qPrintable(read.detail));
    QVERIFY2(file.pos() < file.size(), "it was read to its end");
}

void TstVcdBadInput::moreVariablesThanCanBeRememberedAreTold()
{
    EndlessText file({}, "$var wire 1 ! name $end\n", qint64(1) << 40);
    const ForeignCapture read = readVcd(file, {}, {});
    QCOMPARE(read.result, FileResult::Damaged);
    QVERIFY2(read.detail.endsWith(QStringLiteral("more variables than can be remembered")), qPrintable(read.detail));
}

void TstVcdBadInput::spentMemoryIsTold()
{
    QByteArray values;
    for (int i = 1; i < 30'000; ++i) {
        values += '#' + QByteArray::number(i) + (i % 2 == 0 ? " 0!\n" : " 1!\n");
    }
    memBudget = 0;
    const ForeignCapture read = foreign(head + values, ForeignKind::Vcd);
    memBudget = std::int64_t(4) << 30;
    QCOMPARE(read.result, FileResult::NoMemory);
    QVERIFY(!read.capture);
}

void TstVcdBadInput::whatIsNoFileIsTold()
{
    QCOMPARE(readForeign(QStringLiteral("/nowhere/a.vcd"), ForeignKind::Vcd).result, FileResult::NoSuchFile);
    QCOMPARE(readForeign(QDir::tempPath(), ForeignKind::Vcd).result, FileResult::NotPlain);
}

QTEST_GUILESS_MAIN(TstVcdBadInput)
#include "tst_VcdBadInput.moc"
