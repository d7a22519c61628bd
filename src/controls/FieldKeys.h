#pragma once

#include <QObject>

class QLineEdit;

/// Keeps Up and Down in a field from the window's shortcuts, which would move the view while somebody types. A field
/// takes all other keys that it needs by itself. Lives on the GUI thread, owned by its field.
class FieldKeys : public QObject {
public:
    explicit FieldKeys(QLineEdit *field);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};
