#include "wave/AChnTiggerTAG.h"

#include "settings/Language.h"

AChnTiggerTAG::AChnTiggerTAG(QWidget *parent) : AChnTAG(0, ::tr("Trigger level"), parent) {}

AChnTAG::Outline AChnTiggerTAG::outline(int side) const
{
    const int last = side - 1;
    const int notch = last / 4;
    return {QPoint(0, 0), QPoint(last, last / 2), QPoint(0, last), QPoint(notch, last / 2 + 1),
            QPoint(notch, last / 2 - 1)};
}
