#pragma once

#include <QComboBox>

/// A combo box as dressComboBox() makes it, but for its list of entries: that is built when it is first opened. For a
/// window of dozens of boxes, most of which nobody opens, this is half of the time until it stands. So nothing may be
/// called before that builds the list all the same: view(), setItemDelegate() and setSizeAdjustPolicy() do.
///
/// Its size is what setFixedSize() and the like say. Main thread.
class LazyComboBox : public QComboBox {
public:
    /// @param parent  wears the style sheet already
    explicit LazyComboBox(QWidget *parent);

    /// So wide that each entry can be read, pixels. Cost: all entries are measured.
    [[nodiscard]] int widthOfEntries() const;
    [[nodiscard]] QSize sizeHint() const override { return minimumSize(); }
    [[nodiscard]] QSize minimumSizeHint() const override { return minimumSize(); }
    void showPopup() override;

private:
    bool m_isListDressed = false;
};
