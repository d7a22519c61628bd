#pragma once

#include <QTranslator>

/// Has Qt's own texts that a user of this program meets translated by the language document: those of the file dialog
/// and of the menus of fields and scroll bars. All others stay in English, above all the names of keys, which the
/// program writes in English too.
///
/// Installed once, before the first widget is made; owned by the application object. Without state; any thread.
class QtTexts : public QTranslator {
    Q_OBJECT
public:
    using QTranslator::QTranslator;

    /// Installs one for the application object, unless there is one.
    static void install();

    [[nodiscard]] QString translate(const char *context, const char *sourceText, const char *disambiguation,
                                    int n) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }
};
