#include "wave/Style.h"

#include "app/Globals.h"

namespace {

/// Fills a sheet: "@0" to "@9" become the greys, "#N#" becomes dp(N) with its unit.
QString filled(const char *sheet)
{
    QString text = QString::fromLatin1(sheet);
    for (int i = 0; i < gGreys.size(); ++i)
        text.replace(QLatin1Char('@') + QString::number(i), gGreys[i].name());
    for (const int pixels : {1, 2, 3, 4, 6, 8, 10, 12, 14, 16, 20, 22, 26, 64})
        text.replace(QStringLiteral("#%1#").arg(pixels), QString::number(dp(pixels)) + QStringLiteral("px"));
    return text;
}

} // namespace

QString comboBoxStyle()
{
    return filled(
        "QComboBox{background-color:@8;color:@0;border:#1# solid @4;border-radius:#3#;"
        "padding:0 #4# 0 #6#;min-height:#20#;}"
        "QComboBox:hover{background-color:@6;}"
        "QComboBox:focus{border-color:@0;}"
        "QComboBox:disabled{color:@4;border-color:@5;}"
        "QComboBox::drop-down{subcontrol-origin:padding;subcontrol-position:right center;width:#16#;border:0;}"
        "QComboBox::down-arrow{image:url(:/res/icoDropDown);width:#10#;height:#10#;}"
        "QComboBox QAbstractItemView{background-color:@7;color:@0;border:#1# solid @4;outline:0;"
        "selection-background-color:@5;selection-color:@0;}"
        "QComboBox QAbstractItemView::item{min-height:#20#;padding:0 #6#;}");
}

QString lineEditStyle()
{
    return filled("QLineEdit{background-color:@8;color:@0;border:#1# solid @4;border-radius:#3#;padding:0 #4#;"
                  "min-height:#20#;selection-background-color:@3;selection-color:@9;}"
                  "QLineEdit:focus{border-color:@0;}"
                  "QLineEdit:disabled{color:@4;border-color:@5;}");
}

QString spinBoxStyle()
{
    return filled("QAbstractSpinBox{background-color:@8;color:@0;border:#1# solid @4;border-radius:#3#;padding:0 #4#;"
                  "min-height:#20#;selection-background-color:@3;selection-color:@9;}"
                  "QAbstractSpinBox:focus{border-color:@0;}"
                  "QAbstractSpinBox:disabled{color:@4;border-color:@5;}");
}

QString labelStyle()
{
    return filled("QLabel{color:@0;background:transparent;border:0;}"
                  "QLabel:disabled{color:@3;}");
}

QString checkBoxStyle()
{
    return filled("QCheckBox,QRadioButton{color:@0;background:transparent;spacing:#6#;padding:#2#;"
                  "border:#1# solid transparent;border-radius:#3#;}"
                  "QCheckBox:focus,QRadioButton:focus{border-color:@2;}"
                  "QCheckBox:disabled,QRadioButton:disabled{color:@3;}");
}

QString groupBoxStyle()
{
    return filled("QGroupBox{color:@0;border:#1# solid @4;border-radius:#4#;margin-top:#8#;padding-top:#8#;}"
                  "QGroupBox::title{subcontrol-origin:margin;subcontrol-position:top left;left:#8#;padding:0 #3#;}");
}

QString pushButtonStyle()
{
    return filled("QPushButton{background-color:@7;color:@0;border:#1# solid @4;border-radius:#3#;"
                  "padding:0 #12#;min-height:#22#;min-width:#64#;}"
                  "QPushButton:hover{background-color:@6;}"
                  "QPushButton:pressed{background-color:@9;}"
                  "QPushButton:focus{border-color:@0;}"
                  "QPushButton:disabled{color:@4;border-color:@6;}");
}

QString progressBarStyle()
{
    return filled("QProgressBar{background-color:@8;color:@0;border:#1# solid @4;border-radius:#3#;text-align:center;"
                  "min-height:#16#;max-height:#16#;}"
                  "QProgressBar::chunk{background-color:@4;border-radius:#2#;}");
}

QString scrollBarStyle()
{
    return filled("QScrollBar{background-color:@7;border:0;margin:0;}"
                  "QScrollBar:horizontal{height:#12#;}"
                  "QScrollBar:vertical{width:#12#;}"
                  "QScrollBar::handle{background-color:@4;border:#1# solid @7;border-radius:#4#;}"
                  "QScrollBar::handle:horizontal{min-width:#16#;}"
                  "QScrollBar::handle:vertical{min-height:#16#;}"
                  "QScrollBar::handle:hover{background-color:@3;}"
                  "QScrollBar::handle:focus{border-color:@0;}"
                  "QScrollBar::add-line,QScrollBar::sub-line{width:0;height:0;border:0;}"
                  "QScrollBar::add-page,QScrollBar::sub-page{background:transparent;}");
}

QString toolTipStyle()
{
    return filled("QToolTip{background-color:@8;color:@0;border:#1# solid @4;padding:#2#;}");
}

QString menuStyle()
{
    return filled("QMenu{background-color:@7;color:@0;border:#1# solid @4;padding:#2# 0;}"
                  "QMenu::item{padding:#4# #26# #4# #26#;background:transparent;}"
                  "QMenu::item:selected{background-color:@5;}"
                  "QMenu::item:disabled{color:@4;}"
                  "QMenu::separator{height:#1#;background-color:@5;margin:#2# #8#;}");
}

QString messageBoxStyle()
{
    return filled("QMessageBox,QDialog{background-color:@5;}");
}

QString programStyle()
{
    return messageBoxStyle() + toolTipStyle() + labelStyle() + lineEditStyle() + comboBoxStyle() + spinBoxStyle() +
           checkBoxStyle() + groupBoxStyle() + pushButtonStyle() + progressBarStyle() + scrollBarStyle() + menuStyle();
}

QString menuDialogStyle()
{
    // The two colours of the panel are the only ones outside the palette: a form in it is a light sheet of its own.
    return filled("QMenu{background-color:#F0F0F0; color:black;}"
                  "QMenu QWidget{color:black;}"
                  "QMenu QLabel,QMenu QCheckBox,QMenu QRadioButton{color:black;background:transparent;}"
                  "QMenu QCheckBox:disabled,QMenu QRadioButton:disabled,QMenu QLabel:disabled{color:@4;}"
                  "QMenu QCheckBox:focus,QMenu QRadioButton:focus{border-color:@6;}"
                  "QMenu QGroupBox{border:#1# solid black;border-radius:#4#;margin-top:#8#;padding-top:#8#;}"
                  "QMenu QGroupBox::title{subcontrol-origin:margin;subcontrol-position:top left;left:#8#;"
                  "padding:0 #3#;}"
                  "QMenu QLineEdit,QMenu QComboBox,QMenu QAbstractSpinBox{background-color:white;color:black;"
                  "border:#1# solid @4;}"
                  "QMenu QLineEdit:focus,QMenu QComboBox:focus,QMenu QAbstractSpinBox:focus{border-color:black;}"
                  "QMenu QLineEdit:disabled,QMenu QComboBox:disabled,QMenu QAbstractSpinBox:disabled{"
                  "background-color:@1;color:@4;}"
                  "QMenu QComboBox QAbstractItemView{background-color:white;color:black;"
                  "selection-background-color:@1;selection-color:black;}"
                  "QMenu QPushButton{background-color:@1;color:black;border:#1# solid @4;border-radius:#3#;"
                  "padding:0 #12#;min-height:#22#;}"
                  "QMenu QPushButton:hover{background-color:white;}"
                  "QMenu QPushButton:focus{border-color:black;}");
}
