#pragma once

#include <QByteArray>
#include <QFont>
#include <QHash>
#include <QStaticText>
#include <QString>

#include <functional>

/// A decoder's text, measured once and laid out for drawing.
struct BubbleText {
    QStaticText text;
    int width = 0; ///< device pixels that it covers
};

/// The texts that bubbles show: the same few, row after row and frame after frame, so their widths are kept.
///
/// Main thread. Keeps some thousand texts, whatever comes.
class BubbleTexts {
public:
    using Measure = std::function<int(const QString &)>;

    /// @param measure  the device pixels that a text covers
    explicit BubbleTexts(Measure measure);
    /// Measures in gFontSmall.
    BubbleTexts();
    BubbleTexts(const BubbleTexts &) = delete;
    BubbleTexts &operator=(const BubbleTexts &) = delete;

    /// Texts of another font are forgotten. For the begin of a paint.
    void useFont(const QFont &font);
    /// @param text  UTF-8; null is an empty text. Cost: one look-up, or laying it out at the first time.
    [[nodiscard]] BubbleText of(const char *text);
    /// No text is narrower than this: a narrower box need not be asked for its texts.
    [[nodiscard]] int narrowest();

private:
    Measure m_measure;
    QFont m_font;
    QHash<QByteArray, BubbleText> m_texts;
    int m_narrowest = 0; ///< 0 while not known
};
