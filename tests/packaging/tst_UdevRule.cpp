// Who may open an instrument on Linux is decided by the udev rule. It is text that no compiler compares with the table
// of products, so it is evaluated here, in the part of udev's language that it uses.

#include "device/UsbIds.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QtTest>

namespace {

using Facts = QMap<QString, QString>;

/// What a rules file does to a device.
struct Outcome {
    QStringList tags;
    QString mode;
    QString group;
    QStringList unknown; ///< what this evaluator does not understand
};

struct Token {
    QString key;
    QString op;
    QString value;
};

QVector<Token> tokensOf(const QString &line)
{
    static const QRegularExpression pattern(QStringLiteral("([A-Z]+(?:\\{\\w+\\})?)(==|!=|\\+=|=)\"([^\"]*)\""));
    QVector<Token> tokens;
    for (auto match = pattern.globalMatch(line); match.hasNext();) {
        const auto found = match.next();
        tokens.append({found.captured(1), found.captured(2), found.captured(3)});
    }
    return tokens;
}

bool matches(const QVector<Token> &tokens, const Facts &facts)
{
    return std::all_of(tokens.cbegin(), tokens.cend(), [&](const Token &token) {
        const bool isOneOf = token.value.split(QLatin1Char('|')).contains(facts.value(token.key));
        return token.op == QLatin1String("==") ? isOneOf : token.op != QLatin1String("!=") || !isOneOf;
    });
}

/// Carries out a line's assignments. @return the label to jump to; empty for the next line
QString assign(const QVector<Token> &tokens, Outcome &outcome)
{
    QString label;
    for (const Token &token : tokens) {
        const QString assignment = token.key + token.op;
        if (token.op == QLatin1String("==") || token.op == QLatin1String("!=")) {
            continue;
        }
        if (assignment == QLatin1String("GOTO=")) {
            label = token.value;
        } else if (assignment == QLatin1String("TAG+=")) {
            outcome.tags.append(token.value);
        } else if (assignment == QLatin1String("MODE=")) {
            outcome.mode = token.value;
        } else if (assignment == QLatin1String("GROUP=")) {
            outcome.group = token.value;
        } else if (assignment != QLatin1String("LABEL=")) {
            outcome.unknown.append(assignment);
        }
    }
    return label;
}

Outcome evaluated(const QString &rules, const Facts &facts)
{
    Outcome outcome;
    QString label;
    for (const QString &line : rules.split(QLatin1Char('\n'))) {
        const QString text = line.trimmed();
        if (text.isEmpty() || text.startsWith(QLatin1Char('#'))) {
            continue;
        }
        const QVector<Token> tokens = tokensOf(text);
        if (!label.isEmpty() && text != QStringLiteral("LABEL=\"%1\"").arg(label)) {
            continue;
        }
        label.clear();
        if (matches(tokens, facts)) {
            label = assign(tokens, outcome);
        }
    }
    return outcome;
}

QString hex(unsigned number)
{
    return QStringLiteral("%1").arg(number, 4, 16, QLatin1Char('0'));
}

/// A USB device that has just been plugged in.
Facts plugged(unsigned vendor, unsigned product)
{
    return {{QStringLiteral("ACTION"), QStringLiteral("add")},
            {QStringLiteral("SUBSYSTEM"), QStringLiteral("usb")},
            {QStringLiteral("ENV{DEVTYPE}"), QStringLiteral("usb_device")},
            {QStringLiteral("ATTR{idVendor}"), hex(vendor)},
            {QStringLiteral("ATTR{idProduct}"), hex(product)}};
}

bool isForTheUser(const Outcome &outcome)
{
    return outcome.tags.contains(QStringLiteral("uaccess"));
}

} // namespace

class TstUdevRule : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void thePackageHasOneRuleFileWhichIsReadBeforeTheSeatsRules();
    void everyProductOfTheTableIsForTheUserAndNoOtherProductIs();
    void aProductIsForTheUserOnItsReturnWithFirmwareToo();
    void theGroupMayWriteAndStrangersMayNot();
    void devicesOfOtherMakersAreLeftAlone();
    void interfacesAndRemovalsAreLeftAlone_data();
    void interfacesAndRemovalsAreLeftAlone();

private:
    QString m_rules;
};

void TstUdevRule::initTestCase()
{
    const QFileInfoList files = QDir(QStringLiteral(LUX_PACKAGING_DIR)).entryInfoList({QStringLiteral("*.rules")});
    QCOMPARE(files.size(), 1);
    QFile file(files.first().filePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_rules = QString::fromUtf8(file.readAll());
}

void TstUdevRule::thePackageHasOneRuleFileWhichIsReadBeforeTheSeatsRules()
{
    const QStringList names = QDir(QStringLiteral(LUX_PACKAGING_DIR)).entryList({QStringLiteral("*.rules")});
    QCOMPARE(names.size(), 1);
    // What is tagged by 73-seat-late.rules gets its access; what sets group and mode by default is 50.
    QVERIFY(names.first() < QStringLiteral("73-seat-late.rules"));
    QVERIFY(names.first() > QStringLiteral("50-udev-default.rules"));
}

void TstUdevRule::everyProductOfTheTableIsForTheUserAndNoOtherProductIs()
{
    int found = 0;
    for (unsigned product = 0; product <= 0xFFFF; ++product) {
        // The table ends far below; beyond, a sample is enough.
        if (product > 0x1000 && product % 0x101 != 0) {
            continue;
        }
        const Outcome outcome = evaluated(m_rules, plugged(usbVendorId, product));
        QCOMPARE(outcome.unknown, QStringList());
        QVERIFY2(isForTheUser(outcome) == isUsbInstrument(usbVendorId, std::uint16_t(product)),
                 qPrintable(hex(product)));
        found += isForTheUser(outcome) ? 1 : 0;
    }
    QCOMPARE(found, int(usbProductIds.size()));
}

void TstUdevRule::aProductIsForTheUserOnItsReturnWithFirmwareToo()
{
    // It comes back by "add"; a machine that is told to look again sends "change", one that has a driver "bind".
    for (const char *action : {"add", "change", "bind"}) {
        Facts facts = plugged(usbVendorId, usbProductIds.back());
        facts.insert(QStringLiteral("ACTION"), QLatin1String(action));
        QVERIFY2(isForTheUser(evaluated(m_rules, facts)), action);
    }
}

void TstUdevRule::theGroupMayWriteAndStrangersMayNot()
{
    const Outcome outcome = evaluated(m_rules, plugged(usbVendorId, usbProductIds.front()));
    QCOMPARE(outcome.mode, QStringLiteral("0660"));
    QCOMPARE(outcome.group, QStringLiteral("plugdev"));
}

void TstUdevRule::devicesOfOtherMakersAreLeftAlone()
{
    const Outcome outcome = evaluated(m_rules, plugged(usbVendorId + 1, usbProductIds.front()));
    QVERIFY(!isForTheUser(outcome));
    QVERIFY(outcome.mode.isEmpty() && outcome.group.isEmpty());
}

void TstUdevRule::interfacesAndRemovalsAreLeftAlone_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("removal") << "ACTION"
                             << "remove";
    QTest::newRow("interface") << "ENV{DEVTYPE}"
                               << "usb_interface";
    QTest::newRow("other subsystem") << "SUBSYSTEM"
                                     << "usbmisc";
}

void TstUdevRule::interfacesAndRemovalsAreLeftAlone()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    Facts facts = plugged(usbVendorId, usbProductIds.front());
    QVERIFY(isForTheUser(evaluated(m_rules, facts)));
    facts.insert(key, value);
    const Outcome outcome = evaluated(m_rules, facts);
    QVERIFY(!isForTheUser(outcome) && outcome.mode.isEmpty());
}

QTEST_GUILESS_MAIN(TstUdevRule)
#include "tst_UdevRule.moc"
