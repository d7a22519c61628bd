#pragma once

#include <QString>

class QComboBox;
class QFontMetrics;

/// The style sheets of the program's dark look, in one place: shades from `gGreys`, sizes through dp().
///
/// Each function builds its text anew, so it follows `gDpi` and the palette of the moment; call it when a widget is
/// built, not at each paint. What has the focus shows a light border. Main thread.

/// Every family below for a whole window or dialog, and tool tips and message boxes. The program sets it once for the
/// application, so that boxes and dialogs without an own style belong to the same family.
[[nodiscard]] QString programStyle();

[[nodiscard]] QString comboBoxStyle();
[[nodiscard]] QString lineEditStyle();
[[nodiscard]] QString spinBoxStyle();
[[nodiscard]] QString labelStyle();
[[nodiscard]] QString checkBoxStyle(); ///< and radio buttons
[[nodiscard]] QString groupBoxStyle();
[[nodiscard]] QString pushButtonStyle();
[[nodiscard]] QString progressBarStyle();
[[nodiscard]] QString sliderStyle();
[[nodiscard]] QString scrollBarStyle();
[[nodiscard]] QString toolTipStyle();
[[nodiscard]] QString menuStyle();
[[nodiscard]] QString messageBoxStyle();
/// Lists and trees, also those that stand alone, such as the completions of a field.
[[nodiscard]] QString listStyle();
/// The lists of Qt's own file dialog, which is shown where the system has none.
[[nodiscard]] QString fileDialogStyle();
/// The light panel of MenuDialog with the forms in it.
[[nodiscard]] QString menuDialogStyle();

/// The height of a one-line field or combo box for a font, pixels: the text fits at any scale.
[[nodiscard]] int controlHeight(const QFontMetrics &metrics);
/// What a sheet cannot say of a combo box: at most 20 entries in its list, entries with room, the height, and that a
/// box reached by key keeps its keys from the window's shortcuts.
void dressComboBox(QComboBox &box);
/// Its two halves: the box, and the list, which is built for it.
void dressClosedComboBox(QComboBox &box);
void dressComboList(QComboBox &box);
