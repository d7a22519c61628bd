#pragma once

#include <QString>

/// The style sheets of the program's dark look, in one place: shades from `gGreys`, sizes through dp().
///
/// Each function builds its text anew, so it follows `gDpi` and the palette of the moment; call it when a widget is
/// built, not at each paint. What has the focus shows a light border. Pure text, main thread.

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
[[nodiscard]] QString scrollBarStyle();
[[nodiscard]] QString toolTipStyle();
[[nodiscard]] QString menuStyle();
[[nodiscard]] QString messageBoxStyle();
/// The light panel of MenuDialog with the forms in it.
[[nodiscard]] QString menuDialogStyle();
