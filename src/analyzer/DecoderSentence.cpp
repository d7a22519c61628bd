#include "analyzer/DecoderSentence.h"

#include "settings/Language.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

constexpr int mostPlaces = 9;

/// What all decoders share with each other, and their runtime says.
[[maybe_unused]] constexpr const char *sharedSentences[] = {
    trLater("Please select a channel for \"%1\"."),
    trLater("\"%1\" and \"%2\" must be different channels."),
    trLater("\"%1\" must be from %2 to %3."),
    trLater("\"%1\" must be one of the list."),
    trLater("Channel %1 is not in this capture."),
    trLater("Out of memory, the decode ended early."),
    trLater("The decoder failed."),
    trLater("%1 frames or markers reached out of the capture and were cut."),
    trLater("%1 frames or markers were not in the order of time."),
    trLater("The sample rate is too low: %1 bits/s need at least %2 Hz"),
    trLater("No bit rate can be found: the line has too few edges"),
    trLater("No bit rate can be found: the lines have too few edges"),
    trLater("Bit rate found: %1 bits/s"),
};

/// A sentence with places for what differs from one time to the next.
struct Pattern {
    QString text;
    QStringList values;
};

Pattern patternOf(const QString &sentence, const QRegularExpression &variable, const QString &analyzer)
{
    Pattern pattern;
    int end = 0;
    for (auto in = variable.globalMatch(sentence); in.hasNext() && pattern.values.size() < mostPlaces;) {
        const QRegularExpressionMatch match = in.next();
        const bool isTitle = match.capturedStart(1) >= 0;
        const int group = isTitle ? 1 : 0;
        pattern.text += sentence.midRef(end, match.capturedStart(group) - end);
        pattern.values.append(isTitle ? trAnalyzer(match.captured(1), analyzer) : match.captured());
        pattern.text += QLatin1Char('%') + QString::number(pattern.values.size());
        end = match.capturedEnd(group);
    }
    pattern.text += sentence.midRef(end);
    return pattern;
}

/// In one go: a value may hold what looks like a place.
QString filled(const QString &text, const QStringList &values)
{
    QString out;
    for (int i = 0; i < text.size(); ++i) {
        const int place = text.at(i) == QLatin1Char('%') && i + 1 < text.size() ? text.at(i + 1).digitValue() : -1;
        if (place >= 1 && place <= values.size()) {
            out += values.at(place - 1);
            ++i;
        } else {
            out += text.at(i);
        }
    }
    return out;
}

QString oneSentence(const QString &sentence, const QString &analyzer)
{
    static const QRegularExpression title(QStringLiteral("\"([^\"]*)\""));
    // A number that is no part of a word: neither in "D4" nor in "1-Wire".
    static const QRegularExpression titleOrNumber(
        QStringLiteral("\"([^\"]*)\"|(?<![-\\w.])-?[0-9]+(?:\\.[0-9]+)?(?![-\\w])"));
    for (const QRegularExpression &variable : {title, titleOrNumber}) {
        const Pattern pattern = patternOf(sentence, variable, analyzer);
        QString found = trAnalyzer(pattern.text, analyzer);
        if (found == pattern.text) {
            found = ::tr(pattern.text);
        }
        if (found != pattern.text) {
            return filled(found, pattern.values);
        }
    }
    return sentence;
}

} // namespace

QString decoderSentence(const QString &text, const QString &analyzer)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines) {
        line = oneSentence(line, analyzer);
    }
    return lines.join(QLatin1Char('\n'));
}
