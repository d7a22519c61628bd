// What is written can be read, and what can be operated can be seen, in every colour that the program uses.

#include "controls/Contrast.h"
#include "controls/Look.h"
#include "controls/Style.h"

#include <QMap>
#include <QRegularExpression>
#include <QtTest>

namespace {

/// The colours that a family of widgets has in a state.
struct Colors {
    QString text;
    QString ground;
    QString border;
};

/// The rules of a sheet: selector to properties. Rules of one selector are joined, the later wins.
QMap<QString, QMap<QString, QString>> rulesOf(const QString &sheet)
{
    static const QRegularExpression rule(QStringLiteral("([^{}]+)\\{([^{}]*)\\}"));
    QMap<QString, QMap<QString, QString>> rules;
    auto match = rule.globalMatch(sheet);
    while (match.hasNext()) {
        const QRegularExpressionMatch found = match.next();
        for (const QString &selector : found.captured(1).split(QLatin1Char(','))) {
            for (const QString &line : found.captured(2).split(QLatin1Char(';'))) {
                const int colon = line.indexOf(QLatin1Char(':'));
                rules[selector.trimmed()].insert(line.left(colon).trimmed(), line.mid(colon + 1).trimmed());
            }
        }
    }
    return rules;
}

/// The colours of `family`, as its state changes them.
Colors colorsOf(const QString &sheet, const QString &family, const QString &state)
{
    static const QRegularExpression colorOfBorder(QStringLiteral("(#[0-9a-fA-F]{6}|black|white|transparent)$"));
    Colors colors;
    const auto rules = rulesOf(sheet);
    for (const QString &selector : {family, family + state}) {
        const auto properties = rules.value(selector);
        colors.text = properties.value(QStringLiteral("color"), colors.text);
        const QString ground =
            properties.value(QStringLiteral("background-color"), properties.value(QStringLiteral("background")));
        colors.ground = ground.isEmpty() ? colors.ground : ground;
        const QString border =
            properties.value(QStringLiteral("border-color"), properties.value(QStringLiteral("border")));
        const auto found = colorOfBorder.match(border);
        colors.border = found.hasMatch() ? found.captured() : colors.border;
    }
    return colors;
}

QColor opaque(const QString &name, const QColor &behind)
{
    return name.isEmpty() || name == QLatin1String("transparent") ? behind : QColor(name);
}

void addState(const char *family, const char *state, bool light)
{
    QTest::addRow("%s%s%s", family, state, light ? ", light" : "")
        << QString::fromLatin1(family) << QString::fromLatin1(state) << light;
}

} // namespace

class TstContrast : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }

    void theRatiosAreThoseOfTheGuidelines();
    void aTextIsBlackOrWhiteWhicheverIsReadBetter();
    void aNumberOnAnyWaveColourIsRead();
    void aTextOfAWidgetIsRead_data();
    void aTextOfAWidgetIsRead();
    void aFieldIsSeen_data();
    void aFieldIsSeen();
    void theProgressIsSeenAndItsTextRead();
    void theTestItselfFindsAPaleText();
};

void TstContrast::theRatiosAreThoseOfTheGuidelines()
{
    QCOMPARE(contrastRatio(Qt::black, Qt::white), 21.0);
    QCOMPARE(contrastRatio(Qt::white, Qt::black), 21.0);
    QCOMPARE(contrastRatio(Qt::red, Qt::red), 1.0);
    // The grey that is known as the palest that may be written on white.
    QVERIFY(std::abs(contrastRatio(QColor(0x76, 0x76, 0x76), Qt::white) - 4.54) < 0.005);
    QVERIFY(std::abs(relativeLuminance(QColor(0, 255, 0)) - 0.7152) < 1e-9);
    QVERIFY(std::abs(relativeLuminance(QColor(8, 8, 8)) - 8.0 / 255 / 12.92) < 1e-9);
}

void TstContrast::aTextIsBlackOrWhiteWhicheverIsReadBetter()
{
    QCOMPARE(textOn(Qt::white), QColor(Qt::black));
    QCOMPARE(textOn(Qt::black), QColor(Qt::white));
    QCOMPARE(textOn(Qt::blue), QColor(Qt::white));
    QCOMPARE(textOn(Qt::yellow), QColor(Qt::black));
    for (int grey = 0; grey < 256; ++grey) {
        const QColor ground(grey, grey, grey);
        QVERIFY(contrastRatio(textOn(ground), ground) > 4.58);
    }
}

void TstContrast::aNumberOnAnyWaveColourIsRead()
{
    QStringList texts;
    for (const QColor &color : qAsConst(gChnColors)) {
        QVERIFY(contrastRatio(textOn(color), color) >= leastTextContrast);
        texts += textOn(color) == Qt::white ? QStringLiteral("white") : QStringLiteral("black");
    }
    QCOMPARE(texts.join(QLatin1Char(' ')), QStringLiteral("black white black black black white white black"));
}

void TstContrast::aTextOfAWidgetIsRead_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("light");
    for (const char *family : {"QLabel", "QLineEdit", "QComboBox", "QAbstractSpinBox", "QCheckBox", "QRadioButton"}) {
        addState(family, "", false);
        addState(family, ":disabled", false);
    }
    addState("QComboBox", ":hover", false);
    for (const char *state : {"", ":hover", ":pressed", ":disabled"}) {
        addState(".QPushButton", state, false);
    }
    for (const char *family : {"QComboBox QAbstractItemView", "QGroupBox", "QToolTip", "QMenu", "QListView",
                               "QTreeView", "QHeaderView::section"}) {
        addState(family, "", false);
    }
    addState("QComboBox QAbstractItemView::item", ":selected", false);
    addState("QListView::item", ":selected", false);
    for (const char *family : {"QMenu QLabel", "QMenu QLineEdit", "QMenu QComboBox", "QMenu QAbstractSpinBox",
                               "QMenu QCheckBox", "QMenu QRadioButton"}) {
        addState(family, "", true);
        addState(family, ":disabled", true);
    }
    addState("QMenu QPushButton", "", true);
    addState("QMenu QPushButton", ":hover", true);
    addState("QMenu QComboBox QAbstractItemView", "", true);
    addState("QMenu QComboBox QAbstractItemView::item", ":selected", true);
}

void TstContrast::aTextOfAWidgetIsRead()
{
    QFETCH(QString, family);
    QFETCH(QString, state);
    QFETCH(bool, light);
    const Colors colors = colorsOf(light ? menuDialogStyle() : programStyle() + fileDialogStyle(), family, state);
    QVERIFY(!colors.text.isEmpty());
    const QColor ground = opaque(colors.ground, light ? QColor(0xf0, 0xf0, 0xf0) : gGreys[5]);
    const double ratio = contrastRatio(QColor(colors.text), ground);
    QVERIFY2(ratio >= leastTextContrast, qPrintable(QString::number(ratio)));
}

void TstContrast::aFieldIsSeen_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("light");
    for (const char *family : {"QLineEdit", "QComboBox", ".QPushButton"}) {
        addState(family, "", false);
        addState(family, ":focus", false);
    }
    addState("QCheckBox", ":focus", false);
    addState("QCheckBox::indicator", "", false);
    addState("QCheckBox::indicator", ":hover", false);
    addState("QCheckBox::indicator", ":checked", false);
    addState("QRadioButton::indicator", "", false);
    for (const char *family : {"QMenu QLineEdit", "QMenu QComboBox", "QMenu QPushButton", "QMenu QCheckBox::indicator",
                               "QMenu QRadioButton::indicator"}) {
        addState(family, "", true);
    }
}

void TstContrast::aFieldIsSeen()
{
    QFETCH(QString, family);
    QFETCH(QString, state);
    QFETCH(bool, light);
    const Colors colors = colorsOf(light ? menuDialogStyle() : programStyle(), family, state);
    const double ratio = contrastRatio(QColor(colors.border), light ? QColor(0xf0, 0xf0, 0xf0) : gGreys[5]);
    QVERIFY2(ratio >= leastControlContrast, qPrintable(QString::number(ratio)));
}

void TstContrast::theProgressIsSeenAndItsTextRead()
{
    const Colors bar = colorsOf(programStyle(), QStringLiteral("QProgressBar"), QString());
    const Colors done = colorsOf(programStyle(), QStringLiteral("QProgressBar::chunk"), QString());
    QVERIFY(contrastRatio(QColor(bar.ground), QColor(done.ground)) >= leastControlContrast);
    QVERIFY(contrastRatio(QColor(bar.text), QColor(bar.ground)) >= leastTextContrast);
    QVERIFY(contrastRatio(QColor(bar.text), QColor(done.ground)) >= leastTextContrast);
    const Colors handle = colorsOf(programStyle(), QStringLiteral("QScrollBar::handle"), QString());
    const Colors track = colorsOf(programStyle(), QStringLiteral("QScrollBar"), QString());
    QVERIFY(contrastRatio(QColor(handle.ground), QColor(track.ground)) >= leastControlContrast);
}

void TstContrast::theTestItselfFindsAPaleText()
{
    const QString sheet = QStringLiteral("A,B{color:#777777;background-color:#888888;}B:disabled{color:#888888;}");
    const Colors colors = colorsOf(sheet, QStringLiteral("B"), QStringLiteral(":disabled"));
    QCOMPARE(colors.text, QStringLiteral("#888888"));
    QCOMPARE(contrastRatio(QColor(colors.text), QColor(colors.ground)), 1.0);
}

QTEST_MAIN(TstContrast)
#include "tst_Contrast.moc"
