#include "wave/BubbleTexts.h"

#include "controls/Look.h"

#include <QFontMetrics>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr int mostTexts = 4096;
constexpr std::size_t longestText = 4096; ///< bytes; a longer one fits into no box on any screen

} // namespace

BubbleTexts::BubbleTexts(Measure measure) : m_measure(std::move(measure)) {}

BubbleTexts::BubbleTexts()
    : m_measure([this](const QString &text) {
          const QRect ink = QFontMetrics(m_font).boundingRect(text);
          return ink.right() - ink.left() + 1;
      }),
      m_font(gFontSmall)
{}

void BubbleTexts::useFont(const QFont &font)
{
    if (font != m_font) {
        m_font = font;
        m_texts.clear();
        m_narrowest = 0;
    }
}

BubbleText BubbleTexts::of(const char *text)
{
    const char *bytes = text != nullptr ? text : "";
    const auto length = qstrnlen(bytes, longestText + 1);
    if (length > longestText) {
        return {QStaticText(), std::numeric_limits<int>::max()};
    }
    const auto known = m_texts.constFind(QByteArray::fromRawData(bytes, int(length)));
    if (known != m_texts.constEnd()) {
        return *known;
    }
    const QString words = QString::fromUtf8(bytes, int(length));
    BubbleText measured{QStaticText(words), m_measure(words)};
    measured.text.setTextFormat(Qt::PlainText);
    measured.text.setPerformanceHint(QStaticText::AggressiveCaching);
    if (m_texts.size() >= mostTexts) {
        m_texts.clear();
    }
    m_texts.insert(QByteArray(bytes, int(length)), measured);
    return measured;
}

int BubbleTexts::narrowest()
{
    if (m_narrowest == 0) {
        m_narrowest = std::numeric_limits<int>::max();
        for (char letter = '!'; letter <= '~'; ++letter) {
            m_narrowest = std::min(m_narrowest, m_measure(QString(QLatin1Char(letter))));
        }
    }
    return m_narrowest;
}
