#pragma once

#include "panels/MenuChnSettings.h"
#include "panels/PanelDevice.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QtTest>

/// What a user does in the menu of channels, outputs and trigger position: by mouse and keys.
struct ChnMenuDesk {
    MenuChnSettings &menu;

    [[nodiscard]] QAbstractButton *button(const QString &text) const
    {
        for (QAbstractButton *one : menu.findChildren<QAbstractButton *>()) {
            if (one->text() == text) {
                return one;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QCheckBox *channel(int chn) const
    {
        return qobject_cast<QCheckBox *>(button(QStringLiteral("CH%1").arg(chn)));
    }
    [[nodiscard]] QCheckBox *output(int index) const
    {
        return qobject_cast<QCheckBox *>(button(QStringLiteral("PWM%1").arg(index)));
    }
    /// The field that a screen reader calls so, such as "PWM0 Frequency".
    template<class Widget>
    [[nodiscard]] Widget *called(const QString &name) const
    {
        for (Widget *widget : menu.findChildren<Widget *>()) {
            if (widget->accessibleName() == name) {
                return widget;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QLineEdit *frequ(int index) const
    {
        return called<QLineEdit>(QStringLiteral("PWM%1 Frequency").arg(index));
    }
    [[nodiscard]] QLineEdit *duty(int index) const
    {
        return called<QLineEdit>(QStringLiteral("PWM%1 DutyCycle").arg(index));
    }
    [[nodiscard]] QComboBox *unit(int index) const
    {
        return called<QComboBox>(QStringLiteral("PWM%1 Unit").arg(index));
    }
    [[nodiscard]] QSlider *slider() const { return menu.findChild<QSlider *>(); }

    static void click(QAbstractButton *button)
    {
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    void clickOk() const { click(button(QStringLiteral("OK"))); }
    void clickCancel() const { click(button(QStringLiteral("Cancel"))); }
    static void type(QLineEdit *field, const QString &text)
    {
        QTest::mouseClick(field, Qt::LeftButton);
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
    }
    static void choose(QComboBox *box, const QString &entry)
    {
        box->setFocus(Qt::TabFocusReason);
        QTest::keyClick(box, Qt::Key_Home);
        for (int i = box->findText(entry); i > 0; --i) {
            QTest::keyClick(box, Qt::Key_Down);
        }
    }
    void checkOutput(int index, bool on) const
    {
        if (output(index)->isChecked() != on) {
            click(output(index));
        }
    }
};
