#pragma once

#include "controls/MenuDialog.h"

class QLineEdit;

/// The menu behind the analog trigger's gear: the sensitivity in divisions, as a text. It stores nothing. GUI thread.
class SensitivityMenu : public MenuDialog {
    Q_OBJECT
public:
    explicit SensitivityMenu(QWidget *parent);
    ~SensitivityMenu() override;

    /// Shows `sensitivity` at `place`, a point of the screen, with the focus in the field.
    void ask(const QString &sensitivity, QPoint place);
    /// Closes the menu; what was being typed is forgotten.
    void abandon();
    /// What was typed, with a point for a comma.
    [[nodiscard]] QString sensitivity() const;
    /// The field has the focus and gives it away, which ends the edit once more.
    [[nodiscard]] bool giveFocusAway();

signals:
    void editingFinished();

private:
    [[nodiscard]] QLineEdit *makeField(QWidget *box);

    QLineEdit *senseEdit;
};
