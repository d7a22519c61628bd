#pragma once

#include <QObject>

class QComboBox;

/// Keeps a combo box's keys from the window's shortcuts: its arrows, Home and End, and the letters and digits by which
/// an entry is looked for.
///
/// Only while the box was reached by key. After a choice by mouse the focus stays in the box unnoticed, and the keys
/// that move the view must not change a setting. Nor does the wheel on a box without the focus: it is left to what lies
/// around the box. Lives on the GUI thread, owned by its box.
class ComboKeys : public QObject {
public:
    explicit ComboKeys(QComboBox *box);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool m_reachedByKey = false;
};
