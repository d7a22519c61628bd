#include "controls/LazyComboBox.h"

#include "controls/Look.h"
#include "controls/Style.h"

#include <utility>

LazyComboBox::LazyComboBox(QWidget *parent) : QComboBox(parent)
{
    dressClosedComboBox(*this);
}

int LazyComboBox::widthOfEntries() const
{
    constexpr int besideText = 2; // units: Qt reckons with the ink of an entry, not with where it begins
    return QComboBox::sizeHint().width() + dp(besideText);
}

void LazyComboBox::showPopup()
{
    if (!std::exchange(m_isListDressed, true)) {
        dressComboList(*this);
    }
    QComboBox::showPopup();
}
