#pragma once

#include <QMenu>

/// A menu of one-line entries that drops down under a button and is exactly as wide as that button.
///
/// Entry number i carries i as its data. A list that is higher than the screen moves closer together,
/// and scrolls when that is not enough. Main thread.
class PickMenu : public QMenu {
    Q_OBJECT
public:
    explicit PickMenu(QWidget *parent = nullptr);

    /// @param icon  shown instead of the text, which then is for those who cannot see it
    QAction *addEntry(const QString &text, const QString &icon = QString());
    /// Takes off the last entries until `count` are left. Closes the menu.
    void shorten(int count);
    /// @param current  number of the entry that is active at first; -1 for none
    void dropUnder(QWidget &button, int current);
};
