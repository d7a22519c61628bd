#pragma once

#include <QString>

class MyButton;
class QHBoxLayout;
class QLabel;
class QWidget;

/// What the sections of the right-hand panel are made of, so that all of them look and line up alike. Main thread.

/// What a value reads as while it is not known.
[[nodiscard]] QString unknownText();

/// The style sheet of a label in a section.
[[nodiscard]] QString sectionLabelStyle();
[[nodiscard]] QLabel *makeSectionLabel(const QString &text, QWidget *parent);
/// The same for a text that may be too long for its place: it takes the room that is left, whatever its length.
[[nodiscard]] QLabel *makeElidedLabel(const QString &text, QWidget *parent);
/// The title of a section: the same, in bold.
[[nodiscard]] QLabel *makeSectionTitle(const QString &text, QWidget *parent);

/// The width of a section's icon buttons, pixels.
[[nodiscard]] int sectionButtonWidth();
/// A button with an icon of 16 units.
/// @param name  its tool tip and accessible name, translated
[[nodiscard]] MyButton *makeIconButton(const QString &icon, const QString &name, QWidget *parent);
/// A button as wide as `widest` needs.
[[nodiscard]] MyButton *makeTextButton(const QString &text, const QString &widest, QWidget *parent);

/// The button before a section's title that folds the section.
/// @param section  what it folds, translated; part of its accessible name
[[nodiscard]] MyButton *makeExpandButton(const QString &section, QWidget *parent);
/// Shows on that button whether the section is open.
void showExpanded(MyButton &button, bool expanded);

/// The line at the top of a section: fold button, title, and one more button at the right end, if any.
[[nodiscard]] QHBoxLayout *makeSectionHeader(MyButton *expand, QLabel *title, MyButton *action = nullptr);
